#include "Core/Interfaces/PropertySerializer.h"

#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/PropertyEvents.h"

#include <boost/container/small_vector.hpp>

#include <algorithm>
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

constexpr const char* kTooDeep = "groups are nested deeper than 512";

/// Where in the document the reader is: the names from the outermost record to here.
struct Place
{
    const Place* parent;
    std::string_view name;
    int depth;

    std::string Path() const
    {
        return parent == nullptr ? std::string(name) : parent->Path() + "." + std::string(name);
    }
};

PropertyException Refusal(const std::string& path, const std::string& reason)
{
    PropertyException exception;
    exception << TagDescription((path.empty() ? "record" : path) + ": " + reason);
    return exception;
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
    return json.IsUint64() ? "an integer beyond 64 bits signed" : "a number that is no 64-bit integer";
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

/// Builds properties from JSON values. Recurses once for each nested group, at most `kMaxDepth` times.
class Reader
{
public:
    /// The record that `json`, an object with one member, is.
    static Property Record(const rapidjson::Value& json, const Place* parent, int depth)
    {
        if (!json.IsObject() || json.MemberCount() != 1)
        {
            const std::string found =
                json.IsObject() ? "an object with " + std::to_string(json.MemberCount()) : KindOf(json);
            ZELNOR_THROW(Refusal(parent == nullptr ? "" : parent->Path(),
                                 "expected a record (an object with one member), found " + found));
        }
        return Member(*json.MemberBegin(), parent, depth);
    }

private:
    static Property Member(const rapidjson::Value::Member& member, const Place* parent, int depth)
    {
        const Place place{parent, TextOf(member.name), depth};
        Property property{std::string(place.name)};
        Value(property, member.value, place);
        return property;
    }

    static void Value(Property& property, const rapidjson::Value& json, const Place& place)
    {
        if (json.IsInt64())
        {
            property = static_cast<long long>(json.GetInt64());
        }
        else if (json.IsString())
        {
            property = std::string(TextOf(json));
        }
        else if (json.IsObject())
        {
            CheckDepthAt(place);
            for (const auto& member : json.GetObject())
            {
                property.Add(Member(member, &place, place.depth + 1));
            }
        }
        else if (json.IsArray())
        {
            Array(property, json, place);
        }
        else if (json.IsNull())
        {
            property = Property::None(property.GetName());
        }
        else
        {
            ZELNOR_THROW(
                Refusal(place.Path(), std::string("expected an integer, a string, a rational, null or "
                                                  "a group, found ") +
                                          KindOf(json)));
        }
    }

    static void Array(Property& property, const rapidjson::Value& json, const Place& place)
    {
        const auto elements = json.GetArray();
        const auto isNumber = [](const rapidjson::Value& element) { return element.IsNumber(); };
        if (elements.Size() == 2 && std::any_of(elements.begin(), elements.end(), isNumber))
        {
            property = Ratio(elements[0], elements[1], place);
            return;
        }
        CheckDepthAt(place);
        for (const rapidjson::Value& element : elements)
        {
            property.Add(Record(element, &place, place.depth + 1));
        }
    }

    static Property::Ratio Ratio(const rapidjson::Value& top, const rapidjson::Value& bottom,
                                 const Place& place)
    {
        for (const rapidjson::Value* part : {&top, &bottom})
        {
            if (!part->IsInt64())
            {
                ZELNOR_THROW(Refusal(place.Path(),
                                     std::string("expected two 64-bit integers, found ") + KindOf(*part)));
            }
        }
        const std::optional<Property::Ratio> ratio = MakeRatio(top.GetInt64(), bottom.GetInt64());
        if (!ratio)
        {
            ZELNOR_THROW(Refusal(place.Path(), bottom.GetInt64() == 0
                                                   ? "a rational with the denominator 0"
                                                   : "a rational whose reduced form does not fit 64 bits"));
        }
        return *ratio;
    }

    static void CheckDepthAt(const Place& place)
    {
        if (place.depth > PropertySerializer::kMaxDepth)
        {
            ZELNOR_THROW(Refusal(place.Path(), kTooDeep));
        }
    }
};

/// Below this many children, comparing each with each is quicker than a table.
constexpr unsigned long kFewChildren = 12;

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
    struct Level
    {
        const Property* group;
        int depth;
    };
    boost::container::small_vector<Level, 16> pending;
    const auto visit = [&](const Property& property, int depth) {
        if (property.GetType() != PROPERTY_TYPE_GROUP)
        {
            return;
        }
        if (depth > PropertySerializer::kMaxDepth)
        {
            ZELNOR_THROW(Refusal(record.GetName(), kTooDeep));
        }
        pending.push_back({&property, depth});
    };
    visit(record, wrappers + 1);
    while (!pending.empty())
    {
        const Level level = pending.back();
        pending.pop_back();
        for (const Property& child : *level.group)
        {
            visit(child, level.depth + 1);
        }
    }
}

void PropertySerializer::Load(Property& property, rapidjson::Value& json)
{
    property = json.IsNull() ? Property(property.GetName()) : Reader::Record(json, nullptr, 1);
}

void PropertySerializer::Save(const Property& property, rapidjson::Value& json,
                              rapidjson::Document::AllocatorType& allocator)
{
    CheckDepth(property, 0);
    rapidjson::Document document(&allocator);
    const auto generate = [&property](rapidjson::Document& handler) {
        PropertyEvents<rapidjson::Document>(handler, true).Record(property);
        return true;
    };
    document.Populate(generate);
    json = document.Move();
}

} // namespace Zelnor::Core
