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

constexpr mode_t kNewFileMode = 0666;

/// "Cannot read 'job.json': Is a directory"
CoreException Failure(const char* action, const std::string& name, int reason)
{
    CoreException exception;
    exception << TagDescription(std::string("Cannot ") + action + " '" + name +
                                "': " + std::generic_category().message(reason));
    return exception;
}

int Open(const std::string& name, int flags, const char* action)
{
    const int descriptor = ::open(name.c_str(), flags | O_CLOEXEC, kNewFileMode);
    if (descriptor < 0)
    {
        ZELNOR_THROW(Failure(action, name, errno));
    }
    return descriptor;
}

void WriteAll(int descriptor, const std::string& name, const void* data, std::size_t size)
{
    const char* next = static_cast<const char*>(data);
    while (size > 0)
    {
        const ssize_t written = ::write(descriptor, next, size);
        if (written < 0)
        {
            if (errno == EINTR)
            {
                continue;
            }
            ZELNOR_THROW(Failure("write", name, errno));
        }
        next += written;
        size -= static_cast<std::size_t>(written);
    }
}

/// The file that a path names in the end: symbolic links are followed, also to a file that is not there yet.
std::string FollowLinks(const ioPath& path)
{
    std::filesystem::path target = path.native();
    constexpr int kMostLinks = 40;
    for (int i = 0; i < kMostLinks; ++i)
    {
        std::error_code error;
        const std::filesystem::path next = std::filesystem::read_symlink(target, error);
        if (error)
        {
            return target.string();
        }
        target = target.parent_path() / next;
    }
    ZELNOR_THROW(Failure("write", path.utf8string(), ELOOP));
}

std::string FolderOf(const std::string& file)
{
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    return folder.empty() ? "." : folder.string();
}

/// A file that may be replaced: one that is not there, or a regular one that may be written.
/// \returns the permissions to give to its replacement, if there is one to take them from
std::optional<mode_t> CheckReplaceable(const std::string& target, const std::string& name)
{
    struct stat status = {};
    if (::stat(target.c_str(), &status) != 0)
    {
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode))
    {
        CoreException exception;
        exception << TagDescription("Cannot replace '" + name + "': Not a regular file");
        ZELNOR_THROW(exception);
    }
    if (::access(target.c_str(), W_OK) != 0)
    {
        ZELNOR_THROW(Failure("write", name, errno));
    }
    return status.st_mode & 07777;
}

/// A new file in `folder`, under a name that nobody else has. The name does not grow with the target's, which
/// may be as long as the file system allows.
std::pair<int, std::string> CreateTemporary(const std::string& folder, const std::string& name)
{
    static std::atomic<unsigned> s_serial{0};
    for (;;)
    {
        std::string temporary =
            folder + "/.zelnor-" + std::to_string(::getpid()) + "-" + std::to_string(s_serial.fetch_add(1));
        const int descriptor =
            ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode);
        if (descriptor >= 0)
        {
            return {descriptor, std::move(temporary)};
        }
        if (errno != EEXIST)
        {
            ZELNOR_THROW(Failure("write", name, errno));
        }
    }
}

} // namespace

IDataInput::~IDataInput() = default;
IDataOutput::~IDataOutput() = default;

#define ZELNOR_COUNT_REFERENCES(Class)                                                                       \
    int Class::AddRef() const { return m_references.AddRefImpl(); }                                          \
    int Class::GetRefCount() const { return m_references.GetRefCountImpl(); }                                \
    int Class::Release() const                                                                               \
    {                                                                                                        \
        const int count = m_references.ReleaseImpl();                                                        \
        if (count == 0)                                                                                      \
        {                                                                                                    \
            delete this;                                                                                     \
        }                                                                                                    \
        return count;                                                                                        \
    }

ZELNOR_COUNT_REFERENCES(FileDataInput)

boost::intrusive_ptr<FileDataInput> FileDataInput::Create(const ioPath& path)
{
    return new FileDataInput(path);
}

FileDataInput::FileDataInput(const ioPath& path)
    : m_name(path.utf8string()), m_descriptor(Open(path.native().string(), O_RDONLY, "open"))
{}

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
            ZELNOR_THROW(Failure("read", m_name, errno));
        }
    }
}

ZELNOR_COUNT_REFERENCES(FileDataOutput)

boost::intrusive_ptr<FileDataOutput> FileDataOutput::Create(const ioPath& path)
{
    return new FileDataOutput(path);
}

FileDataOutput::FileDataOutput(const ioPath& path)
    : m_name(path.utf8string()),
      m_descriptor(Open(path.native().string(), O_WRONLY | O_CREAT | O_TRUNC, "write"))
{}

FileDataOutput::~FileDataOutput() { ::close(m_descriptor); }

void FileDataOutput::Write(const void* data, std::size_t size) { WriteAll(m_descriptor, m_name, data, size); }

ZELNOR_COUNT_REFERENCES(AtomicFileDataOutput)

boost::intrusive_ptr<AtomicFileDataOutput> AtomicFileDataOutput::Create(const ioPath& path)
{
    return new AtomicFileDataOutput(path);
}

AtomicFileDataOutput::AtomicFileDataOutput(const ioPath& path)
    : m_name(path.utf8string()), m_target(FollowLinks(path))
{
    const std::optional<mode_t> mode = CheckReplaceable(m_target, m_name);
    std::tie(m_descriptor, m_temporary) = CreateTemporary(FolderOf(m_target), m_name);
    if (mode && ::fchmod(m_descriptor, *mode) != 0)
    {
        const int reason = errno;
        Discard();
        ZELNOR_THROW(Failure("write", m_name, reason));
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
    WriteAll(m_descriptor, m_name, data, size);
}

void AtomicFileDataOutput::Commit()
{
    if (::fsync(m_descriptor) != 0 || ::rename(m_temporary.c_str(), m_target.c_str()) != 0)
    {
        ZELNOR_THROW(Failure("write", m_name, errno));
    }
    ::close(m_descriptor);
    m_descriptor = -1;
    // The new name is in place already; making it outlive a power cut is the best that can still be done, and
    // not every file system lets a folder be opened for that.
    const int folder = ::open(FolderOf(m_target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0)
    {
        ::fsync(folder);
        ::close(folder);
    }
}

ZELNOR_COUNT_REFERENCES(MemoryDataInput)

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

ZELNOR_COUNT_REFERENCES(MemoryDataOutput)

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
