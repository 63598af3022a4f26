#include "Tests/Support/Campaign.h"
#include "Tests/Support/MediaTest.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <chrono>
#include <csignal>
#include <iostream>
#include <random>
#include <thread>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;
using testing::ElementsAre;

/// What is left when `job run` is killed.
class JobRunKill : public MediaTest
{
protected:
    JobRunKill()
    {
        Write("in.mkv", TinySound());
        ExpectQuietSuccess(New("mp3", "in.mkv", "out.mp3"));
        Write("out.mp3", "old");
    }

    /// A program to be taken for ffmpeg, which tells its number and becomes what `lines` say.
    void Script(const std::string& lines) const
    {
        Write("engine", "#!/bin/bash\necho $$ > running.new; mv running.new running\n" + lines + "\n");
        ::chmod((Folder() / "engine").c_str(), 0755);
    }

    /// Runs the job and kills it after that time. \returns whether it was still running
    bool RunAndKill(std::chrono::microseconds time) const
    {
        const std::string seconds = std::to_string(static_cast<double>(time.count()) / 1e6);
        // In the foreground, it waits for what it has killed.
        const ProcessResult result = Shell("exec timeout --foreground -s KILL " + seconds +
                                           " \"$ZCONF\" job run job.json --overwrite --ffmpeg ./engine");
        return result.signal == SIGKILL || result.exitCode == 128 + SIGKILL;
    }

    /// Whether the program that was taken for ffmpeg is gone, or goes soon.
    bool IsEngineGone() const
    {
        if (!Exists("running"))
        {
            return true;
        }
        const auto process = static_cast<pid_t>(std::stol(Read("running")));
        for (int i = 0; i < 200 && ::kill(process, 0) == 0; ++i)
        {
            // A zombie of this container's first process, which may not wait for it, is gone as well.
            std::ifstream status("/proc/" + std::to_string(process) + "/stat");
            const std::string text{std::istreambuf_iterator<char>(status), {}};
            if (text.find(") Z ") != std::string::npos)
            {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return ::kill(process, 0) != 0;
    }

    std::size_t WorkFolders() const
    {
        const std::vector<std::string> files = Files();
        return static_cast<std::size_t>(
            std::count_if(files.begin(), files.end(),
                          [](const std::string& name) { return name.rfind(".zelnor-", 0) == 0; }));
    }
};

TEST_F(JobRunKill, EndsFFmpegAndLeavesTheOldFileAndTheNextRunCleansUp)
{
    Script("target=${!#}; echo half > \"${target#file:}\"; exec sleep 60");
    EXPECT_TRUE(RunAndKill(std::chrono::seconds(2)));
    ASSERT_TRUE(Exists("running"));
    EXPECT_TRUE(IsEngineGone());
    EXPECT_EQ(Read("out.mp3"), "old");
    EXPECT_EQ(WorkFolders(), 1U);
    EXPECT_EQ(RunJob({"--overwrite"}).exitCode, 0);
    EXPECT_EQ(WorkFolders(), 0U);
    EXPECT_EQ(Info("out.mp3").Audio().codec, "mp3");
}

TEST_F(JobRunKill, AtAnyMomentLeavesAWholeFileNoFFmpegAndNoLitterAfterTheNextRun)
{
    Script("exec ffmpeg \"$@\"");
    const std::size_t runs = CampaignRuns(10);
    const std::uint64_t seed = CampaignSeed(1);
    std::mt19937_64 random(seed);
    std::uniform_int_distribution<int> moment(1000, 400000);
    std::size_t killed = 0;
    for (std::size_t i = 0; i < runs; ++i)
    {
        std::filesystem::remove(Folder() / "running");
        const std::chrono::microseconds time(moment(random));
        SCOPED_TRACE("seed " + std::to_string(seed) + ", run " + std::to_string(i) + ", killed after " +
                     std::to_string(time.count()) + " us");
        killed += RunAndKill(time) ? 1U : 0U;
        ASSERT_TRUE(IsEngineGone());
        const std::string made = Read("out.mp3");
        ASSERT_TRUE(made == "old" || Info("out.mp3").Audio().codec == "mp3");
        ASSERT_LE(WorkFolders(), 1U);
    }
    EXPECT_EQ(RunJob({"--overwrite"}).exitCode, 0);
    EXPECT_EQ(WorkFolders(), 0U);
    EXPECT_GT(killed, 0U);
    std::cout << runs << " runs, " << killed << " killed, 0 findings\n";
}

TEST_F(JobRunKill, TwoRunsOfOneTargetDoNotDisturbEachOther)
{
    std::filesystem::remove(Folder() / "out.mp3");
    const ProcessResult result =
        Shell("\"$ZCONF\" job run job.json >/dev/null 2>&1 & one=$!; "
              "\"$ZCONF\" job run job.json >/dev/null 2>&1; other=$?; wait $one; echo $? $other");
    // Which one wins is a matter of speed.
    EXPECT_TRUE(result.output == "0 2\n" || result.output == "2 0\n") << result.output;
    EXPECT_EQ(Info("out.mp3").Audio().codec, "mp3");
    EXPECT_THAT(Files(), ElementsAre("in.mkv", "job.json", "out.mp3"));
}

} // namespace
