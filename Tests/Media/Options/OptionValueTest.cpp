#include "Media/Options/OptionValue.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <cfloat>
#include <string>
#include <string_view>

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

void ExpectOptionFault(const CheckedOption& checked, const std::string& fault)
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
        ExpectOptionFault(Check(AV_OPT_TYPE_IMAGE_SIZE, text),
                          "expected a size as 2x1, found '" + text + "'");
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
        ExpectOptionFault(Check(AV_OPT_TYPE_CHLAYOUT, text),
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
        ExpectOptionFault(Check(AV_OPT_TYPE_RATIONAL, text, 0, 100),
                          "expected a number from 0 to 100, found '" + text + "'");
    }
}

TEST(OptionValue, OfAWideRangeIsNotToldItsBounds)
{
    EXPECT_EQ(Check(AV_OPT_TYPE_DOUBLE, "-1.5", -DBL_MAX, DBL_MAX).value, "-1.5");
    ExpectOptionFault(Check(AV_OPT_TYPE_DOUBLE, "much", -DBL_MAX, DBL_MAX),
                      "expected a number, found 'much'");
    ExpectOptionFault(Check(AV_OPT_TYPE_INT64, "1.5", -DBL_MAX, DBL_MAX), "expected an integer, found '1.5'");
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

TEST(OptionValue, OfANumberMayHaveASuffixForThousandsAndMore)
{
    for (const std::string text : {"2", "2k", "2K", "2M", "2G", "1.5k", "+3"})
    {
        EXPECT_EQ(Check(AV_OPT_TYPE_INT64, text, 0, 2e9).value, text);
    }
    EXPECT_EQ(Check(AV_OPT_TYPE_INT, "-2k", -2000, 0).value, "-2k");
    for (const std::string text :
         {"2T", "2kk", "2 k", "k", "+", "-", "+-2", "2m", "2g", "1.0005k", "3G", "-1"})
    {
        ExpectOptionFault(Check(AV_OPT_TYPE_INT64, text, 0, 2e9),
                          "expected an integer from 0 to 2000000000, found '" + text + "'");
    }
    ExpectOptionFault(Check(AV_OPT_TYPE_INT, "-2k", -1999, 0),
                      "expected an integer from -1999 to 0, found '-2k'");
}

TEST(OptionValue, OfANumberHasTheBoundsOfTheOption)
{
    for (const std::string text : {"1", "1.5", "2"})
    {
        EXPECT_EQ(Check(AV_OPT_TYPE_FLOAT, text, 1, 2).value, text);
    }
    for (const std::string text : {"0.999", "2.001"})
    {
        ExpectOptionFault(Check(AV_OPT_TYPE_FLOAT, text, 1, 2),
                          "expected a number from 1 to 2, found '" + text + "'");
    }
    EXPECT_EQ(Check(AV_OPT_TYPE_UINT64, "7", 0, 10).value, "7");
    ExpectOptionFault(Check(AV_OPT_TYPE_UINT64, "7.5", 0, 10),
                      "expected an integer from 0 to 10, found '7.5'");
    ExpectOptionFault(Check(AV_OPT_TYPE_INT64, "x", 0, DBL_MAX), "expected an integer, found 'x'");
    ExpectOptionFault(Check(AV_OPT_TYPE_INT64, "x", -DBL_MAX, 0), "expected an integer, found 'x'");
}

TEST(OptionValue, OfANumberIsFinite)
{
    const std::string beyondDoubles(400, '9');
    const std::string withSuffixBeyond = std::string(305, '9') + "G";
    for (const std::string& text : {beyondDoubles, withSuffixBeyond})
    {
        ExpectOptionFault(Check(AV_OPT_TYPE_DOUBLE, text, -DBL_MAX, DBL_MAX),
                          "expected a number, found '" + text + "'");
        ExpectOptionFault(Check(AV_OPT_TYPE_INT64, text, -DBL_MAX, DBL_MAX),
                          "expected an integer, found '" + text + "'");
    }
}

TEST(OptionValue, OfATruthIsAWordOrANumberOfTheOption)
{
    for (const std::string text : {"true", "false", "0", "1"})
    {
        EXPECT_EQ(Check(AV_OPT_TYPE_BOOL, text, 0, 1).value, text);
    }
    for (const std::string text : {"auto", "-1", "2", "0.5", "yes", ""})
    {
        ExpectOptionFault(Check(AV_OPT_TYPE_BOOL, text, 0, 1),
                          "expected true or false, found '" + text + "'");
    }
    // Those that have a third value say so with their least one.
    for (const std::string text : {"auto", "-1"})
    {
        EXPECT_EQ(Check(AV_OPT_TYPE_BOOL, text, -1, 1).value, text);
    }
}

TEST(OptionValue, OfFlagsWithoutNamesIsNotThere)
{
    ExpectOptionFault(Check(AV_OPT_TYPE_FLAGS, "+a"), "expected no flags, found '+a'");
    ExpectOptionFault(Check(AV_OPT_TYPE_FLAGS, ""), "expected no flags, found ''");
}

TEST(OptionValue, OfANameIsTheWholeText)
{
    const AVClass* owner = avcodec_get_class();
    FoundOption found;
    found.owner = owner;
    found.option = av_opt_find(&owner, "idct", nullptr, 0, AV_OPT_SEARCH_FAKE_OBJ);
    ASSERT_NE(found.option, nullptr);
    const std::string name = "simple";
    EXPECT_EQ(CheckOptionValue(found, Core::Property("", name)).value, name);
    // FFmpeg would stop reading at the end of a text in C.
    EXPECT_EQ(CheckOptionValue(found, Core::Property("", name + std::string("\0x", 2))).value, "");
    EXPECT_EQ(CheckOptionValue(found, Core::Property("", name + "x")).value, "");
}

bool IsKnown(std::string_view parameter) { return parameter == "number"; }
bool IsWordOfRule(std::string_view parameter) { return parameter == "word"; }

CheckedOption CheckLibraryParameters(const std::string& text)
{
    const ParametersRule rule = {"encoder", "params", "lib", &IsKnown, &IsWordOfRule};
    return CheckParameters(rule, Core::Property("", text));
}

TEST(OptionValue, OfAParameterIsNumbersBetweenCommas)
{
    for (const std::string value :
         {"1", "-1", "1.5", "1,2", "1,-2,3", "auto", "infinite", "none", "true", "false"})
    {
        EXPECT_EQ(CheckLibraryParameters("number=" + value).value, "number=" + value);
    }
    for (const std::string value : {"", ",", "1,", ",1", "1,,2", "1,x", "1;2", "autos", "/tmp/x"})
    {
        ExpectOptionFault(CheckLibraryParameters("number=" + value),
                          "lib's parameter 'number': expected a number, found '" + value + "'");
    }
    const std::string beyondDoubles = std::string(305, '9') + "G";
    ExpectOptionFault(CheckLibraryParameters("number=" + beyondDoubles),
                      "lib's parameter 'number': expected a number, found '" + beyondDoubles + "'");
}

TEST(OptionValue, OfAParameterWithoutOneIsOne)
{
    EXPECT_EQ(CheckLibraryParameters("number").value, "number=1");
    EXPECT_EQ(CheckLibraryParameters("number:word=hex").value, "number=1:word=hex");
}

TEST(OptionValue, OfAParameterIsAWordWithoutFolders)
{
    for (const std::string value : {"hex", "a-b.c,(D)"})
    {
        EXPECT_EQ(CheckLibraryParameters("word=" + value).value, "word=" + value);
    }
    for (const std::string value : {"", "a/b", "a b", "a=b", "a_b"})
    {
        ExpectOptionFault(CheckLibraryParameters("word=" + value),
                          "lib's parameter 'word': expected a word, found '" + value + "'");
    }
}

TEST(OptionValue, OfParametersNamesEachOnceAndKnowsThemAll)
{
    ExpectOptionFault(CheckLibraryParameters("number=1:number=2"),
                      "lib's parameter 'number' appears more than once");
    ExpectOptionFault(CheckLibraryParameters("odd=1"),
                      "lib's parameter 'odd' cannot be set by a job or a preset");
    ExpectOptionFault(CheckLibraryParameters("number=1:"),
                      "lib's parameter '' cannot be set by a job or a preset");
    ExpectOptionFault(CheckLibraryParameters(""), "lib's parameter '' cannot be set by a job or a preset");
}

} // namespace
