#pragma once

#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/Property.h"

#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

/// \file
/// What the campaign lets run out of memory, one row for each operation:
///
///     Change("Core::Property::RemoveChild", [](Property& p) { p.RemoveChild("inner"); });
///     Call("Core::HasDistinctNames", [] { return HasDistinctNames(Sample()); });

namespace Zelnor::Testing
{

/// One use of an operation on objects of its own.
struct Trial
{
    std::function<void()> act;
    /// What can be seen of the objects and of the result.
    std::function<std::string()> see;
};

struct Operation
{
    std::string function; ///< the qualified name without the namespace Zelnor: "Core::Property::Add"
    std::function<Trial()> prepare;
    bool isAllOrNothing = true; ///< whether a failure changes nothing
    bool mayDescribe = false;   ///< whether a described exception may stand for `std::bad_alloc`
    bool usesFFmpeg = false;    ///< see `UsingFFmpeg`
    std::string variant = {};   ///< what sets it apart from other rows of the function
};

using Operations = std::vector<Operation>;

Operations CoreOperations();
Operations ConfOperations();
Operations MediaOperations();

/// Whether the exception says that there is not enough memory.
inline bool IsOutOfMemory(const Exception& exception)
{
    const std::string* const text = boost::get_error_info<TagDescription>(exception);
    return text != nullptr && (text->find("Not enough memory") != std::string::npos ||
                               text->find("Cannot allocate memory") != std::string::npos);
}

/// \name What can be seen of a value.
/// \{
std::string Text(const Core::Property& record);
inline std::string Text(const std::string& text) { return text; }
template <class T, std::enable_if_t<std::is_arithmetic_v<T> || std::is_enum_v<T>, int> = 0>
std::string Text(T value)
{
    return std::to_string(
        static_cast<std::conditional_t<std::is_floating_point_v<T>, double, long long>>(value));
}
template <class A, class B>
std::string Text(const std::pair<A, B>& pair);
template <class T>
std::string Text(const std::optional<T>& value);
template <class T>
std::string Text(const std::vector<T>& values);

template <class A, class B>
std::string Text(const std::pair<A, B>& pair)
{
    return Text(pair.first) + "," + Text(pair.second);
}
template <class T>
std::string Text(const std::optional<T>& value)
{
    return value ? Text(*value) : "nothing";
}
template <class T>
std::string Text(const std::vector<T>& values)
{
    std::string text = "[";
    for (const T& value : values)
    {
        text += Text(value) + ";";
    }
    return text + "]";
}
/// \}

/// A row whose objects are made by `make`, changed by `act` and seen by `see`.
template <class Make, class Act, class See>
Operation Row(std::string function, Make make, Act act, See see)
{
    return {std::move(function), [=] {
                const auto state = std::make_shared<decltype(make())>(make());
                return Trial{[=] { act(*state); }, [=] { return see(*state); }};
            }};
}

/// A row that asks for a value.
template <class Function>
Operation Call(std::string function, Function ask)
{
    using Result = std::optional<std::decay_t<decltype(ask())>>;
    return Row(
        std::move(function), [] { return Result(); }, [=](Result& result) { result = ask(); },
        [](const Result& result) { return Text(result); });
}

/// `ask`, which is refused with an `E`: its description.
template <class E, class Function>
auto Refused(Function ask)
{
    return [=]() -> std::string {
        try
        {
            ask();
        }
        catch (const std::bad_alloc&)
        {
            throw;
        }
        catch (const E& exception)
        {
            if constexpr (std::is_base_of_v<Exception, E>)
            {
                const std::string* const text = boost::get_error_info<TagDescription>(exception);
                if (IsOutOfMemory(exception))
                {
                    throw;
                }
                return "refused: " + (text == nullptr ? "" : *text);
            }
            else
            {
                return "refused";
            }
        }
        return "not refused";
    };
}

inline Operation Partial(Operation operation)
{
    operation.isAllOrNothing = false;
    return operation;
}

inline Operation Described(Operation operation)
{
    operation.mayDescribe = true;
    return operation;
}

/// libavformat itself leaks and writes to null pointers when it runs out of memory, so that only our own
/// allocations fail.
inline Operation UsingFFmpeg(Operation operation)
{
    operation.usesFFmpeg = true;
    operation.mayDescribe = true;
    return operation;
}

inline Operation Variant(std::string variant, Operation operation)
{
    operation.variant = std::move(variant);
    return operation;
}

/// Fails every allocation of each operation, and reports what it finds to GoogleTest. \returns the figures
std::string RunCampaign(const Operations& operations);

} // namespace Zelnor::Testing
