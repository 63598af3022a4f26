#include "Tests/Campaigns/JsonMutator.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdint>
#include <limits>
#include <set>
#include <stdexcept>
#include <utility>

namespace Zelnor::Testing
{

namespace
{

using rapidjson::SizeType;
using rapidjson::Value;

void CollectKeys(const Value& value, std::set<std::string>& keys)
{
    if (value.IsObject())
    {
        for (const auto& member : value.GetObject())
        {
            keys.emplace(member.name.GetString(), member.name.GetStringLength());
            CollectKeys(member.value, keys);
        }
    }
    if (value.IsArray())
    {
        for (const Value& element : value.GetArray())
        {
            CollectKeys(element, keys);
        }
    }
}

rapidjson::Document Parse(const std::string& text)
{
    rapidjson::Document document;
    document.Parse(text.data(), text.size());
    if (document.HasParseError())
    {
        throw std::invalid_argument("not JSON: " + text);
    }
    return document;
}

Value Text(const std::string& text, rapidjson::Document::AllocatorType& allocator)
{
    return Value(text.data(), static_cast<SizeType>(text.size()), allocator);
}

/// RapidJSON does not swap a value with itself.
void SwapValues(Value& one, Value& other)
{
    if (&one != &other)
    {
        one.Swap(other);
    }
}

void SwapMembers(Value::Member& one, Value::Member& other)
{
    SwapValues(one.name, other.name);
    SwapValues(one.value, other.value);
}

/// Numbers at the limits of 8, 16, 31, 32, 53, 63 and 64 bits, and next to them.
Value LimitNumber(std::uint64_t which)
{
    constexpr int kBits[] = {8, 16, 31, 32, 53, 63};
    const std::uint64_t limit = std::uint64_t{1} << kBits[which % std::size(kBits)];
    switch (which / 8 % 6)
    {
    case 0:
        return Value(limit);
    case 1:
        return Value(limit - 1);
    case 2:
        return Value(-static_cast<std::int64_t>(limit - 1));
    case 3:
        return Value(static_cast<double>(limit) * 1.5);
    case 4:
        return Value(std::numeric_limits<std::uint64_t>::max() - which % 2);
    default:
        return Value(std::numeric_limits<std::int64_t>::min() + static_cast<std::int64_t>(which % 2));
    }
}

} // namespace

JsonMutator::JsonMutator(const std::vector<std::string>& documents, std::uint64_t seed)
    : m_documents(documents), m_random(seed)
{
    std::set<std::string> keys;
    for (const std::string& document : m_documents)
    {
        CollectKeys(Parse(document), keys);
    }
    m_keys.assign(keys.begin(), keys.end());
    m_keys.insert(m_keys.end(), {"", "data", std::string("a\0b", 3), "\xFF", "$$TYPE_ID$$"});
}

std::string JsonMutator::Next()
{
    rapidjson::Document document = Parse(m_documents[Below(m_documents.size())]);
    for (std::size_t changes = 1 + Below(4); changes != 0; --changes)
    {
        m_places.clear();
        Collect(document);
        ChangeOne(*m_places[Below(m_places.size())], document.GetAllocator());
    }
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    document.Accept(writer);
    return {text.GetString(), text.GetSize()};
}

void JsonMutator::Collect(Value& value)
{
    // Deeper ones were made by a change, and recursion has its limits.
    constexpr std::size_t kMostPlaces = 2'000;
    m_places.push_back(&value);
    if (m_places.size() > kMostPlaces)
    {
        return;
    }
    if (value.IsObject())
    {
        for (auto& member : value.GetObject())
        {
            Collect(member.value);
        }
    }
    if (value.IsArray())
    {
        for (Value& element : value.GetArray())
        {
            Collect(element);
        }
    }
}

void JsonMutator::ChangeOne(Value& value, Allocator& allocator)
{
    if (value.IsObject() && value.MemberCount() != 0 && Below(4) != 0)
    {
        ChangeObject(value, allocator);
    }
    else if (value.IsArray() && !value.Empty() && Below(4) != 0)
    {
        ChangeArray(value, allocator);
    }
    else if (value.IsNumber() && Below(2) == 0)
    {
        value = LimitNumber(m_random());
    }
    else
    {
        value = AnyValue(allocator);
    }
}

void JsonMutator::ChangeObject(Value& object, Allocator& allocator)
{
    const auto member = object.MemberBegin() + static_cast<std::ptrdiff_t>(Below(object.MemberCount()));
    switch (Below(5))
    {
    case 0:
        member->name = AnyKey(allocator);
        break;
    case 1:
        object.AddMember(Value(member->name, allocator), Value(member->value, allocator), allocator);
        break;
    case 2:
        object.EraseMember(member);
        break;
    case 3:
        SwapMembers(*member,
                    *(object.MemberBegin() + static_cast<std::ptrdiff_t>(Below(object.MemberCount()))));
        break;
    default:
        object.AddMember(AnyKey(allocator), AnyValue(allocator), allocator);
    }
}

void JsonMutator::ChangeArray(Value& array, Allocator& allocator)
{
    const Value* const element = array.Begin() + Below(array.Size());
    switch (Below(4))
    {
    case 0:
        array.PushBack(Value(*element, allocator), allocator);
        break;
    case 1:
        array.Erase(element);
        break;
    case 2:
        SwapValues(array[static_cast<SizeType>(Below(array.Size()))],
                   array[static_cast<SizeType>(Below(array.Size()))]);
        break;
    default:
        array.PushBack(AnyValue(allocator), allocator);
    }
}

Value JsonMutator::AnyValue(Allocator& allocator)
{
    switch (Below(10))
    {
    case 0:
        return Value();
    case 1:
        return Value(Below(2) == 0);
    case 2:
        return LimitNumber(m_random());
    case 3:
        return Value(rapidjson::kObjectType);
    case 4:
        return Value(rapidjson::kArrayType);
    case 5:
        return Nested(Below(4) == 0 ? 1 + Below(2'000) : 500 + Below(20), allocator);
    case 6:
        return Value(static_cast<std::int64_t>(Below(16)) - 2);
    default:
        // A value of one of the documents.
        if (Below(2) == 0 && !m_places.empty())
        {
            return Value(*m_places[Below(m_places.size())], allocator);
        }
        return AnyText(allocator);
    }
}

Value JsonMutator::AnyText(Allocator& allocator)
{
    using namespace std::string_literals;
    const std::string texts[] = {"",
                                 "\0"s,
                                 "a\0b"s,
                                 "\xFF\xFE",
                                 "\xC3",
                                 "\xED\xA0\x80",
                                 "\xF4\x90\x80\x80",
                                 "\xE2\x80\xAE",
                                 "\xC2\x80",
                                 "\"\\/\b\f\n\r\t",
                                 "&#0;",
                                 "../../etc",
                                 "%s%n",
                                 "-y"};
    const std::size_t which = Below(std::size(texts) + 2);
    if (which < std::size(texts))
    {
        return Text(texts[which], allocator);
    }
    return which == std::size(texts) ? Text(m_keys[Below(m_keys.size())], allocator)
                                     : Text(std::string(Below(64) == 0 ? 100'000 : 300, 'x'), allocator);
}

Value JsonMutator::AnyKey(Allocator& allocator)
{
    return Below(4) == 0 ? AnyText(allocator) : Text(m_keys[Below(m_keys.size())], allocator);
}

Value JsonMutator::Nested(std::size_t depth, Allocator& allocator)
{
    Value value(1);
    const bool isArray = Below(4) == 0;
    for (std::size_t i = 0; i < depth; ++i)
    {
        Value outer(isArray ? rapidjson::kArrayType : rapidjson::kObjectType);
        isArray ? outer.PushBack(value, allocator) : outer.AddMember("g", value, allocator);
        value = outer;
    }
    return value;
}

} // namespace Zelnor::Testing
