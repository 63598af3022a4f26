#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/JobInput.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/JsonOutput.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/Table.h"
#include "Tools/zconf/Console/Text.h"

#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace Zelnor::Tool
{

namespace
{

using Conf::NodeId;
using Core::Property;

struct JobShowArguments
{
    std::string job;
    bool json = false;
};

/// Links without a record come back as an empty group under this name.
bool IsEmpty(const Property& record)
{
    return record.GetType() == PROPERTY_TYPE_NONE ||
           (record.GetType() == PROPERTY_TYPE_GROUP && record.Count() == 0 &&
            (record.GetName().empty() || record.GetName() == "data"));
}

using Link = std::pair<NodeId, NodeId>;

std::vector<NodeId> NodesOf(const Media::JobFile& job)
{
    std::vector<NodeId> nodes;
    job.graph->Nodes(nodes);
    return nodes;
}

std::vector<Link> LinksOf(const Media::JobFile& job)
{
    std::vector<Link> links;
    job.graph->Links(links);
    return links;
}

std::string Join(const std::vector<NodeId>& ids)
{
    std::string text;
    for (const NodeId id : ids)
    {
        text += (text.empty() ? "" : ", ") + std::to_string(id);
    }
    return text;
}

std::string ValueText(const Property& property)
{
    switch (property.GetType())
    {
    case PROPERTY_TYPE_NONE:
        return "(none)";
    case PROPERTY_TYPE_INT64:
        return std::to_string(property.GetInt64());
    case PROPERTY_TYPE_STRING:
        return property.GetString();
    case PROPERTY_TYPE_RATIO:
        return std::to_string(property.GetRatio().numerator()) + "/" +
               std::to_string(property.GetRatio().denominator());
    case PROPERTY_TYPE_GROUP:
        break;
    }
    return property.Count() == 0 ? "(empty)" : "";
}

/// Prints a job for people: the nodes, then the links, each with its record below it.
class JobPrinter
{
public:
    JobPrinter(const Media::JobFile& job, Painter paint) : m_job(job), m_paint(paint) {}

    std::string Print()
    {
        const std::vector<NodeId> nodes = NodesOf(m_job);
        const std::vector<Link> links = LinksOf(m_job);
        m_text = m_paint(Style::Heading, Printable(m_job.name)) + ": " + Count(nodes.size(), "node") + ", " +
                 Count(links.size(), "link") + ", " +
                 (m_job.graph->TopologyIsValid() ? m_paint(Style::Good, "valid")
                                                 : m_paint(Style::Bad, "not valid")) +
                 "\n";
        for (const NodeId id : nodes)
        {
            Node(id);
        }
        for (const Link& link : links)
        {
            m_text += "\n" + m_paint(Style::Heading, "Link ") +
                      m_paint(Style::Id, std::to_string(link.first) + " -> " + std::to_string(link.second));
            const Property record = m_job.graph->GetLink(link.first, link.second);
            Title(record);
            Children(record);
        }
        return std::move(m_text);
    }

private:
    void Node(NodeId id)
    {
        m_text += "\n" + m_paint(Style::Heading, "Node ") + m_paint(Style::Id, std::to_string(id));
        if (!m_seen.insert(id).second)
        {
            m_text += ": an earlier node has this id, and hides this one\n";
            return;
        }
        const Property record = (*m_job.graph)[id];
        Title(record);
        std::vector<NodeId> inputs;
        std::vector<NodeId> outputs;
        m_job.graph->Inputs(id, inputs);
        m_job.graph->Outputs(id, outputs);
        Neighbours("from ", inputs);
        Neighbours("to   ", outputs);
        Children(record);
    }

    void Neighbours(const char* direction, const std::vector<NodeId>& ids)
    {
        if (!ids.empty())
        {
            m_text += std::string("  ") + direction + " " + m_paint(Style::Id, Join(ids)) + "\n";
        }
    }

    /// Ends the line begun with the record's name, and with its value if it is a single one.
    void Title(const Property& record)
    {
        if (!IsEmpty(record))
        {
            m_text += ": " + m_paint(Style::Key, Printable(record.GetName()));
        }
        if (record.GetType() != PROPERTY_TYPE_GROUP && record.GetType() != PROPERTY_TYPE_NONE)
        {
            m_text += " " + Printable(ValueText(record));
        }
        m_text += "\n";
    }

    void Children(const Property& record)
    {
        constexpr std::size_t kIndent = 4;
        Table table(kIndent);
        AddRows(table, record, "");
        m_text += table.Text(m_paint);
    }

    /// Recurses once for each nested group; a document's records are nested 512 deep at most.
    static void AddRows(Table& table, const Property& group, const std::string& indent)
    {
        for (const Property& child : group)
        {
            const Table::Cell name{indent + child.GetName(), Style::Key};
            if (child.GetType() == PROPERTY_TYPE_GROUP && child.Count() != 0)
            {
                table.AddRow({name});
                AddRows(table, child, indent + "  ");
            }
            else
            {
                table.AddRow({name, {ValueText(child)}});
            }
        }
    }

    const Media::JobFile& m_job;
    Painter m_paint;
    std::string m_text;
    std::set<NodeId> m_seen;
};

void WriteRecord(const Property& record, JsonOutput& output)
{
    if (!IsEmpty(record))
    {
        output.Key("record");
        output.Record(record);
    }
}

void WriteNodes(const Media::JobFile& job, JsonOutput& output)
{
    JsonOutput::Writer& writer = output.GetWriter();
    output.Key("nodes");
    writer.StartArray();
    std::set<NodeId> seen;
    for (const NodeId id : NodesOf(job))
    {
        writer.StartObject();
        output.Key("id");
        writer.Int64(id);
        if (seen.insert(id).second)
        {
            std::vector<NodeId> inputs;
            std::vector<NodeId> outputs;
            job.graph->Inputs(id, inputs);
            job.graph->Outputs(id, outputs);
            output.Key("inputs");
            output.Integers(inputs);
            output.Key("outputs");
            output.Integers(outputs);
            WriteRecord((*job.graph)[id], output);
        }
        else
        {
            output.Key("hidden");
            writer.Bool(true);
        }
        writer.EndObject();
    }
    writer.EndArray();
}

void WriteLinks(const Media::JobFile& job, JsonOutput& output)
{
    JsonOutput::Writer& writer = output.GetWriter();
    output.Key("links");
    writer.StartArray();
    for (const Link& link : LinksOf(job))
    {
        writer.StartObject();
        output.Key("from");
        writer.Int64(link.first);
        output.Key("to");
        writer.Int64(link.second);
        WriteRecord(job.graph->GetLink(link.first, link.second), output);
        writer.EndObject();
    }
    writer.EndArray();
}

void WriteJson(const Media::JobFile& job)
{
    JsonOutput output;
    JsonOutput::Writer& writer = output.GetWriter();
    writer.StartObject();
    output.Key("valid");
    writer.Bool(job.graph->TopologyIsValid());
    WriteNodes(job, output);
    WriteLinks(job, output);
    writer.EndObject();
    output.Finish();
}

int RunJobShow(const JobShowArguments& options)
{
    const Media::JobFile job = OpenJob(options.job);
    if (options.json)
    {
        WriteJson(job);
    }
    else
    {
        WriteText(JobPrinter(job, Painter::ForStandardOutput()).Print());
    }
    return kExitSuccess;
}

} // namespace

void AddJobShowCommand(CLI::App& job)
{
    CLI::App* const command =
        AddCommand(job, "show", "Show the nodes and links of a job with their neighbours and records");
    const auto options = std::make_shared<JobShowArguments>();
    AddJobArgument(*command, options->job);
    AddJsonFlag(*command, options->json);
    OnRun(*command, [options] { return RunJobShow(*options); });
}

} // namespace Zelnor::Tool
