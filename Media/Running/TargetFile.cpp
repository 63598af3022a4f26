#include "Media/Running/TargetFile.h"

#include "Media/MediaException.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

namespace Zelnor::Media
{

namespace
{

namespace fs = std::filesystem;

constexpr const char* kUnit = "Media/Running/TargetFile";

[[noreturn]] void Refuse(const std::string& name, const std::string& sentence)
{
    auto exception = MakeError<RunException>(sentence);
    exception << MediaException::TagFile(name);
    ZELNOR_THROW(kUnit, exception);
}

[[noreturn]] void Refuse(const std::string& name, int reason)
{
    Refuse(name, "Cannot write '" + name + "': " + std::generic_category().message(reason));
}

/// A new file in `folder`, with the permissions that the system gives to a file of that mode. The name does
/// not grow with the target's, which may be as long as the file system allows.
/// \returns a descriptor, or -1 with the reason in `errno`
std::pair<int, std::string> CreateBeside(const fs::path& folder, mode_t mode)
{
    static std::atomic<unsigned> s_serial{0};
    for (;;)
    {
        std::string name =
            (folder / (".zelnor-run-" + std::to_string(::getpid()) + "-" + std::to_string(s_serial++)))
                .string();
        const int descriptor = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (descriptor >= 0 || errno != EEXIST)
        {
            return {descriptor, std::move(name)};
        }
    }
}

/// Renames without replacing, as one step where the file system can.
bool RenameToNew(const std::string& from, const std::string& to)
{
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
    {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS)
    {
        return false;
    }
    // A link cannot replace a file either.
    return ::link(from.c_str(), to.c_str()) == 0 && ::unlink(from.c_str()) == 0;
}

/// Makes sure that the file, which messages call `name`, is on the disk, with these permissions if any.
void Finish(const std::string& file, const std::string& name, const std::optional<mode_t>& permissions)
{
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
    {
        Refuse(name, errno);
    }
    const bool done = (!permissions || ::fchmod(descriptor, *permissions) == 0) && ::fsync(descriptor) == 0;
    const int reason = done ? 0 : errno;
    ::close(descriptor);
    if (reason != 0)
    {
        Refuse(name, reason);
    }
}

bool IsSpecial(const std::string& name)
{
    struct stat status = {};
    return ::stat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

/// What the name leads to, wherever this process goes meanwhile. Links are followed, also to a file that is
/// not there yet.
std::string Resolve(const std::string& name)
{
    std::error_code error;
    fs::path target = fs::absolute(name, error);
    constexpr int kMostLinks = 40;
    for (int i = 0; i < kMostLinks && !error; ++i)
    {
        const fs::path next = fs::read_symlink(target, error);
        target = error ? target : target.parent_path() / next;
    }
    return target.string();
}

} // namespace

void CheckReplaceable(const std::string& name, bool overwrite)
{
    struct stat status = {};
    if (name.empty() || name.find('\0') != std::string::npos)
    {
        Refuse(name, "'" + name + "' is not a name for a target");
    }
    if (::stat(name.c_str(), &status) != 0)
    {
        return;
    }
    if (S_ISDIR(status.st_mode))
    {
        Refuse(name, EISDIR);
    }
    if (S_ISREG(status.st_mode) && !overwrite)
    {
        Refuse(name, "'" + name + "' exists already; the option 'overwrite' replaces it");
    }
}

TargetFile::TargetFile(const std::string& name, bool overwrite)
    : m_name(name), m_target(Resolve(name)), m_workName(m_target), m_overwrite(overwrite)
{
    CheckReplaceable(name, overwrite);
    if (IsSpecial(m_target))
    {
        return;
    }
    constexpr mode_t kReadAndWrite = 0666;
    constexpr mode_t kOwnerReadAndWrite = 0600;
    constexpr mode_t kPermissions = 07777;
    mode_t mode = kReadAndWrite;
    struct stat replaced = {};
    if (::stat(m_target.c_str(), &replaced) == 0)
    {
        m_permissions = replaced.st_mode & kPermissions;
        // While it is written, it is not more open to others than the file that it replaces.
        mode = (replaced.st_mode & kReadAndWrite) | kOwnerReadAndWrite;
    }
    auto [descriptor, workName] = CreateBeside(fs::path(m_target).parent_path(), mode);
    if (descriptor < 0)
    {
        Refuse(name, errno);
    }
    ::close(descriptor);
    m_workName = std::move(workName);
    m_isTemporary = true;
}

TargetFile::~TargetFile()
{
    if (m_isTemporary)
    {
        ::unlink(m_workName.c_str());
    }
}

void TargetFile::Commit()
{
    if (!m_isTemporary)
    {
        return;
    }
    Finish(m_workName, m_name, m_permissions);
    const bool renamed =
        m_overwrite ? ::rename(m_workName.c_str(), m_target.c_str()) == 0 : RenameToNew(m_workName, m_target);
    if (!renamed)
    {
        Refuse(m_name, errno);
    }
    m_isTemporary = false;
}

TemporaryFolder::TemporaryFolder()
{
    std::error_code error;
    fs::path parent = fs::temp_directory_path(error);
    if (error)
    {
        parent = "/tmp";
    }
    std::string pattern = (parent / "zelnor-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
    {
        Refuse(pattern, errno);
    }
    m_name = pattern;
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code error;
    fs::remove_all(m_name, error);
}

} // namespace Zelnor::Media
