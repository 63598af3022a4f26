#include "Media/Planning/VideoGeometry.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Planning/Containers.h"
#include "Media/Planning/VideoSettings.h"

extern "C" {
#include <libavutil/pixdesc.h>
#include <libavutil/rational.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Conf::FrameInfo;
using Conf::IFormatCodec;
using Conf::IFormatCodecVideo;
using Core::Property;

struct Aspect
{
    std::uint32_t x;
    std::uint32_t y;

    double Value() const { return static_cast<double>(x) / y; }
};

/// The display aspect ratios that MPEG-2 can signal, without that of square pixels; the players of DVDs know
/// the first two.
constexpr std::array<Aspect, 3> kMpeg2Aspects = {{{4, 3}, {16, 9}, {221, 100}}};
constexpr std::ptrdiff_t kDvdAspects = 2;

std::uint32_t NumberUnder(const Property& record, const std::string& key)
{
    const auto child = record.FindChild(key);
    return child == record.end() ? 0 : static_cast<std::uint32_t>(child->GetInt64());
}

std::uint32_t Rounded(double value) { return static_cast<std::uint32_t>(std::max(1L, std::lround(value))); }

/// Down to whole chroma samples.
std::uint32_t Whole(std::uint32_t length, unsigned int log2Chroma)
{
    const std::uint32_t step = 1U << log2Chroma;
    return std::max(length / step * step, step);
}

Aspect WantedAspect(const Property& record, const FrameInfo& source, bool isDvd)
{
    Aspect aspect = {NumberUnder(record, IFormatCodecVideo::TAG_FRAME_ASPECTX),
                     NumberUnder(record, IFormatCodecVideo::TAG_FRAME_ASPECTY)};
    if (aspect.x == 0 || aspect.y == 0)
    {
        DisplayAspectOf(source, aspect.x, aspect.y);
    }
    const auto codec = record.FindChild(IFormatCodec::TAG_CODEC_ID);
    if (codec != record.end() && codec->GetString() == IFormatCodecVideo::CODEC_ID_MPEG2VIDEO)
    {
        const auto distance = [wanted = aspect.Value()](const Aspect& known) {
            return std::abs(std::log(known.Value() / wanted));
        };
        return *std::min_element(
            kMpeg2Aspects.begin(), isDvd ? kMpeg2Aspects.begin() + kDvdAspects : kMpeg2Aspects.end(),
            [&](const Aspect& one, const Aspect& other) { return distance(one) < distance(other); });
    }
    return aspect;
}

/// What is asked for; a length that is left open follows from the other one, or is the source's.
std::pair<std::uint32_t, std::uint32_t> WantedSize(const Property& record, const FrameInfo& source,
                                                   const Aspect& aspect, bool squarePixels)
{
    std::uint32_t width = NumberUnder(record, IFormatCodecVideo::TAG_WIDTH);
    std::uint32_t height = NumberUnder(record, IFormatCodecVideo::TAG_HEIGHT);
    if (width == 0 && height == 0)
    {
        height = source.height;
        width = squarePixels ? Rounded(height * aspect.Value()) : source.width;
    }
    else if (width == 0)
    {
        width = Rounded(height * aspect.Value());
    }
    else if (height == 0)
    {
        height = Rounded(width / aspect.Value());
    }
    return {width, height};
}

} // namespace

FrameInfo DisplayedFrame(const MediaStream& source)
{
    FrameInfo frame = dynamic_cast<const IFormatCodecVideo&>(*source.descriptor).GetFrameInfo();
    if (source.rotation % 180 != 0)
    {
        std::swap(frame.width, frame.height);
        std::swap(frame.ax, frame.ay);
    }
    return frame;
}

void DisplayAspectOf(const FrameInfo& frame, std::uint32_t& x, std::uint32_t& y)
{
    constexpr std::int64_t kLargestTerm = 65535;
    int num = 0;
    int den = 0;
    av_reduce(&num, &den, static_cast<std::int64_t>(frame.width) * frame.ax,
              static_cast<std::int64_t>(frame.height) * frame.ay, kLargestTerm);
    const bool known = num > 0 && den > 0;
    x = known ? static_cast<std::uint32_t>(num) : std::max(frame.width, 1U);
    y = known ? static_cast<std::uint32_t>(den) : std::max(frame.height, 1U);
}

PixelLimits PixelLimitsOf(AVCodecID codec, const std::string& container)
{
    return {codec == AV_CODEC_ID_GIF || IsPicture(container), IsDvd(container)};
}

void ChooseSize(const FrameInfo& source, PixelLimits limits, IFormatCodecVideo& target)
{
    const Property& record = target.GetProperty();
    const Aspect aspect = WantedAspect(record, source, limits.areDvd);
    auto [width, height] = WantedSize(record, source, aspect, limits.areSquare);
    if (const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(PixelFormatIn(record)))
    {
        width = Whole(width, format->log2_chroma_w);
        height = Whole(height, format->log2_chroma_h);
    }
    const std::uint32_t ax = NumberUnder(record, IFormatCodecVideo::TAG_ASPECTX);
    const std::uint32_t ay = NumberUnder(record, IFormatCodecVideo::TAG_ASPECTY);
    if (ax != 0 && ay != 0)
    {
        target.InitByPixelAspect(width, height, ax, ay);
    }
    else if (limits.areSquare)
    {
        target.InitByPixelAspect(width, height, 1, 1);
    }
    else
    {
        target.InitByFrameAspect(width, height, aspect.x, aspect.y);
    }
}

} // namespace Zelnor::Media
