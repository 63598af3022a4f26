#include "Tools/zconf/Console/Text.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor::Tool;

TEST(Printable, LeavesPlainTextAsItIs)
{
    for (const std::string text :
         {"", "clip.mkv", "a \\n b", "\"q\" 'q'", "\xc3\xa4", "\xe6\x97\xa5\xe6\x9c\xac", "\xf0\x9f\x8e\xac",
          "\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d"})
    {
        EXPECT_EQ(Printable(text), text);
    }
}

TEST(Printable, EscapesEveryC0ControlAndDelete)
{
    EXPECT_EQ(Printable("two\nlines\r\t"), "two\\nlines\\r\\t");
    EXPECT_EQ(Printable(std::string("\0\x1b[31m\x7f", 7)), "\\x00\\x1b[31m\\x7f");
    for (char c = 0; c < 0x20; ++c)
    {
        EXPECT_EQ(Printable(std::string(1, c)).front(), '\\') << static_cast<int>(c);
    }
}

TEST(Printable, EscapesEveryC1Control)
{
    EXPECT_EQ(Printable("\xc2\x9b"), "\\xc2\\x9b");
    for (int c = 0x80; c <= 0x9F; ++c)
    {
        EXPECT_EQ(Printable(std::string("\xc2") + static_cast<char>(c)).substr(0, 6), "\\xc2\\x") << c;
    }
    EXPECT_EQ(Printable("\xc2\xa0"), "\xc2\xa0");
}

TEST(Printable, EscapesBidirectionalControlsAndLineSeparators)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"\xd8\x9c", "\\xd8\\x9c"},          {"\xe2\x80\x8e", "\\xe2\\x80\\x8e"},
        {"\xe2\x80\x8f", "\\xe2\\x80\\x8f"}, {"\xe2\x80\xa8", "\\xe2\\x80\\xa8"},
        {"\xe2\x80\xa9", "\\xe2\\x80\\xa9"}, {"\xe2\x80\xaa", "\\xe2\\x80\\xaa"},
        {"\xe2\x80\xae", "\\xe2\\x80\\xae"}, {"\xe2\x81\xa6", "\\xe2\\x81\\xa6"},
        {"\xe2\x81\xa9", "\\xe2\\x81\\xa9"},
    };
    for (const auto& [text, expected] : cases)
    {
        EXPECT_EQ(Printable("a" + text + "b"), "a" + expected + "b");
    }
}

TEST(Printable, EscapesOtherCharactersThatNobodySees)
{
    EXPECT_EQ(Printable("in\xe2\x80\x8bvoice.mp4"), "in\\xe2\\x80\\x8bvoice.mp4"); // zero width space
    EXPECT_EQ(Printable("\xef\xbb\xbfjob.json"), "\\xef\\xbb\\xbfjob.json");       // byte order mark
    EXPECT_EQ(Printable("\xf3\xa0\x81\x81"), "\\xf3\\xa0\\x81\\x81");              // a tag
}

TEST(Printable, LeavesTheNeighboursOfBidirectionalControls)
{
    for (const std::string text : {"\xd8\x9b", "\xd8\x9d", "\xe2\x80\x8d", "\xe2\x80\x90", "\xe2\x80\xa7",
                                   "\xe2\x80\xaf", "\xe2\x81\x9f", "\xe2\x81\xb0"})
    {
        EXPECT_EQ(Printable(text), text);
    }
}

TEST(Printable, EscapesBytesThatAreNotUtf8)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"\xff", "\\xff"},
        {"\x80", "\\x80"},
        {"\xc3", "\\xc3"},
        {"\xc3(", "\\xc3("},
        {"\xc0\xaf", "\\xc0\\xaf"},                   // overlong
        {"\xe0\x80\xaf", "\\xe0\\x80\\xaf"},          // overlong
        {"\xf0\x80\x80\xaf", "\\xf0\\x80\\x80\\xaf"}, // overlong
        {"\xed\xa0\x80", "\\xed\\xa0\\x80"},          // surrogate
        {"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"}, // beyond U+10FFFF
        {"\xe6\x97\xc3\xa4", "\\xe6\\x97\xc3\xa4"},   // cut by another character
    };
    for (const auto& [text, expected] : cases)
    {
        EXPECT_EQ(Printable(text), expected);
    }
}

TEST(Printable, MakesEveryTextPrintableOnce)
{
    std::string all;
    for (int c = 0; c < 256; ++c)
    {
        all += static_cast<char>(c);
    }
    const std::string printable = Printable(all);
    EXPECT_EQ(Printable(printable), printable);
}

TEST(Columns, CountsCharacters)
{
    EXPECT_EQ(Columns(""), 0U);
    EXPECT_EQ(Columns("abc"), 3U);
    EXPECT_EQ(Columns("\xc3\xa4\xe6\x97\xa5\xf0\x9f\x8e\xac"), 3U);
}

} // namespace
