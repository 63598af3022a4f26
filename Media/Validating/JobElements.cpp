#include "Media/Validating/JobElements.h"

#include "Media/NearestNames.h"
#include "Media/Options/SettingRules.h"
#include "Media/Probe/StreamKinds.h"

#include "Core/Interfaces/JsonStream.h"
#include "Core/Interfaces/PropertyEvents.h"

#include <rapidjson/writer.h>

#include <algorithm>
#include <charconv>
#include <set>

namespace Zelnor::Media
{

namespace
{

using Id = JsonIndex::Id;

/// Nothing for what is not a 64-bit integer.
std::optional<Conf::NodeId> IntegerIn(const JsonIndex& index, Id value)
{
    const std::string_view text = index.TextOf(value);
    Conf::NodeId number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = index.KindOf(value) == JsonIndex::Kind::Number && error == std::errc() &&
                          end == text.data() + text.size();
    return isNumber ? std::optional(number) : std::nullopt;
}

/// What a graph reads as the number under the key: 0 for what is not one, which is a fault.
Conf::NodeId ReadNumber(const JsonPart& document, Id element, const char* key, bool isNeeded,
                        const Place& place, FaultCollector& faults)
{
    const auto value = document.index.Member(element, key);
    const std::string expected = "expected a 64-bit integer, found ";
    if (!value)
    {
        if (isNeeded)
        {
            faults.Add(DocumentFault::Ignored, place, expected + "nothing, which counts as 0", document,
                       element, Aspect::Lack);
        }
        return 0;
    }
    const auto number = IntegerIn(document.index, *value);
    if (!number)
    {
        faults.Add(DocumentFault::Ignored, place,
                   expected + KindText(document.index, *value) + ", which counts as 0", document, *value);
    }
    return number.value_or(0);
}

/// Keys that stand in a record again, of which the readers take the first.
void CheckRepeatedKeys(const Core::Property& record, const JsonPart& part,
                       const std::vector<std::size_t>& path, const Place& place, FaultCollector& faults)
{
    if (record.GetType() != PROPERTY_TYPE_GROUP)
    {
        return;
    }
    std::set<std::string> seen;
    std::vector<std::size_t> inner(path.size() + 1);
    std::copy(path.begin(), path.end(), inner.begin());
    for (const Core::Property& child : record)
    {
        if (!seen.insert(child.GetName()).second)
        {
            faults.Add(DocumentFault::Ignored, place.At(child.GetName()),
                       std::string(kRepeatedText) + "; only the first one counts", part, ValueAt(part, inner),
                       Aspect::Key);
        }
        ++inner.back();
        if (!faults.IsComplete())
        {
            return;
        }
    }
}

void ReadData(const JsonPart& document, JobElement& element, FaultCollector& faults)
{
    const JsonPart part = DataPart(document, *element.data);
    const ReadRecord read = ReadRecordPart(part, element.place.At("data"), faults);
    element.isChanged = !read.record || !read.replaced.empty();
    if (!read.record || read.record->GetType() != PROPERTY_TYPE_GROUP)
    {
        return;
    }
    const Core::Property& wrapper = *read.record;
    if (wrapper.Count() == 0)
    {
        return;
    }
    if (wrapper.Count() > 1)
    {
        faults.Add(DocumentFault::Ignored, element.place.At("data"),
                   "more than one member; only the first one is the record", part, ValueAt(part, {1}),
                   Aspect::Key);
    }
    element.record = *wrapper.begin();
    element.hasRecord = true;
    // Of a codec's record, the job's own rules say it.
    if (!IsConvertible(KindOfRecord(element.record.GetName())))
    {
        CheckRepeatedKeys(element.record, part, {0}, element.place, faults);
    }
}

} // namespace

std::optional<JobElement> ReadElement(const JsonPart& document, Id value, bool isLink,
                                      const std::string& name, FaultCollector& faults)
{
    const JsonIndex& index = document.index;
    JobElement element = {value, Place{name}};
    if (index.KindOf(value) != JsonIndex::Kind::Object)
    {
        faults.Add(DocumentFault::Form, element.place,
                   std::string("expected an object, found ") + KindText(index, value), document, value);
        return std::nullopt;
    }
    if (isLink)
    {
        element.ends = {ReadNumber(document, value, "from", true, element.place.At("from"), faults),
                        ReadNumber(document, value, "to", true, element.place.At("to"), faults)};
        element.place.link = element.ends;
    }
    // Nothing refers to a link by its identifier.
    element.id = ReadNumber(document, value, "id", !isLink, element.place.At("id"), faults);
    if (!isLink)
    {
        element.place.node = element.id;
    }
    const std::vector<std::string> known = isLink ? std::vector<std::string>{"id", "from", "to", "data"}
                                                  : std::vector<std::string>{"id", "data"};
    CheckKeys(document, value, known, element.place, faults);
    element.data = index.Member(value, "data");
    if (element.data)
    {
        ReadData(document, element, faults);
    }
    return element;
}

JsonPart DataPart(const JsonPart& document, Id data)
{
    const std::string_view text = document.index.TextOf(data);
    return {text, document.offset + document.index.OffsetOf(data), JsonIndex(text, kRecordLevels), &document,
            data};
}

std::vector<BadLink> FindBadLinks(const JobElements& job)
{
    std::set<Conf::NodeId> nodes;
    for (const JobElement& node : job.nodes)
    {
        nodes.insert(node.id);
    }
    std::vector<BadLink> bad;
    std::set<std::pair<Conf::NodeId, Conf::NodeId>> links;
    for (std::size_t i = 0; i < job.links.size(); ++i)
    {
        const auto& [from, to] = job.links[i].ends;
        const bool hasFrom = nodes.count(from) != 0;
        if (!hasFrom || nodes.count(to) == 0)
        {
            bad.push_back(
                {i, "There is no node " + std::to_string(hasFrom ? to : from), hasFrom ? "to" : "from"});
        }
        else if (!links.insert({from, to}).second)
        {
            bad.push_back({i,
                           "There is already a link from node " + std::to_string(from) + " to node " +
                               std::to_string(to),
                           nullptr});
        }
    }
    return bad;
}

void CheckRecordsOfSources(const JsonPart& document, const JobElements& job, FaultCollector& faults)
{
    std::set<Conf::NodeId> streams;
    for (const JobElement& node : job.nodes)
    {
        if (node.record.GetName() == Conf::ITranscodingMetaGraph::KEY_STREAM_RAW)
        {
            streams.insert(node.id);
        }
    }
    for (const JobElement& link : job.links)
    {
        if (link.hasRecord && streams.count(link.ends.second) != 0)
        {
            faults.Add(DocumentFault::Ignored, link.place.At("data"),
                       "a link to a raw stream does not have a record", document, *link.data);
        }
    }
}

std::string WriteElements(const JobElements& job)
{
    const auto output = Core::MemoryDataOutput::Create();
    Core::JsonZelnorStreamOut stream(*output);
    using Writer =
        rapidjson::Writer<Core::JsonZelnorStreamOut, rapidjson::UTF8<>, rapidjson::UTF8<>, Core::JsonMemory>;
    Writer writer(stream);
    const auto number = [&writer](const char* key, Conf::NodeId value) {
        writer.Key(key);
        writer.Int64(value);
    };
    const auto record = [&writer](const JobElement& element) {
        if (element.hasRecord)
        {
            writer.Key("data");
            writer.StartObject();
            writer.Key("data");
            writer.StartObject();
            Core::PropertyEvents<Writer>(writer, false).Member(element.record);
            writer.EndObject();
            writer.EndObject();
        }
        writer.EndObject();
    };
    writer.StartObject();
    writer.Key("vertices");
    writer.StartArray();
    for (const JobElement& node : job.nodes)
    {
        writer.StartObject();
        number("id", node.id);
        record(node);
    }
    writer.EndArray();
    writer.Key("edges");
    writer.StartArray();
    for (const JobElement& link : job.links)
    {
        writer.StartObject();
        number("from", link.ends.first);
        number("to", link.ends.second);
        record(link);
    }
    writer.EndArray();
    writer.EndObject();
    return output->GetData();
}

void CheckKeys(const JsonPart& part, Id object, const std::vector<std::string>& known, const Place& place,
               FaultCollector& faults)
{
    std::set<std::string> seen;
    for (const Id member : part.index.Children(object))
    {
        if (!faults.IsComplete())
        {
            return;
        }
        const std::string key = part.index.KeyOf(member);
        if (std::find(known.begin(), known.end(), key) == known.end())
        {
            faults.Add(DocumentFault::Ignored, place, "unknown key '" + key + "'" + DidYouMean(key, known),
                       part, member, Aspect::Key, NearestNames(key, known));
        }
        else if (!seen.insert(key).second)
        {
            faults.Add(DocumentFault::Ignored, place.At(key),
                       std::string(kRepeatedText) + "; only the first one counts", part, member, Aspect::Key);
        }
    }
}

const char* KindText(const JsonIndex& index, Id value)
{
    switch (index.KindOf(value))
    {
    case JsonIndex::Kind::Null:
        return "null";
    case JsonIndex::Kind::Bool:
        return index.TextOf(value) == "true" ? "true" : "false";
    case JsonIndex::Kind::Number:
        return "a number";
    case JsonIndex::Kind::String:
        return "a string";
    case JsonIndex::Kind::Object:
        return "an object";
    case JsonIndex::Kind::Array:
        break;
    }
    return "an array";
}

Id MemberOr(const JsonIndex& index, Id object, const char* key)
{
    const auto member = key == nullptr ? std::nullopt : index.Member(object, key);
    return member.value_or(object);
}

} // namespace Zelnor::Media
