#include "Media/Batch/BatchFolder.h"

#include "Media/Batch/RecordMembers.h"
#include "Media/MediaException.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <thread>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Batch/BatchFolder";

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

template <class E>
[[noreturn]] void ThrowSystem(const char* action, const std::string& name, int reason)
{
    if (reason == ENOMEM)
    {
        throw std::bad_alloc();
    }
    auto exception = MakeError<E>(std::string("Cannot ") + action + " '" + name +
                                  "': " + std::generic_category().message(reason));
    exception << MediaException::TagFile(name);
    ZELNOR_THROW(kUnit, exception);
}

/// \returns false when somebody else has the lock
bool TryLock(const Descriptor& file, int kind)
{
    // A file system without locks is no reason not to run.
    return ::flock(file.Get(), kind | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

[[noreturn]] void ThrowLocked(const std::string& name)
{
    auto exception = MakeError<RunException>(name + " is being run by another process");
    exception << MediaException::TagFile(name);
    ZELNOR_THROW(kUnit, exception);
}

} // namespace

std::string BatchFileName(unsigned int number) { return NumberText(number) + ".json"; }

BatchFolder::BatchFolder(const std::string& name) : m_name(name)
{
    if (name.empty() || name.find('\0') != std::string::npos)
    {
        ThrowSystem<JobException>("open", name, name.empty() ? ENOENT : EINVAL);
    }
    while (m_name.size() > 1 && m_name.back() == '/')
    {
        m_name.pop_back();
    }
    m_folder = Descriptor(::open(name.c_str(), kFolderFlags));
    std::array<char, PATH_MAX> base = {};
    if (!m_folder.IsOpen() || ::realpath(name.c_str(), base.data()) == nullptr)
    {
        ThrowSystem<JobException>("open", m_name, errno);
    }
    m_base = base.data();
    m_jobs = OpenFolderIn(BatchNames::kJobs);
    m_results = OpenFolderIn(BatchNames::kResults);
}

Descriptor BatchFolder::OpenFolderIn(const char* name) const
{
    Descriptor folder(::openat(m_folder.Get(), name, kFolderFlags | O_NOFOLLOW));
    if (!folder.IsOpen())
    {
        ThrowSystem<JobException>("open", NameOf(name), errno);
    }
    return folder;
}

std::string BatchFolder::ReadFile(const Descriptor& folder, const std::string& file,
                                  const std::string& name) const
{
    const Descriptor opened(
        ::openat(folder.Get(), file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!opened.IsOpen() || ::fstat(opened.Get(), &status) != 0)
    {
        ThrowSystem<JobException>("open", name, errno);
    }
    if (!S_ISREG(status.st_mode))
    {
        ThrowSystem<JobException>("open", name, EINVAL);
    }
    std::string text;
    constexpr std::size_t kBlock = 65536;
    std::array<char, kBlock> block;
    for (;;)
    {
        const ssize_t count = ::read(opened.Get(), block.data(), block.size());
        if (count == 0)
        {
            return text;
        }
        if (count < 0 && errno != EINTR)
        {
            ThrowSystem<JobException>("read", name, errno);
        }
        text.append(block.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    }
}

std::string BatchFolder::ReadDocument() const
{
    return ReadFile(m_folder, BatchNames::kDocument, NameOf(BatchNames::kDocument));
}

std::string BatchFolder::ReadJob(unsigned int number) const
{
    const std::string file = BatchFileName(number);
    return ReadFile(m_jobs, file, NameOf(std::string(BatchNames::kJobs) + "/" + file));
}

std::optional<std::string> BatchFolder::ReadResult(unsigned int number) const
{
    const std::string file = BatchFileName(number);
    struct stat status = {};
    if (::fstatat(m_results.Get(), file.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT)
    {
        return std::nullopt;
    }
    return ReadFile(m_results, file, NameOf(std::string(BatchNames::kResults) + "/" + file));
}

void BatchFolder::WriteResult(unsigned int number, const std::string& text) const
{
    const std::string file = BatchFileName(number);
    const std::string temporary = "." + file + ".new";
    const std::string name = NameOf(std::string(BatchNames::kResults) + "/" + file);
    constexpr mode_t kMode = 0666;
    // What a killed run has left.
    ::unlinkat(m_results.Get(), temporary.c_str(), 0);
    const Descriptor opened(::openat(m_results.Get(), temporary.c_str(),
                                     O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kMode));
    bool isWritten = opened.IsOpen();
    for (std::string_view left = text; isWritten && !left.empty();)
    {
        const ssize_t count = ::write(opened.Get(), left.data(), left.size());
        isWritten = count >= 0 || errno == EINTR;
        left.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    if (!isWritten || ::fdatasync(opened.Get()) != 0 ||
        ::renameat(m_results.Get(), temporary.c_str(), m_results.Get(), file.c_str()) != 0)
    {
        const int reason = errno;
        ::unlinkat(m_results.Get(), temporary.c_str(), 0);
        ThrowSystem<RunException>("write", name, reason);
    }
}

Descriptor BatchFolder::OpenToLock(const Descriptor& folder, const std::string& file,
                                   const std::string& name) const
{
    constexpr int kFlags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    // Some network file systems ask for a file that can be written.
    Descriptor opened(::openat(folder.Get(), file.c_str(), O_RDWR | kFlags));
    if (!opened.IsOpen())
    {
        opened = Descriptor(::openat(folder.Get(), file.c_str(), O_RDONLY | kFlags));
    }
    if (!opened.IsOpen())
    {
        ThrowSystem<JobException>("open", name, errno);
    }
    return opened;
}

Descriptor BatchFolder::Lock(LockKind kind) const
{
    Descriptor file = OpenToLock(m_folder, BatchNames::kDocument, NameOf(BatchNames::kDocument));
    if (!TryLock(file, kind == LockKind::Exclusive ? LOCK_EX : LOCK_SH))
    {
        ThrowLocked(m_name);
    }
    return file;
}

Descriptor BatchFolder::LockJob(unsigned int number) const
{
    const std::string file = BatchFileName(number);
    const std::string name = NameOf(std::string(BatchNames::kJobs) + "/" + file);
    Descriptor opened = OpenToLock(m_jobs, file, name);
    constexpr int kMostTries = 20;
    for (int tries = 0; !TryLock(opened, LOCK_EX); ++tries)
    {
        if (tries == kMostTries)
        {
            ThrowLocked(name);
        }
        constexpr std::chrono::milliseconds kPause(50);
        std::this_thread::sleep_for(kPause);
    }
    return opened;
}

bool BatchFolder::IsJobLocked(unsigned int number) const
{
    const std::string file = BatchFileName(number);
    const Descriptor opened = OpenToLock(m_jobs, file, NameOf(std::string(BatchNames::kJobs) + "/" + file));
    return !TryLock(opened, LOCK_SH);
}

} // namespace Zelnor::Media
