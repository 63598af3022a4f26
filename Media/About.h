#pragma once

// Private to the library, not installed.

#include "Media/ErrorText.h"
#include "Media/MediaException.h"

#include <utility>

namespace Zelnor::Media
{

/// What is being handled, as an `E` about the contents of the file. Not part of `About`, whose name would
/// tell the path of the building machine: so compilers name an action that has no name.
template <class E>
[[noreturn]] void ThrowAbout(const std::string& file)
{
    ZELNOR_THROW("Media/About", MakeError<E>(Place{file}, ErrorText(std::current_exception())));
}

/// Runs `action`; what it throws about the contents of `file` arrives as an `E` whose description begins with
/// the file. The streams' own exceptions name the file already.
template <class E, class Action>
auto About(const std::string& file, Action&& action) -> decltype(action())
{
    try
    {
        return std::forward<Action>(action)();
    }
    catch (const Core::PropertyException&)
    {
        ThrowAbout<E>(file);
    }
    catch (const Core::CoreException&)
    {
        throw;
    }
    catch (const std::exception&)
    {
        ThrowAbout<E>(file);
    }
}

} // namespace Zelnor::Media
