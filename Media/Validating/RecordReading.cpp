#include "Media/Validating/RecordReading.h"

#include "Media/ErrorText.h"
#include "Media/JsonText.h"

#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/JsonStream.h"
#include "Core/Interfaces/PropertyReader.h"
#include "Core/Interfaces/PropertySerializer.h"

#include <rapidjson/reader.h>

#include <algorithm>
#include <exception>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Core::Property;
using Id = JsonIndex::Id;

/// \throw Core::PropertyException
Property ParseRecord(const std::string& json)
{
    const auto input = MakeTextInput(json);
    Core::JsonZelnorStreamIn stream(*input);
    rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, Core::JsonMemory> reader;
    Core::PropertyReader record;
    reader.Parse<rapidjson::kParseIterativeFlag>(stream, record);
    Property property("data");
    Core::PropertySerializer::Load(property, record);
    return property;
}

/// Finds the value that a reader's path names: "data.inputs[2].bitrate". Names may be empty:
/// "data.inputs[2]." Of equal names, one that was replaced is not meant.
class PathFinder
{
public:
    PathFinder(const JsonIndex& index, const std::vector<Id>& replaced) : m_index(index), m_replaced(replaced)
    {}

    std::optional<Id> Find(std::string_view path) const { return FindMember(0, path); }

private:
    /// \param path  from the value on: ".bitrate", "[2].bitrate", or empty for the value itself
    std::optional<Id> FindInside(Id value, std::string_view path) const
    {
        if (path.empty())
        {
            return IsReplaced(value) ? std::nullopt : std::optional(value);
        }
        switch (m_index.KindOf(value))
        {
        case JsonIndex::Kind::Object:
            return path.front() == '.' ? FindMember(value, path.substr(1)) : std::nullopt;
        case JsonIndex::Kind::Array:
            return FindElement(value, path);
        default:
            return std::nullopt;
        }
    }

    bool IsReplaced(Id value) const
    {
        return std::find(m_replaced.begin(), m_replaced.end(), value) != m_replaced.end();
    }

    std::optional<Id> FindMember(Id object, std::string_view path) const
    {
        for (const Id member : m_index.Children(object))
        {
            const std::string key = m_index.KeyOf(member);
            if (path.substr(0, key.size()) != key)
            {
                continue;
            }
            if (const auto found = FindInside(member, path.substr(key.size())))
            {
                return found;
            }
        }
        return std::nullopt;
    }

    std::optional<Id> FindElement(Id array, std::string_view path) const
    {
        std::size_t position = 0;
        for (const Id element : m_index.Children(array))
        {
            const std::string step = "[" + std::to_string(position++) + "]";
            if (path.substr(0, step.size()) == step)
            {
                return FindInside(element, path.substr(step.size()));
            }
        }
        return std::nullopt;
    }

    const JsonIndex& m_index;
    const std::vector<Id>& m_replaced;
};

/// A refusal of the reader of records: "data.source.bitrate: a rational with the denominator 0".
struct Refusal
{
    Id value;
    std::string path; ///< empty: the whole record
    std::string reason;
};

Refusal FindRefusal(const JsonPart& part, const std::vector<Id>& replaced, const std::string& text)
{
    // Names may hold colons, so the longest that is a path counts.
    for (std::size_t end = text.rfind(": "); end != std::string::npos && end > 0;
         end = text.rfind(": ", end - 1))
    {
        if (const auto value = PathFinder(part.index, replaced).Find(std::string_view(text).substr(0, end)))
        {
            return {*value, text.substr(0, end), text.substr(end + 2)};
        }
    }
    constexpr std::string_view kWhole = "record: ";
    return {0, "", text.compare(0, kWhole.size(), kWhole) == 0 ? text.substr(kWhole.size()) : text};
}

/// The innermost value around a fault that can be replaced by another kind of value.
Id ReplaceableAround(const JsonIndex& index, Id value)
{
    Id at = 0;
    for (Id next = 0; next != value;)
    {
        Id child = next;
        for (const Id candidate : index.Children(next))
        {
            if (candidate > value)
            {
                break;
            }
            child = candidate;
        }
        // An element of an array must stay a record.
        at = index.KindOf(next) == JsonIndex::Kind::Object ? child : at;
        next = child;
    }
    return at;
}

} // namespace

ReadRecord ReadRecordPart(const JsonPart& part, const Place& place, FaultCollector& faults)
{
    constexpr int kMostRefusals = 100;
    ReadRecord read;
    std::string json(part.text);
    for (int i = 0; i < kMostRefusals; ++i)
    {
        try
        {
            read.record = ParseRecord(json);
            return read;
        }
        catch (const Core::PropertyException&)
        {
            const Refusal refusal = FindRefusal(part, read.replaced, ErrorText(std::current_exception()));
            // The record of a job is not called by its own name.
            const bool isOfJob = place.node || place.link;
            faults.Add(DocumentFault::Form, isOfJob ? place : place.At(refusal.path), refusal.reason, part,
                       refusal.value);
            const Id value = ReplaceableAround(part.index, refusal.value);
            faults.Close(part, value);
            if (value == 0)
            {
                return read;
            }
            read.replaced.push_back(value);
            const std::size_t size = part.index.TextOf(value).size();
            json.replace(part.index.OffsetOf(value), size, "0" + std::string(size - 1, ' '));
        }
    }
    faults.LeaveOutOthers();
    return read;
}

JsonIndex::Id ValueAt(const JsonPart& part, const std::vector<std::size_t>& path)
{
    const JsonIndex& index = part.index;
    Id value = index.ChildAt(0, 0).value_or(0);
    for (const std::size_t position : path)
    {
        const auto child = index.ChildAt(value, position);
        if (!child)
        {
            return value;
        }
        // An element of an array is an object around the record.
        const bool isArray = index.KindOf(value) == JsonIndex::Kind::Array;
        value = isArray ? index.ChildAt(*child, 0).value_or(*child) : *child;
    }
    return value;
}

std::vector<std::size_t> PathTo(const Property& record, const Property& inner)
{
    if (record.GetType() != PROPERTY_TYPE_GROUP)
    {
        return {};
    }
    std::size_t position = 0;
    for (const Property& child : record)
    {
        if (&child == &inner)
        {
            return {position};
        }
        // Records nest 512 deep at most.
        std::vector<std::size_t> rest = PathTo(child, inner);
        if (!rest.empty())
        {
            rest.insert(rest.begin(), position);
            return rest;
        }
        ++position;
    }
    return {};
}

} // namespace Zelnor::Media
