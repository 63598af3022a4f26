#include "Core/Interfaces/DataStream.h"

#include "Core/Interfaces/Exception.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <optional>
#include <system_error>
#include <tuple>
#include <utility>

namespace Zelnor::Core
{

namespace
{

constexpr const char* kUnit = "Core/Interfaces/DataStream";

constexpr mode_t kNewFileMode = 0666;
constexpr const char* kCommitted = "It is committed already";

// The helpers report a failure as the system's number for it; the operation that the caller asked for throws.

/// "Cannot read 'job.json': Is a directory"
CoreException Failure(const char* action, const std::string& name, const std::string& reason)
{
    CoreException exception;
    exception << TagDescription(std::string("Cannot ") + action + " '" + name + "': " + reason);
    return exception;
}

CoreException Failure(const char* action, const std::string& name, int reason)
{
    return Failure(action, name, std::generic_category().message(reason));
}

/// Whether the system would stop reading the name too early, and so take another file than the one that is
/// meant.
bool HasNul(const std::string& name) { return name.find('\0') != std::string::npos; }

/// \returns a descriptor, or -1 with the reason in `errno`
int Open(const std::string& name, int flags, mode_t mode)
{
    if (HasNul(name))
    {
        errno = EINVAL;
        return -1;
    }
    return ::open(name.c_str(), flags | O_CLOEXEC, mode);
}

/// \returns 0 or the reason for which not everything was written
int WriteAll(int descriptor, const void* data, std::size_t size)
{
    const char* next = static_cast<const char*>(data);
    while (size > 0)
    {
        const ssize_t written = ::write(descriptor, next, size);
        if (written >= 0)
        {
            next += written;
            size -= static_cast<std::size_t>(written);
        }
        else if (errno != EINTR)
        {
            return errno;
        }
    }
    return 0;
}

/// The file that a path names in the end: symbolic links are followed, also to a file that is not there yet.
/// Nothing when the links lead nowhere.
std::optional<std::string> FollowLinks(std::filesystem::path target)
{
    constexpr int kMostLinks = 40;
    for (int i = 0; i <= kMostLinks; ++i)
    {
        std::error_code error;
        const std::filesystem::path next = std::filesystem::read_symlink(target, error);
        if (error)
        {
            return target.string();
        }
        target = target.parent_path() / next;
    }
    return std::nullopt;
}

std::string FolderOf(const std::string& file)
{
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    return folder.empty() ? "." : folder.string();
}

/// A new file in `folder`, under a name that nobody else has. The name does not grow with the target's, which
/// may be as long as the file system allows.
/// \returns a descriptor, or -1 with the reason in `errno`
std::pair<int, std::string> CreateTemporary(const std::string& folder, mode_t mode)
{
    static std::atomic<unsigned> s_serial{0};
    for (;;)
    {
        std::string temporary =
            folder + "/.zelnor-" + std::to_string(::getpid()) + "-" + std::to_string(s_serial.fetch_add(1));
        const int descriptor = Open(temporary, O_WRONLY | O_CREAT | O_EXCL, mode);
        if (descriptor >= 0 || errno != EEXIST)
        {
            return {descriptor, std::move(temporary)};
        }
    }
}

} // namespace

IDataInput::~IDataInput() = default;
IDataOutput::~IDataOutput() = default;

boost::intrusive_ptr<FileDataInput> FileDataInput::Create(const ioPath& path)
{
    return new FileDataInput(path);
}

FileDataInput::FileDataInput(const ioPath& path)
    : m_name(path.utf8string()), m_descriptor(Open(path.native().string(), O_RDONLY, 0))
{
    if (m_descriptor < 0)
    {
        ZELNOR_THROW(kUnit, Failure("open", m_name, errno));
    }
}

FileDataInput::~FileDataInput() { ::close(m_descriptor); }

std::size_t FileDataInput::Read(void* buffer, std::size_t size)
{
    for (;;)
    {
        const ssize_t count = ::read(m_descriptor, buffer, size);
        if (count >= 0)
        {
            return static_cast<std::size_t>(count);
        }
        if (errno != EINTR)
        {
            ZELNOR_THROW(kUnit, Failure("read", m_name, errno));
        }
    }
}

boost::intrusive_ptr<FileDataOutput> FileDataOutput::Create(const ioPath& path)
{
    return new FileDataOutput(path);
}

FileDataOutput::FileDataOutput(const ioPath& path)
    : m_name(path.utf8string()),
      m_descriptor(Open(path.native().string(), O_WRONLY | O_CREAT | O_TRUNC, kNewFileMode))
{
    if (m_descriptor < 0)
    {
        ZELNOR_THROW(kUnit, Failure("write", m_name, errno));
    }
}

FileDataOutput::~FileDataOutput() { ::close(m_descriptor); }

void FileDataOutput::Write(const void* data, std::size_t size)
{
    if (const int reason = WriteAll(m_descriptor, data, size))
    {
        ZELNOR_THROW(kUnit, Failure("write", m_name, reason));
    }
}

boost::intrusive_ptr<AtomicFileDataOutput> AtomicFileDataOutput::Create(const ioPath& path)
{
    return new AtomicFileDataOutput(path);
}

AtomicFileDataOutput::AtomicFileDataOutput(const ioPath& path) : m_name(path.utf8string()), m_descriptor(-1)
{
    std::optional<std::string> target = FollowLinks(path.native());
    if (!target || HasNul(*target))
    {
        ZELNOR_THROW(kUnit, Failure("write", m_name, target ? EINVAL : ELOOP));
    }
    m_target = std::move(*target);
    struct stat status = {};
    const bool exists = ::stat(m_target.c_str(), &status) == 0;
    if (!exists && (errno != ENOENT || m_target.empty()))
    {
        ZELNOR_THROW(kUnit, Failure("write", m_name, errno));
    }
    if (exists && !S_ISREG(status.st_mode))
    {
        ZELNOR_THROW(kUnit, Failure("replace", m_name, "Not a regular file"));
    }
    if (exists && ::faccessat(AT_FDCWD, m_target.c_str(), W_OK, AT_EACCESS) != 0)
    {
        ZELNOR_THROW(kUnit, Failure("write", m_name, errno));
    }
    // From its first moment nobody may open the new file who may not open the old one.
    const mode_t mode = exists ? status.st_mode & 07777 : kNewFileMode;
    std::tie(m_descriptor, m_temporary) = CreateTemporary(FolderOf(m_target), mode);
    if (m_descriptor < 0 || (exists && ::fchmod(m_descriptor, mode) != 0))
    {
        const int reason = errno;
        Discard();
        ZELNOR_THROW(kUnit, Failure("write", m_name, reason));
    }
}

AtomicFileDataOutput::~AtomicFileDataOutput() { Discard(); }

void AtomicFileDataOutput::Discard() noexcept
{
    if (m_descriptor >= 0)
    {
        ::close(m_descriptor);
        ::unlink(m_temporary.c_str());
        m_descriptor = -1;
    }
}

void AtomicFileDataOutput::Write(const void* data, std::size_t size)
{
    if (m_descriptor < 0)
    {
        ZELNOR_THROW(kUnit, Failure("write", m_name, kCommitted));
    }
    if (const int reason = WriteAll(m_descriptor, data, size))
    {
        ZELNOR_THROW(kUnit, Failure("write", m_name, reason));
    }
}

void AtomicFileDataOutput::Commit()
{
    if (m_descriptor < 0)
    {
        ZELNOR_THROW(kUnit, Failure("commit", m_name, kCommitted));
    }
    const std::string folder = FolderOf(m_target);
    if (::fsync(m_descriptor) != 0 || ::rename(m_temporary.c_str(), m_target.c_str()) != 0)
    {
        ZELNOR_THROW(kUnit, Failure("write", m_name, errno));
    }
    ::close(m_descriptor);
    m_descriptor = -1;
    // The new name is in place already; making it outlive a power cut is the best that can still be done, and
    // not every file system lets a folder be opened for that.
    const int descriptor = Open(folder, O_RDONLY | O_DIRECTORY, 0);
    if (descriptor >= 0)
    {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

boost::intrusive_ptr<MemoryDataInput> MemoryDataInput::Create(std::string bytes)
{
    return new MemoryDataInput(std::move(bytes));
}

MemoryDataInput::MemoryDataInput(std::string bytes) : m_bytes(std::move(bytes)) {}

MemoryDataInput::~MemoryDataInput() = default;

std::size_t MemoryDataInput::Read(void* buffer, std::size_t size)
{
    const std::size_t count = std::min(size, m_bytes.size() - m_position);
    // memcpy must not be given the null pointer that an empty destination may be.
    if (count != 0)
    {
        std::memcpy(buffer, m_bytes.data() + m_position, count);
        m_position += count;
    }
    return count;
}

boost::intrusive_ptr<MemoryDataOutput> MemoryDataOutput::Create() { return new MemoryDataOutput(); }

MemoryDataOutput::MemoryDataOutput() = default;

MemoryDataOutput::~MemoryDataOutput() = default;

void MemoryDataOutput::Write(const void* data, std::size_t size)
{
    if (size != 0)
    {
        m_data.append(static_cast<const char*>(data), size);
    }
}

} // namespace Zelnor::Core
