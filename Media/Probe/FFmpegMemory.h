#pragma once

// Private to the library, not installed.

#include <new>

namespace Zelnor::Media
{

/// What FFmpeg has made. \throw std::bad_alloc when it is null, which says that memory ran out
template <class T>
T* RequireMemory(T* made)
{
    if (made == nullptr)
    {
        throw std::bad_alloc();
    }
    return made;
}

/// The same for a call that fails only when memory runs out.
inline void RequireMemory(int result)
{
    if (result < 0)
    {
        throw std::bad_alloc();
    }
}

} // namespace Zelnor::Media
