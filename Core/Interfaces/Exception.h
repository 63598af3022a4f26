#pragma once

#include "Core/Interfaces/CallStack.h"
#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/PropertyTypes.h"

#include <boost/current_function.hpp>
#include <boost/exception/all.hpp>
#include <boost/throw_exception.hpp>

#include <exception>
#include <stdexcept>
#include <string>
#include <type_traits>

/// \file
/// Every failure of the libraries is a thrown exception of the tree below, or of the standard library's.
/// Details travel as tags: read them with `boost::get_error_info<TagDescription>(e)`. `what()` is the
/// standard library's default text everywhere, never the description. `ZELNOR_THROW` is the one way of
/// throwing.

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

/// What went wrong, for people.
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

/// A property was asked for what it has not: a child, a value of another kind, JSON that is no record.
class ZELNOR_API PropertyException : public virtual CoreException
{
public:
    /// Name of the property that refused.
    using TagPropertyName = boost::error_info<details::PropertyNameTag, std::string>;
    /// Type of that property.
    using TagPropertyType = boost::error_info<details::PropertyTypeTag, PropertyTypes>;
    /// Name of the refused operation, for example "SetChildT".
    using TagMethodName = boost::error_info<details::MethodNameTag, std::string>;

    ~PropertyException() noexcept override;
};

/// Children were to be added to a property that is not a group.
class ZELNOR_API MethodIsNotApplicable : public PropertyException
{
public:
    ~MethodIsNotApplicable() noexcept override;
};

} // namespace Core

/// Attaches the current call stack to `exception` and returns that same object.
template <class E>
std::enable_if_t<std::is_base_of_v<Exception, E>, const E&> AddStack(const E& exception)
{
    exception << TagCallStack(GetCallStack());
    return exception;
}

/// A standard exception has only its message, so the call stack goes there: a new exception whose message is
/// the given one's, a line break, and the call stack.
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
/// compile-time constant such as "Core/Interfaces/Property": exceptions keep the pointer.
#define ZELNOR_LOCATION(unit, line)                                                                          \
    boost::source_location(                                                                                  \
        [] {                                                                                                 \
            static constexpr const char* constantUnit = (unit);                                              \
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
