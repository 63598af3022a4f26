#pragma once

// Private to the library, not installed.

#include "Media/FFmpeg/Calls.h"
#include "Media/Probe/MessageScope.h"

#include "Core/Interfaces/DataStream.h"

extern "C" {
#include <libavformat/avformat.h>
}

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

namespace Zelnor::Media
{

/// Lets FFmpeg read from a stream, from its beginning on only.
class StreamReader
{
public:
    explicit StreamReader(Core::IDataInput& input);
    ~StreamReader();
    StreamReader(const StreamReader&) = delete;
    StreamReader& operator=(const StreamReader&) = delete;

    AVIOContext* Get() const { return m_context; }
    /// No exception may pass through FFmpeg, so what the stream threw is kept until it is asked for.
    void Rethrow() const;

private:
    static int Read(void* self, std::uint8_t* buffer, int size);

    Core::IDataInput& m_input;
    AVIOContext* m_context = nullptr;
    std::exception_ptr m_failure;
};

/// A media file or a stream that FFmpeg has opened and looked into, with a demuxer that reads nothing else.
class MediaInput
{
public:
    /// \param name    a regular file
    /// \param stream  what is read instead of the file `name`; null: the file itself
    /// \throw ProbeException, and what the stream throws
    MediaInput(const std::string& name, StreamReader* stream);
    MediaInput(const MediaInput&) = delete;
    MediaInput& operator=(const MediaInput&) = delete;

    AVFormatContext* operator->() const { return m_context.get(); }
    AVFormatContext& operator*() const { return *m_context; }

private:
    struct CloseInput
    {
        void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
    };
    struct CloseFile
    {
        void operator()(AVIOContext* file) const { avio_closep(&file); }
    };

    /// \throw ProbeException when FFmpeg has returned an error, and what the stream threw
    void Check(int result) const;
    [[noreturn]] void RefuseDemuxer(const AVInputFormat& demuxer) const;
    const AVInputFormat* FindDemuxer();
    void Open(const AVInputFormat& demuxer);
    /// Null for a demuxer that opens its file itself.
    AVIOContext* Bytes() const;
    static int OpenFile(AVIOContext** file, const char* url, int flags);
    /// What a demuxer opens on its own is the named file and nothing else.
    static int OpenNamedFile(AVFormatContext* context, AVIOContext** file, const char* url, int flags,
                             AVDictionary** options);

    const MessageScope m_messages;
    const std::string m_name;
    const std::string m_url;
    StreamReader* const m_stream;
    bool m_askedForOtherFile = false;
    // Closed after the context.
    std::unique_ptr<AVIOContext, CloseFile> m_file;
    std::unique_ptr<AVFormatContext, CloseInput> m_context;
};

/// \throw ProbeException for what is not a regular file that may be read
void CheckReadable(const std::string& name);

/// \throw ProbeException "in.mov: cannot be read: ..."
[[noreturn]] void RefuseInput(const std::string& name, const std::string& reason);

} // namespace Zelnor::Media
