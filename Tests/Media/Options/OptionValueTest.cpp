#include "Media/Options/OptionValue.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;

/// What is said about a value of an option of that type; FFmpeg has too few options of some types.
CheckedOption Check(AVOptionType type, const std::string& text, double min = 0, double max = 0)
{
    AVOption option = {};
    option.name = "option";
    option.type = type;
    option.min = min;
    option.max = max;
    FoundOption found;
    found.option = &option;
    return CheckOptionValue(found, Core::Property("", text));
}

void ExpectFault(const CheckedOption& checked, const std::string& fault)
{
    EXPECT_EQ(checked.fault, fault);
    EXPECT_EQ(checked.value, "");
}

TEST(OptionValue, OfASizeIsTwoLengths)
{
    for (const std::string text : {"640x480", "0x0", "99999x1"})
    {
        EXPECT_EQ(Check(AV_OPT_TYPE_IMAGE_SIZE, text).value, text);
    }
    for (const std::string text : {"", "640", "x480", "640x", "640x480x1", "100000x1", "-1x1", "hd720"})
    {
        ExpectFault(Check(AV_OPT_TYPE_IMAGE_SIZE, text), "expected a size as 2x1, found '" + text + "'");
    }
}

TEST(OptionValue, OfALayoutIsAWord)
{
    for (const std::string text : {"stereo", "5.1(side)"})
    {
        EXPECT_EQ(Check(AV_OPT_TYPE_CHLAYOUT, text).value, text);
    }
    for (const std::string text : {"", "FL+FR", "5.1 side", "a/b"})
    {
        ExpectFault(Check(AV_OPT_TYPE_CHLAYOUT, text),
                    "expected a channel layout as stereo, found '" + text + "'");
    }
}

TEST(OptionValue, OfARationalIsANumberOrTwoPositiveIntegers)
{
    for (const std::string text : {"25", "29.97", "30000/1001"})
    {
        EXPECT_EQ(Check(AV_OPT_TYPE_RATIONAL, text, 0, 100).value, text);
    }
    for (const std::string text : {"", "101", "1/0", "-1/2", "1/2/3", "1.5/2", "2147483648/1", "/", "1/x"})
    {
        ExpectFault(Check(AV_OPT_TYPE_RATIONAL, text, 0, 100),
                    "expected a number from 0 to 100, found '" + text + "'");
    }
}

TEST(OptionValue, OfAWideRangeIsNotToldItsBounds)
{
    EXPECT_EQ(Check(AV_OPT_TYPE_DOUBLE, "-1.5", -DBL_MAX, DBL_MAX).value, "-1.5");
    ExpectFault(Check(AV_OPT_TYPE_DOUBLE, "much", -DBL_MAX, DBL_MAX), "expected a number, found 'much'");
    ExpectFault(Check(AV_OPT_TYPE_INT64, "1.5", -DBL_MAX, DBL_MAX), "expected an integer, found '1.5'");
}

TEST(OptionValue, OfATypeWithoutARuleIsNotPassed)
{
    for (const AVOptionType type : {AV_OPT_TYPE_COLOR, AV_OPT_TYPE_DURATION, AV_OPT_TYPE_PIXEL_FMT})
    {
        const CheckedOption checked = Check(type, "1", 0, 2);
        EXPECT_EQ(checked.value, "");
        EXPECT_NE(checked.fault, "");
    }
}

} // namespace
