#include "Conf/Private/GrahpImpl.h"
#include "Conf/Private/GraphReader.h"
#include "Conf/Private/GraphUnit.h"
#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/JsonStream.h"
#include "Core/Interfaces/PropertyEvents.h"
#include "Core/Interfaces/PropertySerializer.h"
#include "Core/Private/JsonCursor.h"
#include "Core/Private/JsonParser.h"

#include <rapidjson/writer.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace Zelnor::Conf
{

namespace
{

using Core::JsonMemory;
using Core::Property;

rapidjson::SizeType Length(std::string_view text) { return static_cast<rapidjson::SizeType>(text.size()); }

/// Whether the whole input is one JSON document.
template <class Handler>
bool Parse(Core::IDataInput& in, Handler& handler)
{
    Core::JsonCursor cursor(in);
    return Core::JsonParser(cursor, handler).Parse() && cursor.SkipBlanks() == '\0' && cursor.IsAtEnd();
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

/// Throws the refusal of the first record of an array that cannot be taken.
template <class List>
void RethrowRefusal(const List& list)
{
    if (list.refusedRecord != nullptr)
    {
        std::rethrow_exception(list.refusedRecord);
    }
}

/// Takes the records as they stand, if there are no others before them.
template <class Records>
void AppendRecords(Records& records, Records& to)
{
    if (to.empty())
    {
        to.swap(records);
        return;
    }
    for (auto& record : records)
    {
        to.push_back(std::move(record));
    }
}

/// RapidJSON's writer sends strings byte by byte: it looks for what must be escaped, and asks for room in the
/// stream. Most strings need no escape and are sent at once here, which saves a tenth of the instructions.
class Writer
    : public rapidjson::Writer<Core::JsonZelnorStreamOut, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonMemory>
{
public:
    using Base =
        rapidjson::Writer<Core::JsonZelnorStreamOut, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonMemory>;
    using Base::Base;

    bool Key(const char* text, rapidjson::SizeType length, bool copy = false)
    {
        return String(text, length, copy);
    }
    bool String(const char* text, rapidjson::SizeType length, bool copy = false)
    {
        if (NeedsEscapes({text, length}))
        {
            return Base::String(text, length, copy);
        }
        Prefix(rapidjson::kStringType);
        os_->Put('"');
        os_->Put(text, length);
        os_->Put('"');
        return true;
    }

private:
    static bool NeedsEscapes(std::string_view text)
    {
        const std::size_t size = text.size();
        const auto at = [text](std::size_t i, auto word) {
            std::memcpy(&word, text.data() + i, sizeof word);
            return NeedsEscape(word);
        };
        if (size >= 8)
        {
            // The last word may overlap the one before.
            bool found = at(size - 8, std::uint64_t{});
            for (std::size_t i = 0; i + 8 < size; i += 8)
            {
                found |= at(i, std::uint64_t{});
            }
            return found;
        }
        if (size >= 4)
        {
            return at(0, std::uint32_t{}) || at(size - 4, std::uint32_t{});
        }
        return std::any_of(text.begin(), text.end(), [](char c) {
            return static_cast<unsigned char>(c) < ' ' || c == '"' || c == '\\';
        });
    }

    /// Whether one of the bytes is a control character, a quote or a backslash. The difference has the high
    /// bit of a byte where it is less than what is subtracted, and where it had that bit before. A borrow
    /// reaches the next byte only from one that is less itself.
    template <class Word>
    static bool NeedsEscape(Word bytes)
    {
        constexpr auto each = [](unsigned char byte) {
            return static_cast<Word>(0x0101010101010101 * std::uint64_t{byte});
        };
        const Word isLess =
            (bytes - each(' ')) | ((bytes ^ each('"')) - each(1)) | ((bytes ^ each('\\')) - each(1));
        return (isLess & ~bytes & each(0x80)) != 0;
    }
};

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
    Core::JsonZelnorStreamOut m_stream;
    Writer m_writer;
};

} // namespace

void ITranscodingMetaGraph::GrahpImpl::Load(Core::IDataInput& in)
{
    m_nodeCounter = 0;
    m_linkCounter = 0;
    Reader reader;
    if (!Parse(in, reader) || !reader.IsObject())
    {
        ZELNOR_THROW(kGraphUnit, BadStructure("The root node must be an object."));
    }
    if (!reader.vertices.isArray || !reader.edges.isArray)
    {
        ZELNOR_THROW(kGraphUnit, BadStructure("The root object must have two nested arrays named " +
                                              std::string(VERTICES) + " and " + std::string(EDGES)));
    }
    const RecordScope scope(*this);
    AppendRecords(reader.vertices.records, m_nodes);
    for (const Reader::Vertex& vertex : reader.vertices.items)
    {
        m_nodeCounter = std::max(m_nodeCounter, vertex.id);
        AppendNode(vertex.id);
    }
    RethrowRefusal(reader.vertices);
    if (!reader.vertices.notAnObject.empty())
    {
        ZELNOR_THROW(kGraphUnit, BadStructure(reader.vertices.notAnObject));
    }
    AppendRecords(reader.edges.records, m_links);
    for (const Reader::Edge& edge : reader.edges.items)
    {
        // The link gets the next identifier; callers rely on that.
        m_linkCounter = std::max(m_linkCounter, edge.id);
        AddLink(edge.from, edge.to);
    }
    RethrowRefusal(reader.edges);
    if (!reader.edges.notAnObject.empty())
    {
        ZELNOR_THROW(kGraphUnit, BadStructure(reader.edges.notAnObject));
    }
}

bool ITranscodingMetaGraph::GrahpImpl::CanBeSaved(const Property& record)
{
    return Core::GetSaveRefusal(record, {DATA}).empty();
}

std::string ITranscodingMetaGraph::GrahpImpl::GetSaveRefusal() const
{
    std::string refusal;
    if (m_unsavable == 0)
    {
        return refusal;
    }
    const auto look = [&refusal](const auto& record) {
        if (refusal.empty() && !record.canBeSaved)
        {
            refusal = Core::GetSaveRefusal(record.data, {DATA});
        }
    };
    std::for_each(m_nodes.begin(), m_nodes.end(), look);
    std::for_each(m_links.begin(), m_links.end(), look);
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
    ForEachNode([&](VertexT vertex) {
        writer.BeginObject();
        writer.Integer(ID, IdOf(vertex));
        writer.Record(DATA, m_nodes[vertex].data);
        writer.EndObject();
    });
    writer.EndArray();
    writer.BeginArray(EDGES);
    ForEachLink([&](EdgeT edge, const AdjacencyList::Link& link) {
        writer.BeginObject();
        writer.Integer(ID, m_links[edge].id);
        writer.Integer(FROM, IdOf(link.source));
        writer.Integer(TO, IdOf(link.target));
        writer.Record(DATA, m_links[edge].data);
        writer.EndObject();
    });
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
