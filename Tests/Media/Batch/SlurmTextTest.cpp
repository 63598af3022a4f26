#include "Media/Batch/SlurmText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Zelnor::Media
{
namespace
{

using Indices = IndexRanges;

SlurmState StateInQueue(const std::string& state, const std::string& restarts = "0",
                        const std::string& reason = "None")
{
    const std::vector<SlurmTask> tasks =
        ReadQueue("7|3|zelnor-1|" + state + "|" + restarts + "||" + reason + "|\n");
    return tasks.size() == 1 ? tasks.front().state : SlurmState::Unknown;
}

} // namespace

TEST(SlurmIndices, ThatFollowEachOtherAreOneRange)
{
    Indices indices;
    for (const long long index : {1, 2, 3, 7, 9, 10})
    {
        AddIndex(index, indices);
    }
    EXPECT_EQ(WriteIndices(indices), "1-3,7,9-10");
    EXPECT_EQ(ReadIndices("1,2-3", 3), (Indices{{1, 3}}));
}

TEST(SlurmIndices, OfNothingAreEmpty) { EXPECT_EQ(WriteIndices({}), ""); }

TEST(SlurmIndices, AreReadAsTheyAreWritten)
{
    EXPECT_EQ(ReadIndices("1-3,7,9-10", 6), (Indices{{1, 3}, {7, 7}, {9, 10}}));
}

TEST(SlurmIndices, ThatDoNotAscendAreRefused)
{
    EXPECT_EQ(ReadIndices("3,2", 10), std::nullopt);
    EXPECT_EQ(ReadIndices("1-3,3", 10), std::nullopt);
    EXPECT_EQ(ReadIndices("4-2", 10), std::nullopt);
}

TEST(SlurmIndices, BeyondTheMostAreRefusedBeforeTheyTakeMemory)
{
    EXPECT_EQ(ReadIndices("1-4", 3), std::nullopt);
    EXPECT_EQ(ReadIndices("1-3,4", 3), std::nullopt);
    EXPECT_EQ(ReadIndices("0-9223372036854775807", 1000), std::nullopt);
}

TEST(SlurmIndices, OfOtherTextAreRefused)
{
    for (const char* const text :
         {"", "a", "1,", ",1", "1-", "-1", "1-2-3", "1:2", "1%4", " 1", "99999999999999999999"})
    {
        EXPECT_EQ(ReadIndices(text, 1000), std::nullopt) << text;
    }
}

TEST(SlurmQueue, TellsWhereATaskRuns)
{
    const std::vector<SlurmTask> tasks = ReadQueue("1234|17|zelnor-1|RUNNING|2|node3|None|\n");

    ASSERT_EQ(tasks.size(), 1U);
    EXPECT_EQ(tasks[0].array, 1234);
    EXPECT_EQ(tasks[0].index, 17);
    EXPECT_EQ(tasks[0].name, "zelnor-1");
    EXPECT_EQ(tasks[0].state, SlurmState::Running);
    EXPECT_EQ(tasks[0].restarts, 2);
    EXPECT_EQ(tasks[0].node, "node3");
    EXPECT_EQ(tasks[0].reason, "");
}

TEST(SlurmQueue, TellsWhyATaskWaits)
{
    const std::vector<SlurmTask> tasks = ReadQueue("7|3|zelnor-1|PENDING|0||Resources|\n");

    ASSERT_EQ(tasks.size(), 1U);
    EXPECT_EQ(tasks[0].state, SlurmState::Queued);
    EXPECT_EQ(tasks[0].reason, "Resources");
}

TEST(SlurmQueue, OfATaskThatTheClusterStoppedIsRequeued)
{
    EXPECT_EQ(StateInQueue("PENDING", "1", "BeginTime"), SlurmState::Requeued);
    EXPECT_EQ(StateInQueue("REQUEUED", "1"), SlurmState::Requeued);
}

TEST(SlurmQueue, OfATaskThatSomebodyHoldsIsHeld)
{
    EXPECT_EQ(StateInQueue("PENDING", "0", "JobHeldUser"), SlurmState::Held);
    EXPECT_EQ(StateInQueue("PENDING", "0", "JobHeldAdmin"), SlurmState::Held);
    EXPECT_EQ(StateInQueue("REQUEUE_HOLD", "1"), SlurmState::Held);
    EXPECT_EQ(StateInQueue("PENDING", "1", "job requeued in held state"), SlurmState::Held);
    EXPECT_EQ(StateInQueue("PENDING", "1", "JobHoldMaxRequeue"), SlurmState::Held);
}

TEST(SlurmQueue, OfATaskThatANodeCouldNotStartIsLost)
{
    EXPECT_EQ(StateInQueue("PENDING", "1", "launch failed requeued held"), SlurmState::Lost);
    EXPECT_EQ(StateInQueue("PENDING", "0", "launching soon"), SlurmState::Queued);
}

TEST(SlurmQueue, TellsHowATaskEnded)
{
    EXPECT_EQ(StateInQueue("COMPLETED"), SlurmState::Ended);
    EXPECT_EQ(StateInQueue("FAILED"), SlurmState::Failed);
    EXPECT_EQ(StateInQueue("CANCELLED"), SlurmState::Cancelled);
    EXPECT_EQ(StateInQueue("TIMEOUT"), SlurmState::TimedOut);
    EXPECT_EQ(StateInQueue("DEADLINE"), SlurmState::TimedOut);
    EXPECT_EQ(StateInQueue("OUT_OF_MEMORY"), SlurmState::OutOfMemory);
    EXPECT_EQ(StateInQueue("NODE_FAIL"), SlurmState::Lost);
    EXPECT_EQ(StateInQueue("BOOT_FAIL"), SlurmState::Lost);
    EXPECT_EQ(StateInQueue("PREEMPTED"), SlurmState::Lost);
}

TEST(SlurmQueue, OfWordsThatAreNewIsUnknown) { EXPECT_EQ(StateInQueue("LEVITATING"), SlurmState::Unknown); }

TEST(SlurmQueue, LeavesOutWhatIsNotATask)
{
    EXPECT_TRUE(ReadQueue("").empty());
    EXPECT_TRUE(ReadQueue("\n\n").empty());
    EXPECT_TRUE(ReadQueue("1234|N/A|zelnor-1|RUNNING|0|node1|None|\n").empty());
    EXPECT_TRUE(ReadQueue("1234|[1-4]|zelnor-1|PENDING|0||None|\n").empty());
    EXPECT_TRUE(ReadQueue("squeue: error: nothing").empty());
    EXPECT_TRUE(ReadQueue("1234|-1|zelnor-1|RUNNING|0|node1|None|\n").empty());
}

TEST(SlurmQueue, ThatIsCutOffIsReadAsFarAsItGoes)
{
    const std::vector<SlurmTask> tasks = ReadQueue("1|2|zelnor-1|RUNNING");

    ASSERT_EQ(tasks.size(), 1U);
    EXPECT_EQ(tasks[0].state, SlurmState::Running);
}

TEST(SlurmAccounts, TellWhoCancelledInTheSameWord)
{
    const std::vector<SlurmTask> tasks = ReadAccounts("1234_17|zelnor-1|CANCELLED by 1000|node1|None\n");

    ASSERT_EQ(tasks.size(), 1U);
    EXPECT_EQ(tasks[0].array, 1234);
    EXPECT_EQ(tasks[0].index, 17);
    EXPECT_EQ(tasks[0].state, SlurmState::Cancelled);
    EXPECT_EQ(tasks[0].node, "node1");
}

TEST(SlurmAccounts, HaveWordsForNothing)
{
    for (const std::string nothing : {"", "None", "None assigned", "(null)"})
    {
        const std::vector<SlurmTask> tasks =
            ReadAccounts("7_3|zelnor-1|FAILED|" + nothing + "|" + nothing + "\n");

        ASSERT_EQ(tasks.size(), 1U);
        EXPECT_EQ(tasks[0].node, "");
        EXPECT_EQ(tasks[0].reason, "");
    }
}

TEST(SlurmAccounts, LeaveOutWhatIsNotATask)
{
    EXPECT_TRUE(
        ReadAccounts("\nzelnor|zelnor-1|FAILED|node1|None\nx_3|zelnor-1|FAILED|node1|None\n").empty());
}

TEST(SlurmAccounts, LeaveOutTasksThatHaveNotBegun)
{
    EXPECT_TRUE(
        ReadAccounts("1234_[18-60]|zelnor-1|PENDING|None assigned|Resources\n1234|zelnor-1|RUNNING|node1|\n")
            .empty());
}

TEST(SlurmAccounts, DoNotTellWhatWaitsOrRuns)
{
    for (const std::string state : {"PENDING", "RUNNING", "REQUEUED", "SUSPENDED"})
    {
        const std::vector<SlurmTask> tasks = ReadAccounts("1234_17|zelnor-1|" + state + "|node1|None\n");

        ASSERT_EQ(tasks.size(), 1U);
        EXPECT_EQ(tasks[0].state, SlurmState::Unknown) << state;
    }
}

TEST(SlurmSettings, AreFoundByTheirWholeName)
{
    const std::string settings = "Configuration data as of now\n"
                                 "OtherMaxArraySize       = 3\n"
                                 "MaxArraySize            = 1001\n"
                                 "MinJobAge               = 600 sec\n"
                                 "SlurmUser               = root(0)\n";

    EXPECT_EQ(ReadSetting(settings, "MaxArraySize"), 1001);
    EXPECT_EQ(ReadSetting(settings, "MinJobAge"), 600);
    EXPECT_EQ(ReadSetting(settings, "SlurmUser"), std::nullopt);
    EXPECT_EQ(ReadSetting(settings, "ArraySize"), std::nullopt);
    EXPECT_EQ(ReadSetting("MaxArraySize =   \n", "MaxArraySize"), std::nullopt);
    EXPECT_EQ(ReadSetting("MaxArraySize\n", "MaxArraySize"), std::nullopt);
}

} // namespace Zelnor::Media
