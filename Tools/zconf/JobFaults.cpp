#include "Tools/zconf/JobFaults.h"

#include "Tools/zconf/Text.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <unordered_map>
#include <utility>

namespace Zelnor::Tool
{

namespace
{

using Conf::NodeId;
using Position = std::size_t;

/// The job by positions: the targets of the node p are `targets[first[p]]` to `targets[first[p + 1]]`.
struct Topology
{
    explicit Topology(const JobFile& job);

    bool IsLinked(Position node) const { return linked[node]; }

    std::vector<Position> first;
    std::vector<Position> targets;
    std::vector<bool> linked;
    std::vector<NodeId> repeatedIds;
};

Topology::Topology(const JobFile& job) : first(job.nodes.size() + 1, 0), linked(job.nodes.size(), false)
{
    std::unordered_map<NodeId, std::pair<Position, bool>> positions;
    positions.reserve(job.nodes.size());
    for (Position i = 0; i < job.nodes.size(); ++i)
    {
        const auto [known, isNew] = positions.try_emplace(job.nodes[i], i, false);
        if (!isNew && !std::exchange(known->second.second, true))
        {
            repeatedIds.push_back(job.nodes[i]);
        }
    }
    std::vector<std::pair<Position, Position>> links;
    links.reserve(job.links.size());
    for (const auto& [from, to] : job.links)
    {
        links.emplace_back(positions.at(from).first, positions.at(to).first);
    }
    for (const auto& [from, to] : links)
    {
        ++first[from + 1];
        linked[from] = linked[to] = true;
    }
    std::partial_sum(first.begin(), first.end(), first.begin());
    targets.resize(links.size());
    std::vector<Position> next(first.begin(), first.end());
    for (const auto& [from, to] : links)
    {
        targets[next[from]++] = to;
    }
}

/// A depth-first search that keeps its own stack, for a job may be a chain of any length.
class CycleSearch
{
public:
    explicit CycleSearch(const Topology& topology)
        : m_topology(topology), m_state(topology.linked.size(), Unseen)
    {}

    /// The nodes of the first cycle met, or nothing.
    std::vector<Position> Run()
    {
        for (Position root = 0; root < m_state.size(); ++root)
        {
            if (m_state[root] == Unseen && Visit(root))
            {
                return m_path;
            }
        }
        return {};
    }

private:
    enum State : char
    {
        Unseen,
        OnPath,
        Done,
    };

    bool Visit(Position root)
    {
        Enter(root);
        while (!m_path.empty())
        {
            const Position node = m_path.back();
            if (m_next.back() == m_topology.first[node + 1])
            {
                m_state[node] = Done;
                m_path.pop_back();
                m_next.pop_back();
                continue;
            }
            const Position target = m_topology.targets[m_next.back()++];
            if (m_state[target] == OnPath)
            {
                m_path.erase(m_path.begin(), std::find(m_path.begin(), m_path.end(), target));
                return true;
            }
            if (m_state[target] == Unseen)
            {
                Enter(target);
            }
        }
        return false;
    }

    void Enter(Position node)
    {
        m_state[node] = OnPath;
        m_path.push_back(node);
        m_next.push_back(m_topology.first[node]);
    }

    const Topology& m_topology;
    std::vector<State> m_state;
    std::vector<Position> m_path;
    /// For each node of the path, which of its links is to be followed next.
    std::vector<Position> m_next;
};

/// The linked nodes of each connected part, when directions are ignored.
std::vector<std::vector<Position>> FindParts(const Topology& topology)
{
    std::vector<Position> leader(topology.linked.size());
    std::iota(leader.begin(), leader.end(), Position{0});
    const auto find = [&leader](Position node) {
        while (leader[node] != node)
        {
            node = leader[node] = leader[leader[node]];
        }
        return node;
    };
    for (Position from = 0; from < leader.size(); ++from)
    {
        for (Position i = topology.first[from]; i < topology.first[from + 1]; ++i)
        {
            const auto [low, high] = std::minmax({find(from), find(topology.targets[i])});
            leader[high] = low;
        }
    }
    std::vector<std::vector<Position>> parts;
    std::unordered_map<Position, std::size_t> partOf;
    for (Position node = 0; node < leader.size(); ++node)
    {
        if (topology.IsLinked(node))
        {
            const std::size_t part = partOf.try_emplace(find(node), parts.size()).first->second;
            parts.resize(std::max(parts.size(), part + 1));
            parts[part].push_back(node);
        }
    }
    return parts;
}

std::string Join(const std::vector<NodeId>& ids, const char* separator)
{
    std::string text;
    for (const NodeId id : ids)
    {
        text += (text.empty() ? "" : separator) + std::to_string(id);
    }
    return text;
}

std::vector<NodeId> IdsOf(const JobFile& job, const std::vector<Position>& nodes)
{
    std::vector<NodeId> ids;
    ids.reserve(nodes.size());
    for (const Position node : nodes)
    {
        ids.push_back(job.nodes[node]);
    }
    return ids;
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
    }
    return "";
}

std::string JobFault::Sentence() const
{
    const std::vector<NodeId>& nodes = groups.front();
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
        std::string text = "The nodes fall into " + Count(groups.size(), "part") + ":";
        for (std::size_t i = 0; i < groups.size(); ++i)
        {
            text += (i == 0 ? " {" : ", {") + Join(groups[i], ", ") + "}";
        }
        return text;
    }
    }
    return "";
}

std::vector<JobFault> FindFaults(const JobFile& job)
{
    std::vector<JobFault> faults;
    const Topology topology(job);
    if (job.nodes.size() < 2)
    {
        faults.push_back({JobFault::TooFewNodes, {job.nodes}});
    }
    if (!topology.repeatedIds.empty())
    {
        faults.push_back({JobFault::RepeatedIds, {topology.repeatedIds}});
    }
    std::vector<Position> unlinked;
    for (Position node = 0; node < job.nodes.size(); ++node)
    {
        if (!topology.IsLinked(node))
        {
            unlinked.push_back(node);
        }
    }
    if (!unlinked.empty() && job.nodes.size() >= 2)
    {
        faults.push_back({JobFault::UnlinkedNodes, {IdsOf(job, unlinked)}});
    }
    const std::vector<Position> cycle = CycleSearch(topology).Run();
    if (!cycle.empty())
    {
        faults.push_back({JobFault::Cycle, {IdsOf(job, cycle)}});
    }
    const std::vector<std::vector<Position>> parts = FindParts(topology);
    if (parts.size() > 1)
    {
        JobFault fault{JobFault::SeveralParts, {}};
        for (const std::vector<Position>& part : parts)
        {
            fault.groups.push_back(IdsOf(job, part));
        }
        faults.push_back(std::move(fault));
    }
    return faults;
}

} // namespace Zelnor::Tool
