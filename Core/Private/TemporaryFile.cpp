#include "Core/Private/TemporaryFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <string_view>

namespace Zelnor::Core
{

namespace
{

/// What the names of all temporary files of a target begin with: ".zelnor-89f0c1d2e3b4a596-". The target's
/// own name may be as long as a name can be, so a hash (FNV-1a) stands for it. Another target with the same
/// hash does no harm: only files that nobody holds are ever removed.
std::string PrefixFor(const std::string& target)
{
    std::uint64_t hash = 0xCBF29CE484222325u;
    for (const char c : target)
    {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
    }
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string prefix = ".zelnor-";
    for (int shift = 60; shift >= 0; shift -= 4)
    {
        prefix += kDigits[(hash >> shift) & 0xFu];
    }
    return prefix + '-';
}

/// Whether `name` is `prefix`, a process, and a number.
bool IsTemporaryName(std::string_view name, std::string_view prefix)
{
    return name.substr(0, prefix.size()) == prefix &&
           name.substr(prefix.size()).find_first_not_of("0123456789-") == std::string_view::npos;
}

bool Lock(int descriptor) { return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0; }

bool HasLostItsName(int descriptor)
{
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && status.st_nlink == 0;
}

/// Opens without waiting for the other end of a pipe, should a file have become one. Which kind of access is
/// allowed depends on the target's permissions.
int OpenForLock(int folder, const char* name)
{
    constexpr int kFlags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const int descriptor = ::openat(folder, name, O_WRONLY | kFlags);
    return descriptor >= 0 ? descriptor : ::openat(folder, name, O_RDONLY | kFlags);
}

bool IsOurs(const struct stat& status, std::optional<uid_t> owner)
{
    const bool hasOurOwner =
        status.st_uid == ::geteuid() || (::geteuid() == 0 && owner && status.st_uid == *owner);
    return S_ISREG(status.st_mode) && status.st_nlink == 1 && hasOurOwner;
}

void RemoveIfAbandoned(int folder, const char* name, std::optional<uid_t> owner)
{
    struct stat seen = {};
    if (::fstatat(folder, name, &seen, AT_SYMLINK_NOFOLLOW) != 0 || !IsOurs(seen, owner))
    {
        return;
    }
    const int descriptor = OpenForLock(folder, name);
    if (descriptor < 0)
    {
        return;
    }
    struct stat opened = {};
    // Whoever removes or renames such a file holds its lock, so with the lock the name stays the file's.
    if (Lock(descriptor) && ::fstat(descriptor, &opened) == 0 &&
        ::fstatat(folder, name, &seen, AT_SYMLINK_NOFOLLOW) == 0 && IsOurs(seen, owner) &&
        opened.st_dev == seen.st_dev && opened.st_ino == seen.st_ino)
    {
        ::unlinkat(folder, name, 0);
    }
    ::close(descriptor);
}

} // namespace

TemporaryFile CreateTemporary(int folder, const std::string& target, mode_t mode)
{
    static std::atomic<unsigned> s_serial{0};
    const std::string prefix = PrefixFor(target) + std::to_string(::getpid()) + '-';
    // Nobody meets more by chance. What an opponent has taken is left to the next save.
    constexpr int kMostAttempts = 100;
    for (int i = 0; i < kMostAttempts; ++i)
    {
        TemporaryFile file{-1, prefix + std::to_string(s_serial.fetch_add(1))};
        file.descriptor = ::openat(folder, file.name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (file.descriptor < 0)
        {
            if (errno != EEXIST)
            {
                return file;
            }
            continue;
        }
        // Somebody who removes abandoned files may be faster than the lock. Without locks in the file system,
        // nobody removes any. A file about which the system says nothing is not made again and again.
        if ((Lock(file.descriptor) || errno != EWOULDBLOCK) && !HasLostItsName(file.descriptor))
        {
            return file;
        }
        ::close(file.descriptor);
    }
    errno = kTemporaryFilesAreTaken;
    return TemporaryFile{-1, {}};
}

void RemoveAbandoned(int folder, const std::string& target, std::optional<uid_t> owner)
{
    const int descriptor = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
    {
        return;
    }
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::fdopendir(descriptor), &::closedir);
    if (entries == nullptr)
    {
        ::close(descriptor);
        return;
    }
    const std::string prefix = PrefixFor(target);
    while (const dirent* const entry = ::readdir(entries.get()))
    {
        if (IsTemporaryName(entry->d_name, prefix))
        {
            RemoveIfAbandoned(folder, entry->d_name, owner);
        }
    }
}

} // namespace Zelnor::Core
