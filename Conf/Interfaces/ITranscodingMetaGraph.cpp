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

/// Makes room ahead of a `push_back`, so that it cannot fail.
template <class T>
void MakeRoomForOne(std::vector<T>& items)
{
    if (items.size() == items.capacity())
    {
        items.reserve(items.empty() ? 1 : 2 * items.size());
    }
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
    if (m_firstById)
    {
        const auto found = m_firstById->find(id);
        if (found != m_firstById->end())
        {
            return found->second->position;
        }
    }
    else if (const std::optional<VertexT> found = FindAscending(id))
    {
        return *found;
    }
    NodeNotFound exception;
    exception << ProfileException::TagRequestedNodeId(id);
    ZELNOR_THROW(kGraphUnit, exception);
}

std::optional<ITranscodingMetaGraph::GrahpImpl::VertexT>
ITranscodingMetaGraph::GrahpImpl::FindAscending(NodeId id) const
{
    if (m_nodes.empty() || id < m_nodes.front()->meta.id)
    {
        return std::nullopt;
    }
    // The position of the node if no node after the first was removed. The node is never at a later one.
    const unsigned long long guess =
        static_cast<unsigned long long>(id) - static_cast<unsigned long long>(m_nodes.front()->meta.id);
    if (guess < m_nodes.size() && m_nodes[guess]->meta.id == id)
    {
        return guess;
    }
    const auto end =
        m_nodes.begin() + static_cast<std::ptrdiff_t>(std::min<unsigned long long>(guess, m_nodes.size()));
    const auto found = std::lower_bound(
        m_nodes.begin(), end, id, [](const auto& node, NodeId wanted) { return node->meta.id < wanted; });
    if (found == end || (*found)->meta.id != id)
    {
        return std::nullopt;
    }
    return static_cast<VertexT>(found - m_nodes.begin());
}

NodeId ITranscodingMetaGraph::GrahpImpl::AddNode(const Property& data)
{
    if (m_nodeCounter == std::numeric_limits<NodeId>::max())
    {
        ZELNOR_THROW(kGraphUnit, NoIdentifierLeft());
    }
    const bool canBeSaved = CanBeSaved(data);
    AppendNode(std::make_unique<Node>(Node{0, {m_nodeCounter + 1, data, canBeSaved}, {}, {}}));
    m_unsavable += canBeSaved ? 0 : 1;
    return ++m_nodeCounter;
}

void ITranscodingMetaGraph::GrahpImpl::AppendNode(std::unique_ptr<Node> node)
{
    node->position = m_nodes.size();
    MakeRoomForOne(m_nodes);
    IndexBeforeAppend(*node);
    m_nodes.push_back(std::move(node));
}

void ITranscodingMetaGraph::GrahpImpl::IndexBeforeAppend(const Node& node)
{
    if (!m_firstById)
    {
        if (m_nodes.empty() || m_nodes.back()->meta.id < node.meta.id)
        {
            return;
        }
        Index index;
        index.reserve(m_nodes.size() + 1);
        for (const auto& earlier : m_nodes)
        {
            index.emplace(earlier->meta.id, earlier.get());
        }
        m_firstById = std::move(index);
    }
    m_firstById->emplace(node.meta.id, &node);
}

void ITranscodingMetaGraph::GrahpImpl::RemoveNode(NodeId id)
{
    const VertexT vertex = VertexById(id);
    const Node& node = *m_nodes[vertex];
    const LinkEnds& links = node.outgoing.empty() ? node.incoming : node.outgoing;
    if (!links.empty())
    {
        const Link& link = *links.front().link;
        ZELNOR_THROW(kGraphUnit, LinkFailure<LinkExists>(link.source->meta.id, link.target->meta.id));
    }
    m_unsavable -= node.meta.canBeSaved ? 0 : 1;
    m_nodes.erase(m_nodes.begin() + static_cast<std::ptrdiff_t>(vertex));
    for (VertexT moved = vertex; moved < m_nodes.size(); ++moved)
    {
        m_nodes[moved]->position = moved;
    }
    IndexAfterRemoval(id);
}

void ITranscodingMetaGraph::GrahpImpl::IndexAfterRemoval(NodeId id)
{
    if (!m_firstById)
    {
        return;
    }
    const auto disorder = [](const auto& left, const auto& right) { return left->meta.id >= right->meta.id; };
    if (std::adjacent_find(m_nodes.begin(), m_nodes.end(), disorder) == m_nodes.end())
    {
        m_firstById.reset();
        return;
    }
    const auto next =
        std::find_if(m_nodes.begin(), m_nodes.end(), [id](const auto& node) { return node->meta.id == id; });
    if (next == m_nodes.end())
    {
        m_firstById->erase(id);
    }
    else
    {
        m_firstById->find(id)->second = next->get();
    }
}

const ITranscodingMetaGraph::GrahpImpl::LinkEnd*
ITranscodingMetaGraph::GrahpImpl::FindLink(const Node& source, const Node& target)
{
    // The shorter list is searched, so that links of a node with many links are found quickly.
    const bool fromSource = source.outgoing.size() <= target.incoming.size();
    const LinkEnds& ends = fromSource ? source.outgoing : target.incoming;
    const Node* const other = fromSource ? &target : &source;
    const auto found =
        std::find_if(ends.begin(), ends.end(), [other](const LinkEnd& end) { return end.other == other; });
    return found == ends.end() ? nullptr : &*found;
}

LinkId ITranscodingMetaGraph::GrahpImpl::AddLink(NodeId from, NodeId to, const Property& data)
{
    LinkList added;
    added.push_back(Link{nullptr, nullptr, {0, data, CanBeSaved(data)}});
    return AddLink(from, to, added, added.begin());
}

LinkId ITranscodingMetaGraph::GrahpImpl::AddLink(NodeId from, NodeId to, LinkList& links,
                                                 LinkList::iterator link)
{
    Node& source = NodeById(from);
    Node& target = NodeById(to);
    if (FindLink(source, target) != nullptr)
    {
        ZELNOR_THROW(kGraphUnit, LinkFailure<LinkExists>(from, to));
    }
    if (m_linkCounter == std::numeric_limits<LinkId>::max())
    {
        ZELNOR_THROW(kGraphUnit, NoIdentifierLeft());
    }
    MakeRoomForOne(source.outgoing);
    MakeRoomForOne(target.incoming);
    link->source = &source;
    link->target = &target;
    link->meta.id = m_linkCounter + 1;
    m_links.splice(m_links.end(), links, link);
    m_unsavable += link->meta.canBeSaved ? 0 : 1;
    source.outgoing.push_back({&target, link});
    target.incoming.push_back({&source, link});
    return ++m_linkCounter;
}

void ITranscodingMetaGraph::GrahpImpl::RemoveLink(NodeId from, NodeId to)
{
    Node& source = NodeById(from);
    Node& target = NodeById(to);
    const LinkEnd* const found = FindLink(source, target);
    if (found == nullptr)
    {
        ZELNOR_THROW(kGraphUnit, LinkFailure<LinkNotFound>(from, to));
    }
    const LinkList::iterator link = found->link;
    for (LinkEnds* const ends : {&source.outgoing, &target.incoming})
    {
        ends->erase(std::find_if(ends->begin(), ends->end(),
                                 [link](const LinkEnd& end) { return end.link == link; }));
    }
    m_unsavable -= link->meta.canBeSaved ? 0 : 1;
    m_links.erase(link);
}

const Property& ITranscodingMetaGraph::GrahpImpl::GetNode(NodeId id) const { return NodeById(id).meta.data; }

const Property& ITranscodingMetaGraph::GrahpImpl::GetLink(NodeId from, NodeId to) const
{
    const Node& source = NodeById(from);
    const LinkEnd* const found = FindLink(source, NodeById(to));
    if (found == nullptr)
    {
        ZELNOR_THROW(kGraphUnit, LinkFailure<LinkNotFound>(from, to));
    }
    return found->link->meta.data;
}

void ITranscodingMetaGraph::GrahpImpl::Nodes(std::vector<NodeId>& out) const
{
    const auto append = [&](const auto& node) { out.push_back(node->meta.id); };
    AppendAllOrNothing(out, [&] { std::for_each(m_nodes.begin(), m_nodes.end(), append); });
}

void ITranscodingMetaGraph::GrahpImpl::Links(std::vector<std::pair<NodeId, NodeId>>& out) const
{
    const auto append = [&](const Link& link) {
        out.emplace_back(link.source->meta.id, link.target->meta.id);
    };
    AppendAllOrNothing(out, [&] { std::for_each(m_links.begin(), m_links.end(), append); });
}

void ITranscodingMetaGraph::GrahpImpl::Inputs(NodeId id, std::vector<NodeId>& out) const
{
    AppendOthers(NodeById(id).incoming, out);
}

void ITranscodingMetaGraph::GrahpImpl::Outputs(NodeId id, std::vector<NodeId>& out) const
{
    AppendOthers(NodeById(id).outgoing, out);
}

void ITranscodingMetaGraph::GrahpImpl::Inputs(std::vector<NodeId>& out) const
{
    AppendNodesWithout(&Node::incoming, out);
}

void ITranscodingMetaGraph::GrahpImpl::Outputs(std::vector<NodeId>& out) const
{
    AppendNodesWithout(&Node::outgoing, out);
}

void ITranscodingMetaGraph::GrahpImpl::AppendOthers(const LinkEnds& ends, std::vector<NodeId>& out)
{
    const auto append = [&](const LinkEnd& end) { out.push_back(end.other->meta.id); };
    AppendAllOrNothing(out, [&] { std::for_each(ends.begin(), ends.end(), append); });
}

void ITranscodingMetaGraph::GrahpImpl::AppendNodesWithout(LinkEnds Node::*ends,
                                                          std::vector<NodeId>& out) const
{
    const auto append = [&](const auto& node) {
        if (((*node).*ends).empty())
        {
            out.push_back(node->meta.id);
        }
    };
    AppendAllOrNothing(out, [&] { std::for_each(m_nodes.begin(), m_nodes.end(), append); });
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
