#include "Media/Batch/BatchStatus.h"

#include "Media/Batch/BatchFolder.h"
#include "Media/Batch/BatchRecord.h"
#include "Media/Batch/BatchStatusOf.h"
#include "Media/MediaException.h"

#include <sys/stat.h>

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

/// The whole batch stands still otherwise.
constexpr const char* kAdvice = " (delete the file to make the job wait again)";

BatchJobState StateOfDone(const std::string& output, std::uint64_t size)
{
    struct stat status = {};
    if (::stat(output.c_str(), &status) != 0)
    {
        return BatchJobState::Missing;
    }
    const bool isChanged = S_ISREG(status.st_mode) && static_cast<std::uint64_t>(status.st_size) != size;
    return isChanged ? BatchJobState::Changed : BatchJobState::Done;
}

} // namespace

std::string NameOf(BatchJobState state)
{
    switch (state)
    {
    case BatchJobState::Refused:
        return "refused";
    case BatchJobState::Waiting:
        return "waiting";
    case BatchJobState::Running:
        return "running";
    case BatchJobState::Interrupted:
        return "interrupted";
    case BatchJobState::Done:
        return "done";
    case BatchJobState::Missing:
        return "missing";
    case BatchJobState::Changed:
        return "changed";
    case BatchJobState::Failed:
        return "failed";
    case BatchJobState::Cancelled:
        break;
    }
    return "cancelled";
}

std::size_t BatchStatus::CountOf(BatchJobState state) const
{
    return static_cast<std::size_t>(std::count_if(
        jobs.begin(), jobs.end(), [state](const BatchJobStatus& job) { return job.state == state; }));
}

bool BatchStatus::IsDone() const
{
    return CountOf(BatchJobState::Done) + CountOf(BatchJobState::Refused) == jobs.size();
}

BatchJobState StateOf(const Batch& batch, const BatchJob& job, const std::optional<BatchResult>& result,
                      const std::function<bool()>& isLocked)
{
    if (!job.IsPlanned())
    {
        return BatchJobState::Refused;
    }
    if (!result)
    {
        return BatchJobState::Waiting;
    }
    switch (result->state)
    {
    case BatchResult::State::Running:
        return isLocked() ? BatchJobState::Running : BatchJobState::Interrupted;
    case BatchResult::State::Done:
        return StateOfDone(batch.PathOf(batch.OutputOf(job)), result->sizeAfter);
    case BatchResult::State::Failed:
        return BatchJobState::Failed;
    case BatchResult::State::Cancelled:
        break;
    }
    return BatchJobState::Cancelled;
}

std::optional<BatchResult> ReadBatchResult(const BatchFolder& folder, unsigned int number)
{
    const std::optional<std::string> text = folder.ReadResult(number);
    if (!text)
    {
        return std::nullopt;
    }
    try
    {
        return ParseResult(*text,
                           folder.NameOf(std::string(BatchNames::kResults) + "/" + BatchFileName(number)));
    }
    catch (JobException& exception)
    {
        const std::string* const reason = boost::get_error_info<TagDescription>(exception);
        exception << TagDescription((reason == nullptr ? "" : *reason) + kAdvice);
        throw;
    }
}

BatchStatus ReadBatchStatus(const BatchFolder& folder, const Batch& batch)
{
    BatchStatus status;
    status.jobs.reserve(batch.jobs.size());
    double seconds = 0;
    double media = 0;
    for (const BatchJob& job : batch.jobs)
    {
        BatchJobStatus one;
        if (job.IsPlanned())
        {
            one.result = ReadBatchResult(folder, job.number);
        }
        one.state =
            StateOf(batch, job, one.result, [&folder, &job] { return folder.IsJobLocked(job.number); });
        if (one.state == BatchJobState::Done)
        {
            AddCapped(status.mediaDone, one.result->duration.value_or(0));
            if (one.result->Speed() > 0)
            {
                media += static_cast<double>(*one.result->duration);
                seconds += static_cast<double>(one.result->elapsed);
            }
        }
        else if (job.IsPlanned())
        {
            AddCapped(status.mediaLeft, job.duration.value_or(0));
        }
        status.jobs.push_back(std::move(one));
    }
    status.speed = seconds > 0 ? media / seconds : 0;
    return status;
}

BatchStatus ReadBatchStatus(const Batch& batch) { return ReadBatchStatus(BatchFolder(batch.folder), batch); }

std::vector<unsigned int> ChooseJobs(const std::vector<BatchJobState>& states, const BatchChoice& choice)
{
    std::vector<unsigned int> chosen;
    unsigned int number = 0;
    for (const BatchJobState state : states)
    {
        ++number;
        const bool isOpen = state == BatchJobState::Waiting || state == BatchJobState::Failed ||
                            state == BatchJobState::Cancelled || state == BatchJobState::Interrupted;
        if (isOpen || (state == BatchJobState::Missing && choice.missing) ||
            (state == BatchJobState::Changed && choice.changed))
        {
            chosen.push_back(number);
        }
    }
    return chosen;
}

} // namespace Zelnor::Media
