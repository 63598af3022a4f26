#include "Media/Probe/MediaProbe.h"

#include "Media/FileKind.h"
#include "Media/MediaException.h"
#include "Media/Probe/Demuxers.h"
#include "Media/Probe/FrameRates.h"
#include "Media/Probe/MessageScope.h"
#include "Media/Probe/StreamDescription.h"

#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <sstream>

#include <fcntl.h>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatFile;
using Core::Property;

constexpr const char* kUnit = "Media/Probe/MediaProbe";

[[noreturn]] void Refuse(const std::string& name, const std::string& reason)
{
    ZELNOR_THROW(kUnit,
                 MakeError<ProbeException>(Place{name.empty() ? "''" : name}, "cannot be read: " + reason));
}

/// \param message  FFmpeg's last one; empty when there is none
[[noreturn]] void Refuse(const std::string& name, int error, const std::string& message = "")
{
    char reason[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(error, reason, sizeof reason);
    Refuse(name, reason + (message.empty() || message == reason ? "" : " (" + message + ")"));
}

struct CloseInput
{
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct CloseFile
{
    void operator()(AVIOContext* file) const { avio_closep(&file); }
};

/// Lets FFmpeg read from a stream, from its beginning on only.
class StreamReader
{
public:
    explicit StreamReader(Core::IDataInput& input) : m_input(input)
    {
        constexpr int kBlock = 32768;
        auto* const buffer = static_cast<unsigned char*>(av_malloc(kBlock));
        m_context = buffer == nullptr ? nullptr
                                      : avio_alloc_context(buffer, kBlock, 0, this, &Read, nullptr, nullptr);
        if (m_context == nullptr)
        {
            av_free(buffer);
            throw std::bad_alloc();
        }
    }
    ~StreamReader()
    {
        av_freep(&m_context->buffer);
        avio_context_free(&m_context);
    }
    StreamReader(const StreamReader&) = delete;
    StreamReader& operator=(const StreamReader&) = delete;

    AVIOContext* Get() const { return m_context; }
    /// No exception may pass through FFmpeg, so what the stream threw is kept until it is asked for.
    void Rethrow() const
    {
        if (m_failure)
        {
            std::rethrow_exception(m_failure);
        }
    }

private:
    static int Read(void* self, std::uint8_t* buffer, int size)
    {
        auto& reader = *static_cast<StreamReader*>(self);
        try
        {
            const std::size_t count = Core::ReadUpTo(reader.m_input, buffer, static_cast<std::size_t>(size));
            return count == 0 ? AVERROR_EOF : static_cast<int>(count);
        }
        catch (...)
        {
            reader.m_failure = std::current_exception();
            return AVERROR_EXTERNAL;
        }
    }

    Core::IDataInput& m_input;
    AVIOContext* m_context = nullptr;
    std::exception_ptr m_failure;
};

/// A media file or a stream that FFmpeg has opened, with a demuxer that reads nothing else.
class MediaInput
{
public:
    /// \param stream  what is read instead of the file `name`; null: the file itself
    MediaInput(const std::string& name, StreamReader* stream)
        : m_name(name), m_url(stream == nullptr ? FFmpegFileName(name) : std::string()), m_stream(stream)
    {
        const AVInputFormat* const demuxer = FindDemuxer();
        if (!ReadsOneFile(*demuxer))
        {
            RefuseDemuxer(*demuxer);
        }
        Open(*demuxer);
        const int result = avformat_find_stream_info(m_context.get(), nullptr);
        if (m_askedForOtherFile)
        {
            RefuseDemuxer(*demuxer);
        }
        Check(result);
    }

    const AVFormatContext* operator->() const { return m_context.get(); }
    AVFormatContext& operator*() const { return *m_context; }

private:
    /// \throw ProbeException when FFmpeg has returned an error, and what the stream threw
    void Check(int result) const
    {
        if (m_stream != nullptr)
        {
            m_stream->Rethrow();
        }
        if (result < 0)
        {
            Refuse(m_name, result, m_messages.Last());
        }
    }

    [[noreturn]] void RefuseDemuxer(const AVInputFormat& demuxer) const
    {
        Refuse(m_name, std::string("FFmpeg's demuxer '") + demuxer.name +
                           "' may read other files than the one that is named");
    }

    const AVInputFormat* FindDemuxer()
    {
        if (m_stream == nullptr)
        {
            // As FFmpeg does: the demuxers that open their file themselves go by its name alone.
            AVProbeData data = {};
            data.filename = m_url.c_str();
            int score = AVPROBE_SCORE_RETRY;
            if (const AVInputFormat* const demuxer = av_probe_input_format2(&data, 0, &score))
            {
                return demuxer;
            }
            AVIOContext* file = nullptr;
            Check(OpenFile(&file, m_url.c_str(), AVIO_FLAG_READ));
            m_file.reset(file);
        }
        const AVInputFormat* demuxer = nullptr;
        Check(av_probe_input_buffer2(Bytes(), &demuxer, m_url.c_str(), nullptr, 0, 0));
        return demuxer;
    }

    void Open(const AVInputFormat& demuxer)
    {
        AVFormatContext* context = avformat_alloc_context();
        if (context == nullptr)
        {
            throw std::bad_alloc();
        }
        context->pb = Bytes();
        context->opaque = this;
        context->io_open = &OpenNamedFile;
        AVDictionary* options = nullptr;
        // Otherwise an image whose name holds '%' or '*' would be taken for a series of files.
        if (av_dict_set(&options, "pattern_type", "none", 0) < 0)
        {
            avformat_free_context(context);
            throw std::bad_alloc();
        }
        const int result = avformat_open_input(&context, m_url.c_str(), &demuxer, &options);
        av_dict_free(&options);
        m_context.reset(context); // FFmpeg has freed it, and set it to null, when it failed.
        Check(result);
    }

    /// Null for a demuxer that opens its file itself.
    AVIOContext* Bytes() const { return m_stream != nullptr ? m_stream->Get() : m_file.get(); }

    static int OpenFile(AVIOContext** file, const char* url, int flags)
    {
        AVDictionary* options = nullptr;
        if (av_dict_set(&options, "protocol_whitelist", "file", 0) < 0)
        {
            return AVERROR(ENOMEM);
        }
        const int result = avio_open2(file, url, flags, nullptr, &options);
        av_dict_free(&options);
        return result;
    }

    /// What a demuxer opens on its own is the named file and nothing else.
    static int OpenNamedFile(AVFormatContext* context, AVIOContext** file, const char* url, int flags,
                             AVDictionary** /*options*/)
    {
        auto& self = *static_cast<MediaInput*>(context->opaque);
        if (self.m_stream == nullptr && url == self.m_url && flags == AVIO_FLAG_READ)
        {
            return OpenFile(file, url, flags);
        }
        self.m_askedForOtherFile = true;
        return AVERROR(EACCES);
    }

    const MessageScope m_messages;
    const std::string& m_name;
    const std::string m_url;
    StreamReader* const m_stream;
    bool m_askedForOtherFile = false;
    // Closed after the context.
    std::unique_ptr<AVIOContext, CloseFile> m_file;
    std::unique_ptr<AVFormatContext, CloseInput> m_context;
};

std::vector<std::string> Words(const std::string& list)
{
    std::vector<std::string> words;
    std::istringstream stream(list);
    for (std::string word; std::getline(stream, word, ',');)
    {
        words.push_back(word);
    }
    return words;
}

/// One demuxer serves several containers; the brand inside the file tells which one it is.
std::string MovContainer(const AVDictionary* tags)
{
    const AVDictionaryEntry* const brand = av_dict_get(tags, "major_brand", nullptr, 0);
    const std::string text = brand == nullptr ? "" : brand->value;
    return text.rfind("qt", 0) == 0                                 ? IFormatFile::FORMAT_MOV
           : text.rfind("M4A", 0) == 0                              ? IFormatFile::FORMAT_M4A
           : text.rfind("3g2", 0) == 0                              ? IFormatFile::FORMAT_3G2
           : text.rfind("3gp", 0) == 0 || text.rfind("3gs", 0) == 0 ? IFormatFile::FORMAT_3GP
           : brand == nullptr                                       ? IFormatFile::FORMAT_MOV
                                                                    : IFormatFile::FORMAT_MP4;
}

/// The vocabulary's name of what FFmpeg's demuxer reads; empty when there is none.
std::string ContainerOf(const std::string& demuxer, const AVDictionary* tags, const std::string& extension)
{
    const std::vector<std::string> names = Words(demuxer);
    if (std::find(names.begin(), names.end(), "mov") != names.end())
    {
        return MovContainer(tags);
    }
    if (demuxer == "aac")
    {
        return IFormatFile::FORMAT_ADTS;
    }
    if (std::find(names.begin(), names.end(), extension) != names.end() && Conf::IsContainer(extension))
    {
        return extension;
    }
    const auto found = std::find_if(names.begin(), names.end(), Conf::IsContainer);
    return found == names.end() ? "" : *found;
}

/// "2026-11-20T22:51:20Z"
std::string TimeText(std::int64_t seconds)
{
    const std::time_t time = seconds;
    std::tm fields = {};
    char text[32] = "";
    if (::gmtime_r(&time, &fields) == nullptr ||
        std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &fields) == 0)
    {
        return "";
    }
    return text;
}

void AddFileAttributes(const std::string& name, Property& record)
{
    record.SetChildT(IFormatFile::TAG_FILE_PATH, name);
    std::string extension = std::filesystem::path(name).extension().string();
    extension.erase(0, 1);
    record.SetChildT(IFormatFile::TAG_FILE_EXTENSION, extension);
    struct statx attributes = {};
    if (::statx(AT_FDCWD, name.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &attributes) != 0)
    {
        return;
    }
    record.SetChildT(IFormatFile::TAG_FORMAT_FILE_SIZE, static_cast<long long>(attributes.stx_size));
    const auto addTime = [&](unsigned int bit, const std::string& key, const statx_timestamp& time) {
        if ((attributes.stx_mask & bit) != 0)
        {
            record.SetChildT(key, TimeText(time.tv_sec));
        }
    };
    addTime(STATX_BTIME, IFormatFile::TAG_FILE_CREATE_TIME, attributes.stx_btime);
    addTime(STATX_MTIME, IFormatFile::TAG_FILE_MODIFY_TIME, attributes.stx_mtime);
    addTime(STATX_ATIME, IFormatFile::TAG_FILE_LAST_ACCESS_TIME, attributes.stx_atime);
}

void DescribeFile(AVFormatContext& context, bool isFile, MediaFile& file)
{
    Property record = file.descriptor->GetProperty();
    AddTags(context.metadata, record[Conf::IFormat::TAG_METADATA]);
    std::string extension;
    if (isFile)
    {
        AddFileAttributes(file.name, record);
        extension = record[IFormatFile::TAG_FILE_EXTENSION].GetString();
    }
    const std::string container = ContainerOf(file.demuxer, context.metadata, extension);
    if (container.empty())
    {
        file.notes.push_back("the vocabulary has no container for " + file.demuxer);
    }
    else
    {
        record.SetChildT(IFormatFile::TAG_CONTAINER, container);
    }
    file.descriptor->SetProperty(record);
    file.duration = Microseconds(context.duration, AVRational{1, AV_TIME_BASE});
    file.durationIsEstimated = context.duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
}

void CheckReadable(const std::string& name)
{
    if (name.find('\0') != std::string::npos)
    {
        Refuse(name, "a file name cannot hold a NUL byte");
    }
    struct stat status = {};
    const bool found = ::stat(name.c_str(), &status) == 0;
    if (!found || ::access(name.c_str(), R_OK) != 0)
    {
        Refuse(name, AVERROR(errno));
    }
    if (S_ISDIR(status.st_mode))
    {
        Refuse(name, AVERROR(EISDIR));
    }
    // Reading a pipe takes what another program waits for, or waits itself for good.
    if (!S_ISREG(status.st_mode))
    {
        Refuse(name, std::string("expected a regular file, found ") + FileKindText(status.st_mode));
    }
}

/// Reads packets, so it comes last.
void AddMeasuredRates(AVFormatContext& context, MediaFile& file)
{
    const std::vector<AVRational> rates = MeasureFrameRates(context);
    for (MediaStream& stream : file.streams)
    {
        const AVRational rate = rates[stream.index];
        if (rate.num > 0)
        {
            dynamic_cast<Conf::IFormatCodecVideo&>(*stream.descriptor)
                .SetFrameRate(static_cast<unsigned int>(rate.num), static_cast<unsigned int>(rate.den));
        }
    }
}

MediaFile Describe(const std::string& name, StreamReader* stream)
{
    const MediaInput input(name, stream);
    MediaFile file;
    file.name = name;
    file.demuxer = input->iformat->name;
    file.descriptor = IFormatFile::Create();
    DescribeFile(*input, stream == nullptr, file);
    for (unsigned int i = 0; i < input->nb_streams; ++i)
    {
        file.streams.push_back(DescribeStream(*input, *input->streams[i]));
    }
    if (file.streams.empty())
    {
        Refuse(name, "there is no stream in it");
    }
    AddMeasuredRates(*input, file);
    return file;
}

} // namespace

std::string FFmpegFileName(const std::string& path) { return "file:" + path; }

MediaFile ProbeMedia(const ioPath& path)
{
    const std::string name = path.utf8string();
    CheckReadable(name);
    return Describe(name, nullptr);
}

MediaFile ProbeMedia(Core::IDataInput& input, const std::string& name)
{
    StreamReader reader(input);
    return Describe(name, &reader);
}

} // namespace Zelnor::Media
