#pragma once

// Private to the library, not installed.

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
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
    /// In order.
    std::vector<Id> Children(Id value) const;
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
