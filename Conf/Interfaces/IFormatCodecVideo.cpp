#include "Conf/Interfaces/IFormatCodecVideo.h"

#include "Conf/Private/SetChildren.h"
#include "Core/Private/Early.h"

#include <boost/rational.hpp>

#include <numeric>

namespace Zelnor::Conf
{

namespace
{

constexpr const char* kUnit = "Conf/Interfaces/IFormatCodecVideo";

void Reduce(std::uint32_t& a, std::uint32_t& b)
{
    const std::uint32_t divisor = std::gcd(a, b);
    if (divisor >= 2)
    {
        a /= divisor;
        b /= divisor;
    }
}

/// The low 32 bits of the value under `key`.
std::uint32_t GetUInt32(const Core::Property& property, const std::string& key)
{
    return static_cast<std::uint32_t>(property[key].GetInt64());
}

FrameInfo GetReducedFrameAspect(const Core::Property& property)
{
    FrameInfo info{};
    info.ax = GetUInt32(property, IFormatCodecVideo::TAG_ASPECTX);
    info.width = GetUInt32(property, IFormatCodecVideo::TAG_WIDTH);
    info.ay = GetUInt32(property, IFormatCodecVideo::TAG_ASPECTY);
    info.height = GetUInt32(property, IFormatCodecVideo::TAG_HEIGHT);
    IFormatCodecVideo::PixelToFrameAspect(info.width, info.height, info.ax, info.ay, info.ax, info.ay);
    return info;
}

} // namespace

ZELNOR_EARLY const std::string TAG_PIX_FMT("PIXELFORMAT");

std::ostream& operator<<(std::ostream& os, const FrameInfo& info)
{
    return os << std::to_string(info.width) + "x" + std::to_string(info.height) +
                     " ax=" + std::to_string(info.ax) + " ay=" + std::to_string(info.ay);
}

IFormatCodecVideo::IFormatCodecVideo() : IFormatCodec(TAG_FORMAT_CODEC_VIDEO) {}

IFormatCodecVideo::IFormatCodecVideo(const IFormatCodecVideo& other) = default;

IFormatCodecVideo::~IFormatCodecVideo() = default;

boost::intrusive_ptr<IFormatCodecVideo> IFormatCodecVideo::Create() { return new IFormatCodecVideo(); }

boost::intrusive_ptr<IFormatCodecVideo> IFormatCodecVideo::Clone() const
{
    return new IFormatCodecVideo(*this);
}

int IFormatCodecVideo::AddRef() const { return m_videoReferences.AddRefImpl(); }

int IFormatCodecVideo::GetRefCount() const { return m_videoReferences.GetRefCountImpl(); }

int IFormatCodecVideo::Release() const { return m_videoReferences.ReleaseOrDestroyImpl(this); }

int IFormatCodecVideo::GetCodecType() const { return 0; }

boost::intrusive_ptr<IFormatCodec> IFormatCodecVideo::CloneBase() const { return Clone(); }

void IFormatCodecVideo::InitByPixelAspect(std::uint32_t width, std::uint32_t height,
                                          std::uint32_t pixelAspectX, std::uint32_t pixelAspectY)
{
    SetChildren(
        m_property,
        {{TAG_WIDTH, width}, {TAG_HEIGHT, height}, {TAG_ASPECTX, pixelAspectX}, {TAG_ASPECTY, pixelAspectY}});
}

void IFormatCodecVideo::InitByFrameAspect(std::uint32_t width, std::uint32_t height,
                                          std::uint32_t frameAspectX, std::uint32_t frameAspectY)
{
    std::uint32_t pixelAspectX = 0;
    std::uint32_t pixelAspectY = 0;
    FrameToPixelAspect(width, height, frameAspectX, frameAspectY, pixelAspectX, pixelAspectY);
    InitByPixelAspect(width, height, pixelAspectX, pixelAspectY);
}

void IFormatCodecVideo::FrameToPixelAspect(std::uint32_t width, std::uint32_t height,
                                           std::uint32_t frameAspectX, std::uint32_t frameAspectY,
                                           std::uint32_t& pixelAspectX, std::uint32_t& pixelAspectY)
{
    pixelAspectX = height * frameAspectX;
    pixelAspectY = width * frameAspectY;
    Reduce(pixelAspectX, pixelAspectY);
}

void IFormatCodecVideo::PixelToFrameAspect(std::uint32_t width, std::uint32_t height,
                                           std::uint32_t pixelAspectX, std::uint32_t pixelAspectY,
                                           std::uint32_t& frameAspectX, std::uint32_t& frameAspectY)
{
    frameAspectX = width * pixelAspectX;
    frameAspectY = height * pixelAspectY;
    Reduce(frameAspectX, frameAspectY);
}

std::uint32_t IFormatCodecVideo::GetFrameAspectX() const { return GetReducedFrameAspect(m_property).ax; }

std::uint32_t IFormatCodecVideo::GetFrameAspectY() const { return GetReducedFrameAspect(m_property).ay; }

double IFormatCodecVideo::GetFrameAspect() const
{
    return static_cast<double>(GetFrameAspectX()) / static_cast<double>(GetFrameAspectY());
}

FrameInfo IFormatCodecVideo::GetFrameInfo() const
{
    return {GetUInt32(m_property, TAG_WIDTH), GetUInt32(m_property, TAG_HEIGHT),
            GetUInt32(m_property, TAG_ASPECTX), GetUInt32(m_property, TAG_ASPECTY)};
}

void IFormatCodecVideo::SetFrameRate(std::uint32_t num, std::uint32_t den)
{
    if (den == 0)
    {
        // Thrown here, so that the place of the throw does not depend on the version of Boost.
        ZELNOR_THROW_WITHOUT_STACK(kUnit, boost::bad_rational());
    }
    m_property.SetChildT(TAG_FPS, Core::Property::Ratio(num, den));
}

PixFmt IFormatCodecVideo::GetPixelFormat() const
{
    const auto child = m_property.FindChild(TAG_PIX_FMT);
    return child == m_property.end() ? PIX_FMT_NONE : static_cast<PixFmt>(child->GetInt64());
}

void IFormatCodecVideo::SetPixelFormat(PixFmt pixelFormat)
{
    m_property.SetChildT<long long>(TAG_PIX_FMT, pixelFormat);
}

} // namespace Zelnor::Conf
