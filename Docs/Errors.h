#pragma once

#include "Conf/Interfaces/ConfException.h"
#include "Core/Interfaces/Exception.h"
#include "Media/Verifying/Verification.h"

#include <boost/exception/all.hpp>

#include <functional>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

/// \file
/// What the document says of exceptions is taken from exceptions: each example is a call that is made, and
/// what is printed is what it threw.

namespace Zelnor::Docs
{

/// A call that fails, as it is written, and what makes it.
struct Example
{
    const char* call;
    std::function<void()> action;
};

/// What the document says of one class.
struct ErrorClass
{
    std::string name;
    std::string base;
    std::string meaning;
    std::vector<std::string> tags; ///< those that the class declares
    std::vector<Example> examples;
    /// Makes the call. \returns the line for the example; throws when the class is another one
    std::string (*run)(const Example& example);
};

/// The tags of a thrown exception but for the call stack, as lines of a table's cell.
std::string TagsOf(const boost::exception& exception);

/// The text between bars of a Markdown table.
std::string Cell(const std::string& text);

/// Makes the call and expects exactly an `E`.
template <class E>
std::string RunExample(const Example& example)
{
    try
    {
        example.action();
    }
    catch (const E& thrown)
    {
        if (typeid(thrown) != typeid(boost::wrapexcept<E>))
        {
            throw std::logic_error(std::string(example.call) + " throws another class");
        }
        if constexpr (std::is_base_of_v<Exception, E>)
        {
            return TagsOf(thrown);
        }
        else
        {
            const std::string message = thrown.what();
            return Cell(message.substr(0, message.find('\n')));
        }
    }
    throw std::logic_error(std::string(example.call) + " throws nothing");
}

template <class E, class Base>
ErrorClass Describe(const std::string& name, const std::string& base, const std::string& meaning,
                    std::vector<std::string> tags, std::vector<Example> examples)
{
    static_assert(std::is_base_of_v<Base, E> && !std::is_same_v<Base, E>);
    return {name, base, meaning, std::move(tags), std::move(examples), RunExample<E>};
}

std::vector<ErrorClass> CoreErrors();
std::vector<ErrorClass> ConfErrors();
std::vector<ErrorClass> MediaErrors();
std::vector<ErrorClass> StandardErrors();

} // namespace Zelnor::Docs

/// The call as it is written, and the call.
#define ZELNOR_EXAMPLE(...)                                                                                  \
    {                                                                                                        \
#__VA_ARGS__, [] { static_cast<void>(__VA_ARGS__); }                                                 \
    }
