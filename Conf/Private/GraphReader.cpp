#include "Conf/Private/GraphReader.h"

#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/PropertySerializer.h"
#include "Core/Private/EqualText.h"
#include "Core/Private/RecordParser.h"

namespace Zelnor::Conf
{

using Core::IsEqualText;

// Events

void ITranscodingMetaGraph::GrahpImpl::Reader::Scalar(const char* kind, NodeId integer)
{
    switch (m_state)
    {
    case VERTEX:
    case EDGE:
        if (m_integer != nullptr)
        {
            *m_integer = integer;
        }
        break;
    case VERTICES_LIST:
    case EDGES_LIST:
        RefuseElement(kind);
        break;
    case BEFORE:
    case ROOT:
    case SKIPPED:
        break;
    }
}

bool ITranscodingMetaGraph::GrahpImpl::Reader::ReadValue(Core::JsonCursor& cursor)
{
    m_isRecordNext = false;
    return Core::ParseRecord(cursor, m_record);
}

void ITranscodingMetaGraph::GrahpImpl::Reader::StartObject()
{
    switch (m_state)
    {
    case BEFORE:
        m_isObject = true;
        m_state = ROOT;
        break;
    case VERTICES_LIST:
    case EDGES_LIST:
        StartElement();
        break;
    case VERTEX:
    case EDGE:
    case ROOT:
    case SKIPPED:
        Skip();
        break;
    }
}

void ITranscodingMetaGraph::GrahpImpl::Reader::StartArray()
{
    switch (m_state)
    {
    case ROOT:
        if (!m_list)
        {
            Skip();
            break;
        }
        m_state = *m_list;
        (m_state == VERTICES_LIST ? vertices.isArray : edges.isArray) = true;
        break;
    case VERTICES_LIST:
    case EDGES_LIST:
        RefuseElement("an array");
        Skip();
        break;
    case VERTEX:
    case EDGE:
    case BEFORE:
    case SKIPPED:
        Skip();
        break;
    }
}

void ITranscodingMetaGraph::GrahpImpl::Reader::End()
{
    switch (m_state)
    {
    case VERTEX:
    case EDGE:
        FinishElement();
        break;
    case VERTICES_LIST:
    case EDGES_LIST:
        m_state = ROOT;
        break;
    case SKIPPED:
        if (--m_skipped == 0)
        {
            m_state = m_outer;
        }
        break;
    case BEFORE:
    case ROOT:
        break;
    }
}

void ITranscodingMetaGraph::GrahpImpl::Reader::Key(std::string_view key, bool)
{
    switch (m_state)
    {
    case ROOT:
        RootKey(key);
        break;
    case VERTEX:
    case EDGE:
        ElementKey(key);
        break;
    case BEFORE:
    case VERTICES_LIST:
    case EDGES_LIST:
    case SKIPPED:
        break;
    }
}

// Structure

void ITranscodingMetaGraph::GrahpImpl::Reader::RootKey(std::string_view key)
{
    m_list.reset();
    if (IsEqualText(key, VERTICES) && !std::exchange(vertices.isFound, true))
    {
        m_list = VERTICES_LIST;
    }
    else if (IsEqualText(key, EDGES) && !std::exchange(edges.isFound, true))
    {
        m_list = EDGES_LIST;
    }
}

void ITranscodingMetaGraph::GrahpImpl::Reader::ElementKey(std::string_view key)
{
    m_integer = nullptr;
    m_isRecordNext = IsEqualText(key, DATA) && !std::exchange(m_element.hasRecord, true);
    for (const auto& [name, integer] :
         {std::pair(ID, &m_element.id), std::pair(FROM, &m_element.from), std::pair(TO, &m_element.to)})
    {
        if (IsEqualText(key, name) && !*integer)
        {
            // What is not an integer reads as 0.
            *integer = 0;
            m_integer = integer;
        }
    }
}

/// At the beginning of an object or array.
void ITranscodingMetaGraph::GrahpImpl::Reader::Skip()
{
    if (m_skipped++ == 0)
    {
        m_outer = std::exchange(m_state, SKIPPED);
    }
}

void ITranscodingMetaGraph::GrahpImpl::Reader::StartElement()
{
    const bool isVertex = m_state == VERTICES_LIST;
    if (isVertex ? vertices.IsRefused() : edges.IsRefused())
    {
        Skip();
        return;
    }
    m_state = isVertex ? VERTEX : EDGE;
    m_element = {};
}

void ITranscodingMetaGraph::GrahpImpl::Reader::FinishElement()
{
    const NodeId id = m_element.id.value_or(0);
    if (m_state == VERTEX)
    {
        m_state = VERTICES_LIST;
        Append(vertices, Vertex{id});
    }
    else
    {
        m_state = EDGES_LIST;
        Append(edges, Edge{id, m_element.from.value_or(0), m_element.to.value_or(0)});
    }
}

template <class Elements, class Item>
void ITranscodingMetaGraph::GrahpImpl::Reader::Append(Elements& elements, const Item& item)
{
    elements.records.push_back({Core::Property(std::string(DATA))});
    if (m_element.hasRecord)
    {
        try
        {
            Core::PropertySerializer::LoadUnwrapped(elements.records.back().data, m_record);
        }
        catch (const Core::PropertyException&)
        {
            elements.records.pop_back();
            elements.refusedRecord = std::current_exception();
            return;
        }
    }
    elements.items.push_back(item);
}

void ITranscodingMetaGraph::GrahpImpl::Reader::RefuseElement(const char* kind)
{
    const auto refuse = [kind](auto& list, std::string_view name) {
        if (!list.IsRefused())
        {
            list.notAnObject = std::string(name) + "[" + std::to_string(list.items.size()) +
                               "] must be an object, found " + kind;
        }
    };
    if (m_state == VERTICES_LIST)
    {
        refuse(vertices, VERTICES);
    }
    else
    {
        refuse(edges, EDGES);
    }
}

} // namespace Zelnor::Conf
