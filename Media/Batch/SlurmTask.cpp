#include "Media/Batch/SlurmTask.h"

namespace Zelnor::Media
{

std::string NameOf(SlurmState state)
{
    switch (state)
    {
    case SlurmState::Queued:
        return "queued";
    case SlurmState::Held:
        return "held";
    case SlurmState::Requeued:
        return "requeued";
    case SlurmState::Running:
        return "running";
    case SlurmState::Ended:
        return "ended";
    case SlurmState::Failed:
        return "failed";
    case SlurmState::Cancelled:
        return "cancelled";
    case SlurmState::TimedOut:
        return "timed-out";
    case SlurmState::OutOfMemory:
        return "out-of-memory";
    case SlurmState::Lost:
        return "lost";
    case SlurmState::Unknown:
        return "unknown";
    }
    return "unknown";
}

bool IsPending(SlurmState state)
{
    return state == SlurmState::Queued || state == SlurmState::Held || state == SlurmState::Requeued ||
           state == SlurmState::Running;
}

} // namespace Zelnor::Media
