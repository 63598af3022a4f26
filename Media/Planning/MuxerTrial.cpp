#include "Media/Planning/MuxerTrial.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Planning/BlankStream.h"
#include "Media/Planning/Containers.h"
#include "Media/Probe/FFmpegMemory.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/Probe/MessageScope.h"
#include "Media/Probe/StreamDescription.h"
#include "Media/Text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

struct FreeOutput
{
    void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};
struct CloseInput
{
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};

/// The encoder for a stream of that codec. Those that take long, or print, are replaced by others for the
/// same container where there are some: tags do not depend on the coding of images.
const AVCodec* TrialEncoder(const std::string& container, const std::string& codec)
{
    const AVCodecID id = CodecNumberOf(codec);
    constexpr std::array<AVCodecID, 4> kHeavy = {AV_CODEC_ID_H264, AV_CODEC_ID_HEVC, AV_CODEC_ID_AV1,
                                                 AV_CODEC_ID_VP9};
    if (std::find(kHeavy.begin(), kHeavy.end(), id) != kHeavy.end())
    {
        for (const AVCodecID light : {AV_CODEC_ID_MPEG4, AV_CODEC_ID_MPEG2VIDEO, AV_CODEC_ID_VP8})
        {
            const AVCodec* const encoder = avcodec_find_encoder(light);
            if (encoder != nullptr && CertainlyHolds(container, light))
            {
                return encoder;
            }
        }
    }
    return FindEncoder(codec);
}

void AddTo(AVDictionary*& dictionary, const TagList& tags)
{
    for (const auto& [name, text] : tags)
    {
        RequireMemory(av_dict_set(&dictionary, name.c_str(), text.c_str(), 0));
    }
}

TagList ListOf(const AVDictionary* dictionary)
{
    TagList tags;
    const AVDictionaryEntry* tag = nullptr;
    while ((tag = av_dict_get(dictionary, "", tag, AV_DICT_IGNORE_SUFFIX)) != nullptr)
    {
        tags.emplace_back(tag->key, tag->value);
    }
    return tags;
}

int RefuseOther(AVFormatContext* /*context*/, AVIOContext** /*file*/, const char* /*url*/, int /*flags*/,
                AVDictionary** /*options*/)
{
    return AVERROR(EACCES);
}

/// Lets FFmpeg write bytes to memory, read them, and seek in them.
class MemoryFile
{
public:
    enum class Access
    {
        Read,
        Write,
    };

    MemoryFile(std::string& bytes, Access access) : m_bytes(bytes)
    {
        constexpr int kBlock = 32768;
        std::unique_ptr<unsigned char, void (*)(void*)> buffer(
            static_cast<unsigned char*>(RequireMemory(av_malloc(kBlock))), av_free);
        m_context = RequireMemory(avio_alloc_context(buffer.get(), kBlock, access == Access::Write ? 1 : 0,
                                                     this, &Read, &Write, &Seek));
        buffer.release();
    }
    ~MemoryFile()
    {
        av_freep(&m_context->buffer);
        avio_context_free(&m_context);
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    AVIOContext* Get() const { return m_context; }
    /// Whether memory ran out in a call of FFmpeg's, which cannot pass an exception on.
    bool LacksMemory() const { return m_lacksMemory; }

private:
    static int Read(void* self, std::uint8_t* buffer, int size)
    {
        auto& file = *static_cast<MemoryFile*>(self);
        const std::size_t count =
            std::min(static_cast<std::size_t>(size), file.m_bytes.size() - file.m_position);
        std::memcpy(buffer, file.m_bytes.data() + file.m_position, count);
        file.m_position += count;
        return count == 0 ? AVERROR_EOF : static_cast<int>(count);
    }

    static int Write(void* self, std::uint8_t* buffer, int size)
    {
        auto& file = *static_cast<MemoryFile*>(self);
        const auto count = static_cast<std::size_t>(size);
        try
        {
            file.m_bytes.resize(std::max(file.m_bytes.size(), file.m_position + count));
        }
        catch (const std::exception&)
        {
            file.m_lacksMemory = true;
            return AVERROR(ENOMEM);
        }
        std::memcpy(file.m_bytes.data() + file.m_position, buffer, count);
        file.m_position += count;
        return size;
    }

    static std::int64_t Seek(void* self, std::int64_t offset, int whence)
    {
        auto& file = *static_cast<MemoryFile*>(self);
        const auto size = static_cast<std::int64_t>(file.m_bytes.size());
        if (whence == AVSEEK_SIZE)
        {
            return size;
        }
        const std::int64_t position = whence == SEEK_SET ? offset
                                      : whence == SEEK_CUR
                                          ? offset + static_cast<std::int64_t>(file.m_position)
                                          : offset + size;
        if (position < 0 || position > size)
        {
            return AVERROR(EINVAL);
        }
        file.m_position = static_cast<std::size_t>(position);
        return position;
    }

    std::string& m_bytes;
    std::size_t m_position = 0;
    bool m_lacksMemory = false;
    AVIOContext* m_context = nullptr;
};

/// Muxes blank streams in memory.
class MemoryMuxer
{
public:
    explicit MemoryMuxer(const AVOutputFormat& muxer) : m_file(m_bytes, MemoryFile::Access::Write)
    {
        AVFormatContext* context = nullptr;
        RequireMemory(avformat_alloc_output_context2(&context, &muxer, nullptr, nullptr));
        m_context.reset(context);
        m_context->io_open = &RefuseOther;
        m_context->flags |= AVFMT_FLAG_BITEXACT;
        m_context->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
        m_context->pb = m_file.Get();
        // Some encoders begin before 0, which some muxers refuse.
        m_context->avoid_negative_ts = AVFMT_AVOID_NEG_TS_MAKE_ZERO;
    }
    ~MemoryMuxer() = default;
    MemoryMuxer(const MemoryMuxer&) = delete;
    MemoryMuxer& operator=(const MemoryMuxer&) = delete;

    AVStream& AddStream(const BlankStream& blank)
    {
        AVStream& stream = *RequireMemory(avformat_new_stream(m_context.get(), nullptr));
        RequireMemory(avcodec_parameters_copy(stream.codecpar, blank.parameters.get()));
        stream.codecpar->codec_tag = 0;
        stream.time_base = blank.timeBase;
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
        {
            stream.avg_frame_rate = {kFrameTime.den, kFrameTime.num};
        }
        m_streams.push_back(&blank);
        return stream;
    }

    void AddAttachment()
    {
        AVStream& stream = *RequireMemory(avformat_new_stream(m_context.get(), nullptr));
        stream.codecpar->codec_type = AVMEDIA_TYPE_ATTACHMENT;
        constexpr int kSize = 4;
        stream.codecpar->extradata =
            static_cast<std::uint8_t*>(RequireMemory(av_mallocz(kSize + AV_INPUT_BUFFER_PADDING_SIZE)));
        stream.codecpar->extradata_size = kSize;
        AddTo(stream.metadata, {{"filename", "a"}, {"mimetype", "application/octet-stream"}});
    }

    void AddTags(const TagList& tags) { AddTo(m_context->metadata, tags); }

    void AddChapters(const std::vector<MediaChapter>& chapters)
    {
        if (chapters.empty())
        {
            return;
        }
        m_context->chapters =
            static_cast<AVChapter**>(RequireMemory(av_calloc(chapters.size(), sizeof *m_context->chapters)));
        for (const MediaChapter& each : chapters)
        {
            auto* const chapter = static_cast<AVChapter*>(RequireMemory(av_mallocz(sizeof(AVChapter))));
            m_context->chapters[m_context->nb_chapters++] = chapter;
            chapter->id = m_context->nb_chapters;
            chapter->time_base = AVRational{1, AV_TIME_BASE};
            chapter->start = each.start;
            chapter->end = each.end;
            AddTo(chapter->metadata, {{"title", each.title}});
        }
    }

    /// The file's bytes; nothing when the muxer refuses what it was given.
    std::optional<std::string> Mux(const TagList& muxerOptions)
    {
        std::optional<std::string> bytes = TryToMux(muxerOptions);
        if (m_file.LacksMemory())
        {
            throw std::bad_alloc();
        }
        return bytes;
    }

private:
    std::optional<std::string> TryToMux(const TagList& muxerOptions)
    {
        AVDictionary* options = nullptr;
        AddTo(options, muxerOptions);
        const int result = avformat_write_header(m_context.get(), &options);
        av_dict_free(&options);
        if (result < 0)
        {
            return std::nullopt;
        }
        // A header alone must be ended, too, or what the muxer holds would be lost.
        const bool isWritten = WritePackets();
        const bool isEnded = av_write_trailer(m_context.get()) >= 0;
        avio_flush(m_file.Get());
        return isWritten && isEnded ? std::optional(std::move(m_bytes)) : std::nullopt;
    }

    bool WritePackets()
    {
        for (std::size_t i = 0; i < m_streams.size(); ++i)
        {
            for (const auto& packet : m_streams[i]->packets)
            {
                const std::unique_ptr<AVPacket, FreePacket> copy(
                    RequireMemory(av_packet_clone(packet.get())));
                copy->stream_index = static_cast<int>(i);
                av_packet_rescale_ts(copy.get(), m_streams[i]->timeBase, m_context->streams[i]->time_base);
                if (av_interleaved_write_frame(m_context.get(), copy.get()) < 0)
                {
                    return false;
                }
            }
        }
        return true;
    }

    std::string m_bytes;
    MemoryFile m_file;
    std::unique_ptr<AVFormatContext, FreeOutput> m_context;
    /// Those with packets, which come first.
    std::vector<const BlankStream*> m_streams;
};

/// libavformat's muxer of WTV loses the memory of its header when it refuses a stream, as it does an attached
/// file.
bool LosesMemoryByAttachments(const AVOutputFormat& muxer) { return std::string_view(muxer.name) == "wtv"; }

FileContents ContentsOf(const AVFormatContext& context)
{
    FileContents contents;
    contents.tags = ListOf(context.metadata);
    for (unsigned int i = 0; i < context.nb_streams; ++i)
    {
        const AVStream& stream = *context.streams[i];
        const AVMediaType type = stream.codecpar->codec_type;
        const bool isCover = (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
        contents.hasCover = contents.hasCover || isCover;
        contents.hasAttachment = contents.hasAttachment || type == AVMEDIA_TYPE_ATTACHMENT;
        if (!isCover && (type == AVMEDIA_TYPE_VIDEO || type == AVMEDIA_TYPE_AUDIO))
        {
            contents.streamTags.push_back(ListOf(stream.metadata));
        }
    }
    contents.chapters = ChaptersOf(context);
    return contents;
}

std::optional<FileContents> ReadBack(std::string bytes, const AVOutputFormat& muxer)
{
    const MemoryFile file(bytes, MemoryFile::Access::Read);
    AVFormatContext* context = RequireMemory(avformat_alloc_context());
    context->pb = file.Get();
    context->io_open = &RefuseOther;
    const std::string extensions = muxer.extensions == nullptr ? "" : muxer.extensions;
    const std::string name = "trial." + extensions.substr(0, extensions.find(','));
    if (avformat_open_input(&context, name.c_str(), av_find_input_format(muxer.name), nullptr) < 0)
    {
        return std::nullopt;
    }
    const std::unique_ptr<AVFormatContext, CloseInput> opened(context);
    return avformat_find_stream_info(context, nullptr) < 0 ? std::nullopt
                                                           : std::optional(ContentsOf(*context));
}

} // namespace

const std::string* FindTag(const TagList& tags, const std::string& name)
{
    const auto found = std::find_if(tags.begin(), tags.end(), [&name](const auto& tag) {
        return LowerCase(tag.first) == LowerCase(name);
    });
    return found == tags.end() ? nullptr : &found->second;
}

TagList MuxerOptionsFor(const std::string& container)
{
    const AVOutputFormat* const muxer = FindMuxer(container);
    const std::string name = muxer == nullptr ? "" : muxer->name;
    return name == "aiff" || name == "adts" ? TagList{{"write_id3v2", "1"}} : TagList{};
}

struct MuxerTrial::Streams
{
    const AVOutputFormat* muxer = nullptr; ///< null: nothing can be asked
    std::vector<BlankStream> blank;
    std::optional<BlankStream> cover;
};

MuxerTrial::MuxerTrial(const std::string& container, const std::vector<std::string>& codecs)
    : m_container(container), m_streams(std::make_unique<Streams>())
{
    const AVOutputFormat* const muxer = FindMuxer(container);
    if (muxer == nullptr || !IsOneFile(container) || IsPicture(container))
    {
        return;
    }
    const MessageScope messages;
    const int flags = (muxer->flags & AVFMT_GLOBALHEADER) != 0 ? AV_CODEC_FLAG_GLOBAL_HEADER : 0;
    for (const std::string& codec : codecs)
    {
        const AVCodec* const encoder = TrialEncoder(container, codec);
        auto stream = encoder == nullptr ? std::nullopt : MakeBlankStream(*encoder, flags);
        if (!stream)
        {
            return;
        }
        m_streams->blank.push_back(std::move(*stream));
    }
    const AVCodec* const png = avcodec_find_encoder(AV_CODEC_ID_PNG);
    m_streams->cover = png == nullptr ? std::nullopt : MakeBlankStream(*png, 0);
    m_streams->muxer = m_streams->blank.empty() ? nullptr : muxer;
}

MuxerTrial::~MuxerTrial() = default;

std::optional<FileContents> MuxerTrial::Ask(const FileContents& wanted) const
{
    if (m_streams->muxer == nullptr || (wanted.hasAttachment && LosesMemoryByAttachments(*m_streams->muxer)))
    {
        return std::nullopt;
    }
    const MessageScope messages;
    MemoryMuxer muxer(*m_streams->muxer);
    for (std::size_t i = 0; i < m_streams->blank.size(); ++i)
    {
        AVStream& stream = muxer.AddStream(m_streams->blank[i]);
        AddTo(stream.metadata, i < wanted.streamTags.size() ? wanted.streamTags[i] : TagList{});
    }
    if (wanted.hasCover && m_streams->cover)
    {
        muxer.AddStream(*m_streams->cover).disposition |= AV_DISPOSITION_ATTACHED_PIC;
    }
    if (wanted.hasAttachment)
    {
        muxer.AddAttachment();
    }
    muxer.AddTags(wanted.tags);
    muxer.AddChapters(wanted.chapters);
    auto bytes = muxer.Mux(MuxerOptionsFor(m_container));
    return bytes ? ReadBack(std::move(*bytes), *m_streams->muxer) : std::nullopt;
}

} // namespace Zelnor::Media
