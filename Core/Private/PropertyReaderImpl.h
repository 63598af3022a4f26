#pragma once

// Private to the library, not installed: the state of a record that is being read.

#include "Core/Interfaces/PropertyReader.h"
#include "Core/Private/JsonCursor.h"
#include "Core/Private/PropertyChildren.h"
#include "Core/Private/RecordPath.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Zelnor::Core
{

/// What a JSON value is, as far as records are concerned. All from `INTEGER` on are numbers.
enum class JsonKind
{
    NOTHING,
    NO,
    YES,
    OBJECT,
    ARRAY,
    STRING,
    INTEGER,
    LARGE_INTEGER, ///< beyond the signed 64-bit range
    OTHER_NUMBER,
};

/// "an integer"
const char* Describe(JsonKind kind);

inline bool IsNumber(JsonKind kind) { return kind >= JsonKind::INTEGER; }

/// Texts that do not move, and may be read beyond their ends as those of `JsonCursor`.
class TextCopies
{
public:
    struct Mark
    {
        std::size_t blocks = 0;
        std::size_t used = 0;
    };

    std::string_view Add(std::string_view text);
    Mark GetMark() const { return {m_blocks.size(), m_used}; }
    /// Forgets what was added since then.
    void Rewind(const Mark& mark) noexcept;

private:
    struct Block
    {
        std::unique_ptr<char[]> bytes;
        std::size_t size;
    };

    std::vector<Block> m_blocks;
    /// In the last block.
    std::size_t m_used = 0;
};

/// The children of the groups that are open are staged one behind the other; when a group ends, they become
/// properties, in one block of memory of the right size. Those of the outermost group stay until the record
/// is taken, since often only the first of them is.
///
/// A fault of an object or array counts before those of what it contains, but is known only at its end, when
/// it replaces them. So one that was opened after a fault cannot change the refusal, and is only counted.
class ZELNOR_LOCAL PropertyReader::Impl
{
public:
    Impl() = default;
    ~Impl();
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    /// Reads the value that comes next. \returns whether it is JSON
    bool Parse(JsonCursor& cursor);

    // The events, for `JsonParser`.
    void Null() { Scalar(JsonKind::NOTHING); }
    void Bool(bool value) { Scalar(value ? JsonKind::YES : JsonKind::NO); }
    void Int64(std::int64_t value);
    void Uint64(std::uint64_t) { Scalar(JsonKind::LARGE_INTEGER); }
    void Double(double) { Scalar(JsonKind::OTHER_NUMBER); }
    void String(std::string_view text, bool copy);
    void Key(std::string_view text, bool copy);
    void StartObject();
    void StartArray();
    void EndObject(std::size_t members);
    void EndArray(std::size_t elements);
    static bool ReadsValue() { return false; }
    static bool ReadValue(JsonCursor&) { return false; }

    bool IsComplete() const { return m_hasValue && m_frames.empty() && m_ignored == 0; }
    /// Replaces `property` by the record, and begins anew.
    /// \param unwrap  whether of a group with children the first child is taken instead
    /// \returns why it cannot; empty when it could
    std::string Take(Property& property, bool unwrap);

private:
    /// A property to be. Plain data, so that the list of them costs nothing but its memory.
    struct Staged
    {
        union Value {
            Value() : number(0) {}

            long long number;
            Property::Ratio ratio;
            std::string_view text;
            /// Owned.
            Property::Children* children;
        };

        Staged(std::string_view newName, PropertyTypes newType) : name(newName), type(newType) {}

        std::string_view name;
        PropertyTypes type;
        Value value;
    };

    /// An object or array that has not ended.
    struct Frame
    {
        enum Kind
        {
            RECORD, ///< an object whose only member is a record
            OBJECT, ///< a group
            ARRAY,  ///< a group or a rational
        };
        struct Element
        {
            JsonKind kind;
            long long number;
        };
        struct Refused
        {
            std::size_t index;
            JsonKind kind;
        };

        Frame(Kind newKind, int openGroups, std::size_t newOwner, TextCopies::Mark mark)
            : kind(newKind), groups(openGroups), owner(newOwner), texts(mark)
        {}

        Kind kind;
        /// How many groups are open here, including this one.
        int groups;
        /// The place of the group among what is staged. Its children follow.
        std::size_t owner;
        /// What the group begins with.
        TextCopies::Mark texts;
        /// Number of elements that have come.
        std::size_t elements = 0;
        /// As far as they have come.
        std::array<Element, 2> first;
        /// The element that is not a record, if that is the first fault.
        std::optional<Refused> refused;
    };

    bool IsMember() const;
    /// To be called after each event that may change whether members are taken.
    void Settle();
    void Scalar(JsonKind kind, long long number = 0);
    void Element(JsonKind kind, long long number);
    Staged& Stage(PropertyTypes type);
    void OpenObject();
    void OpenArray();
    void CloseObject(std::size_t members);
    void CloseArray(std::size_t elements);
    void StartGroup(Frame::Kind kind);
    void FinishGroup(const Frame& frame);
    void FinishRatio(const Frame& frame);
    /// A group of what is staged from there on.
    Property::Group MakeGroup(std::size_t first);
    template <class Text>
    Property::Group MakeGroupOf(std::size_t first);
    Property MakeRecord(bool unwrap);
    /// Calls `construct` with the arguments of the constructor. \tparam Text  what strings are made of
    template <class Text, class Construct>
    static decltype(auto) Make(Staged& staged, Construct&& construct);
    void Refuse(const RecordPath& path, const std::string& reason);
    void RefuseMember(const std::string& reason);
    RecordPath PathToFrame() const;
    RecordPath PathToElement() const;
    /// Forgets what is staged from there on.
    void Drop(std::size_t first) noexcept;
    void Clear() noexcept;

    /// For the groups of documents; who reads a record by itself gets no more memory than it needs.
    Slabs m_slabs;
    std::vector<Staged> m_staged;
    std::vector<Frame> m_frames;
    /// Number of objects and arrays that are open and do not matter any more.
    std::size_t m_ignored = 0;
    /// The name of the member that comes next.
    std::string_view m_key;
    TextCopies m_texts;
    /// Whether `JsonCursor::kPadding` bytes may be read from each text on.
    bool m_arePadded = false;
    bool m_hasValue = false;
    /// Whether a value that comes now is one of a group's: so are most, and then there is nothing else to
    /// ask.
    bool m_takesMembers = false;
    /// Whether the record is null, which stands for an empty group.
    bool m_isNull = false;
    bool m_isRefused = false;
    std::string m_refusal;
};

} // namespace Zelnor::Core
