#pragma once

#include <fcntl.h>
#include <pty.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

extern char** environ;

namespace Zelnor::Testing
{

/// How a program is run by a test.
struct ProcessOptions
{
    std::string input{};  ///< what it reads from standard input
    std::string folder{}; ///< where it runs; empty: where the test runs
    /// Changes to the environment: "NAME=value" sets a variable, "NAME" removes it.
    std::vector<std::string> environment{};
    bool terminal = false; ///< its standard output and error are one terminal, read into `output`
    std::chrono::seconds timeout{60};
};

/// What became of it.
struct ProcessResult
{
    int exitCode = -1; ///< -1 unless it ended by itself
    int signal = 0;    ///< what ended it otherwise
    bool timedOut = false;
    std::string output;
    std::string messages;
};

namespace details
{

class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor)
    {
        if (descriptor < 0)
        {
            throw std::runtime_error("no descriptor");
        }
    }
    Descriptor(Descriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor()
    {
        if (m_descriptor >= 0)
        {
            ::close(m_descriptor);
        }
    }
    int Get() const { return m_descriptor; }

private:
    int m_descriptor;
};

inline std::string ReadToEnd(int descriptor)
{
    std::array<char, 65536> block;
    std::string text;
    for (;;)
    {
        const ssize_t count = ::read(descriptor, block.data(), block.size());
        if (count <= 0)
        {
            return text;
        }
        text.append(block.data(), static_cast<std::size_t>(count));
    }
}

/// The streams of a new process: files in memory, so that no side waits for the other, or a terminal.
class Streams
{
public:
    explicit Streams(const ProcessOptions& options)
        : m_input(::memfd_create("input", MFD_CLOEXEC)), m_output(MakeOutput(options.terminal)),
          m_messages(::memfd_create("messages", MFD_CLOEXEC)), m_terminal(options.terminal)
    {
        for (std::size_t done = 0; done < options.input.size();)
        {
            const ssize_t count =
                ::write(m_input.Get(), options.input.data() + done, options.input.size() - done);
            done += count > 0 ? static_cast<std::size_t>(count) : 0;
        }
        ::lseek(m_input.Get(), 0, SEEK_SET);
    }

    int Input() const { return m_input.Get(); }
    int Output() const { return m_output.second.Get(); }
    int Messages() const { return m_terminal ? Output() : m_messages.Get(); }

    void Collect(ProcessResult& result) const
    {
        if (m_terminal)
        {
            ::fcntl(m_output.first.Get(), F_SETFL, O_NONBLOCK);
        }
        ::lseek(m_output.first.Get(), 0, SEEK_SET);
        ::lseek(m_messages.Get(), 0, SEEK_SET);
        result.output = ReadToEnd(m_output.first.Get());
        result.messages = ReadToEnd(m_messages.Get());
    }

private:
    /// The end that the test reads, and the one that the process writes.
    static std::pair<Descriptor, Descriptor> MakeOutput(bool terminal)
    {
        int read = -1;
        int write = -1;
        if (terminal)
        {
            ::openpty(&read, &write, nullptr, nullptr, nullptr);
            ::fcntl(read, F_SETFD, FD_CLOEXEC);
            ::fcntl(write, F_SETFD, FD_CLOEXEC);
        }
        else
        {
            read = ::memfd_create("output", MFD_CLOEXEC);
            write = ::fcntl(read, F_DUPFD_CLOEXEC, 0);
        }
        return {Descriptor(read), Descriptor(write)};
    }

    Descriptor m_input;
    std::pair<Descriptor, Descriptor> m_output;
    Descriptor m_messages;
    bool m_terminal;
};

inline std::vector<std::string> Environment(const std::vector<std::string>& changes)
{
    std::vector<std::string> variables;
    const auto nameOf = [](const std::string& text) { return text.substr(0, text.find('=')); };
    for (char** entry = environ; *entry != nullptr; ++entry)
    {
        const std::string variable = *entry;
        if (std::none_of(changes.begin(), changes.end(),
                         [&](const std::string& change) { return nameOf(change) == nameOf(variable); }))
        {
            variables.push_back(variable);
        }
    }
    std::copy_if(changes.begin(), changes.end(), std::back_inserter(variables),
                 [](const std::string& change) { return change.find('=') != std::string::npos; });
    return variables;
}

inline std::vector<char*> Pointers(const std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (const std::string& text : texts)
    {
        pointers.push_back(const_cast<char*>(text.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

inline pid_t Spawn(const std::vector<std::string>& arguments, const ProcessOptions& options,
                   const Streams& streams)
{
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, streams.Input(), STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, streams.Output(), STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, streams.Messages(), STDERR_FILENO);
    if (!options.folder.empty())
    {
        ::posix_spawn_file_actions_addchdir_np(&actions, options.folder.c_str());
    }
    const std::vector<std::string> environment = Environment(options.environment);
    pid_t process = -1;
    const int reason = ::posix_spawnp(&process, arguments.front().c_str(), &actions, nullptr,
                                      Pointers(arguments).data(), Pointers(environment).data());
    ::posix_spawn_file_actions_destroy(&actions);
    if (reason != 0)
    {
        throw std::runtime_error("cannot start " + arguments.front());
    }
    return process;
}

inline void Wait(pid_t process, std::chrono::seconds timeout, ProcessResult& result)
{
    const auto end = std::chrono::steady_clock::now() + timeout;
    int status = 0;
    while (::waitpid(process, &status, WNOHANG) == 0)
    {
        if (!result.timedOut && std::chrono::steady_clock::now() > end)
        {
            result.timedOut = true;
            ::kill(process, SIGKILL);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

} // namespace details

/// Runs a program, found through PATH, and waits for its end.
inline ProcessResult RunProcess(const std::vector<std::string>& arguments, const ProcessOptions& options = {})
{
    const details::Streams streams(options);
    ProcessResult result;
    details::Wait(details::Spawn(arguments, options, streams), options.timeout, result);
    streams.Collect(result);
    return result;
}

} // namespace Zelnor::Testing
