#pragma once

#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/PropertyTypes.h"

#include <boost/rational.hpp>

#include <cstddef>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

/// \file
/// \code
/// Core::Property video("format_codec_video");
/// video.SetChildT("width", 1920LL);
/// video.SetChildT("frameRateRatio", Core::Property::Ratio(30000, 1001));
/// video.SetChild("metadata").SetChildT("language", std::string("eng"));
/// assert(video["metadata"]["language"].GetString() == "eng");
/// assert(video.Count() == 3 && !video.ChildExists("height"));
/// \endcode

namespace Zelnor::details
{

inline constexpr const char* kPropertyUnit = "Core/Interfaces/Property";

} // namespace Zelnor::details

namespace Zelnor::Core
{

/// A named value with a type, or a named group of such values in a fixed order. Every description in the
/// product is kept in this form. A property is a plain value: copies are deep, and access is not
/// synchronised.
///
/// - Several children may have the same name; every operation that takes a name uses the first of them.
/// - References and iterators to children stay valid while siblings are added and removed.
/// - Arguments may be part of the property itself (`p = p["child"]`, `p.SetChild("x", p)`).
///   The exception: a property cannot be moved into one of its own descendants. Copy it.
/// - An operation that throws leaves the property as it was.
/// - Trees of any depth may be copied, compared and destroyed.
///
/// Asking for a child that does not exist, or for a value of another type, throws `PropertyException` with a
/// description and the property's name and type. Adding children to a property that is not a group throws
/// `MethodIsNotApplicable` with the property's name, its type and the method.
class ZELNOR_API Property
{
    template <class P>
    class Iterator;

public:
    using Ratio = boost::rational<long long>;        ///< always reduced, with a positive denominator
    using iterator = Iterator<Property>;             ///< over children that can be changed
    using const_iterator = Iterator<const Property>; ///< over children that cannot

    /// Without a value, a group without children. Without a name, the name is empty.
    Property();
    explicit Property(const std::string& name);
    Property(const std::string& name, long long value);
    Property(const std::string& name, const std::string& value);
    Property(const std::string& name, const Ratio& value);
    /// The same, but the strings are moved.
    explicit Property(std::string&& name);
    Property(std::string&& name, long long value);
    Property(std::string&& name, std::string&& value);
    Property(std::string&& name, const Ratio& value);
    /// A fraction would be lost silently: use `static_cast<long long>` or a `Ratio`.
    template <class T, std::enable_if_t<std::is_floating_point_v<T>, int> = 0>
    Property(const std::string& name, T value) = delete;
    Property(const Property& other);
    /// Leaves `other` empty, with its old type.
    Property(Property&& other) noexcept;
    virtual ~Property();

    /// Makes a property without a value (type 0).
    static Property None(const std::string& name);

    /// Copies or moves everything, including the name. To replace a child and keep its key, use `SetChild`.
    Property& operator=(const Property& other);
    Property& operator=(Property&& other) noexcept;
    /// These replace the value and the type and keep the name; a group loses its children.
    Property& operator=(long long value);
    Property& operator=(const std::string& value);
    Property& operator=(std::string&& value);
    Property& operator=(const Ratio& value);
    template <class T, std::enable_if_t<std::is_floating_point_v<T>, int> = 0>
    Property& operator=(T) = delete;

    const std::string& GetName() const { return m_name; }             ///< may be empty
    PropertyTypes GetType() const { return TypeOf(m_value.index()); } ///< says which getter fits

    long long GetInt64() const; ///< the value of an integer
    /// The reference is valid until the property changes. A temporary returns the string itself.
    const std::string& GetString() const&;
    std::string GetString() &&;
    const Ratio& GetRatio() const&;
    Ratio GetRatio() &&;

    /// Number of children; 0 when this is not a group.
    unsigned long Count() const;
    bool ChildExists(const std::string& name) const;
    /// The child with that name, or `end()`.
    iterator FindChild(const std::string& name);
    const_iterator FindChild(const std::string& name) const;
    /// The child with that name. A temporary returns the child by value, so that no reference dangles.
    Property& operator[](const std::string& name) &;
    const Property& operator[](const std::string& name) const&;
    Property operator[](const std::string& name) &&;
    /// The child at that position, counted from 0. Once children were removed, the list is walked from the
    /// nearer end.
    Property& operator[](unsigned long index) &;
    const Property& operator[](unsigned long index) const&;
    Property operator[](unsigned long index) &&;

    /// The children in order; an empty range when this is not a group.
    iterator begin();
    iterator end();
    const_iterator begin() const;
    const_iterator end() const;

    /// Makes the child `name` an empty group, in its place if it exists, else at the end.
    Property& SetChild(const std::string& name);
    /// Makes the child `name` a copy of `value` that is named `name`, in its place if it exists, else at the
    /// end.
    Property& SetChild(const std::string& name, const Property& value);
    Property& SetChild(const std::string& name, Property&& value);
    /// Sets the value of the child `name`, which is appended if it does not exist.
    /// \throw MethodIsNotApplicable with the method name "SetChildT"
    /// \throw PropertyException when `value` is beyond 2^63-1: "Property 'video' cannot hold
    ///   18446744073709551615 as its child 'bitrate': the largest integer is 9223372036854775807"
    template <class T>
    Property& SetChildT(const std::string& name, const T& value);
    /// Appends a child, even if there is one of that name already.
    /// \throw MethodIsNotApplicable with the method name "CreateChildT"
    /// \throw PropertyException when `value` is beyond 2^63-1, as `SetChildT`
    template <class T>
    Property& CreateChildT(const std::string& name, const T& value);
    /// Appends a copy of `child`, even if there is one of that name already.
    void Add(const Property& child);
    void Add(Property&& child);
    void RemoveChild(const std::string& name);

    /// Equal names, types, values and children in order.
    bool operator==(const Property& other) const;
    bool operator!=(const Property& other) const { return !(*this == other); }

private:
    friend class PropertyReader;
    friend ZELNOR_API bool HasDistinctNames(const Property& group);
    class Children;
    struct DestroyChildren
    {
        ZELNOR_LOCAL void operator()(Children* children) const noexcept;
    };
    /// Null as long as the group has no children.
    using Group = std::unique_ptr<Children, DestroyChildren>;
    /// A scalar has no children, so children and value share the storage.
    using Value = std::variant<Group, std::monostate, long long, std::string, Ratio>;
    /// The type of an alternative of `Value`. Not a static table: programs would have a unique copy of it.
    static constexpr PropertyTypes TypeOf(std::size_t alternative)
    {
        constexpr PropertyTypes types[] = {PROPERTY_TYPE_GROUP, PROPERTY_TYPE_NONE, PROPERTY_TYPE_INT64,
                                           PROPERTY_TYPE_STRING, PROPERTY_TYPE_RATIO};
        static_assert(std::variant_size_v<Value> == sizeof types / sizeof *types);
        return types[alternative];
    }

    struct Named
    {};
    /// \param name  what a string can be made of
    /// \param arguments  those of one of the constructors of `T`, an alternative of `Value`
    template <class Name, class T, class... Arguments>
    ZELNOR_LOCAL Property(Named, const Name& name, std::in_place_type_t<T> type, Arguments&&... arguments);

    bool IsGroup() const noexcept { return m_value.index() == 0; }
    /// Null when this is not a group, and when it has no children.
    ZELNOR_LOCAL Children* GetChildren() const noexcept;
    Property* GetLastChild() const noexcept;
    ZELNOR_LOCAL Property* Find(const std::string& name) const noexcept;
    /// The same. A group with many children remembers their names for the next time.
    Property* FindToSet(const std::string& name);
    ZELNOR_LOCAL void CopyValueFrom(const Property& other);
    void CopyChildrenFrom(const Property& other);
    /// The same as the assignment of what is neither a part of this nor has a part that this is.
    ZELNOR_LOCAL void Become(Property&& other) noexcept;
    ZELNOR_LOCAL void NameChanged() noexcept;
    /// To be called when this may own memory that it did not own before.
    ZELNOR_LOCAL void OwnsMore() noexcept;
    /// Makes memory for one more child ready. Precondition: this is a group.
    ZELNOR_LOCAL void MakeRoom();
    /// Appends a child that is constructed from the arguments. Precondition: this is a group.
    template <class... Arguments>
    ZELNOR_LOCAL Property& Append(Arguments&&... arguments);
    /// The same, for the templates below.
    Property& AppendValue(const std::string& name, long long value);
    Property& AppendValue(const std::string& name, const std::string& value);
    Property& AppendValue(const std::string& name, const Ratio& value);
    Property& AppendValue(Property&& child);
    /// Precondition: this is a group, and `value` is neither this property nor one that contains it.
    Property& PutChild(const std::string& name, Property&& value);
    bool HasEqualValue(const Property& other) const;
    /// The exception for an operation that only a group supports, without a call stack.
    MethodIsNotApplicable NotApplicable(const char* method) const;
    PropertyException NoSuchChild(const std::string& name) const;
    PropertyException NoSuchChild(unsigned long index) const;
    PropertyException OtherKind(const char* wanted) const;
    PropertyException TooLarge(const char* method, const std::string& child, unsigned long long value) const;
    /// Whether `value` is an integer that would turn negative as a `long long`.
    template <class T>
    static constexpr bool IsTooLarge(const T& value);

    std::string m_name;
    Value m_value;
    /// The children that this is one of, and its neighbours there; null for a property that is not a child.
    Children* m_siblings = nullptr;
    Property* m_previous = nullptr;
    Property* m_next = nullptr;
};
/// A position among the children of a group.
template <class P>
class Property::Iterator
{
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = Property;
    using difference_type = std::ptrdiff_t;
    using pointer = P*;
    using reference = P&;

    Iterator() = default;
    /// From an iterator to a constant one.
    template <class Q, std::enable_if_t<std::is_same_v<const Q, P>, int> = 0>
    Iterator(const Iterator<Q>& other) : m_child(other.m_child), m_group(other.m_group)
    {}

    reference operator*() const { return *m_child; }
    pointer operator->() const { return m_child; }
    Iterator& operator++()
    {
        m_child = m_child->m_next;
        return *this;
    }
    Iterator operator++(int)
    {
        const Iterator before = *this;
        ++*this;
        return before;
    }
    Iterator& operator--()
    {
        m_child = m_child == nullptr ? m_group->GetLastChild() : m_child->m_previous;
        return *this;
    }
    Iterator operator--(int)
    {
        const Iterator before = *this;
        --*this;
        return before;
    }
    friend bool operator==(const Iterator& left, const Iterator& right)
    {
        return left.m_child == right.m_child;
    }
    friend bool operator!=(const Iterator& left, const Iterator& right) { return !(left == right); }

private:
    friend Property;
    friend Iterator<const Property>;

    Iterator(P* child, const Property* group) : m_child(child), m_group(group) {}

    /// Null at the end.
    P* m_child = nullptr;
    const Property* m_group = nullptr;
};

template <class T>
constexpr bool Property::IsTooLarge([[maybe_unused]] const T& value)
{
    if constexpr (std::is_enum_v<T>)
    {
        return IsTooLarge(static_cast<std::underlying_type_t<T>>(value));
    }
    else if constexpr (std::is_unsigned_v<T> && sizeof(T) >= sizeof(long long))
    {
        return value > static_cast<T>(std::numeric_limits<long long>::max());
    }
    else
    {
        return false;
    }
}

template <class T>
Property& Property::CreateChildT(const std::string& name, const T& value)
{
    if (!IsGroup())
    {
        // The line is part of the contract with the product's error reports.
        ZELNOR_THROW_AT_LINE(details::kPropertyUnit, 243, NotApplicable("CreateChildT"));
    }
    if constexpr (std::is_integral_v<T> || std::is_enum_v<T>)
    {
        if (IsTooLarge(value))
        {
            ZELNOR_THROW(details::kPropertyUnit,
                         TooLarge("CreateChildT", name, static_cast<unsigned long long>(value)));
        }
    }
    if constexpr ((std::is_integral_v<T> || std::is_enum_v<T>)&&std::is_convertible_v<T, long long>)
    {
        return AppendValue(name, static_cast<long long>(value));
    }
    else if constexpr (std::is_same_v<T, std::string> || std::is_same_v<T, Ratio>)
    {
        return AppendValue(name, value);
    }
    else
    {
        return AppendValue(Property(name, value));
    }
}

template <class T>
Property& Property::SetChildT(const std::string& name, const T& value)
{
    if (!IsGroup())
    {
        // The line is part of the contract with the product's error reports.
        ZELNOR_THROW_AT_LINE(details::kPropertyUnit, 260, NotApplicable("SetChildT"));
    }
    if constexpr (std::is_integral_v<T> || std::is_enum_v<T>)
    {
        if (IsTooLarge(value))
        {
            ZELNOR_THROW(details::kPropertyUnit,
                         TooLarge("SetChildT", name, static_cast<unsigned long long>(value)));
        }
    }
    Property* const found = FindToSet(name);
    if (found == nullptr)
    {
        return CreateChildT(name, value);
    }
    if constexpr ((std::is_integral_v<T> || std::is_enum_v<T>)&&std::is_convertible_v<T, long long>)
    {
        return *found = static_cast<long long>(value);
    }
    else
    {
        return *found = value;
    }
}

} // namespace Zelnor::Core
