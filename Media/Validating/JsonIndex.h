#pragma once

// Private to the library, not installed.

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Zelnor::Media
{

/// Where the values of a JSON text stand in it. The text must outlive the index.
class JsonIndex
{
public:
    /// Of a value; the outermost one is 0.
    using Id = std::uint32_t;

    enum class Kind : std::uint8_t
    {
        Null,
        Bool,
        Number,
        String,
        Object,
        Array,
    };

    /// \param text    that is JSON, see `FindJsonFault`
    /// \param levels  how deep values are indexed: 0 for the outermost one only
    JsonIndex(std::string_view text, std::size_t levels);

    Kind KindOf(Id value) const { return m_entries[value].kind; }
    /// The bytes of the value.
    std::string_view TextOf(Id value) const { return Text(m_entries[value].begin, m_entries[value].end); }
    std::size_t OffsetOf(Id value) const { return m_entries[value].begin; }
    /// Where its key begins; where the value itself begins when it does not have one.
    std::size_t KeyOffsetOf(Id value) const;
    /// The bytes of its key, quotes included; empty when it does not have one.
    std::string_view KeyTextOf(Id value) const;
    std::string KeyOf(Id value) const;
    class ChildRange;
    /// In order. Nothing is copied, so that a value of a million members is walked as quickly as it was read.
    ChildRange Children(Id value) const;
    /// The child at that position; nothing when there are not so many. Asked again for children of the same
    /// value, it does not count from the first one.
    std::optional<Id> ChildAt(Id value, std::size_t position) const;
    /// The first member of the name.
    std::optional<Id> Member(Id object, std::string_view key) const;
    /// The JSON pointer: "/vertices/0/id".
    std::string PointerTo(Id value) const;

private:
    friend class JsonIndexer;
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;

    struct Entry
    {
        std::uint32_t begin;
        std::uint32_t end;
        std::uint32_t key;    ///< where its key begins
        std::uint32_t after;  ///< the entry behind all that it contains
        std::uint32_t parent; ///< of the outermost one: `kNone`
        Kind kind;
    };

    std::string_view Text(std::size_t begin, std::size_t end) const
    {
        return m_text.substr(begin, end - begin);
    }

    std::string_view m_text;
    /// Without moving what is there already: a document may have many millions of values.
    std::deque<Entry> m_entries;
    /// The children of values that have many.
    mutable std::unordered_map<Id, std::vector<Id>> m_positions;
};

/// The children of a value, to be iterated over; the index must outlive it.
class JsonIndex::ChildRange
{
public:
    class Iterator
    {
    public:
        Iterator(const JsonIndex& index, Id at) : m_index(&index), m_at(at) {}
        Id operator*() const { return m_at; }
        Iterator& operator++()
        {
            m_at = m_index->m_entries[m_at].after;
            return *this;
        }
        bool operator!=(const Iterator& other) const { return m_at != other.m_at; }

    private:
        const JsonIndex* m_index;
        Id m_at;
    };

    ChildRange(const JsonIndex& index, Id value) : m_index(index), m_value(value) {}

    Iterator begin() const { return {m_index, m_value + 1}; }
    Iterator end() const { return {m_index, m_index.m_entries[m_value].after}; }

private:
    const JsonIndex& m_index;
    Id m_value;
};

/// Why a text is not JSON.
struct JsonFault
{
    std::size_t offset;
    std::string reason; ///< "Invalid value."
};

/// What keeps the text from being JSON, as all readers of this library read it; nothing if it is. Of any size
/// up to `kLongestJson`, and of any depth.
std::optional<JsonFault> FindJsonFault(const std::string& text);
constexpr std::size_t kLongestJson = std::size_t{1} << 30U;

/// The text that a JSON string stands for.
std::string DecodeJsonString(std::string_view quoted);

} // namespace Zelnor::Media
