#include "Media/Running/FilterArguments.h"

#include "Media/Planning/VideoGeometry.h"
#include "Media/Probe/FFmpegNames.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"

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
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Core::Property;

void Append(std::string& filters, const std::string& filter)
{
    filters += (filters.empty() ? "" : ",") + filter;
}

std::string SizeText(std::uint32_t width, std::uint32_t height)
{
    return std::to_string(width) + ":" + std::to_string(height);
}

std::string Escaped(const std::string& text, const char* special)
{
    std::string escaped;
    for (const char c : text)
    {
        if (std::string(special).find(c) != std::string::npos)
        {
            escaped += '\\';
        }
        escaped += c;
    }
    return escaped;
}

std::uint32_t EvenPart(double length, std::uint32_t limit)
{
    constexpr double kHalf = 2.0;
    const auto even = static_cast<std::uint32_t>(std::lround(length / kHalf)) * 2U;
    return std::min(std::max(even, 2U), limit);
}

/// Scales to the target's size. A frame of another display aspect ratio is not stretched: it gets letterbox
/// or pillarbox, unless the ratios differ by less than a pixel can show.
std::string ScaleFilters(const FrameInfo& source, const FrameInfo& target)
{
    const double sourceAspect =
        static_cast<double>(source.width) * source.ax / (static_cast<double>(source.height) * source.ay);
    const double targetAspect =
        static_cast<double>(target.width) * target.ax / (static_cast<double>(target.height) * target.ay);
    constexpr double kNoticeable = 0.01;
    const double ratio = sourceAspect / targetAspect;
    if (!std::isfinite(ratio) || std::abs(ratio - 1) < kNoticeable)
    {
        return "scale=" + SizeText(target.width, target.height);
    }
    const std::uint32_t width = ratio < 1 ? EvenPart(target.width * ratio, target.width) : target.width;
    const std::uint32_t height = ratio > 1 ? EvenPart(target.height / ratio, target.height) : target.height;
    return "scale=" + SizeText(width, height) + ",pad=" + SizeText(target.width, target.height) + ":" +
           SizeText((target.width - width) / 4 * 2, (target.height - height) / 4 * 2);
}

boost::intrusive_ptr<IFormatCodecVideo> VideoOf(const Property& codec)
{
    auto video = IFormatCodecVideo::Create();
    video->SetProperty(codec);
    return video;
}

std::string RateText(const Property& codec)
{
    const Property::Ratio& rate = codec[IFormatCodecVideo::TAG_FPS].GetRatio();
    return std::to_string(rate.numerator()) + "/" + std::to_string(rate.denominator());
}

bool IsGif(const Property& codec)
{
    return codec[IFormatCodec::TAG_CODEC_ID].GetString() == IFormatCodecVideo::CODEC_ID_GIF;
}

std::string VideoFilters(const MediaStream& source, const Property& codec)
{
    const auto video = VideoOf(codec);
    std::string filters;
    if (source.isInterlaced)
    {
        Append(filters, "yadif=deint=interlaced");
    }
    if (codec.ChildExists(IFormatCodecVideo::TAG_FPS))
    {
        Append(filters, "fps=" + RateText(codec));
    }
    if (codec.ChildExists(IFormatCodecVideo::TAG_WIDTH))
    {
        const FrameInfo frame = video->GetFrameInfo();
        Append(filters, ScaleFilters(DisplayedFrame(source), frame));
        Append(filters, "setsar=" + std::to_string(frame.ax) + "/" + std::to_string(frame.ay) + ":max=65535");
    }
    if (IsGif(codec))
    {
        // A palette of the clip's own colours; the fixed one looks poor.
        Append(filters, "split[clip][colours];[colours]palettegen[palette];[clip][palette]paletteuse");
    }
    else if (const AVPixelFormat format = ToFFmpeg(video->GetPixelFormat()); format != AV_PIX_FMT_NONE)
    {
        Append(filters, std::string("format=") + av_get_pix_fmt_name(format));
    }
    return filters;
}

std::string AudioFilters(const Property& codec)
{
    const auto audio = IFormatCodecAudio::Create();
    audio->SetProperty(codec);
    std::string settings;
    const auto add = [&settings](const std::string& key, const std::string& value) {
        settings += (settings.empty() ? "" : ":") + key + "=" + value;
    };
    if (codec.ChildExists(IFormatCodecAudio::TAG_SAMPLE_FORMAT))
    {
        add("sample_fmts", av_get_sample_fmt_name(ToFFmpeg(audio->GetSampleFormat())));
    }
    if (codec.ChildExists(IFormatCodecAudio::TAG_SAMPLE_RATE))
    {
        add("sample_rates", std::to_string(codec[IFormatCodecAudio::TAG_SAMPLE_RATE].GetInt64()));
    }
    const char* const layout =
        codec.ChildExists(IFormatCodecAudio::TAG_LAYOUT) ? ToFFmpeg(audio->GetChannelLayout()) : nullptr;
    if (layout != nullptr)
    {
        add("channel_layouts", layout);
    }
    return settings.empty() ? "" : "aformat=" + settings;
}

std::string Label(const TranscodeStream& stream, unsigned int index)
{
    return "[" + std::to_string(stream.input) + ":" + std::to_string(index) + "]";
}

/// The number of a stream among its file's streams of the same kind.
unsigned int NumberAmongKind(const MediaFile& file, const MediaStream& stream)
{
    return static_cast<unsigned int>(
        std::count_if(file.streams.begin(), file.streams.begin() + stream.index,
                      [&stream](const MediaStream& other) { return other.kind == stream.kind; }));
}

/// The filter reads the subtitle's file from its beginning, whatever part of the source is read.
std::string DrawText(const MediaFile& file, const MediaStream& subtitle, std::int64_t start)
{
    const std::string draw = "subtitles=filename=" + EscapeForFilter(FFmpegFileName(file.name)) +
                             ":si=" + std::to_string(NumberAmongKind(file, subtitle));
    const std::string shift = std::to_string(start) + "/1000000/TB";
    return start == 0 ? draw : "setpts=PTS+" + shift + "," + draw + ",setpts=PTS-" + shift;
}

std::string DrawSubtitle(const Transcode& transcode, const TranscodeStream& stream,
                         const MediaStream& subtitle)
{
    return subtitle.isBitmap ? Label(stream, subtitle.index) + "overlay"
                             : DrawText(transcode.inputs[stream.input], subtitle, transcode.span.start);
}

} // namespace

std::string StreamFilters(const MediaStream& source, const Property& codec)
{
    return source.kind == StreamKind::Video   ? VideoFilters(source, codec)
           : source.kind == StreamKind::Audio ? AudioFilters(codec)
                                              : "";
}

std::string MergeFilters(const Transcode& transcode, const TranscodeStream& stream, FaultList& faults)
{
    const MediaFile& file = transcode.inputs[stream.input];
    const MediaStream& base = transcode.SourceOf(stream);
    std::string filters = Label(stream, stream.stream);
    bool isFirst = true;
    for (const unsigned int index : stream.merged)
    {
        const MediaStream& overlay = file.streams[index];
        if (base.kind == StreamKind::Audio && overlay.kind == StreamKind::Audio && index != stream.stream)
        {
            filters += Label(stream, index);
        }
        else if (base.kind == StreamKind::Video && overlay.kind == StreamKind::Subtitle)
        {
            filters += isFirst ? "" : "[drawn];[drawn]";
            filters += DrawSubtitle(transcode, stream, overlay);
        }
        else
        {
            faults.Add(JobFault::Structure, stream.place,
                       std::string(NameOf(overlay.kind)) + " stream " + std::to_string(index) +
                           " cannot be merged into it");
        }
        isFirst = false;
    }
    if (base.kind == StreamKind::Audio)
    {
        filters += "amix=inputs=" + std::to_string(stream.merged.size() + 1) + ":normalize=0";
    }
    return filters;
}

std::string EscapeForFilter(const std::string& text)
{
    // Once for the option's value, once for the description of filters around it.
    return Escaped(Escaped(text, "\\': \t\r\n"), "\\'[],; \t\r\n");
}

} // namespace Zelnor::Media
