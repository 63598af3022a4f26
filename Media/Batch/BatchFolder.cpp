#include "Media/Batch/BatchFolder.h"

#include "Media/Batch/BatchFiles.h"
#include "Media/Batch/RecordMembers.h"
#include "Media/MediaException.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <thread>
#include <utility>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Batch/BatchFolder";

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

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
    std::optional<std::string> text = ReadFileIn(folder, file, name);
    if (!text)
    {
        ThrowSystem<JobException>("open", name, ENOENT);
    }
    return std::move(*text);
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
    return ReadFileIn(m_results, file, NameOf(std::string(BatchNames::kResults) + "/" + file), kMostOfResult);
}

void BatchFolder::WriteResult(unsigned int number, const std::string& text) const
{
    const std::string file = BatchFileName(number);
    WriteFileIn(m_results, file, NameOf(std::string(BatchNames::kResults) + "/" + file), text);
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
