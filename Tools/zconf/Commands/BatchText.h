#pragma once

#include "Media/Batch/BatchRun.h"
#include "Media/Batch/BatchStatus.h"
#include "Media/Batch/BatchTexts.h"
#include "Media/Batch/SlurmTask.h"

#include <CLI/CLI.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// \file
/// What the commands about batches share.

namespace Zelnor::Tool
{

/// Of each job of a batch, in its order; empty when Slurm does not have any.
using SlurmTasks = std::vector<std::optional<Media::SlurmTask>>;

/// Adds the argument BATCH, whose value is kept in `name`.
void AddBatchArgument(CLI::App& command, std::string& name);

/// "[####----] planning 3 of 12 inputs"
std::string PlanProgressText(std::size_t done, std::size_t count);

/// "[####----] 3 of 12 done, 1 failed, 2 running  0:01:00 made, 0:03:00 left  4.1x  0:00:44 to go"
std::string BatchProgressText(const Media::BatchProgress& progress);

using Media::BatchSummaryText;

/// "job 3 ('in/c.mkv', preset 'mp3'): ffmpeg failed to ..."
std::string BatchFailureText(const Media::BatchJob& job, const std::string& reason);

/// Writes how the batch stands as JSON to standard output, with every job.
/// \param tasks  what Slurm knows of each job
void WriteBatchJson(const Media::Batch& batch, const Media::BatchStatus& status,
                    const SlurmTasks& tasks = {});

} // namespace Zelnor::Tool
