#include "Media/Planning/AudioTrial.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Probe/FFmpegMemory.h"
#include "Media/Probe/FFmpegNames.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
}

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Core::Property;

struct FreeObject
{
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

using Context = std::unique_ptr<AVCodecContext, FreeObject>;

/// Null when the encoder does not take it.
Context Open(const AVCodec& encoder, const Property& codec)
{
    Context context(RequireMemory(avcodec_alloc_context3(&encoder)));
    const char* const layout =
        ToFFmpeg(Conf::LayoutRecord::Find(codec[IFormatCodecAudio::TAG_LAYOUT].GetString())->layout);
    if (layout == nullptr || av_channel_layout_from_string(&context->ch_layout, layout) < 0)
    {
        return nullptr;
    }
    context->bit_rate = codec[IFormatCodec::TAG_BITRATE].GetInt64();
    context->sample_rate = static_cast<int>(codec[IFormatCodecAudio::TAG_SAMPLE_RATE].GetInt64());
    context->sample_fmt = ToFFmpeg(
        Conf::SampleFmtRecord::Find(codec[IFormatCodecAudio::TAG_SAMPLE_FORMAT].GetString())->format);
    context->time_base = {1, context->sample_rate};
    return avcodec_open2(context.get(), &encoder, nullptr) < 0 ? nullptr : std::move(context);
}

/// Fills a frame with noise: samples that no encoder makes small.
void FillWithNoise(AVFrame& frame, std::minstd_rand& random)
{
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const AVSampleFormat packed = av_get_packed_sample_fmt(format);
    const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
    const int planes = isPlanar ? frame.ch_layout.nb_channels : 1;
    const int samples = frame.nb_samples * (isPlanar ? 1 : frame.ch_layout.nb_channels);
    const auto size = static_cast<std::size_t>(av_get_bytes_per_sample(format));
    for (int plane = 0; plane < planes; ++plane)
    {
        std::uint8_t* const bytes = frame.extended_data[plane];
        for (int i = 0; i < samples; ++i)
        {
            const double value =
                static_cast<double>(random()) / static_cast<double>(std::minstd_rand::max()) - 0.5;
            const auto asFloat = static_cast<float>(value);
            const auto asInteger = static_cast<std::int64_t>(value * 9e18);
            const void* const source = packed == AV_SAMPLE_FMT_FLT   ? static_cast<const void*>(&asFloat)
                                       : packed == AV_SAMPLE_FMT_DBL ? static_cast<const void*>(&value)
                                                                     : static_cast<const void*>(&asInteger);
            std::memcpy(bytes + static_cast<std::size_t>(i) * size, source, size);
        }
    }
}

/// The bits of the packets that are ready.
long long TakeBits(AVCodecContext& context, AVPacket& packet)
{
    constexpr long long kByte = 8;
    long long bits = 0;
    while (avcodec_receive_packet(&context, &packet) == 0)
    {
        bits += packet.size * kByte;
        av_packet_unref(&packet);
    }
    return bits;
}

} // namespace

std::optional<long long> MeasureBitrate(const AVCodec& encoder, const Property& codec)
{
    const Context context = Open(encoder, codec);
    if (context == nullptr)
    {
        return std::nullopt;
    }
    const std::unique_ptr<AVFrame, FreeObject> frame(RequireMemory(av_frame_alloc()));
    const std::unique_ptr<AVPacket, FreeObject> packet(RequireMemory(av_packet_alloc()));
    constexpr int kUsualFrame = 1024;
    frame->nb_samples = context->frame_size > 0 ? context->frame_size : kUsualFrame;
    frame->format = context->sample_fmt;
    frame->sample_rate = context->sample_rate;
    RequireMemory(av_channel_layout_copy(&frame->ch_layout, &context->ch_layout));
    RequireMemory(av_frame_get_buffer(frame.get(), 0));
    std::minstd_rand random(1);
    long long bits = 0;
    // A quarter of a second at most, whatever the rate claims to be.
    constexpr int kMostSamples = 12000;
    for (frame->pts = 0; frame->pts < kMostSamples; frame->pts += frame->nb_samples)
    {
        RequireMemory(av_frame_make_writable(frame.get()));
        FillWithNoise(*frame, random);
        if (avcodec_send_frame(context.get(), frame.get()) < 0)
        {
            return std::nullopt;
        }
        bits += TakeBits(*context, *packet);
    }
    const std::int64_t samples = frame->pts;
    avcodec_send_frame(context.get(), nullptr);
    bits += TakeBits(*context, *packet);
    return bits * context->sample_rate / samples;
}

} // namespace Zelnor::Media
