#include "Media/Pages/JobItems.h"

#include "Media/Pages/HtmlText.h"
#include "Media/Pages/RecordTree.h"
#include "Media/RecordText.h"

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <map>
#include <optional>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodecVideo;
using Conf::ITranscodingMetaGraph;
using Conf::NodeId;
using Core::Property;

using Link = std::pair<NodeId, NodeId>;

std::optional<long long> IntegerUnder(const Property& record, const std::string& key)
{
    const auto child = record.FindChild(key);
    return child != record.end() && child->GetType() == PROPERTY_TYPE_INT64 ? std::optional(child->GetInt64())
                                                                            : std::nullopt;
}

/// What tells a record from others of its name.
std::string DetailOf(const Property& record)
{
    const std::string path = TextUnder(record, ITranscodingMetaGraph::KEY_FILEPATH);
    if (!path.empty())
    {
        return path.substr(path.rfind('/') + 1);
    }
    const auto stream = IntegerUnder(record, ITranscodingMetaGraph::KEY_STREAM_RAW_ID);
    if (record.GetName() == ITranscodingMetaGraph::KEY_STREAM_RAW && stream)
    {
        return "stream " + std::to_string(*stream);
    }
    const auto width = IntegerUnder(record, IFormatCodecVideo::TAG_WIDTH);
    const auto height = IntegerUnder(record, IFormatCodecVideo::TAG_HEIGHT);
    const std::string codec = TextUnder(record, Conf::IFormatCodec::TAG_CODEC_ID);
    return codec + (width && height
                        ? (codec.empty() ? "" : " ") + std::to_string(*width) + "x" + std::to_string(*height)
                        : "");
}

/// What a fault of the topology says of one of its nodes; empty where it is about the whole job.
const char* TextAtNode(JobFault::Kind kind)
{
    switch (kind)
    {
    case JobFault::RepeatedIds:
        return "more than one node has this id";
    case JobFault::UnlinkedNodes:
        return "no links";
    case JobFault::Cycle:
        return "part of a cycle";
    case JobFault::TooFewNodes:
    case JobFault::SeveralParts:
    case JobFault::Structure:
    case JobFault::Input:
    case JobFault::Setting:
    case JobFault::Encoder:
    case JobFault::Container:
    case JobFault::Output:
    case JobFault::Loss:
        break;
    }
    return "";
}

class Collector
{
public:
    explicit Collector(const ITranscodingMetaGraph& job) : m_job(job) {}

    void AddNodes()
    {
        std::vector<NodeId> ids;
        m_job.Nodes(ids);
        for (const NodeId id : ids)
        {
            JobItem item;
            item.number = std::to_string(id);
            item.title = "Node " + item.number;
            item.isHidden = !m_nodes.emplace(id, m_items.nodes.size()).second;
            item.anchor = item.isHidden ? "hidden-" + std::to_string(m_items.nodes.size()) : NodeAnchor(id);
            item.name = "hidden node";
            if (!item.isHidden)
            {
                Describe(m_job[id], item);
            }
            m_items.nodes.push_back(std::move(item));
        }
    }

    void AddLinks()
    {
        std::vector<Link> links;
        m_job.Links(links);
        for (const Link& link : links)
        {
            JobItem item;
            item.number = std::to_string(link.first) + " -> " + std::to_string(link.second);
            item.title = "Link " + item.number;
            item.anchor = LinkAnchor(link);
            Describe(m_job.GetLink(link.first, link.second), item);
            const std::size_t from = m_nodes.at(link.first);
            const std::size_t to = m_nodes.at(link.second);
            item.links = {LinkTo(m_items.nodes[from]), LinkTo(m_items.nodes[to])};
            m_items.nodes[from].links.push_back(LinkTo(item));
            if (from != to)
            {
                m_items.nodes[to].links.push_back(LinkTo(item));
            }
            m_links.emplace(link, m_items.links.size());
            m_items.ends.emplace_back(from, to);
            m_items.links.push_back(std::move(item));
        }
    }

    void AddStreams(const std::vector<Transcode>& transcodes)
    {
        for (const Transcode& transcode : transcodes)
        {
            for (const TranscodeStream& stream : transcode.streams)
            {
                if (stream.input != TranscodeStream::kNoInput && stream.place.link)
                {
                    const MediaStream& source = transcode.SourceOf(stream);
                    m_items.nodes[m_nodes.at(stream.place.link->first)].detail =
                        ShownText("stream " + std::to_string(source.index) + ", " + NameOf(source.kind) +
                                  " " + source.codec);
                }
            }
        }
    }

    void AddFaults(const std::vector<JobFault>& faults)
    {
        for (std::size_t i = 0; i < faults.size(); ++i)
        {
            const JobFault& fault = faults[i];
            const std::string anchor = FaultAnchor(i + 1);
            if (fault.IsOfTopology())
            {
                AddToGroups(fault, anchor);
            }
            else if (JobItem* const item = Find(fault.place))
            {
                // What is left of the place is inside the record.
                Place inside = fault.place;
                inside.node.reset();
                inside.link.reset();
                const std::string where = inside.TextInDocument();
                item->faults.push_back(
                    {anchor, ShownText((where.empty() ? "" : where + ": ") + fault.reason)});
            }
        }
    }

    JobItems Take() { return std::move(m_items); }

private:
    static PageLink LinkTo(const JobItem& item) { return {item.anchor, item.title}; }

    static void Describe(Property record, JobItem& item)
    {
        item.name = "no record";
        if (!IsNoRecord(record))
        {
            item.hasRecord = true;
            item.name = record.GetName().empty() ? "record without a name" : ShownText(record.GetName());
            item.detail = ShownText(DetailOf(record));
            item.record = std::move(record);
        }
    }

    void AddToGroups(const JobFault& fault, const std::string& anchor)
    {
        const std::string text = TextAtNode(fault.kind);
        if (text.empty())
        {
            return;
        }
        for (const std::vector<NodeId>& group : fault.groups)
        {
            for (const NodeId id : group)
            {
                m_items.nodes[m_nodes.at(id)].faults.push_back({anchor, text});
            }
        }
    }

    JobItem* Find(const Place& place)
    {
        if (place.link)
        {
            const auto link = m_links.find(*place.link);
            return link == m_links.end() ? nullptr : &m_items.links[link->second];
        }
        const auto node = place.node ? m_nodes.find(*place.node) : m_nodes.end();
        return node == m_nodes.end() ? nullptr : &m_items.nodes[node->second];
    }

    const ITranscodingMetaGraph& m_job;
    JobItems m_items;
    std::map<NodeId, std::size_t> m_nodes; ///< the first of each id
    std::map<Link, std::size_t> m_links;
};

} // namespace

std::string FaultAnchor(std::size_t number) { return "fault-" + std::to_string(number); }

std::string NodeAnchor(NodeId id) { return "node-" + std::to_string(id); }

std::string LinkAnchor(const Link& link)
{
    return "link-" + std::to_string(link.first) + "-to-" + std::to_string(link.second);
}

JobItems ReadItems(const ITranscodingMetaGraph& job, const std::vector<Transcode>& transcodes,
                   const std::vector<JobFault>& faults)
{
    Collector collector(job);
    collector.AddNodes();
    collector.AddLinks();
    collector.AddStreams(transcodes);
    collector.AddFaults(faults);
    return collector.Take();
}

} // namespace Zelnor::Media
