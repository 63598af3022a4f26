#include "Media/Running/FilterArguments.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/Running/VideoFilters.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodecAudio;
using Core::Property;

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

std::string BitmapLabel(const MediaStream& subtitle)
{
    return "[bitmap" + std::to_string(subtitle.index) + "]";
}

std::string DrawSubtitle(const Transcode& transcode, const TranscodeStream& stream,
                         const MediaStream& subtitle)
{
    // The subtitle's timeline does not add frames, nor does its end end the video.
    return subtitle.isBitmap
               ? BitmapLabel(subtitle) + "overlay=x=(W-w)/2:y=(H-h)/2:eof_action=pass:format=auto"
               : DrawText(transcode.inputs[stream.input], subtitle,
                          transcode.SeeksInInputs() ? transcode.span.start : 0);
}

} // namespace

std::string StreamFilters(const MediaStream& source, const Property& codec, bool isPart)
{
    if (source.kind != StreamKind::Video)
    {
        return MergedFilters(source, codec);
    }
    const std::string time = TimeFilters(source, codec, isPart);
    const std::string frames = FrameFilters(source, codec);
    return time + (time.empty() || frames.empty() ? "" : ",") + frames;
}

std::string MergedFilters(const MediaStream& source, const Property& codec)
{
    return source.kind == StreamKind::Video   ? FrameFilters(source, codec)
           : source.kind == StreamKind::Audio ? AudioFilters(codec)
                                              : "";
}

std::string MergeFilters(const Transcode& transcode, const TranscodeStream& stream, const Property& codec,
                         FaultList& faults)
{
    const MediaFile& file = transcode.inputs[stream.input];
    const MediaStream& base = transcode.SourceOf(stream);
    std::string bitmaps;
    std::string filters = Label(stream, stream.stream);
    if (base.kind == StreamKind::Video)
    {
        // Before anything is drawn: lines of text are not to be deinterlaced, and a subtitle is drawn on
        // the frames that there will be.
        const std::string time = TimeFilters(base, codec, transcode.BeginsBetweenFrames());
        filters += time + (time.empty() ? "" : "[base];[base]");
    }
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
            if (overlay.isBitmap)
            {
                bitmaps += Label(stream, index) + BitmapFilters(overlay, base) + BitmapLabel(overlay) + ";";
            }
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
    return bitmaps + filters;
}

std::string EscapeForFilter(const std::string& text)
{
    // Once for the option's value, once for the description of filters around it.
    return Escaped(Escaped(text, "\\': \t\r\n"), "\\'[],; \t\r\n");
}

} // namespace Zelnor::Media
