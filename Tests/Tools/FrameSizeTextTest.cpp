#include "Tools/zconf/Console/FrameSizeText.h"

#include "Tools/zconf/Console/Errors.h"

#include "Tests/Support/GroupedNumbers.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace Zelnor::Tool;
using Zelnor::Testing::GroupedNumbers;

template <class Parse>
void ExpectRefused(Parse parse, const std::string& text, const std::string& expectation)
{
    try
    {
        parse(text);
        ADD_FAILURE() << "'" << text << "' was accepted";
    }
    catch (const ToolError& error)
    {
        EXPECT_EQ(error.what(), "'" + text + "'" + expectation);
    }
}

TEST(ParseFrameSize, TakesTwoPositiveLengths)
{
    EXPECT_EQ(ParseFrameSize("1920x1080").width, 1920);
    EXPECT_EQ(ParseFrameSize("1920x1080").height, 1080);
    EXPECT_EQ(ParseFrameSize("1x2147483647").height, 2147483647);
}

TEST(ParseFrameSize, RefusesEverythingElse)
{
    for (const char* const text :
         {"", "x", "1920", "1920x", "x1080", "0x1", "1x0", "-2x2", "+2x2", "2x2x2", "2x2 ", " 2x2", "2X2",
          "1e3x2", "2147483648x2", "99999999999999999999x2", "2,000x2", "two x two"})
    {
        ExpectRefused(ParseFrameSize, text, " is not a frame size: expected WIDTHxHEIGHT, such as 1920x1080");
    }
}

TEST(ParseFrameRate, TakesANumberOrAFraction)
{
    EXPECT_DOUBLE_EQ(ParseFrameRate("25"), 25);
    EXPECT_DOUBLE_EQ(ParseFrameRate("29.97"), 29.97);
    EXPECT_DOUBLE_EQ(ParseFrameRate("30000/1001"), 30000.0 / 1001);
    EXPECT_DOUBLE_EQ(ParseFrameRate("2.5e1"), 25);
}

TEST(ParseFrameRate, DoesNotDependOnTheLocale)
{
    const GroupedNumbers locale;
    EXPECT_DOUBLE_EQ(ParseFrameRate("23.976"), 23.976);
    EXPECT_EQ(ParseFrameSize("1920x1080").width, 1920);
}

TEST(ParseFrameRate, RefusesEverythingElse)
{
    for (const char* const text :
         {"", "0", "-25", "25/0", "0/5", "-1/-25", "25/-1", "25/", "/1", "1/2/3", "25.0/1", "nan", "inf",
          "-inf", "25fps", "29,97", "1e999", "9223372036854775808/1"})
    {
        ExpectRefused(ParseFrameRate, text,
                      " is not a frame rate: expected a number such as 25, 29.97 or 30000/1001");
    }
}

} // namespace
