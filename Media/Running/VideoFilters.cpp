#include "Media/Running/VideoFilters.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Jobs/JobKeys.h"
#include "Media/Planning/VideoGeometry.h"
#include "Media/Planning/VideoSettings.h"
#include "Media/Probe/FFmpegNames.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cmath>

namespace Zelnor::Media
{

namespace
{

using Conf::FrameInfo;
using Conf::IFormatCodec;
using Conf::IFormatCodecVideo;
using Core::Property;

void Append(std::string& filters, const std::string& filter)
{
    filters += (filters.empty() || filter.empty() ? "" : ",") + filter;
}

std::string SizeText(std::uint32_t width, std::uint32_t height)
{
    return std::to_string(width) + ":" + std::to_string(height);
}

std::uint32_t EvenPart(double length, std::uint32_t limit)
{
    constexpr double kHalf = 2.0;
    const auto even = static_cast<std::uint32_t>(std::lround(length / kHalf)) * 2U;
    return std::min(std::max(even, 2U), limit);
}

/// How the colours of a source and of what it becomes are coded.
struct ColorChange
{
    VideoColor from;
    VideoColor to;
    bool fromRgb;
    bool toRgb;
};

bool IsToneMapped(const ColorChange& change)
{
    return IsHdr(change.from.transfer) && !change.to.transfer.empty() && !IsHdr(change.to.transfer);
}

ColorChange ColorChangeOf(const MediaStream& source, const Property& codec)
{
    const AVPixelFormat from = PixelFormatOf(source);
    const AVPixelFormat to = PixelFormatIn(codec);
    ColorChange change = {source.color, ColorIn(codec), IsRgb(from), IsRgb(to)};
    if (change.from.matrix.empty() && !change.fromRgb && (change.toRgb || !change.to.matrix.empty()))
    {
        const FrameInfo frame = dynamic_cast<const IFormatCodecVideo&>(*source.descriptor).GetFrameInfo();
        change.from.matrix = UsualMatrix(frame.width, frame.height);
    }
    if (change.from.range.empty() && IsFullRange(from))
    {
        change.from.range = "pc";
    }
    return change;
}

/// The name of a matrix among those that the filter `scale` can convert; empty when it cannot.
std::string ScaleMatrix(const std::string& matrix)
{
    return matrix == "bt709" || matrix == "fcc" || matrix == "smpte170m" || matrix == "smpte240m" ? matrix
           : matrix == "bt470bg"                                                                  ? "bt470"
           : matrix == "bt2020nc"                                                                 ? "bt2020"
                                                                                                  : "";
}

/// What the filter `scale` is told about colours beside the size; empty when they stay.
std::string ScaleColors(const ColorChange& change)
{
    std::string options;
    const auto add = [&options](const std::string& name, const std::string& value) {
        options += value.empty() ? "" : ":" + name + "=" + value;
    };
    // Both as RGB: there is nothing to convert. High dynamic range is converted by other filters.
    if ((change.fromRgb && change.toRgb) || IsToneMapped(change))
    {
        return "";
    }
    const std::string from = change.fromRgb ? "" : ScaleMatrix(change.from.matrix);
    const std::string to = change.toRgb ? "" : ScaleMatrix(change.to.matrix);
    const bool isConverted = change.fromRgb ? !to.empty()
                             : change.toRgb ? !from.empty()
                                            : !from.empty() && !to.empty() && !IsSameMatrix(from, to);
    if (isConverted)
    {
        // Otherwise chroma is interpolated from too few samples.
        add("flags", change.fromRgb || change.toRgb ? "bicubic+accurate_rnd+full_chroma_int" : "");
        add("in_color_matrix", from);
        add("out_color_matrix", to);
    }
    const std::string fromRange = change.from.range.empty() ? "tv" : change.from.range;
    if (change.fromRgb)
    {
        add("out_range", change.to.range);
    }
    else if (change.toRgb)
    {
        add("in_range", change.from.range);
    }
    else if (!change.to.range.empty() && (fromRange != change.to.range || fromRange == "pc"))
    {
        // The filter makes limited ranges of all that it is not told.
        add("in_range", fromRange);
        add("out_range", change.to.range);
    }
    return options;
}

/// The places of a letterbox's or pillarbox's image. Interlaced frames keep the order of their lines, of
/// chroma too.
std::uint32_t Border(std::uint32_t whole, std::uint32_t part, bool isInterlaced)
{
    const std::uint32_t step = isInterlaced ? 4 : 2;
    return (whole - part) / 2 / step * step;
}

/// Scales to the target's size. A frame of another display aspect ratio is not stretched: it gets letterbox
/// or pillarbox, unless the ratios differ by less than a pixel can show.
std::string ScaleFilters(const FrameInfo& source, const FrameInfo& target, const std::string& options,
                         bool isInterlaced)
{
    const double sourceAspect =
        static_cast<double>(source.width) * source.ax / (static_cast<double>(source.height) * source.ay);
    const double targetAspect =
        static_cast<double>(target.width) * target.ax / (static_cast<double>(target.height) * target.ay);
    constexpr double kNoticeable = 0.01;
    const double ratio = sourceAspect / targetAspect;
    if (!std::isfinite(ratio) || std::abs(ratio - 1) < kNoticeable)
    {
        return "scale=" + SizeText(target.width, target.height) + options;
    }
    const std::uint32_t width = ratio < 1 ? EvenPart(target.width * ratio, target.width) : target.width;
    const std::uint32_t height = ratio > 1 ? EvenPart(target.height / ratio, target.height) : target.height;
    return "scale=" + SizeText(width, height) + options + ",pad=" + SizeText(target.width, target.height) +
           ":" + SizeText(Border(target.width, width, false), Border(target.height, height, isInterlaced));
}

/// Light is added up, not its code, so it is made linear first. 100 candela per square metre is the white of
/// standard dynamic range.
std::string ToneMapFilters(const ColorChange& change)
{
    const auto orElse = [](const std::string& name, const char* usual) {
        return name.empty() ? usual : name;
    };
    return "zscale=tin=" + change.from.transfer + ":min=" + orElse(change.from.matrix, "bt2020nc") +
           ":pin=" + orElse(change.from.primaries, "bt2020") + ":rin=" + orElse(change.from.range, "tv") +
           ":t=linear:npl=100,format=gbrpf32le,zscale=p=" + orElse(change.to.primaries, "bt709") +
           ",tonemap=tonemap=hable:desat=0,zscale=t=" + change.to.transfer +
           ":m=" + orElse(change.to.matrix, "bt709") + ":r=" + orElse(change.to.range, "tv");
}

/// Says what the samples are, for the encoder to write it.
std::string ColorWords(const VideoColor& color, bool isRgb)
{
    std::string words;
    const auto add = [&words](const char* name, const std::string& value) {
        words += value.empty() ? "" : (words.empty() ? "setparams=" : ":") + std::string(name) + "=" + value;
    };
    if (!isRgb)
    {
        add("range", color.range);
        add("colorspace", color.matrix);
    }
    add("color_primaries", color.primaries);
    add("color_trc", color.transfer);
    return words;
}

std::string RateText(const Property& codec)
{
    const Property::Ratio& rate = codec[IFormatCodecVideo::TAG_FPS].GetRatio();
    return std::to_string(rate.numerator()) + "/" + std::to_string(rate.denominator());
}

/// Moves the frames of a part to its beginning when they begin within a frame's time after it. Otherwise the
/// frames would be rounded to the next ones of the new rate, and the last one would fall out.
std::string AlignFilter(const MediaStream& source, const Property& codec)
{
    const Property& facts = source.descriptor->GetProperty();
    const Property::Ratio rate =
        (facts.ChildExists(IFormatCodecVideo::TAG_FPS) ? facts : codec)[IFormatCodecVideo::TAG_FPS]
            .GetRatio();
    return "setpts=PTS-STARTPTS*lt(STARTT\\," + std::to_string(rate.denominator()) + "/" +
           std::to_string(rate.numerator()) + "+0.001)";
}

bool IsGif(const Property& codec)
{
    return codec[IFormatCodec::TAG_CODEC_ID].GetString() == IFormatCodecVideo::CODEC_ID_GIF;
}

bool StaysInterlaced(const MediaStream& source, const Property& codec)
{
    return source.isInterlaced && DeinterlacingIn(codec) == Deinterlacing::Keep;
}

std::string InterlaceFilters(const MediaStream& source, Deinterlacing deinterlacing)
{
    // Frames that do not say that they are interlaced would be left as they are.
    const std::string mark = source.isInterlacedByHeader ? "setfield=" + ParityOf(source) : "";
    const std::string separator = mark.empty() ? "" : ",";
    switch (deinterlacing)
    {
    case Deinterlacing::Off:
        return "setfield=prog";
    case Deinterlacing::EveryFrame:
        return mark + separator + "yadif=deint=interlaced";
    case Deinterlacing::EveryField:
        return mark + separator + "yadif=mode=send_field:deint=interlaced";
    case Deinterlacing::Keep:
        return mark;
    }
    return "";
}

} // namespace

std::string TimeFilters(const MediaStream& source, const Property& codec, bool isPart)
{
    std::string filters;
    if (source.isInterlaced)
    {
        Append(filters, InterlaceFilters(source, DeinterlacingIn(codec)));
    }
    if (codec.ChildExists(IFormatCodecVideo::TAG_FPS))
    {
        Append(filters, isPart ? AlignFilter(source, codec) : "");
        Append(filters, "fps=" + RateText(codec));
    }
    return filters;
}

std::string FrameFilters(const MediaStream& source, const Property& codec)
{
    const ColorChange change = ColorChangeOf(source, codec);
    std::string filters;
    if (codec.ChildExists(IFormatCodecVideo::TAG_WIDTH))
    {
        const auto video = IFormatCodecVideo::Create();
        video->SetProperty(codec);
        const FrameInfo frame = video->GetFrameInfo();
        const FrameInfo shown = DisplayedFrame(source);
        const bool isInterlaced = StaysInterlaced(source, codec);
        // Each field is scaled for itself.
        const std::string interlaced = isInterlaced && frame.height != shown.height ? ":interl=1" : "";
        Append(filters, ScaleFilters(shown, frame, interlaced + ScaleColors(change), isInterlaced));
        Append(filters, "setsar=" + std::to_string(frame.ax) + "/" + std::to_string(frame.ay) + ":max=65535");
    }
    else if (const std::string options = ScaleColors(change); !options.empty())
    {
        Append(filters, "scale=" + options.substr(1));
    }
    Append(filters, IsToneMapped(change) ? ToneMapFilters(change) : "");
    if (IsGif(codec))
    {
        // A palette of the clip's own colours; the fixed one looks poor.
        Append(filters, "split[clip][colours];[colours]palettegen[palette];[clip][palette]paletteuse");
        return filters;
    }
    if (const AVPixelFormat format = PixelFormatIn(codec); format != AV_PIX_FMT_NONE)
    {
        Append(filters, std::string("format=") + av_get_pix_fmt_name(format));
    }
    Append(filters, ColorWords(change.to, change.toRgb));
    return filters;
}

std::string BitmapFilters(const MediaStream& subtitle, const MediaStream& video)
{
    const FrameInfo frame = DisplayedFrame(video);
    const std::string matrix =
        ScaleMatrix(video.color.matrix.empty() ? UsualMatrix(frame.width, frame.height) : video.color.matrix);
    // The canvas of Blu-ray's subtitles has square pixels and may be higher than a video without its black
    // borders. That of a DVD's covers the frame, whatever its aspect.
    const bool isSquare = subtitle.codec == "hdmv_pgs_subtitle";
    return "scale=" + SizeText(frame.width, frame.height) +
           (isSquare ? ":force_original_aspect_ratio=decrease" : "") +
           (matrix.empty() ? "" : ":out_color_matrix=" + matrix);
}

std::string FindColorFault(const MediaStream& source, const Property& codec, std::string& key)
{
    const ColorChange change = ColorChangeOf(source, codec);
    const auto differ = [](const std::string& from, const std::string& to) {
        return !from.empty() && !to.empty() && from != to;
    };
    if (IsToneMapped(change))
    {
        return "";
    }
    const auto reason = [](const std::string& from, const std::string& to) {
        return "colours of " + from + " cannot be converted to " + to;
    };
    if (differ(change.from.transfer, change.to.transfer))
    {
        key = JobKeys::kColorTransfer;
        return reason(change.from.transfer, change.to.transfer);
    }
    if (differ(change.from.primaries, change.to.primaries))
    {
        key = JobKeys::kColorPrimaries;
        return reason(change.from.primaries, change.to.primaries);
    }
    const bool isMatrixChanged = !change.fromRgb && !change.toRgb &&
                                 differ(change.from.matrix, change.to.matrix) &&
                                 !IsSameMatrix(change.from.matrix, change.to.matrix);
    if (isMatrixChanged && (ScaleMatrix(change.from.matrix).empty() || ScaleMatrix(change.to.matrix).empty()))
    {
        key = JobKeys::kColorMatrix;
        return reason(change.from.matrix, change.to.matrix);
    }
    return "";
}

} // namespace Zelnor::Media
