#include "Media/Jobs/JobFile.h"

#include "Media/About.h"
#include "Media/JsonText.h"

#include "Conf/Interfaces/ConfException.h"
#include "Core/Interfaces/PropertySerializer.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <unordered_set>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Jobs/JobFile";

/// Read as the graph reads it: whatever is no 64-bit integer counts as 0.
std::int64_t IntegerOf(const rapidjson::Value& element, const char* key)
{
    const auto member = element.FindMember(key);
    return member != element.MemberEnd() && member->value.IsInt64() ? member->value.GetInt64() : 0;
}

/// The objects in the array `key` of the document; none when it is not of that form, for then the graph
/// refuses it.
std::vector<rapidjson::Value*> ObjectsIn(rapidjson::Value& document, const char* key)
{
    std::vector<rapidjson::Value*> objects;
    if (!document.IsObject())
    {
        return objects;
    }
    const auto member = document.FindMember(key);
    if (member == document.MemberEnd() || !member->value.IsArray())
    {
        return objects;
    }
    for (rapidjson::Value& element : member->value.GetArray())
    {
        if (element.IsObject())
        {
            objects.push_back(&element);
        }
    }
    return objects;
}

/// The graph hands out no list of its nodes, and identifiers may be any numbers, so the document is asked.
void ListDocument(rapidjson::Value& document, JobFile& job)
{
    for (const rapidjson::Value* const node : ObjectsIn(document, "vertices"))
    {
        job.nodes.push_back(IntegerOf(*node, "id"));
    }
    for (const rapidjson::Value* const link : ObjectsIn(document, "edges"))
    {
        job.links.emplace_back(IntegerOf(*link, "from"), IntegerOf(*link, "to"));
    }
}

std::string Element(const char* array, std::size_t index)
{
    return std::string(array) + "[" + std::to_string(index) + "]";
}

/// The first element of the array whose record cannot be read; empty if there is none.
std::string FindBadRecord(rapidjson::Value& document, const char* array)
{
    std::size_t index = 0;
    for (rapidjson::Value* const element : ObjectsIn(document, array))
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
std::string FindBadLink(const JobFile& job)
{
    const std::unordered_set<Conf::NodeId> nodes(job.nodes.begin(), job.nodes.end());
    std::set<JobFile::Link> links;
    for (std::size_t i = 0; i < job.links.size(); ++i)
    {
        const JobFile::Link& link = job.links[i];
        if (nodes.count(link.first) == 0 || nodes.count(link.second) == 0 || !links.insert(link).second)
        {
            return Element("edges", i);
        }
    }
    return "";
}

/// Where in the document the exception that is being handled has its cause, as far as it can be told.
std::string FindPlace(const JobFile& job, ParsedJson& parsed)
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
        return FindBadLink(job);
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
        ListDocument(parsed.document, job);
        const std::string place = FindPlace(job, parsed);
        const std::string reason = ErrorText(std::current_exception());
        ZELNOR_THROW(kUnit, MakeError<JobException>(place.empty()          ? reason
                                                    : parsed.fault.empty() ? place + ": " + reason
                                                                           : reason + " (" + place + ")"));
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
        ParsedJson parsed = ParseJson(text);
        ListDocument(parsed.document, job);
    });
    return job;
}

} // namespace Zelnor::Media
