#pragma once

#include "Media/Batch/Batch.h"
#include "Media/Batch/BatchResult.h"

#include "Core/Interfaces/Export.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// \file
/// How far a batch is:
///
///     const BatchStatus status = ReadBatchStatus(ReadBatch("films"));
///     std::cout << status.CountOf(BatchJobState::Done) << " of " << status.jobs.size() << " done\n";

namespace Zelnor::Media
{

/// How a job of a batch stands.
enum class BatchJobState
{
    Refused,     ///< no job could be planned
    Waiting,     ///< not run yet
    Running,     ///< by a process that lives
    Interrupted, ///< the process that ran it is gone
    Done,        ///< its output is there
    Missing,     ///< it was done, and its output is not there any more
    Changed,     ///< it was done, and its output has another size now
    Failed,
    Cancelled,
};

/// "waiting", for scripts.
ZELNOR_API std::string NameOf(BatchJobState state);

/// One job.
struct BatchJobStatus
{
    BatchJobState state = BatchJobState::Waiting; ///< now
    std::optional<BatchResult> result = {};       ///< the last one, if there is one
};

/// All jobs of a batch.
struct ZELNOR_API BatchStatus
{
    std::vector<BatchJobStatus> jobs; ///< in the batch's order
    std::int64_t mediaDone = 0;       ///< microseconds of media that are made, as far as they are known
    std::int64_t mediaLeft = 0;       ///< microseconds of the planned jobs that are not done
    double speed = 0;                 ///< of the jobs that are done, one after the other; 0: not known

    std::size_t CountOf(BatchJobState state) const; ///< how many jobs are in it
    /// Whether all jobs that could be planned are done.
    bool IsDone() const;
};

/// How the batch stands. Reads its results, and looks whether the outputs are there.
/// \throw JobException when a result cannot be read: "films/results/000003.json: state: expected ..."
ZELNOR_API BatchStatus ReadBatchStatus(const Batch& batch);

/// Which jobs a run takes.
struct BatchChoice
{
    bool missing = false; ///< also those whose output was there and is gone
    bool changed = false; ///< also those whose output has been changed; a run replaces it
};

/// The numbers of the jobs to run, in order: those that wait, failed, or were cancelled or interrupted. What
/// runs, is done, or was refused is left alone.
/// \param states  of the jobs of a batch, in its order
ZELNOR_API std::vector<unsigned int> ChooseJobs(const std::vector<BatchJobState>& states,
                                                const BatchChoice& choice = {});

} // namespace Zelnor::Media
