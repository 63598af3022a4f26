#include "Media/Planning/BlankStream.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Planning/EncoderCapabilities.h"
#include "Media/Probe/FFmpegMemory.h"

#include <array>
#include <cstring>
#include <utility>

namespace Zelnor::Media
{

namespace
{

struct FreeCodec
{
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FreeFrame
{
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
void SetUpAudio(const AVCodec& encoder, AVCodecContext& context)
{
    constexpr int kUsualRate = 48000;
    context.sample_rate = NearestRate(encoder, kUsualRate);
    context.sample_fmt = encoder.sample_fmts == nullptr ? AV_SAMPLE_FMT_S16 : encoder.sample_fmts[0];
    if (encoder.ch_layouts == nullptr)
    {
        av_channel_layout_default(&context.ch_layout, 2);
    }
    else
    {
        RequireMemory(av_channel_layout_copy(&context.ch_layout, &encoder.ch_layouts[0]));
    }
    context.time_base = {1, context.sample_rate};
}

/// Sizes of which each encoder supports one: of old telephones, DVDs and HD.
struct Size
{
    int width;
    int height;
};
constexpr std::array<Size, 3> kSizes = {{{176, 144}, {720, 576}, {1920, 1080}}};

void SetUpVideo(const AVCodec& encoder, const Size& size, AVCodecContext& context)
{
    context.width = size.width;
    context.height = size.height;
    context.pix_fmt = encoder.pix_fmts == nullptr ? AV_PIX_FMT_YUV420P : encoder.pix_fmts[0];
    context.time_base = kFrameTime;
    context.framerate = {kFrameTime.den, kFrameTime.num};
}

/// Null when the encoder does not start.
std::unique_ptr<AVCodecContext, FreeCodec> StartEncoder(const AVCodec& encoder, const Size& size, int flags)
{
    std::unique_ptr<AVCodecContext, FreeCodec> context(RequireMemory(avcodec_alloc_context3(&encoder)));
    // What an encoder tells of itself is of no use here.
    context->log_level_offset = 2 * AV_LOG_TRACE;
    context->thread_count = 1;
    context->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    context->flags |= flags;
    encoder.type == AVMEDIA_TYPE_AUDIO ? SetUpAudio(encoder, *context) : SetUpVideo(encoder, size, *context);
    return avcodec_open2(context.get(), &encoder, nullptr) < 0 ? nullptr : std::move(context);
}

std::unique_ptr<AVFrame, FreeFrame> MakeBlankFrame(const AVCodecContext& context)
{
    constexpr int kUsualSamples = 1024;
    std::unique_ptr<AVFrame, FreeFrame> frame(RequireMemory(av_frame_alloc()));
    frame->pts = 0;
    frame->width = context.width;
    frame->height = context.height;
    frame->sample_rate = context.sample_rate;
    frame->nb_samples = context.frame_size > 0 ? context.frame_size : kUsualSamples;
    frame->format = context.codec_type == AVMEDIA_TYPE_AUDIO ? static_cast<int>(context.sample_fmt)
                                                             : static_cast<int>(context.pix_fmt);
    if (context.codec_type == AVMEDIA_TYPE_VIDEO)
    {
        frame->nb_samples = 0;
    }
    RequireMemory(av_channel_layout_copy(&frame->ch_layout, &context.ch_layout));
    RequireMemory(av_frame_get_buffer(frame.get(), 0));
    for (AVBufferRef* const buffer : frame->buf)
    {
        if (buffer != nullptr)
        {
            std::memset(buffer->data, 0, buffer->size);
        }
    }
    return frame;
}

/// Nothing when the encoder does not encode the frame.
std::optional<BlankStream> EncodeBlankFrame(AVCodecContext& context)
{
    BlankStream stream;
    const auto frame = MakeBlankFrame(context);
    for (const AVFrame* const each :
         {static_cast<const AVFrame*>(frame.get()), static_cast<const AVFrame*>(nullptr)})
    {
        if (avcodec_send_frame(&context, each) < 0)
        {
            return std::nullopt;
        }
        std::unique_ptr<AVPacket, FreePacket> packet(RequireMemory(av_packet_alloc()));
        while (avcodec_receive_packet(&context, packet.get()) == 0)
        {
            stream.packets.push_back(std::move(packet));
            packet.reset(RequireMemory(av_packet_alloc()));
        }
    }
    stream.timeBase = context.time_base;
    stream.parameters.reset(RequireMemory(avcodec_parameters_alloc()));
    RequireMemory(avcodec_parameters_from_context(stream.parameters.get(), &context));
    return stream.packets.empty() ? std::nullopt : std::optional(std::move(stream));
}

} // namespace

std::optional<BlankStream> MakeBlankStream(const AVCodec& encoder, int flags)
{
    // FFmpeg reads through a null pointer when an encoder of subtitles is given a frame.
    if (encoder.type != AVMEDIA_TYPE_VIDEO && encoder.type != AVMEDIA_TYPE_AUDIO)
    {
        return std::nullopt;
    }
    for (const Size& size : kSizes)
    {
        if (const auto context = StartEncoder(encoder, size, flags))
        {
            if (auto stream = EncodeBlankFrame(*context))
            {
                return stream;
            }
        }
    }
    return std::nullopt;
}

} // namespace Zelnor::Media
