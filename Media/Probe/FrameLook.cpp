#include "Media/Probe/FrameLook.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Probe/VideoColors.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <memory>
#include <new>

namespace Zelnor::Media
{

namespace
{

/// Enough for films that begin with a progressive title frame or two.
constexpr int kEnoughFrames = 5;
/// A video that begins late, or cannot be decoded, must not make the probe read the whole file.
constexpr int kMostPackets = 200;
constexpr long long kMostBytes = 64LL << 20;

struct Free
{
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
};

template <class T>
std::unique_ptr<T, Free> Require(T* made)
{
    if (made == nullptr)
    {
        throw std::bad_alloc();
    }
    return std::unique_ptr<T, Free>(made);
}

bool IsInterlaced(const AVFrame& frame)
{
#ifdef AV_FRAME_FLAG_INTERLACED
    return (frame.flags & AV_FRAME_FLAG_INTERLACED) != 0;
#else
    return frame.interlaced_frame != 0;
#endif
}

bool IsTopFieldFirst(const AVFrame& frame)
{
#ifdef AV_FRAME_FLAG_TOP_FIELD_FIRST
    return (frame.flags & AV_FRAME_FLAG_TOP_FIELD_FIRST) != 0;
#else
    return frame.top_field_first != 0;
#endif
}

void FillIn(std::string& known, const std::string& found)
{
    if (known.empty())
    {
        known = found;
    }
}

/// One video of the file.
class Look
{
public:
    explicit Look(const AVStream& stream) : m_decoder(Open(stream)) {}

    bool IsDone() const { return m_decoder == nullptr || m_frames >= kEnoughFrames; }

    /// \param packet  null at the end of the file
    void Decode(const AVPacket* packet, AVFrame& frame, MediaStream& stream)
    {
        if (IsDone() || avcodec_send_packet(m_decoder.get(), packet) < 0)
        {
            return;
        }
        while (!IsDone() && avcodec_receive_frame(m_decoder.get(), &frame) == 0)
        {
            ++m_frames;
            Add(frame, stream);
        }
    }

    /// Judges what was seen.
    void Finish(MediaStream& stream) const
    {
        stream.isInterlacedByHeader = stream.isInterlaced && m_frames != 0 && m_interlaced == 0;
        if (m_interlaced == 0)
        {
            return;
        }
        stream.isInterlaced = true;
        const bool headerAgrees = stream.fieldOrder.substr(0, 1) == (m_isTopFirst ? "t" : "b");
        if (!headerAgrees)
        {
            stream.fieldOrder = m_isTopFirst ? "tt" : "bb";
        }
    }

private:
    /// Null when there is no decoder, or it cannot be used.
    static std::unique_ptr<AVCodecContext, Free> Open(const AVStream& stream)
    {
        const AVCodec* const codec = avcodec_find_decoder(stream.codecpar->codec_id);
        if (codec == nullptr)
        {
            return nullptr;
        }
        auto decoder = Require(avcodec_alloc_context3(codec));
        decoder->thread_count = 1;
        const bool isOpen = avcodec_parameters_to_context(decoder.get(), stream.codecpar) >= 0 &&
                            avcodec_open2(decoder.get(), codec, nullptr) == 0;
        return isOpen ? std::move(decoder) : nullptr;
    }

    void Add(const AVFrame& frame, MediaStream& stream)
    {
        if (IsInterlaced(frame))
        {
            m_isTopFirst = m_interlaced == 0 ? IsTopFieldFirst(frame) : m_isTopFirst;
            ++m_interlaced;
        }
        const VideoColor color = ColorOf(frame);
        FillIn(stream.color.range, color.range);
        FillIn(stream.color.matrix, color.matrix);
        FillIn(stream.color.primaries, color.primaries);
        FillIn(stream.color.transfer, color.transfer);
        const VideoHdr hdr = HdrOf(frame);
        const auto isNew = [](const std::string& known, const std::string& found) {
            return known.empty() && !found.empty();
        };
        stream.hdr.isOnlyInFrames = stream.hdr.isOnlyInFrames ||
                                    isNew(stream.hdr.masteringDisplay, hdr.masteringDisplay) ||
                                    isNew(stream.hdr.contentLight, hdr.contentLight);
        FillIn(stream.hdr.masteringDisplay, hdr.masteringDisplay);
        FillIn(stream.hdr.contentLight, hdr.contentLight);
    }

    std::unique_ptr<AVCodecContext, Free> m_decoder;
    int m_frames = 0;
    int m_interlaced = 0;
    bool m_isTopFirst = false;
};

/// The looks at the videos, by the indexes of the streams; null for all other streams.
std::vector<std::unique_ptr<Look>> LooksAt(AVFormatContext& context, const std::vector<MediaStream>& streams)
{
    std::vector<std::unique_ptr<Look>> looks(streams.size());
    for (std::size_t i = 0; i < streams.size(); ++i)
    {
        AVStream& stream = *context.streams[i];
        if (streams[i].kind == StreamKind::Video && !streams[i].isAttachedPicture)
        {
            looks[i] = std::make_unique<Look>(stream);
        }
        else
        {
            stream.discard = AVDISCARD_ALL;
        }
    }
    return looks;
}

bool AreDone(const std::vector<std::unique_ptr<Look>>& looks)
{
    for (const std::unique_ptr<Look>& look : looks)
    {
        if (look != nullptr && !look->IsDone())
        {
            return false;
        }
    }
    return true;
}

} // namespace

void LookAtFrames(AVFormatContext& context, std::vector<MediaStream>& streams)
{
    const auto looks = LooksAt(context, streams);
    const auto packet = Require(av_packet_alloc());
    const auto frame = Require(av_frame_alloc());
    long long bytes = 0;
    for (int i = 0; i < kMostPackets && bytes < kMostBytes && !AreDone(looks); ++i)
    {
        if (av_read_frame(&context, packet.get()) < 0)
        {
            break;
        }
        bytes += packet->size;
        // A demuxer may find further streams while it reads.
        const auto index = static_cast<std::size_t>(packet->stream_index);
        if (index < looks.size() && looks[index] != nullptr)
        {
            looks[index]->Decode(packet.get(), *frame, streams[index]);
        }
        av_packet_unref(packet.get());
    }
    for (std::size_t i = 0; i < looks.size(); ++i)
    {
        if (looks[i] != nullptr)
        {
            looks[i]->Decode(nullptr, *frame, streams[i]);
            looks[i]->Finish(streams[i]);
        }
    }
}

} // namespace Zelnor::Media
