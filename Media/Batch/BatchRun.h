#pragma once

#include "Media/Batch/Batch.h"
#include "Media/Batch/BatchResult.h"
#include "Media/Batch/BatchStatus.h"
#include "Media/Running/JobRun.h"

#include "Core/Interfaces/Export.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

/// \file
/// Running a batch, as often as it takes:
///
///     BatchRunOptions options;
///     options.parallel = 2;
///     const BatchStatus status = RunBatch("films", options);

namespace Zelnor::Media
{

/// How far the run of a batch is.
struct BatchProgress
{
    std::size_t count = 0;      ///< jobs that could be planned
    std::size_t done = 0;       ///< in this run or an earlier one
    std::size_t failed = 0;     ///< in this run
    std::size_t running = 0;    ///< at the moment
    std::int64_t mediaDone = 0; ///< microseconds of media that are made, in all runs
    std::int64_t mediaLeft = 0; ///< microseconds that this run has still to make, as far as they are known
    double speed =
        0; ///< of all jobs together since the run began, 2: twice as fast as it plays; 0: not known
};

/// How a batch is run.
struct BatchRunOptions
{
    /// How each job is run; cancelling `job.cancel` stops all. The callbacks and `document` are not used.
    RunOptions job = {};
    /// Jobs that run at once, at least 1. Most encoders of video use several processors themselves.
    unsigned int parallel = 1;
    /// How often a job that failed is tried again. One that cannot be run as it is is not.
    unsigned int retries = 0;
    /// Whether no job is begun after one has failed; those that run are finished.
    bool failFast = false;
    BatchChoice choice = {};
    /// Called about twice a second for each job that runs, by several threads but never at once, nor together
    /// with `onJobEnd`.
    std::function<void(const BatchProgress&)> onProgress = {};
    /// Called when a job has ended, with what is written of it.
    std::function<void(const BatchJob&, const BatchResult&)> onJobEnd = {};
};

/// Runs the jobs of a batch that `ChooseJobs` chooses, each as `RunJob` runs it, and returns how the batch
/// stands when all have ended or the run is cancelled. A job that fails does not stop the others. Each result
/// is in its file before the next job begins, and each file is replaced as a whole.
///
/// A run may be killed at any moment: the next one goes on. An output that was put in place right before is
/// verified and counts as done; it is not made twice.
///
/// \throw JobException when the batch or a result cannot be read
/// \throw RunException "films is being run by another process", and when a result cannot be written
ZELNOR_API BatchStatus RunBatch(const std::string& folder, const BatchRunOptions& options = {});

/// Runs one job of a batch and writes its result; one that is done is left as it is. Several processes, also
/// of several machines with a common file system that knows locks, may run different jobs of a batch in this
/// way, though not while `RunBatch` runs it.
/// \returns what is written of it
/// \throw JobException when the batch cannot be read, or does not have such a job, or the job was refused
/// \throw RunException "films/jobs/000003.json is being run by another process", and when the result cannot
///        be written
ZELNOR_API BatchResult RunBatchJob(const std::string& folder, unsigned int number,
                                   const BatchRunOptions& options = {});

} // namespace Zelnor::Media
