#include "Tools/zconf/Console/MarkedLine.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace Zelnor::Tool;

std::string Marked(const std::string& text, const std::string& place)
{
    return MarkedLine(text, text.find(place), place.size(), Painter(false));
}

TEST(MarkedLine, ShowsTheLineAndThePlaceBelow)
{
    EXPECT_EQ(Marked("one\n  two three\nfour", "three"), "    |   two three\n    |       ^~~~~\n");
    EXPECT_EQ(Marked("one", "o"), "    | one\n    | ^\n");
    EXPECT_EQ(Marked("one\r\ntwo", "ne"), "    | one\n    |  ^~\n");
}

TEST(MarkedLine, MarksTheEndOfTheText)
{
    EXPECT_EQ(MarkedLine("{\n", 2, 0, Painter(false)), "    | \n    | ^\n");
    EXPECT_EQ(MarkedLine("{", 1, 0, Painter(false)), "    | {\n    |  ^\n");
    EXPECT_EQ(MarkedLine("", 0, 0, Painter(false)), "    | \n    | ^\n");
}

TEST(MarkedLine, CountsColumnsAsATerminalDoes)
{
    // A tab, two wide characters, an accent that stands on the e, and an emoji.
    EXPECT_EQ(Marked("\t\"x\"", "\"x\""), "    |     \"x\"\n    |     ^~~\n");
    EXPECT_EQ(Marked("\xe6\x97\xa5\xe6\x9c\xac x", "x"), "    | \xe6\x97\xa5\xe6\x9c\xac x\n    |      ^\n");
    EXPECT_EQ(Marked("e\xcc\x81 x", "x"), "    | e\xcc\x81 x\n    |   ^\n");
    EXPECT_EQ(Marked("\xf0\x9f\x8e\xac\xf0\x9f\x8e\xac!", "\xf0\x9f\x8e\xac!"),
              "    | \xf0\x9f\x8e\xac\xf0\x9f\x8e\xac!\n    |   ^~~\n");
}

TEST(MarkedLine, EscapesWhatATerminalObeys)
{
    EXPECT_EQ(Marked("\x1b[31m x", "x"), "    | \\x1b[31m x\n    |          ^\n");
    EXPECT_EQ(Marked("\xff\xe2\x80\xae x", "x"), "    | \\xff\\xe2\\x80\\xae x\n    |                  ^\n");
    EXPECT_EQ(Marked(std::string("a\0b", 3), "b"), "    | a\\x00b\n    |      ^\n");
}

TEST(MarkedLine, CutsALongLineAroundThePlace)
{
    const std::string text = std::string(1000, 'a') + "X" + std::string(1000, 'b');
    EXPECT_EQ(Marked(text, "X"), "    | ..." + std::string(70, 'a') + "X" + std::string(26, 'b') +
                                     "...\n    | " + std::string(73, ' ') + "^\n");
    const std::string marked = MarkedLine(text, 0, text.size(), Painter(false));
    EXPECT_EQ(marked, "    | " + std::string(100, 'a') + "...\n    | ^" + std::string(99, '~') + "\n");
}

TEST(ColumnsOf, KnowsTheEdgesOfItsRanges)
{
    EXPECT_EQ(ColumnsOf(0x10FF), 1U);
    EXPECT_EQ(ColumnsOf(0x1100), 2U);
    EXPECT_EQ(ColumnsOf(0x115F), 2U);
    EXPECT_EQ(ColumnsOf(0x1160), 1U);
    EXPECT_EQ(ColumnsOf(0x2FF), 1U);
    EXPECT_EQ(ColumnsOf(0x300), 0U);
    EXPECT_EQ(ColumnsOf(0x3FFFD), 2U);
    EXPECT_EQ(ColumnsOf(0x10FFFF), 1U);
}

} // namespace
