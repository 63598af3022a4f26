#include "Media/Verifying/MediaScan.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Probe/MediaInput.h"
#include "Media/Verifying/Numbers.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

namespace Zelnor::Media
{

namespace
{

constexpr std::int64_t kOneSecond = AV_TIME_BASE;

struct FreePacket
{
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct FreeAVFrame
{
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct FreeDecoder
{
    void operator()(AVCodecContext* decoder) const { avcodec_free_context(&decoder); }
};

template <class T>
T* Needed(T* object)
{
    if (object == nullptr)
    {
        throw std::bad_alloc();
    }
    return object;
}

std::string ErrorOf(int error)
{
    char reason[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(error, reason, sizeof reason);
    return reason;
}

/// A stretch of a file in microseconds from its beginning.
struct Window
{
    std::int64_t from;
    std::int64_t to;
};
constexpr std::int64_t kToTheEnd = std::numeric_limits<std::int64_t>::max();

/// Decodes one stream.
class StreamDecoder
{
public:
    StreamDecoder(const AVStream& stream, StreamScan& scan) : m_stream(stream), m_scan(scan)
    {
        const AVCodec* const codec = avcodec_find_decoder(stream.codecpar->codec_id);
        scan.hasDecoder = codec != nullptr;
        if (codec == nullptr)
        {
            return;
        }
        m_decoder.reset(Needed(avcodec_alloc_context3(codec)));
        m_frame.reset(Needed(av_frame_alloc()));
        int result = avcodec_parameters_to_context(m_decoder.get(), stream.codecpar);
        m_decoder->pkt_timebase = stream.time_base;
        m_decoder->err_recognition = AV_EF_CRCCHECK;
        constexpr int kSmallWidth = 720;
        m_decoder->thread_count = stream.codecpar->width <= kSmallWidth ? 1 : 0;
        result = result < 0 ? result : avcodec_open2(m_decoder.get(), codec, nullptr);
        if (result < 0)
        {
            scan.error = std::string("the decoder ") + codec->name + " cannot be opened: " + ErrorOf(result);
            m_decoder.reset();
        }
    }

    bool IsOpen() const { return m_decoder != nullptr; }

    /// Begins anew, somewhere in the stream: what comes before a key frame cannot be decoded, nor what is
    /// shown before it.
    void Jump()
    {
        if (IsOpen())
        {
            avcodec_flush_buffers(m_decoder.get());
        }
        m_waitsForKey = true;
        m_isSettling = true;
        m_key = AV_NOPTS_VALUE;
    }

    /// \param time       of the packet in the file
    /// \param isPreroll  it comes before what is to be decoded, and is needed only to get there
    void Decode(const AVPacket& packet, std::int64_t time, bool isPreroll)
    {
        if (!IsOpen() || !m_scan.error.empty() || IsUndecodable(packet))
        {
            return;
        }
        m_isPreroll = isPreroll;
        m_time = time;
        if (m_stream.codecpar->codec_type == AVMEDIA_TYPE_SUBTITLE)
        {
            DecodeSubtitle(packet);
            return;
        }
        int result = avcodec_send_packet(m_decoder.get(), &packet);
        if (result == AVERROR(EAGAIN))
        {
            Receive();
            result = avcodec_send_packet(m_decoder.get(), &packet);
        }
        Check(result);
        Receive();
    }

    /// Takes what is still in the decoder.
    void Finish()
    {
        if (IsOpen() && m_scan.error.empty() && m_stream.codecpar->codec_type != AVMEDIA_TYPE_SUBTITLE)
        {
            m_isPreroll = false;
            Check(avcodec_send_packet(m_decoder.get(), nullptr));
            Receive();
        }
    }

private:
    bool IsUndecodable(const AVPacket& packet)
    {
        if (m_stream.codecpar->codec_type != AVMEDIA_TYPE_VIDEO)
        {
            return false;
        }
        if (m_waitsForKey && (packet.flags & AV_PKT_FLAG_KEY) != 0)
        {
            m_waitsForKey = false;
            m_key = packet.pts;
            return false;
        }
        return m_waitsForKey ||
               (m_key != AV_NOPTS_VALUE && packet.pts != AV_NOPTS_VALUE && packet.pts < m_key);
    }

    void Receive()
    {
        int result = 0;
        while ((result = avcodec_receive_frame(m_decoder.get(), m_frame.get())) >= 0)
        {
            const bool isDamaged =
                m_frame->decode_error_flags != 0 || (m_frame->flags & AV_FRAME_FLAG_CORRUPT) != 0;
            if (isDamaged)
            {
                Check(AVERROR_INVALIDDATA);
            }
            else
            {
                ++m_scan.frames;
                m_isSettling = false;
            }
            av_frame_unref(m_frame.get());
        }
        if (result != AVERROR(EAGAIN) && result != AVERROR_EOF)
        {
            Check(result);
        }
    }

    void DecodeSubtitle(const AVPacket& packet)
    {
        AVSubtitle subtitle = {};
        int isThere = 0;
        const int result =
            avcodec_decode_subtitle2(m_decoder.get(), &subtitle, &isThere, const_cast<AVPacket*>(&packet));
        if (isThere != 0)
        {
            ++m_scan.frames;
            avsubtitle_free(&subtitle);
        }
        Check(result);
    }

    /// Right behind a jump a decoder may lack what stood before.
    void Check(int result)
    {
        if (result < 0 && !m_isSettling && !m_isPreroll && m_scan.error.empty())
        {
            m_scan.error = "at " + SecondsText(m_time) + ": " + ErrorOf(result);
        }
    }

    const AVStream& m_stream;
    StreamScan& m_scan;
    std::unique_ptr<AVCodecContext, FreeDecoder> m_decoder;
    std::unique_ptr<AVFrame, FreeAVFrame> m_frame;
    bool m_waitsForKey = false;
    bool m_isSettling = false;
    bool m_isPreroll = false;
    std::int64_t m_key = AV_NOPTS_VALUE;
    std::int64_t m_time = 0;
};

/// Reads a file's packets.
class Scanner
{
public:
    Scanner(const std::string& name, const std::function<bool()>& isCancelled)
        : m_input(name, nullptr), m_isCancelled(isCancelled), m_packet(Needed(av_packet_alloc()))
    {
        m_scan.streams.resize(m_input->nb_streams);
        m_begin = m_input->start_time == AV_NOPTS_VALUE ? 0 : m_input->start_time;
    }

    std::int64_t Size() const { return m_input->pb == nullptr ? 0 : avio_size(m_input->pb); }
    std::optional<std::int64_t> Duration() const
    {
        return m_input->duration > 0 ? std::optional(m_input->duration) : std::nullopt;
    }

    void OpenDecoders()
    {
        for (unsigned int i = 0; i < m_input->nb_streams; ++i)
        {
            const AVStream& stream = *m_input->streams[i];
            const AVMediaType type = stream.codecpar->codec_type;
            const bool isDecoded =
                type == AVMEDIA_TYPE_VIDEO || type == AVMEDIA_TYPE_AUDIO || type == AVMEDIA_TYPE_SUBTITLE;
            m_decoders.push_back(isDecoded ? std::make_unique<StreamDecoder>(stream, m_scan.streams[i])
                                           : nullptr);
        }
    }

    /// \returns false when it cannot be done
    bool Seek(std::int64_t time)
    {
        const std::int64_t target = m_begin + time;
        const std::int64_t earliest = std::numeric_limits<std::int64_t>::min();
        if (avformat_seek_file(&*m_input, -1, earliest, target, target, 0) < 0)
        {
            return false;
        }
        for (const auto& decoder : m_decoders)
        {
            if (decoder != nullptr)
            {
                decoder->Jump();
            }
        }
        return true;
    }

    /// Reads on until every stream has come to the window's end, or to the end of the file.
    void Read(const Window& window, bool isCounted, const ScanProgress& onProgress = {})
    {
        std::vector<bool> done(m_scan.streams.size(), false);
        while (!m_scan.isCancelled && av_read_frame(&*m_input, m_packet.get()) >= 0)
        {
            const auto index = static_cast<std::size_t>(m_packet->stream_index);
            if (index < m_scan.streams.size())
            {
                done[index] = Take(index, window, isCounted) || done[index];
            }
            av_packet_unref(m_packet.get());
            m_scan.isCancelled = m_isCancelled && m_isCancelled();
            if (onProgress)
            {
                onProgress(m_latest);
            }
            if (window.to != kToTheEnd && AreDone(done))
            {
                return;
            }
        }
        for (const auto& decoder : m_decoders)
        {
            if (decoder != nullptr)
            {
                decoder->Finish();
            }
        }
    }

    MediaScan& Scan() { return m_scan; }

private:
    /// Only streams that go on through the whole file are waited for.
    bool AreDone(const std::vector<bool>& done) const
    {
        bool any = false;
        for (std::size_t i = 0; i < done.size(); ++i)
        {
            const AVStream& stream = *m_input->streams[i];
            const AVMediaType type = stream.codecpar->codec_type;
            const bool isSteady = (type == AVMEDIA_TYPE_VIDEO || type == AVMEDIA_TYPE_AUDIO) &&
                                  (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
            if (isSteady && !done[i])
            {
                return IsFarBeyond(done);
            }
            any = any || done[i];
        }
        return any;
    }

    /// A stream that ended before the window would never come to its end.
    bool IsFarBeyond(const std::vector<bool>& done) const
    {
        constexpr std::int64_t kPatience = 5 * kOneSecond;
        return m_latest > m_windowEnd + kPatience && std::find(done.begin(), done.end(), true) != done.end();
    }

    /// \returns whether the packet is one behind the window
    bool Take(std::size_t index, const Window& window, bool isCounted)
    {
        const AVStream& stream = *m_input->streams[index];
        const std::int64_t stamp = m_packet->pts != AV_NOPTS_VALUE ? m_packet->pts : m_packet->dts;
        const std::int64_t time =
            stamp == AV_NOPTS_VALUE
                ? m_scan.streams[index].end.value_or(0)
                : av_rescale_q(stamp, stream.time_base, AVRational{1, AV_TIME_BASE}) - m_begin;
        if ((m_packet->flags & AV_PKT_FLAG_DISCARD) == 0)
        {
            Measure(stream, time, m_scan.streams[index]);
        }
        if (isCounted)
        {
            ++m_scan.streams[index].packets;
            m_scan.streams[index].bytes += m_packet->size;
        }
        m_latest = time;
        m_windowEnd = window.to;
        const bool isBehind = time >= window.to;
        if (index < m_decoders.size() && m_decoders[index] != nullptr && !isBehind)
        {
            m_decoders[index]->Decode(*m_packet, time, time < window.from);
        }
        return isBehind;
    }

    void Measure(const AVStream& stream, std::int64_t time, StreamScan& scan) const
    {
        const std::int64_t length = LengthOf(stream);
        scan.frameLength = std::max(scan.frameLength, length);
        scan.begin = scan.begin ? std::min(*scan.begin, time) : time;
        scan.end = std::max(scan.end.value_or(time + length), time + length);
    }

    std::int64_t LengthOf(const AVStream& stream) const
    {
        if (m_packet->duration > 0)
        {
            return av_rescale_q(m_packet->duration, stream.time_base, AVRational{1, AV_TIME_BASE});
        }
        const AVCodecParameters& codec = *stream.codecpar;
        if (codec.codec_type == AVMEDIA_TYPE_VIDEO && stream.avg_frame_rate.num > 0)
        {
            return av_rescale_q(1, av_inv_q(stream.avg_frame_rate), AVRational{1, AV_TIME_BASE});
        }
        return codec.codec_type == AVMEDIA_TYPE_AUDIO && codec.sample_rate > 0
                   ? av_rescale(codec.frame_size, AV_TIME_BASE, codec.sample_rate)
                   : 0;
    }

    const MediaInput m_input;
    const std::function<bool()>& m_isCancelled;
    std::unique_ptr<AVPacket, FreePacket> m_packet;
    std::vector<std::unique_ptr<StreamDecoder>> m_decoders;
    std::int64_t m_begin = 0;
    std::int64_t m_latest = 0;
    std::int64_t m_windowEnd = 0;
    MediaScan m_scan;
};

void DecodeAll(Scanner& scanner, const ScanProgress& onProgress)
{
    scanner.OpenDecoders();
    scanner.Read({0, kToTheEnd}, true, onProgress);
    scanner.Scan().isWhole = true;
    scanner.Scan().isDecoded = true;
}

/// \returns false when the file's demuxer cannot seek
bool DecodeParts(Scanner& scanner, std::int64_t duration)
{
    scanner.OpenDecoders();
    scanner.Read({0, kOneSecond}, false);
    for (const Window& window :
         {Window{duration / 2, duration / 2 + kOneSecond}, Window{duration - kOneSecond, kToTheEnd}})
    {
        if (!scanner.Seek(window.from))
        {
            return false;
        }
        for (StreamScan& stream : scanner.Scan().streams)
        {
            // Only the last window shows where a stream ends.
            stream.end.reset();
        }
        scanner.Read(window, false);
    }
    return true;
}

} // namespace

MediaScan MeasurePackets(const std::string& name, const std::function<bool()>& isCancelled)
{
    Scanner scanner(name, isCancelled);
    scanner.Read({0, kToTheEnd}, true);
    scanner.Scan().isWhole = true;
    return std::move(scanner.Scan());
}

MediaScan DecodeFile(const std::string& name, VerificationDepth depth,
                     const std::function<bool()>& isCancelled, const ScanProgress& onProgress)
{
    constexpr std::int64_t kShort = 4 * kOneSecond;
    constexpr std::int64_t kSmall = 64LL * 1024 * 1024;
    Scanner scanner(name, isCancelled);
    const std::optional<std::int64_t> duration = scanner.Duration();
    const bool isSmall = scanner.Size() <= kSmall;
    if (depth == VerificationDepth::Full || (isSmall && duration.value_or(0) <= kShort))
    {
        DecodeAll(scanner, onProgress);
        return std::move(scanner.Scan());
    }
    if (!duration || !DecodeParts(scanner, *duration))
    {
        Scanner whole(name, isCancelled);
        DecodeAll(whole, onProgress);
        return std::move(whole.Scan());
    }
    MediaScan scan = std::move(scanner.Scan());
    if (isSmall && !scan.isCancelled)
    {
        MediaScan counted = MeasurePackets(name, isCancelled);
        for (std::size_t i = 0; i < counted.streams.size() && i < scan.streams.size(); ++i)
        {
            counted.streams[i].frames = scan.streams[i].frames;
            counted.streams[i].hasDecoder = scan.streams[i].hasDecoder;
            counted.streams[i].error = scan.streams[i].error;
        }
        return counted;
    }
    return scan;
}

} // namespace Zelnor::Media
