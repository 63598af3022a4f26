#include "Media/Running/FFmpegRun.h"

#include "Media/MediaException.h"
#include "Tests/Support/Expect.h"

#include <gmock/gmock.h>

#include <sys/resource.h>

#include <locale>
#include <stdexcept>
#include <system_error>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using testing::ElementsAre;
using testing::IsEmpty;

/// A script in place of ffmpeg.
FFmpegResult RunScript(const std::string& script, std::vector<FFmpegProgress>* reports = nullptr)
{
    return RunFFmpeg(
        {"bash", "-c", script},
        [reports](const FFmpegProgress& progress) {
            if (reports != nullptr)
            {
                reports->push_back(progress);
            }
        },
        [] { return false; });
}

TEST(FFmpegRun, ReportsProgressAtTheEndOfEachBlockOfLines)
{
    std::vector<FFmpegProgress> reports;
    RunScript("printf 'frame=1\\nout_time_us=40000\\nspeed=1.5x\\nprogress=continue\\n"
              "out_time_us=80000\\nspeed= 2x\\nprogress=end\\n'",
              &reports);
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[0].done, 40000);
    EXPECT_EQ(reports[0].speed, 1.5);
    EXPECT_EQ(reports[1].done, 80000);
    EXPECT_EQ(reports[1].speed, 2.0);
}

TEST(FFmpegRun, WhatIsNotKnownLeavesTheProgressAsItWas)
{
    std::vector<FFmpegProgress> reports;
    RunScript("printf 'out_time_us=40000\\nspeed=3x\\nprogress=continue\\nout_time_us=N/A\\nspeed=N/A\\n"
              "out_time_us=-9223372036854775807\\nout_time_us\\nspeed=\\n=\\n\\nprogress=end\\n'",
              &reports);
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[1].done, 40000);
    EXPECT_EQ(reports[1].speed, 3.0);
}

TEST(FFmpegRun, KeepsTheLastTenLines)
{
    const FFmpegResult result = RunScript("for i in $(seq 30); do echo line $i >&2; done; printf rest >&2");
    EXPECT_THAT(result.messages, ElementsAre("line 22", "line 23", "line 24", "line 25", "line 26", "line 27",
                                             "line 28", "line 29", "line 30", "rest"));
    EXPECT_EQ(result.exitCode, 0);
}

TEST(FFmpegRun, LeavesOutWhatX265TellsOfItself)
{
    EXPECT_THAT(
        RunScript("echo 'x265 [info]: threads' >&2; echo 'encoded 5 frames in 1s, 9 kb/s, Avg QP:30' >&2; "
                  "echo 'encoded something else' >&2; echo 'x265 [warning]: level' >&2")
            .messages,
        ElementsAre("encoded something else", "x265 [warning]: level"));
}

TEST(FFmpegRun, GivesTheExitCode)
{
    EXPECT_EQ(RunScript("exit 7").exitCode, 7);
    EXPECT_EQ(RunScript("kill -SEGV $$").exitCode, 128 + 11);
    EXPECT_THAT(RunScript("exit 7").messages, IsEmpty());
}

/// Kilobytes that this process had in memory at most.
long PeakMemory()
{
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST(FFmpegRun, LinesWithoutEndDoNotFillTheMemory)
{
    const long before = PeakMemory();
    const FFmpegResult result = RunScript("head -c 100000000 /dev/zero | tr '\\0' x | tee /dev/stderr");
    EXPECT_EQ(result.exitCode, 0);
    ASSERT_EQ(result.messages.size(), 1U);
    EXPECT_EQ(result.messages[0], std::string(4096, 'x'));
    EXPECT_LT(PeakMemory() - before, 50000);
}

TEST(FFmpegRun, TheGlobalLocaleDoesNotChangeTheNumbers)
{
    class Comma : public std::numpunct<char>
    {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale former = std::locale::global(std::locale(std::locale(), new Comma));
    std::vector<FFmpegProgress> reports;
    RunScript("printf 'speed=1.5x\\nprogress=end\\n'", &reports);
    std::locale::global(former);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].speed, 1.5);
}

TEST(FFmpegRun, AProgramThatIsNotThereIsARunException)
{
    const Testing::Thrown thrown = Testing::ExpectThrow<RunException>([] {
        RunFFmpeg(
            {"./none"}, [](const FFmpegProgress&) {}, [] { return false; });
    });
    EXPECT_EQ(thrown.description, "Cannot run './none': No such file or directory");
}

TEST(FFmpegRun, AnErrorOfTheSystemThatACallbackThrowsPassesThroughAsItIs)
{
    const auto fail = [](const FFmpegProgress&) {
        throw std::system_error(std::make_error_code(std::errc::io_error), "mine");
    };
    EXPECT_THROW(
        RunFFmpeg({"bash", "-c", "echo progress=continue; exec sleep 60"}, fail, [] { return false; }),
        std::system_error);
}

} // namespace
