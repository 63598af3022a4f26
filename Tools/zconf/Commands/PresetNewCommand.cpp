#include "Media/Planning/NewPreset.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Presets/PresetFolders.h"
#include "Media/Running/Files.h"
#include "Media/Validating/DocumentFault.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Input.h"
#include "Tools/zconf/Console/Output.h"

#include "Conf/Interfaces/IPreset.h"
#include "Core/Interfaces/JsonMemory.h"
#include "Core/Interfaces/JsonStream.h"
#include "Core/Interfaces/PropertyEvents.h"

#include <rapidjson/prettywriter.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

struct PresetNewArguments
{
    std::string media;
    std::string preset;
    std::string document = "-";
    std::string title;
    std::vector<std::string> settings;
    bool overwrite = false;
};

/// A preset is named like its file; one that is written to standard output like what it is made from.
std::string NameOf(const PresetNewArguments& options)
{
    const std::string& origin = options.media.empty() ? options.preset : options.media;
    const std::string& file = IsStandardStream(options.document) ? origin : options.document;
    const std::string name = std::filesystem::path(file).stem().string();
    return name.empty() || IsStandardStream(name) ? "preset" : name;
}

Media::NewPreset MakeFrom(const PresetNewArguments& options, const std::string& name)
{
    if (!options.media.empty())
    {
        if (IsStandardStream(options.media))
        {
            throw ToolError("--from needs a named file, not standard input");
        }
        return Media::MakePresetLike(Media::ProbeMedia(options.media), name);
    }
    const std::string file =
        IsStandardStream(options.preset) ? options.preset : Media::FindPreset(options.preset);
    return {Media::PresetFile::Read(*OpenInput(file), InputName(file))->GetProperty()};
}

/// As presets are written by hand: a line for each key.
std::string TextOf(const Core::Property& preset)
{
    using Writer = rapidjson::PrettyWriter<Core::JsonZelnorStreamOut, rapidjson::UTF8<>, rapidjson::UTF8<>,
                                           Core::JsonMemory>;
    const auto output = Core::MemoryDataOutput::Create();
    Core::JsonZelnorStreamOut stream(*output);
    Writer writer(stream);
    writer.SetIndent(' ', 2);
    writer.SetFormatOptions(rapidjson::kFormatSingleLineArray);
    Core::PropertyEvents<Writer>(writer, false).Record(preset);
    stream.Put('\n');
    stream.Flush();
    return output->GetData();
}

/// \throw ToolError with every fault
void RequireValid(const std::string& text)
{
    std::string reasons;
    for (const Media::DocumentFault& fault : Media::ValidateDocument(text).faults)
    {
        reasons += (reasons.empty() ? "" : "; ") + fault.Sentence();
    }
    if (!reasons.empty())
    {
        throw ToolError("The preset would not be valid: " + reasons);
    }
}

int RunPresetNew(const PresetNewArguments& options)
{
    if (options.media.empty() == options.preset.empty())
    {
        throw ToolError("A preset is made from a media file (--from) or from a preset (--preset)");
    }
    if (!options.media.empty() && !IsStandardStream(options.document) &&
        Media::IsSameFile(options.media, options.document))
    {
        throw ToolError("The preset and the media file are the same file: '" + options.document + "'");
    }
    std::vector<Media::SettingOverride> settings;
    for (const std::string& setting : options.settings)
    {
        settings.push_back(Media::ParseSetting(setting));
    }
    const std::string name = NameOf(options);
    const Media::NewPreset origin = MakeFrom(options, name);
    Media::NewPreset made = Media::ChangePreset(origin.record, name, settings);
    if (!options.title.empty())
    {
        made.record.SetChildT(Conf::IPreset::KEY_NAME, options.title);
    }
    const std::string text = TextOf(made.record);
    RequireValid(text);
    made.notes.insert(made.notes.begin(), origin.notes.begin(), origin.notes.end());
    for (const std::string& note : made.notes)
    {
        ReportNote(note);
    }
    if (options.overwrite || IsStandardStream(options.document))
    {
        WriteJsonDocument(options.document,
                          [&text](const auto& output) { output->Write(text.data(), text.size()); });
    }
    else
    {
        WriteNewDocument(options.document, text);
    }
    return kExitSuccess;
}

} // namespace

void AddPresetNewCommand(CLI::App& preset)
{
    CLI::App* const command = AddCommand(
        preset, "new", "Make a preset from a media file (\"more like this\") or from another preset");
    const auto options = std::make_shared<PresetNewArguments>();
    CLI::Option* const media =
        command
            ->add_option(
                "--from", options->media,
                "A media file: the preset makes files with its container, codecs, sizes and bitrates")
            ->type_name("FILE");
    command
        ->add_option(
            "-p,--preset", options->preset,
            "The name of a preset (see zconf preset list), or a preset file: a name with a slash, or "
            "with the extension .json")
        ->type_name("PRESET")
        ->excludes(media);
    command
        ->add_option("--set", options->settings,
                     "A setting of the new preset, as video.bitrate=5000000, audio[1].layout=MONO or "
                     "container=matroska; may be repeated")
        ->type_name("PATH=VALUE")
        ->allow_extra_args(false);
    command->add_option("--title", options->title,
                        "What the preset is called for people (default: its name)");
    command
        ->add_option(
            "-o,--document", options->document,
            "The preset file to write, after which the preset is named; \"-\" (the default) is standard "
            "output")
        ->type_name("FILE");
    command->add_flag("--overwrite", options->overwrite, "Replace the file if it is there already");
    OnRun(*command, [options] { return RunPresetNew(*options); });
}

} // namespace Zelnor::Tool
