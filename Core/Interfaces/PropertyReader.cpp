#include "Core/Interfaces/PropertyReader.h"

#include "Core/Interfaces/PropertySerializer.h"
#include "Core/Private/JsonParser.h"
#include "Core/Private/PropertyReaderImpl.h"
#include "Core/Private/RecordParser.h"
#include "Core/Private/RecordPath.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <numeric>
#include <optional>
#include <type_traits>
#include <utility>

namespace Zelnor::Core
{

namespace
{

/// In the order of `JsonKind`.
constexpr std::array<const char*, 9> kKinds = {"null",
                                               "false",
                                               "true",
                                               "an object",
                                               "an array",
                                               "a string",
                                               "an integer",
                                               "an integer beyond the signed 64-bit range",
                                               "a number that is not a 64-bit integer"};

std::string NotARecord(const std::string& found)
{
    return "expected a record (an object with one member), found " + found;
}

std::string NotAValue(JsonKind kind)
{
    return std::string("expected an integer, a string, a rational, null or a group, found ") + Describe(kind);
}

/// The rational of two integers, if there is one: the denominator is not zero, and the reduced form fits.
/// Others than positive ones are reduced here, since `boost::rational` stops the process on some pairs.
std::optional<Property::Ratio> MakeRatio(std::int64_t numerator, std::int64_t denominator)
{
    const auto magnitude = [](std::int64_t n) {
        return n < 0 ? std::uint64_t{0} - static_cast<std::uint64_t>(n) : static_cast<std::uint64_t>(n);
    };
    if (denominator == 0)
    {
        return std::nullopt;
    }
    if (numerator == 0)
    {
        return Property::Ratio(0);
    }
    if (numerator > 0 && denominator > 0)
    {
        return Property::Ratio(numerator, denominator);
    }
    constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
    const std::uint64_t divisor = std::gcd(magnitude(numerator), magnitude(denominator));
    const std::uint64_t top = magnitude(numerator) / divisor;
    const std::uint64_t bottom = magnitude(denominator) / divisor;
    const bool negative = (numerator < 0) != (denominator < 0);
    if (bottom > kMost || top > kMost + (negative ? 1 : 0))
    {
        return std::nullopt;
    }
    return Property::Ratio(static_cast<long long>(negative ? std::uint64_t{0} - top : top),
                           static_cast<long long>(bottom));
}

/// A string of a text that may be read beyond its end. Most texts are short, and for those this takes a third
/// of the instructions, and no call.
struct PaddedText
{
    explicit PaddedText(std::string_view padded) : text(padded) {}
    operator std::string() const { return text.size() <= kShort ? MakeShort() : std::string(text); }

    std::string MakeShort() const
    {
        // As other characters: for its own, the library would call a function.
        const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
        std::string made(bytes, bytes + kShort);
        made.erase(text.size());
        return made;
    }

    /// What strings of all standard libraries hold without memory of their own.
    static constexpr std::size_t kShort = 15;
    static_assert(kShort < JsonCursor::kPadding);

    std::string_view text;
};

} // namespace

const char* Describe(JsonKind kind) { return kKinds[static_cast<std::size_t>(kind)]; }

// Texts

std::string_view TextCopies::Add(std::string_view text)
{
    constexpr std::size_t kPadding = JsonCursor::kPadding;
    if (m_blocks.empty() || m_blocks.back().size - m_used < text.size() + kPadding)
    {
        constexpr std::size_t kBlock = 4096;
        const std::size_t size = std::max(text.size() + kPadding, kBlock);
        m_blocks.push_back({std::make_unique<char[]>(size), size});
        m_used = 0;
    }
    char* const copy = m_blocks.back().bytes.get() + m_used;
    std::copy(text.begin(), text.end(), copy);
    m_used += text.size();
    return {copy, text.size()};
}

void TextCopies::Rewind(const Mark& mark) noexcept
{
    // The first block is kept for the texts to come.
    const std::size_t kept = std::max<std::size_t>(mark.blocks, 1);
    if (kept < m_blocks.size())
    {
        m_blocks.resize(kept);
    }
    m_used = mark.used;
}

// Values

bool PropertyReader::Impl::IsMember() const
{
    return !m_frames.empty() && m_frames.back().kind != Frame::ARRAY;
}

bool PropertyReader::Impl::Parse(JsonCursor& cursor)
{
    m_arePadded = true;
    return JsonParser(cursor, *this).Parse();
}

void PropertyReader::Impl::Settle() { m_takesMembers = m_ignored == 0 && !m_isRefused && IsMember(); }

void PropertyReader::Impl::Int64(std::int64_t value)
{
    if (m_takesMembers)
    {
        Stage(PROPERTY_TYPE_INT64).value.number = value;
        return;
    }
    Scalar(JsonKind::INTEGER, value);
}

void PropertyReader::Impl::String(std::string_view text, bool copy)
{
    if (m_takesMembers)
    {
        const std::string_view kept = copy ? m_texts.Add(text) : text;
        Stage(PROPERTY_TYPE_STRING).value.text = kept;
        return;
    }
    Scalar(JsonKind::STRING);
}

void PropertyReader::Impl::Key(std::string_view text, bool copy)
{
    if (m_takesMembers)
    {
        m_key = copy ? m_texts.Add(text) : text;
    }
}

void PropertyReader::Impl::Scalar(JsonKind kind, long long number)
{
    m_hasValue = true;
    if (m_takesMembers)
    {
        kind == JsonKind::NOTHING ? (void)Stage(PROPERTY_TYPE_NONE) : RefuseMember(NotAValue(kind));
    }
    else if (m_ignored == 0 && !IsMember())
    {
        Element(kind, number);
    }
    Settle();
}

PropertyReader::Impl::Staged& PropertyReader::Impl::Stage(PropertyTypes type)
{
    return m_staged.emplace_back(m_key, type);
}

/// A value in an array, or the outermost one: only an object can be a record.
void PropertyReader::Impl::Element(JsonKind kind, long long number)
{
    if (m_frames.empty())
    {
        m_isNull = kind == JsonKind::NOTHING;
        if (!m_isNull)
        {
            Refuse(RecordPath(), NotARecord(Describe(kind)));
        }
        return;
    }
    Frame& array = m_frames.back();
    const std::size_t index = array.elements++;
    if (index < array.first.size())
    {
        array.first[index] = {kind, number};
    }
    if (!m_isRefused && kind != JsonKind::OBJECT)
    {
        // Told at the end of the array, since two numbers are a rational.
        m_isRefused = true;
        array.refused = Frame::Refused{index, kind};
    }
}

// Groups

void PropertyReader::Impl::StartObject()
{
    m_hasValue = true;
    OpenObject();
    Settle();
}

void PropertyReader::Impl::StartArray()
{
    m_hasValue = true;
    OpenArray();
    Settle();
}

void PropertyReader::Impl::EndObject(std::size_t members)
{
    CloseObject(members);
    Settle();
}

void PropertyReader::Impl::EndArray(std::size_t elements)
{
    CloseArray(elements);
    Settle();
}

void PropertyReader::Impl::OpenObject()
{
    if (m_ignored != 0)
    {
        ++m_ignored;
        return;
    }
    if (IsMember())
    {
        StartGroup(Frame::OBJECT);
        return;
    }
    if (!m_frames.empty())
    {
        Element(JsonKind::OBJECT, 0);
    }
    if (m_isRefused)
    {
        ++m_ignored;
        return;
    }
    m_frames.emplace_back(Frame::RECORD, m_frames.empty() ? 0 : m_frames.back().groups, m_staged.size(),
                          TextCopies::Mark());
}

void PropertyReader::Impl::OpenArray()
{
    if (m_ignored != 0)
    {
        ++m_ignored;
        return;
    }
    if (IsMember())
    {
        StartGroup(Frame::ARRAY);
        return;
    }
    Element(JsonKind::ARRAY, 0);
    ++m_ignored;
}

void PropertyReader::Impl::StartGroup(Frame::Kind kind)
{
    if (m_isRefused)
    {
        ++m_ignored;
        return;
    }
    const int groups = m_frames.back().groups + 1;
    // An array may still turn out to be a rational.
    if (kind == Frame::OBJECT && groups > PropertySerializer::kMaxDepth)
    {
        RefuseMember(kTooDeep);
        ++m_ignored;
        return;
    }
    m_frames.emplace_back(kind, groups, m_staged.size(), m_texts.GetMark());
    // Last, so that a failure leaves no frame without its owner behind.
    Stage(PROPERTY_TYPE_GROUP);
}

void PropertyReader::Impl::CloseObject(std::size_t members)
{
    if (m_ignored != 0)
    {
        --m_ignored;
        return;
    }
    const Frame& frame = m_frames.back();
    const bool isRecord = frame.kind == Frame::RECORD;
    if (!isRecord)
    {
        FinishGroup(frame);
    }
    m_frames.pop_back();
    if (isRecord && members != 1)
    {
        // Counts before whatever was found inside.
        Refuse(PathToElement(), NotARecord("an object with " + std::to_string(members) + " members"));
    }
}

void PropertyReader::Impl::CloseArray(std::size_t elements)
{
    if (m_ignored != 0)
    {
        --m_ignored;
        return;
    }
    const Frame& frame = m_frames.back();
    if (elements == frame.first.size() && (IsNumber(frame.first[0].kind) || IsNumber(frame.first[1].kind)))
    {
        FinishRatio(frame);
    }
    else if (frame.groups > PropertySerializer::kMaxDepth)
    {
        Refuse(PathToFrame(), kTooDeep);
    }
    else if (frame.refused)
    {
        RecordPath path = PathToFrame();
        path.AddIndex(frame.refused->index);
        Refuse(path, NotARecord(Describe(frame.refused->kind)));
    }
    else
    {
        FinishGroup(frame);
    }
    m_frames.pop_back();
}

void PropertyReader::Impl::FinishGroup(const Frame& frame)
{
    const std::size_t first = frame.owner + 1;
    if (m_isRefused || frame.owner == 0 || first == m_staged.size())
    {
        return;
    }
    Property::Group group = MakeGroup(first);
    // They own nothing any more.
    m_staged.erase(m_staged.begin() + static_cast<std::ptrdiff_t>(first), m_staged.end());
    m_staged.back().value.children = group.release();
    m_texts.Rewind(frame.texts);
}

Property::Group PropertyReader::Impl::MakeGroup(std::size_t first)
{
    return m_arePadded ? MakeGroupOf<PaddedText>(first) : MakeGroupOf<std::string_view>(first);
}

template <class Text>
Property::Group PropertyReader::Impl::MakeGroupOf(std::size_t first)
{
    const std::size_t count = m_staged.size() - first;
    Property::Group group =
        m_arePadded ? Property::Children::Create(count, m_slabs) : Property::Children::Create(count);
    for (std::size_t i = first; i < m_staged.size(); ++i)
    {
        Make<Text>(m_staged[i], [&group](auto&&... arguments) {
            return &group->AppendWithin(std::forward<decltype(arguments)>(arguments)...);
        });
    }
    return group;
}

template <class Text, class Construct>
decltype(auto) PropertyReader::Impl::Make(Staged& staged, Construct&& construct)
{
    constexpr Property::Named named;
    const Text name(staged.name);
    switch (staged.type)
    {
    case PROPERTY_TYPE_NONE:
        break;
    case PROPERTY_TYPE_INT64:
        return construct(named, name, std::in_place_type<long long>, staged.value.number);
    case PROPERTY_TYPE_STRING:
        return construct(named, name, std::in_place_type<std::string>, Text(staged.value.text));
    case PROPERTY_TYPE_RATIO:
        return construct(named, name, std::in_place_type<Property::Ratio>, staged.value.ratio);
    case PROPERTY_TYPE_GROUP:
        return construct(named, name, std::in_place_type<Property::Group>,
                         Property::Group(std::exchange(staged.value.children, nullptr)));
    }
    return construct(named, name, std::in_place_type<std::monostate>);
}

void PropertyReader::Impl::FinishRatio(const Frame& frame)
{
    for (const Frame::Element& part : frame.first)
    {
        if (part.kind != JsonKind::INTEGER)
        {
            Refuse(PathToFrame(), std::string("expected two 64-bit integers, found ") + Describe(part.kind));
            return;
        }
    }
    const auto [top, bottom] = frame.first;
    const std::optional<Property::Ratio> ratio = MakeRatio(top.number, bottom.number);
    if (!ratio)
    {
        Refuse(PathToFrame(), bottom.number == 0 ? "a rational with the denominator 0"
                                                 : "a rational whose reduced form does not fit 64 bits");
        return;
    }
    m_isRefused = false;
    Drop(frame.owner + 1);
    m_staged.back().type = PROPERTY_TYPE_RATIO;
    m_staged.back().value.ratio = *ratio;
}

// Refusals

void PropertyReader::Impl::Refuse(const RecordPath& path, const std::string& reason)
{
    m_isRefused = true;
    m_refusal = path.Refusal(reason);
}

void PropertyReader::Impl::RefuseMember(const std::string& reason)
{
    RecordPath path = PathToFrame();
    path.AddName(m_key);
    Refuse(path, reason);
}

/// The path to the innermost open group or record.
RecordPath PropertyReader::Impl::PathToFrame() const
{
    RecordPath path;
    for (std::size_t i = 0; i < m_frames.size(); ++i)
    {
        if (m_frames[i].kind != Frame::RECORD)
        {
            path.AddName(m_staged[m_frames[i].owner].name);
        }
        else if (i != 0)
        {
            path.AddIndex(m_frames[i - 1].elements - 1);
        }
    }
    return path;
}

/// The path to the element of the innermost open array that came last.
RecordPath PropertyReader::Impl::PathToElement() const
{
    RecordPath path = PathToFrame();
    if (!m_frames.empty())
    {
        path.AddIndex(m_frames.back().elements - 1);
    }
    return path;
}

// The record

std::string PropertyReader::Impl::Take(Property& property, bool unwrap)
{
    if (!m_isRefused)
    {
        property.Become(m_isNull ? Property(property.GetName()) : MakeRecord(unwrap));
    }
    std::string refusal = std::move(m_refusal);
    Clear();
    return refusal;
}

Property PropertyReader::Impl::MakeRecord(bool unwrap)
{
    const bool hasChildren = m_staged.size() > 1;
    if (hasChildren && !unwrap)
    {
        m_staged.front().value.children = MakeGroup(1).release();
    }
    return Make<std::string_view>(m_staged[hasChildren && unwrap ? 1 : 0], [](auto&&... arguments) {
        return Property(std::forward<decltype(arguments)>(arguments)...);
    });
}

void PropertyReader::Impl::Drop(std::size_t first) noexcept
{
    static_assert(std::is_trivially_copyable_v<Staged>);
    while (m_staged.size() != first)
    {
        const Staged& last = m_staged.back();
        if (last.type == PROPERTY_TYPE_GROUP)
        {
            const Property::Group destroyed(last.value.children);
        }
        m_staged.pop_back();
    }
}

PropertyReader::Impl::~Impl() { Drop(0); }

void PropertyReader::Impl::Clear() noexcept
{
    Drop(0);
    m_frames.clear();
    m_ignored = 0;
    m_texts.Rewind({});
    m_arePadded = false;
    m_hasValue = false;
    m_takesMembers = false;
    m_isNull = false;
    m_isRefused = false;
    m_refusal.clear();
}

// The interface

PropertyReader::PropertyReader() : m_impl(std::make_unique<Impl>()) {}

PropertyReader::~PropertyReader() = default;

bool PropertyReader::Null()
{
    m_impl->Null();
    return true;
}

bool PropertyReader::Bool(bool value)
{
    m_impl->Bool(value);
    return true;
}

bool PropertyReader::Int64(std::int64_t value)
{
    m_impl->Int64(value);
    return true;
}

bool PropertyReader::Uint64(std::uint64_t value)
{
    constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
    if (value <= kMost)
    {
        return Int64(static_cast<std::int64_t>(value));
    }
    m_impl->Uint64(value);
    return true;
}

bool PropertyReader::Double(double value)
{
    m_impl->Double(value);
    return true;
}

bool PropertyReader::String(const char* text, rapidjson::SizeType length, bool copy)
{
    m_impl->String({text, length}, copy);
    return true;
}

bool PropertyReader::StartObject()
{
    m_impl->StartObject();
    return true;
}

bool PropertyReader::Key(const char* text, rapidjson::SizeType length, bool copy)
{
    m_impl->Key({text, length}, copy);
    return true;
}

bool PropertyReader::EndObject(rapidjson::SizeType members)
{
    m_impl->EndObject(members);
    return true;
}

bool PropertyReader::StartArray()
{
    m_impl->StartArray();
    return true;
}

bool PropertyReader::EndArray(rapidjson::SizeType elements)
{
    m_impl->EndArray(elements);
    return true;
}

bool PropertyReader::IsComplete() const { return m_impl->IsComplete(); }

bool ParseRecord(JsonCursor& cursor, PropertyReader& record) { return record.m_impl->Parse(cursor); }

} // namespace Zelnor::Core
