#pragma once

#include "Core/Interfaces/Export.h"

#include <string>

namespace Zelnor::Media
{

/// How a task stands that Slurm was given.
enum class SlurmState
{
    Queued,      ///< waits for a node
    Held,        ///< waits until somebody releases it
    Requeued,    ///< was stopped by the cluster and waits for its next turn
    Running,     ///< on a node
    Ended,       ///< by itself, with success
    Failed,      ///< by itself, without success
    Cancelled,   ///< by somebody
    TimedOut,    ///< beyond its time limit
    OutOfMemory, ///< beyond its memory
    Lost,        ///< its node went down, or could not start it
    Unknown,     ///< Slurm does not know it, or not any more
};

/// "timed-out", for scripts.
ZELNOR_API std::string NameOf(SlurmState state);

/// Whether the task runs, or will run without anybody's help but a release.
ZELNOR_API bool IsPending(SlurmState state);

/// A task of an array of Slurm.
struct SlurmTask
{
    long long array = 0;   ///< Slurm's number of the array
    long long index = 0;   ///< of the task in it
    std::string name = {}; ///< Slurm's name of the array; empty when it does not know the task
    SlurmState state = SlurmState::Unknown; ///< how it stands
    long long restarts = 0;                 ///< how often the cluster began it again
    std::string node = {};                  ///< empty while it has none
    std::string reason = {}; ///< Slurm's own word why it waits or ended; empty when there is none
};

} // namespace Zelnor::Media
