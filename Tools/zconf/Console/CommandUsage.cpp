#include "Tools/zconf/Console/CommandUsage.h"

#include <sstream>

namespace Zelnor::Tool
{

namespace
{

/// CLI11 writes what a value must be behind its type: "FORMAT:{dot,svg}", "INT:INT in [1 - 32]".
void ReadType(const std::string& type, OptionUsage& usage)
{
    const std::size_t end = type.find(':');
    usage.value = type.substr(0, end);
    if (end == std::string::npos || type.compare(end, 2, ":{") != 0 || type.back() != '}')
    {
        return;
    }
    std::istringstream choices(type.substr(end + 2, type.size() - end - 3));
    for (std::string choice; std::getline(choices, choice, ',');)
    {
        usage.choices.push_back(choice);
    }
}

OptionUsage UsageOf(const CLI::Option& option)
{
    OptionUsage usage;
    if (!option.nonpositional())
    {
        usage.names.push_back(option.get_name(true));
    }
    for (const std::string& name : option.get_snames())
    {
        usage.names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames())
    {
        usage.names.push_back("--" + name);
    }
    const bool isFlag = option.get_items_expected_max() == 0;
    if (!isFlag)
    {
        ReadType(option.get_type_name(), usage);
    }
    usage.help = option.get_description();
    usage.isRequired = option.get_required();
    usage.isRepeatable = option.get_items_expected_max() > 1;
    usage.delimiter = option.get_delimiter();
    return usage;
}

} // namespace

std::string CommandUsage::Name() const { return path.substr(path.rfind(' ') + 1); }

CommandUsage UsageOf(const CLI::App& app, const std::string& path)
{
    CommandUsage usage;
    usage.path = path;
    usage.help = app.get_description();
    for (const CLI::Option* const option : app.get_options())
    {
        (option->nonpositional() ? usage.options : usage.arguments).push_back(UsageOf(*option));
    }
    for (const CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; }))
    {
        usage.commands.push_back(UsageOf(*command, path + " " + command->get_name()));
    }
    return usage;
}

} // namespace Zelnor::Tool
