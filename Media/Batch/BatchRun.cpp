#include "Media/Batch/BatchRun.h"

#include "Media/Batch/BatchFolder.h"
#include "Media/Batch/BatchJobRun.h"
#include "Media/Batch/BatchRecord.h"
#include "Media/Batch/BatchStatusOf.h"
#include "Media/Batch/Workers.h"
#include "Media/MediaException.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <mutex>
#include <vector>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Batch/BatchRun";

/// \param part  0 to 1; the largest durations have no `double` of their own
std::int64_t PartOf(std::int64_t duration, double part)
{
    const auto whole = static_cast<double>(duration);
    const double made = std::max(0.0, part) * whole;
    return made < whole ? static_cast<std::int64_t>(made) : duration;
}

/// Runs the chosen jobs in several threads.
class BatchRunner
{
public:
    BatchRunner(const BatchFolder& folder, const Batch& batch, const BatchRunOptions& options)
        : m_folder(folder), m_batch(batch), m_options(options)
    {
        const BatchStatus status = ReadBatchStatus(folder, batch);
        std::vector<BatchJobState> states;
        for (const BatchJobStatus& job : status.jobs)
        {
            states.push_back(job.state);
        }
        m_numbers = ChooseJobs(states, options.choice);
        m_progress.count = batch.jobs.size() - status.CountOf(BatchJobState::Refused);
        m_progress.done = status.CountOf(BatchJobState::Done);
        m_mediaBefore = status.mediaDone;
        for (const unsigned int number : m_numbers)
        {
            AddCapped(m_mediaOfAll, batch.JobOf(number).duration.value_or(0));
        }
    }

    void Run()
    {
        const std::size_t most = std::max<std::size_t>(1, m_numbers.size());
        const auto count = static_cast<unsigned int>(std::min<std::size_t>(m_options.parallel, most));
        RunWorkers(std::max(1U, count), [this] { return RunNext(); });
    }

private:
    bool RunNext()
    {
        const std::optional<unsigned int> number = Begin();
        if (!number)
        {
            return false;
        }
        const BatchJob& job = m_batch.JobOf(*number);
        BatchJobHooks hooks;
        hooks.onProgress = [this, &job](const RunProgress& progress) { Report(job, progress); };
        Descriptor lock;
        BatchResult result;
        try
        {
            lock = m_folder.LockJob(job.number);
            result = RunOneBatchJob(m_folder, m_batch, job, m_options, hooks);
        }
        catch (...)
        {
            End(job, nullptr);
            throw;
        }
        // What a callback throws here comes from a job that has ended already.
        End(job, &result);
        return true;
    }

    /// \returns nothing when no job is to be begun
    std::optional<unsigned int> Begin()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_next == m_numbers.size() || m_options.job.cancel.IsCancelled() ||
            (m_options.failFast && m_progress.failed > 0))
        {
            return std::nullopt;
        }
        ++m_progress.running;
        return m_numbers[m_next++];
    }

    void Report(const BatchJob& job, const RunProgress& progress)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const std::int64_t duration = job.duration.value_or(0);
        m_running[job.number] = progress.isVerifying ? duration : PartOf(duration, progress.part.value_or(0));
        Tell();
    }

    /// \param result  null when there is none
    void End(const BatchJob& job, const BatchResult* result)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_running.erase(job.number);
        --m_progress.running;
        if (result == nullptr)
        {
            return;
        }
        if (result->state == BatchResult::State::Done)
        {
            ++m_progress.done;
            AddCapped(m_mediaMade, job.duration.value_or(0));
        }
        if (result->state == BatchResult::State::Failed)
        {
            ++m_progress.failed;
            m_mediaOfAll = std::max<std::int64_t>(0, m_mediaOfAll - job.duration.value_or(0));
        }
        if (m_options.onJobEnd)
        {
            m_options.onJobEnd(job, *result);
        }
        Tell();
    }

    void Tell()
    {
        if (!m_options.onProgress)
        {
            return;
        }
        std::int64_t made = m_mediaMade;
        for (const auto& [number, media] : m_running)
        {
            AddCapped(made, media);
        }
        m_progress.mediaDone = m_mediaBefore;
        AddCapped(m_progress.mediaDone, made);
        m_progress.mediaLeft = std::max<std::int64_t>(0, m_mediaOfAll - made);
        const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - m_begin;
        m_progress.speed = static_cast<double>(made) / std::max(1.0, elapsed.count());
        m_options.onProgress(m_progress);
    }

    const BatchFolder& m_folder;
    const Batch& m_batch;
    const BatchRunOptions& m_options;
    std::vector<unsigned int> m_numbers;
    std::mutex m_mutex; ///< of all that follows
    std::size_t m_next = 0;
    BatchProgress m_progress;
    std::map<unsigned int, std::int64_t> m_running; ///< how much each job has made
    std::int64_t m_mediaBefore = 0;                 ///< that was made by earlier runs
    std::int64_t m_mediaMade = 0;                   ///< by the jobs that have ended
    std::int64_t m_mediaOfAll = 0;                  ///< by all jobs of this run that have not failed
    std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
};

} // namespace

BatchStatus RunBatch(const std::string& name, const BatchRunOptions& options)
{
    const BatchFolder folder(name);
    const Batch batch = ReadBatch(folder);
    const Descriptor lock = folder.Lock(BatchFolder::LockKind::Exclusive);
    BatchRunner(folder, batch, options).Run();
    return ReadBatchStatus(folder, batch);
}

BatchResult RunBatchJob(const std::string& name, unsigned int number, const BatchRunOptions& options)
{
    const BatchFolder folder(name);
    const Batch batch = ReadBatch(folder);
    const BatchJob& job = batch.JobOf(number);
    if (!job.IsPlanned())
    {
        ZELNOR_THROW(kUnit, MakeError<JobException>(Place{folder.GetName()},
                                                    "job " + std::to_string(number) +
                                                        " could not be planned: " + job.refusal));
    }
    const Descriptor lock = folder.Lock(BatchFolder::LockKind::Shared);
    const Descriptor jobLock = folder.LockJob(number);
    BatchResult result = RunOneBatchJob(folder, batch, job, options, {});
    if (options.onJobEnd)
    {
        options.onJobEnd(job, result);
    }
    return result;
}

} // namespace Zelnor::Media
