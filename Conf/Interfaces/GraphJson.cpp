#include "Conf/Private/GrahpImpl.h"
#include "Conf/Private/GraphUnit.h"
#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/JsonStream.h"
#include "Core/Interfaces/PropertyEvents.h"
#include "Core/Interfaces/PropertySerializer.h"

#include <rapidjson/writer.h>

#include <algorithm>
#include <string>
#include <utility>

namespace Zelnor::Conf
{

namespace
{

using Core::JsonDocument;
using Core::JsonMemory;
using Core::JsonValue;
using Core::Property;

rapidjson::SizeType Length(std::string_view text) { return static_cast<rapidjson::SizeType>(text.size()); }

/// The member `key` of an object, or null.
JsonValue* FindMember(JsonValue& object, std::string_view key)
{
    const auto found = object.FindMember(JsonValue(rapidjson::StringRef(key.data(), Length(key))));
    return found == object.MemberEnd() ? nullptr : &found->value;
}

/// Whether the whole input is one JSON document with an object at its root.
bool ParseObject(Core::IDataInput& in, JsonDocument& document)
{
    Core::JsonZelnorStreamIn stream(in);
    // The default parser recurses for every bracket, so that a document could overflow the stack.
    document.ParseStream<rapidjson::kParseIterativeFlag>(stream);
    // RapidJSON mistakes a NUL byte for the end.
    return !document.HasParseError() && stream.AtEnd() && document.IsObject();
}

/// The array `key` of an object, or null.
JsonValue* FindArray(JsonValue& object, std::string_view key)
{
    JsonValue* const member = FindMember(object, key);
    return member != nullptr && member->IsArray() ? member : nullptr;
}

std::string NotAnObject(std::string_view array, rapidjson::SizeType index, const JsonValue& found)
{
    // In the order of rapidjson::Type.
    static constexpr const char* kKinds[] = {"null",     "false",    "true",    "an object",
                                             "an array", "a string", "a number"};
    return std::string(array) + "[" + std::to_string(index) + "] must be an object, found " +
           kKinds[found.GetType()];
}

/// The integer `key` of an object; 0 if it is not a 64-bit integer.
long long ReadInteger(JsonValue& object, std::string_view key)
{
    const JsonValue* const member = FindMember(object, key);
    return member != nullptr && member->IsInt64() ? member->GetInt64() : 0;
}

/// The record of a node or link, still wrapped in the group "data".
Property ReadWrapped(JsonValue& element, std::string_view key)
{
    Property record{std::string(key)};
    JsonValue null;
    JsonValue* const member = FindMember(element, key);
    Core::PropertySerializer::Load(record, member == nullptr ? null : *member);
    return record;
}

Property Unwrap(Property&& record)
{
    if (record.Count() == 0)
    {
        return std::move(record);
    }
    return std::move(*record.begin());
}

bool IsEmptyRecord(const Property& record)
{
    return record.GetType() == PROPERTY_TYPE_NONE ||
           (record.GetType() == PROPERTY_TYPE_GROUP && record.GetName().empty() && record.Count() == 0);
}

BadJson BadStructure(const std::string& what)
{
    BadJson exception;
    exception << ProfileException::TagJsonBadStructure(what);
    return exception;
}

/// Streams the document, so that saving needs only a buffer.
class DocumentWriter
{
public:
    explicit DocumentWriter(Core::IDataOutput& out) : m_stream(out), m_writer(m_stream) {}

    void BeginObject() { m_writer.StartObject(); }
    void EndObject() { m_writer.EndObject(); }
    void Key(std::string_view key) { m_writer.Key(key.data(), Length(key)); }
    void Integer(std::string_view key, long long value)
    {
        Key(key);
        m_writer.Int64(value);
    }
    void BeginArray(std::string_view key)
    {
        Key(key);
        m_writer.StartArray();
    }
    void EndArray() { m_writer.EndArray(); }
    /// Writes the record inside a group named `key`, which loading removes again.
    void Record(std::string_view key, const Property& record)
    {
        if (IsEmptyRecord(record))
        {
            return;
        }
        Key(key);
        BeginObject();
        Key(key);
        Core::PropertyEvents<Writer>(m_writer, false).Record(record);
        EndObject();
    }

private:
    using Writer =
        rapidjson::Writer<Core::JsonZelnorStreamOut, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonMemory>;

    Core::JsonZelnorStreamOut m_stream;
    Writer m_writer;
};

} // namespace

void ITranscodingMetaGraph::GrahpImpl::LoadNode(JsonValue& element)
{
    // The record is read before the identifier: one that is refused leaves the counter as it was.
    Property record = ReadWrapped(element, DATA);
    const NodeId id = ReadInteger(element, ID);
    m_nodeCounter = std::max(m_nodeCounter, id);
    AppendNode(id, Unwrap(std::move(record)));
}

void ITranscodingMetaGraph::GrahpImpl::LoadLink(JsonValue& element)
{
    Property record = ReadWrapped(element, DATA);
    // The link gets the next identifier; callers rely on that.
    m_linkCounter = std::max(m_linkCounter, ReadInteger(element, ID));
    AddLink(ReadInteger(element, FROM), ReadInteger(element, TO), Unwrap(std::move(record)));
}

void ITranscodingMetaGraph::GrahpImpl::Load(Core::IDataInput& in)
{
    m_nodeCounter = 0;
    m_linkCounter = 0;
    JsonDocument document;
    if (!ParseObject(in, document))
    {
        ZELNOR_THROW(kGraphUnit, BadStructure("The root node must be an object."));
    }
    JsonValue* const vertices = FindArray(document, VERTICES);
    JsonValue* const edges = FindArray(document, EDGES);
    if (vertices == nullptr || edges == nullptr)
    {
        ZELNOR_THROW(kGraphUnit, BadStructure("The root object must have two nested arrays named " +
                                              std::string(VERTICES) + " and " + std::string(EDGES)));
    }
    m_nodes.reserve(m_nodes.size() + vertices->Size());
    for (rapidjson::SizeType i = 0; i < vertices->Size(); ++i)
    {
        if (!(*vertices)[i].IsObject())
        {
            ZELNOR_THROW(kGraphUnit, BadStructure(NotAnObject(VERTICES, i, (*vertices)[i])));
        }
        LoadNode((*vertices)[i]);
    }
    for (rapidjson::SizeType i = 0; i < edges->Size(); ++i)
    {
        if (!(*edges)[i].IsObject())
        {
            ZELNOR_THROW(kGraphUnit, BadStructure(NotAnObject(EDGES, i, (*edges)[i])));
        }
        LoadLink((*edges)[i]);
    }
}

std::string ITranscodingMetaGraph::GrahpImpl::GetSaveRefusal() const
{
    std::string refusal;
    for (auto node = m_nodes.begin(); refusal.empty() && node != m_nodes.end(); ++node)
    {
        refusal = Core::GetSaveRefusal((*node)->meta.data, {DATA});
    }
    for (auto link = m_links.begin(); refusal.empty() && link != m_links.end(); ++link)
    {
        refusal = Core::GetSaveRefusal(link->meta.data, {DATA});
    }
    return refusal;
}

void ITranscodingMetaGraph::GrahpImpl::Save(Core::IDataOutput& out) const
{
    if (const std::string refusal = GetSaveRefusal(); !refusal.empty())
    {
        Core::PropertyException exception;
        exception << TagDescription(refusal);
        ZELNOR_THROW(kGraphUnit, exception);
    }
    DocumentWriter writer(out);
    writer.BeginObject();
    writer.BeginArray(VERTICES);
    for (const auto& node : m_nodes)
    {
        writer.BeginObject();
        writer.Integer(ID, node->meta.id);
        writer.Record(DATA, node->meta.data);
        writer.EndObject();
    }
    writer.EndArray();
    writer.BeginArray(EDGES);
    for (const Link& link : m_links)
    {
        writer.BeginObject();
        writer.Integer(ID, link.meta.id);
        writer.Integer(FROM, link.source->meta.id);
        writer.Integer(TO, link.target->meta.id);
        writer.Record(DATA, link.meta.data);
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
}

// The interface

void ITranscodingMetaGraph::Load(boost::intrusive_ptr<Core::IDataInput> in)
{
    if (in == nullptr)
    {
        ZELNOR_THROW(kGraphUnit, NoStream());
    }
    if (m_impl->IsStreaming())
    {
        ZELNOR_THROW(kGraphUnit, ChangeWhileStreaming());
    }
    // The stream may release the last reference to this graph.
    const boost::intrusive_ptr<const ITranscodingMetaGraph> self(this);
    const GrahpImpl::StreamScope scope(*m_impl);
    m_impl->Load(*in);
}

void ITranscodingMetaGraph::Save(boost::intrusive_ptr<Core::IDataOutput> out) const
{
    if (out == nullptr)
    {
        ZELNOR_THROW(kGraphUnit, NoStream());
    }
    const boost::intrusive_ptr<const ITranscodingMetaGraph> self(this);
    const GrahpImpl::StreamScope scope(*m_impl);
    m_impl->Save(*out);
}

} // namespace Zelnor::Conf
