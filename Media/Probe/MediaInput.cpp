#include "Media/Probe/MediaInput.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/FileKind.h"
#include "Media/MediaException.h"
#include "Media/Probe/Demuxers.h"
#include "Media/Probe/FFmpegMemory.h"
#include "Media/Probe/MediaProbe.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <memory>

namespace Zelnor::Media
{

namespace
{

// What is thrown here is said of the probe, which everybody comes by.
constexpr const char* kUnit = "Media/Probe/MediaProbe";

/// \param message  FFmpeg's last one; empty when there is none
[[noreturn]] void Refuse(const std::string& name, int error, const std::string& message = "")
{
    char reason[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(error, reason, sizeof reason);
    RefuseInput(name, reason + (message.empty() || message == reason ? "" : " (" + message + ")"));
}

} // namespace

StreamReader::StreamReader(Core::IDataInput& input) : m_input(input)
{
    constexpr int kBlock = 32768;
    std::unique_ptr<unsigned char, void (*)(void*)> buffer(
        static_cast<unsigned char*>(RequireMemory(av_malloc(kBlock))), av_free);
    m_context = RequireMemory(avio_alloc_context(buffer.get(), kBlock, 0, this, &Read, nullptr, nullptr));
    buffer.release();
}

StreamReader::~StreamReader()
{
    av_freep(&m_context->buffer);
    avio_context_free(&m_context);
}

void StreamReader::Rethrow() const
{
    if (m_failure)
    {
        std::rethrow_exception(m_failure);
    }
}

int StreamReader::Read(void* self, std::uint8_t* buffer, int size)
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

MediaInput::MediaInput(const std::string& name, StreamReader* stream)
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

void MediaInput::Check(int result) const
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

void MediaInput::RefuseDemuxer(const AVInputFormat& demuxer) const
{
    RefuseInput(m_name, std::string("FFmpeg's demuxer '") + demuxer.name +
                            "' may read other files than the one that is named");
}

const AVInputFormat* MediaInput::FindDemuxer()
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

void MediaInput::Open(const AVInputFormat& demuxer)
{
    std::unique_ptr<AVFormatContext, void (*)(AVFormatContext*)> made(RequireMemory(avformat_alloc_context()),
                                                                      avformat_free_context);
    made->pb = Bytes();
    made->opaque = this;
    made->io_open = &OpenNamedFile;
    AVDictionary* options = nullptr;
    // Otherwise an image whose name holds '%' or '*' would be taken for a series of files.
    RequireMemory(av_dict_set(&options, "pattern_type", "none", 0));
    AVFormatContext* context = made.release();
    const int result = avformat_open_input(&context, m_url.c_str(), &demuxer, &options);
    av_dict_free(&options);
    m_context.reset(context); // FFmpeg has freed it, and set it to null, when it failed.
    Check(result);
}

AVIOContext* MediaInput::Bytes() const { return m_stream != nullptr ? m_stream->Get() : m_file.get(); }

int MediaInput::OpenFile(AVIOContext** file, const char* url, int flags)
{
    AVDictionary* options = nullptr;
    int result = av_dict_set(&options, "protocol_whitelist", "file", 0);
    result = result < 0 ? result : avio_open2(file, url, flags, nullptr, &options);
    av_dict_free(&options);
    return result;
}

int MediaInput::OpenNamedFile(AVFormatContext* context, AVIOContext** file, const char* url, int flags,
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

void CheckReadable(const std::string& name)
{
    if (name.find('\0') != std::string::npos)
    {
        RefuseInput(name, "a file name cannot hold a NUL byte");
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
        RefuseInput(name, std::string("expected a regular file, found ") + FileKindText(status.st_mode));
    }
}

void RefuseInput(const std::string& name, const std::string& reason)
{
    ZELNOR_THROW(kUnit,
                 MakeError<ProbeException>(Place{name.empty() ? "''" : name}, "cannot be read: " + reason));
}

} // namespace Zelnor::Media
