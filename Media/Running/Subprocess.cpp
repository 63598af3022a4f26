#include "Media/Running/Subprocess.h"

#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

extern char** environ;

namespace Zelnor::Media
{

namespace
{

[[noreturn]] void ThrowSystemError(const char* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

/// A file in memory. Programs read from and write to such files instead of pipes, so that neither side ever
/// waits for the other.
class MemoryFile
{
public:
    MemoryFile() : m_descriptor(::memfd_create("zconf", MFD_CLOEXEC))
    {
        if (m_descriptor < 0)
        {
            ThrowSystemError("Cannot make a file in memory");
        }
    }
    ~MemoryFile() { ::close(m_descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    int GetDescriptor() const { return m_descriptor; }

    void Fill(const std::string& text) const
    {
        for (std::size_t done = 0; done < text.size();)
        {
            const ssize_t written = ::write(m_descriptor, text.data() + done, text.size() - done);
            if (written < 0 && errno != EINTR)
            {
                ThrowSystemError("Cannot write to memory");
            }
            done += written > 0 ? static_cast<std::size_t>(written) : 0;
        }
        ::lseek(m_descriptor, 0, SEEK_SET);
    }

    std::string Contents() const
    {
        constexpr std::size_t kBlock = 65536;
        std::array<char, kBlock> block;
        std::string text;
        ::lseek(m_descriptor, 0, SEEK_SET);
        for (;;)
        {
            const ssize_t count = ::read(m_descriptor, block.data(), block.size());
            if (count < 0 && errno != EINTR)
            {
                ThrowSystemError("Cannot read from memory");
            }
            if (count == 0)
            {
                return text;
            }
            text.append(block.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
        }
    }

private:
    int m_descriptor;
};

/// The files of a new process, and its signals as a process expects to find them.
class SpawnSetup
{
public:
    SpawnSetup(const MemoryFile& input, const MemoryFile& output, const MemoryFile& messages)
    {
        ::posix_spawn_file_actions_init(&m_files);
        ::posix_spawn_file_actions_adddup2(&m_files, input.GetDescriptor(), STDIN_FILENO);
        ::posix_spawn_file_actions_adddup2(&m_files, output.GetDescriptor(), STDOUT_FILENO);
        ::posix_spawn_file_actions_adddup2(&m_files, messages.GetDescriptor(), STDERR_FILENO);
        ::posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        ::sigemptyset(&signals);
        ::sigaddset(&signals, SIGPIPE);
        ::sigaddset(&signals, SIGXFSZ);
        ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSetup()
    {
        ::posix_spawn_file_actions_destroy(&m_files);
        ::posix_spawnattr_destroy(&m_attributes);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;

    /// 0 or the reason.
    int Spawn(pid_t& process, const std::vector<std::string>& arguments) const
    {
        std::vector<char*> words;
        for (const std::string& argument : arguments)
        {
            words.push_back(const_cast<char*>(argument.c_str()));
        }
        words.push_back(nullptr);
        return ::posix_spawnp(&process, words.front(), &m_files, &m_attributes, words.data(), environ);
    }

private:
    posix_spawn_file_actions_t m_files;
    posix_spawnattr_t m_attributes;
};

int WaitFor(pid_t process)
{
    int status = 0;
    while (::waitpid(process, &status, 0) < 0)
    {
        if (errno != EINTR)
        {
            ThrowSystemError("Cannot wait for a program");
        }
    }
    constexpr int kSignalledExitBase = 128;
    return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalledExitBase + WTERMSIG(status);
}

} // namespace

ProcessResult RunFilter(const std::vector<std::string>& arguments, const std::string& input)
{
    const MemoryFile in;
    const MemoryFile out;
    const MemoryFile messages;
    in.Fill(input);
    ProcessResult result;
    pid_t process = 0;
    const int reason = SpawnSetup(in, out, messages).Spawn(process, arguments);
    if (reason == ENOENT || reason == EACCES || reason == ENOTDIR)
    {
        return result;
    }
    if (reason != 0)
    {
        errno = reason;
        ThrowSystemError("Cannot start a program");
    }
    result.started = true;
    result.exitCode = WaitFor(process);
    result.output = out.Contents();
    result.messages = messages.Contents();
    return result;
}

} // namespace Zelnor::Media
