#pragma once

#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/PropertyTypes.h"

#include <boost/rational.hpp>

#include <cstddef>
#include <limits>
#include <list>
#include <string>
#include <type_traits>
#include <variant>

namespace Zelnor::details
{

inline constexpr const char* kPropertyUnit = "Core/Interfaces/Property";

} // namespace Zelnor::details

namespace Zelnor::Core
{

/// A named value with a type, or a named group of such values in order: the form in which every description
/// of the product is kept. Copies are deep. A property is a plain value, not synchronised.
///
/// - Several children may have the same name; every operation that takes a name means the first of them.
/// - References and iterators to children stay valid while siblings are added and removed.
/// - Arguments may live inside the property itself (`p = p["child"]`, `p.SetChild("x", p)`).
///   Only moving a property into one of its own descendants is not possible: copy it.
/// - An operation that throws leaves the property as it was.
/// - Trees of any depth may be copied, compared and destroyed.
///
/// Asking for a child that is not there, or for a value of another kind, throws `PropertyException` with a
/// description and the property's name and type. Adding children to what is not a group throws
/// `MethodIsNotApplicable` with the property's name, its type and the method.
class ZELNOR_API Property
{
public:
    using Ratio = boost::rational<long long>;
    using iterator = std::list<Property>::iterator;
    using const_iterator = std::list<Property>::const_iterator;

    /// A group without children; without an argument, an unnamed one.
    Property();
    explicit Property(const std::string& name);
    Property(const std::string& name, long long value);
    Property(const std::string& name, const std::string& value);
    Property(const std::string& name, const Ratio& value);
    /// The same, taking the texts over.
    explicit Property(std::string&& name);
    Property(std::string&& name, long long value);
    Property(std::string&& name, std::string&& value);
    Property(std::string&& name, const Ratio& value);
    /// A fraction would be cut off silently: say `static_cast<long long>` or give a `Ratio`.
    template <class T, std::enable_if_t<std::is_floating_point_v<T>, int> = 0>
    Property(const std::string& name, T value) = delete;
    Property(const Property& other);
    /// Leaves `other` a property of its old type with nothing in it.
    Property(Property&& other) noexcept;
    virtual ~Property();

    /// A property without a value (type 0).
    static Property None(const std::string& name);

    /// Takes over everything, the name included. Where a record must stay reachable under its key, use
    /// `SetChild`.
    Property& operator=(const Property& other);
    Property& operator=(Property&& other) noexcept;
    /// These replace the value and the type and keep the name; a group loses its children.
    Property& operator=(long long value);
    Property& operator=(const std::string& value);
    Property& operator=(std::string&& value);
    Property& operator=(const Ratio& value);
    template <class T, std::enable_if_t<std::is_floating_point_v<T>, int> = 0>
    Property& operator=(T) = delete;

    const std::string& GetName() const { return m_name; }
    PropertyTypes GetType() const { return kTypes[m_value.index()]; }

    long long GetInt64() const;
    /// Valid until the property changes; asked of a temporary, the text itself.
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
    /// The child with that name. Asked of a temporary, these hand the child out by value, so that nothing
    /// dangles.
    Property& operator[](const std::string& name) &;
    const Property& operator[](const std::string& name) const&;
    Property operator[](const std::string& name) &&;
    /// The child at that position, counted from 0; reached from the nearer end.
    Property& operator[](unsigned long index) &;
    const Property& operator[](unsigned long index) const&;
    Property operator[](unsigned long index) &&;

    /// The children in order; an empty range when this is not a group.
    iterator begin();
    iterator end();
    const_iterator begin() const;
    const_iterator end() const;

    /// Makes the child `name` an empty group: in its place if it is there, else at the end.
    Property& SetChild(const std::string& name);
    /// Makes the child `name` a copy of `value` under the name `name`: in its place if it is there, else at
    /// the end.
    Property& SetChild(const std::string& name, const Property& value);
    Property& SetChild(const std::string& name, Property&& value);
    /// Sets the value of the child `name`, which is appended when it is not there.
    /// \throw MethodIsNotApplicable with the method name "SetChildT"
    /// \throw PropertyException when `value` is beyond 2^63-1: "Property 'video' cannot hold
    ///   18446744073709551615 as its child 'bitrate': the largest integer is 9223372036854775807"
    template <class T>
    Property& SetChildT(const std::string& name, const T& value);
    /// Appends a child, whether or not one of that name is there.
    /// \throw MethodIsNotApplicable with the method name "CreateChildT"
    /// \throw PropertyException when `value` is beyond 2^63-1, as `SetChildT`
    template <class T>
    Property& CreateChildT(const std::string& name, const T& value);
    /// Appends a copy of `child`, whether or not one of that name is there.
    void Add(const Property& child);
    void Add(Property&& child);
    void RemoveChild(const std::string& name);

    /// Equal names, types, values and children in order.
    bool operator==(const Property& other) const;
    bool operator!=(const Property& other) const { return !(*this == other); }

private:
    using Children = std::list<Property>;
    /// A scalar has no children, so they share their room with the value.
    using Value = std::variant<Children, std::monostate, long long, std::string, Ratio>;
    /// The type of each alternative of `Value`, in their order.
    static constexpr PropertyTypes kTypes[] = {PROPERTY_TYPE_GROUP, PROPERTY_TYPE_NONE, PROPERTY_TYPE_INT64,
                                               PROPERTY_TYPE_STRING, PROPERTY_TYPE_RATIO};
    static_assert(std::variant_size_v<Value> == sizeof kTypes / sizeof *kTypes);

    void CopyChildrenFrom(const Property& other);
    void DestroyChildren() noexcept;
    Children* GetChildren() noexcept { return std::get_if<Children>(&m_value); }
    const Children* GetChildren() const noexcept { return std::get_if<Children>(&m_value); }
    /// Precondition: this is a group, and `value` is neither it nor around it.
    Property& PutChild(const std::string& name, Property&& value);
    bool HasEqualValue(const Property& other) const;
    /// The exception for an operation that only a group has, ready but for its call stack.
    MethodIsNotApplicable NotApplicable(const char* method) const;
    PropertyException NoSuchChild(const std::string& name) const;
    PropertyException NoSuchChild(unsigned long index) const;
    PropertyException OtherKind(const char* wanted) const;
    PropertyException TooLarge(const char* method, const std::string& child, unsigned long long value) const;
    /// Whether `value` is an integer that would turn negative when it is kept.
    template <class T>
    static constexpr bool IsTooLarge(const T& value);

    std::string m_name;
    Value m_value;
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
    Children* const children = GetChildren();
    if (children == nullptr)
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
    return children->emplace_back(name, value);
}

template <class T>
Property& Property::SetChildT(const std::string& name, const T& value)
{
    if (GetChildren() == nullptr)
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
    const iterator found = FindChild(name);
    if (found == end())
    {
        return CreateChildT(name, value);
    }
    return *found = value;
}

} // namespace Zelnor::Core
