#include "Media/Jobs/JobFile.h"

#include "Media/About.h"
#include "Media/Jobs/SurplusData.h"
#include "Media/JsonText.h"

#include "Conf/Interfaces/ConfException.h"
#include "Core/Interfaces/PropertySerializer.h"

#include <rapidjson/document.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Jobs/JobFile";

/// Read as the graph reads it: whatever is not a 64-bit integer counts as 0.
std::int64_t IntegerOf(const Core::JsonValue& element, const char* key)
{
    const auto member = element.FindMember(key);
    return member != element.MemberEnd() && member->value.IsInt64() ? member->value.GetInt64() : 0;
}

/// The objects in the array `key` of the document; none when it is not of that form, for then the graph
/// refuses it.
std::vector<Core::JsonValue*> ObjectsIn(Core::JsonValue& document, const char* key)
{
    std::vector<Core::JsonValue*> objects;
    if (!document.IsObject())
    {
        return objects;
    }
    const auto member = document.FindMember(key);
    if (member == document.MemberEnd() || !member->value.IsArray())
    {
        return objects;
    }
    for (Core::JsonValue& element : member->value.GetArray())
    {
        if (element.IsObject())
        {
            objects.push_back(&element);
        }
    }
    return objects;
}

using LinkIds = std::pair<Conf::NodeId, Conf::NodeId>;

/// What a document lists, whether a graph can be made of it or not.
struct Listed
{
    std::vector<Conf::NodeId> nodes;
    std::vector<LinkIds> links;
};

Listed ListDocument(Core::JsonValue& document)
{
    Listed job;
    for (const Core::JsonValue* const node : ObjectsIn(document, "vertices"))
    {
        job.nodes.push_back(IntegerOf(*node, "id"));
    }
    for (const Core::JsonValue* const link : ObjectsIn(document, "edges"))
    {
        job.links.emplace_back(IntegerOf(*link, "from"), IntegerOf(*link, "to"));
    }
    return job;
}

std::string Element(const char* array, std::size_t index)
{
    return std::string(array) + "[" + std::to_string(index) + "]";
}

/// The first element of the array whose record cannot be read; empty if there is none.
std::string FindBadRecord(Core::JsonValue& document, const char* array)
{
    std::size_t index = 0;
    for (Core::JsonValue* const element : ObjectsIn(document, array))
    {
        const auto data = element->FindMember("data");
        try
        {
            Core::Property record;
            if (data != element->MemberEnd())
            {
                Core::PropertySerializer::Load(record, data->value);
            }
        }
        catch (const Core::PropertyException&)
        {
            return Element(array, index);
        }
        ++index;
    }
    return "";
}

/// The link that names a node which is not there, or that repeats an earlier one.
std::string FindBadLink(const Listed& job)
{
    const std::set<Conf::NodeId> nodes(job.nodes.begin(), job.nodes.end());
    std::set<LinkIds> links;
    for (std::size_t i = 0; i < job.links.size(); ++i)
    {
        const LinkIds& link = job.links[i];
        if (nodes.count(link.first) == 0 || nodes.count(link.second) == 0 || !links.insert(link).second)
        {
            return Element("edges", i);
        }
    }
    return "";
}

/// Where in the document the exception that is being handled has its cause, as far as it can be told.
std::string FindPlace(ParsedJson& parsed)
{
    try
    {
        throw;
    }
    catch (const Core::PropertyException&)
    {
        const std::string node = FindBadRecord(parsed.document, "vertices");
        return node.empty() ? FindBadRecord(parsed.document, "edges") : node;
    }
    catch (const Conf::BadJson&)
    {
        return parsed.fault;
    }
    catch (const Conf::ProfileException&)
    {
        return FindBadLink(ListDocument(parsed.document));
    }
    catch (...)
    {
        return "";
    }
}

/// The libraries tell what is wrong, not where; people look for the place first.
void LoadGraph(JobFile& job, const std::string& text)
{
    try
    {
        job.graph->Load(MakeTextInput(text));
    }
    catch (const Exception&)
    {
        ParsedJson parsed = ParseJson(text);
        const std::string place = FindPlace(parsed);
        const std::string reason = ErrorText(std::current_exception());
        ZELNOR_THROW(kUnit, MakeError<JobException>(place.empty()          ? reason
                                                    : parsed.fault.empty() ? place + ": " + reason
                                                                           : reason + " (" + place + ")"));
    }
}

void AddNote(Place place, JobFile& job)
{
    place.file = job.name;
    job.notes.push_back(place.At("data").Text() + ": more than one member; only the first one is the record");
}

/// The graph keeps the order of the document.
void AddNotes(JobFile& job, const std::string& text)
{
    const SurplusData surplus = FindSurplusData(text);
    std::vector<Conf::NodeId> nodes;
    std::vector<LinkIds> links;
    if (!surplus.vertices.empty())
    {
        job.graph->Nodes(nodes);
    }
    if (!surplus.edges.empty())
    {
        job.graph->Links(links);
    }
    for (const std::size_t index : surplus.vertices)
    {
        Place place;
        place.node = nodes.at(index);
        AddNote(place, job);
    }
    for (const std::size_t index : surplus.edges)
    {
        Place place;
        place.link = links.at(index);
        AddNote(place, job);
    }
}

} // namespace

JobFile ReadJob(const ioPath& path) { return ReadJob(*Core::FileDataInput::Create(path), path.utf8string()); }

JobFile ReadJob(Core::IDataInput& input, const std::string& name)
{
    JobFile job;
    job.name = name;
    job.graph = Conf::ITranscodingMetaGraph::Create();
    About<JobException>(job.name, [&] {
        const std::string text = ReadAll(input);
        LoadGraph(job, text);
        AddNotes(job, text);
    });
    return job;
}

} // namespace Zelnor::Media
