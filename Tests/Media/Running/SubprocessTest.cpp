#include "Media/Running/Subprocess.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace
{

using namespace Zelnor::Media;
using testing::HasSubstr;

using Clock = std::chrono::steady_clock;

std::vector<std::string> Bash(const std::string& script) { return {"bash", "-c", script}; }

bool IsRunning(pid_t process) { return ::kill(process, 0) == 0; }

bool EndsSoon(pid_t process)
{
    for (int i = 0; i < 200 && IsRunning(process); ++i)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return !IsRunning(process);
}

/// Runs a script that prints the number of a process, cancels it then, and expects the process to end.
int RunAndCancel(const std::string& script, pid_t& process)
{
    std::string output;
    SubprocessOptions options;
    options.inOwnGroup = true;
    options.onOutput = [&output](std::string_view bytes) { output += bytes; };
    options.isCancelled = [&output] { return output.find('\n') != std::string::npos; };
    const int code = RunSubprocess(Bash(script), options);
    process = static_cast<pid_t>(std::stol(output));
    return code;
}

/// What SIGCHLD does while there is one of these.
class ChildSignal
{
public:
    explicit ChildSignal(void (*handler)(int)) : m_former(::signal(SIGCHLD, handler)) {}
    ~ChildSignal() { ::signal(SIGCHLD, m_former); }
    ChildSignal(const ChildSignal&) = delete;
    ChildSignal& operator=(const ChildSignal&) = delete;

private:
    void (*m_former)(int);
};

TEST(Subprocess, GivesTheExitCode)
{
    EXPECT_EQ(RunSubprocess(Bash("exit 0"), {}), 0);
    EXPECT_EQ(RunSubprocess(Bash("exit 7"), {}), 7);
    EXPECT_EQ(RunSubprocess(Bash("kill -KILL $$"), {}), 128 + SIGKILL);
}

TEST(Subprocess, HidesVariablesFromTheProgram)
{
    ::setenv("HIDDEN_ONE", "1", 1);
    ::setenv("HIDDEN", "2", 1);
    ::setenv("SHOWN", "3", 1);
    SubprocessOptions options;
    options.hidden = {"HIDDEN_", "SHOW="};

    EXPECT_EQ(RunFilter(Bash("echo $HIDDEN_ONE,$HIDDEN,$SHOWN"), options).output, ",2,3\n");

    for (const char* const name : {"HIDDEN_ONE", "HIDDEN", "SHOWN"})
    {
        ::unsetenv(name);
    }
}

TEST(Subprocess, HandsOnWhatTheProgramWrites)
{
    std::string output;
    std::string messages;
    SubprocessOptions options;
    options.onOutput = [&output](std::string_view bytes) { output += bytes; };
    options.onMessages = [&messages](std::string_view bytes) { messages += bytes; };
    EXPECT_EQ(RunSubprocess(Bash("printf out; printf message >&2; printf 'more\\0'"), options), 0);
    EXPECT_EQ(output, std::string("outmore\0", 8));
    EXPECT_EQ(messages, "message");
}

TEST(Subprocess, GivesItsInputToTheProgram)
{
    std::string text;
    for (int i = 0; i < 100000; ++i)
    {
        text += "line " + std::to_string(i) + "\n";
    }
    const FilterResult result = RunFilter({"cat"}, text);
    EXPECT_TRUE(result.started);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.output == text) << result.output.size();
}

TEST(Subprocess, WithoutInputTheProgramReadsNothing)
{
    EXPECT_EQ(RunFilter(Bash("wc -c; readlink /proc/self/fd/0"), "").output, "0\n/dev/null\n");
}

TEST(Subprocess, InheritsNoFileOfTheRun)
{
    // What this process has inherited itself, its standard streams included; and the folder that is listed.
    int files = 1;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
    {
        files += (::fcntl(std::stoi(entry.path().filename().string()), F_GETFD) & FD_CLOEXEC) == 0 ? 1 : 0;
    }
    EXPECT_EQ(RunFilter(Bash("ls /proc/self/fd | wc -l"), "x").output, std::to_string(files) + "\n");
}

TEST(Subprocess, FindsItsSignalsAsAProgramExpectsThem)
{
    sigset_t blocked;
    sigset_t former;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &former);
    void (*const pipe)(int) = ::signal(SIGPIPE, SIG_IGN);
    const int code = RunSubprocess(Bash("kill -TERM $$; exit 1"), {});
    const int piped = RunSubprocess(Bash("kill -PIPE $$; exit 1"), {});
    ::signal(SIGPIPE, pipe);
    ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
    EXPECT_EQ(code, 128 + SIGTERM);
    EXPECT_EQ(piped, 128 + SIGPIPE);
}

TEST(Subprocess, AProgramThatIsNotThereIsAnError)
{
    try
    {
        RunSubprocess({"./no-such-program"}, {});
        FAIL() << "nothing was thrown";
    }
    catch (const SubprocessError& error)
    {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
        EXPECT_STREQ(error.what(), "Cannot run './no-such-program': No such file or directory");
    }
    EXPECT_FALSE(RunFilter({"./no-such-program"}, "").started);
}

TEST(Subprocess, AWordWithANulByteIsNotCut)
{
    const std::string cut("true\0x", 6);
    EXPECT_THROW(RunSubprocess({cut}, {}), SubprocessError);
    EXPECT_THROW(RunSubprocess({"true", cut}, {}), SubprocessError);
}

TEST(Subprocess, IsAskedToEndWhenItIsCancelled)
{
    pid_t process = 0;
    EXPECT_EQ(RunAndCancel("trap 'exit 9' TERM; echo $$; while :; do sleep 0.01; done", process), 9);
    EXPECT_FALSE(IsRunning(process));
}

TEST(Subprocess, HasTimeToEndOnItsOwn)
{
    std::string output;
    SubprocessOptions options;
    options.onOutput = [&output](std::string_view bytes) { output += bytes; };
    options.isCancelled = [&output] { return !output.empty(); };
    EXPECT_EQ(
        RunSubprocess(Bash("trap 'sleep 0.3; echo end; exit 3' TERM; echo begin; sleep 60 & wait"), options),
        3);
    EXPECT_EQ(output, "begin\nend\n");
}

TEST(Subprocess, IsWaitedForWithoutWorkWhenItHasClosedItsStreams)
{
    const auto used = [] {
        timespec time = {};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    };
    const auto before = used();
    EXPECT_EQ(RunSubprocess(Bash("exec >&- 2>&-; sleep 0.5"), {}), 0);
    EXPECT_LT(used() - before, std::chrono::milliseconds(100));
}

TEST(Subprocess, IsEndedWhenItDoesNotEndOnItsOwn)
{
    const auto start = Clock::now();
    pid_t process = 0;
    EXPECT_EQ(RunAndCancel("trap '' TERM; echo $$; while :; do sleep 0.01; done", process), 128 + SIGKILL);
    EXPECT_FALSE(IsRunning(process));
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
}

TEST(Subprocess, IsCancelledAlsoAfterItHasClosedItsStreams)
{
    pid_t process = 0;
    EXPECT_EQ(RunAndCancel("echo $$; exec sleep 60 >&- 2>&-", process), 128 + SIGTERM);
    EXPECT_FALSE(IsRunning(process));
}

TEST(Subprocess, WhatItHasStartedEndsWithItWhenItIsCancelled)
{
    pid_t process = 0;
    RunAndCancel("sleep 60 & echo $!; wait", process);
    EXPECT_TRUE(EndsSoon(process));
}

TEST(Subprocess, WhatItLeavesBehindIsNotWaitedFor)
{
    const auto start = Clock::now();
    const FilterResult result = RunFilter(Bash("sleep 60 & echo $!"), "");
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
    EXPECT_EQ(result.exitCode, 0);
    const auto process = static_cast<pid_t>(std::stol(result.output));
    EXPECT_TRUE(IsRunning(process));
    ::kill(process, SIGKILL);
}

TEST(Subprocess, WhatACallbackThrowsEndsTheProgramAndPassesThrough)
{
    pid_t process = 0;
    SubprocessOptions options;
    options.inOwnGroup = true;
    options.onOutput = [&process](std::string_view bytes) {
        process = static_cast<pid_t>(std::stol(std::string(bytes)));
        throw std::domain_error("enough");
    };
    EXPECT_THROW(RunSubprocess(Bash("echo $$; exec sleep 60"), options), std::domain_error);
    ASSERT_GT(process, 0);
    EXPECT_FALSE(IsRunning(process));
}

TEST(Subprocess, MessagesWithoutEndDoNotFillTheMemory)
{
    const FilterResult result = RunFilter(Bash("head -c 50000000 /dev/zero >&2"), "");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.messages.size(), 65536U);
}

TEST(Subprocess, IsNotStartedWhereItsEndWouldBeForgotten)
{
    const ChildSignal ignored(SIG_IGN);
    try
    {
        RunSubprocess(Bash("exit 7"), {});
        FAIL() << "nothing was thrown";
    }
    catch (const SubprocessError& error)
    {
        EXPECT_EQ(error.code(), std::errc::no_child_process);
        EXPECT_THAT(error.what(), HasSubstr("ignores SIGCHLD"));
    }
}

TEST(Subprocess, AnEndThatTheApplicationHasReapedIsNotTakenForSuccess)
{
    pid_t process = 0;
    SubprocessOptions options;
    options.onOutput = [&process](std::string_view bytes) {
        process = static_cast<pid_t>(std::stol(std::string(bytes)));
    };
    options.isCancelled = [&process] {
        if (process > 0)
        {
            ::kill(process, SIGKILL);
            EXPECT_EQ(::waitpid(process, nullptr, 0), process);
        }
        return false;
    };
    EXPECT_THROW(RunSubprocess(Bash("echo $$; exec sleep 60"), options), SubprocessError);
}

} // namespace
