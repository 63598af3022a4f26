#include "Media/Presets/PresetFile.h"

#include "Media/About.h"
#include "Media/JsonText.h"
#include "Media/Presets/PresetNames.h"
#include "Media/Presets/PresetRules.h"

#include "Core/Interfaces/PropertySerializer.h"

#include <rapidjson/document.h>

#include <exception>
#include <utility>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Presets/PresetFile";

/// Editors read there what a document is; it is nothing of the preset.
void RemoveSchema(Core::JsonValue& document)
{
    const bool isLeading = document.MemberCount() > 1 && document.MemberBegin()->name == kSchemaKey;
    if (isLeading)
    {
        document.EraseMember(document.MemberBegin());
    }
}

Core::Property ParsePreset(const std::string& text, const std::string& name)
{
    ParsedJson json = ParseJson(text);
    if (!json.fault.empty())
    {
        ZELNOR_THROW(kUnit, MakeError<PresetFileException>(Place{name}, json.fault));
    }
    if (!json.document.IsObject())
    {
        ZELNOR_THROW(kUnit, MakeError<PresetFileException>(
                                Place{name}, "a preset is a record (an object with one member)"));
    }
    RemoveSchema(json.document);
    Core::Property record;
    About<PresetFileException>(name, [&] { Core::PropertySerializer::Load(record, json.document); });
    return record;
}

} // namespace

boost::intrusive_ptr<PresetFile> PresetFile::Open(const ioPath& path)
{
    const std::string name = path.utf8string();
    try
    {
        return Read(*Core::FileDataInput::Create(path), name);
    }
    catch (const Core::CoreException&)
    {
        // The description names the file already.
        const auto exception = MakeError<PresetFileException>(ErrorText(std::current_exception()));
        ZELNOR_THROW(kUnit, exception << MediaException::TagFile(name));
    }
}

boost::intrusive_ptr<PresetFile> PresetFile::Read(Core::IDataInput& input, const std::string& name)
{
    Core::Property record = ParsePreset(ReadAll(input), name);
    ResolveNames(record);
    CheckPreset(record, name);
    return boost::intrusive_ptr<PresetFile>(new PresetFile(std::move(record)));
}

PresetFile::PresetFile(Core::Property record) : m_record(std::move(record)) {}

PresetFile::~PresetFile() = default;

std::uint32_t PresetFile::GetStreamCount() const
{
    return static_cast<std::uint32_t>(m_record[KEY_STREAMS].Count());
}

void PresetFile::GetStreamIndexes(const std::string& streamType, std::vector<int>& out) const
{
    int index = 0;
    for (const Core::Property& stream : m_record[KEY_STREAMS])
    {
        if (stream.GetName() == streamType)
        {
            out.push_back(index);
        }
        ++index;
    }
}

} // namespace Zelnor::Media
