#include "Media/Batch/NewBatchFolder.h"

#include "Media/Batch/BatchFolder.h"
#include "Media/Batch/BatchRecord.h"
#include "Media/Folder.h"
#include "Media/MediaException.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

namespace Zelnor::Media
{

namespace
{

namespace fs = std::filesystem;

constexpr const char* kUnit = "Media/Batch/NewBatchFolder";

constexpr std::string_view kNewPrefix = ".zelnor-batch-";
constexpr std::size_t kNewSuffix = 6;
constexpr std::string_view kNewLetters = "0123456789abcdefghijklmnopqrstuvwxyz";
constexpr mode_t kAllMay = 0777;
constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

std::string RandomFolderName()
{
    std::array<unsigned char, kNewSuffix> bytes = {};
    if (::getentropy(bytes.data(), bytes.size()) != 0)
    {
        return "";
    }
    std::string name(kNewPrefix);
    for (const unsigned char byte : bytes)
    {
        name += kNewLetters[byte % kNewLetters.size()];
    }
    return name;
}

std::vector<std::string> NamesOf(const Descriptor& folder)
{
    const int own = ::openat(folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const Folder entries(own < 0 ? nullptr : ::fdopendir(own));
    if (entries == nullptr)
    {
        Descriptor(own).Close();
    }
    return NamesIn(entries);
}

bool IsOwn(const Descriptor& folder)
{
    struct stat status = {};
    return ::fstat(folder.Get(), &status) == 0 && status.st_uid == ::geteuid();
}

bool IsDocumentName(const std::string& name)
{
    constexpr std::string_view kEnd = ".json";
    const std::size_t digits = name.find_first_not_of("0123456789");
    return digits != 0 && digits != std::string::npos && name.substr(digits) == kEnd;
}

/// Removes what the making of a batch leaves in its folder, and the folder when nothing else is in it.
void RemoveNewFolder(const Descriptor& parent, const std::string& name, const Descriptor& folder)
{
    const Descriptor jobs(::openat(folder.Get(), BatchNames::kJobs, kOpenFolder));
    for (const std::string& file : jobs.IsOpen() ? NamesOf(jobs) : std::vector<std::string>())
    {
        if (IsDocumentName(file))
        {
            ::unlinkat(jobs.Get(), file.c_str(), 0);
        }
    }
    ::unlinkat(folder.Get(), BatchNames::kJobs, AT_REMOVEDIR);
    ::unlinkat(folder.Get(), BatchNames::kResults, AT_REMOVEDIR);
    ::unlinkat(folder.Get(), BatchNames::kDocument, 0);
    ::unlinkat(parent.Get(), name.c_str(), AT_REMOVEDIR);
}

bool IsNewFolderName(std::string_view name)
{
    return name.size() == kNewPrefix.size() + kNewSuffix && name.substr(0, kNewPrefix.size()) == kNewPrefix &&
           name.find_first_not_of(kNewLetters, kNewPrefix.size()) == std::string_view::npos;
}

void RemoveAbandonedNewFolders(const Descriptor& parent)
{
    for (const std::string& name : NamesOf(parent))
    {
        if (!IsNewFolderName(name))
        {
            continue;
        }
        const Descriptor folder(::openat(parent.Get(), name.c_str(), kOpenFolder));
        if (folder.IsOpen() && IsOwn(folder) && ::flock(folder.Get(), LOCK_EX | LOCK_NB) == 0)
        {
            RemoveNewFolder(parent, name, folder);
        }
    }
}

} // namespace

NewBatchFolder::NewBatchFolder(const std::string& name) : m_name(name)
{
    while (m_name.size() > 1 && m_name.back() == '/')
    {
        m_name.pop_back();
    }
    m_file = fs::path(m_name).filename().string();
    if (!IsFileName(m_file) || m_name.find('\0') != std::string::npos)
    {
        Fail(EINVAL);
    }
    const std::string parent = fs::path(m_name).parent_path().string();
    m_parent = Descriptor(::open(parent.empty() ? "." : parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::array<char, PATH_MAX> base = {};
    if (!m_parent.IsOpen() || ::realpath(parent.empty() ? "." : parent.c_str(), base.data()) == nullptr)
    {
        Fail(errno);
    }
    m_base = (fs::path(base.data()) / m_file).string();
    struct stat status = {};
    if (::fstatat(m_parent.Get(), m_file.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0)
    {
        Fail(EEXIST);
    }
    RemoveAbandonedNewFolders(m_parent);
    Make();
}

void NewBatchFolder::Make()
{
    constexpr int kMostTries = 10;
    for (int tries = 0; !m_folder.IsOpen(); ++tries)
    {
        if (tries == kMostTries)
        {
            Fail(EBUSY);
        }
        m_temporary = RandomFolderName();
        if (m_temporary.empty())
        {
            Fail(errno);
        }
        if (::mkdirat(m_parent.Get(), m_temporary.c_str(), S_IRWXU) != 0)
        {
            if (errno != EEXIST)
            {
                Fail(errno);
            }
            continue;
        }
        m_folder = Descriptor(::openat(m_parent.Get(), m_temporary.c_str(), kOpenFolder));
        // Between these steps, somebody else may take it for one that was left.
        if (!m_folder.IsOpen() && errno != ENOENT)
        {
            const int reason = errno;
            ::unlinkat(m_parent.Get(), m_temporary.c_str(), AT_REMOVEDIR);
            Fail(reason);
        }
        if (m_folder.IsOpen() && ::flock(m_folder.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        {
            m_folder.Close();
        }
    }
    const bool isMade = ::mkdirat(m_folder.Get(), BatchNames::kJobs, kAllMay) == 0 &&
                        ::mkdirat(m_folder.Get(), BatchNames::kResults, kAllMay) == 0;
    m_jobs = Descriptor(isMade ? ::openat(m_folder.Get(), BatchNames::kJobs, kOpenFolder) : -1);
    if (!m_jobs.IsOpen())
    {
        const int reason = errno;
        RemoveNewFolder(m_parent, m_temporary, m_folder);
        Fail(reason);
    }
}

NewBatchFolder::~NewBatchFolder()
{
    if (m_folder.IsOpen())
    {
        RemoveNewFolder(m_parent, m_temporary, m_folder);
    }
}

void NewBatchFolder::Fail(int reason) const
{
    if (reason == ENOMEM)
    {
        throw std::bad_alloc();
    }
    auto exception = MakeError<RunException>(
        reason == EEXIST ? "'" + m_name + "' exists already"
                         : "Cannot make '" + m_name + "': " + std::generic_category().message(reason));
    exception << MediaException::TagFile(m_name);
    ZELNOR_THROW(kUnit, exception);
}

void NewBatchFolder::WriteFile(const Descriptor& folder, const std::string& file,
                               const std::string& text) const
{
    constexpr mode_t kMode = 0666;
    const Descriptor opened(
        ::openat(folder.Get(), file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kMode));
    if (!opened.IsOpen())
    {
        Fail(errno);
    }
    for (std::string_view left = text; !left.empty();)
    {
        const ssize_t count = ::write(opened.Get(), left.data(), left.size());
        if (count < 0 && errno != EINTR)
        {
            Fail(errno);
        }
        left.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
}

void NewBatchFolder::WriteJob(unsigned int number, const std::string& text) const
{
    WriteFile(m_jobs, BatchFileName(number), text);
}

void NewBatchFolder::Commit(const std::string& batchText)
{
    WriteFile(m_folder, BatchNames::kDocument, batchText);
    struct stat status = {};
    // Whoever may enter a new folder may enter it.
    if (::fstat(m_jobs.Get(), &status) != 0 || ::fchmod(m_folder.Get(), status.st_mode & kAllMay) != 0 ||
        ::syncfs(m_folder.Get()) != 0)
    {
        Fail(errno);
    }
    int failed =
        ::renameat2(m_parent.Get(), m_temporary.c_str(), m_parent.Get(), m_file.c_str(), RENAME_NOREPLACE);
    if (failed != 0 && (errno == EINVAL || errno == ENOSYS))
    {
        // Here, only an empty folder could be replaced.
        failed = ::renameat(m_parent.Get(), m_temporary.c_str(), m_parent.Get(), m_file.c_str());
    }
    if (failed != 0)
    {
        Fail(errno);
    }
    m_folder.Close();
}

} // namespace Zelnor::Media
