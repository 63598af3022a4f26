#include "Media/Running/VerificationProgress.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>
#include <vector>

namespace
{

using namespace Zelnor::Media;

/// What is told of a target when a second of it is decoded after a while.
std::vector<RunProgress> TellOneSecond(const RunProgress& target, std::chrono::milliseconds pause)
{
    std::vector<RunProgress> told;
    VerificationProgress progress(target, [&told](const RunProgress& each) { told.push_back(each); });
    std::this_thread::sleep_for(pause);
    progress.Report(1000000);
    return told;
}

RunProgress OfSeconds(std::int64_t seconds)
{
    RunProgress progress;
    progress.duration = seconds * 1000000;
    return progress;
}

constexpr std::chrono::milliseconds kAWhile(510);

TEST(VerificationProgress, IsToldAtOnceAndThenAfterAWhile)
{
    EXPECT_EQ(TellOneSecond(OfSeconds(4), std::chrono::milliseconds(0)).size(), 1U);
    const std::vector<RunProgress> told = TellOneSecond(OfSeconds(4), kAWhile);
    ASSERT_EQ(told.size(), 2U);
    EXPECT_TRUE(told[0].isVerifying);
    EXPECT_EQ(told[0].part, 0.0);
    EXPECT_EQ(told[1].done, 1000000);
    EXPECT_EQ(told[1].part, 0.25);
}

TEST(VerificationProgress, OfATargetWithoutALengthTellsNoPart)
{
    EXPECT_EQ(TellOneSecond({}, kAWhile).at(1).part, std::nullopt);
    EXPECT_EQ(TellOneSecond(OfSeconds(0), kAWhile).at(1).part, std::nullopt);
    EXPECT_EQ(TellOneSecond({}, kAWhile).at(1).done, 1000000);
}

} // namespace
