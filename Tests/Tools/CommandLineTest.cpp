#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor::Testing;
using testing::HasSubstr;

using CommandLine = ZconfTest;

/// Every level of the command line, without the program.
const std::vector<std::vector<std::string>> kLevels = {
    {}, {"job"}, {"job", "new"}, {"job", "show"}, {"job", "check"}, {"job", "draw"},
};

std::vector<std::string> With(std::vector<std::string> words, const std::string& word)
{
    words.push_back(word);
    return words;
}

TEST_F(CommandLine, EveryLevelHasHelpOnStandardOutput)
{
    for (const auto& level : kLevels)
    {
        std::string usage = "Usage: zconf";
        for (const std::string& word : level)
        {
            usage += " " + word;
        }
        for (const char* const flag : {"--help", "-h"})
        {
            const ProcessResult result = Zconf(With(level, flag));
            ExpectQuietSuccess(result);
            EXPECT_THAT(result.output, HasSubstr(usage + " "));
        }
    }
}

TEST_F(CommandLine, EveryLevelHasTheVersion)
{
    for (const auto& level : kLevels)
    {
        const ProcessResult result = Zconf(With(level, "--version"));
        ExpectQuietSuccess(result);
        EXPECT_EQ(result.output, "zconf 1.0.0\n");
    }
}

TEST_F(CommandLine, ACommandIsRequired)
{
    ExpectFailure(Zconf({}), "A subcommand is required (see zconf --help)");
    ExpectFailure(Zconf({"job"}), "A subcommand is required (see zconf job --help)");
}

TEST_F(CommandLine, WhatIsNotUnderstoodIsNamed)
{
    ExpectFailure(Zconf({"jab"}), "'jab' is not understood (see zconf --help)");
    ExpectFailure(Zconf({"job", "shew", "j.json"}), "'shew' is not understood (see zconf job --help)");
    ExpectFailure(Zconf({"job", "show", "--jsno", "j"}),
                  "'--jsno' is not understood (see zconf job show --help)");
    ExpectFailure(Zconf({"job", "show", "a", "b"}), "'b' is not understood (see zconf job show --help)");
}

TEST_F(CommandLine, AMissingArgumentIsNamed)
{
    ExpectFailure(Zconf({"job", "show"}), "JOB is required (see zconf job show --help)");
    ExpectFailure(Zconf({"job", "new", "--preset", "mp3", "--output", "o"}),
                  "--input is required (see zconf job new --help)");
}

TEST_F(CommandLine, ALineBreakInAnArgumentDoesNotBreakTheMessage)
{
    ExpectFailure(Zconf({"a\nb\x1b[31m"}), "'a\\nb\\x1b[31m' is not understood (see zconf --help)");
}

} // namespace
