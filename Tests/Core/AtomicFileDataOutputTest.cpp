#include "Core/Interfaces/DataStream.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/FileFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace
{

bool g_syncFails = false;
/// How many bytes the next calls write at most.
std::size_t g_mostWritten = std::string::npos;
/// The error of the next call of `write`, if any.
int g_writeError = 0;
/// The permissions of the file that `fchmod` was called for last, before that.
mode_t g_modeBeforeChange = 0;

} // namespace

// In the place of the system's, also for the library.

extern "C" [[gnu::visibility("default")]] ssize_t write(int descriptor, const void* data, std::size_t size)
{
    if (g_writeError != 0)
    {
        errno = std::exchange(g_writeError, 0);
        return -1;
    }
    return ::syscall(SYS_write, descriptor, data, std::min(size, g_mostWritten));
}

extern "C" [[gnu::visibility("default")]] int fsync(int descriptor)
{
    if (g_syncFails)
    {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

extern "C" [[gnu::visibility("default")]] int fchmod(int descriptor, mode_t mode) noexcept
{
    struct stat status = {};
    ::fstat(descriptor, &status);
    g_modeBeforeChange = status.st_mode & 07777;
    return static_cast<int>(::syscall(SYS_fchmod, descriptor, mode));
}

namespace Zelnor::Core
{

namespace
{

namespace fs = std::filesystem;
using namespace Testing;

/// Changes the current folder for a test.
class CurrentFolder
{
public:
    explicit CurrentFolder(const fs::path& folder) : m_before(fs::current_path())
    {
        fs::current_path(folder);
    }
    ~CurrentFolder() { fs::current_path(m_before); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    fs::path m_before;
};

} // namespace

TEST(AtomicFileDataOutput, ReplacesTheFileAtCommit)
{
    const TemporaryFolder folder;
    WriteFile(folder / "file", "old");
    const auto output = AtomicFileDataOutput::Create(folder / "file");
    EXPECT_EQ(output->GetRefCount(), 1);
    Put(*output, "new ");
    Put(*output, "contents");
    EXPECT_EQ(ReadFile(folder / "file"), "old");
    output->Commit();
    EXPECT_EQ(ReadFile(folder / "file"), "new contents");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
}

TEST(AtomicFileDataOutput, MakesAFileThatWasNotThere)
{
    const TemporaryFolder folder;
    {
        const auto output = AtomicFileDataOutput::Create(folder / "file");
        EXPECT_FALSE(fs::exists(folder / "file"));
        output->Commit();
    }
    EXPECT_EQ(ReadFile(folder / "file"), "");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
}

TEST(AtomicFileDataOutput, WithoutACommitLeavesNoTrace)
{
    const TemporaryFolder folder;
    WriteFile(folder / "file", "old");
    {
        const auto replaced = AtomicFileDataOutput::Create(folder / "file");
        Put(*replaced, "new");
        const auto made = AtomicFileDataOutput::Create(folder / "other");
        Put(*made, "new");
        EXPECT_EQ(folder.Names().size(), 3u) << "both write beside their targets";
    }
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
    EXPECT_EQ(ReadFile(folder / "file"), "old");
}

TEST(AtomicFileDataOutput, WritesARelativeNameInTheCurrentFolder)
{
    const TemporaryFolder folder;
    const CurrentFolder current(folder.Path());
    const auto output = AtomicFileDataOutput::Create("file");
    Put(*output, "x");
    output->Commit();
    EXPECT_EQ(ReadFile(folder / "file"), "x");
}

TEST(AtomicFileDataOutput, RefusesToWriteOrCommitAfterTheCommit)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "file").string();
    const auto output = AtomicFileDataOutput::Create(name);
    Put(*output, "x");
    output->Commit();
    ExpectFailure(ExpectThrow<CoreException>([&] { Put(*output, "y"); }),
                  "Cannot write '" + name + "': It is committed already", "AtomicFileDataOutput::Write(");
    ExpectThrow<CoreException>([&] { output->Write(nullptr, 0); });
    ExpectFailure(ExpectThrow<CoreException>([&] { output->Commit(); }),
                  "Cannot commit '" + name + "': It is committed already", "AtomicFileDataOutput::Commit(");
    EXPECT_EQ(ReadFile(name), "x");
}

TEST(AtomicFileDataOutput, AFailedCommitKeepsTheOldFileAndMayBeRepeated)
{
    const TemporaryFolder folder;
    const fs::path target = folder / "file";
    const auto output = AtomicFileDataOutput::Create(target);
    Put(*output, "new");
    // A folder that came into the target's place in the meantime cannot be replaced by a file.
    fs::create_directory(target);
    WriteFile(target / "inside", "x");
    ExpectFailure(ExpectThrow<CoreException>([&] { output->Commit(); }),
                  "Cannot write '" + target.string() + "': Is a directory", "AtomicFileDataOutput::Commit(");
    EXPECT_TRUE(fs::exists(target / "inside"));
    fs::remove_all(target);
    output->Commit();
    EXPECT_EQ(ReadFile(target), "new");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
}

TEST(AtomicFileDataOutput, IsEndedByAWriteThatFails)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "file").string();
    WriteFile(name, "old");
    const auto output = AtomicFileDataOutput::Create(name);
    Put(*output, "new");
    {
        const FileSizeLimit limit(10);
        ExpectFailure(ExpectThrow<CoreException>([&] { Put(*output, "more than ten bytes"); }),
                      "Cannot write '" + name + "': File too large", "AtomicFileDataOutput::Write(");
    }
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"}) << "at once, not with the last reference";
    ExpectFailure(ExpectThrow<CoreException>([&] { Put(*output, "x"); }),
                  "Cannot write '" + name + "': An earlier write failed", "AtomicFileDataOutput::Write(");
    ExpectFailure(ExpectThrow<CoreException>([&] { output->Commit(); }),
                  "Cannot commit '" + name + "': An earlier write failed", "AtomicFileDataOutput::Commit(");
    EXPECT_EQ(ReadFile(name), "old");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
}

TEST(AtomicFileDataOutput, WritesOnWhereTheSystemStopped)
{
    const TemporaryFolder folder;
    const auto output = AtomicFileDataOutput::Create(folder / "file");
    g_mostWritten = 3;
    Put(*output, "written in several pieces");
    g_mostWritten = std::string::npos;
    output->Commit();
    EXPECT_EQ(ReadFile(folder / "file"), "written in several pieces");
}

TEST(AtomicFileDataOutput, RepeatsAWriteThatASignalInterrupted)
{
    const TemporaryFolder folder;
    const auto output = AtomicFileDataOutput::Create(folder / "file");
    g_writeError = EINTR;
    Put(*output, "whole");
    EXPECT_EQ(g_writeError, 0);
    output->Commit();
    EXPECT_EQ(ReadFile(folder / "file"), "whole");
}

TEST(AtomicFileDataOutput, IsEndedByAnExhaustedQuota)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "file").string();
    WriteFile(name, "old");
    const auto output = AtomicFileDataOutput::Create(name);
    g_writeError = EDQUOT;
    ExpectFailure(ExpectThrow<CoreException>([&] { Put(*output, "new"); }),
                  "Cannot write '" + name + "': Disk quota exceeded", "AtomicFileDataOutput::Write(");
    EXPECT_EQ(ReadFile(name), "old");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
}

TEST(AtomicFileDataOutput, IsEndedByDataThatDoNotReachTheDisk)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "file").string();
    WriteFile(name, "old");
    const auto output = AtomicFileDataOutput::Create(name);
    Put(*output, "new");
    g_syncFails = true;
    ExpectFailure(ExpectThrow<CoreException>([&] { output->Commit(); }),
                  "Cannot write '" + name + "': Input/output error", "AtomicFileDataOutput::Commit(");
    g_syncFails = false;
    ExpectFailure(ExpectThrow<CoreException>([&] { output->Commit(); }),
                  "Cannot commit '" + name + "': An earlier write failed", "AtomicFileDataOutput::Commit(");
    EXPECT_EQ(ReadFile(name), "old");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
}

TEST(AtomicFileDataOutput, IsNotMovedByAChangeOfTheCurrentFolder)
{
    const TemporaryFolder folder;
    const TemporaryFolder elsewhere;
    fs::create_directory(folder / "inner");
    fs::create_symlink("inner/linked", folder / "link");
    {
        const CurrentFolder current(folder.Path());
        const auto file = AtomicFileDataOutput::Create("file");
        const auto link = AtomicFileDataOutput::Create("link");
        const auto dropped = AtomicFileDataOutput::Create("inner/dropped");
        Put(*file, "f");
        Put(*link, "l");
        fs::current_path(elsewhere.Path());
        file->Commit();
        link->Commit();
    }
    EXPECT_EQ(ReadFile(folder / "file"), "f");
    EXPECT_EQ(ReadFile(folder / "inner/linked"), "l");
    EXPECT_EQ(elsewhere.Names(), std::vector<std::string>{});
    EXPECT_EQ(folder.Names().size(), 3u);
    fs::remove(folder / "inner/linked");
    EXPECT_TRUE(fs::is_empty(folder / "inner")) << "nothing is left of what was not committed";
}

TEST(AtomicFileDataOutput, NamesTheReasonWhenTheCurrentFolderIsGone)
{
    const TemporaryFolder folder;
    fs::create_directory(folder / "gone");
    const CurrentFolder current(folder / "gone");
    fs::remove(folder / "gone");
    ExpectFailure(ExpectThrow<CoreException>([] { AtomicFileDataOutput::Create("file"); }),
                  "Cannot write 'file': No such file or directory", "AtomicFileDataOutput::Create(");
}

TEST(AtomicFileDataOutput, FollowsSymbolicLinks)
{
    const TemporaryFolder folder;
    fs::create_directory(folder / "inner");
    WriteFile(folder / "inner/file", "old");
    fs::create_symlink("inner/file", folder / "link");
    fs::create_symlink(folder / "link", folder / "link to link");
    const auto output = AtomicFileDataOutput::Create(folder / "link to link");
    Put(*output, "new");
    output->Commit();
    EXPECT_EQ(ReadFile(folder / "inner/file"), "new");
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_TRUE(fs::is_symlink(folder / "link to link"));
    EXPECT_EQ(folder.Names().size(), 3u);
}

TEST(AtomicFileDataOutput, MakesTheFileOfADanglingLink)
{
    const TemporaryFolder folder;
    fs::create_symlink("file", folder / "link");
    const auto output = AtomicFileDataOutput::Create(folder / "link");
    output->Commit();
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_TRUE(fs::is_regular_file(folder / "file"));
}

TEST(AtomicFileDataOutput, RefusesALoopOfLinks)
{
    const TemporaryFolder folder;
    fs::create_symlink("b", folder / "a");
    fs::create_symlink("a", folder / "b");
    const std::string name = (folder / "a").string();
    ExpectFailure(ExpectThrow<CoreException>([&] { AtomicFileDataOutput::Create(name); }),
                  "Cannot write '" + name + "': Too many levels of symbolic links",
                  "AtomicFileDataOutput::Create(");
}

TEST(AtomicFileDataOutput, KeepsPermissions)
{
    const TemporaryFolder folder;
    const Umask mask(022);
    for (const mode_t mode : {0600u, 0666u, 0755u})
    {
        WriteFile(folder / "file", "old");
        ASSERT_EQ(::chmod((folder / "file").c_str(), mode), 0);
        const auto output = AtomicFileDataOutput::Create(folder / "file");
        for (const auto& entry : fs::directory_iterator(folder.Path()))
        {
            EXPECT_EQ(ModeOf(entry.path()), mode) << "already while it is written";
        }
        output->Commit();
        EXPECT_EQ(ModeOf(folder / "file"), mode);
    }
}

TEST(AtomicFileDataOutput, IsForNobodyElseBeforeItHasTheOldFilesPermissions)
{
    const TemporaryFolder folder;
    const Umask mask(0);
    WriteFile(folder / "file", "old");
    ASSERT_EQ(::chmod((folder / "file").c_str(), 0640), 0);
    g_modeBeforeChange = 0;
    AtomicFileDataOutput::Create(folder / "file");
    EXPECT_EQ(g_modeBeforeChange, 0600u);
}

TEST(AtomicFileDataOutput, RespectsTheMaskForNewFiles)
{
    const TemporaryFolder folder;
    const Umask mask(027);
    AtomicFileDataOutput::Create(folder / "file")->Commit();
    EXPECT_EQ(ModeOf(folder / "file"), 0640u);
}

TEST(AtomicFileDataOutput, RefusesWhatIsNoRegularFile)
{
    const TemporaryFolder folder;
    const std::string function = "AtomicFileDataOutput::Create(";
    ExpectFailure(ExpectThrow<CoreException>([] { AtomicFileDataOutput::Create("/dev/null"); }),
                  "Cannot replace '/dev/null': Not a regular file", function);
    const std::string name = folder.Path().string();
    ExpectFailure(ExpectThrow<CoreException>([&] { AtomicFileDataOutput::Create(name); }),
                  "Cannot replace '" + name + "': Not a regular file", function);
    ExpectFailure(ExpectThrow<CoreException>([&] { AtomicFileDataOutput::Create(name + "/"); }),
                  "Cannot replace '" + name + "/': Not a regular file", function);
    const std::string pipe = (folder / "pipe").string();
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    ExpectFailure(ExpectThrow<CoreException>([&] { AtomicFileDataOutput::Create(pipe); }),
                  "Cannot replace '" + pipe + "': Not a regular file", function);
}

TEST(AtomicFileDataOutput, RefusesAtOnceWhatCannotBeWritten)
{
    const TemporaryFolder folder;
    const std::string function = "AtomicFileDataOutput::Create(";
    const auto expect = [&](const std::string& name, const std::string& reason) {
        ExpectFailure(ExpectThrow<CoreException>([&] { AtomicFileDataOutput::Create(name); }),
                      "Cannot write '" + name + "': " + reason, function);
    };
    WriteFile(folder / "file", "x");
    expect("", "No such file or directory");
    expect((folder / "absent/file").string(), "No such file or directory");
    expect((folder / "new/").string(), "No such file or directory");
    expect((folder / "file/inner").string(), "Not a directory");
    expect((folder / std::string(256, 'n')).string(), "File name too long");
    expect((folder / "file").string() + std::string("\0x", 2), "Invalid argument");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
    EXPECT_EQ(ReadFile(folder / "file"), "x");
}

TEST(AtomicFileDataOutput, TakesTheLongestNameThatAFileMayHave)
{
    const TemporaryFolder folder;
    const std::string name(255, 'n');
    AtomicFileDataOutput::Create(folder / name)->Commit();
    EXPECT_EQ(folder.Names(), std::vector<std::string>{name});
}

TEST(AtomicFileDataOutput, NamesTheReasonWhenTheFileMayNotBeWritten)
{
    const TemporaryFolder folder;
    fs::permissions(folder.Path(), fs::perms::all);
    WriteFile(folder / "file", "x");
    fs::permissions(folder / "file", fs::perms::owner_read);
    const std::string name = (folder / "file").string();
    const Unprivileged somebody;
    ExpectFailure(ExpectThrow<CoreException>([&] { AtomicFileDataOutput::Create(name); }),
                  "Cannot write '" + name + "': Permission denied", "AtomicFileDataOutput::Create(");
}

} // namespace Zelnor::Core
