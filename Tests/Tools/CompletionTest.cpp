#include "Tools/zconf/Console/Completion.h"

#include <gtest/gtest.h>

namespace
{

using namespace Zelnor::Tool;
using Words = std::vector<std::string>;

CommandUsage Program()
{
    OptionUsage verbose{{"-v", "--verbose"}, "", {}, "Say more (or less)"};
    OptionUsage depth{{"--depth"}, "DEPTH", {"quick", "full"}, "How far; not too far"};
    OptionUsage list{{"-l", "--list"}, "LIST", {"one", "two"}, "Several", false, true, ','};
    OptionUsage codec{{"--codec"}, "CODEC", {}, "A codec"};
    CommandUsage run{
        "tool run", "Run it", {verbose, depth, list, codec}, {{{"JOB"}, "FILE"}, {{"MORE"}, "FILE"}}};
    CommandUsage dance{"tool dance", "Dance", {}, {{{"NAME"}, "TEXT", {}, "", false, true}}};
    return {"tool", "A tool", {{{"--help"}, "", {}, "Help"}}, {}, {run, dance}};
}

KnownValues Values(const CommandUsage&, const OptionUsage& option, const Words& given, const std::string&)
{
    if (option.value == "CODEC")
    {
        return {false, {"h264", "hevc", "line\nbreak", "tab\tulator"}};
    }
    return {option.value == "FILE", {option.names.front() + std::to_string(given.size())}};
}

Completion Complete(const Words& words) { return CompleteWord(Program(), words, Values); }

Words Texts(const Words& words)
{
    Words texts;
    for (const Candidate& candidate : Complete(words).candidates)
    {
        texts.push_back(candidate.text);
    }
    return texts;
}

TEST(Completion, CommandsStandFirst)
{
    EXPECT_EQ(Texts({}), (Words{"run", "dance"}));
    EXPECT_EQ(Texts({""}), (Words{"run", "dance"}));
    EXPECT_EQ(Texts({"d"}), Words{"dance"});
    EXPECT_EQ(Texts({"x"}), Words{});
}

TEST(Completion, NothingFollowsAnUnknownCommand) { EXPECT_EQ(Texts({"sleep", ""}), Words{}); }

TEST(Completion, OptionsFollowADash)
{
    EXPECT_EQ(Texts({"-"}), Words{"--help"});
    EXPECT_EQ(Texts({"run", "-"}), (Words{"-v", "--verbose", "--depth", "-l", "--list", "--codec"}));
    EXPECT_EQ(Texts({"run", "--d"}), Words{"--depth"});
}

TEST(Completion, AnOptionThatWasGivenIsNotOfferedAgainUnlessItMayBe)
{
    EXPECT_EQ(Texts({"run", "--verbose", "--depth=full", "--list", "one", "--"}),
              (Words{"--list", "--codec"}));
    EXPECT_EQ(Texts({"run", "-v", "--v"}), Words{});
}

TEST(Completion, AnOptionIsFollowedByItsValues)
{
    EXPECT_EQ(Texts({"run", "--depth", ""}), (Words{"quick", "full"}));
    EXPECT_EQ(Texts({"run", "--depth", "f"}), Words{"full"});
    EXPECT_EQ(Texts({"run", "--depth=q"}), Words{"quick"});
    EXPECT_EQ(Texts({"run", "--verbose", ""}), Words{"JOB0"});
    EXPECT_EQ(Texts({"run", "--unknown=q"}), Words{});
}

TEST(Completion, LettersMayStandTogether)
{
    EXPECT_EQ(Texts({"run", "-vl", ""}), (Words{"one", "two"}));
    EXPECT_EQ(Texts({"run", "-lone", ""}), Words{"JOB0"});
    EXPECT_EQ(Texts({"run", "-xl", ""}), Words{"JOB0"});
}

TEST(Completion, AListIsContinued)
{
    EXPECT_EQ(Texts({"run", "--list", "one,t"}), Words{"one,two"});
    EXPECT_EQ(Texts({"run", "--list=one,"}), (Words{"one,one", "one,two"}));
}

TEST(Completion, ArgumentsAreCounted)
{
    EXPECT_EQ(Texts({"run", "a", ""}), Words{"MORE1"});
    EXPECT_EQ(Texts({"run", "--codec", "a", ""}), Words{"JOB0"});
    EXPECT_EQ(Texts({"dance", "a", "b", ""}), Words{"NAME2"});
}

TEST(Completion, OptionsAreOfferedWhereNoArgumentIsLeft)
{
    EXPECT_EQ(Texts({"run", "a", "b", "--verbose", "--depth", "full", ""}),
              (Words{"-l", "--list", "--codec"}));
}

TEST(Completion, NothingIsAnOptionAfterTwoDashes)
{
    EXPECT_EQ(Texts({"run", "--", "--depth", ""}), Words{"MORE1"});
    EXPECT_EQ(Texts({"run", "--", "-"}), Words{});
}

TEST(Completion, FilesAreLeftToTheShell)
{
    EXPECT_TRUE(Complete({"run", ""}).files);
    EXPECT_FALSE(Complete({"run", "--codec", ""}).files);
    EXPECT_FALSE(Complete({""}).files);
}

TEST(Completion, ANameThatWouldBreakTheAnswerIsLeftOut)
{
    EXPECT_EQ(Texts({"run", "--codec", ""}), (Words{"h264", "hevc"}));
}

TEST(Completion, TheHelpIsBrief)
{
    EXPECT_EQ(Complete({"run", "--verb"}).candidates.front().help, "Say more");
    EXPECT_EQ(Complete({"run", "--dep"}).candidates.front().help, "How far");
    EXPECT_EQ(Complete({"r"}).candidates.front().help, "Run it");
}

} // namespace
