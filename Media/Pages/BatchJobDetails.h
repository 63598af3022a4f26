#pragma once

// Private to the library, not installed.

#include "Media/Batch/Batch.h"
#include "Media/Batch/BatchStatus.h"
#include "Media/Batch/SlurmTask.h"

#include <string>

namespace Zelnor::Media
{

/// All that there is to say of one job of a batch. Refers to what it was made of.
struct BatchJobDetails
{
    const BatchJob& job;
    const BatchJobStatus& status;
    const SlurmTask* task; ///< null: Slurm does not have it

    /// Whether somebody has to see to it.
    bool IsBad() const;
    /// Whether it is neither done nor waiting.
    bool IsOpen() const;
    /// Whether there is more to say than a row of a table does.
    bool HasMore() const;
    std::string Anchor() const { return "details-" + std::to_string(job.number); }
};

/// A section with the reason, ffmpeg's last lines, the notes, and how to look further.
std::string DetailsHtml(const BatchJobDetails& details);

} // namespace Zelnor::Media
