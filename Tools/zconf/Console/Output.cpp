#include "Tools/zconf/Console/Output.h"

#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/VisibleJson.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace Zelnor::Tool
{

namespace
{

/// A file that is open to be written.
class NewFile
{
public:
    NewFile(const std::string& name, int flags)
        : m_descriptor(::open(name.c_str(), flags | O_WRONLY | O_CLOEXEC, 0666))
    {}
    ~NewFile()
    {
        if (IsOpen())
        {
            ::close(m_descriptor);
        }
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    bool IsOpen() const { return m_descriptor >= 0; }
    /// Whether all of it is on the disk; if not, the reason is in `errno`.
    bool Write(const std::string& text) const
    {
        for (std::size_t done = 0; done < text.size();)
        {
            const ssize_t count = ::write(m_descriptor, text.data() + done, text.size() - done);
            if (count < 0 && errno != EINTR)
            {
                return false;
            }
            done += count < 0 ? 0U : static_cast<std::size_t>(count);
        }
        return ::fsync(m_descriptor) == 0;
    }
    /// Gives a file without a name a name that nothing has.
    bool Name(const std::string& name) const
    {
        const std::string self = "/proc/self/fd/" + std::to_string(m_descriptor);
        return ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    }

private:
    int m_descriptor;
};

[[noreturn]] void RefuseNew(const std::string& name, int reason)
{
    throw ToolError(reason == EEXIST
                        ? "'" + name + "' exists already; --overwrite replaces it"
                        : "Cannot write '" + name + "': " + std::generic_category().message(reason));
}

} // namespace

bool IsStandardStream(const std::string& name) { return name == "-"; }

bool IsReplaceable(const std::string& name)
{
    struct stat status = {};
    return ::stat(name.c_str(), &status) != 0 || S_ISREG(status.st_mode);
}

void WriteText(const std::string& text) { MakeStandardOutput()->Write(text.data(), text.size()); }

void WriteDocument(const std::string& name,
                   const std::function<void(const boost::intrusive_ptr<Core::IDataOutput>&)>& write)
{
    if (IsStandardStream(name))
    {
        write(MakeStandardOutput());
    }
    else if (IsReplaceable(name))
    {
        const auto file = Core::AtomicFileDataOutput::Create(name);
        write(file);
        file->Commit();
    }
    else
    {
        write(Core::FileDataOutput::Create(name));
    }
}

void WriteDocument(const std::string& name, const std::string& text)
{
    WriteDocument(name, [&text](const boost::intrusive_ptr<Core::IDataOutput>& output) {
        output->Write(text.data(), text.size());
    });
}

void WriteJsonDocument(const std::string& name,
                       const std::function<void(const boost::intrusive_ptr<Core::IDataOutput>&)>& write)
{
    if (!IsStandardStream(name) || ::isatty(STDOUT_FILENO) == 0)
    {
        WriteDocument(name, write);
        return;
    }
    const auto text = Core::MemoryDataOutput::Create();
    write(text);
    WriteText(VisibleJson(text->GetData()));
}

void WriteNewDocument(const std::string& name, const std::string& text)
{
    struct stat status = {};
    if (IsStandardStream(name) || !IsReplaceable(name))
    {
        WriteDocument(name, text);
        return;
    }
    if (::lstat(name.c_str(), &status) == 0)
    {
        RefuseNew(name, EEXIST);
    }
    const std::string folder = std::filesystem::path(name).parent_path().string();
    const NewFile nameless(folder.empty() ? "." : folder, O_TMPFILE);
    if (nameless.IsOpen())
    {
        if (!nameless.Write(text) || !nameless.Name(name))
        {
            RefuseNew(name, errno);
        }
        return;
    }
    // Not every file system has files without a name.
    const NewFile file(name, O_CREAT | O_EXCL);
    if (!file.IsOpen())
    {
        RefuseNew(name, errno);
    }
    if (!file.Write(text))
    {
        const int reason = errno;
        ::unlink(name.c_str());
        RefuseNew(name, reason);
    }
}

} // namespace Zelnor::Tool
