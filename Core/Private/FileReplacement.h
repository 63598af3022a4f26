#pragma once

// Private to the library, not installed: what whoever puts a new file in the place of another needs. Inline,
// so that each library has it without exporting it.

#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace Zelnor::Core
{

/// The absolute path of the file that `path` names after all symbolic links are followed; the file itself
/// need not exist. Nothing, with the reason in `errno`, when the path leads nowhere.
inline std::optional<std::filesystem::path> FollowLinks(const std::filesystem::path& path)
{
    // The system would stop reading at a NUL and use another file.
    if (path.empty() || path.native().find('\0') != std::string::npos)
    {
        errno = path.empty() ? ENOENT : EINVAL;
        return std::nullopt;
    }
    std::error_code failure;
    std::filesystem::path target = std::filesystem::absolute(path, failure);
    if (failure)
    {
        errno = failure.value();
        return std::nullopt;
    }
    constexpr int kMostLinks = 40;
    for (int i = 0; i <= kMostLinks; ++i)
    {
        std::error_code error;
        const std::filesystem::path next = std::filesystem::read_symlink(target, error);
        if (error)
        {
            return target;
        }
        target = target.parent_path() / next;
    }
    errno = ELOOP;
    return std::nullopt;
}

/// Gives a new file the owner, the group and the permissions of the file `old` that it is to replace, as far
/// as this process may. Where the group cannot be kept, group and others get what both had. Bits that let a
/// program run as its owner or group are left out.
/// \returns the old file's mode if the new one may have it whole, with those bits, because owner and group
/// are the old ones, else the mode that it has; nothing, with the reason in `errno`, when the permissions
/// could not be set
inline std::optional<mode_t> InheritAccess(int descriptor, const struct stat& old)
{
    constexpr auto kSameUser = static_cast<uid_t>(-1);
    constexpr auto kSameGroup = static_cast<gid_t>(-1);
    constexpr mode_t kPermissions = 0777;
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0)
    {
        return std::nullopt;
    }
    mode_t mode = old.st_mode & kPermissions;
    const bool keepsGroup = status.st_gid == old.st_gid || ::fchown(descriptor, kSameUser, old.st_gid) == 0;
    if (!keepsGroup)
    {
        // The members of the old group are now among the others.
        const mode_t both = mode & (mode >> 3) & 07;
        mode = (mode & 0700) | (both << 3) | both;
    }
    if (::fchmod(descriptor, mode) != 0)
    {
        return std::nullopt;
    }
    // Last, since whoever gave a file away may not change it any more.
    const bool keepsOwner = status.st_uid == old.st_uid || ::fchown(descriptor, old.st_uid, kSameGroup) == 0;
    return keepsOwner && keepsGroup ? old.st_mode & 07777 : mode;
}

} // namespace Zelnor::Core
