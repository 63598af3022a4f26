#include "Media/Running/ShellWords.h"

#include "Tests/Support/Process.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor::Testing;
using Zelnor::Media::ShellLine;

TEST(ShellLine, LeavesPlainWordsUnquoted)
{
    EXPECT_EQ(ShellLine({"ffmpeg", "-c:0", "libx264", "-filter:0", "scale=64:48,setsar=1/1", "file:out.mp4"}),
              "ffmpeg -c:0 libx264 -filter:0 scale=64:48,setsar=1/1 file:out.mp4");
}

TEST(ShellLine, QuotesEverythingElse)
{
    EXPECT_EQ(ShellLine({"a b", "", "it's", "$HOME", "*", "\n"}), "'a b' '' 'it'\\''s' '$HOME' '*' '\n'");
    EXPECT_EQ(ShellLine({}), "");
}

TEST(ShellLine, ShowsWhatNobodyWouldSee)
{
    EXPECT_EQ(ShellLine({"a\xe2\x80\xae"
                         "b"}),
              "'a'\"$(printf '\\342\\200\\256')\"'b'");
    EXPECT_EQ(ShellLine({"\x1b[31m"}), "''\"$(printf '\\033')\"'[31m'");
    EXPECT_EQ(ShellLine({"\xff"}), "''\"$(printf '\\377')\"''");
    EXPECT_EQ(ShellLine({"\xef\xbf\xbe"}), "''\"$(printf '\\357\\277\\276')\"''");
    EXPECT_EQ(ShellLine({"\xc3\xa4"}), "'\xc3\xa4'");
}

/// The words as the shell splits the line, each with a NUL behind it.
std::string SplitByShell(const char* shell, const std::string& line)
{
    return RunProcess({shell, "-c", "printf '%s\\0' " + line}).output;
}

TEST(ShellLine, IsSplitByAShellIntoTheSameWords)
{
    std::mt19937 random(7);
    const std::string letters = "a'\"\\ \t\n$`!*?[]{}()<>|&;#~=%^\xc3\xa4\xff-\x1b\xe2\x80\xae\r";
    for (int round = 0; round < 40; ++round)
    {
        std::vector<std::string> words(1 + random() % 6);
        std::string expected;
        for (std::string& word : words)
        {
            for (auto length = random() % 12; length > 0; --length)
            {
                word += letters[random() % letters.size()];
            }
            expected += word + '\0';
        }
        SCOPED_TRACE(ShellLine(words));
        EXPECT_EQ(SplitByShell("sh", ShellLine(words)), expected);
        EXPECT_EQ(SplitByShell("bash", ShellLine(words)), expected);
    }
}

} // namespace
