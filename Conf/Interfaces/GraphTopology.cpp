#include "Conf/Private/GrahpImpl.h"

#include <numeric>
#include <utility>

namespace Zelnor::Conf
{

// Nothing here recurses: a job may be a chain of any length.

/// The links alone, by the positions of their nodes, close together in memory: nodes lie far apart, and the
/// tests would visit each of them several times.
struct ITranscodingMetaGraph::GrahpImpl::Topology
{
    /// The targets of the links from the node at position i stand from `begins[i]` up to `begins[i + 1]`.
    std::vector<VertexT> begins;
    std::vector<VertexT> targets;
    /// Number of links to each node.
    std::vector<std::size_t> inputs;

    bool HasUnlinkedNode() const;
    bool HasCycle() const;
    bool IsConnected() const;
};

bool ITranscodingMetaGraph::GrahpImpl::TopologyIsValid() const
{
    if (m_nodes.size() < 2)
    {
        return false;
    }
    const Topology topology = GetTopology();
    return !topology.HasUnlinkedNode() && !topology.HasCycle() && topology.IsConnected();
}

ITranscodingMetaGraph::GrahpImpl::Topology ITranscodingMetaGraph::GrahpImpl::GetTopology() const
{
    Topology topology;
    topology.begins.reserve(m_nodes.size() + 1);
    topology.targets.reserve(m_links.size());
    topology.inputs.reserve(m_nodes.size());
    for (const auto& node : m_nodes)
    {
        topology.begins.push_back(topology.targets.size());
        for (const LinkEnd& end : node->outgoing)
        {
            topology.targets.push_back(end.other->position);
        }
        topology.inputs.push_back(node->incoming.size());
    }
    topology.begins.push_back(topology.targets.size());
    return topology;
}

bool ITranscodingMetaGraph::GrahpImpl::Topology::HasUnlinkedNode() const
{
    for (VertexT vertex = 0; vertex < inputs.size(); ++vertex)
    {
        if (inputs[vertex] == 0 && begins[vertex] == begins[vertex + 1])
        {
            return true;
        }
    }
    return false;
}

/// Takes away nodes without inputs, together with their links, as long as there are any. What is left over
/// lies on cycles or behind them.
bool ITranscodingMetaGraph::GrahpImpl::Topology::HasCycle() const
{
    std::vector<std::size_t> inputsLeft = inputs;
    std::vector<VertexT> free;
    for (VertexT vertex = 0; vertex < inputs.size(); ++vertex)
    {
        if (inputs[vertex] == 0)
        {
            free.push_back(vertex);
        }
    }
    std::size_t nodesLeft = inputs.size();
    for (; !free.empty(); --nodesLeft)
    {
        const VertexT vertex = free.back();
        free.pop_back();
        for (std::size_t link = begins[vertex]; link < begins[vertex + 1]; ++link)
        {
            if (--inputsLeft[targets[link]] == 0)
            {
                free.push_back(targets[link]);
            }
        }
    }
    return nodesLeft != 0;
}

/// Joins the sets of both ends of each link and counts the sets that are left. A set is a tree whose root
/// stands for it; the smaller set goes under the larger one, so that the way up stays short.
bool ITranscodingMetaGraph::GrahpImpl::Topology::IsConnected() const
{
    std::vector<VertexT> parents(inputs.size());
    std::iota(parents.begin(), parents.end(), VertexT{0});
    std::vector<std::size_t> sizes(inputs.size(), 1);
    const auto rootOf = [&parents](VertexT vertex) {
        while (parents[vertex] != vertex)
        {
            vertex = parents[vertex] = parents[parents[vertex]];
        }
        return vertex;
    };
    std::size_t sets = inputs.size();
    for (VertexT source = 0; source < inputs.size(); ++source)
    {
        for (std::size_t link = begins[source]; link < begins[source + 1]; ++link)
        {
            VertexT larger = rootOf(source);
            VertexT smaller = rootOf(targets[link]);
            if (larger == smaller)
            {
                continue;
            }
            if (sizes[larger] < sizes[smaller])
            {
                std::swap(larger, smaller);
            }
            parents[smaller] = larger;
            sizes[larger] += sizes[smaller];
            --sets;
        }
    }
    return sets == 1;
}

bool ITranscodingMetaGraph::TopologyIsValid() const { return m_impl->TopologyIsValid(); }

} // namespace Zelnor::Conf
