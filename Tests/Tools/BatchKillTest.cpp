#include "Tests/Support/Campaign.h"
#include "Tests/Support/RunFixtures.h"
#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <map>
#include <random>
#include <string>
#include <utility>

namespace
{

using namespace Zelnor::Testing;
namespace fs = std::filesystem;

constexpr int kJobs = 12;

/// What is left when `batch new` and `batch run` are killed.
class BatchKill : public ZconfTest
{
protected:
    BatchKill()
    {
        Write("wav.json", kWavPreset);
        fs::create_directory(Folder() / "in");
        for (int i = 0; i < kJobs; ++i)
        {
            Write("in/" + std::to_string(i + 10) + ".wav", SilentWav());
        }
        // Fast, so that most of the moments are ours and not ffmpeg's.
        Write("engine", "#!/bin/bash\ntarget=${!#}; cp in/10.wav \"${target#file:}\"; echo progress=end\n");
        ::chmod((Folder() / "engine").c_str(), 0755);
    }

    std::string NewWords() const { return "batch new -p wav.json --output-dir out -o b in"; }
    /// \returns whether it was still running
    bool RunAndKill(const std::string& words, int microseconds) const
    {
        const std::string seconds = std::to_string(microseconds / 1e6);
        // In the foreground, it waits for what it has killed, which holds its locks until it has ended.
        const ProcessResult result =
            Shell("exec timeout --foreground -s KILL " + seconds + " \"$ZCONF\" " + words);
        return result.signal == SIGKILL || result.exitCode == 128 + SIGKILL;
    }
    /// \returns how many microseconds it took
    int TimeOfFirstJob() const
    {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(Shell("\"$ZCONF\" batch run b --only 1 --ffmpeg ./engine").exitCode, 0);
        return static_cast<int>(
            std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin)
                .count());
    }
    /// The outputs by name, each with its inode and time: another one would be one that was made twice.
    std::map<std::string, std::pair<ino_t, long>> Outputs() const
    {
        std::map<std::string, std::pair<ino_t, long>> outputs;
        for (const auto& entry : fs::directory_iterator(Folder() / "out"))
        {
            struct stat status = {};
            if (entry.path().extension() == ".wav" && ::stat(entry.path().c_str(), &status) == 0)
            {
                outputs[entry.path().filename()] = {status.st_ino, status.st_mtim.tv_nsec};
            }
        }
        return outputs;
    }
};

TEST_F(BatchKill, AtAnyMomentMakesNoOutputTwiceAndLeavesNoHalfFile)
{
    ASSERT_EQ(Shell("\"$ZCONF\" " + NewWords()).exitCode, 0);
    fs::create_directory(Folder() / "out");
    const std::size_t runs = CampaignRuns(30);
    const std::uint64_t seed = CampaignSeed(1);
    std::mt19937_64 random(seed);
    // Up to the time in which a few jobs are done, which sanitizers and other tests make longer.
    std::uniform_int_distribution<int> moment(1000, std::max(400000, 4 * TimeOfFirstJob()));
    std::size_t killed = 0;
    std::size_t made = 0;
    std::map<std::string, std::pair<ino_t, long>> known = Outputs();
    for (std::size_t i = 0; i < runs; ++i)
    {
        const int time = moment(random);
        SCOPED_TRACE("seed " + std::to_string(seed) + ", run " + std::to_string(i) + ", killed after " +
                     std::to_string(time) + " us");
        killed += RunAndKill("batch run b --jobs 2 --ffmpeg ./engine", time) ? 1U : 0U;
        const auto now = Outputs();
        for (const auto& [name, file] : known)
        {
            ASSERT_TRUE(now.count(name) == 1 && now.at(name) == file) << name;
        }
        made += now.size() - known.size();
        known = now;
        // A campaign begins anew when all is done.
        if (known.size() == kJobs && i + 1 < runs)
        {
            known.clear();
            fs::remove_all(Folder() / "out");
            fs::remove_all(Folder() / "b");
            ASSERT_EQ(Shell("\"$ZCONF\" " + NewWords()).exitCode, 0);
            fs::create_directory(Folder() / "out");
        }
    }
    const ProcessResult last = Shell("\"$ZCONF\" batch run b --ffmpeg ./engine");
    EXPECT_EQ(last.exitCode, 0) << last.messages;
    const auto now = Outputs();
    EXPECT_EQ(now.size(), static_cast<std::size_t>(kJobs));
    for (const auto& [name, file] : known)
    {
        EXPECT_TRUE(now.at(name) == file) << name;
    }
    for (const auto& entry : fs::directory_iterator(Folder() / "out"))
    {
        EXPECT_EQ(entry.path().extension(), ".wav") << entry.path();
        EXPECT_EQ(Read("out/" + entry.path().filename().string()), SilentWav());
    }
    EXPECT_EQ(Shell("\"$ZCONF\" batch status b").exitCode, 0);
    EXPECT_GT(killed, 0U);
    EXPECT_GT(made, 0U);
    std::cout << runs << " runs, " << killed << " killed, " << made << " outputs, 0 findings\n";
}

TEST_F(BatchKill, OfANewBatchLeavesNoneAndNoLitterAfterTheNext)
{
    std::mt19937_64 random(CampaignSeed(1));
    std::uniform_int_distribution<int> moment(1000, 60000);
    for (std::size_t i = 0; i < 5; ++i)
    {
        if (RunAndKill(NewWords(), moment(random)))
        {
            // It may be killed when all is in its place.
            EXPECT_TRUE(!Exists("b") || Exists("b/batch.json"));
        }
        fs::remove_all(Folder() / "b");
    }
    EXPECT_EQ(Shell("\"$ZCONF\" " + NewWords()).exitCode, 0);
    EXPECT_THAT(Files(), testing::ElementsAre("b", "engine", "in", "wav.json"));
}

} // namespace
