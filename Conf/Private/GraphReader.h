#pragma once

// Private to the library, not installed: reads the JSON document of a graph.

#include "Conf/Private/GrahpImpl.h"
#include "Core/Interfaces/PropertyReader.h"

#include <rapidjson/rapidjson.h>

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
    /// One of the two arrays of the document.
    template <class T>
    struct List
    {
        bool isFound = false;
        bool isArray = false;
        /// Up to the first element that is refused.
        std::vector<T> items;
        /// Why that element is not an object; empty if it is one.
        std::string notAnObject;
        /// Why its record is refused.
        std::exception_ptr refusedRecord;

        bool IsRefused() const { return refusedRecord != nullptr || !notAnObject.empty(); }
    };

    struct Vertex
    {
        NodeId id;
        Core::Property data;
    };

    struct Edge
    {
        LinkId id;
        NodeId from;
        NodeId to;
        Core::Property data;
    };

    /// Whether the document was an object.
    bool IsObject() const { return m_isObject; }
    List<Vertex> vertices;
    List<Edge> edges;

    // RapidJSON's handler. All return true.
    bool Null();
    bool Bool(bool value);
    bool Int(int value) { return Int64(value); }
    bool Uint(unsigned value) { return Int64(value); }
    bool Int64(std::int64_t value);
    bool Uint64(std::uint64_t value);
    bool Double(double value);
    bool RawNumber(const char*, rapidjson::SizeType, bool) { return Double(0); }
    bool String(const char* text, rapidjson::SizeType length, bool copy);
    bool StartObject();
    bool Key(const char* text, rapidjson::SizeType length, bool copy);
    bool EndObject(rapidjson::SizeType members);
    bool StartArray();
    bool EndArray(rapidjson::SizeType elements);

private:
    enum State
    {
        BEFORE,
        ROOT,
        VERTICES_LIST,
        EDGES_LIST,
        VERTEX,
        EDGE,
        RECORD,
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

    template <class Send>
    bool Scalar(const char* kind, std::optional<NodeId> integer, Send&& send);
    /// The end of an object or array; which of them it is follows from the state.
    template <class Send>
    bool End(Send&& send);
    void RootKey(std::string_view key);
    void ElementKey(std::string_view key);
    bool Skip();
    void StartElement();
    void FinishElement();
    void RefuseElement(const char* kind);
    Core::Property TakeRecord();

    State m_state = BEFORE;
    /// Where a record or skipped value belongs.
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
