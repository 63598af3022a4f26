#include "Tools/zconf/Console/CommandUsage.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/ShellCompletion.h"
#include "Tools/zconf/Console/CommandLine.h"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>

#include <gtest/gtest.h>

#include <stdexcept>

namespace
{

using namespace Zelnor::Tool;
using Words = std::vector<std::string>;

const CommandUsage& Command(const CommandUsage& usage, const std::string& name)
{
    for (const CommandUsage& command : usage.commands)
    {
        if (command.Name() == name)
        {
            return command;
        }
    }
    throw std::runtime_error("no command " + name);
}

const OptionUsage& Option(const CommandUsage& command, const std::string& name)
{
    for (const auto* const list : {&command.options, &command.arguments})
    {
        for (const OptionUsage& option : *list)
        {
            if (option.names.back() == name)
            {
                return option;
            }
        }
    }
    throw std::runtime_error("no option " + name);
}

/// Calls `look` with each command.
template <typename Look>
void ForEachCommand(const CommandUsage& usage, const Look& look)
{
    look(usage);
    for (const CommandUsage& command : usage.commands)
    {
        ForEachCommand(command, look);
    }
}

TEST(CommandUsage, HoldsTheCommandsBelowEachOther)
{
    const CommandUsage program = ProgramUsage();
    EXPECT_EQ(program.path, "zconf");
    EXPECT_EQ(Command(Command(program, "job"), "run").path, "zconf job run");
}

TEST(CommandUsage, KnowsWhatAnOptionTakes)
{
    const CommandUsage program = ProgramUsage();
    const CommandUsage& run = Command(Command(program, "job"), "run");
    EXPECT_EQ(Option(run, "--verify").value, "DEPTH");
    EXPECT_EQ(Option(run, "--verify").choices, (Words{"quick", "full", "off"}));
    EXPECT_EQ(Option(run, "--dry-run").names, (Words{"-n", "--dry-run"}));
    EXPECT_EQ(Option(run, "--dry-run").value, "");
    EXPECT_EQ(Option(run, "JOB").value, "FILE");
    EXPECT_TRUE(Option(run, "JOB").isRequired);
    EXPECT_EQ(Option(Command(program, "bitrate"), "--quality").value, "INT");
    EXPECT_EQ(Option(Command(program, "bitrate"), "--quality").choices, Words{});
    EXPECT_EQ(Option(Command(program, "convert"), "--copy").delimiter, ',');
    EXPECT_TRUE(Option(Command(program, "validate"), "FILE").isRepeatable);
    EXPECT_FALSE(Option(Command(program, "convert"), "--max-size").isRepeatable);
}

TEST(CommandUsage, EveryCommandAndOptionSaysWhatItIsFor)
{
    ForEachCommand(ProgramUsage(), [](const CommandUsage& command) {
        EXPECT_GT(command.help.size(), 10U) << command.path;
        for (const auto* const list : {&command.options, &command.arguments})
        {
            for (const OptionUsage& option : *list)
            {
                EXPECT_GT(option.help.size(), 9U) << command.path << " " << option.names.front();
            }
        }
    });
}

TEST(CommandUsage, AGroupHasNoArguments)
{
    ForEachCommand(ProgramUsage(), [](const CommandUsage& command) {
        EXPECT_TRUE(command.commands.empty() || command.arguments.empty()) << command.path;
    });
}

/// Of the program as it is made for a command line.
CommandUsage UsageFor(const std::string& line)
{
    Words words;
    boost::split(words, line, boost::is_any_of(" "));
    std::vector<const char*> arguments;
    for (const std::string& word : words)
    {
        arguments.push_back(word.c_str());
    }
    return UsageOf(*MakeProgram([&arguments](CLI::App& app) {
        AddNamedCommand(app, static_cast<int>(arguments.size()), arguments.data());
    }),
                   "zconf");
}

TEST(CommandUsage, IsOfOneCommandAloneWhereTheLineBeginsWithIt)
{
    ForEachCommand(ProgramUsage(), [](const CommandUsage& command) {
        if (!command.commands.empty() || command.path == "zconf help")
        {
            return;
        }
        const CommandUsage program = UsageFor(command.path);
        ASSERT_EQ(program.commands.size(), 1U) << command.path;
        bool isThere = false;
        ForEachCommand(program, [&](const CommandUsage& made) {
            isThere = isThere || (made.path == command.path && made.options.size() == command.options.size());
        });
        EXPECT_TRUE(isThere) << command.path;
    });
}

TEST(CommandUsage, IsOfAllCommandsWhereTheLineBeginsOtherwise)
{
    const std::size_t all = ProgramUsage().commands.size();
    for (const char* const line :
         {"zconf", "zconf job", "zconf job nwe", "zconf --help", "zconf help job", "zconf new", "zconf  new"})
    {
        EXPECT_EQ(UsageFor(line).commands.size(), all) << line;
    }
}

} // namespace
