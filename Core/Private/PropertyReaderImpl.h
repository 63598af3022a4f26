#pragma once

// Private to the library, not installed: the state of a record that is being read.

#include "Core/Interfaces/PropertyReader.h"
#include "Core/Private/PropertyChildren.h"
#include "Core/Private/RecordPath.h"

#include <array>
#include <cstddef>
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

/// Texts that do not move.
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
    void Scalar(JsonKind kind, long long number = 0, std::string_view text = {});
    void Text(std::string_view text, bool copy);
    void Key(std::string_view text, bool copy);
    void StartObject();
    void StartArray();
    void EndObject(std::size_t members);
    void EndArray(std::size_t elements);

    bool IsComplete() const { return m_hasValue && m_frames.empty() && m_ignored == 0; }
    /// Replaces `property` by the record, and begins anew.
    /// \param unwrap  whether of a group with children the first child is taken instead
    /// \returns why it cannot; empty when it could
    std::string Take(Property& property, bool unwrap);

private:
    struct Staged
    {
        std::string_view name;
        PropertyTypes type = PROPERTY_TYPE_NONE;
        long long number = 0;
        Property::Ratio ratio;
        std::string_view text;
        Property::Group group;
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

        Kind kind = RECORD;
        /// How many groups are open here, including this one.
        int groups = 0;
        /// The place of the group among what is staged. Its children follow.
        std::size_t owner = 0;
        /// Number of elements that have come.
        std::size_t elements = 0;
        std::array<Element, 2> first{};
        /// The element that is not a record, if that is the first fault.
        std::optional<Refused> refused;
        TextCopies::Mark texts;
    };

    bool IsMember() const;
    void Element(JsonKind kind, long long number);
    Staged& Stage(PropertyTypes type);
    void StartGroup(Frame::Kind kind);
    void FinishGroup(const Frame& frame);
    void FinishRatio(const Frame& frame);
    /// A group of what is staged from there on.
    Property::Group MakeGroup(std::size_t first);
    /// Calls `construct` with the arguments of the constructor.
    template <class Construct>
    static void Make(Staged& staged, Construct&& construct);
    void Refuse(const RecordPath& path, const std::string& reason);
    void RefuseMember(const std::string& reason);
    RecordPath PathToFrame() const;
    RecordPath PathToElement() const;
    void Clear() noexcept;

    std::vector<Staged> m_staged;
    std::vector<Frame> m_frames;
    /// Number of objects and arrays that are open and do not matter any more.
    std::size_t m_ignored = 0;
    /// The name of the member that comes next.
    std::string_view m_key;
    TextCopies m_texts;
    bool m_hasValue = false;
    /// Whether the record is null, which stands for an empty group.
    bool m_isNull = false;
    bool m_isRefused = false;
    std::string m_refusal;
};

} // namespace Zelnor::Core
