#pragma once

#include "Media/Batch/SlurmRun.h"
#include "Tools/zconf/Commands/BatchText.h"

#include <string>

/// \file
/// Batches that Slurm runs.

namespace Zelnor::Tool
{

/// Gives Slurm the jobs of a batch that are not done.
/// \param wait  until Slurm has finished them; a signal cancels them
/// \param json  whether to write how the batch stands then
/// \returns the exit code
int RunBatchOnSlurm(const Media::Batch& batch, const Media::SlurmOptions& options, bool wait, bool json);

/// What Slurm knows of each job; when it cannot be asked, a message says so.
SlurmTasks AskSlurmOf(const Media::Batch& batch);

/// The program that runs now, for tasks on other machines.
std::string OwnProgram();

} // namespace Zelnor::Tool
