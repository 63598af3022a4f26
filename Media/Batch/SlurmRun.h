#pragma once

#include "Media/Batch/Batch.h"
#include "Media/Batch/BatchStatus.h"
#include "Media/Batch/SlurmTask.h"

#include "Core/Interfaces/Export.h"

#include <optional>
#include <string>
#include <vector>

/// \file
/// Running a batch on a cluster. Slurm schedules; each task of its array of jobs runs one job of the batch
/// and writes its result into the batch's folder, which all nodes see under the same name:
///
///     SlurmOptions options;
///     options.command = {"/usr/bin/zconf", "batch", "run", "/films/batch"};
///     options.sbatch = {"--partition=long"};
///     SubmitBatch(batch, options);
///
/// What was submitted is kept in the batch's folder, with what the tasks print:
///
///     films/slurm/arrays.json, films/slurm/1234_17.log

namespace Zelnor::Media
{

/// How a batch is given to Slurm.
struct SlurmOptions
{
    /// What a task runs; "--only" and the job's number are added. Nodes must find the program.
    std::vector<std::string> command = {};
    /// More options for `sbatch`, one a word: "--partition=long". Those that this library sets are refused.
    std::vector<std::string> sbatch = {};
    unsigned int parallel = 0; ///< jobs of an array that run at once; 0: as many as the cluster lets
    BatchChoice choice = {};
};

/// Jobs that were given to Slurm.
struct SlurmSubmission
{
    std::vector<long long> arrays = {};       ///< Slurm's numbers of the new arrays
    std::vector<unsigned int> submitted = {}; ///< the jobs in them
    std::vector<unsigned int> pending = {};   ///< jobs that Slurm had already, and has not finished
};

/// Submits the jobs that `ChooseJobs` chooses and that Slurm does not have yet, as one array, or as several
/// where the cluster allows only smaller ones. A task that Slurm holds since a node could not start it is
/// cancelled and submitted again. Several processes may do this at once; each job is submitted once.
/// \throw RunException when Slurm's programs are missing or refuse: "sbatch: error: invalid partition ..."
/// \throw JobException when the batch's results or its record of arrays cannot be read
ZELNOR_API SlurmSubmission SubmitBatch(const Batch& batch, const SlurmOptions& options);

/// What Slurm knows of the last task of each job, in the batch's order; nothing for jobs that it was never
/// given. What its queue has forgotten is asked of its accounts, where they are kept.
/// \throw RunException, JobException as `SubmitBatch`
ZELNOR_API std::vector<std::optional<SlurmTask>> AskSlurm(const Batch& batch);

/// Cancels all tasks of the batch that Slurm has not finished.
/// \throw RunException, JobException as `SubmitBatch`
ZELNOR_API void CancelSlurm(const Batch& batch);

} // namespace Zelnor::Media
