#pragma once

// Private to the library and to the tool, not installed: how people are told of a batch.

#include "Media/Batch/BatchStatus.h"
#include "Media/Batch/SlurmTask.h"
#include "Media/Text.h"

#include <cstddef>
#include <string>

namespace Zelnor::Media
{

/// All states, in the order in which people are told them.
inline constexpr BatchJobState kBatchJobStates[] = {
    BatchJobState::Done,    BatchJobState::Failed,      BatchJobState::Missing,
    BatchJobState::Changed, BatchJobState::Cancelled,   BatchJobState::Running,
    BatchJobState::Waiting, BatchJobState::Interrupted, BatchJobState::Refused};

/// "12 jobs: 8 done, 1 failed, 3 waiting"; states that no job has are left out.
inline std::string BatchSummaryText(const BatchStatus& status)
{
    std::string text = Count(status.jobs.size(), "job") + ":";
    const char* separator = " ";
    for (const BatchJobState state : kBatchJobStates)
    {
        const std::size_t count = status.CountOf(state);
        if (count > 0)
        {
            text += separator + std::to_string(count) + " " + NameOf(state);
            separator = ", ";
        }
    }
    return text;
}

/// "Slurm 1234_17: queued (Resources)"
inline std::string SlurmTaskText(const SlurmTask& task)
{
    return "Slurm " + std::to_string(task.array) + "_" + std::to_string(task.index) + ": " +
           NameOf(task.state) + (task.node.empty() ? "" : " on " + task.node) +
           (task.reason.empty() ? "" : " (" + task.reason + ")");
}

} // namespace Zelnor::Media
