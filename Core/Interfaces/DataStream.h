#pragma once

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/IRefCountable.h"
#include "Core/Interfaces/RefCountImpl.h"
#include "Core/Interfaces/ioPath.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <cstddef>
#include <string>

/// \file
/// Byte streams. Every failure is a `CoreException` whose description names the file and the system's reason.

namespace Zelnor::Core
{

class ZELNOR_API IDataInput : public virtual IRefCountable
{
public:
    ~IDataInput() override;

    /// Reads up to `size` bytes and returns how many; 0 only at the end (or when `size` is 0).
    virtual std::size_t Read(void* buffer, std::size_t size) = 0;
};

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
    static boost::intrusive_ptr<FileDataInput> Create(const ioPath& path);

    std::size_t Read(void* buffer, std::size_t size) override;

private:
    explicit FileDataInput(const ioPath& path);
    ~FileDataInput() override;

    std::string m_name;
    int m_descriptor;
};

/// Writes straight to the named file, which is emptied at once, and holds nothing back: what was written is
/// in the file even when a later step fails. Also right for pipes and devices.
class ZELNOR_API FileDataOutput final : public Counted<IDataOutput>
{
public:
    static boost::intrusive_ptr<FileDataOutput> Create(const ioPath& path);

    void Write(const void* data, std::size_t size) override;

private:
    explicit FileDataOutput(const ioPath& path);
    ~FileDataOutput() override;

    std::string m_name;
    int m_descriptor;
};

/// Replaces a file as a whole or not at all. Bytes go into a new file beside the target; `Commit()` puts it,
/// safely on the disk, in the target's place. Without a commit the target stays as it was and the new file
/// disappears. So it does when a write fails: a part of what was meant to be written is never committed.
///
/// A relative path counts from the folder that is the current one at the creation.
///
/// A symbolic link is followed, so that the file it names is replaced and not the link. An existing file's
/// permissions are kept. A target that exists and is no regular file (a device, a pipe, a folder) is refused.
class ZELNOR_API AtomicFileDataOutput final : public Counted<IDataOutput>
{
public:
    static boost::intrusive_ptr<AtomicFileDataOutput> Create(const ioPath& path);

    /// A failure ends the output: every later call throws, too.
    /// \throw CoreException also after `Commit()`
    void Write(const void* data, std::size_t size) override;
    /// Makes what was written so far the target's whole contents. When it throws, the target is as it was. It
    /// may be tried again if only the target was in the way.
    /// \throw CoreException also when it has succeeded before, or a write has failed
    void Commit();

private:
    explicit AtomicFileDataOutput(const ioPath& path);
    ~AtomicFileDataOutput() override;
    void Discard() noexcept;

    /// As the caller gave it, for messages.
    std::string m_name;
    /// Both absolute.
    std::string m_target;
    std::string m_temporary;
    /// -1 when nothing can be written any more.
    int m_descriptor;
    bool m_committed = false;
};

/// Reads bytes that it owns.
class ZELNOR_API MemoryDataInput final : public Counted<IDataInput>
{
public:
    static boost::intrusive_ptr<MemoryDataInput> Create(std::string bytes);

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
    static boost::intrusive_ptr<MemoryDataOutput> Create();

    void Write(const void* data, std::size_t size) override;

    /// Everything written so far; valid until the next write.
    const std::string& GetData() const { return m_data; }

private:
    MemoryDataOutput();
    ~MemoryDataOutput() override;

    std::string m_data;
};

} // namespace Zelnor::Core
