#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor::Testing;
using testing::HasSubstr;

using CommandLine = ZconfTest;

/// Every level of the command line, without the program.
const std::vector<std::vector<std::string>> kLevels = {
    {},
    {"job"},
    {"job", "new"},
    {"job", "show"},
    {"job", "check"},
    {"job", "draw"},
    {"job", "run"},
    {"job", "verify"},
    {"job", "diff"},
    {"convert"},
    {"validate"},
    {"probe"},
    {"list"},
    {"list", "codecs"},
    {"list", "formats"},
    {"list", "muxers"},
    {"list", "decoders"},
    {"list", "encoders"},
    {"list", "accelerators"},
    {"list", "presets"},
    {"list", "pixel-formats"},
    {"list", "sample-formats"},
    {"list", "layouts"},
    {"explain"},
    {"bitrate"},
    {"extensions"},
    {"help"},
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
            // CLI11 lays out the rest, otherwise in each of its versions.
            EXPECT_THAT(result.output, HasSubstr(usage + " "));
        }
    }
}

TEST_F(CommandLine, TheHelpNamesEveryCommandAndTheExitCodes)
{
    const std::string help = Zconf({"--help"}).output;
    for (const auto& level : kLevels)
    {
        if (level.size() == 1)
        {
            EXPECT_THAT(help, HasSubstr("\n  " + level.front() + " "));
        }
    }
    EXPECT_THAT(help,
                testing::EndsWith(
                    "The file name \"-\" means standard input or standard output.\n"
                    "Exit codes: 0 success, 1 the answer is no, 2 error, 3 ffmpeg failed, 4 an output file "
                    "is not what its job says.\n"));
}

TEST_F(CommandLine, EveryCommandThatAnswersCanWriteJson)
{
    for (const auto& level : kLevels)
    {
        const bool answers =
            !level.empty() && level != std::vector<std::string>{"job"} &&
            level != std::vector<std::string>{"list"} && level != std::vector<std::string>{"job", "new"} &&
            level != std::vector<std::string>{"help"} && level != std::vector<std::string>{"job", "draw"};
        const std::string help = Zconf(With(level, "--help")).output;
        EXPECT_EQ(help.find("--json") != std::string::npos, answers) << help;
        EXPECT_EQ(help.find("Write JSON\n") != std::string::npos, answers) << help;
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

TEST_F(CommandLine, AnUnexpectedArgumentIsNamed)
{
    ExpectFailure(Zconf({"dance"}), "Unexpected argument 'dance' (see zconf --help)");
    ExpectFailure(Zconf({"job", "dance", "j.json"}), "Unexpected argument 'dance' (see zconf job --help)");
    ExpectFailure(Zconf({"job", "show", "--dance", "j"}),
                  "Unexpected argument '--dance' (see zconf job show --help)");
    ExpectFailure(Zconf({"job", "show", "a", "b"}), "Unexpected argument 'b' (see zconf job show --help)");
}

TEST_F(CommandLine, AMisspeltCommandOrOptionIsRecognised)
{
    ExpectFailure(Zconf({"jab"}), "Unexpected argument 'jab'; did you mean 'job'? (see zconf --help)");
    ExpectFailure(Zconf({"convrt", "a", "b"}),
                  "Unexpected argument 'convrt'; did you mean 'convert'? (see zconf --help)");
    ExpectFailure(Zconf({"job", "drow", "j.json"}),
                  "Unexpected argument 'drow'; did you mean 'draw' or 'show'? (see zconf job --help)");
    ExpectFailure(Zconf({"job", "show", "--jsno", "j"}),
                  "Unexpected argument '--jsno'; did you mean '--json'? (see zconf job show --help)");
    ExpectFailure(
        Zconf({"convert", "a", "b", "--maxsize=1x1"}),
        "Unexpected argument '--maxsize=1x1'; did you mean '--max-size'? (see zconf convert --help)");
}

TEST_F(CommandLine, HelpOfACommandIsShownByItsName)
{
    EXPECT_EQ(Zconf({"help"}).output, Zconf({"--help"}).output);
    EXPECT_EQ(Zconf({"help", "job", "new"}).output, Zconf({"job", "new", "--help"}).output);
    EXPECT_EQ(Zconf({"help", "convert"}).output, Zconf({"convert", "--help"}).output);
    ExpectFailure(Zconf({"help", "job", "shwo"}),
                  "'shwo' is not a known command of zconf job; did you mean 'show'?");
    ExpectFailure(Zconf({"help", "convert", "x"}), "'x' is not a known command of zconf convert");
}

TEST_F(CommandLine, TheOptionForTheDocumentIsTheSameInEveryCommandAndNamesItsOldName)
{
    for (const auto& [command, oldName] : {std::pair("new", "--job"), std::pair("draw", "--output")})
    {
        const std::string help = Zconf({"job", command, "--help"}).output;
        EXPECT_THAT(help, HasSubstr(std::string("-o,--document,") + oldName)); // CLI11 lays out the rest.
    }
}

TEST_F(CommandLine, AMissingArgumentIsNamed)
{
    ExpectFailure(Zconf({"job", "show"}), "JOB is required (see zconf job show --help)");
    ExpectFailure(Zconf({"job", "new", "--preset", "mp3", "--output", "o"}),
                  "--input is required (see zconf job new --help)");
}

TEST_F(CommandLine, ALineBreakInAnArgumentDoesNotBreakTheMessage)
{
    ExpectFailure(Zconf({"a\nb\x1b[31m"}), "Unexpected argument 'a\\nb\\x1b[31m' (see zconf --help)");
}

} // namespace
