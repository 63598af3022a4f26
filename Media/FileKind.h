#pragma once

// Private to the library, not installed.

#include <sys/stat.h>

namespace Zelnor::Media
{

/// What stands under a name, for messages: "a pipe".
inline const char* FileKindText(mode_t mode)
{
    return S_ISREG(mode)    ? "a regular file"
           : S_ISDIR(mode)  ? "a folder"
           : S_ISFIFO(mode) ? "a pipe"
           : S_ISSOCK(mode) ? "a socket"
                            : "a device";
}

} // namespace Zelnor::Media
