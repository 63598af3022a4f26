#include "Media/Batch/RecordMembers.h"

#include "Media/About.h"
#include "Media/JsonText.h"
#include "Media/MediaException.h"
#include "Media/NearestNames.h"
#include "Media/ValueText.h"

#include "Core/Interfaces/JsonMemory.h"
#include "Core/Interfaces/PropertyEvents.h"
#include "Core/Interfaces/PropertySerializer.h"

#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <algorithm>
#include <set>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Batch/RecordMembers";

using Core::Property;

[[noreturn]] void RefuseMember(const Place& place, const std::string& reason)
{
    ZELNOR_THROW(kUnit, MakeError<JobException>(place, reason));
}

} // namespace

RecordMembers::RecordMembers(const Property& record, const Place& place,
                             std::initializer_list<const char*> known)
    : m_record(record), m_place(place)
{
    if (record.GetType() != PROPERTY_TYPE_GROUP)
    {
        RefuseMember(place, "expected a group, found " + ValueText(record));
    }
    const std::vector<std::string> names(known.begin(), known.end());
    std::set<std::string> found;
    for (const Property& member : record)
    {
        const std::string& name = member.GetName();
        if (std::find(names.begin(), names.end(), name) == names.end())
        {
            RefuseMember(At(name), "unknown member" + DidYouMean(name, names));
        }
        if (!found.insert(name).second)
        {
            RefuseMember(At(name), "stands there twice");
        }
    }
}

Place RecordMembers::At(const std::string& key) const
{
    return m_place.key.empty() ? m_place.At(key) : m_place.Under(key);
}

const Property& RecordMembers::Member(const std::string& key, PropertyTypes type) const
{
    const auto member = m_record.FindChild(key);
    if (member == m_record.end() || member->GetType() != type)
    {
        RefuseMember(At(key), std::string("expected ") + TypeText(type) + ", found " +
                                  (member == m_record.end() ? "nothing" : ValueText(*member)));
    }
    return *member;
}

std::string RecordMembers::Text(const std::string& key) const
{
    std::string text = Member(key, PROPERTY_TYPE_STRING).GetString();
    if (text.find('\0') != std::string::npos)
    {
        RefuseMember(At(key), "a text here cannot hold a NUL byte");
    }
    return text;
}

std::int64_t RecordMembers::Integer(const std::string& key, std::int64_t least, std::int64_t most) const
{
    const std::int64_t number = Member(key, PROPERTY_TYPE_INT64).GetInt64();
    if (number < least || number > most)
    {
        RefuseMember(At(key), "expected an integer from " + std::to_string(least) + " to " +
                                  std::to_string(most) + ", found " + std::to_string(number));
    }
    return number;
}

const Property& RecordMembers::Group(const std::string& key) const
{
    return Member(key, PROPERTY_TYPE_GROUP);
}

std::vector<std::string> RecordMembers::Texts(const std::string& key) const
{
    std::vector<std::string> texts;
    if (!Has(key))
    {
        return texts;
    }
    for (const Property& member : Group(key))
    {
        const Place place = At(key).Under(member.GetName());
        if (member.GetName() != std::to_string(texts.size() + 1))
        {
            RefuseMember(place, "expected '" + std::to_string(texts.size() + 1) + "' here");
        }
        if (member.GetType() != PROPERTY_TYPE_STRING)
        {
            RefuseMember(place, "expected a string, found " + ValueText(member));
        }
        texts.push_back(member.GetString());
    }
    return texts;
}

std::size_t RecordMembers::Choice(const std::string& key, const std::vector<std::string>& words) const
{
    const std::string word = Text(key);
    const auto found = std::find(words.begin(), words.end(), word);
    if (found == words.end())
    {
        std::string expected;
        for (const std::string& known : words)
        {
            expected += (expected.empty() ? "'" : ", '") + known + "'";
        }
        RefuseMember(At(key), "expected one of " + expected + ", found '" + word + "'");
    }
    return static_cast<std::size_t>(found - words.begin());
}

Property ParseRecord(const std::string& text, const std::string& file, const std::string& name)
{
    ParsedJson json = ParseJson(text);
    if (!json.fault.empty())
    {
        RefuseMember(Place{file}, json.fault);
    }
    if (!json.document.IsObject() || json.document.MemberCount() != 1 ||
        json.document.MemberBegin()->name != name.c_str())
    {
        RefuseMember(Place{file}, "expected an object with one member, '" + name + "'");
    }
    Property record;
    About<JobException>(file, [&] { Core::PropertySerializer::Load(record, json.document); });
    return record;
}

std::string RecordDocument(const Property& record)
{
    using Buffer = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, Core::JsonMemory>;
    using Writer = rapidjson::PrettyWriter<Buffer, rapidjson::UTF8<>, rapidjson::UTF8<>, Core::JsonMemory>;
    Buffer buffer;
    Writer writer(buffer);
    writer.SetIndent(' ', 1);
    Core::PropertyEvents<Writer>(writer, false).Record(record);
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

void SetTexts(Property& record, const std::string& key, const std::vector<std::string>& texts)
{
    if (texts.empty())
    {
        return;
    }
    Property& group = record.SetChild(key);
    std::size_t position = 0;
    for (const std::string& text : texts)
    {
        group.CreateChildT(std::to_string(++position), text);
    }
}

std::string NumberText(std::size_t number)
{
    constexpr std::size_t kDigits = 6;
    const std::string digits = std::to_string(number);
    return std::string(kDigits - std::min(kDigits, digits.size()), '0') + digits;
}

} // namespace Zelnor::Media
