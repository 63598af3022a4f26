#include "Media/Validating/PresetValidation.h"

#include "Media/JsonText.h"
#include "Media/NearestNames.h"
#include "Media/Options/SettingRules.h"
#include "Media/Options/ValueNames.h"
#include "Media/Planning/PresetSupport.h"
#include "Media/Presets/PresetNames.h"
#include "Media/Presets/PresetRules.h"
#include "Media/Validating/RecordReading.h"

#include "Conf/Interfaces/IPreset.h"

#include <set>

namespace Zelnor::Media
{

namespace
{

using Core::Property;

DocumentFault::Kind KindOf(const PresetFault& fault)
{
    return fault.kind == JobFault::Encoder ? DocumentFault::Encoder : DocumentFault::Setting;
}

/// What was meant, where the fault is that a key is not known.
std::vector<std::string> NearestKeys(const PresetFault& fault)
{
    const std::string& key = fault.value->GetName();
    const bool isSetting = fault.reason == UnknownSettingText(key);
    return NearestNames(key, isSetting ? KnownSettings() : KnownPresetKeys());
}

void AddFault(const PresetFault& fault, const Property& preset, const JsonPart& part, FaultCollector& faults)
{
    const JsonIndex::Id value = ValueAt(part, PathTo(preset, *fault.value));
    const bool isUnknownKey = fault.reason.compare(0, 8, "unknown ") == 0;
    const Aspect aspect = !fault.missing.empty() ? Aspect::Lack : isUnknownKey ? Aspect::Key : Aspect::Value;
    faults.Add(KindOf(fault), fault.place, fault.reason, part, value, aspect,
               isUnknownKey            ? NearestKeys(fault)
               : fault.missing.empty() ? NearestValues(fault.value)
                                       : std::vector<std::string>());
}

/// Keys that stand in a group again, of which the reader of presets takes the first.
void CheckRepeated(const Property& group, const Property& preset, const Place& place, const JsonPart& part,
                   FaultCollector& faults)
{
    std::set<std::string> seen;
    for (const Property& child : group)
    {
        if (!seen.insert(child.GetName()).second)
        {
            faults.Add(DocumentFault::Ignored, place.Under(child.GetName()),
                       std::string(kRepeatedText) + "; only the first one counts", part,
                       ValueAt(part, PathTo(preset, child)), Aspect::Key);
        }
        if (!faults.IsComplete())
        {
            return;
        }
    }
}

void CheckRepeated(const Property& preset, const std::string& name, const JsonPart& part,
                   FaultCollector& faults)
{
    if (preset.GetType() != PROPERTY_TYPE_GROUP)
    {
        return;
    }
    const Place place = Place{name}.At(preset.GetName());
    CheckRepeated(preset, preset, place, part, faults);
    const auto streams = preset.FindChild(Conf::IPreset::KEY_STREAMS);
    if (streams == preset.end() || streams->GetType() != PROPERTY_TYPE_GROUP)
    {
        return;
    }
    for (const Property& stream : *streams)
    {
        if (stream.GetType() == PROPERTY_TYPE_GROUP)
        {
            const Place streamPlace = place.Under(streams->GetName()).Under(stream.GetName());
            CheckRepeated(stream, preset, streamPlace, part, faults);
        }
    }
}

/// The outermost object without the schema's name at its beginning; nothing when it is not one record.
std::optional<JsonIndex::Id> RecordOf(const JsonPart& document, const std::string& name,
                                      FaultCollector& faults)
{
    const JsonIndex& index = document.index;
    std::vector<JsonIndex::Id> members;
    for (const JsonIndex::Id member : index.Children(0))
    {
        members.push_back(member);
    }
    if (members.size() > 1 && index.KeyOf(members.front()) == kSchemaKey)
    {
        members.erase(members.begin());
    }
    if (members.size() == 1)
    {
        return members.front();
    }
    const std::string count = std::to_string(members.size());
    faults.Add(DocumentFault::Form, Place{name},
               "expected a record (an object with one member), found an object with " + count + " members",
               document, members.empty() ? 0 : members[1], Aspect::Key);
    return std::nullopt;
}

} // namespace

void ValidatePreset(const JsonPart& document, const std::string& name, FaultCollector& faults)
{
    const auto member = RecordOf(document, name, faults);
    if (!member)
    {
        return;
    }
    // The record by itself, with every byte as far from its beginning as it is in the text.
    const std::size_t begin = document.index.KeyOffsetOf(*member);
    const std::size_t end = document.index.OffsetOf(*member) + document.index.TextOf(*member).size();
    const std::string text = "{" + std::string(document.text.substr(begin, end - begin)) + "}";
    const JsonPart part = {text, begin - 1, JsonIndex(text, kRecordLevels)};
    const ReadRecord read = ReadRecordPart(part, Place{name}, faults);
    if (!read.record)
    {
        return;
    }
    Property preset = *read.record;
    ResolveNames(preset);
    // One more than are told, so that it is known whether these are all.
    for (const PresetFault& fault : FindPresetFaults(preset, name, FaultCollector::kMost + 1))
    {
        AddFault(fault, preset, part, faults);
    }
    for (const UnsupportedSetting& setting : FindUnsupportedSettings(preset, name))
    {
        faults.Add(setting.kind == JobFault::Encoder ? DocumentFault::Encoder : DocumentFault::Container,
                   setting.place, setting.reason, part, ValueAt(part, PathTo(preset, *setting.value)),
                   Aspect::Value, setting.nearest);
    }
    CheckRepeated(preset, name, part, faults);
}

} // namespace Zelnor::Media
