#include "Core/Interfaces/DataStream.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <type_traits>

namespace
{

bool g_syncFails = false;

} // namespace

/// In the place of the system's, also for the library.
extern "C" [[gnu::visibility("default")]] int fsync(int descriptor)
{
    if (g_syncFails)
    {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

namespace Zelnor::Core
{

namespace
{

namespace fs = std::filesystem;
using Testing::ExpectThrow;
using Testing::ReadFile;
using Testing::TemporaryFolder;
using Testing::Thrown;
using Testing::WriteFile;

static_assert(std::is_abstract_v<IDataInput> && std::is_abstract_v<IDataOutput>);
static_assert(std::is_convertible_v<FileDataInput*, IRefCountable*>);

void ExpectFailure(const Thrown& thrown, const std::string& description, const std::string& function)
{
    EXPECT_EQ(thrown.description, description);
    EXPECT_EQ(thrown.file, "Core/Interfaces/DataStream");
    EXPECT_NE(thrown.function.value_or("").find(function), std::string::npos) << thrown.function.value_or("");
    EXPECT_FALSE(thrown.callStack.value_or("").empty());
}

template <class Output>
void Put(Output& output, const std::string& text)
{
    output.Write(text.data(), text.size());
}

std::string ReadAll(IDataInput& input, std::size_t block)
{
    std::string all;
    std::string buffer(block, '\0');
    while (const std::size_t count = input.Read(buffer.data(), block))
    {
        all.append(buffer, 0, count);
    }
    return all;
}

mode_t ModeOf(const fs::path& path)
{
    struct stat status = {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

/// Makes the process's mask for new files known for a test.
class Umask
{
public:
    explicit Umask(mode_t mask) : m_before(::umask(mask)) {}
    ~Umask() { ::umask(m_before); }
    Umask(const Umask&) = delete;
    Umask& operator=(const Umask&) = delete;

private:
    mode_t m_before;
};

/// Lets a test of the superuser act as somebody to whom permissions apply.
class Unprivileged
{
public:
    Unprivileged() : m_before(::geteuid()) { EXPECT_TRUE(m_before != 0 || ::seteuid(65534) == 0); }
    ~Unprivileged() { EXPECT_EQ(::seteuid(m_before), 0); }
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

private:
    uid_t m_before;
};

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

/// Lets writing fail beyond a size, as on a disk that is full, after what still fits was written.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes) : m_signal(std::signal(SIGXFSZ, SIG_IGN))
    {
        EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &m_before), 0);
        const rlimit limit{bytes, m_before.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~FileSizeLimit()
    {
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &m_before), 0);
        std::signal(SIGXFSZ, m_signal);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before = {};
    void (*m_signal)(int);
};

} // namespace

TEST(FileDataInput, ReadsBlocksOfAnySizeUpToTheEnd)
{
    const TemporaryFolder folder;
    std::string text = "0123456789";
    text += '\0';
    text += std::string(100000, 'x');
    WriteFile(folder / "file", text);
    for (const std::size_t block : {1u, 7u, 4096u, 200000u})
    {
        const auto input = FileDataInput::Create(folder / "file");
        EXPECT_EQ(input->GetRefCount(), 1);
        EXPECT_EQ(ReadAll(*input, block), text);
        char more = 'm';
        EXPECT_EQ(input->Read(&more, 1), 0u) << "the end stays the end";
        EXPECT_EQ(more, 'm');
    }
}

TEST(FileDataInput, EmptyReadIsNotTheEnd)
{
    const TemporaryFolder folder;
    WriteFile(folder / "file", "a");
    const auto input = FileDataInput::Create(folder / "file");
    EXPECT_EQ(input->Read(nullptr, 0), 0u);
    EXPECT_EQ(ReadAll(*input, 10), "a");
}

TEST(FileDataInput, NamesTheFileAndTheReasonWhenItIsMissing)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "absent").string();
    ExpectFailure(ExpectThrow<CoreException>([&] { FileDataInput::Create(name); }),
                  "Cannot open '" + name + "': No such file or directory", "FileDataInput::Create(");
}

TEST(FileDataInput, OfAFolderFailsWhenRead)
{
    const TemporaryFolder folder;
    const auto input = FileDataInput::Create(folder.Path());
    char byte = 0;
    ExpectFailure(ExpectThrow<CoreException>([&] { input->Read(&byte, 1); }),
                  "Cannot read '" + folder.Path().string() + "': Is a directory", "FileDataInput::Read(");
}

TEST(FileDataInput, NamesTheReasonWhenItMayNotBeRead)
{
    const TemporaryFolder folder;
    fs::permissions(folder.Path(), fs::perms::all);
    WriteFile(folder / "secret", "x");
    fs::permissions(folder / "secret", fs::perms::none);
    const std::string name = (folder / "secret").string();
    const Unprivileged somebody;
    ExpectFailure(ExpectThrow<CoreException>([&] { FileDataInput::Create(name); }),
                  "Cannot open '" + name + "': Permission denied", "FileDataInput::Create(");
}

TEST(FileDataInput, RefusesANameWithNul)
{
    const TemporaryFolder folder;
    WriteFile(folder / "file", "x");
    const std::string name = (folder / "file").string() + std::string("\0.txt", 5);
    ExpectFailure(ExpectThrow<CoreException>([&] { FileDataInput::Create(name); }),
                  "Cannot open '" + name + "': Invalid argument", "FileDataInput::Create(");
}

TEST(FileDataOutput, EmptiesTheFileAtOnceAndHoldsNothingBack)
{
    const TemporaryFolder folder;
    WriteFile(folder / "file", "old contents");
    const auto output = FileDataOutput::Create(folder / "file");
    EXPECT_EQ(output->GetRefCount(), 1);
    EXPECT_EQ(ReadFile(folder / "file"), "");
    Put(*output, "new");
    EXPECT_EQ(ReadFile(folder / "file"), "new");
    output->Write(nullptr, 0);
    Put(*output, std::string("\0er", 3));
    EXPECT_EQ(ReadFile(folder / "file"), std::string("new\0er", 6));
}

TEST(FileDataOutput, NamesTheFileAndTheReasonOfAFailure)
{
    const TemporaryFolder folder;
    const std::string absent = (folder / "absent/file").string();
    ExpectFailure(ExpectThrow<CoreException>([&] { FileDataOutput::Create(absent); }),
                  "Cannot write '" + absent + "': No such file or directory", "FileDataOutput::Create(");
    ExpectFailure(ExpectThrow<CoreException>([&] { FileDataOutput::Create(folder.Path()); }),
                  "Cannot write '" + folder.Path().string() + "': Is a directory", "FileDataOutput::Create(");
    ExpectFailure(ExpectThrow<CoreException>([&] { FileDataOutput::Create(""); }),
                  "Cannot write '': No such file or directory", "FileDataOutput::Create(");
}

TEST(FileDataOutput, ToAFullDeviceFails)
{
    const auto output = FileDataOutput::Create("/dev/full");
    ExpectFailure(ExpectThrow<CoreException>([&] { Put(*output, "x"); }),
                  "Cannot write '/dev/full': No space left on device", "FileDataOutput::Write(");
}

TEST(FileDataOutput, RespectsTheMaskForNewFiles)
{
    const TemporaryFolder folder;
    const Umask mask(027);
    FileDataOutput::Create(folder / "file");
    EXPECT_EQ(ModeOf(folder / "file"), 0640u);
}

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

TEST(MemoryDataInput, ReadsBlocksOfAnySizeUpToTheEnd)
{
    const std::string bytes("a\0b\xff", 4);
    for (const std::size_t block : {1u, 3u, 4u, 100u})
    {
        const auto input = MemoryDataInput::Create(bytes);
        EXPECT_EQ(input->GetRefCount(), 1);
        EXPECT_EQ(input->Read(nullptr, 0), 0u);
        EXPECT_EQ(ReadAll(*input, block), bytes);
    }
    char byte = 0;
    EXPECT_EQ(MemoryDataInput::Create("")->Read(&byte, 1), 0u);
}

TEST(MemoryDataOutput, CollectsBytes)
{
    const auto output = MemoryDataOutput::Create();
    EXPECT_EQ(output->GetRefCount(), 1);
    EXPECT_EQ(output->GetData(), "");
    output->Write(nullptr, 0);
    Put(*output, std::string("a\0", 2));
    Put(*output, "b");
    EXPECT_EQ(output->GetData(), std::string("a\0b", 3));
}

} // namespace Zelnor::Core
