#include "Conf/Private/AdjacencyList.h"

#include <algorithm>

namespace Zelnor::Conf
{

AdjacencyList::Slot AdjacencyList::FindOtherNode(NodeId id) const
{
    if (!m_firstById)
    {
        return FindAscending(id);
    }
    const auto found = m_firstById->find(id);
    return found == m_firstById->end() ? kNone : found->second;
}

AdjacencyList::Slot AdjacencyList::FindAscending(NodeId id) const
{
    if (m_nodes.empty() || id < m_nodes.front().id || id > m_nodes.back().id)
    {
        return kNone;
    }
    if (const Node* const node = FindLatest(id))
    {
        return node->IsRemoved() ? kNone : static_cast<Slot>(node - m_nodes.data());
    }
    // The node is never at a later slot, and at an earlier one by no more than all identifiers that were left
    // out.
    const unsigned long long latest = Distance(m_nodes.front().id, id);
    const unsigned long long leftOut = Distance(m_nodes.front().id, m_nodes.back().id) - (m_nodes.size() - 1);
    const auto begin = m_nodes.begin() + static_cast<std::ptrdiff_t>(latest - std::min(latest, leftOut));
    const auto end =
        m_nodes.begin() + static_cast<std::ptrdiff_t>(std::min<unsigned long long>(latest, m_nodes.size()));
    const auto found =
        std::lower_bound(begin, end, id, [](const Node& node, NodeId wanted) { return node.id < wanted; });
    if (found == end || found->id != id || found->IsRemoved())
    {
        return kNone;
    }
    return static_cast<Slot>(found - m_nodes.begin());
}

AdjacencyList::Slot AdjacencyList::FindLink(Slot source, Slot target) const
{
    // Both lists are walked at once until the shorter one ends, so that links of a node with many links are
    // found quickly.
    Slot outgoing = m_nodes[source].firstOutgoing;
    Slot incoming = m_nodes[target].firstIncoming;
    while (outgoing != kNone && incoming != kNone)
    {
        if (m_links[outgoing].target == target)
        {
            return outgoing;
        }
        if (m_links[incoming].source == source)
        {
            return incoming;
        }
        outgoing = m_links[outgoing].nextOutgoing;
        incoming = m_links[incoming].nextIncoming;
    }
    return kNone;
}

void AdjacencyList::AddNode(NodeId id)
{
    const auto slot = static_cast<Slot>(m_nodes.size());
    m_nodes.push_back({id});
    try
    {
        if (m_firstById)
        {
            m_firstById->emplace(id, slot);
        }
        else if (slot != 0 && m_nodes[slot - 1].id >= id)
        {
            IndexAll();
        }
    }
    catch (...)
    {
        m_nodes.pop_back();
        throw;
    }
}

void AdjacencyList::IndexAll()
{
    Index index;
    for (Slot slot = 0; slot < m_nodes.size(); ++slot)
    {
        if (!m_nodes[slot].IsRemoved())
        {
            index.emplace(m_nodes[slot].id, slot);
        }
    }
    m_firstById = std::move(index);
}

void AdjacencyList::RemoveNode(Slot node) noexcept
{
    m_nodes[node].firstOutgoing = kRemoved;
    ++m_removedNodes;
    IndexAfterRemoval(m_nodes[node].id);
}

void AdjacencyList::IndexAfterRemoval(NodeId id) noexcept
{
    if (!m_firstById)
    {
        return;
    }
    const auto next = std::find_if(m_nodes.begin(), m_nodes.end(),
                                   [id](const Node& node) { return node.id == id && !node.IsRemoved(); });
    if (next == m_nodes.end())
    {
        m_firstById->erase(id);
    }
    else
    {
        m_firstById->find(id)->second = static_cast<Slot>(next - m_nodes.begin());
    }
}

void AdjacencyList::AddLink(Slot source, Slot target)
{
    const auto slot = static_cast<Slot>(m_links.size());
    Node& from = m_nodes[source];
    Node& to = m_nodes[target];
    m_links.push_back({{kNone, from.lastOutgoing, kNone, to.lastIncoming}, source, target});
    (from.lastOutgoing == kNone ? from.firstOutgoing : m_links[from.lastOutgoing].nextOutgoing) = slot;
    (to.lastIncoming == kNone ? to.firstIncoming : m_links[to.lastIncoming].nextIncoming) = slot;
    from.lastOutgoing = slot;
    to.lastIncoming = slot;
}

void AdjacencyList::RemoveLink(Slot slot) noexcept
{
    Link& link = m_links[slot];
    SetNeighbours(link, link);
    link.source = kRemoved;
    ++m_removedLinks;
}

void AdjacencyList::SetNeighbours(const Link& link, const Neighbours& slots) noexcept
{
    Node& source = m_nodes[link.source];
    Node& target = m_nodes[link.target];
    (link.previousOutgoing == kNone ? source.firstOutgoing : m_links[link.previousOutgoing].nextOutgoing) =
        slots.nextOutgoing;
    (link.nextOutgoing == kNone ? source.lastOutgoing : m_links[link.nextOutgoing].previousOutgoing) =
        slots.previousOutgoing;
    (link.previousIncoming == kNone ? target.firstIncoming : m_links[link.previousIncoming].nextIncoming) =
        slots.nextIncoming;
    (link.nextIncoming == kNone ? target.lastIncoming : m_links[link.nextIncoming].previousIncoming) =
        slots.previousIncoming;
}

void AdjacencyList::MoveNode(Slot from, Slot to) noexcept
{
    const Node& node = m_nodes[to] = m_nodes[from];
    for (Slot link = node.firstOutgoing; link != kNone; link = m_links[link].nextOutgoing)
    {
        m_links[link].source = to;
    }
    for (Slot link = node.firstIncoming; link != kNone; link = m_links[link].nextIncoming)
    {
        m_links[link].target = to;
    }
    if (m_firstById)
    {
        const auto found = m_firstById->find(node.id);
        if (found->second == from)
        {
            found->second = to;
        }
    }
}

void AdjacencyList::MoveLink(Slot from, Slot to) noexcept
{
    m_links[to] = m_links[from];
    SetNeighbours(m_links[to], {to, to, to, to});
}

} // namespace Zelnor::Conf
