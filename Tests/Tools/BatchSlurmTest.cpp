#include "Tests/Support/RunFixtures.h"
#include "Tests/Support/SlurmCluster.h"
#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>
#include <rapidjson/document.h>

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace
{

using namespace Zelnor::Testing;
using testing::HasSubstr;

/// Batches of short sounds, in the test's folder, on a cluster of its own.
class BatchOnSlurm : public ZconfTest
{
protected:
    static constexpr const char* kPreset =
        R"({"wav":{"container":"wav","$$STREAMS$$":{"audio":{"codec_id":"CODEC_ID_PCM_S16LE"}}}})";

    /// \returns whether there is one; where there cannot be, the test is over
    bool StartCluster(int largestArray = 1001)
    {
        m_cluster = std::make_unique<SlurmCluster>(largestArray);
        return m_cluster->Fault().empty();
    }
    const SlurmCluster& Cluster() const { return *m_cluster; }

    void PlanBatch(int count) const
    {
        Write("wav.json", kPreset);
        std::filesystem::create_directory(Folder() / "in");
        for (int i = 1; i <= count; ++i)
        {
            Write("in/" + std::to_string(1000 + i) + ".wav", SilentWav());
        }
        // Slow enough that something can happen meanwhile, and slower as long as there is a file "hold".
        Write("slow", "#!/bin/sh\ncase \"$*\" in *progress*) sleep 0.1; while [ -e '" +
                          (Folder() / "hold").string() +
                          "' ]; do sleep 0.1; done;; esac\nexec ffmpeg \"$@\"\n");
        std::filesystem::permissions(Folder() / "slow", std::filesystem::perms::owner_all);
        const ProcessResult made =
            Zconf({"batch", "new", "--preset", "wav.json", "--output-dir", "out", "-o", "b", "in"});
        ASSERT_EQ(made.exitCode, 0) << made.messages;
    }
    ProcessResult Batch(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), "batch");
        ProcessOptions options;
        options.environment = {Cluster().Environment()};
        return Zconf(std::move(arguments), options);
    }
    ProcessResult RunOnSlurm(const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> arguments = {"run",   "b",        "--engine",
                                              "slurm", "--ffmpeg", (Folder() / "slow").string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Batch(arguments);
    }

    /// The jobs' states, and those of their tasks, as `batch status --json` tells them.
    std::vector<std::string> States() const { return WordsOf("state", false); }
    std::vector<std::string> TaskStates() const { return WordsOf("state", true); }
    std::size_t CountDone() const { return Count(States(), "done"); }
    static std::size_t Count(const std::vector<std::string>& words, const std::string& word)
    {
        return static_cast<std::size_t>(std::count(words.begin(), words.end(), word));
    }
    static bool WaitUntil(const std::function<bool()>& isSo)
    {
        constexpr int kTries = 400;
        for (int i = 0; i < kTries; ++i)
        {
            if (isSo())
            {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return false;
    }

private:
    std::vector<std::string> WordsOf(const char* key, bool ofTask) const
    {
        const ProcessResult status = Batch({"status", "b", "--json"});
        rapidjson::Document json;
        json.Parse(status.output.c_str());
        EXPECT_FALSE(json.HasParseError()) << status.output << status.messages;
        std::vector<std::string> words;
        for (const auto& job : json["jobs"].GetArray())
        {
            if (!ofTask)
            {
                words.emplace_back(job[key].GetString());
            }
            else if (job.HasMember("slurm"))
            {
                words.emplace_back(job["slurm"][key].GetString());
            }
        }
        return words;
    }

    std::unique_ptr<SlurmCluster> m_cluster;
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

TEST_F(BatchOnSlurm, EndsDoneOnceWhateverHappensToTheCluster)
{
    constexpr std::size_t kCount = 60;
    ZELNOR_START_CLUSTER();
    PlanBatch(kCount);
    const std::vector<std::string> more = {"--slurm=--no-requeue"};
    ASSERT_EQ(RunOnSlurm(more).messages, "zconf: b: 60 jobs submitted as array 1\n");

    ASSERT_TRUE(WaitUntil([this] { return CountDone() >= 4; }));
    Cluster().RestartController();
    ASSERT_TRUE(WaitUntil([this] { return CountDone() >= 8; }));
    Write("hold", "");
    ASSERT_TRUE(WaitUntil([this] { return Count(States(), "running") == 4; }));
    Cluster().Ask({"scancel", "1_60"});
    Cluster().KillNode("node1");
    std::filesystem::remove(Folder() / "hold");
    std::map<std::string, std::tuple<ino_t, time_t, long>> done;
    for (const auto& file : std::filesystem::directory_iterator(Folder() / "out"))
    {
        struct stat status = {};
        if (file.path().extension() == ".wav" && ::stat(file.path().c_str(), &status) == 0)
        {
            done[file.path().string()] = {status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
        }
    }
    Cluster().StartNode("node1");
    ASSERT_TRUE(WaitUntil([this] { return Cluster().Ask({"squeue", "--noheader"}).empty(); }));
    EXPECT_EQ(Count(TaskStates(), "cancelled"), 1U);
    EXPECT_EQ(Count(TaskStates(), "lost"), 2U);
    EXPECT_EQ(Count(States(), "waiting"), 1U);
    EXPECT_EQ(Count(States(), "interrupted"), 2U);
    EXPECT_EQ(CountDone(), kCount - 3);

    EXPECT_EQ(RunOnSlurm({"--wait", more.front()}).exitCode, 0);

    EXPECT_EQ(CountDone(), kCount);
    EXPECT_GE(done.size(), 8U);
    for (const auto& [file, before] : done)
    {
        struct stat status = {};
        EXPECT_EQ(::stat(file.c_str(), &status), 0) << file;
        EXPECT_EQ(before, std::tuple(status.st_ino, status.st_mtim.tv_sec, status.st_mtim.tv_nsec)) << file;
    }
    for (std::size_t i = 1; i <= kCount; ++i)
    {
        const std::string name = "out/" + std::to_string(1000 + i) + ".wav";
        EXPECT_EQ(Shell("ffprobe -v error -show_entries stream=codec_name -of csv=p=0 " + name).output,
                  "pcm_s16le\n")
            << name;
    }
    EXPECT_EQ(Shell("ls -A out | wc -l").output, "60\n");
}

TEST_F(BatchOnSlurm, SaysThatSlurmIsNotInstalled)
{
    PlanBatch(1);
    ProcessOptions options;
    options.environment = {"PATH=" + Folder().string()};

    ExpectFailure(Zconf({"batch", "run", "b", "--engine", "slurm"}, options),
                  "there is no program 'scontrol': Slurm's client programs are not installed");
}

TEST_F(BatchOnSlurm, LeavesArraysAloneThatHaveItsNumberAndAnotherName)
{
    PlanBatch(1);
    const auto writeProgram = [this](const std::string& name, const std::string& line) {
        Write(name, "#!/bin/sh\n" + line + "\n");
        std::filesystem::permissions(Folder() / name, std::filesystem::perms::owner_all);
    };
    writeProgram("scontrol", "echo 'MaxArraySize = 1001'");
    writeProgram("squeue", "echo '4711|1|holiday|PENDING|0||launch failed requeued held|'");
    writeProgram("sacct", "exit 1");
    writeProgram("scancel", "echo \"$@\" >> '" + (Folder() / "cancelled").string() + "'");
    writeProgram("sbatch", "echo 4712");
    std::filesystem::create_directory(Folder() / "b/slurm");
    Write("b/slurm/arrays.json", R"({"slurm":{"version":1,"arrays":{"000001":)"
                                 R"({"name":"zelnor-1","id":4711,"offset":0,"indices":"1"}}}})");
    ProcessOptions options;
    options.environment = {"PATH=" + Folder().string() + ":/usr/bin:/bin"};

    const ProcessResult run = Zconf({"batch", "run", "b", "--engine", "slurm"}, options);

    EXPECT_EQ(run.messages, "zconf: b: 1 job submitted as array 4712\n");
    EXPECT_FALSE(Exists("cancelled"));
}

TEST_F(BatchOnSlurm, IsNotSubmittedWithOptionsThatAreSetForIt)
{
    PlanBatch(1);

    ExpectFailure(Zconf({"batch", "run", "b", "--engine", "slurm", "--slurm=--wrap=rm"}),
                  "--wrap=rm: this option of sbatch is set for the batch");
}

} // namespace
