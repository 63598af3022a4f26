#include "Tools/zconf/Commands/BatchSlurm.h"

#include "Media/Batch/BatchStatus.h"
#include "Media/Running/JobRun.h"
#include "Media/Text.h"
#include "Tools/zconf/Commands/BatchFailure.h"
#include "Tools/zconf/Commands/BatchText.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/SignalGuard.h"
#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/StatusLine.h"
#include "Tools/zconf/Console/Text.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <functional>
#include <optional>
#include <thread>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

using Media::SlurmSubmission;

/// "films: 60 jobs submitted as array 1234, 3 are in the queue already"
std::string SubmissionText(const std::string& folder, const SlurmSubmission& submission)
{
    std::string text = Printable(folder) + ": ";
    if (submission.submitted.empty())
    {
        text += "no job is left to submit";
    }
    else
    {
        text += Media::Count(submission.submitted.size(), "job") + " submitted as " +
                (submission.arrays.size() == 1 ? "array " : "arrays ");
        for (const long long array : submission.arrays)
        {
            text += (array == submission.arrays.front() ? "" : ", ") + std::to_string(array);
        }
    }
    const std::size_t pending = submission.pending.size();
    return pending == 0 ? text
                        : text + ", " + std::to_string(pending) + (pending == 1 ? " is" : " are") +
                              " in the queue already";
}

std::size_t CountPending(const std::vector<std::optional<Media::SlurmTask>>& tasks)
{
    return static_cast<std::size_t>(
        std::count_if(tasks.begin(), tasks.end(), [](const std::optional<Media::SlurmTask>& task) {
            return task && Media::IsPending(task->state);
        }));
}

/// A controller that does not answer for a while, as when it is begun anew, is asked again.
class PatientAsking
{
public:
    explicit PatientAsking(StatusLine& line) : m_line(line) {}

    /// \returns whether Slurm has answered
    /// \throw RunException when it has not for that long
    bool Try(const std::function<void()>& ask, std::chrono::seconds patience)
    {
        try
        {
            ask();
            m_answered = Clock::now();
            return true;
        }
        catch (const Media::RunException&)
        {
            if (Clock::now() - m_answered >= patience)
            {
                throw;
            }
            m_line.Show(Describe(std::current_exception()));
            return false;
        }
    }

private:
    using Clock = std::chrono::steady_clock;

    StatusLine& m_line;
    Clock::time_point m_answered = Clock::now();
};

/// Waits until Slurm has nothing of the batch left to do. When it is cancelled, so are the tasks.
void WaitForSlurm(const Media::Batch& batch)
{
    constexpr std::chrono::minutes kPatience(10);
    constexpr std::chrono::seconds kPatienceToCancel(30); // somebody waits for that
    // Not more often: all users of a cluster ask the same controller.
    constexpr std::chrono::seconds kPause(2);
    Media::CancelToken cancel;
    const SignalGuard guard(cancel);
    StatusLine line;
    PatientAsking asking(line);
    bool areCancelled = false;
    for (;;)
    {
        const bool isCancelled = cancel.IsCancelled();
        const std::chrono::seconds patience = isCancelled ? kPatienceToCancel : kPatience;
        if (isCancelled && !areCancelled)
        {
            areCancelled = asking.Try([&batch] { Media::CancelSlurm(batch); }, patience);
        }
        std::size_t pending = 0;
        if (asking.Try([&] { pending = CountPending(Media::AskSlurm(batch)); }, patience))
        {
            if (pending == 0)
            {
                return;
            }
            line.Show(BatchSummaryText(Media::ReadBatchStatus(batch)) + "; " + Media::Count(pending, "task") +
                      " in Slurm's queue");
        }
        const auto end = std::chrono::steady_clock::now() + kPause;
        while (std::chrono::steady_clock::now() < end && cancel.IsCancelled() == isCancelled)
        {
            constexpr std::chrono::milliseconds kStep(50);
            std::this_thread::sleep_for(kStep);
        }
    }
}

/// What a run here would return.
int ExitCodeOf(const Media::BatchStatus& status, const Media::BatchChoice& choice)
{
    FailureCode code;
    std::vector<Media::BatchJobState> states;
    for (const Media::BatchJobStatus& job : status.jobs)
    {
        states.push_back(job.state);
        code.Add(job.state == Media::BatchJobState::Failed ? job.result->failure
                                                           : Media::BatchResult::Failure::None);
    }
    const bool isLeft =
        !Media::ChooseJobs(states, choice).empty() || status.CountOf(Media::BatchJobState::Running) > 0;
    return code.Get() == kExitSuccess && isLeft ? kExitFailure : code.Get();
}

} // namespace

int RunBatchOnSlurm(const Media::Batch& batch, const Media::SlurmOptions& options, bool wait, bool json)
{
    WriteMessage("zconf: " + SubmissionText(batch.folder, Media::SubmitBatch(batch, options)) + "\n");
    if (wait)
    {
        WaitForSlurm(batch);
    }
    const Media::BatchStatus status = Media::ReadBatchStatus(batch);
    if (json)
    {
        WriteBatchJson(batch, status, AskSlurmOf(batch));
    }
    if (!wait)
    {
        return kExitSuccess;
    }
    WriteMessage("zconf: " + Printable(batch.folder) + ": " + BatchSummaryText(status) + "\n");
    if (SignalGuard::Caught() != 0)
    {
        EndBy(SignalGuard::Caught());
    }
    return ExitCodeOf(status, options.choice);
}

SlurmTasks AskSlurmOf(const Media::Batch& batch)
{
    try
    {
        return Media::AskSlurm(batch);
    }
    catch (const Media::RunException&)
    {
        ReportFailure(Describe(std::current_exception()));
        return {};
    }
}

std::string OwnProgram() { return std::filesystem::read_symlink("/proc/self/exe").string(); }

} // namespace Zelnor::Tool
