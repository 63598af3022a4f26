#include "Tools/zconf/Console/TimeText.h"

#include "Tools/zconf/Console/Errors.h"

#include "Tests/Support/GroupedNumbers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

namespace
{

using namespace Zelnor::Tool;

TEST(ParseTime, TakesSecondsAndClocks)
{
    const std::pair<const char*, std::int64_t> kCases[] = {
        {"0", 0},
        {"90", 90000000},
        {"1.5", 1500000},
        {"0.000001", 1},
        {"2:30", 150000000},
        {"90:00", 5400000000},
        {"1:02:03.5", 3723500000},
        {"00:00:00", 0},
        {"999999999:59:59", (999999999LL * 3600 + 3599) * 1000000},
    };
    for (const auto& [text, microseconds] : kCases)
    {
        EXPECT_EQ(ParseTime(text), microseconds) << text;
    }
}

TEST(ParseTime, RefusesWhatIsNotATime)
{
    for (const std::string text : {"", "soon", "-1", "1.", ".5", "1.0000001", "1:60", "1:60:00", "1:2:3:4",
                                   ":30", "1:", "1e3", "0x10", " 1", "1 ", "+1", "1234567890", "1,5"})
    {
        try
        {
            ParseTime(text);
            ADD_FAILURE() << text;
        }
        catch (const ToolError& error)
        {
            EXPECT_EQ(std::string(error.what()),
                      "'" + text + "' is not a time: expected seconds or H:MM:SS, such as 90.5 or 1:02:03.5");
        }
    }
}

TEST(ClockText, CountsHoursMinutesAndSeconds)
{
    EXPECT_EQ(ClockText(0), "0:00:00");
    EXPECT_EQ(ClockText(59.1), "0:01:00");
    EXPECT_EQ(ClockText(3723), "1:02:03");
}

TEST(SizeText, IsInPowersOfAThousand)
{
    EXPECT_EQ(SizeText(0), "0 bytes");
    EXPECT_EQ(SizeText(1), "1 byte");
    EXPECT_EQ(SizeText(999), "999 bytes");
    EXPECT_EQ(SizeText(1000), "1.0 kB");
    EXPECT_EQ(SizeText(999949), "999.9 kB");
    EXPECT_EQ(SizeText(999950), "1.0 MB");
    EXPECT_EQ(SizeText(12345678901), "12.3 GB");
    EXPECT_EQ(SizeText(18446744073709551615U), "18446.7 PB");
}

TEST(SizeText, DoesNotDependOnTheLocale)
{
    const Zelnor::Testing::GroupedNumbers locale;
    EXPECT_EQ(SizeText(18446744073709551615U), "18446.7 PB");
    EXPECT_EQ(ClockText(4000000), "1111:06:40");
}

} // namespace
