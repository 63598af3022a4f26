#include "Media/Batch/SlurmRun.h"

#include "Media/Batch/SlurmFolder.h"
#include "Media/Batch/SlurmPrograms.h"
#include "Media/MediaException.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <random>
#include <utility>

namespace Zelnor::Media
{

namespace
{

/// Of what nobody else has, so that the array is found by it.
std::string MakeArrayName()
{
    constexpr std::size_t kDigits = 12;
    constexpr const char* kHexDigits = "0123456789abcdef";
    std::random_device random;
    std::string name = "zelnor-";
    for (std::size_t i = 0; i < kDigits; ++i)
    {
        name += kHexDigits[random() % 16];
    }
    return name;
}

/// Asks for the arrays that were submitted by processes which ended before they had written the number down,
/// and drops those that never reached Slurm.
void FindNumbers(std::vector<SlurmArray>& arrays)
{
    for (SlurmArray& array : arrays)
    {
        if (array.id == 0)
        {
            array.id = FindArray(array.name);
        }
    }
    arrays.erase(
        std::remove_if(arrays.begin(), arrays.end(), [](const SlurmArray& array) { return array.id == 0; }),
        arrays.end());
}

/// What Slurm knows of the tasks, by array and index.
class KnownTasks
{
public:
    explicit KnownTasks(const std::vector<SlurmArray>& arrays)
    {
        std::vector<long long> ids;
        for (const SlurmArray& array : arrays)
        {
            ids.push_back(array.id);
        }
        for (SlurmTask& task : AskTasks(ids))
        {
            const std::pair key(task.array, task.index);
            m_tasks.emplace(key, std::move(task));
        }
    }

    SlurmTask Of(const SlurmArray& array, long long index) const
    {
        const auto found = m_tasks.find({array.id, index});
        // The number may be that of somebody else's array: a cluster that was set up anew counts from 1
        // again.
        return found == m_tasks.end() || found->second.name != array.name ? SlurmTask{array.id, index}
                                                                          : found->second;
    }

private:
    std::map<std::pair<long long, long long>, SlurmTask> m_tasks;
};

std::vector<std::optional<SlurmTask>> TasksOf(const Batch& batch, const SlurmFolder& folder,
                                              const std::vector<SlurmArray>& arrays)
{
    const KnownTasks known(arrays);
    std::vector<std::optional<SlurmTask>> tasks(batch.jobs.size());
    const std::vector<std::optional<TaskPlace>> last = LastTasks(batch.jobs.size(), arrays);
    for (std::size_t i = 0; i < tasks.size(); ++i)
    {
        if (!last[i])
        {
            continue;
        }
        const SlurmArray& array = arrays[last[i]->first];
        tasks[i] = known.Of(array, last[i]->second);
        // The queue forgets a task at once when it is cancelled before it has begun.
        if (tasks[i]->state == SlurmState::Unknown && !folder.HasLog(array, last[i]->second))
        {
            tasks[i]->state = SlurmState::Cancelled;
        }
    }
    return tasks;
}

std::string TextOf(const SlurmTask& task)
{
    return std::to_string(task.array) + "_" + std::to_string(task.index);
}

std::vector<unsigned int> JobsToRun(const Batch& batch, const BatchChoice& choice)
{
    std::vector<BatchJobState> states;
    for (const BatchJobStatus& job : ReadBatchStatus(batch).jobs)
    {
        states.push_back(job.state);
    }
    return ChooseJobs(states, choice);
}

/// Cancels what waits in the queue and will never run by itself.
void CancelStuck(const std::vector<std::optional<SlurmTask>>& tasks)
{
    std::vector<std::string> stuck;
    for (const std::optional<SlurmTask>& task : tasks)
    {
        if (task && task->state == SlurmState::Lost)
        {
            stuck.push_back(TextOf(*task));
        }
    }
    CancelTasks(stuck);
}

/// Submits the arrays one by one, each written down before and after.
void Submit(const Batch& batch, const SlurmFolder& folder, std::vector<SlurmArray> arrays,
            std::vector<SlurmArray> fresh, const SlurmOptions& options, SlurmSubmission& submission)
{
    ArrayRequest request;
    request.folder = batch.base;
    request.log = kSlurmLog;
    request.options = options.sbatch;
    request.parallel = options.parallel;
    request.script = folder.WriteScript();
    for (SlurmArray& array : fresh)
    {
        array.name = MakeArrayName();
        arrays.push_back(array);
        folder.Write(arrays);
        request.name = array.name;
        request.indices = array.indices;
        request.arguments = {std::to_string(array.offset)};
        request.arguments.insert(request.arguments.end(), options.command.begin(), options.command.end());
        arrays.back().id = SubmitArray(request);
        folder.Write(arrays);
        submission.arrays.push_back(arrays.back().id);
    }
}

} // namespace

SlurmSubmission SubmitBatch(const Batch& batch, const SlurmOptions& options)
{
    CheckOptions(options.sbatch);
    const SlurmFolder folder(batch);
    const Descriptor lock = folder.Lock();
    std::vector<SlurmArray> arrays = folder.Read();
    FindNumbers(arrays);

    const std::vector<std::optional<SlurmTask>> tasks = TasksOf(batch, folder, arrays);
    SlurmSubmission submission;
    for (const unsigned int job : JobsToRun(batch, options.choice))
    {
        const std::optional<SlurmTask>& task = tasks[job - 1];
        (task && IsPending(task->state) ? submission.pending : submission.submitted).push_back(job);
    }
    CancelStuck(tasks);
    Submit(batch, folder, std::move(arrays), SplitIntoArrays(submission.submitted, AskArrayLimit()), options,
           submission);
    return submission;
}

std::vector<std::optional<SlurmTask>> AskSlurm(const Batch& batch)
{
    if (!HasSlurmFolder(batch))
    {
        return std::vector<std::optional<SlurmTask>>(batch.jobs.size());
    }
    const SlurmFolder folder(batch);
    std::vector<SlurmArray> arrays = folder.Read();
    FindNumbers(arrays);
    return TasksOf(batch, folder, arrays);
}

void CancelSlurm(const Batch& batch)
{
    std::vector<std::string> tasks;
    for (const std::optional<SlurmTask>& task : AskSlurm(batch))
    {
        if (task && IsPending(task->state))
        {
            tasks.push_back(TextOf(*task));
        }
    }
    CancelTasks(tasks);
}

} // namespace Zelnor::Media
