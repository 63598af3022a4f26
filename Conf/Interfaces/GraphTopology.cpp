#include "Conf/Interfaces/GraphAlgorithms.h"
#include "Conf/Private/GrahpImpl.h"

#include <boost/container/small_vector.hpp>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <numeric>
#include <optional>
#include <unordered_map>
#include <utility>

namespace Zelnor::Conf
{

// Nothing here recurses: a job may be a chain of any length.

/// Links by the positions of their nodes, close together in memory: nodes lie far apart, and the tests would
/// visit each of them several times.
struct Topology
{
    using VertexT = AdjacencyList::Slot;

    VertexT Count() const { return static_cast<VertexT>(inputs.size()); }
    bool IsUnlinked(VertexT vertex) const
    {
        return inputs[vertex] == 0 && begins[vertex] == begins[vertex + 1];
    }

    /// The targets of the links from the node at position i stand from `begins[i]` up to `begins[i + 1]`.
    std::vector<VertexT> begins;
    std::vector<VertexT> targets;
    /// Number of links to each node.
    std::vector<VertexT> inputs;
};

namespace
{

using VertexT = Topology::VertexT;
using Vertices = std::vector<VertexT>;

constexpr std::size_t kFewestNodes = 2;

/// Everyday jobs need no allocation.
template <class T>
using FewOrMany = boost::container::small_vector<T, 128>;

/// The first node without links at or after `vertex`; `Count()` if there is none.
VertexT FindUnlinked(const Topology& topology, VertexT vertex)
{
    while (vertex < topology.Count() && !topology.IsUnlinked(vertex))
    {
        ++vertex;
    }
    return vertex;
}

/// Takes away nodes without inputs, together with their links, as long as there are any. What is left over
/// lies on cycles or behind them.
bool HasCycle(const Topology& topology)
{
    Vertices inputsLeft = topology.inputs;
    Vertices free;
    for (VertexT vertex = 0; vertex < topology.Count(); ++vertex)
    {
        if (inputsLeft[vertex] == 0)
        {
            free.push_back(vertex);
        }
    }
    std::size_t nodesLeft = topology.Count();
    for (; !free.empty(); --nodesLeft)
    {
        const VertexT vertex = free.back();
        free.pop_back();
        for (std::size_t link = topology.begins[vertex]; link < topology.begins[vertex + 1]; ++link)
        {
            if (--inputsLeft[topology.targets[link]] == 0)
            {
                free.push_back(topology.targets[link]);
            }
        }
    }
    return nodesLeft != 0;
}

/// The sets of nodes that links connect, whichever way they point. A set is a tree whose root stands for it;
/// every way up is shortened when it is gone.
class ConnectedParts
{
public:
    /// Every node is a set of its own.
    explicit ConnectedParts(std::size_t nodes) : m_parents(nodes), m_count(nodes)
    {
        std::iota(m_parents.begin(), m_parents.end(), VertexT{0});
    }

    explicit ConnectedParts(const Topology& topology) : ConnectedParts(topology.Count())
    {
        for (VertexT source = 0; source < topology.Count(); ++source)
        {
            for (std::size_t link = topology.begins[source]; link < topology.begins[source + 1]; ++link)
            {
                Connect(source, topology.targets[link]);
            }
        }
    }

    std::size_t Count() const { return m_count; }
    void Connect(VertexT left, VertexT right)
    {
        const VertexT leftRoot = RootOf(left);
        const VertexT rightRoot = RootOf(right);
        if (leftRoot != rightRoot)
        {
            m_parents[std::max(leftRoot, rightRoot)] = std::min(leftRoot, rightRoot);
            --m_count;
        }
    }
    VertexT RootOf(VertexT vertex)
    {
        while (m_parents[vertex] != vertex)
        {
            vertex = m_parents[vertex] = m_parents[m_parents[vertex]];
        }
        return vertex;
    }

private:
    FewOrMany<VertexT> m_parents;
    std::size_t m_count;
};

/// The strong parts: sets of nodes of which each reaches each, so that the nodes of one cycle are in one
/// part. Tarjan's search.
class StrongParts
{
public:
    explicit StrongParts(const Topology& topology)
        : m_topology(topology), m_order(topology.Count(), kNone), m_low(m_order), m_part(m_order)
    {
        for (VertexT root = 0; root < m_order.size(); ++root)
        {
            if (m_order[root] == kNone)
            {
                Visit(root);
            }
        }
    }

    VertexT Count() const { return m_count; }
    VertexT PartOf(VertexT vertex) const { return m_part[vertex]; }

private:
    static constexpr VertexT kNone = AdjacencyList::kNone;

    void Visit(VertexT root)
    {
        Enter(root);
        while (!m_path.empty())
        {
            const VertexT vertex = m_path.back();
            if (m_next.back() == m_topology.begins[vertex + 1])
            {
                Leave(vertex);
                continue;
            }
            const VertexT target = m_topology.targets[m_next.back()++];
            if (m_order[target] == kNone)
            {
                Enter(target);
            }
            else if (m_part[target] == kNone)
            {
                m_low[vertex] = std::min(m_low[vertex], m_order[target]);
            }
        }
    }

    void Enter(VertexT vertex)
    {
        m_order[vertex] = m_low[vertex] = m_entered++;
        m_path.push_back(vertex);
        m_next.push_back(m_topology.begins[vertex]);
        m_open.push_back(vertex);
    }

    void Leave(VertexT vertex)
    {
        m_path.pop_back();
        m_next.pop_back();
        if (!m_path.empty())
        {
            m_low[m_path.back()] = std::min(m_low[m_path.back()], m_low[vertex]);
        }
        if (m_low[vertex] != m_order[vertex])
        {
            return;
        }
        VertexT last = kNone;
        do
        {
            last = m_open.back();
            m_open.pop_back();
            m_part[last] = m_count;
        } while (last != vertex);
        ++m_count;
    }

    const Topology& m_topology;
    Vertices m_order;
    Vertices m_low;
    Vertices m_part;
    Vertices m_path;
    /// For each node of the path, which of its links is to be followed next.
    Vertices m_next;
    /// The nodes whose part is not complete yet.
    Vertices m_open;
    VertexT m_entered = 0;
    VertexT m_count = 0;
};

/// The first node that `vertex` links to in its own strong part.
std::optional<VertexT> NextInPart(const Topology& topology, const StrongParts& parts, VertexT vertex)
{
    const auto begin = topology.targets.begin() + static_cast<std::ptrdiff_t>(topology.begins[vertex]);
    const auto end = topology.targets.begin() + static_cast<std::ptrdiff_t>(topology.begins[vertex + 1]);
    const auto found = std::find_if(
        begin, end, [&](VertexT target) { return parts.PartOf(target) == parts.PartOf(vertex); });
    return found == end ? std::nullopt : std::optional<VertexT>(*found);
}

/// One cycle of each strong part that has any, in the order of their first nodes.
std::vector<Vertices> FindCycles(const Topology& topology)
{
    std::vector<Vertices> cycles;
    if (!HasCycle(topology))
    {
        return cycles;
    }
    const StrongParts parts(topology);
    std::vector<bool> done(parts.Count(), false);
    std::vector<bool> walked(topology.Count(), false);
    for (VertexT start = 0; start < topology.Count(); ++start)
    {
        if (done[parts.PartOf(start)])
        {
            continue;
        }
        done[parts.PartOf(start)] = true;
        Vertices walk;
        std::optional<VertexT> vertex = start;
        for (; vertex && !walked[*vertex]; vertex = NextInPart(topology, parts, *vertex))
        {
            walked[*vertex] = true;
            walk.push_back(*vertex);
        }
        if (vertex)
        {
            cycles.emplace_back(std::find(walk.begin(), walk.end(), *vertex), walk.end());
        }
    }
    return cycles;
}

Vertices FindAllUnlinked(const Topology& topology)
{
    Vertices unlinked;
    for (VertexT vertex = FindUnlinked(topology, 0); vertex < topology.Count();
         vertex = FindUnlinked(topology, vertex + 1))
    {
        unlinked.push_back(vertex);
    }
    return unlinked;
}

/// The linked nodes of each connected part, in the order of their first nodes.
std::vector<Vertices> FindParts(const Topology& topology)
{
    ConnectedParts connected(topology);
    std::vector<Vertices> parts;
    std::unordered_map<VertexT, std::size_t> partOf;
    for (VertexT vertex = 0; vertex < topology.Count(); ++vertex)
    {
        if (!topology.IsUnlinked(vertex))
        {
            const std::size_t part = partOf.try_emplace(connected.RootOf(vertex), parts.size()).first->second;
            parts.resize(std::max(parts.size(), part + 1));
            parts[part].push_back(vertex);
        }
    }
    return parts;
}

/// The identifiers that stand more than once, each as soon as it is repeated.
std::vector<NodeId> FindRepeated(const std::vector<NodeId>& ids)
{
    std::vector<NodeId> repeated;
    if (std::adjacent_find(ids.begin(), ids.end(), std::greater_equal<>()) == ids.end())
    {
        return repeated;
    }
    std::map<NodeId, std::size_t> counts;
    std::copy_if(ids.begin(), ids.end(), std::back_inserter(repeated),
                 [&counts](NodeId id) { return ++counts[id] == 2; });
    return repeated;
}

std::vector<NodeId> IdsOf(const std::vector<NodeId>& ids, const Vertices& vertices)
{
    std::vector<NodeId> some;
    some.reserve(vertices.size());
    std::transform(vertices.begin(), vertices.end(), std::back_inserter(some),
                   [&ids](VertexT vertex) { return ids[vertex]; });
    return some;
}

} // namespace

auto ITranscodingMetaGraph::GrahpImpl::GetPositions() const -> std::vector<VertexT>
{
    std::vector<VertexT> positions(m_adjacency.Nodes().size(), AdjacencyList::kNone);
    VertexT position = 0;
    ForEachNode([&](VertexT vertex) { positions[vertex] = position++; });
    return positions;
}

Topology ITranscodingMetaGraph::GrahpImpl::GetTopology() const
{
    const std::vector<AdjacencyList::Link>& links = m_adjacency.Links();
    const std::vector<VertexT> positions = GetPositions();
    Topology topology;
    topology.begins.reserve(m_adjacency.CountNodes() + 1);
    topology.targets.reserve(m_adjacency.CountLinks());
    topology.inputs.resize(m_adjacency.CountNodes());
    ForEachNode([&](VertexT vertex) {
        topology.begins.push_back(static_cast<VertexT>(topology.targets.size()));
        for (EdgeT edge = m_adjacency.Nodes()[vertex].firstOutgoing; edge != AdjacencyList::kNone;
             edge = links[edge].nextOutgoing)
        {
            topology.targets.push_back(positions[links[edge].target]);
            ++topology.inputs[topology.targets.back()];
        }
    });
    topology.begins.push_back(static_cast<VertexT>(topology.targets.size()));
    return topology;
}

bool ITranscodingMetaGraph::GrahpImpl::TopologyIsValid() const
{
    const std::size_t nodes = m_adjacency.CountNodes();
    // Fewer links cannot connect all nodes.
    if (nodes < kFewestNodes || m_adjacency.CountLinks() < nodes - 1)
    {
        return false;
    }
    // Where every link leads to a later node, as in most jobs, there is no cycle, and one walk over the links
    // as they are stored is enough.
    const std::size_t empty = m_adjacency.Nodes().size() - nodes;
    ConnectedParts parts(m_adjacency.Nodes().size());
    bool areAscending = true;
    ForEachLink([&](EdgeT, const AdjacencyList::Link& link) {
        areAscending = areAscending && link.target > link.source;
        parts.Connect(link.source, link.target);
    });
    return parts.Count() - empty == 1 && (areAscending || !HasCycle(GetTopology()));
}

bool ITranscodingMetaGraph::GrahpImpl::PathExists(NodeId from, NodeId to) const
{
    if (from == to)
    {
        return true;
    }
    const VertexT first = VertexById(from);
    const VertexT last = m_adjacency.FindNode(to);
    if (last == AdjacencyList::kNone)
    {
        return false;
    }
    const std::vector<AdjacencyList::Node>& nodes = m_adjacency.Nodes();
    const std::vector<AdjacencyList::Link>& links = m_adjacency.Links();
    // Nodes are marked when they are queued, not when they are visited: many paths may lead to one node.
    // Marks that are bits would make each wait for the one before.
    const auto queued = std::make_unique<bool[]>(nodes.size());
    // Not filled with anything, unlike a vector.
    const std::unique_ptr<VertexT[]> queue(new VertexT[nodes.size()]);
    queued[first] = true;
    queue[0] = first;
    std::size_t count = 1;
    for (std::size_t next = 0; next != count; ++next)
    {
        for (EdgeT edge = nodes[queue[next]].firstOutgoing; edge != AdjacencyList::kNone;
             edge = links[edge].nextOutgoing)
        {
            const VertexT target = links[edge].target;
            if (target == last)
            {
                return true;
            }
            if (!queued[target])
            {
                queued[target] = true;
                queue[count++] = target;
            }
        }
    }
    return false;
}

std::vector<TopologyFault> ITranscodingMetaGraph::GrahpImpl::GetTopologyFaults() const
{
    std::vector<TopologyFault> faults;
    std::vector<NodeId> ids;
    Nodes(ids);
    const Topology topology = GetTopology();
    if (ids.size() < kFewestNodes)
    {
        faults.push_back({TopologyFault::TOO_FEW_NODES, {ids}});
    }
    if (std::vector<NodeId> repeated = FindRepeated(ids); !repeated.empty())
    {
        faults.push_back({TopologyFault::REPEATED_IDS, {std::move(repeated)}});
    }
    if (const Vertices unlinked = FindAllUnlinked(topology); !unlinked.empty() && ids.size() >= kFewestNodes)
    {
        faults.push_back({TopologyFault::UNLINKED_NODES, {IdsOf(ids, unlinked)}});
    }
    for (const Vertices& cycle : FindCycles(topology))
    {
        faults.push_back({TopologyFault::CYCLE, {IdsOf(ids, cycle)}});
    }
    if (const std::vector<Vertices> parts = FindParts(topology); parts.size() > 1)
    {
        TopologyFault fault{TopologyFault::SEVERAL_PARTS, {}};
        std::transform(parts.begin(), parts.end(), std::back_inserter(fault.groups),
                       [&ids](const Vertices& part) { return IdsOf(ids, part); });
        faults.push_back(std::move(fault));
    }
    return faults;
}

bool ITranscodingMetaGraph::TopologyIsValid() const { return m_impl->TopologyIsValid(); }

std::vector<TopologyFault> GetTopologyFaults(const ITranscodingMetaGraph& graph)
{
    return graph.m_impl->GetTopologyFaults();
}

} // namespace Zelnor::Conf
