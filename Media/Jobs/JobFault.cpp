#include "Media/Jobs/JobFault.h"

#include "Media/Text.h"

#include "Conf/Interfaces/GraphAlgorithms.h"

#include <utility>

namespace Zelnor::Media
{

namespace
{

using Conf::NodeId;
using Conf::TopologyFault;

std::string Join(const std::vector<NodeId>& ids, const char* separator)
{
    std::string text;
    for (const NodeId id : ids)
    {
        text += (text.empty() ? "" : separator) + std::to_string(id);
    }
    return text;
}

JobFault::Kind KindOf(const TopologyFault& fault)
{
    switch (fault.kind)
    {
    case TopologyFault::TOO_FEW_NODES:
        return JobFault::TooFewNodes;
    case TopologyFault::REPEATED_IDS:
        return JobFault::RepeatedIds;
    case TopologyFault::UNLINKED_NODES:
        return JobFault::UnlinkedNodes;
    case TopologyFault::CYCLE:
        return JobFault::Cycle;
    case TopologyFault::SEVERAL_PARTS:
        break;
    }
    return JobFault::SeveralParts;
}

} // namespace

std::string JobFault::Name() const
{
    switch (kind)
    {
    case TooFewNodes:
        return "too_few_nodes";
    case RepeatedIds:
        return "repeated_ids";
    case UnlinkedNodes:
        return "unlinked_nodes";
    case Cycle:
        return "cycle";
    case SeveralParts:
        return "several_parts";
    case Structure:
        return "structure";
    case Input:
        return "input";
    case Setting:
        return "setting";
    case Encoder:
        return "encoder";
    case Container:
        return "container";
    case Output:
        return "output";
    case Loss:
        return "loss";
    }
    return "";
}

std::string JobFault::Sentence() const
{
    const std::vector<NodeId> nodes = groups.empty() ? std::vector<NodeId>() : groups.front();
    switch (kind)
    {
    case TooFewNodes:
        return "There " + std::string(nodes.size() == 1 ? "is " : "are ") + Count(nodes.size(), "node") +
               "; a job has at least 2.";
    case RepeatedIds:
        return "More than one node has the id " + Join(nodes, ", ") + "; links reach the first one only.";
    case UnlinkedNodes:
        return Count(nodes.size(), "node") + " without links: " + Join(nodes, ", ");
    case Cycle:
        return "There is a cycle: " + Join(nodes, " -> ") + " -> " + std::to_string(nodes.front());
    case SeveralParts: {
        std::string text = "The nodes form " + Count(groups.size(), "separate component") + ":";
        for (std::size_t i = 0; i < groups.size(); ++i)
        {
            text += (i == 0 ? " {" : ", {") + Join(groups[i], ", ") + "}";
        }
        return text;
    }
    case Structure:
    case Input:
    case Setting:
    case Encoder:
    case Container:
    case Output:
    case Loss:
        break;
    }
    const std::string where = place.TextInDocument();
    return where.empty() ? reason : where + ": " + reason;
}

std::vector<JobFault> FindTopologyFaults(const Conf::ITranscodingMetaGraph& job, const std::string& document)
{
    std::vector<JobFault> faults;
    for (TopologyFault& fault : Conf::GetTopologyFaults(job))
    {
        faults.push_back({KindOf(fault), std::move(fault.groups), Place{document}, ""});
    }
    return faults;
}

} // namespace Zelnor::Media
