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
constexpr const char* kFailedBefore = "An earlier write failed";

// The helpers report a failure as the system's error number; the operation that the caller called throws.

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

/// Whether the system would stop reading the name too early and use another file.
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

void Close(int descriptor)
{
    if (descriptor >= 0)
    {
        ::close(descriptor);
    }
}

/// \returns 0, or the system's error number when not everything was written
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

/// The absolute path of the file that `path` names after all symbolic links are followed; the file itself
/// need not exist. Nothing, with the reason in `errno`, when the path leads nowhere.
std::optional<std::string> FollowLinks(const std::filesystem::path& path)
{
    if (path.empty() || HasNul(path.string()))
    {
        errno = path.empty() ? ENOENT : EINVAL;
        return std::nullopt;
    }
    std::error_code failure;
    std::filesystem::path target = std::filesystem::absolute(path, failure);
    if (failure)
    {
        errno = failure.value();
        return std::nullopt;
    }
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
    errno = ELOOP;
    return std::nullopt;
}

std::string FolderOf(const std::string& file) { return std::filesystem::path(file).parent_path().string(); }

/// A new file in `folder` with a unique name. The name does not depend on the target's, which may be as long
/// as the file system allows. \returns a descriptor, or -1 with the reason in `errno`
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
    boost::intrusive_ptr<FileDataInput> input(new FileDataInput(path));
    input->m_descriptor = Open(path.native().string(), O_RDONLY, 0);
    if (input->m_descriptor < 0)
    {
        ZELNOR_THROW(kUnit, Failure("open", input->m_name, errno));
    }
    return input;
}

FileDataInput::FileDataInput(const ioPath& path) : m_name(path.utf8string()), m_descriptor(-1) {}

FileDataInput::~FileDataInput() { Close(m_descriptor); }

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
    boost::intrusive_ptr<FileDataOutput> output(new FileDataOutput(path));
    output->m_descriptor = Open(path.native().string(), O_WRONLY | O_CREAT | O_TRUNC, kNewFileMode);
    if (output->m_descriptor < 0)
    {
        ZELNOR_THROW(kUnit, Failure("write", output->m_name, errno));
    }
    return output;
}

FileDataOutput::FileDataOutput(const ioPath& path) : m_name(path.utf8string()), m_descriptor(-1) {}

FileDataOutput::~FileDataOutput() { Close(m_descriptor); }

void FileDataOutput::Write(const void* data, std::size_t size)
{
    if (const int reason = WriteAll(m_descriptor, data, size))
    {
        ZELNOR_THROW(kUnit, Failure("write", m_name, reason));
    }
}

boost::intrusive_ptr<AtomicFileDataOutput> AtomicFileDataOutput::Create(const ioPath& path)
{
    boost::intrusive_ptr<AtomicFileDataOutput> output(new AtomicFileDataOutput(path));
    std::optional<std::string> target = FollowLinks(path.native());
    if (!target)
    {
        ZELNOR_THROW(kUnit, Failure("write", output->m_name, errno));
    }
    output->m_target = std::move(*target);
    const char* const file = output->m_target.c_str();
    struct stat status = {};
    const bool exists = ::stat(file, &status) == 0;
    if (!exists && errno != ENOENT)
    {
        ZELNOR_THROW(kUnit, Failure("write", output->m_name, errno));
    }
    if (exists && !S_ISREG(status.st_mode))
    {
        ZELNOR_THROW(kUnit, Failure("replace", output->m_name, "Not a regular file"));
    }
    if (exists && ::faccessat(AT_FDCWD, file, W_OK, AT_EACCESS) != 0)
    {
        ZELNOR_THROW(kUnit, Failure("write", output->m_name, errno));
    }
    // From the start, only those who may open the old file may open the new one.
    const mode_t mode = exists ? status.st_mode & 07777 : kNewFileMode;
    std::tie(output->m_descriptor, output->m_temporary) = CreateTemporary(FolderOf(output->m_target), mode);
    if (output->m_descriptor < 0 || (exists && ::fchmod(output->m_descriptor, mode) != 0))
    {
        ZELNOR_THROW(kUnit, Failure("write", output->m_name, errno));
    }
    return output;
}

AtomicFileDataOutput::AtomicFileDataOutput(const ioPath& path) : m_name(path.utf8string()), m_descriptor(-1)
{}

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
        ZELNOR_THROW(kUnit, Failure("write", m_name, m_committed ? kCommitted : kFailedBefore));
    }
    if (const int reason = WriteAll(m_descriptor, data, size))
    {
        Discard();
        ZELNOR_THROW(kUnit, Failure("write", m_name, reason));
    }
}

void AtomicFileDataOutput::Commit()
{
    if (m_descriptor < 0)
    {
        ZELNOR_THROW(kUnit, Failure("commit", m_name, m_committed ? kCommitted : kFailedBefore));
    }
    const std::string folder = FolderOf(m_target);
    if (::fsync(m_descriptor) != 0)
    {
        // fsync reports lost data only once: a second call would succeed.
        const int reason = errno;
        Discard();
        ZELNOR_THROW(kUnit, Failure("write", m_name, reason));
    }
    if (::rename(m_temporary.c_str(), m_target.c_str()) != 0)
    {
        ZELNOR_THROW(kUnit, Failure("write", m_name, errno));
    }
    ::close(m_descriptor);
    m_descriptor = -1;
    m_committed = true;
    // The file is in place. What remains is to make its name survive a power failure, as far as the file
    // system allows a folder to be opened for that.
    const int descriptor = Open(folder, O_RDONLY | O_DIRECTORY, 0);
    if (descriptor >= 0)
    {
        ::fsync(descriptor);
    }
    Close(descriptor);
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
    // An empty destination may be a null pointer, which memcpy does not allow.
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
