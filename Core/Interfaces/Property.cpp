#include "Core/Interfaces/Property.h"

#include "Core/Private/EqualText.h"
#include "Core/Private/PropertyChildren.h"

#include <boost/container/small_vector.hpp>

#include <array>
#include <limits>
#include <utility>

namespace Zelnor::Core
{

namespace
{

/// The work left in a traversal that must not recurse, however deep the tree is. Everyday records are shallow
/// and need no allocation.
template <class T>
using Pending = boost::container::small_vector<T, 16>;

} // namespace

Property::Property() = default;

Property::Property(const std::string& name) : m_name(name) {}

Property::Property(const std::string& name, long long value) : m_name(name), m_value(value) {}

Property::Property(const std::string& name, const std::string& value) : m_name(name), m_value(value) {}

Property::Property(const std::string& name, const Ratio& value) : m_name(name), m_value(value) {}

Property::Property(std::string&& name) : m_name(std::move(name)) {}

Property::Property(std::string&& name, long long value) : m_name(std::move(name)), m_value(value) {}

Property::Property(std::string&& name, std::string&& value)
    : m_name(std::move(name)), m_value(std::move(value))
{}

Property::Property(std::string&& name, const Ratio& value) : m_name(std::move(name)), m_value(value) {}

Property::Property(const Property& other) : m_name(other.m_name)
{
    if (other.IsGroup())
    {
        CopyChildrenFrom(other);
    }
    else
    {
        CopyValueFrom(other);
    }
}

Property::Property(Property&& other) noexcept
    : m_name(std::move(other.m_name)), m_value(std::move(other.m_value))
{
    other.NameChanged();
}

Property::~Property() = default;

void Property::DestroyChildren::operator()(Children* children) const noexcept { Children::Destroy(children); }

Property Property::None(const std::string& name)
{
    Property none(name);
    none.m_value = std::monostate();
    return none;
}

void Property::CopyValueFrom(const Property& other)
{
    switch (other.GetType())
    {
    case PROPERTY_TYPE_NONE:
        m_value.emplace<std::monostate>();
        break;
    case PROPERTY_TYPE_INT64:
        m_value.emplace<long long>(*std::get_if<long long>(&other.m_value));
        break;
    case PROPERTY_TYPE_STRING:
        m_value.emplace<std::string>(*std::get_if<std::string>(&other.m_value));
        break;
    case PROPERTY_TYPE_RATIO:
        m_value.emplace<Ratio>(*std::get_if<Ratio>(&other.m_value));
        break;
    case PROPERTY_TYPE_GROUP:
        break;
    }
}

void Property::CopyChildrenFrom(const Property& other)
{
    struct Copy
    {
        const Children* from;
        Property* to;
    };
    Pending<Copy> pending;
    const auto plan = [&pending](const Children* from, Property& to) {
        if (from != nullptr && from->Count() != 0)
        {
            pending.push_back({from, &to});
        }
    };
    plan(other.GetChildren(), *this);
    while (!pending.empty())
    {
        const Copy copy = pending.back();
        pending.pop_back();
        copy.to->m_value = Children::Create(copy.from->Count());
        copy.to->GetChildren()->CopyFrom(*copy.from, plan);
    }
}

Property::Children* Property::GetChildren() const noexcept
{
    const Group* const group = std::get_if<Group>(&m_value);
    return group == nullptr ? nullptr : group->get();
}

Property* Property::GetLastChild() const noexcept
{
    const Children* const children = GetChildren();
    return children == nullptr ? nullptr : children->GetLast();
}

void Property::NameChanged() noexcept
{
    if (m_siblings != nullptr)
    {
        m_siblings->ForgetNames();
    }
}

void Property::OwnsMore() noexcept
{
    if (m_siblings != nullptr)
    {
        m_siblings->OwnsMore(*this);
    }
}

// The assignments build the new state first and then move it in: a failed allocation changes nothing, and the
// argument may be part of what is replaced.

Property& Property::operator=(const Property& other)
{
    Property copy(other);
    return *this = std::move(copy);
}

Property& Property::operator=(Property&& other) noexcept
{
    Become(Property(std::move(other)));
    return *this;
}

void Property::Become(Property&& other) noexcept
{
    if (m_name != other.m_name)
    {
        m_name.swap(other.m_name);
        NameChanged();
    }
    m_value.swap(other.m_value);
    OwnsMore();
}

Property& Property::operator=(long long value)
{
    m_value = value;
    return *this;
}

Property& Property::operator=(const std::string& value)
{
    Value copy(value);
    m_value.swap(copy);
    OwnsMore();
    return *this;
}

Property& Property::operator=(std::string&& value)
{
    Value taken(std::move(value));
    m_value.swap(taken);
    OwnsMore();
    return *this;
}

Property& Property::operator=(const Ratio& value)
{
    const Ratio copy(value);
    m_value = copy;
    return *this;
}

// Every public operation throws by itself, so that the exception names the one that the caller called.

long long Property::GetInt64() const
{
    const long long* const value = std::get_if<long long>(&m_value);
    if (value == nullptr)
    {
        ZELNOR_THROW(details::kPropertyUnit, OtherKind("a 64-bit integer"));
    }
    return *value;
}

const std::string& Property::GetString() const&
{
    const std::string* const value = std::get_if<std::string>(&m_value);
    if (value == nullptr)
    {
        ZELNOR_THROW(details::kPropertyUnit, OtherKind("a string"));
    }
    return *value;
}

std::string Property::GetString() &&
{
    const std::string* const value = std::get_if<std::string>(&m_value);
    if (value == nullptr)
    {
        ZELNOR_THROW(details::kPropertyUnit, OtherKind("a string"));
    }
    return *value;
}

const Property::Ratio& Property::GetRatio() const&
{
    const Ratio* const value = std::get_if<Ratio>(&m_value);
    if (value == nullptr)
    {
        ZELNOR_THROW(details::kPropertyUnit, OtherKind("a rational"));
    }
    return *value;
}

Property::Ratio Property::GetRatio() &&
{
    const Ratio* const value = std::get_if<Ratio>(&m_value);
    if (value == nullptr)
    {
        ZELNOR_THROW(details::kPropertyUnit, OtherKind("a rational"));
    }
    return *value;
}

unsigned long Property::Count() const
{
    const Children* const children = GetChildren();
    return children == nullptr ? 0 : children->Count();
}

bool Property::ChildExists(const std::string& name) const { return Find(name) != nullptr; }

Property::iterator Property::FindChild(const std::string& name) { return {Find(name), this}; }

Property::const_iterator Property::FindChild(const std::string& name) const { return {Find(name), this}; }

Property* Property::Find(const std::string& name) const noexcept
{
    const Children* const children = GetChildren();
    return children == nullptr ? nullptr : children->Find(name);
}

Property* Property::FindToSet(const std::string& name)
{
    Children* const children = GetChildren();
    return children == nullptr ? nullptr : children->FindToSet(name);
}

Property& Property::operator[](const std::string& name) &
{
    Property* const found = Find(name);
    if (found == nullptr)
    {
        ZELNOR_THROW(details::kPropertyUnit, NoSuchChild(name));
    }
    return *found;
}

const Property& Property::operator[](const std::string& name) const&
{
    const Property* const found = Find(name);
    if (found == nullptr)
    {
        ZELNOR_THROW(details::kPropertyUnit, NoSuchChild(name));
    }
    return *found;
}

Property Property::operator[](const std::string& name) &&
{
    Property* const found = Find(name);
    if (found == nullptr)
    {
        ZELNOR_THROW(details::kPropertyUnit, NoSuchChild(name));
    }
    return std::move(*found);
}

Property& Property::operator[](unsigned long index) &
{
    if (index >= Count())
    {
        ZELNOR_THROW(details::kPropertyUnit, NoSuchChild(index));
    }
    return *GetChildren()->At(index);
}

const Property& Property::operator[](unsigned long index) const&
{
    if (index >= Count())
    {
        ZELNOR_THROW(details::kPropertyUnit, NoSuchChild(index));
    }
    return *GetChildren()->At(index);
}

Property Property::operator[](unsigned long index) &&
{
    if (index >= Count())
    {
        ZELNOR_THROW(details::kPropertyUnit, NoSuchChild(index));
    }
    return std::move(*GetChildren()->At(index));
}

Property::iterator Property::begin()
{
    Children* const children = GetChildren();
    return {children == nullptr ? nullptr : children->GetFirst(), this};
}

Property::iterator Property::end() { return {nullptr, this}; }

Property::const_iterator Property::begin() const
{
    const Children* const children = GetChildren();
    return {children == nullptr ? nullptr : children->GetFirst(), this};
}

Property::const_iterator Property::end() const { return {nullptr, this}; }

Property& Property::SetChild(const std::string& name)
{
    if (!IsGroup())
    {
        ZELNOR_THROW(details::kPropertyUnit, NotApplicable("SetChild"));
    }
    Property* const found = FindToSet(name);
    if (found == nullptr)
    {
        return Append(Named(), name, std::in_place_type<Group>);
    }
    // The old value is destroyed last: `name` may be a part of it.
    Value group;
    found->m_value.swap(group);
    return *found;
}

Property& Property::SetChild(const std::string& name, const Property& value)
{
    if (!IsGroup())
    {
        ZELNOR_THROW(details::kPropertyUnit, NotApplicable("SetChild"));
    }
    return PutChild(name, Property(value));
}

Property& Property::SetChild(const std::string& name, Property&& value)
{
    if (!IsGroup())
    {
        ZELNOR_THROW(details::kPropertyUnit, NotApplicable("SetChild"));
    }
    if (&value == this)
    {
        return PutChild(name, Property(value));
    }
    return PutChild(name, std::move(value));
}

Property& Property::PutChild(const std::string& name, Property&& value)
{
    // Copied before anything is moved: `name` may be the name of this property, of a child, or inside
    // `value`.
    std::string key(name);
    Property* const found = FindToSet(key);
    if (found == &value)
    {
        return *found;
    }
    if (found == nullptr)
    {
        MakeRoom();
        // Renamed before it is appended, since children are known by their names.
        Property child(std::move(value));
        child.m_name = std::move(key);
        return Append(std::move(child));
    }
    // The name stays as it is. The old value is destroyed last: `value` may be a part of it.
    Property taken(std::move(value));
    found->m_value.swap(taken.m_value);
    found->OwnsMore();
    return *found;
}

void Property::MakeRoom() { Children::Of(*this).MakeRoom(); }

template <class... Arguments>
Property& Property::Append(Arguments&&... arguments)
{
    return Children::Of(*this).Append(std::forward<Arguments>(arguments)...);
}

Property& Property::AppendValue(const std::string& name, long long value)
{
    return Append(Named(), name, std::in_place_type<long long>, value);
}

Property& Property::AppendValue(const std::string& name, const std::string& value)
{
    return Append(Named(), name, std::in_place_type<std::string>, value);
}

Property& Property::AppendValue(const std::string& name, const Ratio& value)
{
    return Append(Named(), name, std::in_place_type<Ratio>, value);
}

Property& Property::AppendValue(Property&& child) { return Append(std::move(child)); }

void Property::Add(const Property& child)
{
    if (!IsGroup())
    {
        ZELNOR_THROW(details::kPropertyUnit, NotApplicable("Add"));
    }
    // Copied before it is appended: it may be this property.
    Append(Property(child));
}

void Property::Add(Property&& child)
{
    if (!IsGroup())
    {
        ZELNOR_THROW(details::kPropertyUnit, NotApplicable("Add"));
    }
    if (&child == this)
    {
        Append(Property(child));
        return;
    }
    Append(std::move(child));
}

void Property::RemoveChild(const std::string& name)
{
    Property* const found = Find(name);
    if (found == nullptr)
    {
        ZELNOR_THROW(details::kPropertyUnit, NoSuchChild(name));
    }
    GetChildren()->Remove(*found);
}

bool Property::HasEqualValue(const Property& other) const
{
    if (m_value.index() != other.m_value.index() || !IsEqualText(m_name, other.m_name))
    {
        return false;
    }
    switch (GetType())
    {
    case PROPERTY_TYPE_INT64:
        return *std::get_if<long long>(&m_value) == *std::get_if<long long>(&other.m_value);
    case PROPERTY_TYPE_STRING:
        return IsEqualText(*std::get_if<std::string>(&m_value), *std::get_if<std::string>(&other.m_value));
    case PROPERTY_TYPE_RATIO:
        return *std::get_if<Ratio>(&m_value) == *std::get_if<Ratio>(&other.m_value);
    case PROPERTY_TYPE_GROUP:
        return Count() == other.Count();
    case PROPERTY_TYPE_NONE:
        break;
    }
    return true;
}

bool Property::operator==(const Property& other) const
{
    struct Pair
    {
        const Children* left;
        const Children* right;
    };
    Pending<Pair> pending;
    const auto isEqual = [&pending](const Property& left, const Property& right) {
        if (!left.HasEqualValue(right))
        {
            return false;
        }
        if (left.GetChildren() != nullptr && left.Count() != 0)
        {
            pending.push_back({left.GetChildren(), right.GetChildren()});
        }
        return true;
    };
    bool areEqual = isEqual(*this, other);
    while (areEqual && !pending.empty())
    {
        const Pair pair = pending.back();
        pending.pop_back();
        const Property* left = pair.left->GetFirst();
        for (const Property* right = pair.right->GetFirst(); areEqual && left != nullptr;
             right = right->m_next)
        {
            areEqual = isEqual(*left, *right);
            left = left->m_next;
        }
    }
    return areEqual;
}

MethodIsNotApplicable Property::NotApplicable(const char* method) const
{
    MethodIsNotApplicable exception;
    exception << PropertyException::TagPropertyName(m_name) << PropertyException::TagPropertyType(GetType())
              << PropertyException::TagMethodName(method);
    return exception;
}

PropertyException Property::NoSuchChild(const std::string& name) const
{
    PropertyException exception;
    exception << TagDescription("Property '" + m_name + "' has no child '" + name + "'")
              << PropertyException::TagPropertyName(m_name) << PropertyException::TagPropertyType(GetType());
    return exception;
}

PropertyException Property::NoSuchChild(unsigned long index) const
{
    PropertyException exception;
    exception << TagDescription("Property '" + m_name + "' has no child at position " +
                                std::to_string(index) + ", it has " + std::to_string(Count()))
              << PropertyException::TagPropertyName(m_name) << PropertyException::TagPropertyType(GetType());
    return exception;
}

PropertyException Property::OtherKind(const char* wanted) const
{
    static constexpr std::array<const char*, std::variant_size_v<Value>> kKinds = {
        "a group", "nothing", "a 64-bit integer", "a string", "a rational"};
    PropertyException exception;
    exception << TagDescription("Property '" + m_name + "' holds " + kKinds[m_value.index()] + ", not " +
                                wanted)
              << PropertyException::TagPropertyName(m_name) << PropertyException::TagPropertyType(GetType());
    return exception;
}

PropertyException Property::TooLarge(const char* method, const std::string& child,
                                     unsigned long long value) const
{
    PropertyException exception;
    exception << TagDescription("Property '" + m_name + "' cannot hold " + std::to_string(value) +
                                " as its child '" + child + "': the largest integer is " +
                                std::to_string(std::numeric_limits<long long>::max()))
              << PropertyException::TagPropertyName(m_name) << PropertyException::TagPropertyType(GetType())
              << PropertyException::TagMethodName(method);
    return exception;
}

} // namespace Zelnor::Core
