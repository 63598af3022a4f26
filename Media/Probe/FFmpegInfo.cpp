#include "Media/Probe/FFmpegInfo.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Probe/FFmpegNames.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/pixdesc.h>
}

namespace Zelnor::Media
{

namespace
{

std::string TextOf(const char* text) { return text == nullptr ? "" : text; }

/// Whether FFmpeg's list of names, separated by commas, has the name.
bool HasName(const char* names, const std::string& name)
{
    return ("," + TextOf(names) + ",").find("," + name + ",") != std::string::npos;
}

/// The description of the first format with that name, in FFmpeg's order.
template <class Format>
std::string DescriptionOf(const Format* (*iterate)(void**), const std::string& name)
{
    void* state = nullptr;
    while (const Format* const format = iterate(&state))
    {
        if (HasName(format->name, name))
        {
            return TextOf(format->long_name);
        }
    }
    return "";
}

} // namespace

std::string FFmpegNameOf(PixFmt format) { return TextOf(av_get_pix_fmt_name(ToFFmpeg(format))); }

std::string FFmpegNameOf(Conf::SampleFormats format)
{
    return format == Conf::SAMPLE_FMT_NONE ? "" : TextOf(av_get_sample_fmt_name(ToFFmpeg(format)));
}

std::string FFmpegNameOf(Conf::ChannelLayout layout) { return TextOf(ToFFmpeg(layout)); }

std::string MuxerDescription(const std::string& name)
{
    return DescriptionOf(FFmpeg().av_muxer_iterate, name);
}

std::string DemuxerDescription(const std::string& name)
{
    return DescriptionOf(FFmpeg().av_demuxer_iterate, name);
}

} // namespace Zelnor::Media
