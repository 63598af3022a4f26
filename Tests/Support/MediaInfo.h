#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <algorithm>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zelnor::Testing
{

/// What libavformat says about a stream of a file, asked independently of the tool.
struct StreamInfo
{
    AVMediaType type = AVMEDIA_TYPE_UNKNOWN;
    std::string codec;
    int width = 0;
    int height = 0;
    double aspect = 0; ///< display aspect ratio
    double rate = 0;   ///< frames or samples per second
    std::string layout;
    double seconds = 0; ///< from the first packet's time to the end of the last one
    std::string language;
};

struct MediaInfo
{
    std::string format;
    std::map<std::string, std::string> tags;
    std::vector<StreamInfo> streams;

    std::vector<StreamInfo> Of(AVMediaType type) const
    {
        std::vector<StreamInfo> found;
        std::copy_if(streams.begin(), streams.end(), std::back_inserter(found),
                     [type](const StreamInfo& stream) { return stream.type == type; });
        return found;
    }
    StreamInfo Video() const { return Of(AVMEDIA_TYPE_VIDEO).at(0); }
    StreamInfo Audio() const { return Of(AVMEDIA_TYPE_AUDIO).at(0); }
};

namespace details
{

inline std::string Tag(const AVDictionary* tags, const char* key)
{
    const AVDictionaryEntry* const entry = av_dict_get(tags, key, nullptr, 0);
    return entry == nullptr ? "" : entry->value;
}

inline StreamInfo InfoOf(AVFormatContext* context, AVStream* stream)
{
    const AVCodecParameters& codec = *stream->codecpar;
    StreamInfo info;
    info.type = codec.codec_type;
    info.codec = avcodec_get_name(codec.codec_id);
    info.language = Tag(stream->metadata, "language");
    info.width = codec.width;
    info.height = codec.height;
    if (codec.codec_type == AVMEDIA_TYPE_VIDEO && codec.height > 0)
    {
        const AVRational aspect = av_guess_sample_aspect_ratio(context, stream, nullptr);
        info.aspect = static_cast<double>(codec.width) / codec.height * (aspect.num > 0 ? av_q2d(aspect) : 1);
        info.rate = av_q2d(av_guess_frame_rate(context, stream, nullptr));
    }
    else if (codec.codec_type == AVMEDIA_TYPE_AUDIO)
    {
        char name[64] = "";
        AVChannelLayout layout = {};
        // Some containers only count the channels.
        av_channel_layout_default(&layout, codec.ch_layout.nb_channels);
        const bool isCounted = codec.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC;
        av_channel_layout_describe(isCounted ? &layout : &codec.ch_layout, name, sizeof name);
        info.layout = name;
        info.rate = codec.sample_rate;
    }
    return info;
}

/// Measured from the packets, since containers know it only roughly.
inline void MeasureDurations(AVFormatContext* context, MediaInfo& info)
{
    struct Span
    {
        double begin = 1e9;
        double end = -1e9;
    };
    std::vector<Span> spans(info.streams.size());
    const std::unique_ptr<AVPacket, void (*)(AVPacket*)> packet(av_packet_alloc(),
                                                                [](AVPacket* p) { av_packet_free(&p); });
    while (av_read_frame(context, packet.get()) == 0)
    {
        const auto index = static_cast<std::size_t>(packet->stream_index);
        if (index < spans.size() && packet->pts != AV_NOPTS_VALUE)
        {
            const double unit = av_q2d(context->streams[index]->time_base);
            const double begin = static_cast<double>(packet->pts) * unit;
            spans[index].begin = std::min(spans[index].begin, begin);
            spans[index].end =
                std::max(spans[index].end, begin + static_cast<double>(packet->duration) * unit);
        }
        av_packet_unref(packet.get());
    }
    for (std::size_t i = 0; i < spans.size(); ++i)
    {
        info.streams[i].seconds = std::max(0.0, spans[i].end - spans[i].begin);
    }
}

} // namespace details

/// Opens the file with libavformat. \throw std::runtime_error
inline MediaInfo ReadMediaInfo(const std::string& path)
{
    av_log_set_level(AV_LOG_QUIET);
    AVDictionary* options = nullptr;
    av_dict_set(&options, "pattern_type", "none", 0);
    AVFormatContext* opened = nullptr;
    const int error = avformat_open_input(&opened, ("file:" + path).c_str(), nullptr, &options);
    av_dict_free(&options);
    if (error < 0 || avformat_find_stream_info(opened, nullptr) < 0)
    {
        throw std::runtime_error("libavformat cannot read " + path);
    }
    const std::unique_ptr<AVFormatContext, void (*)(AVFormatContext*)> context(
        opened, [](AVFormatContext* c) { avformat_close_input(&c); });
    MediaInfo info;
    info.format = opened->iformat->name;
    const AVDictionaryEntry* tag = nullptr;
    while ((tag = av_dict_get(opened->metadata, "", tag, AV_DICT_IGNORE_SUFFIX)) != nullptr)
    {
        info.tags[tag->key] = tag->value;
    }
    for (unsigned int i = 0; i < opened->nb_streams; ++i)
    {
        info.streams.push_back(details::InfoOf(opened, opened->streams[i]));
    }
    details::MeasureDurations(opened, info);
    return info;
}

} // namespace Zelnor::Testing
