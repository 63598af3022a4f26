#include "Conf/Interfaces/GrahpImpl.h"

#include <algorithm>

namespace Zelnor::Conf
{

// Nothing here recurses: a job may be a chain of any length.

bool ITranscodingMetaGraph::GrahpImpl::TopologyIsValid() const
{
    return m_nodes.size() >= 2 && !HasUnlinkedNode() && !HasCycle() && IsConnected();
}

bool ITranscodingMetaGraph::GrahpImpl::HasUnlinkedNode() const
{
    return std::any_of(m_nodes.begin(), m_nodes.end(),
                       [](const auto& node) { return node->outgoing.empty() && node->incoming.empty(); });
}

/// Takes away nodes without inputs, together with their links, as long as there are any. What is left over
/// lies on cycles or behind them.
bool ITranscodingMetaGraph::GrahpImpl::HasCycle() const
{
    std::vector<std::size_t> inputs(m_nodes.size());
    std::vector<const Node*> free;
    for (const auto& node : m_nodes)
    {
        inputs[node->position] = node->incoming.size();
        if (node->incoming.empty())
        {
            free.push_back(node.get());
        }
    }
    std::size_t left = m_nodes.size();
    for (; !free.empty(); --left)
    {
        const Node& node = *free.back();
        free.pop_back();
        for (const LinkEnd& end : node.outgoing)
        {
            if (--inputs[end.other->position] == 0)
            {
                free.push_back(end.other);
            }
        }
    }
    return left != 0;
}

bool ITranscodingMetaGraph::GrahpImpl::IsConnected() const
{
    std::vector<bool> reached(m_nodes.size());
    std::vector<const Node*> pending{m_nodes.front().get()};
    reached.front() = true;
    std::size_t count = 0;
    for (; !pending.empty(); ++count)
    {
        const Node& node = *pending.back();
        pending.pop_back();
        for (const LinkEnds* const ends : {&node.outgoing, &node.incoming})
        {
            for (const LinkEnd& end : *ends)
            {
                if (!reached[end.other->position])
                {
                    reached[end.other->position] = true;
                    pending.push_back(end.other);
                }
            }
        }
    }
    return count == m_nodes.size();
}

} // namespace Zelnor::Conf
