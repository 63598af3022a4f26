#include "Tests/Support/SlurmBatchTest.h"
#include "Tests/Support/SlurmCluster.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor::Testing;
using testing::HasSubstr;

/// On a cluster of its own.
class BatchOnSlurm : public SlurmBatchTest
{
protected:
    /// \returns whether there is one; where there cannot be, the test is over
    bool StartCluster(int largestArray = 1001)
    {
        m_cluster = std::make_unique<SlurmCluster>(largestArray, m_user);
        return m_cluster->Fault().empty();
    }
    const SlurmCluster& Cluster() const { return *m_cluster; }

    std::vector<std::string> Environment() const override { return {Cluster().Environment()}; }

    /// The indices of the tasks that run on a node.
    std::vector<std::string> TasksOn(const std::string& node) const
    {
        std::istringstream text(Cluster().Ask(
            {"squeue", "--noheader", "--array", "--states=RUNNING", "--nodelist=" + node, "--format=%K"}));
        return {std::istream_iterator<std::string>(text), {}};
    }
    bool IsQueueEmpty() const { return Cluster().Ask({"squeue", "--noheader"}).empty(); }

    using FileId = std::tuple<ino_t, time_t, long>;
    static FileId IdOf(const std::filesystem::path& file)
    {
        struct stat status = {};
        EXPECT_EQ(::stat(file.c_str(), &status), 0) << file;
        return {status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
    }
    /// The outputs that are complete.
    std::map<std::filesystem::path, FileId> Outputs() const
    {
        std::map<std::filesystem::path, FileId> outputs;
        for (const auto& file : std::filesystem::directory_iterator(Folder() / "out"))
        {
            if (file.path().extension() == ".wav")
            {
                outputs[file.path()] = IdOf(file.path());
            }
        }
        return outputs;
    }

    OtherUser m_user;

private:
    std::unique_ptr<SlurmCluster> m_cluster;
};

/// Neither the folder of the sources nor that of the build need be one which the user is let into.
class BatchOfAnotherUser : public BatchOnSlurm
{
protected:
    std::vector<std::string> Environment() const override
    {
        return {Cluster().Environment(), "LD_LIBRARY_PATH=" + Folder().string()};
    }
    std::vector<std::string> Program(std::vector<std::string> arguments) const override
    {
        arguments.insert(arguments.begin(), (Folder() / "zconf").string());
        return m_user.Run(std::move(arguments));
    }
    void CopyProgram() const
    {
        std::filesystem::copy_file(ZCONF_PROGRAM, Folder() / "zconf");
        for (const auto& file : std::filesystem::directory_iterator(ZELNOR_LIBRARY_FOLDER))
        {
            const std::string name = file.path().filename().string();
            if (name.substr(0, 9) == "libZelnor" && name.find(".so.") != std::string::npos)
            {
                std::filesystem::copy_file(file.path(), Folder() / name);
            }
        }
    }
};

#define ZELNOR_START_CLUSTER(...)                                                                            \
    if (!StartCluster(__VA_ARGS__))                                                                          \
    GTEST_SKIP() << "Slurm does not start here: " << Cluster().Fault()

TEST_F(BatchOnSlurm, IsOneArrayOfJobs)
{
    ZELNOR_START_CLUSTER();
    PlanBatch(3);

    const ProcessResult run = RunOnSlurm({"--wait"});

    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.messages, "zconf: b: 3 jobs submitted as array 1\nzconf: b: 3 jobs: 3 done\n");
    EXPECT_TRUE(Exists("out/1001.wav"));
    EXPECT_TRUE(Exists("out/1003.wav"));
    EXPECT_EQ(TaskStates(), (std::vector<std::string>{"ended", "ended", "ended"}));
}

TEST_F(BatchOnSlurm, IsNotSubmittedTwice)
{
    ZELNOR_START_CLUSTER();
    PlanBatch(2);
    RunOnSlurm();

    EXPECT_EQ(RunOnSlurm().messages, "zconf: b: no job is left to submit, 2 are in the queue already\n");

    RunOnSlurm({"--wait"});
    EXPECT_EQ(RunOnSlurm().messages, "zconf: b: no job is left to submit\n");
}

TEST_F(BatchOnSlurm, IsCutWhereTheClusterTakesSmallArraysOnly)
{
    ZELNOR_START_CLUSTER(5);
    PlanBatch(10);

    const ProcessResult run = RunOnSlurm({"--wait"});

    EXPECT_THAT(run.messages,
                testing::MatchesRegex("zconf: b: 10 jobs submitted as arrays [0-9]+, [0-9]+, [0-9]+\n"
                                      "zconf: b: 10 jobs: 10 done\n"));
}

TEST_F(BatchOnSlurm, SaysWhatSlurmRefuses)
{
    ZELNOR_START_CLUSTER();
    PlanBatch(1);

    const ProcessResult run = RunOnSlurm({"--slurm=--partition=none"});

    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.messages, HasSubstr("zconf: sbatch: error: invalid partition specified: none"));
    // The next one is not kept from it.
    EXPECT_EQ(RunOnSlurm().messages, "zconf: b: 1 job submitted as array 1\n");
}

TEST_F(BatchOnSlurm, ThatIsInterruptedCancelsItsTasks)
{
    ZELNOR_START_CLUSTER();
    PlanBatch(12);

    Write("hold", "");
    ProcessOptions options;
    options.environment = {Cluster().Environment()};

    const ProcessResult run =
        Shell("$ZCONF batch run b --engine slurm --wait --ffmpeg ./slow & "
              "until [ -e b/results/000001.json ]; do sleep 0.1; done; kill -TERM $!; wait $!",
              options);

    EXPECT_EQ(run.exitCode, 128 + SIGTERM);
    EXPECT_EQ(Cluster().Ask({"squeue", "--noheader"}), "");
    EXPECT_THAT(TaskStates(), testing::Contains("cancelled"));
    for (const auto& file : std::filesystem::directory_iterator(Folder() / "out"))
    {
        EXPECT_EQ(file.path().extension(), ".wav") << file.path();
    }
}

TEST_F(BatchOnSlurm, GoesOnWhenTheControllerIsAwayForAWhile)
{
    ZELNOR_START_CLUSTER();
    PlanBatch(2);
    Write("hold", "");
    ProcessOptions options;
    options.environment = Environment();
    options.environment.push_back("CLUSTER=" + Cluster().Command());

    const ProcessResult run =
        Shell("$ZCONF batch run b --engine slurm --wait --ffmpeg ./slow & "
              "until [ -e b/results/000002.json ]; do sleep 0.1; done; $CLUSTER stop-controller; "
              "rm hold; until [ -e out/1002.wav ]; do sleep 0.1; done; $CLUSTER start-controller; wait $!",
              options);

    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.messages, "zconf: b: 2 jobs submitted as array 1\nzconf: b: 2 jobs: 2 done\n");
}

TEST_F(BatchOfAnotherUser, IsRunLikeOneOfTheSuperuser)
{
    if (::geteuid() != 0)
    {
        GTEST_SKIP() << "All tests are run by another user.";
    }
    m_user = OtherUser("nobody");
    CopyProgram();
    ZELNOR_START_CLUSTER();
    PlanBatch(3);
    m_user.Own(Folder());

    const ProcessResult run = RunOnSlurm({"--wait"});

    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.messages, "zconf: b: 3 jobs submitted as array 1\nzconf: b: 3 jobs: 3 done\n");
    struct stat status = {};
    EXPECT_EQ(::stat((Folder() / "out/1003.wav").c_str(), &status), 0);
    EXPECT_NE(status.st_uid, 0U);
}

/// All that can happen to a cluster happens to this batch.
class LargeBatchOnSlurm : public BatchOnSlurm
{
protected:
    static constexpr std::size_t kCount = 60;
    static constexpr std::size_t kTasksOfNode = SlurmCluster::kProcessorsOfNode;

    /// While tasks run on all processors, one of them has no time left, one that waits is cancelled, one is
    /// put back into the queue and a node goes down.
    void DisturbTasks()
    {
        Write("hold", "");
        ASSERT_TRUE(WaitUntil([this] { return TasksOn("node2").size() == kTasksOfNode; }));
        ASSERT_TRUE(WaitUntil([this] { return Count(States(), "running") == 2 * kTasksOfNode; }));
        const std::vector<std::string> tasks = TasksOn("node2");
        Write("held", std::to_string(1000 + std::stoi(tasks[0])) + ".wav");
        Cluster().Ask({"scontrol", "update", "JobId=1_" + tasks[0], "TimeLimit=0"});
        Cluster().Ask({"scontrol", "update", "JobId=1_" + tasks[1], "Requeue=1"});
        Cluster().Ask({"scontrol", "requeue", "1_" + tasks[1]});
        Cluster().Ask({"scancel", "1_60"});
        Cluster().KillNode("node1");
        ASSERT_TRUE(WaitUntil([this] { return Count(TaskStates(), "requeued") == 1; }));
    }
};

TEST_F(LargeBatchOnSlurm, EndsDoneOnceWhateverHappensToTheCluster)
{
    ZELNOR_START_CLUSTER();
    PlanBatch(kCount);
    const std::vector<std::string> more = {"--slurm=--no-requeue", "--slurm=--time=10"};
    ASSERT_EQ(RunOnSlurm(more).messages, "zconf: b: 60 jobs submitted as array 1\n");
    ASSERT_TRUE(WaitUntil([this] { return CountDone() >= 4; }));
    Cluster().StopController();
    Cluster().StartController();
    ASSERT_TRUE(WaitUntil([this] { return CountDone() >= 12; }));
    ASSERT_NO_FATAL_FAILURE(DisturbTasks());
    const auto before = Outputs();
    std::filesystem::remove(Folder() / "hold");
    Cluster().StartNode("node1");
    ASSERT_TRUE(WaitUntil([this] { return IsQueueEmpty(); }));

    EXPECT_EQ(Count(TaskStates(), "cancelled"), 1U);
    EXPECT_EQ(Count(TaskStates(), "timed-out"), 1U);
    EXPECT_EQ(Count(TaskStates(), "lost"), kTasksOfNode);
    EXPECT_EQ(Count(TaskStates(), "ended"), kCount - kTasksOfNode - 2);
    EXPECT_EQ(Count(States(), "waiting"), 1U);
    EXPECT_EQ(Count(States(), "interrupted"), kTasksOfNode);
    EXPECT_EQ(CountDone(), kCount - kTasksOfNode - 2);
    std::filesystem::remove(Folder() / "held");

    const ProcessResult again = RunOnSlurm({"--wait", more.front()});

    EXPECT_EQ(again.exitCode, 0);
    EXPECT_THAT(again.messages, testing::StartsWith("zconf: b: 6 jobs submitted as array "));
    EXPECT_EQ(CountDone(), kCount);
    EXPECT_GE(before.size(), 12U);
    for (const auto& [file, id] : before)
    {
        EXPECT_EQ(IdOf(file), id) << file;
    }
    EXPECT_EQ(Shell("ls -A out | wc -l").output, "60\n");
    EXPECT_EQ(
        Shell("ffprobe -v error -show_entries stream=codec_name,duration -of csv=p=0 out/1001.wav").output,
        "pcm_s16le,0.200000\n");
    EXPECT_EQ(Shell("sha256sum out/*.wav | cut -d ' ' -f 1 | uniq -c | wc -l").output, "1\n");
}

TEST(SlurmClusterOfATest, IsGoneSoonAfterItsOwner)
{
    const TemporaryFolder folder;
    const std::string cluster = (folder / "c").string();

    const ProcessResult killed =
        RunProcess({"bash", "-c",
                    "OWNER=$$ bash '" SLURM_CLUSTER_SCRIPT "' '" + cluster + "' start || exit 77; cat '" +
                        cluster + "'/*.pid; kill -KILL $$"});

    if (killed.exitCode == 77)
    {
        GTEST_SKIP() << "Slurm does not start here: " << killed.messages;
    }
    std::istringstream text(killed.output);
    const std::vector<pid_t> daemons(std::istream_iterator<pid_t>(text), {});
    EXPECT_EQ(daemons.size(), 4U);
    for (int i = 0; i < 200 && std::filesystem::exists(cluster); ++i)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    EXPECT_FALSE(std::filesystem::exists(cluster));
    for (const pid_t daemon : daemons)
    {
        // One that has ended stays until whoever adopted it asks, without a command line.
        EXPECT_EQ(ReadFile("/proc/" + std::to_string(daemon) + "/cmdline"), "") << daemon;
    }
}

} // namespace
