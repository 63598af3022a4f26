#pragma once

#include "Tests/Support/Expect.h"

#include <gtest/gtest.h>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <utility>

namespace Zelnor::Testing
{

/// Expects what a stream of `Core/Interfaces/DataStream` throws.
inline void ExpectFailure(const Thrown& thrown, const std::string& description, const std::string& function)
{
    EXPECT_EQ(thrown.description, description);
    EXPECT_EQ(thrown.file, "Core/Interfaces/DataStream");
    EXPECT_NE(thrown.function.value_or("").find(function), std::string::npos) << thrown.function.value_or("");
    EXPECT_FALSE(thrown.callStack.value_or("").empty());
}

template <class Output>
void Put(Output& output, const std::string& text)
{
    output.Write(text.data(), text.size());
}

inline mode_t ModeOf(const std::filesystem::path& path)
{
    struct stat status = {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

/// Makes the process's mask for new files known for a test.
class Umask
{
public:
    explicit Umask(mode_t mask) : m_before(::umask(mask)) {}
    ~Umask() { ::umask(m_before); }
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;

private:
    mode_t m_before;
};

/// Lets a test of the superuser act as somebody to whom permissions apply.
class Unprivileged
{
public:
    Unprivileged() : m_before(::geteuid()), m_isDumpable(::prctl(PR_GET_DUMPABLE))
    {
        EXPECT_TRUE(m_before != 0 || ::seteuid(65534) == 0);
    }
    ~Unprivileged()
    {
        EXPECT_EQ(::seteuid(m_before), 0);
        // A process that has been somebody else may not be looked into from then on.
        EXPECT_EQ(::prctl(PR_SET_DUMPABLE, m_isDumpable), 0);
    }
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

private:
    uid_t m_before;
    int m_isDumpable;
};

/// Lets writing fail beyond a size, as on a disk that is full, after what still fits was written.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes) : m_signal(std::signal(SIGXFSZ, SIG_IGN))
    {
        EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &m_before), 0);
        const rlimit limit{bytes, m_before.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~FileSizeLimit()
    {
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &m_before), 0);
        std::signal(SIGXFSZ, m_signal);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before = {};
    void (*m_signal)(int);
};

/// Runs `action` in a process of its own, and returns the status with which it ended, as `waitpid` does.
template <class Action>
int RunForked(Action&& action)
{
    const pid_t child = ::fork();
    if (child == 0)
    {
        // Nothing of the test's own may run a second time.
        try
        {
            ::_exit(std::forward<Action>(action)());
        }
        catch (...)
        {
            ::_exit(255);
        }
    }
    int status = -1;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return status;
}

} // namespace Zelnor::Testing
