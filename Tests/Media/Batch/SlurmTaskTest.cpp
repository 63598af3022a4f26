#include "Media/Batch/SlurmTask.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor::Media;
using testing::ElementsAre;

TEST(SlurmTask, HasNamesForScripts)
{
    std::vector<std::string> names;
    for (int state = 0; state <= static_cast<int>(SlurmState::Unknown); ++state)
    {
        names.push_back(NameOf(static_cast<SlurmState>(state)));
    }
    EXPECT_THAT(names, ElementsAre("queued", "held", "requeued", "running", "ended", "failed", "cancelled",
                                   "timed-out", "out-of-memory", "lost", "unknown"));
}

TEST(SlurmTask, IsPendingWhileItMayStillRun)
{
    std::vector<std::string> pending;
    for (int state = 0; state <= static_cast<int>(SlurmState::Unknown); ++state)
    {
        if (IsPending(static_cast<SlurmState>(state)))
        {
            pending.push_back(NameOf(static_cast<SlurmState>(state)));
        }
    }
    EXPECT_THAT(pending, ElementsAre("queued", "held", "requeued", "running"));
}

} // namespace
