#include "Media/Planning/PresetSupport.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Presets/PresetStore.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Description.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Input.h"
#include "Tools/zconf/Console/JsonOutput.h"
#include "Tools/zconf/Console/Output.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/PixelFormatDescription.h"

#include <memory>
#include <string>

namespace Zelnor::Tool
{

namespace
{

using Conf::IPreset;
using Core::Property;

struct PresetShowArguments
{
    std::string preset;
    bool json = false;
};

/// A value as people write it behind --set.
std::string SettingText(const Property& value)
{
    switch (value.GetType())
    {
    case PROPERTY_TYPE_INT64:
        return std::to_string(value.GetInt64());
    case PROPERTY_TYPE_STRING:
        return value.GetString();
    case PROPERTY_TYPE_RATIO:
        return std::to_string(value.GetRatio().numerator()) + "/" +
               std::to_string(value.GetRatio().denominator());
    case PROPERTY_TYPE_NONE:
    case PROPERTY_TYPE_GROUP:
        break;
    }
    return "";
}

/// The name of a format that the library has, which a preset was checked for.
std::string PixelFormatText(long long number)
{
    for (const PixFmtDescription& format : PixFmtDescription::s_pixelFormatRecords)
    {
        if (static_cast<long long>(format.pixFmt) == number)
        {
            return format.name;
        }
    }
    return std::to_string(number);
}

/// What a stream sets; what a group holds has the group's name before it.
Description SettingsOf(const Property& stream)
{
    Description settings;
    for (const Property& setting : stream)
    {
        if (setting.GetName() == Conf::TAG_PIX_FMT)
        {
            settings.push_back({setting.GetName(), PixelFormatText(setting.GetInt64())});
            continue;
        }
        if (setting.GetType() != PROPERTY_TYPE_GROUP)
        {
            settings.push_back({setting.GetName(), SettingText(setting)});
            continue;
        }
        for (const Property& inner : setting)
        {
            settings.push_back({setting.GetName() + "." + inner.GetName(), SettingText(inner)});
        }
    }
    return settings;
}

std::string TextOf(const Property& record, const std::string& key)
{
    const auto text = record.FindChild(key);
    return text == record.end() ? "" : text->GetString();
}

void WriteForScripts(const Description& about, const Property& record)
{
    JsonOutput output;
    output.GetWriter().StartObject();
    for (const Field& field : about)
    {
        output.Key(field.name);
        output.String(FieldText(field.value));
    }
    output.Key("preset");
    output.Record(record);
    output.GetWriter().EndObject();
    output.Finish();
}

int RunPresetShow(const PresetShowArguments& options)
{
    const std::string file =
        IsStandardStream(options.preset) ? options.preset : Media::FindPreset(options.preset);
    const auto preset = Media::PresetFile::Read(*OpenInput(file), InputName(file));
    const Property& record = preset->GetProperty();
    const Description about = {{"name", record.GetName()},
                               {"title", TextOf(record, IPreset::KEY_NAME)},
                               {"container", TextOf(record, Conf::IFormatFile::TAG_CONTAINER)},
                               {"makes", Media::DescribePreset(record)},
                               {"file", InputName(file)}};
    for (const Media::UnsupportedSetting& setting : Media::FindUnsupportedSettings(record, InputName(file)))
    {
        ReportNote(setting.place.Text() + ": " + setting.reason);
    }
    if (options.json)
    {
        WriteForScripts(about, record);
        return kExitSuccess;
    }
    const Painter paint = Painter::ForStandardOutput();
    std::string text = LinesText(about, 0, paint);
    for (const Property& stream : record[IPreset::KEY_STREAMS])
    {
        text += stream.GetName() + "\n" + LinesText(SettingsOf(stream), 2, paint);
    }
    WriteText(text);
    return kExitSuccess;
}

} // namespace

void AddPresetShowCommand(CLI::App& preset)
{
    CLI::App* const command =
        AddCommand(preset, "show", "Show what a preset makes, and every setting of its streams");
    const auto options = std::make_shared<PresetShowArguments>();
    command
        ->add_option(
            "PRESET", options->preset,
            "The name of a preset (see zconf preset list), or a preset file: a name with a slash, or "
            "with the extension .json")
        ->type_name("PRESET")
        ->required();
    AddJsonFlag(*command, options->json);
    OnRun(*command, [options] { return RunPresetShow(*options); });
}

} // namespace Zelnor::Tool
