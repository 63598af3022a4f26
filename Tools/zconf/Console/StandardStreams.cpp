#include "Tools/zconf/Console/StandardStreams.h"

#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/RefCountImpl.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace Zelnor::Tool
{

namespace
{

constexpr const char* kUnit = "Tools/zconf/StandardStreams";

constexpr int kSignalledExitBase = 128;

Core::CoreException Failure(const char* action, const char* stream, int reason)
{
    Core::CoreException exception;
    exception << TagDescription(std::string("Cannot ") + action + " " + stream + ": " +
                                std::generic_category().message(reason));
    return exception;
}

class StandardInput final : public Counted<Core::IDataInput>
{
public:
    std::size_t Read(void* buffer, std::size_t size) override
    {
        for (;;)
        {
            const ssize_t count = ::read(STDIN_FILENO, buffer, size);
            if (count >= 0)
            {
                return static_cast<std::size_t>(count);
            }
            if (errno != EINTR)
            {
                ZELNOR_THROW(kUnit, Failure("read", "standard input", errno));
            }
        }
    }
};

class StandardOutput final : public Counted<Core::IDataOutput>
{
public:
    void Write(const void* data, std::size_t size) override
    {
        const char* next = static_cast<const char*>(data);
        while (size > 0)
        {
            const ssize_t written = ::write(STDOUT_FILENO, next, size);
            if (written >= 0)
            {
                next += written;
                size -= static_cast<std::size_t>(written);
            }
            else if (errno == EPIPE)
            {
                throw ClosedPipe();
            }
            else if (errno != EINTR)
            {
                ZELNOR_THROW(kUnit, Failure("write", "standard output", errno));
            }
        }
    }
};

boost::intrusive_ptr<Core::IDataOutput>& Replacement()
{
    static boost::intrusive_ptr<Core::IDataOutput> s_replacement;
    return s_replacement;
}

} // namespace

void PrepareStandardStreams()
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
    {
        if (::fcntl(descriptor, F_GETFD) < 0)
        {
            // Opened the wrong way round, so that a closed stream stays unusable. open() returns the lowest
            // free descriptor, which is this one.
            ::open("/dev/null", descriptor == STDOUT_FILENO ? O_RDONLY : O_WRONLY);
        }
    }
    // The write fails instead, so that what was begun is cleaned up.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

int EndAsFilter()
{
    std::signal(SIGPIPE, SIG_DFL);
    std::raise(SIGPIPE);
    return kSignalledExitBase + SIGPIPE;
}

void WriteMessage(const std::string& text) noexcept
{
    const char* next = text.data();
    std::size_t left = text.size();
    while (left > 0)
    {
        const ssize_t written = ::write(STDERR_FILENO, next, left);
        if (written < 0 && errno != EINTR)
        {
            return;
        }
        if (written > 0)
        {
            next += written;
            left -= static_cast<std::size_t>(written);
        }
    }
}

boost::intrusive_ptr<Core::IDataInput> MakeStandardInput() { return new StandardInput(); }

boost::intrusive_ptr<Core::IDataOutput> MakeStandardOutput()
{
    return IsStandardOutputReplaced() ? Replacement() : new StandardOutput();
}

void SetStandardOutput(const boost::intrusive_ptr<Core::IDataOutput>& output) { Replacement() = output; }

bool IsStandardOutputReplaced() { return Replacement() != nullptr; }

} // namespace Zelnor::Tool
