#include "Tools/zconf/Console/ProgressDisplay.h"

#include "Tools/zconf/Console/Text.h"

#include "Tests/Support/GroupedNumbers.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>

namespace
{

using namespace Zelnor;
using Tool::BarText;
using Tool::DoneText;
using Tool::ProgressText;

constexpr std::int64_t kSecond = 1000000;

/// One pass of one target that takes ten seconds.
Media::RunProgress Progress(double part, std::int64_t done, double speed)
{
    Media::RunProgress progress;
    progress.passCount = 1;
    progress.duration = 10 * kSecond;
    progress.part = part;
    progress.done = done;
    progress.speed = speed;
    return progress;
}

TEST(ProgressText, ShowsThePartTheSpeedAndTheTimeLeft)
{
    EXPECT_EQ(ProgressText(Progress(0.42, 4200000, 3.06)), "42%  3.1x  0:00:02 left");
    EXPECT_EQ(ProgressText(Progress(0, 0, 0.001)), "0%  0.0x  2:46:40 left");
    EXPECT_EQ(ProgressText(Progress(1, 10 * kSecond, 1)), "100%  1.0x  0:00:00 left");
}

TEST(ProgressText, CountsThePassesThatAreLeft)
{
    Media::RunProgress progress = Progress(0.25, 5 * kSecond, 1);
    progress.passCount = 2;
    EXPECT_EQ(ProgressText(progress), "25%  1.0x  0:00:15 left");
    progress.pass = 1;
    EXPECT_EQ(ProgressText(progress), "25%  1.0x  0:00:05 left");
}

TEST(ProgressText, SaysThatATargetIsVerified)
{
    Media::RunProgress progress = Progress(0.5, 5 * kSecond, 0);
    progress.isVerifying = true;
    EXPECT_EQ(ProgressText(progress), "verifying  50%");
    progress.part.reset();
    EXPECT_EQ(ProgressText(progress), "verifying");
}

TEST(ProgressText, LeavesOutWhatIsUnknown)
{
    Media::RunProgress progress = Progress(0.5, 5 * kSecond, 0);
    EXPECT_EQ(ProgressText(progress), "50%");
    progress.part.reset();
    EXPECT_EQ(ProgressText(progress), "");
    progress.speed = 2;
    progress.duration.reset();
    EXPECT_EQ(ProgressText(progress), "2.0x");
}

TEST(ProgressText, IsNotMisledByOddNumbers)
{
    EXPECT_EQ(ProgressText(Progress(0.99, 11 * kSecond, 1)), "99%  1.0x  0:00:00 left");
    EXPECT_EQ(ProgressText(Progress(0.5, 0, 1e-300)), "50%  0.0x  277777:46:40 left");
    EXPECT_EQ(ProgressText(Progress(0.5, 0, -1)), "50%");
    EXPECT_EQ(ProgressText(Progress(0.5, 0, std::numeric_limits<double>::quiet_NaN())), "50%");
}

Media::RunProgress Named(const std::string& file)
{
    Media::RunProgress progress = Progress(0.5, 5 * kSecond, 2);
    progress.file = file;
    return progress;
}

TEST(BarText, FillsItsPart)
{
    EXPECT_EQ(BarText(Named("out.mp4"), 80),
              "[###############---------------] 50%  2.0x  0:00:03 left  out.mp4");
}

TEST(BarText, StaysInItsLineOnEveryTerminal)
{
    EXPECT_EQ(BarText(Named("out.mp4"), 60), "[############------------] 50%  2.0x  0:00:03 left  out.mp4");
    EXPECT_EQ(BarText(Named("out.mp4"), 40), "[####----] 50%  2.0x  0:00:03 left  ou~");
    EXPECT_EQ(BarText(Named("out.mp4"), 20), "[####----] 50%  2.~");
    EXPECT_EQ(BarText(Named("out.mp4"), 1), "");
    EXPECT_EQ(BarText(Named("out.mp4"), 0), "");
    for (std::size_t columns = 2; columns < 120; ++columns)
    {
        const std::string text = BarText(Named(std::string(50, 'x') + "\xc3\xa4\n"), columns);
        EXPECT_LT(Tool::Columns(text), columns) << text;
    }
}

TEST(DoneText, TellsTheTimeAndTheSize)
{
    Media::TargetResult target;
    target.file = "out\n.mp4";
    target.seconds = 61.2;
    target.size = 1234567;
    EXPECT_EQ(DoneText(target), "out\\n.mp4: done in 0:01:02, 1.2 MB");
}

TEST(ProgressText, DoesNotDependOnTheLocale)
{
    const Testing::GroupedNumbers locale;
    EXPECT_EQ(ProgressText(Progress(0.42, 4200000, 1234.5)), "42%  1234.5x  0:00:01 left");
}

} // namespace
