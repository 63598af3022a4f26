#include "Media/Probe/FrameRates.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Probe/FFmpegMemory.h"

extern "C" {
#include <libavcodec/packet.h>
}

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <memory>

namespace Zelnor::Media
{

namespace
{

constexpr AVRational kUnknown = {0, 1};

/// What cameras, broadcasts and players use.
constexpr AVRational kStandardRates[] = {
    {12, 1}, {25, 2},       {15000, 1001},  {15, 1},  {24000, 1001}, {24, 1},        {25, 1},  {30000, 1001},
    {30, 1}, {48000, 1001}, {48, 1},        {50, 1},  {60000, 1001}, {60, 1},        {72, 1},  {75, 1},
    {90, 1}, {100, 1},      {120000, 1001}, {120, 1}, {144, 1},      {240000, 1001}, {240, 1},
};

double Distance(AVRational one, AVRational other) { return std::abs(av_q2d(one) / av_q2d(other) - 1); }

bool IsBelievable(AVRational rate)
{
    constexpr double kHighest = 300.0;
    return rate.num > 0 && rate.den > 0 && av_q2d(rate) <= kHighest;
}

bool IsMovingVideo(const AVStream& stream)
{
    return stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
           (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
}

/// The times of a stream's first frames.
struct Frames
{
    bool isMeasured = false;
    std::int64_t count = 0;
    std::int64_t first = 0;
    std::int64_t last = 0; ///< the latest, since packets come in the order of decoding

    void Add(std::int64_t time)
    {
        first = count == 0 ? time : std::min(first, time);
        last = count == 0 ? time : std::max(last, time);
        ++count;
    }

    std::optional<AVRational> Rate(AVRational timeBase) const
    {
        if (count < 2 || last <= first || timeBase.num <= 0 || timeBase.den <= 0)
        {
            return std::nullopt;
        }
        const double seconds = static_cast<double>(last - first) * av_q2d(timeBase);
        constexpr int kLargestTerm = 65535;
        const AVRational rate = av_d2q(static_cast<double>(count - 1) / seconds, kLargestTerm);
        if (rate.num <= 0)
        {
            return std::nullopt;
        }
        // Frames of such files come when they come. A standard rate near their average loses and doubles as
        // few as any other.
        constexpr double kIrregular = 0.02;
        return SnapToStandardRate(rate, kIrregular);
    }
};

std::int64_t TimeOf(const AVPacket& packet) { return packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts; }

/// Counts until there are enough, or the file ends.
void CountFrames(AVFormatContext& context, std::vector<Frames>& streams)
{
    // Enough for an average, and soon read however the streams are interleaved.
    constexpr std::int64_t kFrames = 300;
    constexpr int kPackets = 5000;
    const std::unique_ptr<AVPacket, void (*)(AVPacket*)> packet(RequireMemory(av_packet_alloc()),
                                                                [](AVPacket* p) { av_packet_free(&p); });
    const auto isCounted = [](const Frames& frames) { return !frames.isMeasured || frames.count >= kFrames; };
    for (int i = 0; i < kPackets && !std::all_of(streams.begin(), streams.end(), isCounted); ++i)
    {
        if (av_read_frame(&context, packet.get()) < 0)
        {
            return;
        }
        const auto index = static_cast<std::size_t>(packet->stream_index);
        const std::int64_t time = TimeOf(*packet);
        if (index < streams.size() && streams[index].isMeasured && time != AV_NOPTS_VALUE)
        {
            streams[index].Add(time);
        }
        av_packet_unref(packet.get());
    }
}

} // namespace

double RateTolerance(AVRational timeBase, double seconds)
{
    constexpr double kOfRates = 1e-6;
    constexpr double kLargest = 4e-4; // 24 and 24000/1001 are 1e-3 apart
    const double tick = timeBase.num > 0 && timeBase.den > 0 ? av_q2d(timeBase) : 0;
    return std::clamp(tick / std::max(seconds, 1.0), kOfRates, kLargest);
}

AVRational SnapToStandardRate(AVRational rate, double tolerance)
{
    if (rate.num <= 0 || rate.den <= 0)
    {
        return rate;
    }
    const auto* const nearest = std::min_element(
        std::begin(kStandardRates), std::end(kStandardRates),
        [rate](AVRational one, AVRational other) { return Distance(one, rate) < Distance(other, rate); });
    return Distance(*nearest, rate) <= tolerance ? *nearest : rate;
}

AVRational FrameRateOf(AVFormatContext& context, AVStream& stream)
{
    if (!IsMovingVideo(stream))
    {
        return kUnknown;
    }
    const AVRational guess = av_guess_frame_rate(&context, &stream, nullptr);
    const AVRational rate = IsBelievable(guess)                   ? guess
                            : IsBelievable(stream.avg_frame_rate) ? stream.avg_frame_rate
                                                                  : kUnknown;
    const double seconds = stream.duration > 0
                               ? static_cast<double>(stream.duration) * av_q2d(stream.time_base)
                           : context.duration > 0 ? static_cast<double>(context.duration) / AV_TIME_BASE
                                                  : 0;
    return SnapToStandardRate(rate, RateTolerance(stream.time_base, seconds));
}

std::vector<std::optional<AVRational>> MeasureFrameRates(AVFormatContext& context)
{
    std::vector<Frames> frames(context.nb_streams);
    bool isNeeded = false;
    for (std::size_t i = 0; i < frames.size(); ++i)
    {
        AVStream& stream = *context.streams[i];
        frames[i].isMeasured = IsMovingVideo(stream) && FrameRateOf(context, stream).num == 0;
        isNeeded = isNeeded || frames[i].isMeasured;
    }
    std::vector<std::optional<AVRational>> rates(frames.size());
    if (isNeeded)
    {
        CountFrames(context, frames);
        std::transform(frames.begin(), frames.end(), context.streams, rates.begin(),
                       [](const Frames& counted, const AVStream* stream) {
                           return counted.isMeasured ? counted.Rate(stream->time_base) : std::nullopt;
                       });
    }
    return rates;
}

} // namespace Zelnor::Media
