#include "Media/Presets/PresetStore.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Description.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Names.h"
#include "Tools/zconf/Console/Output.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

struct PresetListArguments
{
    std::string filter;
    bool json = false;
};

bool Matches(const Media::StoredPreset& preset, const std::string& filter)
{
    const std::string wanted = LowerCase(filter);
    for (const std::string* const text : {&preset.name, &preset.title, &preset.makes})
    {
        if (LowerCase(*text).find(wanted) != std::string::npos)
        {
            return true;
        }
    }
    return false;
}

Description ForScripts(const Media::StoredPreset& preset)
{
    return {{"name", preset.name},   {"title", preset.title}, {"container", preset.container},
            {"makes", preset.makes}, {"file", preset.file},   {"fault", preset.fault}};
}

Description ForPeople(const Media::StoredPreset& preset)
{
    return {{"name", preset.name},
            {"title", preset.fault.empty() ? preset.title : "cannot be used: " + preset.fault},
            {"folder", std::filesystem::path(preset.file).parent_path().string()}};
}

int RunPresetList(const PresetListArguments& options)
{
    std::vector<Description> descriptions;
    for (const Media::StoredPreset& preset : Media::ListStoredPresets())
    {
        if (Matches(preset, options.filter))
        {
            descriptions.push_back(options.json ? ForScripts(preset) : ForPeople(preset));
        }
    }
    if (options.json)
    {
        WriteJsonAnswer(descriptions);
    }
    else
    {
        WriteText(ColumnsText(descriptions, Painter::ForStandardOutput()));
    }
    return descriptions.empty() ? kExitNo : kExitSuccess;
}

} // namespace

void AddPresetListCommand(CLI::App& preset)
{
    CLI::App* const command =
        AddCommand(preset, "list", "List the presets that are found by name: name, title, folder");
    const auto options = std::make_shared<PresetListArguments>();
    command->add_option(
        "FILTER", options->filter,
        "Show only presets whose name, title or streams contain this text, ignoring case; exit "
        "code 1 if there are none");
    AddJsonFlag(*command, options->json);
    command->footer(
        "Presets are files named like the preset, with the extension .json. The first folder that has "
        "one counts:\nzelnor/presets in $XDG_DATA_HOME (~/.local/share) and in $XDG_DATA_DIRS "
        "(/usr/local/share:/usr/share),\nthen those that are installed with the program.");
    OnRun(*command, [options] { return RunPresetList(*options); });
}

} // namespace Zelnor::Tool
