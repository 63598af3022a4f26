#include "Media/Running/TargetFile.h"

#include "Media/MediaException.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace Zelnor::Media
{

namespace
{

namespace fs = std::filesystem;

constexpr const char* kUnit = "Media/Running/TargetFile";

[[noreturn]] void Refuse(const std::string& name, int reason)
{
    ZELNOR_THROW(kUnit, MakeError<RunException>("Cannot write '" + name +
                                                "': " + std::generic_category().message(reason)));
}

/// The permissions that a new file gets, or the ones of the file that is replaced.
mode_t ModeFor(const std::string& target)
{
    struct stat status = {};
    if (::stat(target.c_str(), &status) == 0)
    {
        return status.st_mode & 07777U;
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666U & ~mask;
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

void Synchronise(const std::string& name)
{
    const int descriptor = ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0 || ::fsync(descriptor) != 0)
    {
        const int reason = errno;
        ::close(descriptor);
        Refuse(name, reason);
    }
    ::close(descriptor);
}

bool IsSpecial(const std::string& name)
{
    struct stat status = {};
    return ::stat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

/// What the name leads to, for a link as well.
std::string Resolve(const std::string& name)
{
    std::error_code error;
    const fs::path resolved =
        fs::is_symlink(name, error) ? fs::weakly_canonical(name, error) : fs::path(name);
    return error || resolved.empty() ? name : resolved.string();
}

} // namespace

void CheckReplaceable(const std::string& name, bool overwrite)
{
    struct stat status = {};
    if (name.empty() || name.find('\0') != std::string::npos)
    {
        ZELNOR_THROW(kUnit, MakeError<RunException>("'" + name + "' is not a name for a target"));
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
        ZELNOR_THROW(kUnit, MakeError<RunException>("'" + name +
                                                    "' exists already; the option 'overwrite' replaces it"));
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
    const fs::path folder = fs::path(m_target).parent_path();
    std::string pattern = (folder / ".zconf-XXXXXX").string();
    const int descriptor = ::mkostemp(pattern.data(), O_CLOEXEC);
    if (descriptor < 0)
    {
        Refuse(name, errno);
    }
    m_workName = pattern;
    m_isTemporary = true;
    ::fchmod(descriptor, ModeFor(m_target));
    ::close(descriptor);
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
    Synchronise(m_workName);
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
    std::string pattern = (parent / "zconf-XXXXXX").string();
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
