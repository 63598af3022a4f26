#include "Tools/zconf/Commands/ShellCompletion.h"

#include "Media/Planning/SettingPaths.h"
#include "Media/Presets/PresetFolders.h"
#include "Tools/zconf/Commands/Catalogue.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/JobOptions.h"
#include "Tools/zconf/Commands/ListCommand.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Completion.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Names.h"
#include "Tools/zconf/Console/Output.h"

#include <algorithm>
#include <map>

namespace Zelnor::Tool
{

namespace
{

/// The codecs as `zconf list codecs` names them, then as people type them.
std::vector<std::string> CodecWords()
{
    std::vector<std::string> words = CodecNames();
    const std::size_t count = words.size();
    for (std::size_t i = 0; i < count; ++i)
    {
        words.push_back(BareName(words[i]));
    }
    return words;
}

std::vector<std::string> Presets() { return Media::ListPresets(Media::DefaultPresetFolders()); }

struct ValueKind
{
    bool files;
    std::vector<std::string> (*names)();
};

std::vector<std::string> NoNames() { return {}; }

/// By what the commands call their values and arguments.
const std::map<std::string, ValueKind>& ValueKinds()
{
    static const std::map<std::string, ValueKind> s_kinds = {
        {"CODEC", {false, CodecWords}},     {"CONTAINER", {false, ContainerNames}},
        {"FILE", {true, NoNames}},          {"FOLDER", {true, NoNames}},
        {"GROUP", {false, FileGroupNames}}, {"KIND,...", {false, CopiedKindNames}},
        {"NAME", {false, AllNames}},        {"PRESET", {true, Presets}},
    };
    return s_kinds;
}

/// The commands that can follow those that `zconf help` was given.
std::vector<std::string> CommandsBelow(const std::vector<std::string>& given)
{
    const CommandUsage program = ProgramUsage();
    const CommandUsage* command = &program;
    for (const std::string& word : given)
    {
        const auto found = std::find_if(command->commands.begin(), command->commands.end(),
                                        [&](const CommandUsage& below) { return below.Name() == word; });
        if (found == command->commands.end())
        {
            return {};
        }
        command = &*found;
    }
    std::vector<std::string> names;
    for (const CommandUsage& below : command->commands)
    {
        names.push_back(below.Name());
    }
    return names;
}

KnownValues ValuesFor(const CommandUsage& command, const OptionUsage& option,
                      const std::vector<std::string>& given, const std::string& typed)
{
    // An argument whose value is of no particular type is known by its name.
    const bool isUnnamed = option.value == "TEXT" && option.names.front().front() != '-';
    const std::string& kind = isUnnamed ? option.names.front() : option.value;
    if (kind == "COMMAND")
    {
        return {false, CommandsBelow(given)};
    }
    if (kind == "FILTER")
    {
        return {false, command.path == "zconf preset list" ? Presets() : NamesInList(command.Name())};
    }
    if (kind == "PATH=VALUE")
    {
        return {false, Media::CompleteSetting(typed)};
    }
    const auto found = ValueKinds().find(kind);
    return found == ValueKinds().end() ? KnownValues{}
                                       : KnownValues{found->second.files, found->second.names()};
}

} // namespace

CommandUsage ProgramUsage() { return UsageOf(*MakeProgram(AddAllCommands), "zconf"); }

int RunShellCompletion(int argc, char** argv)
{
    const std::vector<std::string> words(argv + std::min(argc, 2), argv + argc);
    const Completion completion = CompleteWord(ProgramUsage(), words, ValuesFor);
    std::string answer = completion.files ? "files\n" : "words\n";
    for (const Candidate& candidate : completion.candidates)
    {
        answer += candidate.text + (candidate.help.empty() ? "" : "\t" + candidate.help) + "\n";
    }
    WriteText(answer);
    return kExitSuccess;
}

} // namespace Zelnor::Tool
