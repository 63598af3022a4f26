#pragma once

// Private to the library, not installed: the implementation of ITranscodingMetaGraph.

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <atomic>
#include <cstddef>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
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
    /// Position of a node in the storage.
    using VertexT = std::size_t;

    template <class T>
    struct Meta
    {
        T id{};
        Core::Property data;
        bool canBeSaved = true;
    };

    struct Node;

    struct Link
    {
        Node* source;
        Node* target;
        Meta<LinkId> meta;
    };

    using LinkList = std::list<Link>;

    /// A link from the point of view of one of its nodes. Searches need only the other node.
    struct LinkEnd
    {
        const Node* other;
        LinkList::iterator link;
    };

    using LinkEnds = std::vector<LinkEnd>;

    /// Keeps its address, so that links can point to it while its position changes.
    struct Node
    {
        VertexT position;
        Meta<NodeId> meta;
        LinkEnds outgoing;
        LinkEnds incoming;
    };

    using NodeList = std::vector<std::unique_ptr<Node>>;
    /// The first node of each identifier.
    using Index = std::unordered_map<NodeId, const Node*>;

    VertexT VertexById(NodeId id) const;
    Node& NodeById(NodeId id) { return *m_nodes[VertexById(id)]; }
    const Node& NodeById(NodeId id) const { return *m_nodes[VertexById(id)]; }
    std::optional<VertexT> FindAscending(NodeId id) const;
    void AppendNode(std::unique_ptr<Node> node);
    /// Moves a link from another list into the graph and gives it its ends and identifier.
    LinkId AddLink(NodeId from, NodeId to, LinkList& links, LinkList::iterator link);
    void IndexBeforeAppend(const Node& node);
    void IndexAfterRemoval(NodeId id);
    static const LinkEnd* FindLink(const Node& source, const Node& target);

    static void AppendOthers(const LinkEnds& ends, std::vector<NodeId>& out);
    void AppendNodesWithout(LinkEnds Node::*ends, std::vector<NodeId>& out) const;

    /// Whether a graph with that record can be saved. So can every record of a document.
    static bool CanBeSaved(const Core::Property& record);
    /// Why the first record that cannot be saved is refused; empty if all can be saved.
    std::string GetSaveRefusal() const;

    Topology GetTopology() const;

    NodeList m_nodes;
    /// In the order of creation.
    LinkList m_links;
    /// Number of records that cannot be saved. They are judged when they are added, since saving a graph
    /// visits each of them once more otherwise, which takes a fifth of its time.
    std::size_t m_unsavable = 0;
    NodeId m_nodeCounter = 0;
    LinkId m_linkCounter = 0;
    /// Exists only while identifiers do not ascend in storage order, which only a document can cause. In all
    /// other graphs the order is enough to find a node. Const operations never change it.
    std::optional<Index> m_firstById;
    /// Atomic, so that several threads may still save a graph that nobody changes.
    mutable std::atomic<int> m_streams{0};
};

} // namespace Zelnor::Conf
