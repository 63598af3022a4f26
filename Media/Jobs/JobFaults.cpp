#include "Media/Jobs/JobFaults.h"

#include "Media/Text.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <optional>
#include <unordered_map>
#include <utility>

namespace Zelnor::Media
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

/// The strong parts of the job: sets of nodes of which each reaches each. Nodes of one cycle are in one part.
/// Tarjan's search, with a stack of its own, for a job may be a chain of any length.
class StrongParts
{
public:
    explicit StrongParts(const Topology& topology)
        : m_topology(topology), m_order(topology.linked.size(), kNone), m_low(m_order), m_part(m_order)
    {
        for (Position root = 0; root < m_order.size(); ++root)
        {
            if (m_order[root] == kNone)
            {
                Visit(root);
            }
        }
    }

    std::size_t Count() const { return m_count; }
    std::size_t PartOf(Position node) const { return m_part[node]; }

private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    void Visit(Position root)
    {
        Enter(root);
        while (!m_path.empty())
        {
            const Position node = m_path.back();
            if (m_next.back() == m_topology.first[node + 1])
            {
                Leave(node);
                continue;
            }
            const Position target = m_topology.targets[m_next.back()++];
            if (m_order[target] == kNone)
            {
                Enter(target);
            }
            else if (m_part[target] == kNone)
            {
                m_low[node] = std::min(m_low[node], m_order[target]);
            }
        }
    }

    void Enter(Position node)
    {
        m_order[node] = m_low[node] = m_entered++;
        m_path.push_back(node);
        m_next.push_back(m_topology.first[node]);
        m_open.push_back(node);
    }

    void Leave(Position node)
    {
        m_path.pop_back();
        m_next.pop_back();
        if (!m_path.empty())
        {
            m_low[m_path.back()] = std::min(m_low[m_path.back()], m_low[node]);
        }
        if (m_low[node] != m_order[node])
        {
            return;
        }
        Position last = kNone;
        do
        {
            last = m_open.back();
            m_open.pop_back();
            m_part[last] = m_count;
        } while (last != node);
        ++m_count;
    }

    const Topology& m_topology;
    std::vector<std::size_t> m_order;
    std::vector<std::size_t> m_low;
    std::vector<std::size_t> m_part;
    std::vector<Position> m_path;
    /// For each node of the path, which of its links is to be followed next.
    std::vector<Position> m_next;
    /// The nodes whose part is not complete yet.
    std::vector<Position> m_open;
    std::size_t m_entered = 0;
    std::size_t m_count = 0;
};

/// The first node that `node` links to in its own strong part, or nothing.
std::optional<Position> NextInPart(const Topology& topology, const StrongParts& parts, Position node)
{
    const auto begin = topology.targets.begin() + static_cast<std::ptrdiff_t>(topology.first[node]);
    const auto end = topology.targets.begin() + static_cast<std::ptrdiff_t>(topology.first[node + 1]);
    const auto found =
        std::find_if(begin, end, [&](Position target) { return parts.PartOf(target) == parts.PartOf(node); });
    return found == end ? std::nullopt : std::optional<Position>(*found);
}

/// One cycle of each strong part that has any, in the order of their first nodes. All cycles would be too
/// many to list, and these fall apart only when every cycle is broken.
std::vector<std::vector<Position>> FindCycles(const Topology& topology)
{
    const StrongParts parts(topology);
    std::vector<bool> done(parts.Count(), false);
    std::vector<bool> walked(topology.linked.size(), false);
    std::vector<std::vector<Position>> cycles;
    for (Position start = 0; start < walked.size(); ++start)
    {
        if (done[parts.PartOf(start)])
        {
            continue;
        }
        done[parts.PartOf(start)] = true;
        std::vector<Position> walk;
        std::optional<Position> node = start;
        for (; node && !walked[*node]; node = NextInPart(topology, parts, *node))
        {
            walked[*node] = true;
            walk.push_back(*node);
        }
        if (node)
        {
            cycles.emplace_back(std::find(walk.begin(), walk.end(), *node), walk.end());
        }
    }
    return cycles;
}

std::vector<Position> FindUnlinked(const Topology& topology)
{
    std::vector<Position> unlinked;
    for (Position node = 0; node < topology.linked.size(); ++node)
    {
        if (!topology.IsLinked(node))
        {
            unlinked.push_back(node);
        }
    }
    return unlinked;
}

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
    const std::vector<Position> unlinked = FindUnlinked(topology);
    if (!unlinked.empty() && job.nodes.size() >= 2)
    {
        faults.push_back({JobFault::UnlinkedNodes, {IdsOf(job, unlinked)}});
    }
    for (const std::vector<Position>& cycle : FindCycles(topology))
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

} // namespace Zelnor::Media
