#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Private/GrahpImpl.h"
#include "Conf/Private/GraphUnit.h"
#include "Core/Interfaces/Exception.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <utility>

namespace Zelnor::Conf
{

namespace
{

using Core::Property;

template <class E>
E LinkFailure(NodeId from, NodeId to)
{
    E exception;
    exception << ProfileException::TagRequestedLink({from, to});
    return exception;
}

ProfileException NoIdentifierLeft()
{
    ProfileException exception;
    exception << TagDescription("No identifier is left");
    return exception;
}

/// Lets `append` add to the list; when it fails, the list is as it was.
template <class T, class Append>
void AppendAllOrNothing(std::vector<T>& list, Append&& append)
{
    const auto size = static_cast<std::ptrdiff_t>(list.size());
    try
    {
        append();
    }
    catch (...)
    {
        list.erase(list.begin() + size, list.end());
        throw;
    }
}

} // namespace

// Model

ITranscodingMetaGraph::GrahpImpl::VertexT ITranscodingMetaGraph::GrahpImpl::VertexById(NodeId id) const
{
    const VertexT vertex = m_adjacency.FindNode(id);
    if (vertex == AdjacencyList::kNone)
    {
        NodeNotFound exception;
        exception << ProfileException::TagRequestedNodeId(id);
        ZELNOR_THROW(kGraphUnit, exception);
    }
    return vertex;
}

NodeId ITranscodingMetaGraph::GrahpImpl::AddNode(const Property& data)
{
    if (m_nodeCounter == std::numeric_limits<NodeId>::max())
    {
        ZELNOR_THROW(kGraphUnit, NoIdentifierLeft());
    }
    const RecordScope scope(*this);
    m_nodes.push_back({data, CanBeSaved(data)});
    AppendNode(m_nodeCounter + 1);
    return ++m_nodeCounter;
}

void ITranscodingMetaGraph::GrahpImpl::AppendNode(NodeId id)
{
    if (m_adjacency.NodesAreFull())
    {
        ZELNOR_THROW(kGraphUnit, NoIdentifierLeft());
    }
    const std::size_t slot = m_adjacency.Nodes().size();
    m_adjacency.AddNode(id);
    m_unsavable += m_nodes[slot].canBeSaved ? 0 : 1;
}

ITranscodingMetaGraph::GrahpImpl::RecordScope::~RecordScope()
{
    const auto removeSpare = [](auto& records, std::size_t slots) {
        while (records.size() != slots)
        {
            records.pop_back();
        }
    };
    removeSpare(m_graph.m_nodes, m_graph.m_adjacency.Nodes().size());
    removeSpare(m_graph.m_links, m_graph.m_adjacency.Links().size());
}

void ITranscodingMetaGraph::GrahpImpl::RemoveNode(NodeId id)
{
    const VertexT vertex = VertexById(id);
    const AdjacencyList::Node& node = m_adjacency.Nodes()[vertex];
    if (node.IsLinked())
    {
        const EdgeT first =
            node.firstOutgoing != AdjacencyList::kNone ? node.firstOutgoing : node.firstIncoming;
        const AdjacencyList::Link& link = m_adjacency.Links()[first];
        ZELNOR_THROW(kGraphUnit, LinkFailure<LinkExists>(IdOf(link.source), IdOf(link.target)));
    }
    m_unsavable -= m_nodes[vertex].canBeSaved ? 0 : 1;
    m_nodes[vertex] = {};
    m_adjacency.RemoveNode(vertex);
    if (m_adjacency.ShouldCompactNodes())
    {
        m_adjacency.CompactNodes(
            [this](VertexT old, VertexT slot) { m_nodes[slot] = std::move(m_nodes[old]); });
        m_nodes.resize(m_adjacency.CountNodes());
    }
}

LinkId ITranscodingMetaGraph::GrahpImpl::AddLink(NodeId from, NodeId to, const Property& data)
{
    const RecordScope scope(*this);
    m_links.push_back({data, CanBeSaved(data)});
    return AddLink(from, to);
}

LinkId ITranscodingMetaGraph::GrahpImpl::AddLink(NodeId from, NodeId to)
{
    const VertexT source = VertexById(from);
    const VertexT target = VertexById(to);
    if (m_adjacency.FindLink(source, target) != AdjacencyList::kNone)
    {
        ZELNOR_THROW(kGraphUnit, LinkFailure<LinkExists>(from, to));
    }
    if (m_linkCounter == std::numeric_limits<LinkId>::max() || m_adjacency.LinksAreFull())
    {
        ZELNOR_THROW(kGraphUnit, NoIdentifierLeft());
    }
    LinkRecord& link = m_links[m_adjacency.Links().size()];
    m_adjacency.AddLink(source, target);
    m_unsavable += link.canBeSaved ? 0 : 1;
    return link.id = ++m_linkCounter;
}

void ITranscodingMetaGraph::GrahpImpl::RemoveLink(NodeId from, NodeId to)
{
    const VertexT source = VertexById(from);
    const EdgeT edge = m_adjacency.FindLink(source, VertexById(to));
    if (edge == AdjacencyList::kNone)
    {
        ZELNOR_THROW(kGraphUnit, LinkFailure<LinkNotFound>(from, to));
    }
    m_unsavable -= m_links[edge].canBeSaved ? 0 : 1;
    m_links[edge] = {};
    m_adjacency.RemoveLink(edge);
    if (m_adjacency.ShouldCompactLinks())
    {
        m_adjacency.CompactLinks([this](EdgeT old, EdgeT slot) { m_links[slot] = std::move(m_links[old]); });
        m_links.resize(m_adjacency.CountLinks());
    }
}

const Property& ITranscodingMetaGraph::GrahpImpl::GetNode(NodeId id) const
{
    return RecordOf(VertexById(id));
}

const Property& ITranscodingMetaGraph::GrahpImpl::GetLink(NodeId from, NodeId to) const
{
    const VertexT source = VertexById(from);
    const EdgeT edge = m_adjacency.FindLink(source, VertexById(to));
    if (edge == AdjacencyList::kNone)
    {
        ZELNOR_THROW(kGraphUnit, LinkFailure<LinkNotFound>(from, to));
    }
    return m_links[edge].data;
}

void ITranscodingMetaGraph::GrahpImpl::Nodes(std::vector<NodeId>& out) const
{
    AppendAllOrNothing(out, [&] { ForEachNode([&](VertexT vertex) { out.push_back(IdOf(vertex)); }); });
}

void ITranscodingMetaGraph::GrahpImpl::Links(std::vector<std::pair<NodeId, NodeId>>& out) const
{
    AppendAllOrNothing(out, [&] {
        ForEachLink([&](EdgeT, const AdjacencyList::Link& link) {
            out.emplace_back(IdOf(link.source), IdOf(link.target));
        });
    });
}

void ITranscodingMetaGraph::GrahpImpl::Inputs(NodeId id, std::vector<NodeId>& out) const
{
    const std::vector<AdjacencyList::Link>& links = m_adjacency.Links();
    const EdgeT first = m_adjacency.Nodes()[VertexById(id)].firstIncoming;
    AppendAllOrNothing(out, [&] {
        for (EdgeT edge = first; edge != AdjacencyList::kNone; edge = links[edge].nextIncoming)
        {
            out.push_back(IdOf(links[edge].source));
        }
    });
}

void ITranscodingMetaGraph::GrahpImpl::Outputs(NodeId id, std::vector<NodeId>& out) const
{
    const std::vector<AdjacencyList::Link>& links = m_adjacency.Links();
    const EdgeT first = m_adjacency.Nodes()[VertexById(id)].firstOutgoing;
    AppendAllOrNothing(out, [&] {
        for (EdgeT edge = first; edge != AdjacencyList::kNone; edge = links[edge].nextOutgoing)
        {
            out.push_back(IdOf(links[edge].target));
        }
    });
}

void ITranscodingMetaGraph::GrahpImpl::Inputs(std::vector<NodeId>& out) const
{
    AppendNodesWithout(&AdjacencyList::Node::firstIncoming, out);
}

void ITranscodingMetaGraph::GrahpImpl::Outputs(std::vector<NodeId>& out) const
{
    AppendNodesWithout(&AdjacencyList::Node::firstOutgoing, out);
}

void ITranscodingMetaGraph::GrahpImpl::AppendNodesWithout(EdgeT AdjacencyList::Node::*first,
                                                          std::vector<NodeId>& out) const
{
    AppendAllOrNothing(out, [&] {
        ForEachNode([&](VertexT vertex) {
            if (m_adjacency.Nodes()[vertex].*first == AdjacencyList::kNone)
            {
                out.push_back(IdOf(vertex));
            }
        });
    });
}

// The interface

ITranscodingMetaGraph::ITranscodingMetaGraph() : m_impl(std::make_unique<GrahpImpl>()) {}

ITranscodingMetaGraph::~ITranscodingMetaGraph() = default;

boost::intrusive_ptr<ITranscodingMetaGraph> ITranscodingMetaGraph::Create()
{
    return new ITranscodingMetaGraph();
}

int ITranscodingMetaGraph::AddRef() const { return m_references.AddRefImpl(); }

int ITranscodingMetaGraph::GetRefCount() const { return m_references.GetRefCountImpl(); }

int ITranscodingMetaGraph::Release() const { return m_references.ReleaseOrDestroyImpl(this); }

NodeId ITranscodingMetaGraph::AddNode(const Property& data)
{
    if (m_impl->IsStreaming())
    {
        ZELNOR_THROW(kGraphUnit, ChangeWhileStreaming());
    }
    return m_impl->AddNode(data);
}

void ITranscodingMetaGraph::RemoveNode(NodeId id)
{
    if (m_impl->IsStreaming())
    {
        ZELNOR_THROW(kGraphUnit, ChangeWhileStreaming());
    }
    m_impl->RemoveNode(id);
}

LinkId ITranscodingMetaGraph::AddLink(NodeId from, NodeId to, const Property& data)
{
    if (m_impl->IsStreaming())
    {
        ZELNOR_THROW(kGraphUnit, ChangeWhileStreaming());
    }
    return m_impl->AddLink(from, to, data);
}

void ITranscodingMetaGraph::RemoveLink(NodeId from, NodeId to)
{
    if (m_impl->IsStreaming())
    {
        ZELNOR_THROW(kGraphUnit, ChangeWhileStreaming());
    }
    m_impl->RemoveLink(from, to);
}

Property ITranscodingMetaGraph::operator[](NodeId id) const { return m_impl->GetNode(id); }

Property ITranscodingMetaGraph::GetLink(NodeId from, NodeId to) const { return m_impl->GetLink(from, to); }

void ITranscodingMetaGraph::Nodes(std::vector<NodeId>& out) const { m_impl->Nodes(out); }

void ITranscodingMetaGraph::Links(std::vector<std::pair<NodeId, NodeId>>& out) const { m_impl->Links(out); }

void ITranscodingMetaGraph::Inputs(NodeId id, std::vector<NodeId>& out) const { m_impl->Inputs(id, out); }

void ITranscodingMetaGraph::Outputs(NodeId id, std::vector<NodeId>& out) const { m_impl->Outputs(id, out); }

void ITranscodingMetaGraph::Inputs(std::vector<NodeId>& out) const { m_impl->Inputs(out); }

void ITranscodingMetaGraph::Outputs(std::vector<NodeId>& out) const { m_impl->Outputs(out); }

NodeId ITranscodingMetaGraph::GetNodesCount() const { return m_impl->GetNodesCount(); }

} // namespace Zelnor::Conf
