// What every public operation does when memory runs out at its first, second, ... allocation.

#include "Tests/Campaigns/Allocation/FailingMalloc.h"
#include "Tests/Campaigns/Allocation/Operations.h"
#include "Tests/Support/Campaign.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <map>
#include <new>
#include <string>
#include <vector>

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

constexpr unsigned kLongestSeconds = 300; // on a slow machine that does other things as well

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
    AllocationSites cold; ///< of the first use
    AllocationSites warm; ///< of a later one
};

/// Of the allocations that the first use does not share with a later one, all, and of the others some: a
/// failure there leaves nothing half made that is made only once, so that a later use shows the same.
std::vector<std::size_t> AllocationsOfAFirstUse(const AllocationSites& cold, const AllocationSites& warm)
{
    constexpr std::size_t kSome = 16;
    const bool isWhole = cold.count <= cold.stacks.size() && warm.count <= warm.stacks.size();
    std::map<std::uint64_t, std::ptrdiff_t> surplus;
    for (std::size_t n = 0; isWhole && n < cold.count; ++n)
    {
        ++surplus[cold.stacks[n]];
    }
    for (std::size_t n = 0; isWhole && n < warm.count; ++n)
    {
        --surplus[warm.stacks[n]];
    }
    const bool differs =
        std::any_of(surplus.begin(), surplus.end(), [](const auto& stack) { return stack.second > 0; });
    std::vector<std::size_t> chosen;
    for (std::size_t n = 0; (differs || !isWhole) && n < cold.count; ++n)
    {
        if (!isWhole || surplus[cold.stacks[n]] > 0 || n % kSome == 0)
        {
            chosen.push_back(n);
        }
    }
    return chosen;
}

/// Fails the allocations of one operation, in a process of its own.
class Attack
{
public:
    Attack(const Operation& operation, Progress& progress) : m_operation(operation), m_progress(progress) {}

    /// What can be seen after an undisturbed run.
    std::string Run() const
    {
        const Trial trial = m_operation.prepare();
        trial.act();
        return trial.see();
    }

    /// The same, with its allocations written down.
    std::string Run(AllocationSites& sites) const
    {
        const Trial trial = m_operation.prepare();
        FailingMalloc memory(Whose(), sites);
        trial.act();
        memory.Stop();
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
        return !wrong.empty() ? wrong : Run() == after ? "" : "the next use gives something else";
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
            // FFmpeg takes its time. What a failure leaves behind shows in the next attempt as well.
            constexpr std::size_t kRetried = 8;
            if (m_operation.usesFFmpeg && n % kRetried != 0)
            {
                return "";
            }
            trial.act();
            return trial.see() == after ? "" : "the second attempt gives " + trial.see();
        }
        return Run() == after ? "" : "the next use gives something else";
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

    /// \returns its figures
    std::string Run(const Operations& operations)
    {
        for (const Operation& operation : operations)
        {
            Run(operation);
        }
        return std::to_string(operations.size()) + " operations, " + std::to_string(m_progress.points) +
               " failed allocations, " + std::to_string(m_findings) + " findings";
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
            std::string first;
            // From one place, so that the same allocation has the same call stack.
            for (AllocationSites* const sites : {&m_progress.cold, &m_progress.warm})
            {
                const std::string seen = attack.Run(*sites);
                first = sites == &m_progress.cold ? seen : first;
            }
            return first;
        });
        const std::vector<std::size_t> ofFirstUse = AllocationsOfAFirstUse(m_progress.cold, m_progress.warm);
        if (m_only != nullptr)
        {
            std::printf("%s %s: %zu, first %zu, tried there %zu, gives %s\n", operation.function.c_str(),
                        operation.variant.c_str(), m_progress.warm.count, m_progress.cold.count,
                        ofFirstUse.size(), after.c_str());
        }
        for (const Shortage shortage : {Shortage::Moment, Shortage::Lasting})
        {
            Note(operation, InNewProcess([&] {
                     attack.Run();
                     return attack.FailEach(shortage, after);
                 }));
            FailFirstUse(operation, attack, shortage, after, ofFirstUse);
        }
    }

    void FailFirstUse(const Operation& operation, Attack& attack, Shortage shortage, const std::string& after,
                      const std::vector<std::size_t>& numbers)
    {
        for (const std::size_t n : numbers)
        {
            if (Note(operation, InNewProcess([&] { return attack.FailFirstUse(n, shortage, after); })))
            {
                return;
            }
            ++m_progress.points;
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

std::string RunCampaign(const Operations& operations) { return Campaign().Run(operations); }

TEST(Allocation, Core) { ReportFigures(RunCampaign(CoreOperations())); }

TEST(Allocation, Conf) { ReportFigures(RunCampaign(ConfOperations())); }

} // namespace Zelnor::Testing
