// The campaign itself: a first use that leaves something half made has to be found.

#include "Tests/Campaigns/Allocation/Operations.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <string>

namespace Zelnor::Testing
{

namespace
{

/// Made by the first use, which believes that it is done before it is.
std::string Remembered(bool& isMade, std::string& value)
{
    if (!isMade)
    {
        isMade = true;
        value = std::string(100, 'x');
    }
    return value;
}

} // namespace

TEST(FirstUse, ThatIsNotFinishedIsFound)
{
    static bool s_isMade = false;
    static std::string s_value;
    ::testing::TestPartResultArray failures;
    {
        const ::testing::ScopedFakeTestPartResultReporter reporter(
            ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
        RunCampaign({Call("Remembered", [] { return Remembered(s_isMade, s_value); })});
    }
    // When memory runs out for a moment, and when it does for good.
    ASSERT_EQ(failures.size(), 2);
    for (const int i : {0, 1})
    {
        const std::string message = failures.GetTestPartResult(i).message();
        EXPECT_NE(message.find("the next use gives something else"), std::string::npos) << message;
    }
}

} // namespace Zelnor::Testing
