#pragma once

// Private to the library, not installed: reads the JSON document of a graph.

#include "Conf/Private/GrahpImpl.h"
#include "Core/Interfaces/PropertyReader.h"
#include "Core/Private/JsonCursor.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Zelnor::Conf
{

/// Takes the events of a document and stages the nodes and links that it contains: whether it is well-formed
/// is known only at its end, and nothing may be added before. Of several members of one name the first
/// counts.
class ZELNOR_LOCAL ITranscodingMetaGraph::GrahpImpl::Reader
{
public:
    /// One of the two arrays of the document, up to the first element that is refused.
    template <class Item, class Record>
    struct List
    {
        bool isFound = false;
        bool isArray = false;
        std::vector<Item> items;
        /// Of the items.
        Records<Record> records;
        /// Why that element is not an object; empty if it is one.
        std::string notAnObject;
        /// Why its record is refused.
        std::exception_ptr refusedRecord;

        bool IsRefused() const { return refusedRecord != nullptr || !notAnObject.empty(); }
    };

    struct Vertex
    {
        NodeId id;
    };

    struct Edge
    {
        LinkId id;
        NodeId from;
        NodeId to;
    };

    /// Whether the document was an object.
    bool IsObject() const { return m_isObject; }
    List<Vertex, NodeRecord> vertices;
    List<Edge, LinkRecord> edges;

    // The events, for `Core::JsonParser`.
    void Null() { Scalar("null"); }
    void Bool(bool value) { Scalar(value ? "true" : "false"); }
    void Int64(std::int64_t value) { Scalar("a number", value); }
    void Uint64(std::uint64_t) { Scalar("a number"); }
    void Double(double) { Scalar("a number"); }
    void String(std::string_view, bool) { Scalar("a string"); }
    void Key(std::string_view key, bool copy);
    void StartObject();
    void EndObject(std::size_t) { End(); }
    void StartArray();
    void EndArray(std::size_t) { End(); }
    bool ReadsValue() const { return m_isRecordNext; }
    /// A record.
    bool ReadValue(Core::JsonCursor& cursor);

private:
    enum State
    {
        BEFORE,
        ROOT,
        VERTICES_LIST,
        EDGES_LIST,
        VERTEX,
        EDGE,
        SKIPPED, ///< a value that does not matter
    };

    /// A node or link that is being read.
    struct Element
    {
        std::optional<NodeId> id;
        std::optional<NodeId> from;
        std::optional<NodeId> to;
        bool hasRecord = false;
    };

    void Scalar(const char* kind, NodeId integer = 0);
    /// The end of an object or array; which of them it is follows from the state.
    void End();
    void RootKey(std::string_view key);
    void ElementKey(std::string_view key);
    void Skip();
    void StartElement();
    void FinishElement();
    /// Appends an element with its record, unless the record is refused.
    template <class Elements, class Item>
    void Append(Elements& elements, const Item& item);
    void RefuseElement(const char* kind);

    State m_state = BEFORE;
    /// Where a skipped value belongs.
    State m_outer = BEFORE;
    std::size_t m_skipped = 0;
    bool m_isObject = false;
    /// The state of the list that the member to come is, if it is one.
    std::optional<State> m_list;
    Element m_element;
    /// Where the integer to come belongs, if it matters.
    std::optional<NodeId>* m_integer = nullptr;
    bool m_isRecordNext = false;
    Core::PropertyReader m_record;
};

} // namespace Zelnor::Conf
