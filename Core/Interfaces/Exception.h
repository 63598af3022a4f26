#pragma once

#include "Core/Interfaces/CallStack.h"
#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/PropertyTypes.h"

// Tags are found by their types, which some standard libraries compare by address: visible, each is there
// once. Whoever has included Boost's header before has decided otherwise.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wattributes"
#pragma GCC diagnostic ignored "-Wignored-attributes"
namespace boost
{
template <class Tag, class T>
class ZELNOR_API error_info;
} // namespace boost
#pragma GCC diagnostic pop

#include <boost/current_function.hpp>
#include <boost/exception/diagnostic_information.hpp>
#include <boost/exception/info.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/throw_exception.hpp>

#include <exception>
#include <ios>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

// This header has static objects in templates, and what GCC makes of those keeps a library that has them in
// memory after dlclose, unless they are hidden. What it includes itself stands above and is not hidden.
#pragma GCC visibility push(hidden)
#include <boost/exception_ptr.hpp>
#pragma GCC visibility pop

#include <boost/exception/all.hpp>

/// \file
/// How the libraries report failures: every failure is a thrown exception, of the tree below or of the
/// standard library. Details travel as tags; read them with `boost::get_error_info<TagDescription>(e)`.
/// `what()` is always the standard library's default text, never the description. All code throws with
/// `ZELNOR_THROW`.

namespace Zelnor
{

namespace details
{
struct ZELNOR_API DescriptionTag;
struct ZELNOR_API CallStackTag;
struct ZELNOR_API PropertyNameTag;
struct ZELNOR_API PropertyTypeTag;
struct ZELNOR_API MethodNameTag;
} // namespace details

/// What went wrong, as a text for people.
using TagDescription = boost::error_info<details::DescriptionTag, std::string>;
/// Where it was thrown: the text of `GetCallStack()`.
using TagCallStack = boost::error_info<details::CallStackTag, std::string>;

/// The root of all exceptions of the product. Destructors are out of line throughout the tree, so that each
/// class's type information is emitted once, in the library that owns it, where every handler finds it.
class ZELNOR_API Exception : public virtual std::exception, public virtual boost::exception
{
public:
    ~Exception() noexcept override;
};

namespace Core
{

/// A failure of the core layer: streams, properties.
class ZELNOR_API CoreException : public virtual Exception
{
public:
    ~CoreException() noexcept override;
};

/// A property was asked for something it does not have (a child, a value of another type), or was to hold
/// something it cannot (an integer beyond 64 bits, JSON that is not a record).
class ZELNOR_API PropertyException : public virtual CoreException
{
public:
    /// Name of the property that refused.
    using TagPropertyName = boost::error_info<details::PropertyNameTag, std::string>;
    /// Type of that property.
    using TagPropertyType = boost::error_info<details::PropertyTypeTag, PropertyTypes>;
    /// Name of the operation that was refused, for example "SetChildT".
    using TagMethodName = boost::error_info<details::MethodNameTag, std::string>;

    ~PropertyException() noexcept override;
};

/// Somebody tried to add children to a property that is not a group.
class ZELNOR_API MethodIsNotApplicable : public PropertyException
{
public:
    ~MethodIsNotApplicable() noexcept override;
};

} // namespace Core

/// Makes `exception << tag` a call of the library that has the tag. Boost's own operator would compile a map
/// of tags into whoever throws, and without optimisation GCC then keeps a library that does in memory after
/// dlclose. To be written in the namespace of the tag's name, where the operators are looked for.
#define ZELNOR_TAG(Tag)                                                                                      \
    ZELNOR_API void Attach(const boost::exception& exception, Tag&& tag);                                    \
    template <class E>                                                                                       \
    std::enable_if_t<std::is_base_of_v<boost::exception, E>, const E&> operator<<(const E& exception,        \
                                                                                  Tag&& tag)                 \
    {                                                                                                        \
        Attach(exception, std::move(tag));                                                                   \
        return exception;                                                                                    \
    }                                                                                                        \
    template <class E>                                                                                       \
    std::enable_if_t<std::is_base_of_v<boost::exception, E>, const E&> operator<<(const E& exception,        \
                                                                                  const Tag& tag)            \
    {                                                                                                        \
        Attach(exception, Tag(tag));                                                                         \
        return exception;                                                                                    \
    }

namespace details
{
ZELNOR_TAG(TagDescription)
ZELNOR_TAG(TagCallStack)
ZELNOR_TAG(Core::PropertyException::TagPropertyName)
ZELNOR_TAG(Core::PropertyException::TagPropertyType)
ZELNOR_TAG(Core::PropertyException::TagMethodName)
} // namespace details

/// Attaches the current call stack to `exception` and returns that same object.
template <class E>
std::enable_if_t<std::is_base_of_v<Exception, E>, const E&> AddStack(const E& exception)
{
    exception << TagCallStack(GetCallStack());
    return exception;
}

/// A standard exception has only its message, so the call stack goes there. Returns a new exception whose
/// message is that of the given one, a line break, and the call stack.
template <class E>
std::enable_if_t<std::is_base_of_v<std::logic_error, E>, E> AddStack(const E& exception)
{
    return E(std::string(exception.what()) + "\n" + GetCallStack());
}

namespace details
{

template <class E>
[[noreturn]] void ThrowWithStack(const E& exception, const boost::source_location& location)
{
    boost::throw_exception(AddStack(exception), location);
}

} // namespace details

} // namespace Zelnor

/// The place of a throw: `unit`, `line`, and the current function's full signature. The unit is a
/// compile-time constant such as "Core/Interfaces/Property": exceptions keep the pointer. Nothing in it is
/// static, which would keep libraries in memory that throw from templates.
#define ZELNOR_LOCATION(unit, line)                                                                          \
    boost::source_location(                                                                                  \
        [] {                                                                                                 \
            constexpr const char* constantUnit = (unit);                                                     \
            return constantUnit;                                                                             \
        }(),                                                                                                 \
        (line), BOOST_CURRENT_FUNCTION)

/// Throws `exception` (with its tags already on it) with the call stack and the place of the throw. It
/// arrives wrapped, so that `boost::current_exception()` can copy it.
#define ZELNOR_THROW(unit, exception)                                                                        \
    ::Zelnor::details::ThrowWithStack((exception), ZELNOR_LOCATION(unit, __LINE__))

/// The same where the contract with the callers fixes the line that is recorded.
#define ZELNOR_THROW_AT_LINE(unit, line, exception)                                                          \
    ::Zelnor::details::ThrowWithStack((exception), ZELNOR_LOCATION(unit, line))

/// The same where the contract fixes the whole message, so that no call stack may be added to it.
#define ZELNOR_THROW_WITHOUT_STACK(unit, exception)                                                          \
    ::boost::throw_exception((exception), ZELNOR_LOCATION(unit, __LINE__))
