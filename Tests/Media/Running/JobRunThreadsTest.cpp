#include "Media/Running/JobRun.h"

#include "Tests/Support/RunFixtures.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;

TEST(JobRunThreads, SeveralJobsRunAtOnce)
{
    const TemporaryFolder folder;
    WriteFile(folder / "in.wav", SilentWav());
    RunOptions options;
    options.ffmpeg =
        MakeScript(folder, "cp '" + (folder / "in.wav").string() +
                               "' \"$target\"; echo out_time_us=1; echo progress=end; echo w >&2");
    options.verification = VerificationDepth::Full;
    std::atomic<int> done{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 5; ++round)
            {
                const std::string name = std::to_string(i) + "-" + std::to_string(round) + ".wav";
                int reports = 0;
                RunOptions own = options;
                own.onProgress = [&reports](const RunProgress& progress) {
                    reports += progress.isVerifying ? 0 : 1;
                };
                const GraphPtr job = WavJob((folder / "in.wav").string(), {(folder / name).string()});
                const RunResult result = RunJob(*job, own);
                done += result.IsDone() && reports == 2 && ReadFile(folder / name) == SilentWav() ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(done, 20);
}

TEST(JobRunThreads, IsCancelledFromAnotherThread)
{
    const TemporaryFolder folder;
    WriteFile(folder / "in.wav", SilentWav());
    RunOptions options;
    options.ffmpeg = MakeScript(
        folder, "echo half > \"$target\"; echo out_time_us=1; echo progress=continue; exec sleep 60");
    std::atomic<bool> running{false};
    options.onProgress = [&running](const RunProgress& progress) { running = progress.done > 0; };
    std::thread other([&running, token = options.cancel] {
        while (!running)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        token.Cancel();
    });
    const auto start = std::chrono::steady_clock::now();
    const RunResult result =
        RunJob(*WavJob((folder / "in.wav").string(), {(folder / "out.wav").string()}), options);
    other.join();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    EXPECT_FALSE(result.IsDone());
    EXPECT_EQ(folder.Names().size(), 2U);
}

} // namespace
