#pragma once

// Private to the library, not installed.

#include "Media/ErrorText.h"
#include "Media/MediaException.h"

#include <utility>

namespace Zelnor::Media
{

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
        ZELNOR_THROW("Media/About", MakeError<E>(Place{file}, ErrorText(std::current_exception())));
    }
    catch (const Core::CoreException&)
    {
        throw;
    }
    catch (const std::exception&)
    {
        ZELNOR_THROW("Media/About", MakeError<E>(Place{file}, ErrorText(std::current_exception())));
    }
}

} // namespace Zelnor::Media
