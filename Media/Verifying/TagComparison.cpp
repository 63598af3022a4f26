#include "Media/Verifying/TagComparison.h"

#include "Media/Planning/LanguageCodes.h"
#include "Media/Text.h"

#include "Conf/Interfaces/IFormatCodec.h"

#include <optional>
#include <string>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Core::Property;

/// The value of a tag; if there are several, `wanted` when it is among them.
std::optional<std::string> ValueOf(const Property& metadata, const std::string& name,
                                   const std::string& wanted)
{
    std::optional<std::string> value;
    for (const Property& tag : metadata)
    {
        if (tag.GetType() == PROPERTY_TYPE_STRING && LowerCase(tag.GetName()) == LowerCase(name) &&
            value != wanted)
        {
            value = tag.GetString();
        }
    }
    return value;
}

/// The tag in the file or, as in Ogg, in one of its streams.
std::optional<std::string> ValueIn(const MediaFile& file, const std::string& name, const std::string& wanted)
{
    std::optional<std::string> value = ValueOf(file.descriptor->GetMetadata(), name, wanted);
    for (const MediaStream& stream : file.streams)
    {
        value = value ? value : ValueOf(stream.descriptor->GetMetadata(), name, wanted);
    }
    return value;
}

std::string Shown(const std::optional<std::string>& value) { return value ? "'" + *value + "'" : "none"; }

} // namespace

std::vector<TargetDifference> CompareFileTags(const ExpectedFile& wanted, const MediaFile& found)
{
    std::vector<TargetDifference> differences;
    for (const auto& [name, value] : wanted.tags)
    {
        const std::optional<std::string> there = ValueIn(found, name, value);
        if (there != value)
        {
            differences.push_back({wanted.place, "tag " + LowerCase(name), Shown(value), Shown(there)});
        }
    }
    return differences;
}

std::vector<TargetDifference> CompareStreamTags(const ExpectedStream& wanted, const MediaStream& found)
{
    std::vector<TargetDifference> differences;
    for (const auto& [name, value] : wanted.tags)
    {
        const std::optional<std::string> there = ValueOf(found.descriptor->GetMetadata(), name, value);
        const bool isLanguage = LowerCase(name) == IFormatCodec::TAG_LANGUAGE;
        const bool isSame = there == value || (isLanguage && there && IsSameLanguage(*there, value));
        if (!isSame)
        {
            differences.push_back(
                {wanted.place, (isLanguage ? "" : "tag ") + LowerCase(name), Shown(value), Shown(there)});
        }
    }
    return differences;
}

} // namespace Zelnor::Media
