#include "Media/Running/WorkFolder.h"

#include "Media/Folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>
#include <vector>

namespace Zelnor::Media
{

namespace
{

constexpr std::string_view kPrefix = ".zelnor-";
constexpr std::size_t kSuffix = 6;
constexpr std::string_view kLetters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
constexpr mode_t kPermissions = 0777;

[[noreturn]] void ThrowSystemError(int reason = errno)
{
    throw std::system_error(reason, std::generic_category());
}

std::string RandomName()
{
    std::array<unsigned char, kSuffix> bytes = {};
    if (::getentropy(bytes.data(), bytes.size()) != 0)
    {
        ThrowSystemError();
    }
    std::string name(kPrefix);
    for (const unsigned char byte : bytes)
    {
        name += kLetters[byte % kLetters.size()];
    }
    return name;
}

bool IsWorkFolderName(std::string_view name)
{
    return name.size() == kPrefix.size() + kSuffix && name.substr(0, kPrefix.size()) == kPrefix &&
           name.find_first_not_of(kLetters, kPrefix.size()) == std::string_view::npos;
}

bool IsOurFileName(std::string_view name)
{
    const std::string_view passLog = WorkFolder::kPassLog;
    return name == WorkFolder::kOutput || name == WorkFolder::kLock ||
           name.substr(0, passLog.size()) == passLog;
}

Descriptor OpenFolder(const Descriptor& parent, const std::string& name)
{
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    return Descriptor(::openat(parent.Get(), name.c_str(), kFlags));
}

/// Whether the folder is still the one of that name.
bool IsThere(const Descriptor& parent, const std::string& name, const Descriptor& folder)
{
    struct stat opened = {};
    struct stat named = {};
    return ::fstat(folder.Get(), &opened) == 0 &&
           ::fstatat(parent.Get(), name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

bool IsPrivate(const Descriptor& folder)
{
    struct stat status = {};
    return ::fstat(folder.Get(), &status) == 0 && status.st_uid == ::geteuid() &&
           (status.st_mode & kPermissions) == S_IRWXU;
}

/// Empty when it cannot be listed.
std::vector<std::string> NamesIn(const Descriptor& folder)
{
    const int own = ::openat(folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const Folder entries(own < 0 ? nullptr : ::fdopendir(own));
    if (entries == nullptr)
    {
        Descriptor(own).Close();
    }
    return Media::NamesIn(entries);
}

void Remove(const Descriptor& parent, const std::string& name, const Descriptor& folder,
            const std::vector<std::string>& files)
{
    for (const std::string& file : files)
    {
        if (IsOurFileName(file))
        {
            ::unlinkat(folder.Get(), file.c_str(), 0);
        }
    }
    // Fails, as it should, when there is anything else in it.
    ::unlinkat(parent.Get(), name.c_str(), AT_REMOVEDIR);
}

/// Whether another machine holds the folder. One without the file is that of a run that was killed before it
/// had made the file, or that will find its folder gone and make another one.
bool IsLockedElsewhere(const Descriptor& folder)
{
    const Descriptor lock(
        ::openat(folder.Get(), WorkFolder::kLock, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    return lock.IsOpen() ? ::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0 : errno != ENOENT;
}

} // namespace

WorkFolder::WorkFolder(const std::string& parent, mode_t outputMode)
    : m_parent(::open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC))
{
    if (!m_parent.IsOpen())
    {
        ThrowSystemError();
    }
    // More than a few names that are taken mean that something else is wrong.
    constexpr int kMostAttempts = 10;
    int attempts = 0;
    while (!Make())
    {
        if (++attempts == kMostAttempts)
        {
            ThrowSystemError(EEXIST);
        }
    }
    m_path = "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(m_folder.Get());
    if (::access(m_path.c_str(), W_OK) != 0 || ::prctl(PR_GET_DUMPABLE) != 1)
    {
        // No such file system here, or a process into which the ones that it starts may not look.
        m_path = (parent == "/" ? "" : parent) + "/" + m_name;
    }
    try
    {
        MakeOutput(outputMode);
    }
    catch (...)
    {
        Remove(m_parent, m_name, m_folder, NamesIn(m_folder));
        throw;
    }
}

/// \returns false when the name is taken, or somebody else has taken the folder
bool WorkFolder::Make()
{
    m_name = RandomName();
    if (::mkdirat(m_parent.Get(), m_name.c_str(), S_IRWXU) != 0)
    {
        if (errno != EEXIST)
        {
            ThrowSystemError();
        }
        return false;
    }
    m_folder = OpenFolder(m_parent, m_name);
    if (!m_folder.IsOpen() && errno != ENOENT)
    {
        const int reason = errno;
        ::unlinkat(m_parent.Get(), m_name.c_str(), AT_REMOVEDIR);
        ThrowSystemError(reason);
    }
    // Between these steps another run may take it for one that was left. Where a file system cannot lock, no
    // folder is ever taken for that.
    if (!m_folder.IsOpen() || (::flock(m_folder.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK))
    {
        return false;
    }
    return MakeLock() && IsThere(m_parent, m_name, m_folder);
}

/// \returns false when another machine has taken the folder
bool WorkFolder::MakeLock()
{
    constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    m_lock = Descriptor(::openat(m_folder.Get(), kLock, kFlags, S_IRUSR | S_IWUSR));
    if (!m_lock.IsOpen() && errno != ENOENT && errno != ESTALE)
    {
        const int reason = errno;
        ::unlinkat(m_parent.Get(), m_name.c_str(), AT_REMOVEDIR);
        ThrowSystemError(reason);
    }
    return m_lock.IsOpen() && (::flock(m_lock.Get(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK);
}

void WorkFolder::MakeOutput(mode_t mode) const
{
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const Descriptor output(::openat(m_folder.Get(), kOutput, kFlags, mode));
    if (!output.IsOpen())
    {
        ThrowSystemError();
    }
    struct stat file = {};
    struct stat folder = {};
    if (::fstat(output.Get(), &file) != 0 || ::fstat(m_folder.Get(), &folder) != 0)
    {
        ThrowSystemError();
    }
    if (file.st_uid != folder.st_uid)
    {
        // Somebody has put a folder of his own in its place. Some file systems give all to one owner, so our
        // own number cannot be asked for.
        ThrowSystemError(EPERM);
    }
}

WorkFolder::~WorkFolder() { Remove(m_parent, m_name, m_folder, NamesIn(m_folder)); }

void RemoveAbandonedWorkFolders(const std::string& parentName)
{
    const Descriptor parent(::open(parentName.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!parent.IsOpen())
    {
        return;
    }
    for (const std::string& name : NamesIn(parent))
    {
        if (!IsWorkFolderName(name))
        {
            continue;
        }
        const Descriptor folder = OpenFolder(parent, name);
        if (folder.IsOpen() && IsPrivate(folder) && ::flock(folder.Get(), LOCK_EX | LOCK_NB) == 0 &&
            IsThere(parent, name, folder))
        {
            const std::vector<std::string> files = NamesIn(folder);
            if (std::all_of(files.begin(), files.end(), IsOurFileName) && !IsLockedElsewhere(folder))
            {
                Remove(parent, name, folder, files);
            }
        }
    }
}

} // namespace Zelnor::Media
