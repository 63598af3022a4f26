#include "Media/Running/ChildStart.h"

#include "Media/Running/Descriptor.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

/// Everything that the new process needs, made beforehand: between `vfork` and `execve` it runs in our
/// memory, where only calls that are safe in a signal handler are allowed and nothing may be left behind.
struct ChildSetup
{
    std::vector<std::string> programs; ///< the files to try, in this order
    std::vector<char*> words;
    std::vector<char*> environment;
    std::array<int, 3> streams;
    bool inOwnGroup;
    pid_t parent;
    int report; ///< closed when the program runs; else the reason why it does not
};

/// The files that a program's name may mean.
std::vector<std::string> Candidates(const std::string& name)
{
    if (name.empty() || name.find('/') != std::string::npos)
    {
        return {name};
    }
    const char* const variable = std::getenv("PATH");
    const std::string path = variable == nullptr ? "/bin:/usr/bin" : variable;
    std::vector<std::string> candidates;
    for (std::size_t begin = 0; begin <= path.size();)
    {
        const std::size_t end = std::min(path.find(':', begin), path.size());
        const std::string folder = path.substr(begin, end - begin);
        candidates.push_back(folder.empty() ? name : folder + "/" + name);
        begin = end + 1;
    }
    return candidates;
}

std::vector<char*> VisibleEnvironment(const std::vector<std::string>& hidden)
{
    std::vector<char*> visible;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
    {
        const std::string_view text = *variable;
        if (std::none_of(hidden.begin(), hidden.end(), [text](const std::string& beginning) {
                return text.substr(0, beginning.size()) == beginning;
            }))
        {
            visible.push_back(*variable);
        }
    }
    visible.push_back(nullptr);
    return visible;
}

/// Signals that this process handles or ignores are as a program expects them. What waits meanwhile is
/// delivered afterwards.
void ResetSignals(bool inOwnGroup)
{
    for (int number = 1; number < NSIG; ++number)
    {
        struct sigaction action = {};
        if (::sigaction(number, nullptr, &action) != 0 || action.sa_handler == SIG_DFL)
        {
            continue;
        }
        const bool isOurs = number == SIGPIPE || number == SIGXFSZ || number == SIGCHLD ||
                            number == SIGTERM || (inOwnGroup && (number == SIGINT || number == SIGHUP));
        if (action.sa_handler != SIG_IGN || isOurs)
        {
            action = {};
            action.sa_handler = SIG_DFL;
            ::sigaction(number, &action, nullptr);
        }
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// Tries the files like a shell does, but does not take one without a "#!" line for a script.
/// \returns the reason why none of them runs
int Execute(const ChildSetup& setup)
{
    int reason = ENOENT;
    for (const std::string& program : setup.programs)
    {
        ::execve(program.c_str(), setup.words.data(), setup.environment.data());
        if (errno != ENOENT && errno != ENOTDIR && errno != EACCES)
        {
            return errno;
        }
        // A file that may not be run is the reason only when there is no other one.
        reason = errno == EACCES || setup.programs.size() == 1 ? errno : reason;
    }
    return reason;
}

[[noreturn]] void RunChild(const ChildSetup& setup)
{
    constexpr int kNotRun = 127;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != setup.parent)
    {
        // It was killed before the line above, so there is nobody to run for.
        ::_exit(kNotRun);
    }
    if (setup.inOwnGroup)
    {
        ::setpgid(0, 0);
    }
    for (int stream = 0; stream < 3; ++stream)
    {
        ::dup2(setup.streams[static_cast<std::size_t>(stream)], stream);
    }
    ResetSignals(setup.inOwnGroup);
    const int reason = Execute(setup);
    [[maybe_unused]] const ssize_t written = ::write(setup.report, &reason, sizeof reason);
    ::_exit(kNotRun);
}

/// \returns 0 when the program runs
int ReadReport(int report)
{
    int reason = 0;
    ssize_t count = 0;
    do
    {
        count = ::read(report, &reason, sizeof reason);
    } while (count < 0 && errno == EINTR);
    return count == sizeof reason ? reason : 0;
}

} // namespace

int StartChild(const ChildCommand& command, pid_t& process)
{
    std::array<int, 2> ends = {-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
    {
        return errno;
    }
    const Descriptor report(ends[0]);
    Descriptor childReport(ends[1]);
    if (ends[1] <= STDERR_FILENO)
    {
        // Not where the program's standard streams will be.
        childReport = Descriptor(::fcntl(ends[1], F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    }
    ChildSetup setup = {Candidates(command.words.front()),
                        {},
                        VisibleEnvironment(command.hidden),
                        command.streams,
                        command.inOwnGroup,
                        ::getpid(),
                        childReport.Get()};
    setup.words.reserve(command.words.size() + 1);
    for (const std::string& word : command.words)
    {
        setup.words.push_back(const_cast<char*>(word.c_str()));
    }
    setup.words.push_back(nullptr);
    // No handler of this process may run in the new one.
    sigset_t all;
    sigset_t former;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &former);
    // To copy what maps FFmpeg's libraries takes longer than all else that is done here.
    process = ::vfork();
    const int reason = errno;
    if (process == 0)
    {
        RunChild(setup);
    }
    ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
    if (process < 0)
    {
        return reason;
    }
    childReport.Close();
    const int failure = ReadReport(report.Get());
    if (failure != 0)
    {
        while (::waitpid(process, nullptr, 0) < 0 && errno == EINTR)
        {}
    }
    return failure;
}

} // namespace Zelnor::Media
