#include "Media/Running/SizeEstimate.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Jobs/FaultList.h"
#include "Media/Planning/EncoderCapabilities.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/Running/TranscodeCommand.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/ServiceRecords.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <string>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Core::Property;

/// The last value of the option, which is the one that counts; empty when it is not given.
std::string ValueOf(const CodecOptions& options, const std::string& name)
{
    const auto found = std::find_if(options.rbegin(), options.rend(),
                                    [&name](const auto& option) { return option.first == name; });
    return found == options.rend() ? "" : found->second;
}

/// Of the encoder when nobody asks for one; nothing where it decides on it itself.
std::optional<std::int64_t> DefaultBitrate(const AVCodec& encoder)
{
    const std::unique_ptr<AVCodecContext, void (*)(AVCodecContext*)> context(
        avcodec_alloc_context3(&encoder), [](AVCodecContext* c) { avcodec_free_context(&c); });
    return context == nullptr || context->bit_rate <= 0 ? std::nullopt
                                                        : std::optional<std::int64_t>(context->bit_rate);
}

std::optional<std::int64_t> NumberUnder(const Property& record, const std::string& key)
{
    const auto child = record.FindChild(key);
    return child == record.end() || child->GetType() != PROPERTY_TYPE_INT64
               ? std::nullopt
               : std::optional<std::int64_t>(child->GetInt64());
}

/// Of samples that are not compressed; nothing for others.
std::optional<std::int64_t> PcmBitrate(const AVCodec& encoder, const Property& codec)
{
    const int bits = av_get_exact_bits_per_sample(encoder.id);
    const auto rate = NumberUnder(codec, IFormatCodecAudio::TAG_SAMPLE_RATE);
    const auto layout = codec.FindChild(IFormatCodecAudio::TAG_LAYOUT);
    if (bits == 0 || !rate || layout == codec.end() || layout->GetType() != PROPERTY_TYPE_STRING)
    {
        return std::nullopt;
    }
    return *rate * bits * Conf::LayoutRecord::Find(layout->GetString())->channels;
}

std::optional<std::int64_t> BitrateOf(const StreamCommand& command, const TranscodeStream& stream,
                                      const MediaStream& source)
{
    if (source.kind == StreamKind::Subtitle)
    {
        return 0;
    }
    if (command.isCopied)
    {
        return NumberUnder(source.descriptor->GetProperty(), IFormatCodec::TAG_BITRATE);
    }
    const AVCodec* const encoder = avcodec_find_encoder_by_name(ValueOf(command.options, "c").c_str());
    if (encoder == nullptr || command.isOneImage)
    {
        return std::nullopt;
    }
    const std::string asked = ValueOf(command.options, "b");
    std::int64_t bitrate = 0;
    if (std::from_chars(asked.data(), asked.data() + asked.size(), bitrate).ec == std::errc())
    {
        return bitrate;
    }
    return IsWithoutBitrate(encoder->id) ? PcmBitrate(*encoder, stream.codec) : DefaultBitrate(*encoder);
}

} // namespace

std::optional<std::int64_t> EstimateSize(const Transcode& transcode)
{
    FaultList faults;
    const TranscodeCommand command = MakeTranscodeCommand(transcode, faults);
    const auto duration = transcode.Duration();
    if (!duration || faults.Count() != 0)
    {
        return std::nullopt;
    }
    double bits = 0;
    for (std::size_t i = 0; i < command.streams.size(); ++i)
    {
        const TranscodeStream& stream = transcode.streams[i];
        const auto bitrate = BitrateOf(command.streams[i], stream, transcode.SourceOf(stream));
        if (!bitrate)
        {
            return std::nullopt;
        }
        constexpr double kMicroseconds = 1e6;
        bits += static_cast<double>(*bitrate) * (static_cast<double>(*duration) / kMicroseconds);
    }
    // More than any disk holds, and far from overflow.
    constexpr double kMost = 1e18;
    constexpr double kByte = 8;
    return static_cast<std::int64_t>(std::min(bits / kByte, kMost));
}

} // namespace Zelnor::Media
