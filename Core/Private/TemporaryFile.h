#pragma once

// Private to the library, not installed: the files that are written beside a target and take its place.

#include "Core/Interfaces/Export.h"

#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <optional>
#include <string>

namespace Zelnor::Core
{

/// The reason when every new file was taken by another process before it was locked, or every name.
constexpr int kTemporaryFilesAreTaken = EBUSY;

struct ZELNOR_LOCAL TemporaryFile
{
    /// -1 when the file could not be made; the reason is in `errno`, `kTemporaryFilesAreTaken` among others
    int descriptor;
    std::string name;
};

/// Makes an empty file in `folder`. Its name tells which target it is for, and it is locked as long as it is
/// open, so that `RemoveAbandoned` can tell it from what a killed process left behind.
ZELNOR_LOCAL TemporaryFile CreateTemporary(int folder, const std::string& target, mode_t mode);

/// Removes the temporary files of `target` in `folder` that nobody holds open any more. Never removes a link,
/// a file with several names, or a file of anybody but this process's user and, if that is the superuser,
/// `owner`. What cannot be removed stays.
ZELNOR_LOCAL void RemoveAbandoned(int folder, const std::string& target, std::optional<uid_t> owner);

} // namespace Zelnor::Core
