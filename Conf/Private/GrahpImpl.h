#pragma once

// Private to the library, not installed: the implementation of ITranscodingMetaGraph.

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Conf/Private/AdjacencyList.h"

#include <boost/container/deque.hpp>

#include <atomic>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Zelnor::Conf
{

/// The links alone, as the tests of the topology walk them.
struct Topology;

class ZELNOR_LOCAL ITranscodingMetaGraph::GrahpImpl // kept: the name as it is
{
public:
    // Keys of the JSON document.
    static constexpr std::string_view VERTICES = "vertices";
    static constexpr std::string_view EDGES = "edges";
    static constexpr std::string_view ID = "id";
    static constexpr std::string_view DATA = "data";
    static constexpr std::string_view FROM = "from";
    static constexpr std::string_view TO = "to";

    GrahpImpl() = default;
    GrahpImpl(const GrahpImpl&) = delete;
    GrahpImpl& operator=(const GrahpImpl&) = delete;

    /// Lives while a caller's stream is called, which may call the graph in turn.
    class StreamScope
    {
    public:
        explicit StreamScope(const GrahpImpl& graph) : m_graph(graph) { ++m_graph.m_streams; }
        ~StreamScope() { --m_graph.m_streams; }
        StreamScope(const StreamScope&) = delete;
        StreamScope& operator=(const StreamScope&) = delete;

    private:
        const GrahpImpl& m_graph;
    };

    /// Whether the graph must not change, since it is being walked.
    bool IsStreaming() const { return m_streams.load(std::memory_order_relaxed) != 0; }

    NodeId AddNode(const Core::Property& data);
    void RemoveNode(NodeId id);
    LinkId AddLink(NodeId from, NodeId to, const Core::Property& data);
    void RemoveLink(NodeId from, NodeId to);
    const Core::Property& GetNode(NodeId id) const;
    const Core::Property& GetLink(NodeId from, NodeId to) const;
    void Inputs(NodeId id, std::vector<NodeId>& out) const;
    void Outputs(NodeId id, std::vector<NodeId>& out) const;
    void Inputs(std::vector<NodeId>& out) const;
    void Outputs(std::vector<NodeId>& out) const;
    void Nodes(std::vector<NodeId>& out) const;
    void Links(std::vector<std::pair<NodeId, NodeId>>& out) const;
    bool TopologyIsValid() const;
    bool PathExists(NodeId from, NodeId to) const;
    std::vector<TopologyFault> GetTopologyFaults() const;
    NodeId GetNodesCount() const { return m_nodeCounter; }

    void Load(Core::IDataInput& in);
    void Save(Core::IDataOutput& out) const;
    void SaveInToDot(Core::IDataOutput& out) const;

private:
    /// Reads a document.
    class Reader;
    using VertexT = AdjacencyList::Slot;
    using EdgeT = AdjacencyList::Slot;

    struct NodeRecord
    {
        Core::Property data;
        bool canBeSaved = true;
    };

    struct LinkRecord
    {
        Core::Property data;
        bool canBeSaved = true;
        LinkId id = 0;
    };

    /// By slots. Not a vector, which would move all records whenever it grows. Of blocks that are large,
    /// since saving a large graph walks along them.
    template <class Record>
    using Records =
        boost::container::deque<Record, void,
                                boost::container::deque_options_t<boost::container::block_size<64>>>;

    VertexT VertexById(NodeId id) const;
    const Core::Property& RecordOf(VertexT vertex) const { return m_nodes[vertex].data; }
    NodeId IdOf(VertexT vertex) const { return m_adjacency.Nodes()[vertex].id; }
    /// The slots of the nodes and links there are.
    template <class Visit>
    void ForEachNode(Visit&& visit) const;
    template <class Visit>
    void ForEachLink(Visit&& visit) const;

    /// Lives while records are appended ahead of their nodes and links. At its end it removes the records
    /// that got none, because something failed: the next node or link would be given them.
    class RecordScope
    {
    public:
        explicit RecordScope(GrahpImpl& graph) : m_graph(graph) {}
        ~RecordScope();
        RecordScope(const RecordScope&) = delete;
        RecordScope& operator=(const RecordScope&) = delete;

    private:
        GrahpImpl& m_graph;
    };

    /// Precondition: its record is the next one of `m_nodes`.
    void AppendNode(NodeId id);
    /// Gives the link the next identifier. Precondition: its record is the next one of `m_links`.
    LinkId AddLink(NodeId from, NodeId to);

    /// \param first  the first link of the list that is to be empty
    void AppendNodesWithout(EdgeT AdjacencyList::Node::*first, std::vector<NodeId>& out) const;

    /// Whether a graph with that record can be saved. So can every record of a document.
    static bool CanBeSaved(const Core::Property& record);
    /// Why the first record that cannot be saved is refused; empty if all can be saved.
    std::string GetSaveRefusal() const;

    Topology GetTopology() const;

    /// The positions of the nodes among those there are, by slots.
    std::vector<VertexT> GetPositions() const;

    AdjacencyList m_adjacency;
    Records<NodeRecord> m_nodes;
    Records<LinkRecord> m_links;
    /// Number of records that cannot be saved. They are judged when they are added, since saving a graph
    /// visits each of them once more otherwise, which takes a fifth of its time.
    std::size_t m_unsavable = 0;
    NodeId m_nodeCounter = 0;
    LinkId m_linkCounter = 0;
    /// Atomic, so that several threads may still save a graph that nobody changes.
    mutable std::atomic<int> m_streams{0};
};

template <class Visit>
void ITranscodingMetaGraph::GrahpImpl::ForEachNode(Visit&& visit) const
{
    const std::vector<AdjacencyList::Node>& nodes = m_adjacency.Nodes();
    for (VertexT vertex = 0; vertex < nodes.size(); ++vertex)
    {
        if (!nodes[vertex].IsRemoved())
        {
            visit(vertex);
        }
    }
}

template <class Visit>
void ITranscodingMetaGraph::GrahpImpl::ForEachLink(Visit&& visit) const
{
    const std::vector<AdjacencyList::Link>& links = m_adjacency.Links();
    for (EdgeT edge = 0; edge < links.size(); ++edge)
    {
        if (!links[edge].IsRemoved())
        {
            visit(edge, links[edge]);
        }
    }
}

} // namespace Zelnor::Conf
