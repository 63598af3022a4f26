#include "Media/Running/FFmpegRun.h"

#include "Media/MediaException.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <deque>
#include <sstream>
#include <system_error>
#include <utility>

extern char** environ;

namespace Zelnor::Media
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr const char* kUnit = "Media/Running/FFmpegRun";

constexpr std::array<int, 3> kSignals = {SIGINT, SIGTERM, SIGHUP};

class Pipe
{
public:
    Pipe()
    {
        if (::pipe2(m_ends.data(), O_CLOEXEC) != 0)
        {
            throw std::system_error(errno, std::generic_category(), "Cannot make a pipe");
        }
    }
    ~Pipe()
    {
        CloseEnd(0);
        CloseEnd(1);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int GetReadEnd() const { return m_ends[0]; }
    int GetWriteEnd() const { return m_ends[1]; }
    void CloseEnd(std::size_t end)
    {
        if (m_ends[end] >= 0)
        {
            ::close(std::exchange(m_ends[end], -1));
        }
    }

private:
    std::array<int, 2> m_ends = {-1, -1};
};

/// Cuts bytes into lines.
class Lines
{
public:
    explicit Lines(std::function<void(const std::string&)> take) : m_take(std::move(take)) {}

    void Add(const char* bytes, std::size_t size)
    {
        m_rest.append(bytes, size);
        for (std::size_t end = 0; (end = m_rest.find('\n')) != std::string::npos;)
        {
            m_take(m_rest.substr(0, end));
            m_rest.erase(0, end + 1);
        }
    }
    void Finish()
    {
        if (!m_rest.empty())
        {
            m_take(std::exchange(m_rest, ""));
        }
    }

private:
    std::function<void(const std::string&)> m_take;
    std::string m_rest;
};

/// Understands ffmpeg's "key=value" lines, of which "progress=..." ends each report.
class ProgressReader
{
public:
    explicit ProgressReader(std::function<void(const FFmpegProgress&)> report) : m_report(std::move(report))
    {}

    void Line(const std::string& line)
    {
        const std::size_t equals = line.find('=');
        const std::string key = line.substr(0, equals);
        std::istringstream value(equals == std::string::npos ? "" : line.substr(equals + 1));
        value.imbue(std::locale::classic());
        if (key == "out_time_us")
        {
            std::int64_t time = 0;
            m_progress.done = value >> time && time > 0 ? time : m_progress.done;
        }
        else if (key == "speed")
        {
            double speed = 0;
            m_progress.speed = value >> speed ? speed : m_progress.speed;
        }
        else if (key == "progress")
        {
            m_report(m_progress);
        }
    }

private:
    std::function<void(const FFmpegProgress&)> m_report;
    FFmpegProgress m_progress;
};

/// A program that runs with its output and messages in pipes.
class Child
{
public:
    Child(const std::vector<std::string>& command, const std::function<bool()>& isCancelled)
        : m_isCancelled(isCancelled)
    {
        posix_spawn_file_actions_t files;
        ::posix_spawn_file_actions_init(&files);
        ::posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_adddup2(&files, m_output.GetWriteEnd(), STDOUT_FILENO);
        ::posix_spawn_file_actions_adddup2(&files, m_messages.GetWriteEnd(), STDERR_FILENO);
        posix_spawnattr_t attributes;
        ::posix_spawnattr_init(&attributes);
        SetAttributes(attributes);
        std::vector<char*> words;
        for (const std::string& word : command)
        {
            words.push_back(const_cast<char*>(word.c_str()));
        }
        words.push_back(nullptr);
        const int reason =
            ::posix_spawnp(&m_process, words.front(), &files, &attributes, words.data(), environ);
        ::posix_spawn_file_actions_destroy(&files);
        ::posix_spawnattr_destroy(&attributes);
        if (reason != 0)
        {
            ZELNOR_THROW(kUnit, MakeError<RunException>("Cannot run '" + command.front() +
                                                        "': " + std::generic_category().message(reason)));
        }
        m_output.CloseEnd(1);
        m_messages.CloseEnd(1);
    }
    ~Child()
    {
        if (m_process > 0)
        {
            ::kill(m_process, SIGKILL);
            Wait();
        }
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// Reads both pipes to their ends.
    void Read(Lines& output, Lines& messages)
    {
        std::array<pollfd, 2> ends = {
            {{m_output.GetReadEnd(), POLLIN, 0}, {m_messages.GetReadEnd(), POLLIN, 0}}};
        std::array<Lines*, 2> lines = {&output, &messages};
        while (ends[0].fd >= 0 || ends[1].fd >= 0)
        {
            constexpr int kMilliseconds = 100;
            const int ready = ::poll(ends.data(), ends.size(), kMilliseconds);
            StopIfAsked();
            for (std::size_t i = 0; ready > 0 && i < ends.size(); ++i)
            {
                if (ends[i].fd >= 0 && ends[i].revents != 0 && !ReadSome(ends[i].fd, *lines[i]))
                {
                    ends[i].fd = -1;
                }
            }
        }
        output.Finish();
        messages.Finish();
    }

    int Wait()
    {
        int status = 0;
        while (::waitpid(m_process, &status, 0) < 0 && errno == EINTR)
        {
            StopIfAsked();
        }
        m_process = -1;
        constexpr int kSignalledExitBase = 128;
        return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalledExitBase + WTERMSIG(status);
    }

private:
    /// A group of its own: what the terminal sends goes to us, and we stop the program in good order.
    static void SetAttributes(posix_spawnattr_t& attributes)
    {
        sigset_t defaults;
        ::sigemptyset(&defaults);
        ::sigaddset(&defaults, SIGPIPE);
        for (const int signal : kSignals)
        {
            ::sigaddset(&defaults, signal);
        }
        sigset_t none;
        ::sigemptyset(&none);
        ::posix_spawnattr_setsigdefault(&attributes, &defaults);
        ::posix_spawnattr_setsigmask(&attributes, &none);
        ::posix_spawnattr_setpgroup(&attributes, 0);
        ::posix_spawnattr_setflags(&attributes,
                                   POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
    }

    static bool ReadSome(int descriptor, Lines& lines)
    {
        std::array<char, 4096> block;
        const ssize_t count = ::read(descriptor, block.data(), block.size());
        if (count > 0)
        {
            lines.Add(block.data(), static_cast<std::size_t>(count));
        }
        return count > 0 || (count < 0 && errno == EINTR);
    }

    /// Asks the program to end, and ends it when it has not done so soon.
    void StopIfAsked()
    {
        if (!m_isCancelled())
        {
            return;
        }
        constexpr std::chrono::seconds kPatience(3);
        if (m_asked == Clock::time_point())
        {
            m_asked = Clock::now();
            ::kill(m_process, SIGTERM);
        }
        else if (Clock::now() - m_asked > kPatience)
        {
            ::kill(m_process, SIGKILL);
        }
    }

    const std::function<bool()>& m_isCancelled;
    Pipe m_output;
    Pipe m_messages;
    pid_t m_process = -1;
    Clock::time_point m_asked;
};

} // namespace

FFmpegResult RunFFmpeg(const std::vector<std::string>& command,
                       const std::function<void(const FFmpegProgress&)>& report,
                       const std::function<bool()>& isCancelled)
{
    constexpr std::size_t kKeptLines = 10;
    std::deque<std::string> kept;
    ProgressReader progress(report);
    Lines output([&progress](const std::string& line) { progress.Line(line); });
    Lines messages([&kept](const std::string& line) {
        kept.push_back(line);
        if (kept.size() > kKeptLines)
        {
            kept.pop_front();
        }
    });
    Child child(command, isCancelled);
    child.Read(output, messages);
    FFmpegResult result;
    result.exitCode = child.Wait();
    result.messages.assign(kept.begin(), kept.end());
    return result;
}

} // namespace Zelnor::Media
