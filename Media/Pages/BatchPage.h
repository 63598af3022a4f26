#pragma once

#include "Media/Batch/Batch.h"
#include "Media/Batch/BatchStatus.h"
#include "Media/Batch/SlurmTask.h"

#include "Core/Interfaces/Export.h"

#include <optional>
#include <string>
#include <vector>

/// \file
/// The report of a batch:
///
///     const Media::Batch batch = Media::ReadBatch("films");
///     const std::string html = Media::MakeBatchPage(batch, Media::ReadBatchStatus(batch));

namespace Zelnor::Media
{

/// A batch as one HTML page for people: a summary, all jobs in a table that can be sorted and filtered, and
/// for each that is not done the reason, ffmpeg's last lines and the command to look further. The page loads
/// nothing, is read without its script, too, and is the same each time for the same status. Texts of the
/// batch are shown as texts, whatever they hold. Opens no file.
/// \param status  as `ReadBatchStatus` tells it
/// \param tasks   what `AskSlurm` knows of each job; empty when Slurm does not have any
/// \throw JobException when the status or the tasks are not of as many jobs as the batch has: "films:
/// expected
///        12 jobs in the status, found 3"
ZELNOR_API std::string MakeBatchPage(const Batch& batch, const BatchStatus& status,
                                     const std::vector<std::optional<SlurmTask>>& tasks = {});

} // namespace Zelnor::Media
