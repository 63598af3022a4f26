#pragma once

// Private to the library, not installed: which nodes and links a graph has.

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/Export.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <vector>

namespace Zelnor::Conf
{

/// The nodes and links of a graph without their records, close together in memory. Both stand in slots, in
/// the order in which they were added. What is removed leaves its slot empty, so that the others keep theirs:
/// the slot of a node then follows from its identifier. When more slots are empty than used, the owner is to
/// call `Compact...`.
class ZELNOR_LOCAL AdjacencyList
{
public:
    using Slot = std::uint32_t;
    /// Stands for a slot that does not exist.
    static constexpr Slot kNone = std::numeric_limits<Slot>::max();

    struct Node
    {
        NodeId id = 0;
        // The ends of two linked lists, each in the order in which the links were added.
        Slot firstOutgoing = kNone;
        Slot lastOutgoing = kNone;
        Slot firstIncoming = kNone;
        Slot lastIncoming = kNone;

        bool IsRemoved() const { return firstOutgoing == kRemoved; }
        bool IsLinked() const { return firstOutgoing != kNone || firstIncoming != kNone; }
    };

    /// In the list of the source, and in that of the target.
    struct Neighbours
    {
        Slot nextOutgoing = kNone;
        Slot previousOutgoing = kNone;
        Slot nextIncoming = kNone;
        Slot previousIncoming = kNone;
    };

    struct Link : Neighbours
    {
        Slot source = kNone;
        Slot target = kNone;

        bool IsRemoved() const { return source == kRemoved; }
    };

    /// By slots.
    const std::vector<Node>& Nodes() const { return m_nodes; }
    const std::vector<Link>& Links() const { return m_links; }
    std::size_t CountNodes() const { return m_nodes.size() - m_removedNodes; }
    std::size_t CountLinks() const { return m_links.size() - m_removedLinks; }
    /// Whether there are as many nodes, or links, as slots can be numbered.
    bool NodesAreFull() const { return m_nodes.size() >= kRemoved; }
    bool LinksAreFull() const { return m_links.size() >= kRemoved; }

    /// The first node of that identifier, or `kNone`.
    Slot FindNode(NodeId id) const
    {
        const Node* const node = FindLatest(id);
        return node != nullptr && !m_firstById && !node->IsRemoved()
                   ? static_cast<Slot>(node - m_nodes.data())
                   : FindOtherNode(id);
    }
    /// The link between two nodes, or `kNone`.
    Slot FindLink(Slot source, Slot target) const;

    /// The slot is the next one. When this fails, nothing has changed.
    void AddNode(NodeId id);
    /// Precondition: the node does not have links.
    void RemoveNode(Slot node) noexcept;
    void AddLink(Slot source, Slot target);
    void RemoveLink(Slot link) noexcept;

    bool ShouldCompactNodes() const { return m_removedNodes > kFewRemoved + CountNodes(); }
    bool ShouldCompactLinks() const { return m_removedLinks > kFewRemoved + CountLinks(); }
    /// Closes the gaps.
    /// \param move  is called with the old and the new slot of each that gets another, in ascending order
    template <class Move>
    void CompactNodes(Move&& move);
    template <class Move>
    void CompactLinks(Move&& move);

private:
    static constexpr Slot kRemoved = kNone - 1;
    static constexpr std::size_t kFewRemoved = 16;

    /// The first node of each identifier. Not a hash table: a stranger may choose the identifiers so that all
    /// have one bucket.
    using Index = std::map<NodeId, Slot>;

    static unsigned long long Distance(NodeId from, NodeId to)
    {
        return static_cast<unsigned long long>(to) - static_cast<unsigned long long>(from);
    }
    /// Looks where the node is if no identifier was left out before: so it is in most graphs.
    const Node* FindLatest(NodeId id) const
    {
        const unsigned long long latest = m_nodes.empty() ? 0 : Distance(m_nodes.front().id, id);
        const Node* const node = m_nodes.data() + std::min<unsigned long long>(latest, m_nodes.size());
        return latest < m_nodes.size() && node->id == id ? node : nullptr;
    }
    [[gnu::noinline]] Slot FindOtherNode(NodeId id) const;
    Slot FindAscending(NodeId id) const;
    void IndexAll();
    void IndexAfterRemoval(NodeId id) noexcept;
    /// Makes what points to a link point to other slots.
    void SetNeighbours(const Link& link, const Neighbours& slots) noexcept;
    void MoveNode(Slot from, Slot to) noexcept;
    void MoveLink(Slot from, Slot to) noexcept;

    std::vector<Node> m_nodes;
    std::vector<Link> m_links;
    std::size_t m_removedNodes = 0;
    std::size_t m_removedLinks = 0;
    /// Exists only while identifiers do not ascend in the order of slots, which only a document can cause. In
    /// all other graphs the order is enough to find a node. Const operations never change it.
    std::optional<Index> m_firstById;
};

template <class Move>
void AdjacencyList::CompactNodes(Move&& move)
{
    Slot to = 0;
    for (Slot from = 0; from < m_nodes.size(); ++from)
    {
        if (m_nodes[from].IsRemoved())
        {
            continue;
        }
        if (from != to)
        {
            MoveNode(from, to);
            move(from, to);
        }
        ++to;
    }
    m_nodes.erase(m_nodes.begin() + static_cast<std::ptrdiff_t>(to), m_nodes.end());
    m_removedNodes = 0;
}

template <class Move>
void AdjacencyList::CompactLinks(Move&& move)
{
    Slot to = 0;
    for (Slot from = 0; from < m_links.size(); ++from)
    {
        if (m_links[from].IsRemoved())
        {
            continue;
        }
        if (from != to)
        {
            MoveLink(from, to);
            move(from, to);
        }
        ++to;
    }
    m_links.erase(m_links.begin() + static_cast<std::ptrdiff_t>(to), m_links.end());
    m_removedLinks = 0;
}

} // namespace Zelnor::Conf
