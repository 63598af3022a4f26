// What every public operation does when memory runs out at its first, second, ... allocation.

#include "Tests/Campaigns/Allocation/FailingMalloc.h"
#include "Tests/Campaigns/Allocation/Operations.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <new>
#include <string>

namespace Zelnor::Testing
{

std::string Text(const Core::Property& record)
{
    std::string text = record.GetName() + "=";
    switch (record.GetType())
    {
    case PROPERTY_TYPE_NONE:
        return text + "none";
    case PROPERTY_TYPE_INT64:
        return text + std::to_string(record.GetInt64());
    case PROPERTY_TYPE_STRING:
        return text + "'" + record.GetString() + "'";
    case PROPERTY_TYPE_RATIO:
        return text + std::to_string(record.GetRatio().numerator()) + "/" +
               std::to_string(record.GetRatio().denominator());
    case PROPERTY_TYPE_GROUP:
        break;
    }
    text += "{";
    for (const Core::Property& child : record)
    {
        text += Text(child) + ",";
    }
    return text + "}";
}

namespace
{

constexpr unsigned kLongestSeconds = 100;

/// How an attempt ended.
enum class Outcome
{
    Done,
    OutOfMemory,
    Described, ///< as out of memory
    Ours,      ///< another exception of the libraries
    Other,
};

/// Lets the trial act while memory fails.
Outcome Attempt(const Trial& trial, FailingMalloc& memory)
{
    try
    {
        trial.act();
        memory.Stop();
        return Outcome::Done;
    }
    catch (const std::bad_alloc&)
    {
        memory.Stop();
        return Outcome::OutOfMemory;
    }
    catch (const Exception& exception)
    {
        memory.Stop();
        return IsOutOfMemory(exception) ? Outcome::Described : Outcome::Ours;
    }
    catch (...)
    {
        memory.Stop();
        return Outcome::Other;
    }
}

/// What a process of the campaign shares with the one that started it, so that it is known where it crashed.
struct Progress
{
    std::size_t number;
    Shortage shortage;
    std::size_t points;
    std::size_t coldAllocations;
    std::size_t warmAllocations;
};

/// Fails the allocations of one operation, in a process of its own.
class Attack
{
public:
    Attack(const Operation& operation, Progress& progress) : m_operation(operation), m_progress(progress) {}

    /// What can be seen after an undisturbed run; counts its allocations.
    std::string Run(std::size_t& allocations) const
    {
        const Trial trial = m_operation.prepare();
        FailingMalloc memory(Whose());
        trial.act();
        memory.Stop();
        allocations = memory.Asked();
        return trial.see();
    }

    /// Every allocation in turn, when everything that is made once and kept is there. \returns what is wrong
    std::string FailEach(Shortage shortage, const std::string& after)
    {
        m_progress.shortage = shortage;
        for (std::size_t n = 0;; ++n)
        {
            m_progress.number = n;
            bool hasFailed = false;
            // A cache may grow once; a leak grows each time.
            std::string wrong = FailAt(n, shortage, after, hasFailed);
            for (int again = 0; again < 2 && wrong == kLeak; ++again)
            {
                wrong = FailAt(n, shortage, after, hasFailed);
            }
            if (!hasFailed || !wrong.empty())
            {
                return wrong;
            }
            ++m_progress.points;
        }
    }

    /// Allocation `n` of the very first use, and then whether the next use works.
    std::string FailFirstUse(std::size_t n, Shortage shortage, const std::string& after)
    {
        m_progress.number = n;
        m_progress.shortage = shortage;
        std::string wrong;
        {
            const Trial trial = m_operation.prepare();
            FailingMalloc memory(n, shortage, Whose());
            const Outcome outcome = Attempt(trial, memory);
            wrong = Judge(outcome, trial, after);
        }
        std::size_t ignored = 0;
        return !wrong.empty() ? wrong : Run(ignored) == after ? "" : "the next use gives something else";
    }

private:
    Testing::Whose Whose() const
    {
        return m_operation.usesFFmpeg ? Testing::Whose::Ours : Testing::Whose::Everybodys;
    }

    static constexpr const char* kLeak = "memory is not freed";

    std::string FailAt(std::size_t n, Shortage shortage, const std::string& after, bool& hasFailed) const
    {
        const long before = FailingMalloc::Outstanding();
        std::string wrong = FailOnce(n, shortage, after, hasFailed);
        return wrong.empty() && FailingMalloc::Outstanding() != before ? kLeak : wrong;
    }

    std::string FailOnce(std::size_t n, Shortage shortage, const std::string& after, bool& hasFailed) const
    {
        const Trial trial = m_operation.prepare();
        const std::string before = trial.see();
        FailingMalloc memory(n, shortage, Whose());
        const Outcome outcome = Attempt(trial, memory);
        hasFailed = memory.Failed() != 0;
        std::string wrong = Judge(outcome, trial, after);
        if (!wrong.empty() || outcome == Outcome::Done)
        {
            return wrong;
        }
        if (m_operation.isAllOrNothing)
        {
            const std::string found = trial.see();
            if (found != before)
            {
                return "changed by a failure from " + before + " to " + found;
            }
            trial.act();
            return trial.see() == after ? "" : "the second attempt gives " + trial.see();
        }
        std::size_t ignored = 0;
        return Run(ignored) == after ? "" : "the next use gives something else";
    }

    std::string Judge(Outcome outcome, const Trial& trial, const std::string& after) const
    {
        switch (outcome)
        {
        case Outcome::Done:
            return trial.see() == after ? "" : "succeeded with " + trial.see() + " instead of " + after;
        case Outcome::OutOfMemory:
            return "";
        case Outcome::Described:
            return m_operation.mayDescribe ? "" : "described, where std::bad_alloc is promised";
        case Outcome::Ours:
        case Outcome::Other:
            break;
        }
        return "another exception than std::bad_alloc";
    }

    const Operation& m_operation;
    Progress& m_progress;
};

/// Runs `action` in a new process. \returns its text; what ended it otherwise
std::string InNewProcess(const std::function<std::string()>& action)
{
    const int file = ::memfd_create("report", MFD_CLOEXEC);
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0)
    {
        ::alarm(kLongestSeconds);
        std::string report;
        try
        {
            report = action();
        }
        catch (const std::exception& exception)
        {
            report = std::string("fails by itself: ") + boost::diagnostic_information(exception);
        }
        const auto written = ::write(file, report.data(), report.size());
        ::_exit(written == static_cast<ssize_t>(report.size()) ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    std::string report(static_cast<std::size_t>(::lseek(file, 0, SEEK_END)), '\0');
    const auto count = ::pread(file, report.data(), report.size(), 0);
    ::close(file);
    if (WIFSIGNALED(status))
    {
        return "ended by signal " + std::to_string(WTERMSIG(status));
    }
    const bool isWhole = count == static_cast<ssize_t>(report.size());
    return WEXITSTATUS(status) == 0 && isWhole ? report : "cannot report";
}

/// The campaign over a list of operations.
class Campaign
{
public:
    Campaign()
        : m_progress(*static_cast<Progress*>(
              ::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)))
    {}

    void Run(const Operations& operations)
    {
        for (const Operation& operation : operations)
        {
            Run(operation);
        }
        std::printf("%zu operations, %zu failed allocations, %zu findings\n", operations.size(),
                    m_progress.points, m_findings);
    }

private:
    void Run(const Operation& operation)
    {
        if (m_only != nullptr && operation.function != m_only)
        {
            return;
        }
        Attack attack(operation, m_progress);
        const std::string after = InNewProcess([&] {
            const std::string seen = attack.Run(m_progress.coldAllocations);
            attack.Run(m_progress.warmAllocations);
            return seen;
        });
        if (m_only != nullptr)
        {
            std::printf("%s %s: %zu, first %zu, gives %s\n", operation.function.c_str(),
                        operation.variant.c_str(), m_progress.warmAllocations, m_progress.coldAllocations,
                        after.c_str());
        }
        for (const Shortage shortage : {Shortage::Moment, Shortage::Lasting})
        {
            Note(operation, InNewProcess([&] {
                     std::size_t ignored = 0;
                     attack.Run(ignored);
                     return attack.FailEach(shortage, after);
                 }));
            const bool isOtherTheFirstTime = m_progress.coldAllocations != m_progress.warmAllocations;
            for (std::size_t n = 0; isOtherTheFirstTime && n < m_progress.coldAllocations; ++n)
            {
                const auto first = [&] { return attack.FailFirstUse(n, shortage, after); };
                if (Note(operation, InNewProcess(first)))
                {
                    break;
                }
                ++m_progress.points;
            }
        }
    }

    bool Note(const Operation& operation, const std::string& wrong)
    {
        if (wrong.empty())
        {
            return false;
        }
        ++m_findings;
        ADD_FAILURE() << operation.function << " (" << operation.variant << "), allocation "
                      << m_progress.number
                      << (m_progress.shortage == Shortage::Moment ? "" : " and all later ones") << ": "
                      << wrong;
        return true;
    }

    Progress& m_progress;
    std::size_t m_findings = 0;
    const char* m_only = std::getenv("ZELNOR_CAMPAIGN_ONLY");
};

} // namespace

void RunCampaign(const Operations& operations) { Campaign().Run(operations); }

TEST(Allocation, Core) { RunCampaign(CoreOperations()); }

TEST(Allocation, Conf) { RunCampaign(ConfOperations()); }

} // namespace Zelnor::Testing
