#include "Media/Running/TargetFile.h"

#include "Core/Private/FileReplacement.h"
#include "Media/FileKind.h"
#include "Media/MediaException.h"
#include "Media/Running/Files.h"

#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

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

/// Gives the file a name that nothing has, as one step. Where the file system cannot rename without
/// replacing, it has both names then.
bool RenameToNew(int fromFolder, const char* from, int toFolder, const char* to)
{
    if (::renameat2(fromFolder, from, toFolder, to, RENAME_NOREPLACE) == 0)
    {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS)
    {
        return false;
    }
    // A link cannot replace a file either. The old name goes with the private folder.
    return ::linkat(fromFolder, from, toFolder, to, 0) == 0;
}

/// What was made for the target; it must have stayed a regular file.
/// \throw RunException
Descriptor OpenOutput(const WorkFolder& folder, const std::string& target)
{
    Descriptor file(
        ::openat(folder.Get(), WorkFolder::kOutput, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0)
    {
        Refuse(target, errno);
    }
    if (!S_ISREG(status.st_mode))
    {
        Refuse(target, "Cannot write '" + target + "': it became " + FileKindText(status.st_mode));
    }
    return file;
}

/// \returns false when it cannot be written; errno says why
bool WriteAll(int file, const char* data, std::size_t size)
{
    while (size > 0)
    {
        const ssize_t written = ::write(file, data, size);
        if (written < 0 && errno != EINTR)
        {
            return false;
        }
        const std::size_t step = written < 0 ? 0 : static_cast<std::size_t>(written);
        data += step;
        size -= step;
    }
    return true;
}

enum class CopyEnd
{
    Done,
    Cancelled,
    Failed, ///< errno says why
};

CopyEnd CopyFile(int from, int to, const std::function<bool()>& isCancelled)
{
    constexpr std::size_t kBlock = 1U << 20U;
    std::vector<char> block(kBlock);
    for (;;)
    {
        if (isCancelled())
        {
            return CopyEnd::Cancelled;
        }
        const ssize_t size = ::read(from, block.data(), block.size());
        if (size == 0)
        {
            return CopyEnd::Done;
        }
        if (size < 0 ? errno != EINTR : !WriteAll(to, block.data(), static_cast<std::size_t>(size)))
        {
            return CopyEnd::Failed;
        }
    }
}

/// "out.unverified.mp4" for "out.mp4", with a number before the extension from the second on. A long name is
/// cut, since the file would be lost otherwise.
std::string NameAside(const fs::path& target, int number)
{
    const std::string end =
        ".unverified" + (number == 1 ? "" : "-" + std::to_string(number)) + target.extension().string();
    std::string stem = target.stem().string();
    if (stem.size() + end.size() > NAME_MAX)
    {
        std::size_t size = end.size() < NAME_MAX ? NAME_MAX - end.size() : 0;
        const auto continues = [&stem](std::size_t at) {
            return (static_cast<unsigned char>(stem[at]) & 0xC0U) == 0x80U;
        };
        while (size != 0 && continues(size))
        {
            --size;
        }
        stem.resize(size);
    }
    return stem + end;
}

} // namespace

bool MayBeWrittenDirectly(const struct stat& status)
{
    constexpr unsigned int kMemoryDevices = 1;
    constexpr unsigned int kNull = 3;
    const bool isNull = S_ISCHR(status.st_mode) && status.st_rdev == ::makedev(kMemoryDevices, kNull);
    return isNull || S_ISFIFO(status.st_mode);
}

bool IsNameless(const std::string& name) { return !IsSameFile(ResolveLinks(name), name); }

bool CannotBeMade(int reason) { return reason == ELOOP || reason == ENAMETOOLONG; }

void CheckReplaceable(const std::string& name, bool overwrite)
{
    struct stat status = {};
    if (name.empty() || name.find('\0') != std::string::npos)
    {
        Refuse(name, "'" + name + "' is not a name for a target");
    }
    if (::stat(name.c_str(), &status) != 0)
    {
        if (CannotBeMade(errno))
        {
            Refuse(name, errno);
        }
        return;
    }
    if (S_ISDIR(status.st_mode))
    {
        Refuse(name, EISDIR);
    }
    if (IsNameless(name))
    {
        Refuse(name, "Cannot write '" + name + "': " + kNamelessText);
    }
    if (S_ISREG(status.st_mode) && !overwrite)
    {
        Refuse(name, "'" + name + "' exists already; the option 'overwrite' replaces it");
    }
}

TargetFile::TargetFile(const std::string& name, bool overwrite, const std::string& scratch)
    : m_name(name), m_target(ResolveLinks(name)), m_workName(m_target), m_overwrite(overwrite)
{
    CheckReplaceable(name, overwrite);
    constexpr mode_t kReadAndWrite = 0666;
    constexpr mode_t kOwnerReadAndWrite = 0600;
    struct stat status = {};
    if (::stat(m_target.c_str(), &status) != 0)
    {
        Open(fs::path(m_target).parent_path().string(), kReadAndWrite);
    }
    else if (S_ISREG(status.st_mode))
    {
        m_replaced = status;
        // While it is written, it is not more open to others than the file that it replaces.
        Open(fs::path(m_target).parent_path().string(),
             (status.st_mode & kReadAndWrite) | kOwnerReadAndWrite);
    }
    else if (MayBeWrittenDirectly(status))
    {
        m_isDirect = true;
        std::error_code error;
        const fs::path folder = fs::temp_directory_path(error);
        Open(error ? "/tmp" : folder.string(), kOwnerReadAndWrite);
    }
    else
    {
        Refuse(name, "Cannot write '" + name + "': it is " + FileKindText(status.st_mode));
    }
    m_passFolder = m_folder.get();
    if (!scratch.empty())
    {
        OpenScratch(scratch);
    }
}

TargetFile::~TargetFile() = default;

void TargetFile::Open(const std::string& folder, mode_t mode)
{
    try
    {
        m_folder = std::make_unique<WorkFolder>(folder, mode);
    }
    catch (const std::system_error& error)
    {
        Refuse(m_name, error.code().value());
    }
    if (!m_isDirect)
    {
        m_workName = m_folder->NameOf(WorkFolder::kOutput);
    }
}

void TargetFile::OpenScratch(const std::string& folder)
{
    try
    {
        if (folder.find('\0') != std::string::npos)
        {
            throw std::system_error(EINVAL, std::generic_category());
        }
        m_scratch = std::make_unique<WorkFolder>(folder, S_IRUSR | S_IWUSR);
    }
    catch (const std::system_error& error)
    {
        Refuse(m_name, "Cannot write in the scratch folder '" + folder +
                           "': " + std::generic_category().message(error.code().value()));
    }
    m_passFolder = m_scratch.get();
    if (!m_isDirect)
    {
        m_workName = m_scratch->NameOf(WorkFolder::kOutput);
    }
}

bool TargetFile::LeaveScratch(const std::function<bool()>& isCancelled)
{
    if (m_isDirect || m_scratch == nullptr)
    {
        return true;
    }
    const Descriptor from = OpenOutput(*m_scratch, m_name);
    const Descriptor to(
        ::openat(m_folder->Get(), WorkFolder::kOutput, O_WRONLY | O_TRUNC | O_NOFOLLOW | O_CLOEXEC));
    const CopyEnd end = to.IsOpen() ? CopyFile(from.Get(), to.Get(), isCancelled) : CopyEnd::Failed;
    if (end == CopyEnd::Failed)
    {
        Refuse(m_name, errno);
    }
    if (end == CopyEnd::Cancelled)
    {
        return false;
    }
    m_workName = m_folder->NameOf(WorkFolder::kOutput);
    m_passFolder = m_folder.get();
    m_scratch.reset();
    return true;
}

void TargetFile::Finish() const
{
    const Descriptor file = OpenOutput(*m_folder, m_name);
    if ((m_replaced && !Core::InheritAccess(file.Get(), *m_replaced)) || ::fsync(file.Get()) != 0)
    {
        Refuse(m_name, errno);
    }
}

void TargetFile::Commit()
{
    if (m_isDirect)
    {
        return;
    }
    LeaveScratch([] { return false; });
    Finish();
    const std::string name = fs::path(m_target).filename().string();
    const bool renamed =
        m_overwrite
            ? ::renameat(m_folder->Get(), WorkFolder::kOutput, m_folder->GetParent(), name.c_str()) == 0
            : RenameToNew(m_folder->Get(), WorkFolder::kOutput, m_folder->GetParent(), name.c_str());
    if (!renamed)
    {
        Refuse(m_name, errno);
    }
    m_folder.reset();
}

std::string TargetFile::KeepAside()
{
    LeaveScratch([] { return false; });
    Finish();
    const fs::path target = m_target;
    const fs::path folder =
        target == fs::absolute(m_name) ? fs::path(m_name).parent_path() : target.parent_path();
    constexpr int kMostNames = 1000;
    for (int i = 1; i <= kMostNames; ++i)
    {
        const std::string name = NameAside(target, i);
        if (RenameToNew(m_folder->Get(), WorkFolder::kOutput, m_folder->GetParent(), name.c_str()))
        {
            m_folder.reset();
            return (folder / name).string();
        }
        if (errno != EEXIST)
        {
            break;
        }
    }
    Refuse(m_name, errno);
}

} // namespace Zelnor::Media
