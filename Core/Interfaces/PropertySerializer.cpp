#include "Core/Interfaces/PropertySerializer.h"

#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/PropertyEvents.h"
#include "Core/Interfaces/PropertyReader.h"
#include "Core/Private/PropertyChildren.h"
#include "Core/Private/PropertyReaderImpl.h"
#include "Core/Private/RecordPath.h"

#include <boost/container/small_vector.hpp>
#include <rapidjson/document.h>

#include <algorithm>
#include <bitset>
#include <iterator>
#include <limits>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

namespace Zelnor::Core
{

namespace
{

constexpr const char* kUnit = "Core/Interfaces/PropertySerializer";

/// Cheap; names of one record often differ at their ends.
std::size_t HashOf(std::string_view name)
{
    const auto at = [name](std::size_t i) { return std::size_t{static_cast<unsigned char>(name[i])}; };
    return name.empty() ? 0
                        : name.size() + 37 * at(0) + 111 * at(name.size() / 2) + 287 * at(name.size() - 1) +
                              631 * at(name.size() / 4);
}

/// An object or array of a document that is being walked.
template <class Json>
struct OpenJson
{
    const Json* json;
    /// How many of its values have been sent.
    rapidjson::SizeType sent = 0;
};

/// Sends the events of a value that is not an object or array, or else its first one.
template <class Json>
void Begin(const Json& json, PropertyReader& reader)
{
    switch (json.GetType())
    {
    case rapidjson::kNullType:
        reader.Null();
        break;
    case rapidjson::kFalseType:
    case rapidjson::kTrueType:
        reader.Bool(json.GetBool());
        break;
    case rapidjson::kObjectType:
        reader.StartObject();
        break;
    case rapidjson::kArrayType:
        reader.StartArray();
        break;
    case rapidjson::kStringType:
        reader.String(json.GetString(), json.GetStringLength(), false);
        break;
    case rapidjson::kNumberType:
        json.IsInt64()    ? reader.Int64(json.GetInt64())
        : json.IsUint64() ? reader.Uint64(json.GetUint64())
                          : reader.Double(0);
        break;
    }
}

/// Sends the next value of an object or array, or its end.
/// \returns the value; null at the end
template <class Json>
const Json* SendNext(OpenJson<Json>& open, PropertyReader& reader)
{
    const Json& json = *open.json;
    const bool isObject = json.IsObject();
    const rapidjson::SizeType count = isObject ? json.MemberCount() : json.Size();
    if (open.sent == count)
    {
        isObject ? reader.EndObject(count) : reader.EndArray(count);
        return nullptr;
    }
    if (!isObject)
    {
        return &json[open.sent++];
    }
    const auto member = json.MemberBegin() + static_cast<std::ptrdiff_t>(open.sent++);
    reader.Key(member->name.GetString(), member->name.GetStringLength(), false);
    return &member->value;
}

/// Does what `Accept` of the value does, but does not recurse.
template <class Json>
void Send(const Json& root, PropertyReader& reader)
{
    boost::container::small_vector<OpenJson<Json>, 16> open;
    const auto begin = [&](const Json& json) {
        Begin(json, reader);
        if (json.IsObject() || json.IsArray())
        {
            open.push_back({&json});
        }
    };
    begin(root);
    while (!open.empty())
    {
        if (const Json* const next = SendNext(open.back(), reader))
        {
            begin(*next);
        }
        else
        {
            open.pop_back();
        }
    }
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
std::string FindRefusal(const Property& record, int wrappers, RecordPath path)
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
    const Property::Children* const children = group.GetChildren();
    if (const std::optional<bool> isTold = children == nullptr ? true : children->AreNamesDistinct())
    {
        return *isTold;
    }
    // Up to this many children, comparing some is faster than sorting all.
    constexpr unsigned long kFewChildren = 64;
    if (group.Count() > kFewChildren)
    {
        // Not a hash table: a stranger may have chosen the names so that they all have one hash.
        std::vector<std::string_view> names;
        names.reserve(group.Count());
        std::transform(group.begin(), group.end(), std::back_inserter(names),
                       [](const Property& child) { return std::string_view(child.GetName()); });
        std::sort(names.begin(), names.end());
        return std::adjacent_find(names.begin(), names.end()) == names.end();
    }
    // A name whose bit is not set has not occurred. The others are compared.
    std::bitset<1024> occurred;
    for (auto child = group.begin(); child != group.end(); ++child)
    {
        const std::string& name = child->GetName();
        const std::size_t bit = HashOf(name) % occurred.size();
        if (occurred[bit] && std::any_of(group.begin(), child, [&name](const Property& earlier) {
                return earlier.GetName() == name;
            }))
        {
            return false;
        }
        occurred.set(bit);
    }
    return true;
}

std::string GetSaveRefusal(const Property& record, std::initializer_list<std::string_view> wrappers)
{
    RecordPath path;
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
    PropertyReader reader;
    Send(json, reader);
    if (const std::string refusal = reader.m_impl->Take(property, false); !refusal.empty())
    {
        ZELNOR_THROW(kUnit, RefusalException(refusal));
    }
}

void PropertySerializer::Load(Property& property, const JsonValue& json)
{
    PropertyReader reader;
    Send(json, reader);
    if (const std::string refusal = reader.m_impl->Take(property, false); !refusal.empty())
    {
        ZELNOR_THROW(kUnit, RefusalException(refusal));
    }
}

void PropertySerializer::Load(Property& property, PropertyReader& reader)
{
    if (const std::string refusal = reader.m_impl->Take(property, false); !refusal.empty())
    {
        ZELNOR_THROW(kUnit, RefusalException(refusal));
    }
}

void PropertySerializer::LoadUnwrapped(Property& property, PropertyReader& reader)
{
    if (const std::string refusal = reader.m_impl->Take(property, true); !refusal.empty())
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
    // Has a name, since RapidJSON's assertions tell it: of a lambda, that is the path of the source on the
    // building machine.
    struct Generator
    {
        bool operator()(Document& handler) const
        {
            PropertyEvents<Document>(handler, true).Record(record);
            return true;
        }

        const Property& record;
    };
    const Generator generate{property};
    document.Populate(generate);
    json = document.Move();
}

} // namespace Zelnor::Core
