#include "Media/Running/CodecSettings.h"

#include "Media/Options/SettingRules.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <unordered_set>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormat;
using Conf::IFormatCodecVideo;
using Core::Property;

/// Whether the setting is as its key asks for; a fault otherwise.
bool Obeys(const Property& setting, const Place& place, FaultList& faults)
{
    const std::string fault = FindSettingFault(setting);
    if (!fault.empty())
    {
        faults.Add(JobFault::Setting, place, fault);
    }
    return fault.empty();
}

/// The children of a group that are as they must be.
Property CheckGroup(const Property& group, const Place& place, FaultList& faults)
{
    std::unordered_set<const Property*> bad;
    for (const ChildFault& fault : FindChildFaults(group))
    {
        faults.Add(JobFault::Setting, place.At(group.GetName() + "." + fault.child->GetName()), fault.reason);
        bad.insert(fault.child);
    }
    Property good(group.GetName());
    for (const Property& child : group)
    {
        if (bad.count(&child) == 0)
        {
            good.Add(child);
        }
    }
    return good;
}

/// A size and its pixels' aspect are used together.
void CheckGeometry(const Property& codec, const Place& place, Property& good, FaultList& faults)
{
    const std::string* const keys[] = {&IFormatCodecVideo::TAG_WIDTH, &IFormatCodecVideo::TAG_HEIGHT,
                                       &IFormatCodecVideo::TAG_ASPECTX, &IFormatCodecVideo::TAG_ASPECTY};
    const auto isIn = [](const Property& record) {
        return [&record](const std::string* key) { return record.ChildExists(*key); };
    };
    if (std::all_of(std::begin(keys), std::end(keys), isIn(good)))
    {
        return;
    }
    const bool isAsked = std::any_of(std::begin(keys), std::end(keys), isIn(codec));
    for (const std::string* const key : keys)
    {
        if (isAsked && !codec.ChildExists(*key))
        {
            faults.Add(JobFault::Setting, place.At(*key),
                       "missing; width, height, aspect_x and aspect_y are used together");
        }
        if (good.ChildExists(*key))
        {
            good.RemoveChild(*key);
        }
    }
}

} // namespace

Property CheckSettings(const Property& codec, bool isCopied, const Place& place, FaultList& faults)
{
    Property good(codec.GetName());
    std::set<std::string> seen;
    for (const Property& setting : codec)
    {
        if (isCopied && !IsSettingForCopies(setting.GetName()))
        {
            continue;
        }
        const Place keyPlace = place.At(setting.GetName());
        if (!IsSettingKnown(setting.GetName()))
        {
            faults.Add(JobFault::Setting, place, UnknownSettingText(setting.GetName()));
        }
        else if (!seen.insert(setting.GetName()).second)
        {
            faults.Add(JobFault::Setting, keyPlace, kRepeatedText);
        }
        else if (Obeys(setting, keyPlace, faults))
        {
            good.Add(setting.GetType() == PROPERTY_TYPE_GROUP ? CheckGroup(setting, place, faults) : setting);
        }
    }
    if (!isCopied)
    {
        CheckGeometry(codec, place, good, faults);
    }
    return good;
}

Property CheckMetadata(const Property& record, const Place& place, FaultList& faults)
{
    const auto metadata = record.FindChild(IFormat::TAG_METADATA);
    return metadata != record.end() && Obeys(*metadata, place.At(metadata->GetName()), faults)
               ? CheckGroup(*metadata, place, faults)
               : Property(IFormat::TAG_METADATA);
}

} // namespace Zelnor::Media
