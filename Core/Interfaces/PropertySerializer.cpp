#include "Core/Interfaces/PropertySerializer.h"

#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/PropertyEvents.h"
#include "Core/Interfaces/Utf8.h"

#include <boost/container/small_vector.hpp>

#include <algorithm>
#include <iterator>
#include <limits>
#include <new>
#include <numeric>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace Zelnor::Core
{

namespace
{

constexpr const char* kUnit = "Core/Interfaces/PropertySerializer";

constexpr const char* kTooDeep = "groups are nested deeper than 512";

/// A place in the document: the names and positions on the path from the outermost record.
struct Place
{
    const Place* parent;
    std::string_view name;
    /// Position in an array; used instead of a name.
    std::optional<std::size_t> index;
    /// How many groups are open here, including the place's own.
    int groups;
};

/// The text of a path through a document: "data.inputs[2].bitrate".
class Path
{
public:
    void AddName(std::string_view name)
    {
        // Documents nest at most 512 groups, but names may have any length.
        constexpr std::size_t kLongest = 256;
        m_text += m_isEmpty ? "" : ".";
        m_text += name.size() > kLongest ? std::string(BeginningOf(name, kLongest)) + "..." : name;
        m_isEmpty = false;
    }

    void AddIndex(std::size_t index)
    {
        m_text += '[' + std::to_string(index) + ']';
        m_isEmpty = false;
    }

    /// "data.inputs[2].bitrate: a rational with the denominator 0"
    std::string Refusal(const std::string& reason) const
    {
        return (m_text.empty() ? "record" : m_text) + ": " + reason;
    }

private:
    static std::string_view BeginningOf(std::string_view name, std::size_t size)
    {
        const auto continuesCharacter = [](char c) { return IsUtf8Continuation(c); };
        while (size > 0 && continuesCharacter(name[size]))
        {
            --size;
        }
        return name.substr(0, size);
    }

    std::string m_text;
    bool m_isEmpty = true;
};

Path PathTo(const Place* place)
{
    boost::container::small_vector<const Place*, 16> places;
    for (; place != nullptr; place = place->parent)
    {
        places.push_back(place);
    }
    Path path;
    for (auto step = places.rbegin(); step != places.rend(); ++step)
    {
        if ((*step)->index)
        {
            path.AddIndex(*(*step)->index);
        }
        else
        {
            path.AddName((*step)->name);
        }
    }
    return path;
}

template <class Json>
std::string_view TextOf(const Json& json)
{
    return {json.GetString(), json.GetStringLength()};
}

template <class Json>
const char* KindOf(const Json& json)
{
    switch (json.GetType())
    {
    case rapidjson::kNullType:
        return "null";
    case rapidjson::kFalseType:
        return "false";
    case rapidjson::kTrueType:
        return "true";
    case rapidjson::kObjectType:
        return "an object";
    case rapidjson::kArrayType:
        return "an array";
    case rapidjson::kStringType:
        return "a string";
    case rapidjson::kNumberType:
        break;
    }
    return json.IsInt64()    ? "an integer"
           : json.IsUint64() ? "an integer beyond the signed 64-bit range"
                             : "a number that is not a 64-bit integer";
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

/// Builds properties from JSON values, each in its final place. Recurses once for each nested group, at most
/// `kMaxDepth` times. Its operations return whether the JSON was a record; if not, `GetRefusal()` says why.
template <class Json>
class Reader
{
public:
    /// Appends the record in `json`, an object with one member, to `group`.
    bool Record(const Json& json, const Place* parent, Property& group)
    {
        if (!json.IsObject() || json.MemberCount() != 1)
        {
            const std::string found =
                json.IsObject() ? "an object with " + std::to_string(json.MemberCount()) + " members"
                                : KindOf(json);
            return Refuse(parent, "expected a record (an object with one member), found " + found);
        }
        return Member(*json.MemberBegin(), parent, group);
    }

    const std::string& GetRefusal() const { return m_refusal; }

private:
    bool Refuse(const Place* place, const std::string& reason)
    {
        m_refusal = PathTo(place).Refusal(reason);
        return false;
    }

    bool Member(const typename Json::Member& member, const Place* parent, Property& group)
    {
        Place place{parent, TextOf(member.name), {}, parent == nullptr ? 0 : parent->groups};
        const Json& json = member.value;
        std::string name(place.name);
        switch (json.GetType())
        {
        case rapidjson::kNullType:
            group.Add(Property::None(name));
            return true;
        case rapidjson::kStringType:
            group.Add(Property(std::move(name), std::string(TextOf(json))));
            return true;
        case rapidjson::kObjectType:
            group.Add(Property(std::move(name)));
            return Object(json, place, *std::prev(group.end()));
        case rapidjson::kArrayType:
            group.Add(Property(std::move(name)));
            return Array(json, place, *std::prev(group.end()));
        case rapidjson::kNumberType:
            if (json.IsInt64())
            {
                group.Add(Property(std::move(name), static_cast<long long>(json.GetInt64())));
                return true;
            }
            break;
        case rapidjson::kFalseType:
        case rapidjson::kTrueType:
            break;
        }
        return Refuse(&place,
                      std::string("expected an integer, a string, a rational, null or a group, found ") +
                          KindOf(json));
    }

    bool Object(const Json& json, Place& place, Property& group)
    {
        if (++place.groups > PropertySerializer::kMaxDepth)
        {
            return Refuse(&place, kTooDeep);
        }
        const auto members = json.GetObject();
        return std::all_of(members.begin(), members.end(),
                           [&](const auto& member) { return Member(member, &place, group); });
    }

    bool Array(const Json& json, Place& place, Property& property)
    {
        const auto elements = json.GetArray();
        const auto isNumber = [](const Json& element) { return element.IsNumber(); };
        if (elements.Size() == 2 && std::any_of(elements.begin(), elements.end(), isNumber))
        {
            return Ratio(elements[0], elements[1], place, property);
        }
        if (++place.groups > PropertySerializer::kMaxDepth)
        {
            return Refuse(&place, kTooDeep);
        }
        std::size_t index = 0;
        return std::all_of(elements.begin(), elements.end(), [&](const Json& element) {
            const Place inside{&place, {}, index++, place.groups};
            return Record(element, &inside, property);
        });
    }

    bool Ratio(const Json& top, const Json& bottom, const Place& place, Property& property)
    {
        for (const Json* part : {&top, &bottom})
        {
            if (!part->IsInt64())
            {
                return Refuse(&place, std::string("expected two 64-bit integers, found ") + KindOf(*part));
            }
        }
        const std::optional<Property::Ratio> ratio = MakeRatio(top.GetInt64(), bottom.GetInt64());
        if (!ratio)
        {
            return Refuse(&place, bottom.GetInt64() == 0
                                      ? "a rational with the denominator 0"
                                      : "a rational whose reduced form does not fit 64 bits");
        }
        property = *ratio;
        return true;
    }

    std::string m_refusal;
};

/// Up to this many children, comparing each with each is faster than a hash table.
constexpr unsigned long kFewChildren = 12;

/// Replaces `property` by the record. \returns why it cannot; empty when it could
template <class Json>
std::string LoadRecord(Property& property, const Json& json)
{
    if (json.IsNull())
    {
        property = Property(property.GetName());
        return {};
    }
    Property holder;
    Reader<Json> reader;
    if (!reader.Record(json, nullptr, holder))
    {
        return reader.GetRefusal();
    }
    property = std::move(*holder.begin());
    return {};
}

/// Counts what a document takes from its pool for the events that it is sent; a little more for strings.
class PoolSize
{
public:
    void Null() {}
    void Int64(std::int64_t) {}
    void StartObject() {}
    void StartArray() {}
    void EndObject(rapidjson::SizeType count) { Add(count * sizeof(rapidjson::Value::Member)); }
    void EndArray(rapidjson::SizeType count) { Add(count * sizeof(rapidjson::Value)); }
    void Key(const char* text, rapidjson::SizeType length, bool copy) { String(text, length, copy); }
    void String(const char*, rapidjson::SizeType length, bool)
    {
        // Shorter ones stand in the value itself.
        constexpr std::size_t kShortest = sizeof(rapidjson::Value) - 3;
        if (length >= kShortest)
        {
            Add(std::size_t{length} + 1);
        }
    }

    std::size_t Get() const { return m_size; }

private:
    void Add(std::size_t size) { m_size += RAPIDJSON_ALIGN(size); }

    /// The pool's own header.
    std::size_t m_size = RAPIDJSON_ALIGN(4 * sizeof(std::size_t));
};

PropertyException RefusalException(const std::string& refusal)
{
    PropertyException exception;
    exception << TagDescription(refusal);
    return exception;
}

/// Why `property` itself, at that depth, cannot be saved; null if it can. Its children are not considered.
const char* ReasonAgainst(const Property& property, int depth)
{
    constexpr std::size_t kLongest = std::numeric_limits<rapidjson::SizeType>::max();
    const bool isString = property.GetType() == PROPERTY_TYPE_STRING;
    if (property.GetName().size() > kLongest || (isString && property.GetString().size() > kLongest))
    {
        return "a string is longer than JSON strings can be";
    }
    const bool isGroup = property.GetType() == PROPERTY_TYPE_GROUP;
    return isGroup && depth > PropertySerializer::kMaxDepth ? kTooDeep : nullptr;
}

/// The children of a group that have not been visited yet.
struct Level
{
    Property::const_iterator next;
    Property::const_iterator end;
};

using Levels = boost::container::small_vector<Level, 16>;

/// Why `record`, wrapped in that many groups, cannot be saved; null if it can. If not, `open` holds the path
/// to the place: on each level, the child before `next`.
const char* FindReason(const Property& record, int wrappers, Levels& open)
{
    const char* reason = ReasonAgainst(record, wrappers + 1);
    if (reason == nullptr)
    {
        open.push_back({record.begin(), record.end()});
    }
    while (reason == nullptr && !open.empty())
    {
        Level& level = open.back();
        if (level.next == level.end)
        {
            open.pop_back();
            continue;
        }
        const Property& child = *level.next++;
        reason = ReasonAgainst(child, wrappers + static_cast<int>(open.size()) + 1);
        if (reason == nullptr && child.Count() != 0)
        {
            open.push_back({child.begin(), child.end()});
        }
    }
    return reason;
}

/// The description of why `record`, wrapped in that many groups, whose names are in `path`, cannot be saved;
/// empty if it can.
std::string FindRefusal(const Property& record, int wrappers, Path path)
{
    Levels open;
    const char* const reason = FindReason(record, wrappers, open);
    if (reason == nullptr)
    {
        return {};
    }
    path.AddName(record.GetName());
    const Property* group = &record;
    for (const Level& level : open)
    {
        const Property::const_iterator child = std::prev(level.next);
        // Such a group is written as an array.
        if (!HasDistinctNames(*group))
        {
            path.AddIndex(static_cast<std::size_t>(std::distance(group->begin(), child)));
        }
        path.AddName(child->GetName());
        group = &*child;
    }
    return path.Refusal(reason);
}

} // namespace

bool HasDistinctNames(const Property& group)
{
    if (group.Count() <= kFewChildren)
    {
        for (auto child = group.begin(); child != group.end(); ++child)
        {
            for (auto earlier = group.begin(); earlier != child; ++earlier)
            {
                if (earlier->GetName() == child->GetName())
                {
                    return false;
                }
            }
        }
        return true;
    }
    std::unordered_set<std::string_view> names;
    names.reserve(group.Count());
    return std::all_of(group.begin(), group.end(),
                       [&names](const Property& child) { return names.insert(child.GetName()).second; });
}

std::string GetSaveRefusal(const Property& record, std::initializer_list<std::string_view> wrappers)
{
    Path path;
    for (const std::string_view wrapper : wrappers)
    {
        path.AddName(wrapper);
    }
    return FindRefusal(record, static_cast<int>(wrappers.size()), std::move(path));
}

void CheckDepth(const Property& record, int wrappers)
{
    if (const std::string refusal = FindRefusal(record, wrappers, {}); !refusal.empty())
    {
        ZELNOR_THROW(kUnit, RefusalException(refusal));
    }
}

void PropertySerializer::Load(Property& property, rapidjson::Value& json)
{
    if (const std::string refusal = LoadRecord(property, json); !refusal.empty())
    {
        ZELNOR_THROW(kUnit, RefusalException(refusal));
    }
}

void PropertySerializer::Load(Property& property, const JsonValue& json)
{
    if (const std::string refusal = LoadRecord(property, json); !refusal.empty())
    {
        ZELNOR_THROW(kUnit, RefusalException(refusal));
    }
}

void PropertySerializer::Save(const Property& property, rapidjson::Value& json,
                              rapidjson::Document::AllocatorType& allocator)
{
    if (const std::string refusal = FindRefusal(property, 0, {}); !refusal.empty())
    {
        ZELNOR_THROW(kUnit, RefusalException(refusal));
    }
    PoolSize size;
    PropertyEvents<PoolSize>(size, true).Record(property);
    // All at once: where a value needs memory, RapidJSON does not ask whether there is any.
    void* const memory = allocator.Malloc(size.Get());
    if (memory == nullptr)
    {
        throw std::bad_alloc();
    }
    rapidjson::Document::AllocatorType pool(memory, size.Get());
    using Document =
        rapidjson::GenericDocument<rapidjson::UTF8<>, rapidjson::Document::AllocatorType, JsonMemory>;
    Document document(&pool);
    const auto generate = [&property](Document& handler) {
        PropertyEvents<Document>(handler, true).Record(property);
        return true;
    };
    document.Populate(generate);
    json = document.Move();
}

} // namespace Zelnor::Core
