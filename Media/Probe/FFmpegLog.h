#pragma once

#include "Core/Interfaces/Export.h"

#include <cstdarg>

/// \file
/// FFmpeg's last message before a failure, for the text of our exceptions: its error numbers alone say little
/// ("Invalid data found" instead of "moov atom not found").
///
/// FFmpeg has one log for the whole process. Its callback can be set, but nobody can ask which one is set, so
/// a library that changes it can never put the application's own back. Probing therefore leaves it alone: by
/// default, FFmpeg goes on printing to standard error, or to the application's callback, and exceptions carry
/// FFmpeg's error without the message. A program opts in, in one of two ways:
///
/// - It has no log callback of its own: it calls `KeepFFmpegMessages()` at its start.
/// - It has one: that callback offers each message to `KeepFFmpegMessage` first.

namespace Zelnor::Media
{

/// The form of FFmpeg's log callback: context, level, format, arguments.
using FFmpegLogCallback = void (*)(void*, int, const char*, std::va_list);

/// Sets FFmpeg's log callback, once for the process; later calls do nothing. Messages that appear while a
/// file is probed, in the same thread, are kept for its exception and are not printed. All others go to
/// `others`, or without one to FFmpeg's default callback. Call it before other threads use FFmpeg. Where
/// nobody has loaded FFmpeg's libraries yet, the callback is set when this library loads them. \throw
/// MediaException when FFmpeg's libraries cannot be used
ZELNOR_API void KeepFFmpegMessages(FFmpegLogCallback others = nullptr);

/// Keeps a message for the exception of the probe that is running in this thread.
/// \return whether there is one; else nothing was done, and `arguments` can still be used
ZELNOR_API bool KeepFFmpegMessage(int level, const char* format, std::va_list arguments) noexcept;

} // namespace Zelnor::Media
