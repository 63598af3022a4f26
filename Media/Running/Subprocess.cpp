#include "Media/Running/Subprocess.h"

#include "Media/Running/ChildStart.h"
#include "Media/Running/Descriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <optional>
#include <system_error>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Clock = std::chrono::steady_clock;

[[noreturn]] void ThrowSystemError(int reason, const std::string& what)
{
    throw SubprocessError(reason, std::generic_category(), what);
}

/// What a call of the system has returned, which programs that this process starts do not inherit.
/// \param what  what the call was for
Descriptor Checked(int descriptor, const char* what)
{
    if (descriptor < 0)
    {
        ThrowSystemError(errno, what);
    }
    Descriptor checked(descriptor);
    if (descriptor <= STDERR_FILENO)
    {
        // Where an application has closed its standard streams, the new program's would overwrite it.
        checked = Descriptor(::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
        if (!checked.IsOpen())
        {
            ThrowSystemError(errno, what);
        }
    }
    return checked;
}

struct Pipe
{
    Descriptor read;
    Descriptor write;
};

Pipe MakePipe()
{
    constexpr const char* kWhat = "Cannot make a pipe";
    std::array<int, 2> ends = {-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
    {
        ThrowSystemError(errno, kWhat);
    }
    Descriptor write(ends[1]);
    Pipe pipe = {Checked(ends[0], kWhat), {}};
    pipe.write = Checked(write.Release(), kWhat);
    ::fcntl(pipe.read.Get(), F_SETFL, O_NONBLOCK);
    return pipe;
}

/// A file in memory, so that a program's input never waits for its output to be read.
Descriptor MakeInput(const std::string& text)
{
    Descriptor file = Checked(text.empty() ? ::open("/dev/null", O_RDONLY | O_CLOEXEC)
                                           : ::memfd_create("input", MFD_CLOEXEC),
                              "Cannot make a program's input");
    for (std::size_t done = 0; done < text.size();)
    {
        const ssize_t written = ::write(file.Get(), text.data() + done, text.size() - done);
        if (written < 0 && errno != EINTR)
        {
            ThrowSystemError(errno, "Cannot write to memory");
        }
        done += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
    if (!text.empty())
    {
        ::lseek(file.Get(), 0, SEEK_SET);
    }
    return file;
}

pid_t Spawn(const std::vector<std::string>& command, const Descriptor& input, const Descriptor& output,
            const Descriptor& messages, const SubprocessOptions& options)
{
    const std::string what = "Cannot run '" + command.front() + "'";
    const auto hasNul = [](const std::string& word) { return word.find('\0') != std::string::npos; };
    if (std::any_of(command.begin(), command.end(), hasNul))
    {
        // The program would be given another word than the one that is meant.
        ThrowSystemError(EINVAL, what);
    }
    pid_t process = -1;
    const int reason = StartChild(
        {command, {input.Get(), output.Get(), messages.Get()}, options.inOwnGroup, options.hidden}, process);
    if (reason != 0)
    {
        ThrowSystemError(reason, what);
    }
    return process;
}

[[noreturn]] void ThrowForgotten()
{
    ThrowSystemError(ECHILD, "Cannot tell how a program ends, because this process ignores SIGCHLD or waits "
                             "for all of its children");
}

/// Whether a program that ends leaves no trace of how.
bool ChildrenAreForgotten()
{
    struct sigaction action = {};
    ::sigaction(SIGCHLD, nullptr, &action);
    return action.sa_handler == SIG_IGN || (action.sa_flags & SA_NOCLDWAIT) != 0;
}

/// A program that runs with its output and messages in pipes.
class Subprocess
{
public:
    Subprocess(const std::vector<std::string>& command, const SubprocessOptions& options) : m_options(options)
    {
        if (ChildrenAreForgotten())
        {
            ThrowForgotten();
        }
        const Descriptor input = MakeInput(options.input);
        Pipe output = MakePipe();
        Pipe messages = MakePipe();
        m_process = Spawn(command, input, output.write, messages.write, options);
        m_output = std::move(output.read);
        m_messages = std::move(messages.read);
    }
    /// Ends the program if it still runs.
    ~Subprocess()
    {
        if (m_process > 0)
        {
            Signal(SIGKILL);
            while (::waitpid(m_process, nullptr, 0) < 0 && errno == EINTR)
            {}
        }
    }
    Subprocess(const Subprocess&) = delete;
    Subprocess& operator=(const Subprocess&) = delete;

    /// Reads what the program writes until it has ended.
    int Run()
    {
        // A program mostly ends at once when it has closed its pipes, and hardly ever before.
        std::chrono::milliseconds pause(1);
        while (!HasEnded())
        {
            StopIfAsked();
            if (m_output.IsOpen() || m_messages.IsOpen())
            {
                ReadSome(kLongestPause);
                continue;
            }
            ::poll(nullptr, 0, static_cast<int>(pause.count()));
            pause = std::min(pause * 2, kLongestPause);
        }
        Drain();
        return Reap();
    }

private:
    static constexpr std::chrono::milliseconds kLongestPause{100};
    static constexpr std::size_t kBlock = 65536;

    /// Without reaping it, so that its number stays its own.
    bool HasEnded()
    {
        siginfo_t info = {};
        if (::waitid(P_PID, static_cast<id_t>(m_process), &info, WEXITED | WNOHANG | WNOWAIT) != 0)
        {
            m_process = -1;
            ThrowForgotten();
        }
        return info.si_pid != 0;
    }

    int Reap()
    {
        if (m_asked && m_options.inOwnGroup)
        {
            Signal(SIGKILL);
        }
        int status = 0;
        const pid_t reaped = ::waitpid(m_process, &status, WNOHANG);
        m_process = -1;
        if (reaped <= 0)
        {
            ThrowForgotten();
        }
        constexpr int kSignalledExitBase = 128;
        return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalledExitBase + WTERMSIG(status);
    }

    void Signal(int signal) const { ::kill(m_options.inOwnGroup ? -m_process : m_process, signal); }

    void StopIfAsked()
    {
        if (!m_options.isCancelled || !m_options.isCancelled())
        {
            return;
        }
        constexpr std::chrono::seconds kPatience(3);
        if (!m_asked)
        {
            m_asked = Clock::now();
            Signal(SIGTERM);
        }
        else if (Clock::now() - *m_asked > kPatience)
        {
            Signal(SIGKILL);
        }
    }

    /// \returns whether there was anything to read
    bool ReadSome(std::chrono::milliseconds patience)
    {
        // A closed one is passed over.
        std::array<pollfd, 2> ends = {{{m_output.Get(), POLLIN, 0}, {m_messages.Get(), POLLIN, 0}}};
        if (::poll(ends.data(), ends.size(), static_cast<int>(patience.count())) <= 0)
        {
            return false;
        }
        bool any = false;
        if (ends[0].revents != 0)
        {
            any = ReadFrom(m_output, m_options.onOutput);
        }
        if (ends[1].revents != 0)
        {
            any = ReadFrom(m_messages, m_options.onMessages) || any;
        }
        return any;
    }

    bool ReadFrom(Descriptor& pipe, const std::function<void(std::string_view)>& take)
    {
        const ssize_t count = ::read(pipe.Get(), m_block.data(), m_block.size());
        if (count > 0 && take)
        {
            take({m_block.data(), static_cast<std::size_t>(count)});
        }
        if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN))
        {
            pipe.Close();
        }
        return count > 0;
    }

    /// Takes what the program left in its pipes. Something that it started may hold them open, and even
    /// write.
    void Drain()
    {
        constexpr int kMostBlocks = 64;
        for (int i = 0; i < kMostBlocks && ReadSome(std::chrono::milliseconds(0)); ++i)
        {}
    }

    const SubprocessOptions& m_options;
    Descriptor m_output;
    Descriptor m_messages;
    pid_t m_process = -1;
    std::optional<Clock::time_point> m_asked;
    std::vector<char> m_block = std::vector<char>(kBlock);
};

} // namespace

int RunSubprocess(const std::vector<std::string>& command, const SubprocessOptions& options)
{
    return Subprocess(command, options).Run();
}

FilterResult RunFilter(const std::vector<std::string>& command, const std::string& input)
{
    SubprocessOptions options;
    options.input = input;
    return RunFilter(command, std::move(options));
}

FilterResult RunFilter(const std::vector<std::string>& command, SubprocessOptions options)
{
    constexpr std::size_t kMostMessages = 65536;
    FilterResult result;
    options.onOutput = [&result](std::string_view bytes) { result.output += bytes; };
    options.onMessages = [&result](std::string_view bytes) {
        result.messages += bytes.substr(0, kMostMessages - result.messages.size());
    };
    try
    {
        result.exitCode = RunSubprocess(command, options);
        result.started = true;
    }
    catch (const SubprocessError& error)
    {
        for (const std::errc reason :
             {std::errc::no_such_file_or_directory, std::errc::permission_denied, std::errc::not_a_directory})
        {
            if (error.code() == reason)
            {
                return {};
            }
        }
        throw;
    }
    return result;
}

} // namespace Zelnor::Media
