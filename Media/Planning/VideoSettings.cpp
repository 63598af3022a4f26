#include "Media/Planning/VideoSettings.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Jobs/JobKeys.h"
#include "Media/Probe/FFmpegNames.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodecVideo;
using Core::Property;

std::string TextIn(const Property& record, const char* key)
{
    const auto child = record.FindChild(key);
    return child != record.end() && child->GetType() == PROPERTY_TYPE_STRING ? child->GetString() : "";
}

void SetText(Property& record, const char* key, const std::string& text)
{
    if (!text.empty())
    {
        record.SetChildT(key, text);
    }
}

} // namespace

Deinterlacing DeinterlacingIn(const Property& record)
{
    const std::string word = TextIn(record, JobKeys::kDeinterlace);
    return word == JobKeys::kDeinterlaceOff          ? Deinterlacing::Off
           : word == JobKeys::kDeinterlaceEveryField ? Deinterlacing::EveryField
           : word == JobKeys::kDeinterlaceKeep       ? Deinterlacing::Keep
                                                     : Deinterlacing::EveryFrame;
}

AVPixelFormat PixelFormatIn(const Property& record)
{
    const std::string name = TextIn(record, JobKeys::kPixelFormat);
    if (!name.empty())
    {
        return av_get_pix_fmt(name.c_str());
    }
    const auto number = record.FindChild(Conf::TAG_PIX_FMT);
    return number != record.end() && number->GetType() == PROPERTY_TYPE_INT64
               ? ToFFmpeg(static_cast<PixFmt>(number->GetInt64()))
               : AV_PIX_FMT_NONE;
}

VideoColor ColorIn(const Property& record)
{
    return {TextIn(record, JobKeys::kColorRange), TextIn(record, JobKeys::kColorMatrix),
            TextIn(record, JobKeys::kColorPrimaries), TextIn(record, JobKeys::kColorTransfer)};
}

void SetColor(const VideoColor& color, Property& record)
{
    SetText(record, JobKeys::kColorRange, color.range);
    SetText(record, JobKeys::kColorMatrix, color.matrix);
    SetText(record, JobKeys::kColorPrimaries, color.primaries);
    SetText(record, JobKeys::kColorTransfer, color.transfer);
}

AVPixelFormat PixelFormatOf(const MediaStream& source)
{
    if (!source.pixelFormat.empty())
    {
        return av_get_pix_fmt(source.pixelFormat.c_str());
    }
    return ToFFmpeg(dynamic_cast<const IFormatCodecVideo&>(*source.descriptor).GetPixelFormat());
}

bool IsRgb(AVPixelFormat format)
{
    const AVPixFmtDescriptor* const known = av_pix_fmt_desc_get(format);
    return known != nullptr && (known->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

int DepthOf(AVPixelFormat format)
{
    const AVPixFmtDescriptor* const known = av_pix_fmt_desc_get(format);
    return known == nullptr ? 0 : known->comp[0].depth;
}

bool HasAlpha(AVPixelFormat format)
{
    const AVPixFmtDescriptor* const known = av_pix_fmt_desc_get(format);
    return known != nullptr && (known->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
}

bool IsFullRange(AVPixelFormat format)
{
    const AVPixFmtDescriptor* const known = av_pix_fmt_desc_get(format);
    return known != nullptr && std::string_view(known->name).substr(0, 4) == "yuvj";
}

std::string UsualMatrix(std::uint32_t width, std::uint32_t height)
{
    constexpr std::uint32_t kHdWidth = 1280;
    constexpr std::uint32_t kHdHeight = 720;
    constexpr std::uint32_t kPalHeight = 576;
    return width >= kHdWidth || height >= kHdHeight ? "bt709"
           : height == kPalHeight                   ? "bt470bg"
                                                    : "smpte170m";
}

bool IsSameMatrix(const std::string& one, const std::string& other)
{
    const auto isBt601 = [](const std::string& name) { return name == "bt470bg" || name == "smpte170m"; };
    return one == other || (isBt601(one) && isBt601(other));
}

bool IsHdr(const std::string& transfer) { return transfer == "smpte2084" || transfer == "arib-std-b67"; }

std::string ParityOf(const MediaStream& source)
{
    return source.fieldOrder.substr(0, 1) == "b" ? "bff" : "tff";
}

bool SupportsInterlaced(const AVCodec& encoder)
{
    // FFmpeg does not tell; each of these was tried.
    constexpr std::array<std::string_view, 7> kEncoders = {"mpeg2video", "mpeg4",     "libx264", "dnxhd",
                                                           "prores",     "prores_ks", "dvvideo"};
    return std::find(kEncoders.begin(), kEncoders.end(), encoder.name) != kEncoders.end();
}

} // namespace Zelnor::Media
