#include "Core/Interfaces/PropertySerializer.h"

#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/PropertyEvents.h"

#include <boost/container/small_vector.hpp>

#include <algorithm>
#include <iterator>
#include <limits>
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

/// Where in the document the reader is: the way of names and positions from the outermost record to here.
struct Place
{
    const Place* parent;
    std::string_view name;
    /// Position in an array, which then stands in the place of a name.
    std::optional<std::size_t> index;
    /// How many groups are open here, the place's own included.
    int groups;
};

/// "data.inputs[2].bitrate"
std::string PathTo(const Place* place)
{
    boost::container::small_vector<const Place*, 16> way;
    for (; place != nullptr; place = place->parent)
    {
        way.push_back(place);
    }
    std::string path;
    for (auto step = way.rbegin(); step != way.rend(); ++step)
    {
        if ((*step)->index)
        {
            path += '[' + std::to_string(*(*step)->index) + ']';
            continue;
        }
        path += step == way.rbegin() ? "" : ".";
        path += (*step)->name;
    }
    return path;
}

std::string Refusal(const std::string& path, const std::string& reason)
{
    return (path.empty() ? "record" : path) + ": " + reason;
}

std::string_view TextOf(const rapidjson::Value& json) { return {json.GetString(), json.GetStringLength()}; }

const char* KindOf(const rapidjson::Value& json)
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
           : json.IsUint64() ? "an integer beyond 64 bits signed"
                             : "a number that is no 64-bit integer";
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

/// Builds properties from JSON values, each in the place where it is to stay. Recurses once for each nested
/// group, at most `kMaxDepth` times. Its operations tell whether the JSON was a record; if not,
/// `GetRefusal()` says why.
class Reader
{
public:
    /// Appends the record that `json`, an object with one member, is to `group`.
    bool Record(const rapidjson::Value& json, const Place* parent, Property& group)
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
        m_refusal = Refusal(PathTo(place), reason);
        return false;
    }

    bool Member(const rapidjson::Value::Member& member, const Place* parent, Property& group)
    {
        Place place{parent, TextOf(member.name), {}, parent == nullptr ? 0 : parent->groups};
        const rapidjson::Value& json = member.value;
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

    bool Object(const rapidjson::Value& json, Place& place, Property& group)
    {
        if (++place.groups > PropertySerializer::kMaxDepth)
        {
            return Refuse(&place, kTooDeep);
        }
        const auto members = json.GetObject();
        return std::all_of(members.begin(), members.end(),
                           [&](const auto& member) { return Member(member, &place, group); });
    }

    bool Array(const rapidjson::Value& json, Place& place, Property& property)
    {
        const auto elements = json.GetArray();
        const auto isNumber = [](const rapidjson::Value& element) { return element.IsNumber(); };
        if (elements.Size() == 2 && std::any_of(elements.begin(), elements.end(), isNumber))
        {
            return Ratio(elements[0], elements[1], place, property);
        }
        if (++place.groups > PropertySerializer::kMaxDepth)
        {
            return Refuse(&place, kTooDeep);
        }
        std::size_t index = 0;
        return std::all_of(elements.begin(), elements.end(), [&](const rapidjson::Value& element) {
            const Place inside{&place, {}, index++, place.groups};
            return Record(element, &inside, property);
        });
    }

    bool Ratio(const rapidjson::Value& top, const rapidjson::Value& bottom, const Place& place,
               Property& property)
    {
        for (const rapidjson::Value* part : {&top, &bottom})
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

/// Below this many children, comparing each with each is quicker than a table.
constexpr unsigned long kFewChildren = 12;

PropertyException RefusalException(const std::string& refusal)
{
    PropertyException exception;
    exception << TagDescription(refusal);
    return exception;
}

/// What of `property` alone, at that depth if it is a group, stands against a document; null if nothing does.
const char* ReasonAgainst(const Property& property, int depth)
{
    constexpr std::size_t kLongest = std::numeric_limits<rapidjson::SizeType>::max();
    const bool isString = property.GetType() == PROPERTY_TYPE_STRING;
    if (property.GetName().size() > kLongest || (isString && property.GetString().size() > kLongest))
    {
        return "a text is longer than JSON values can be";
    }
    const bool isGroup = property.GetType() == PROPERTY_TYPE_GROUP;
    return isGroup && depth > PropertySerializer::kMaxDepth ? kTooDeep : nullptr;
}

/// What stands against `record`, inside that many groups, in a document; null if nothing does.
const char* ReasonAgainstAll(const Property& record, int wrappers)
{
    struct Level
    {
        const Property* group;
        int depth;
    };
    const char* reason = ReasonAgainst(record, wrappers + 1);
    boost::container::small_vector<Level, 16> pending{{&record, wrappers + 1}};
    while (reason == nullptr && !pending.empty())
    {
        const Level level = pending.back();
        pending.pop_back();
        for (auto child = level.group->begin(); reason == nullptr && child != level.group->end(); ++child)
        {
            reason = ReasonAgainst(*child, level.depth + 1);
            if (child->Count() != 0)
            {
                pending.push_back({&*child, level.depth + 1});
            }
        }
    }
    return reason;
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

void CheckDepth(const Property& record, int wrappers)
{
    if (const char* const reason = ReasonAgainstAll(record, wrappers))
    {
        ZELNOR_THROW(kUnit, RefusalException(Refusal(record.GetName(), reason)));
    }
}

void PropertySerializer::Load(Property& property, rapidjson::Value& json)
{
    if (json.IsNull())
    {
        property = Property(property.GetName());
        return;
    }
    Property holder;
    Reader reader;
    if (!reader.Record(json, nullptr, holder))
    {
        ZELNOR_THROW(kUnit, RefusalException(reader.GetRefusal()));
    }
    property = std::move(*holder.begin());
}

void PropertySerializer::Save(const Property& property, rapidjson::Value& json,
                              rapidjson::Document::AllocatorType& allocator)
{
    if (const char* const reason = ReasonAgainstAll(property, 0))
    {
        ZELNOR_THROW(kUnit, RefusalException(Refusal(property.GetName(), reason)));
    }
    rapidjson::Document document(&allocator);
    const auto generate = [&property](rapidjson::Document& handler) {
        PropertyEvents<rapidjson::Document>(handler, true).Record(property);
        return true;
    };
    document.Populate(generate);
    json = document.Move();
}

} // namespace Zelnor::Core
