#pragma once

// Private to the library, not installed.

#include "Media/FFmpeg/FunctionTable.h"

#include <cstdarg>

/// \file
/// FFmpeg's functions, for the sources of this library. In our namespace each of their names is an object
/// that takes the function from the table when it is called or converted to a pointer; the first one loads
/// FFmpeg.

namespace Zelnor::Media
{

/// Loads FFmpeg when that was not done yet. \throw MediaException when it cannot be loaded
const FunctionTable& FFmpeg();

/// Sets FFmpeg's log callback: at once where somebody in the process has FFmpeg, else when it is loaded.
/// \throw MediaException when it cannot be loaded
void SetLogCallback(void (*callback)(void*, int, const char*, std::va_list));

// A call of an object that converts to a function is a call of the function.
#define ZELNOR_FFMPEG_FUNCTION(name)                                                                         \
    struct name##_call                                                                                       \
    {                                                                                                        \
        using Function = decltype(&::name);                                                                  \
        operator Function() const { return FFmpeg().name; }                                                  \
    };                                                                                                       \
    inline constexpr name##_call name = {};
#include "Media/FFmpeg/Functions.def"
#undef ZELNOR_FFMPEG_FUNCTION

} // namespace Zelnor::Media
