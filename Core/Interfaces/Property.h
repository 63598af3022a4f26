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
public:
    using Ratio = boost::rational<long long>;
    using iterator = std::list<Property>::iterator;
    using const_iterator = std::list<Property>::const_iterator;

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

    const std::string& GetName() const { return m_name; }
    PropertyTypes GetType() const { return kTypes[m_value.index()]; }

    long long GetInt64() const;
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
    /// The child at that position, counted from 0. The list is walked from the nearer end.
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
    using Children = std::list<Property>;
    /// A scalar has no children, so children and value share the storage.
    using Value = std::variant<Children, std::monostate, long long, std::string, Ratio>;
    /// The type of each alternative of `Value`, in the same order.
    static constexpr PropertyTypes kTypes[] = {PROPERTY_TYPE_GROUP, PROPERTY_TYPE_NONE, PROPERTY_TYPE_INT64,
                                               PROPERTY_TYPE_STRING, PROPERTY_TYPE_RATIO};
    static_assert(std::variant_size_v<Value> == sizeof kTypes / sizeof *kTypes);

    void CopyChildrenFrom(const Property& other);
    void DestroyChildren() noexcept;
    Children* GetChildren() noexcept { return std::get_if<Children>(&m_value); }
    const Children* GetChildren() const noexcept { return std::get_if<Children>(&m_value); }
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
