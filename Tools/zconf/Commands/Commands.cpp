#include "Tools/zconf/Commands/Commands.h"

#include "Tools/zconf/Console/CommandLine.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

namespace Zelnor::Tool
{

namespace
{

struct Group
{
    const char* name;
    const char* description;
};

constexpr std::array<Group, 3> kGroups = {{
    {"job", "Make, show, check, draw, run, verify and compare transcoding jobs"},
    {"batch", "Make and run batches: many jobs, kept in one folder"},
    {"preset", "List, show and make presets"},
}};

struct Command
{
    std::string_view group; ///< empty: it stands right below the program
    std::string_view name;
    void (*add)(CLI::App&);
};

/// In the order of the help. The groups stand before all others.
constexpr Command kCommands[] = {
    {"job", "new", AddJobNewCommand},
    {"job", "show", AddJobShowCommand},
    {"job", "check", AddJobCheckCommand},
    {"job", "draw", AddJobDrawCommand},
    {"job", "run", AddJobRunCommand},
    {"job", "verify", AddJobVerifyCommand},
    {"job", "diff", AddJobDiffCommand},
    {"batch", "new", AddBatchNewCommand},
    {"batch", "run", AddBatchRunCommand},
    {"batch", "status", AddBatchStatusCommand},
    {"batch", "report", AddBatchReportCommand},
    {"preset", "list", AddPresetListCommand},
    {"preset", "show", AddPresetShowCommand},
    {"preset", "new", AddPresetNewCommand},
    {"", "convert", AddConvertCommand},
    {"", "validate", AddValidateCommand},
    {"", "probe", AddProbeCommand},
    {"", "list", AddListCommand},
    {"", "explain", AddExplainCommand},
    {"", "bitrate", AddBitrateCommand},
    {"", "extensions", AddExtensionsCommand},
    {"", "help", AddHelpCommand},
};

CLI::App& AddGroup(CLI::App& app, std::string_view name)
{
    const auto* const group =
        std::find_if(kGroups.begin(), kGroups.end(), [name](const Group& row) { return row.name == name; });
    return *AddCommandGroup(app, group->name, group->description);
}

} // namespace

void AddAllCommands(CLI::App& app)
{
    std::string_view last;
    CLI::App* parent = &app;
    for (const Command& command : kCommands)
    {
        if (command.group != last)
        {
            parent = command.group.empty() ? &app : &AddGroup(app, command.group);
            last = command.group;
        }
        command.add(*parent);
    }
}

void AddNamedCommand(CLI::App& app, int argc, const char* const* argv)
{
    const std::string_view first = argc > 1 ? argv[1] : "";
    const std::string_view second = argc > 2 ? argv[2] : "";
    const auto* const command =
        std::find_if(std::begin(kCommands), std::end(kCommands), [first, second](const Command& row) {
            return row.group.empty() ? row.name == first : row.group == first && row.name == second;
        });
    if (command == std::end(kCommands) || command->add == AddHelpCommand)
    {
        AddAllCommands(app);
        return;
    }
    command->add(command->group.empty() ? app : AddGroup(app, command->group));
}

} // namespace Zelnor::Tool
