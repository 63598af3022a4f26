#pragma once

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/IRefCountable.h"
#include "Core/Interfaces/RefCountImpl.h"
#include "Core/Interfaces/ioPath.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <sys/types.h>

#include <cstddef>
#include <string>

/// \file
/// \code
/// const auto output = Core::AtomicFileDataOutput::Create("settings.json");
/// output->Write("{}", 2);
/// output->Commit(); // until here, nobody sees a change
/// const auto input = Core::FileDataInput::Create("settings.json");
/// char buffer[4096];
/// assert(input->Read(buffer, sizeof buffer) == 2);
/// \endcode
///
/// Byte streams to and from files and memory. Every failure is a `CoreException` whose description names the
/// file and the reason that the system gives: "Cannot open 'job.json': No such file or directory".

struct stat;

namespace Zelnor::Core
{
/// Bytes that can be read.
class ZELNOR_API IDataInput : public virtual IRefCountable
{
public:
    ~IDataInput() override;

    /// Reads up to `size` bytes and returns how many; 0 only at the end (or when `size` is 0).
    virtual std::size_t Read(void* buffer, std::size_t size) = 0;
};

/// Reads as `input.Read` does, for whoever uses the returned count as it is: an input that a caller wrote may
/// return too much.
/// \throw CoreException "The input claims to have read 70 bytes, expected at most 64"
ZELNOR_API std::size_t ReadUpTo(IDataInput& input, void* buffer, std::size_t size);
/// Bytes can be written to it.
class ZELNOR_API IDataOutput : public virtual IRefCountable
{
public:
    ~IDataOutput() override;

    /// Writes all `size` bytes or throws.
    virtual void Write(const void* data, std::size_t size) = 0;
};

/// Reads a file from its beginning.
class ZELNOR_API FileDataInput final : public Counted<IDataInput>
{
public:
    static boost::intrusive_ptr<FileDataInput> Create(const ioPath& path); ///< opens it
    /// Reads as the interface says.
    std::size_t Read(void* buffer, std::size_t size) override;

private:
    explicit FileDataInput(const ioPath& path);
    ~FileDataInput() override;

    std::string m_name;
    int m_descriptor;
};

/// Writes directly to the named file, which is emptied at once. Nothing is buffered: what was written is in
/// the file even when a later step fails. Also the right choice for pipes and devices.
class ZELNOR_API FileDataOutput final : public Counted<IDataOutput>
{
public:
    static boost::intrusive_ptr<FileDataOutput> Create(const ioPath& path); ///< empties it
    /// Writes as the interface says.
    void Write(const void* data, std::size_t size) override;

private:
    explicit FileDataOutput(const ioPath& path);
    ~FileDataOutput() override;

    std::string m_name;
    int m_descriptor;
};

/// Replaces a file completely or not at all. Bytes are written to a temporary file beside the target;
/// `Commit()` makes sure that they are on the disk and puts the temporary file in the target's place. Without
/// a commit the target stays as it was, and the temporary file is removed. A write that fails also removes
/// it, so that incomplete data is never committed.
///
/// A relative path is resolved when the object is created; changing the current folder later has no effect.
///
/// A symbolic link is followed, so that the file it names is replaced and not the link. A target that exists
/// but is not a regular file (a device, a pipe, a folder) is refused.
///
/// The new file has the permissions of the old one, and its owner and group as far as the process may give
/// files away. Where the group cannot be kept, group and others get what both had; set-user-ID, set-group-ID
/// and sticky bits are kept only together with owner and group.
///
/// Several processes and threads may save the same target at once: each replaces it by a whole file, and the
/// last one's stays. The temporary file of a process that was killed is removed when its target is saved the
/// next time. After a `fork`, the object belongs to the process that created it: in the other, it neither
/// writes nor removes anything.
class ZELNOR_API AtomicFileDataOutput final : public Counted<IDataOutput>
{
public:
    static boost::intrusive_ptr<AtomicFileDataOutput> Create(const ioPath& path); ///< opens a temporary file

    /// After a failure, every later call throws, too.
    /// \throw CoreException also after `Commit()` and in a forked process
    void Write(const void* data, std::size_t size) override;
    /// Replaces the target's contents by what was written. When this throws, the target is as it was. If only
    /// replacing the target failed, the call may be repeated.
    /// \throw CoreException also after an earlier `Commit()`, after a write that failed, and in a forked
    /// process
    void Commit();

private:
    explicit AtomicFileDataOutput(const ioPath& path);
    ~AtomicFileDataOutput() override;
    // These return whether it worked; if not, the reason is in `errno`.
    bool OpenFolder(const ioPath& path);
    /// \param old  the file to replace; null when there is none
    bool OpenTemporary(const struct stat* old);
    void Discard() noexcept;
    /// Null when the object can be used.
    const char* ReasonAgainstUse() const;

    /// As given by the caller, for messages.
    std::string m_name;
    /// Where both files are, whatever takes the folder's name in the meantime.
    int m_folder = -1;
    std::string m_target;
    std::string m_temporary;
    /// -1 when nothing more can be written.
    int m_descriptor = -1;
    pid_t m_process;
    /// The whole mode of the new file if that has set-user-ID, set-group-ID or sticky bits, else 0.
    mode_t m_specialMode = 0;
    bool m_committed = false;
};

/// Reads bytes that it holds in memory.
class ZELNOR_API MemoryDataInput final : public Counted<IDataInput>
{
public:
    static boost::intrusive_ptr<MemoryDataInput> Create(std::string bytes); ///< of these bytes
    /// Reads as the interface says.
    std::size_t Read(void* buffer, std::size_t size) override;

private:
    explicit MemoryDataInput(std::string bytes);
    ~MemoryDataInput() override;

    std::string m_bytes;
    std::size_t m_position = 0;
};

/// Collects bytes in memory.
class ZELNOR_API MemoryDataOutput final : public Counted<IDataOutput>
{
public:
    static boost::intrusive_ptr<MemoryDataOutput> Create(); ///< with none yet
    /// Writes as the interface says.
    void Write(const void* data, std::size_t size) override;

    /// Everything written so far; valid until the next write.
    const std::string& GetData() const { return m_data; }

private:
    MemoryDataOutput();
    ~MemoryDataOutput() override;

    std::string m_data;
};

} // namespace Zelnor::Core
