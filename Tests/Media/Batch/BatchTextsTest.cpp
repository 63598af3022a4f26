#include "Media/Batch/BatchTexts.h"

#include <gtest/gtest.h>

namespace
{

using namespace Zelnor::Media;

TEST(BatchTexts, SummarizeTheStatesThatJobsHave)
{
    BatchStatus status;
    EXPECT_EQ(BatchSummaryText(status), "0 jobs:");
    status.jobs.push_back({BatchJobState::Refused});
    EXPECT_EQ(BatchSummaryText(status), "1 job: 1 refused");
    status.jobs.push_back({BatchJobState::Waiting});
    status.jobs.push_back({BatchJobState::Done});
    status.jobs.push_back({BatchJobState::Waiting});
    EXPECT_EQ(BatchSummaryText(status), "4 jobs: 1 done, 2 waiting, 1 refused");
}

TEST(BatchTexts, TellOfATaskWhereItRunsAndWhyItWaits)
{
    SlurmTask task;
    task.array = 1234;
    task.index = 17;
    task.state = SlurmState::Ended;
    EXPECT_EQ(SlurmTaskText(task), "Slurm 1234_17: ended");
    task.state = SlurmState::Running;
    task.node = "node3";
    EXPECT_EQ(SlurmTaskText(task), "Slurm 1234_17: running on node3");
    task.state = SlurmState::Queued;
    task.node = "";
    task.reason = "Resources";
    EXPECT_EQ(SlurmTaskText(task), "Slurm 1234_17: queued (Resources)");
}

} // namespace
