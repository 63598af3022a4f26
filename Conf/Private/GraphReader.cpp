#include "Conf/Private/GraphReader.h"

#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/PropertySerializer.h"

#include <limits>

namespace Zelnor::Conf
{

using Core::Property;

// Events

/// \param send  passes the event on to the record
template <class Send>
bool ITranscodingMetaGraph::GrahpImpl::Reader::Scalar(const char* kind, std::optional<NodeId> integer,
                                                      Send&& send)
{
    switch (m_state)
    {
    case RECORD:
        send(m_record);
        break;
    case VERTEX:
    case EDGE:
        if (m_isRecordNext)
        {
            // All there is of the record.
            send(m_record);
            break;
        }
        if (m_integer != nullptr)
        {
            *m_integer = integer.value_or(0);
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
    return true;
}

bool ITranscodingMetaGraph::GrahpImpl::Reader::Null()
{
    return Scalar("null", std::nullopt, [](auto& record) { record.Null(); });
}

bool ITranscodingMetaGraph::GrahpImpl::Reader::Bool(bool value)
{
    return Scalar(value ? "true" : "false", std::nullopt, [value](auto& record) { record.Bool(value); });
}

bool ITranscodingMetaGraph::GrahpImpl::Reader::Int64(std::int64_t value)
{
    return Scalar("a number", value, [value](auto& record) { record.Int64(value); });
}

bool ITranscodingMetaGraph::GrahpImpl::Reader::Uint64(std::uint64_t value)
{
    constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
    if (value <= kMost)
    {
        return Int64(static_cast<std::int64_t>(value));
    }
    return Scalar("a number", std::nullopt, [value](auto& record) { record.Uint64(value); });
}

bool ITranscodingMetaGraph::GrahpImpl::Reader::Double(double value)
{
    return Scalar("a number", std::nullopt, [value](auto& record) { record.Double(value); });
}

bool ITranscodingMetaGraph::GrahpImpl::Reader::String(const char* text, rapidjson::SizeType length, bool copy)
{
    return Scalar("a string", std::nullopt,
                  [text, length, copy](auto& record) { record.String(text, length, copy); });
}

bool ITranscodingMetaGraph::GrahpImpl::Reader::StartObject()
{
    switch (m_state)
    {
    case BEFORE:
        m_isObject = true;
        m_state = ROOT;
        return true;
    case VERTICES_LIST:
    case EDGES_LIST:
        StartElement();
        return true;
    case VERTEX:
    case EDGE:
        if (!m_isRecordNext)
        {
            return Skip();
        }
        m_outer = std::exchange(m_state, RECORD);
        break;
    case RECORD:
        break;
    case ROOT:
    case SKIPPED:
        return Skip();
    }
    m_record.StartObject();
    return true;
}

bool ITranscodingMetaGraph::GrahpImpl::Reader::StartArray()
{
    switch (m_state)
    {
    case ROOT:
        if (!m_list)
        {
            return Skip();
        }
        m_state = *m_list;
        (m_state == VERTICES_LIST ? vertices.isArray : edges.isArray) = true;
        return true;
    case VERTICES_LIST:
    case EDGES_LIST:
        RefuseElement("an array");
        return Skip();
    case VERTEX:
    case EDGE:
        if (!m_isRecordNext)
        {
            return Skip();
        }
        m_outer = std::exchange(m_state, RECORD);
        break;
    case RECORD:
        break;
    case BEFORE:
    case SKIPPED:
        return Skip();
    }
    m_record.StartArray();
    return true;
}

template <class Send>
bool ITranscodingMetaGraph::GrahpImpl::Reader::End(Send&& send)
{
    switch (m_state)
    {
    case RECORD:
        send(m_record);
        if (m_record.IsComplete())
        {
            m_state = m_outer;
        }
        break;
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
    return true;
}

bool ITranscodingMetaGraph::GrahpImpl::Reader::EndObject(rapidjson::SizeType members)
{
    return End([members](auto& record) { record.EndObject(members); });
}

bool ITranscodingMetaGraph::GrahpImpl::Reader::EndArray(rapidjson::SizeType elements)
{
    return End([elements](auto& record) { record.EndArray(elements); });
}

bool ITranscodingMetaGraph::GrahpImpl::Reader::Key(const char* text, rapidjson::SizeType length, bool copy)
{
    switch (m_state)
    {
    case RECORD:
        m_record.Key(text, length, copy);
        break;
    case ROOT:
        RootKey({text, length});
        break;
    case VERTEX:
    case EDGE:
        ElementKey({text, length});
        break;
    case BEFORE:
    case VERTICES_LIST:
    case EDGES_LIST:
    case SKIPPED:
        break;
    }
    return true;
}

// Structure

void ITranscodingMetaGraph::GrahpImpl::Reader::RootKey(std::string_view key)
{
    m_list.reset();
    if (key == VERTICES && !std::exchange(vertices.isFound, true))
    {
        m_list = VERTICES_LIST;
    }
    else if (key == EDGES && !std::exchange(edges.isFound, true))
    {
        m_list = EDGES_LIST;
    }
}

void ITranscodingMetaGraph::GrahpImpl::Reader::ElementKey(std::string_view key)
{
    m_integer = nullptr;
    m_isRecordNext = key == DATA && !std::exchange(m_element.hasRecord, true);
    for (const auto& [name, integer] :
         {std::pair(ID, &m_element.id), std::pair(FROM, &m_element.from), std::pair(TO, &m_element.to)})
    {
        if (key == name && !*integer)
        {
            // What is not an integer reads as 0.
            *integer = 0;
            m_integer = integer;
        }
    }
}

/// At the beginning of an object or array.
bool ITranscodingMetaGraph::GrahpImpl::Reader::Skip()
{
    if (m_skipped++ == 0)
    {
        m_outer = std::exchange(m_state, SKIPPED);
    }
    return true;
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
    const bool isVertex = m_state == VERTEX;
    m_state = isVertex ? VERTICES_LIST : EDGES_LIST;
    try
    {
        Property record = TakeRecord();
        const NodeId id = m_element.id.value_or(0);
        if (isVertex)
        {
            vertices.items.push_back({id, std::move(record)});
        }
        else
        {
            edges.items.push_back(
                {id, m_element.from.value_or(0), m_element.to.value_or(0), std::move(record)});
        }
    }
    catch (const Core::PropertyException&)
    {
        (isVertex ? vertices.refusedRecord : edges.refusedRecord) = std::current_exception();
    }
}

Property ITranscodingMetaGraph::GrahpImpl::Reader::TakeRecord()
{
    Property record{std::string(DATA)};
    if (m_element.hasRecord)
    {
        Core::PropertySerializer::LoadUnwrapped(record, m_record);
    }
    return record;
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
