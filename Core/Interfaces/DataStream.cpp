#include "Core/Interfaces/DataStream.h"

#include "Core/Interfaces/Exception.h"
#include "Core/Private/FileReplacement.h"
#include "Core/Private/TemporaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <system_error>
#include <utility>

namespace Zelnor::Core
{

namespace
{

constexpr const char* kUnit = "Core/Interfaces/DataStream";

constexpr mode_t kNewFileMode = 0666;
constexpr const char* kCommitted = "It is committed already";
constexpr const char* kFailedBefore = "An earlier write failed";
constexpr const char* kForeign = "It was created by another process";
constexpr const char* kNotRegular = "Not a regular file";
constexpr const char* kTaken = "Another process takes every temporary file beside it";

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

} // namespace

IDataInput::~IDataInput() = default;
IDataOutput::~IDataOutput() = default;

std::size_t ReadUpTo(IDataInput& input, void* buffer, std::size_t size)
{
    const std::size_t count = input.Read(buffer, size);
    if (count > size)
    {
        CoreException exception;
        exception << TagDescription("The input claims to have read " + std::to_string(count) +
                                    " bytes, expected at most " + std::to_string(size));
        ZELNOR_THROW(kUnit, exception);
    }
    return count;
}

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
    const auto fail = [&output](const char* action, const auto& reason) {
        return Failure(action, output->m_name, reason);
    };
    if (!output->OpenFolder(path))
    {
        ZELNOR_THROW(kUnit, fail("write", errno));
    }
    struct stat old = {};
    const bool exists = ::fstatat(output->m_folder, output->m_target.c_str(), &old, AT_SYMLINK_NOFOLLOW) == 0;
    if (!exists && errno != ENOENT)
    {
        ZELNOR_THROW(kUnit, fail("write", errno));
    }
    if (exists && !S_ISREG(old.st_mode))
    {
        ZELNOR_THROW(kUnit, fail("replace", kNotRegular));
    }
    if (exists && ::faccessat(output->m_folder, output->m_target.c_str(), W_OK, AT_EACCESS) != 0)
    {
        ZELNOR_THROW(kUnit, fail("write", errno));
    }
    if (!output->OpenTemporary(exists ? &old : nullptr))
    {
        ZELNOR_THROW(kUnit, errno == kTemporaryFilesAreTaken ? fail("write", kTaken) : fail("write", errno));
    }
    return output;
}

AtomicFileDataOutput::AtomicFileDataOutput(const ioPath& path)
    : m_name(path.utf8string()), m_process(::getpid())
{}

AtomicFileDataOutput::~AtomicFileDataOutput()
{
    Discard();
    Close(m_folder);
}

bool AtomicFileDataOutput::OpenFolder(const ioPath& path)
{
    const std::optional<std::filesystem::path> target = FollowLinks(path.native());
    if (!target)
    {
        return false;
    }
    const std::string file = target->filename().string();
    m_target = file.empty() ? "." : file;
    m_folder = Open(target->parent_path().string(), O_PATH | O_DIRECTORY, 0);
    return m_folder >= 0;
}

bool AtomicFileDataOutput::OpenTemporary(const struct stat* old)
{
    RemoveAbandoned(m_folder, m_target, old == nullptr ? std::nullopt : std::optional(old->st_uid));
    // From the start, only those who may open the old file may open the new one.
    constexpr mode_t kPrivate = 0600;
    TemporaryFile file = CreateTemporary(m_folder, m_target, old == nullptr ? kNewFileMode : kPrivate);
    m_descriptor = file.descriptor;
    m_temporary = std::move(file.name);
    if (m_descriptor < 0 || old == nullptr)
    {
        return m_descriptor >= 0;
    }
    const std::optional<mode_t> mode = InheritAccess(m_descriptor, *old);
    m_specialMode = mode && (*mode & ~mode_t{0777}) != 0 ? *mode : 0;
    return mode.has_value();
}

void AtomicFileDataOutput::Discard() noexcept
{
    if (m_descriptor >= 0)
    {
        // A copy of this object in a process that was forked leaves the file to its creator.
        if (::getpid() == m_process)
        {
            ::unlinkat(m_folder, m_temporary.c_str(), 0);
        }
        ::close(m_descriptor);
        m_descriptor = -1;
    }
}

const char* AtomicFileDataOutput::ReasonAgainstUse() const
{
    if (m_descriptor < 0)
    {
        return m_committed ? kCommitted : kFailedBefore;
    }
    return ::getpid() == m_process ? nullptr : kForeign;
}

void AtomicFileDataOutput::Write(const void* data, std::size_t size)
{
    if (const char* const reason = ReasonAgainstUse())
    {
        ZELNOR_THROW(kUnit, Failure("write", m_name, reason));
    }
    if (const int reason = WriteAll(m_descriptor, data, size))
    {
        Discard();
        ZELNOR_THROW(kUnit, Failure("write", m_name, reason));
    }
}

void AtomicFileDataOutput::Commit()
{
    if (const char* const reason = ReasonAgainstUse())
    {
        ZELNOR_THROW(kUnit, Failure("commit", m_name, reason));
    }
    // Writing takes the special bits away, so they come last.
    if (m_specialMode != 0 && ::fchmod(m_descriptor, m_specialMode) != 0)
    {
        ZELNOR_THROW(kUnit, Failure("write", m_name, errno));
    }
    if (::fsync(m_descriptor) != 0)
    {
        // fsync reports lost data only once: a second call would succeed.
        const int reason = errno;
        Discard();
        ZELNOR_THROW(kUnit, Failure("write", m_name, reason));
    }
    struct stat now = {};
    const bool exists = ::fstatat(m_folder, m_target.c_str(), &now, AT_SYMLINK_NOFOLLOW) == 0;
    // The system itself refuses to replace a folder, and names the reason better.
    if (exists && !S_ISREG(now.st_mode) && !S_ISDIR(now.st_mode))
    {
        ZELNOR_THROW(kUnit, Failure("replace", m_name, kNotRegular));
    }
    if (::renameat(m_folder, m_temporary.c_str(), m_folder, m_target.c_str()) != 0)
    {
        ZELNOR_THROW(kUnit, Failure("write", m_name, errno));
    }
    ::close(m_descriptor);
    m_descriptor = -1;
    m_committed = true;
    // The file is in place. What remains is to make its name survive a power failure, as far as the file
    // system allows a folder to be opened for that.
    const int folder = ::openat(m_folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0)
    {
        ::fsync(folder);
    }
    Close(folder);
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
