#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Names.h"
#include "Tools/zconf/Console/Output.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

/// The command that the words name, and what it is called.
struct Topic
{
    const CLI::App* command;
    std::string path;
};

Topic FindTopic(const CLI::App& app, const std::vector<std::string>& words)
{
    Topic topic = {&app, app.get_name()};
    for (const std::string& word : words)
    {
        const std::vector<std::string> known = CommandNames(*topic.command);
        if (std::find(known.begin(), known.end(), word) == known.end())
        {
            ThrowUnknownName("command of " + topic.path, word, known);
        }
        topic = {topic.command->get_subcommand(word), topic.path + " " + word};
    }
    return topic;
}

} // namespace

void AddHelpCommand(CLI::App& app)
{
    CLI::App* const command = AddCommand(app, "help", "Show the help of a command");
    const auto words = std::make_shared<std::vector<std::string>>();
    command->add_option("COMMAND", *words, "The command, such as: job new");
    OnRun(*command, [&app, words] {
        const Topic topic = FindTopic(app, *words);
        WriteText(app.get_formatter()->make_help(topic.command, topic.path, CLI::AppFormatMode::Normal));
        return kExitSuccess;
    });
}

} // namespace Zelnor::Tool
