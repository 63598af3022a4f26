#include "Core/Interfaces/Property.h"

#include <boost/container/small_vector.hpp>

#include <algorithm>
#include <array>
#include <iterator>
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

auto ByName(const std::string& name)
{
    return [&name](const Property& child) { return child.GetName() == name; };
}

/// Precondition: `index` is less than the number of `children`.
template <class List>
auto AtPosition(List& children, unsigned long index)
{
    const unsigned long count = children.size();
    return index < count / 2 ? std::next(children.begin(), static_cast<std::ptrdiff_t>(index))
                             : std::prev(children.end(), static_cast<std::ptrdiff_t>(count - index));
}

/// The empty list that a property that is not a group iterates over.
std::list<Property>& NoChildren()
{
    static std::list<Property> none;
    return none;
}

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
    if (other.GetChildren() == nullptr)
    {
        m_value = other.m_value;
        return;
    }
    CopyChildrenFrom(other);
}

Property::Property(Property&& other) noexcept
    : m_name(std::move(other.m_name)), m_value(std::move(other.m_value))
{}

Property::~Property() { DestroyChildren(); }

Property Property::None(const std::string& name)
{
    Property none(name);
    none.m_value = std::monostate();
    return none;
}

void Property::CopyChildrenFrom(const Property& other)
{
    struct Copy
    {
        const Children* from;
        Children* to;
    };
    Pending<Copy> pending{{other.GetChildren(), GetChildren()}};
    while (!pending.empty())
    {
        const Copy copy = pending.back();
        pending.pop_back();
        for (const Property& child : *copy.from)
        {
            const Children* const grandchildren = child.GetChildren();
            if (grandchildren == nullptr)
            {
                copy.to->push_back(child);
                continue;
            }
            Property& group = copy.to->emplace_back(child.m_name);
            if (!grandchildren->empty())
            {
                pending.push_back({grandchildren, group.GetChildren()});
            }
        }
    }
}

void Property::DestroyChildren() noexcept
{
    Children* const children = GetChildren();
    if (children == nullptr)
    {
        return;
    }
    // Every group passes its children up before it is destroyed, so that destructors never nest.
    while (!children->empty())
    {
        if (Children* const grandchildren = children->front().GetChildren())
        {
            children->splice(children->end(), *grandchildren);
        }
        children->pop_front();
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
    Property taken(std::move(other));
    m_name.swap(taken.m_name);
    m_value.swap(taken.m_value);
    return *this;
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
    return *this;
}

Property& Property::operator=(std::string&& value)
{
    Value taken(std::move(value));
    m_value.swap(taken);
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
    return children == nullptr ? 0 : children->size();
}

bool Property::ChildExists(const std::string& name) const { return FindChild(name) != end(); }

Property::iterator Property::FindChild(const std::string& name)
{
    return std::find_if(begin(), end(), ByName(name));
}

Property::const_iterator Property::FindChild(const std::string& name) const
{
    return std::find_if(begin(), end(), ByName(name));
}

Property& Property::operator[](const std::string& name) &
{
    const iterator found = FindChild(name);
    if (found == end())
    {
        ZELNOR_THROW(details::kPropertyUnit, NoSuchChild(name));
    }
    return *found;
}

const Property& Property::operator[](const std::string& name) const&
{
    const const_iterator found = FindChild(name);
    if (found == end())
    {
        ZELNOR_THROW(details::kPropertyUnit, NoSuchChild(name));
    }
    return *found;
}

Property Property::operator[](const std::string& name) &&
{
    const iterator found = FindChild(name);
    if (found == end())
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
    return *AtPosition(*GetChildren(), index);
}

const Property& Property::operator[](unsigned long index) const&
{
    if (index >= Count())
    {
        ZELNOR_THROW(details::kPropertyUnit, NoSuchChild(index));
    }
    return *AtPosition(*GetChildren(), index);
}

Property Property::operator[](unsigned long index) &&
{
    if (index >= Count())
    {
        ZELNOR_THROW(details::kPropertyUnit, NoSuchChild(index));
    }
    return std::move(*AtPosition(*GetChildren(), index));
}

Property::iterator Property::begin()
{
    Children* const children = GetChildren();
    return children == nullptr ? NoChildren().begin() : children->begin();
}

Property::iterator Property::end()
{
    Children* const children = GetChildren();
    return children == nullptr ? NoChildren().end() : children->end();
}

Property::const_iterator Property::begin() const
{
    const Children* const children = GetChildren();
    return children == nullptr ? NoChildren().cbegin() : children->cbegin();
}

Property::const_iterator Property::end() const
{
    const Children* const children = GetChildren();
    return children == nullptr ? NoChildren().cend() : children->cend();
}

Property& Property::SetChild(const std::string& name)
{
    if (GetChildren() == nullptr)
    {
        ZELNOR_THROW(details::kPropertyUnit, NotApplicable("SetChild"));
    }
    return PutChild(name, Property(name));
}

Property& Property::SetChild(const std::string& name, const Property& value)
{
    if (GetChildren() == nullptr)
    {
        ZELNOR_THROW(details::kPropertyUnit, NotApplicable("SetChild"));
    }
    return PutChild(name, Property(value));
}

Property& Property::SetChild(const std::string& name, Property&& value)
{
    if (GetChildren() == nullptr)
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
    Children& children = *GetChildren();
    // Copied before anything is moved: `name` may be the name of this property, of a child, or inside
    // `value`.
    std::string key(name);
    const iterator found = FindChild(key);
    if (found == children.end())
    {
        Children appended;
        appended.push_back(std::move(value));
        appended.back().m_name = std::move(key);
        children.splice(children.end(), appended);
        return children.back();
    }
    Property taken(std::move(value));
    taken.m_name = std::move(key);
    return *found = std::move(taken);
}

void Property::Add(const Property& child)
{
    Children* const children = GetChildren();
    if (children == nullptr)
    {
        ZELNOR_THROW(details::kPropertyUnit, NotApplicable("Add"));
    }
    children->push_back(Property(child));
}

void Property::Add(Property&& child)
{
    Children* const children = GetChildren();
    if (children == nullptr)
    {
        ZELNOR_THROW(details::kPropertyUnit, NotApplicable("Add"));
    }
    if (&child == this)
    {
        children->push_back(Property(child));
        return;
    }
    children->push_back(std::move(child));
}

void Property::RemoveChild(const std::string& name)
{
    const iterator found = FindChild(name);
    if (found == end())
    {
        ZELNOR_THROW(details::kPropertyUnit, NoSuchChild(name));
    }
    GetChildren()->erase(found);
}

bool Property::HasEqualValue(const Property& other) const
{
    return m_value.index() == other.m_value.index() && m_name == other.m_name &&
           (GetChildren() == nullptr ? m_value == other.m_value : Count() == other.Count());
}

bool Property::operator==(const Property& other) const
{
    struct Pair
    {
        const Property* left;
        const Property* right;
    };
    if (!HasEqualValue(other))
    {
        return false;
    }
    Pending<Pair> pending{{this, &other}};
    while (!pending.empty())
    {
        const Pair pair = pending.back();
        pending.pop_back();
        auto right = pair.right->begin();
        for (const Property& left : *pair.left)
        {
            if (!left.HasEqualValue(*right))
            {
                return false;
            }
            if (left.Count() != 0)
            {
                pending.push_back({&left, &*right});
            }
            ++right;
        }
    }
    return true;
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
