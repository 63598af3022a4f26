#include "Media/Probe/MediaProbe.h"

#include "Media/MediaException.h"
#include "Media/Probe/MessageScope.h"
#include "Media/Probe/StreamDescription.h"

#include "Conf/Interfaces/FormatLists.h"

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
using Input = std::unique_ptr<AVFormatContext, CloseInput>;

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

/// \param stream  what is read instead of the file `name`; null: the file itself
Input OpenInput(const std::string& name, StreamReader* stream)
{
    const MessageScope messages;
    AVFormatContext* opened = avformat_alloc_context();
    if (opened == nullptr)
    {
        throw std::bad_alloc();
    }
    opened->pb = stream == nullptr ? nullptr : stream->Get();
    AVDictionary* options = nullptr;
    // Otherwise an image whose name holds '%' or '*' would be taken for a series of files.
    av_dict_set(&options, "pattern_type", "none", 0);
    const std::string url = stream == nullptr ? FFmpegFileName(name) : std::string();
    int error = avformat_open_input(&opened, url.c_str(), nullptr, &options);
    av_dict_free(&options);
    Input input(error < 0 ? nullptr : opened);
    error = error < 0 ? error : avformat_find_stream_info(opened, nullptr);
    if (stream != nullptr)
    {
        stream->Rethrow();
    }
    if (error < 0)
    {
        Refuse(name, error, messages.Last());
    }
    return input;
}

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
}

MediaFile Describe(const std::string& name, StreamReader* stream)
{
    const Input input = OpenInput(name, stream);
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
