#include "Tools/zconf/Console/Description.h"

#include "Tests/Support/GroupedNumbers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor::Tool;
using Zelnor::Testing::GroupedNumbers;
using Strings = std::vector<std::string>;

const Painter kPlainPainter(false);

TEST(FieldText, WritesEveryKindOfValue)
{
    EXPECT_EQ(FieldText(true), "yes");
    EXPECT_EQ(FieldText(false), "no");
    EXPECT_EQ(FieldText(-28LL), "-28");
    EXPECT_EQ(FieldText(29.97), "29.97");
    EXPECT_EQ(FieldText(25.0), "25");
    EXPECT_EQ(FieldText(std::string("text")), "text");
    EXPECT_EQ(FieldText(Strings{"a", "b"}), "a, b");
    EXPECT_EQ(FieldText(std::vector<FrameSize>{{960, 540}, {2, 1}}), "960x540, 2x1");
}

TEST(FieldText, EmptyValuesAreEmptyTexts)
{
    EXPECT_EQ(FieldText(std::string()), "");
    EXPECT_EQ(FieldText(Strings{}), "");
    EXPECT_EQ(FieldText(std::vector<FrameSize>{}), "");
}

TEST(FieldText, DoesNotDependOnTheLocale)
{
    const GroupedNumbers locale;
    EXPECT_EQ(FieldText(1234567LL), "1234567");
    EXPECT_EQ(FieldText(29.97), "29.97");
}

TEST(ColumnsText, GivesEachDescriptionALine)
{
    EXPECT_EQ(ColumnsText({{{"name", std::string("one")}, {"size", 1LL}},
                           {{"name", std::string("three")}, {"size", 333LL}}},
                          kPlainPainter),
              "one    1\n"
              "three  333\n");
}

TEST(ColumnsText, KeepsGapsButNoBlanksAtTheEnd)
{
    EXPECT_EQ(ColumnsText({{{"name", std::string("a")}, {"codec", std::string()}, {"kind", std::string("x")}},
                           {{"name", std::string("b")}, {"codec", std::string("y")}, {"kind", std::string()}},
                           {{"name", std::string("c")}, {"codec", std::string()}, {"kind", std::string()}}},
                          kPlainPainter),
              "a    x\n"
              "b  y\n"
              "c\n");
}

TEST(LinesText, NamesEachFieldAndLeavesOutEmptyOnes)
{
    EXPECT_EQ(LinesText({{"bitrate required", true}, {"lists", Strings{}}, {"bits", 16LL}}, 2, kPlainPainter),
              "  bitrate required  yes\n"
              "  bits              16\n");
}

} // namespace
