#pragma once

// Private to the library, not installed: the files that are written beside a target and take its place.

#include "Core/Interfaces/Export.h"

#include <sys/stat.h>
#include <sys/types.h>

#include <optional>
#include <string>

namespace Zelnor::Core
{

struct ZELNOR_LOCAL TemporaryFile
{
    int descriptor; ///< -1 when the file could not be made; the reason is in `errno`
    std::string name;
};

/// Makes an empty file in `folder`. Its name tells which target it is for, and it is locked as long as it is
/// open, so that `RemoveAbandoned` can tell it from what a killed process left behind.
ZELNOR_LOCAL TemporaryFile CreateTemporary(int folder, const std::string& target, mode_t mode);

/// Removes the temporary files of `target` in `folder` that nobody holds open any more. Never removes a link,
/// a file with several names, or a file of anybody but this process's user and, if that is the superuser,
/// `owner`. What cannot be removed stays.
ZELNOR_LOCAL void RemoveAbandoned(int folder, const std::string& target, std::optional<uid_t> owner);

/// Gives a new file the owner, the group and the permissions of the file `old` that it is to replace, as far
/// as this process may. Bits that let a program run as its owner or group are left out for now.
/// \returns the file's mode, which includes those bits when owner and group are the old ones; nothing, with
/// the reason in `errno`, when the permissions could not be set
ZELNOR_LOCAL std::optional<mode_t> InheritAccess(int descriptor, const struct stat& old);

} // namespace Zelnor::Core
