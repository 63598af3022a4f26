#include "Core/Interfaces/PropertyReader.h"

#include "Core/Interfaces/PropertySerializer.h"
#include "Core/Private/PropertyReaderImpl.h"
#include "Core/Private/RecordPath.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <numeric>
#include <optional>
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
/// Reduced here, since `boost::rational` stops the process on some pairs.
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

} // namespace

const char* Describe(JsonKind kind) { return kKinds[static_cast<std::size_t>(kind)]; }

// Texts

std::string_view TextCopies::Add(std::string_view text)
{
    if (m_blocks.empty() || m_blocks.back().size - m_used < text.size())
    {
        constexpr std::size_t kBlock = 4096;
        const std::size_t size = std::max(text.size(), kBlock);
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

void PropertyReader::Impl::Text(std::string_view text, bool copy)
{
    const bool isKept = copy && m_ignored == 0 && !m_isRefused && IsMember();
    Scalar(JsonKind::STRING, 0, isKept ? m_texts.Add(text) : text);
}

void PropertyReader::Impl::Key(std::string_view text, bool copy)
{
    if (m_ignored == 0 && !m_isRefused)
    {
        m_key = copy ? m_texts.Add(text) : text;
    }
}

void PropertyReader::Impl::Scalar(JsonKind kind, long long number, std::string_view text)
{
    m_hasValue = true;
    if (m_ignored != 0)
    {
        return;
    }
    if (!IsMember())
    {
        Element(kind, number);
        return;
    }
    if (m_isRefused)
    {
        return;
    }
    switch (kind)
    {
    case JsonKind::NOTHING:
        Stage(PROPERTY_TYPE_NONE);
        break;
    case JsonKind::INTEGER:
        Stage(PROPERTY_TYPE_INT64).number = number;
        break;
    case JsonKind::STRING:
        Stage(PROPERTY_TYPE_STRING).text = text;
        break;
    default:
        RefuseMember(NotAValue(kind));
        break;
    }
}

PropertyReader::Impl::Staged& PropertyReader::Impl::Stage(PropertyTypes type)
{
    Staged& staged = m_staged.emplace_back();
    staged.name = m_key;
    staged.type = type;
    return staged;
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
    Frame& record = m_frames.emplace_back();
    record.kind = Frame::RECORD;
    record.groups = m_frames.size() == 1 ? 0 : m_frames[m_frames.size() - 2].groups;
}

void PropertyReader::Impl::StartArray()
{
    m_hasValue = true;
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
    Frame frame;
    frame.kind = kind;
    frame.groups = groups;
    frame.owner = m_staged.size();
    frame.texts = m_texts.GetMark();
    m_frames.push_back(frame);
    // Last, so that a failure leaves no frame without its owner behind.
    Stage(PROPERTY_TYPE_GROUP);
}

void PropertyReader::Impl::EndObject(std::size_t members)
{
    if (m_ignored != 0)
    {
        --m_ignored;
        return;
    }
    const Frame frame = m_frames.back();
    m_frames.pop_back();
    if (frame.kind == Frame::OBJECT)
    {
        FinishGroup(frame);
    }
    else if (members != 1)
    {
        // Counts before whatever was found inside.
        Refuse(PathToElement(), NotARecord("an object with " + std::to_string(members) + " members"));
    }
}

void PropertyReader::Impl::EndArray(std::size_t elements)
{
    if (m_ignored != 0)
    {
        --m_ignored;
        return;
    }
    const Frame frame = m_frames.back();
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
    m_staged.resize(first);
    m_staged.back().group = std::move(group);
    m_texts.Rewind(frame.texts);
}

Property::Group PropertyReader::Impl::MakeGroup(std::size_t first)
{
    Property::Group group = Property::Children::Create(m_staged.size() - first);
    for (std::size_t i = first; i < m_staged.size(); ++i)
    {
        Make(m_staged[i], [&group](auto&&... arguments) {
            group->Append(std::forward<decltype(arguments)>(arguments)...);
        });
    }
    return group;
}

template <class Construct>
void PropertyReader::Impl::Make(Staged& staged, Construct&& construct)
{
    constexpr Property::Named named;
    switch (staged.type)
    {
    case PROPERTY_TYPE_NONE:
        construct(named, staged.name, std::in_place_type<std::monostate>);
        break;
    case PROPERTY_TYPE_INT64:
        construct(named, staged.name, std::in_place_type<long long>, staged.number);
        break;
    case PROPERTY_TYPE_STRING:
        construct(named, staged.name, std::in_place_type<std::string>, staged.text);
        break;
    case PROPERTY_TYPE_RATIO:
        construct(named, staged.name, std::in_place_type<Property::Ratio>, staged.ratio);
        break;
    case PROPERTY_TYPE_GROUP:
        construct(named, staged.name, std::in_place_type<Property::Group>, std::move(staged.group));
        break;
    }
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
    m_staged.resize(frame.owner + 1);
    m_staged.back().type = PROPERTY_TYPE_RATIO;
    m_staged.back().ratio = *ratio;
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
    if (!m_isRefused && m_isNull)
    {
        property = Property(property.GetName());
    }
    else if (!m_isRefused)
    {
        const bool hasChildren = m_staged.size() > 1;
        if (hasChildren && !unwrap)
        {
            m_staged.front().group = MakeGroup(1);
        }
        Make(m_staged[hasChildren && unwrap ? 1 : 0], [&property](auto&&... arguments) {
            property = Property(std::forward<decltype(arguments)>(arguments)...);
        });
    }
    std::string refusal = std::move(m_refusal);
    Clear();
    return refusal;
}

void PropertyReader::Impl::Clear() noexcept
{
    m_staged.clear();
    m_frames.clear();
    m_ignored = 0;
    m_texts.Rewind({});
    m_hasValue = false;
    m_isNull = false;
    m_isRefused = false;
    m_refusal.clear();
}

// The interface

PropertyReader::PropertyReader() : m_impl(std::make_unique<Impl>()) {}

PropertyReader::~PropertyReader() = default;

bool PropertyReader::Null()
{
    m_impl->Scalar(JsonKind::NOTHING);
    return true;
}

bool PropertyReader::Bool(bool value)
{
    m_impl->Scalar(value ? JsonKind::YES : JsonKind::NO);
    return true;
}

bool PropertyReader::Int64(std::int64_t value)
{
    m_impl->Scalar(JsonKind::INTEGER, value);
    return true;
}

bool PropertyReader::Uint64(std::uint64_t value)
{
    constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
    return value <= kMost ? Int64(static_cast<std::int64_t>(value))
                          : (m_impl->Scalar(JsonKind::LARGE_INTEGER), true);
}

bool PropertyReader::Double(double)
{
    m_impl->Scalar(JsonKind::OTHER_NUMBER);
    return true;
}

bool PropertyReader::String(const char* text, rapidjson::SizeType length, bool copy)
{
    m_impl->Text({text, length}, copy);
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

} // namespace Zelnor::Core
