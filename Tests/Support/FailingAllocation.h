#pragma once

#include <new>

namespace Zelnor::Testing
{

/// How many allocations of this thread still succeed before one fails; negative when none shall fail. A
/// program of tests that replaces `operator new` defines it.
extern thread_local long long g_allocationsLeft;

/// Runs `action` with its allocation number `failAt`, counted from 0, failing.
/// \returns whether it came to its end
template <class Action>
bool RunWithFailure(long long failAt, Action&& action)
{
    g_allocationsLeft = failAt;
    try
    {
        action();
        g_allocationsLeft = -1;
        return true;
    }
    catch (const std::bad_alloc&)
    {
        g_allocationsLeft = -1;
        return false;
    }
}

} // namespace Zelnor::Testing
