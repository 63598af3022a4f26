#pragma once

#include "Core/Interfaces/Exception.h"

#include <gtest/gtest.h>

#include <boost/exception/all.hpp>

#include <exception>
#include <optional>
#include <string>
#include <typeinfo>

namespace Zelnor::Testing
{

/// What a test asks of an exception after it was caught: copies, so that they outlive it. Empty where the
/// exception did not carry the thing.
struct Thrown
{
    std::string what;
    std::string diagnostics;
    std::optional<std::string> description;
    std::optional<std::string> callStack;
    std::optional<std::string> file;
    std::optional<std::string> function;
    std::optional<int> line;
    std::exception_ptr exception;

    /// The value of any other tag: `thrown.Get<PropertyException::TagMethodName>()`.
    template <class Tag>
    std::optional<typename Tag::value_type> Get() const;
};

namespace details
{

template <class Tag>
std::optional<typename Tag::value_type> GetTag(const boost::exception& exception)
{
    const auto* const value = boost::get_error_info<Tag>(exception);
    return value == nullptr ? std::nullopt : std::optional<typename Tag::value_type>(*value);
}

inline std::optional<std::string> ToString(const std::optional<const char*>& text)
{
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

inline void ReadTags(const boost::exception& exception, Thrown& thrown)
{
    thrown.diagnostics = boost::diagnostic_information(exception);
    thrown.description = GetTag<TagDescription>(exception);
    thrown.callStack = GetTag<TagCallStack>(exception);
    thrown.file = ToString(GetTag<boost::throw_file>(exception));
    thrown.function = ToString(GetTag<boost::throw_function>(exception));
    // No path of the machine on which it was built.
    EXPECT_EQ(thrown.function.value_or("").find('/'), std::string::npos) << *thrown.function;
    thrown.line = GetTag<boost::throw_line>(exception);
}

} // namespace details

template <class Tag>
std::optional<typename Tag::value_type> Thrown::Get() const
{
    try
    {
        if (exception)
        {
            std::rethrow_exception(exception);
        }
    }
    catch (const boost::exception& e)
    {
        return details::GetTag<Tag>(e);
    }
    catch (...)
    {}
    return std::nullopt;
}

/// Runs `action` and expects that it throws exactly an `E`: not a class derived from it, other than the
/// wrapper that Boost puts around whatever it throws.
template <class E, class Action>
Thrown ExpectThrow(Action&& action, const char* file = __builtin_FILE(), int line = __builtin_LINE())
{
    Thrown thrown;
    try
    {
        action();
        ADD_FAILURE_AT(file, line) << "expected an exception, none was thrown";
        return thrown;
    }
    catch (const E& e)
    {
        thrown.exception = std::current_exception();
        if (typeid(e) != typeid(boost::wrapexcept<E>) && typeid(e) != typeid(E))
        {
            ADD_FAILURE_AT(file, line)
                << "expected exactly " << typeid(E).name() << ", thrown was " << typeid(e).name();
        }
        thrown.what = e.what();
        if (const auto* const tagged = dynamic_cast<const boost::exception*>(&e))
        {
            details::ReadTags(*tagged, thrown);
        }
    }
    catch (...)
    {
        thrown.exception = std::current_exception();
        ADD_FAILURE_AT(file, line) << "expected " << typeid(E).name() << ", thrown was "
                                   << boost::current_exception_diagnostic_information();
    }
    return thrown;
}

} // namespace Zelnor::Testing
