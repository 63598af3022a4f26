#include "Core/Interfaces/DataStream.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/FileFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace Zelnor::Core
{

namespace
{

namespace fs = std::filesystem;
using namespace Testing;

void Save(const fs::path& path, const std::string& text)
{
    const auto output = AtomicFileDataOutput::Create(path);
    Put(*output, text);
    output->Commit();
}

/// Begins to save the file in a process that is killed before it commits.
void SaveAndBeKilled(const fs::path& path)
{
    const int status = RunForked([&path] {
        const auto output = AtomicFileDataOutput::Create(path);
        Put(*output, "not complete");
        ::raise(SIGKILL);
        return 0;
    });
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
}

std::vector<std::string> SortedNames(const TemporaryFolder& folder)
{
    std::vector<std::string> names = folder.Names();
    std::sort(names.begin(), names.end());
    return names;
}

/// What the names of the temporary files of a target begin with, up to the process.
std::string PrefixFor(const TemporaryFolder& folder, const std::string& target)
{
    const std::vector<std::string> before = folder.Names();
    const auto output = AtomicFileDataOutput::Create(folder / target);
    for (const std::string& name : folder.Names())
    {
        if (std::find(before.begin(), before.end(), name) == before.end())
        {
            return name.substr(0, name.find('-', std::string(".zelnor-").size()) + 1);
        }
    }
    ADD_FAILURE() << "there is no temporary file";
    return {};
}

/// The owner and the group of a file.
std::pair<uid_t, gid_t> OwnersOf(const fs::path& path)
{
    struct stat status = {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0);
    return {status.st_uid, status.st_gid};
}

bool IsSuperuser() { return ::geteuid() == 0; }

constexpr const char* kNeedsSuperuser = "only the superuser can give files away";

} // namespace

TEST(AtomicFileLitter, OfAKilledProcessIsRemovedByTheNextSaveOfTheSameTarget)
{
    const TemporaryFolder folder;
    WriteFile(folder / "file", "old");
    SaveAndBeKilled(folder / "file");
    SaveAndBeKilled(folder / "file");
    EXPECT_EQ(ReadFile(folder / "file"), "old");
    Save(folder / "file", "new");
    EXPECT_EQ(ReadFile(folder / "file"), "new");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
}

TEST(AtomicFileLitter, IsRemovedEvenByASaveThatIsNotCommitted)
{
    const TemporaryFolder folder;
    SaveAndBeKilled(folder / "file");
    EXPECT_EQ(folder.Names().size(), 1u);
    AtomicFileDataOutput::Create(folder / "file");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{});
}

TEST(AtomicFileLitter, OfAnotherTargetStays)
{
    const TemporaryFolder folder;
    SaveAndBeKilled(folder / "other");
    Save(folder / "file", "new");
    EXPECT_EQ(folder.Names().size(), 2u);
    Save(folder / "other", "new");
    EXPECT_EQ(SortedNames(folder), (std::vector<std::string>{"file", "other"}));
}

TEST(AtomicFileLitter, IsNotTheFileOfAnotherThatStillSaves)
{
    const TemporaryFolder folder;
    const auto slow = AtomicFileDataOutput::Create(folder / "file");
    Put(*slow, "slow");
    EXPECT_EQ(RunForked([&folder] {
                  Save(folder / "file", "from another process");
                  return 0;
              }),
              0);
    Save(folder / "file", "from the same process");
    EXPECT_EQ(ReadFile(folder / "file"), "from the same process");
    slow->Commit();
    EXPECT_EQ(ReadFile(folder / "file"), "slow");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
}

TEST(AtomicFileLitter, IsNeitherALinkNorAFolderNorAPipeWithSuchAName)
{
    const TemporaryFolder folder;
    const std::string prefix = PrefixFor(folder, "file");
    WriteFile(folder / "precious", "precious");
    fs::create_symlink("precious", folder / (prefix + "1-1"));
    fs::create_hard_link(folder / "precious", folder / (prefix + "1-2"));
    fs::create_directory(folder / (prefix + "1-3"));
    ASSERT_EQ(::mkfifo((folder / (prefix + "1-4")).c_str(), 0600), 0);
    const std::vector<std::string> before = SortedNames(folder);
    AtomicFileDataOutput::Create(folder / "file");
    EXPECT_EQ(SortedNames(folder), before);
    EXPECT_EQ(ReadFile(folder / "precious"), "precious");
}

TEST(AtomicFileLitter, IsOnlyWhatIsNamedLikeIt)
{
    const TemporaryFolder folder;
    const std::string prefix = PrefixFor(folder, "file");
    for (const std::string& name : {prefix + "1-1.bak", prefix + "x", prefix.substr(0, prefix.size() - 1),
                                    std::string(".zelnor-1-1"), "x" + prefix + "1-1"})
    {
        WriteFile(folder / name, "kept");
    }
    const std::vector<std::string> before = SortedNames(folder);
    WriteFile(folder / (prefix + "1-1"), "left behind");
    AtomicFileDataOutput::Create(folder / "file");
    EXPECT_EQ(SortedNames(folder), before);
}

TEST(AtomicFileLitter, OfOthersStays)
{
    if (!IsSuperuser())
    {
        GTEST_SKIP() << kNeedsSuperuser;
    }
    const TemporaryFolder folder;
    const std::string prefix = PrefixFor(folder, "file");
    WriteFile(folder / "file", "old");
    WriteFile(folder / (prefix + "1-1"), "of the target's owner");
    WriteFile(folder / (prefix + "1-2"), "of somebody else");
    ASSERT_EQ(::chown((folder / "file").c_str(), 1234, 0), 0);
    ASSERT_EQ(::chown((folder / (prefix + "1-1")).c_str(), 1234, 0), 0);
    ASSERT_EQ(::chown((folder / (prefix + "1-2")).c_str(), 4321, 0), 0);
    AtomicFileDataOutput::Create(folder / "file");
    EXPECT_EQ(SortedNames(folder), (std::vector<std::string>{prefix + "1-2", "file"}));
}

TEST(AtomicFileLitter, IsRemovedWhateverThePermissionsOfTheTarget)
{
    const TemporaryFolder folder;
    for (const mode_t mode : {0200u, 0600u, 0640u})
    {
        WriteFile(folder / "file", "old");
        ASSERT_EQ(::chmod((folder / "file").c_str(), mode), 0);
        SaveAndBeKilled(folder / "file");
        AtomicFileDataOutput::Create(folder / "file");
        EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"}) << mode;
    }
}

TEST(AtomicFileLitter, IsRemovedAlsoWhereItsOwnerMayOnlyReadIt)
{
    if (!IsSuperuser())
    {
        GTEST_SKIP() << kNeedsSuperuser;
    }
    const TemporaryFolder folder;
    ASSERT_EQ(::chmod(folder.Path().c_str(), 0777), 0);
    WriteFile(folder / "file", "old");
    ASSERT_EQ(::chmod((folder / "file").c_str(), 0466), 0);
    const Unprivileged somebody;
    SaveAndBeKilled(folder / "file");
    EXPECT_EQ(folder.Names().size(), 2u);
    AtomicFileDataOutput::Create(folder / "file");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
}

TEST(AtomicFileLitter, StaysInAFolderThatCannotBeListedAndTheSaveSucceeds)
{
    const TemporaryFolder folder;
    fs::create_directory(folder / "inner");
    ASSERT_EQ(::chmod(folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod((folder / "inner").c_str(), 0333), 0);
    {
        const Unprivileged somebody;
        Save(folder / "inner/file", "new");
    }
    ASSERT_EQ(::chmod((folder / "inner").c_str(), 0755), 0);
    EXPECT_EQ(ReadFile(folder / "inner/file"), "new");
}

TEST(AtomicFileFork, LeavesTheFileToTheProcessThatCreatedTheObject)
{
    const TemporaryFolder folder;
    auto output = AtomicFileDataOutput::Create(folder / "file");
    Put(*output, "of the parent");
    EXPECT_EQ(RunForked([&output] {
                  output.reset();
                  return 0;
              }),
              0);
    EXPECT_EQ(folder.Names().size(), 1u) << "the temporary file";
    output->Commit();
    EXPECT_EQ(ReadFile(folder / "file"), "of the parent");
}

TEST(AtomicFileFork, RefusesToWriteAndToCommitInTheOtherProcess)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "file").string();
    const auto output = AtomicFileDataOutput::Create(name);
    Put(*output, "of the parent");
    EXPECT_EQ(RunForked([&] {
                  ExpectFailure(ExpectThrow<CoreException>([&] { Put(*output, "of the child"); }),
                                "Cannot write '" + name + "': It was created by another process",
                                "AtomicFileDataOutput::Write(");
                  ExpectFailure(ExpectThrow<CoreException>([&] { output->Commit(); }),
                                "Cannot commit '" + name + "': It was created by another process",
                                "AtomicFileDataOutput::Commit(");
                  return ::testing::Test::HasFailure() ? 1 : 0;
              }),
              0);
    output->Commit();
    EXPECT_EQ(ReadFile(name), "of the parent");
}

TEST(AtomicFileOwner, IsKeptWhenTheSuperuserReplacesAFile)
{
    if (!IsSuperuser())
    {
        GTEST_SKIP() << kNeedsSuperuser;
    }
    const TemporaryFolder folder;
    const fs::path file = folder / "file";
    WriteFile(file, "old");
    ASSERT_EQ(::chown(file.c_str(), 1234, 5678), 0);
    ASSERT_EQ(::chmod(file.c_str(), 06751), 0);
    const auto output = AtomicFileDataOutput::Create(file);
    for (const std::string& name : folder.Names())
    {
        EXPECT_EQ(OwnersOf(folder / name), (std::pair<uid_t, gid_t>(1234, 5678)));
        EXPECT_EQ(ModeOf(folder / name), name == "file" ? 06751u : 0751u)
            << "nobody runs what is not complete";
    }
    Put(*output, "new");
    output->Commit();
    EXPECT_EQ(OwnersOf(file), (std::pair<uid_t, gid_t>(1234, 5678)));
    EXPECT_EQ(ModeOf(file), 06751u);
    EXPECT_EQ(ReadFile(file), "new");
}

TEST(AtomicFileOwner, IsTheSaverWhenItCannotBeKeptAndTheSpecialBitsGo)
{
    if (!IsSuperuser())
    {
        GTEST_SKIP() << kNeedsSuperuser;
    }
    const TemporaryFolder folder;
    const fs::path file = folder / "file";
    ASSERT_EQ(::chmod(folder.Path().c_str(), 0777), 0);
    WriteFile(file, "old");
    ASSERT_EQ(::chmod(file.c_str(), 07777), 0);
    {
        const Unprivileged somebody;
        Save(file, "new");
        EXPECT_EQ(OwnersOf(file).first, ::geteuid());
    }
    EXPECT_EQ(ModeOf(file), 0777u);
}

TEST(AtomicFileOwner, GivesAnotherGroupAndOthersOnlyWhatBothHad)
{
    if (!IsSuperuser())
    {
        GTEST_SKIP() << kNeedsSuperuser;
    }
    const TemporaryFolder folder;
    const fs::path file = folder / "file";
    ASSERT_EQ(::chmod(folder.Path().c_str(), 0777), 0);
    for (const auto& [before, after] : {std::pair(02646u, 0644u), std::pair(0626u, 0622u),
                                        std::pair(0666u, 0666u), std::pair(0602u, 0600u)})
    {
        fs::remove(file);
        WriteFile(file, "old");
        ASSERT_EQ(::chown(file.c_str(), 65534, 5678), 0);
        ASSERT_EQ(::chmod(file.c_str(), before), 0);
        const Unprivileged somebody;
        Save(file, "new");
        EXPECT_NE(OwnersOf(file).second, 5678u);
        EXPECT_EQ(ModeOf(file), after);
    }
}

namespace
{

/// Takes the right to change files of others from this process.
bool DropRightOfOwners()
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> rights = {};
    if (::syscall(SYS_capget, &header, rights.data()) != 0)
    {
        return false;
    }
    rights[0].effective &= ~(1U << CAP_FOWNER);
    return ::syscall(SYS_capset, &header, rights.data()) == 0;
}

} // namespace

TEST(AtomicFileOwner, IsKeptByWhoMayGiveFilesAwayButNotChangeThoseOfOthers)
{
    if (!IsSuperuser())
    {
        GTEST_SKIP() << kNeedsSuperuser;
    }
    const TemporaryFolder folder;
    const fs::path file = folder / "file";
    WriteFile(file, "old");
    ASSERT_EQ(::chown(file.c_str(), 1234, 5678), 0);
    ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
    EXPECT_EQ(RunForked([&file] {
                  EXPECT_TRUE(DropRightOfOwners());
                  Save(file, "new");
                  return ::testing::Test::HasFailure() ? 1 : 0;
              }),
              0);
    EXPECT_EQ(OwnersOf(file), (std::pair<uid_t, gid_t>(1234, 5678)));
    EXPECT_EQ(ModeOf(file), 0640u);
    EXPECT_EQ(ReadFile(file), "new");
}

TEST(AtomicFileTarget, ReplacedByAnotherFileWhileItIsSavedIsReplacedOnceMore)
{
    const TemporaryFolder folder;
    WriteFile(folder / "file", "old");
    const auto output = AtomicFileDataOutput::Create(folder / "file");
    Put(*output, "new");
    WriteFile(folder / "other", "other");
    fs::rename(folder / "other", folder / "file");
    output->Commit();
    EXPECT_EQ(ReadFile(folder / "file"), "new");
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
}

TEST(AtomicFileTarget, ReplacedByALinkOrAPipeWhileItIsSavedIsLeftAlone)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "file").string();
    WriteFile(folder / "precious", "precious");
    const auto output = AtomicFileDataOutput::Create(name);
    Put(*output, "new");
    const auto expect = [&] {
        ExpectFailure(ExpectThrow<CoreException>([&] { output->Commit(); }),
                      "Cannot replace '" + name + "': Not a regular file", "AtomicFileDataOutput::Commit(");
    };
    fs::create_symlink("precious", name);
    expect();
    EXPECT_TRUE(fs::is_symlink(name));
    fs::remove(name);
    ASSERT_EQ(::mkfifo(name.c_str(), 0600), 0);
    expect();
    EXPECT_TRUE(fs::is_fifo(name));
    fs::remove(name);
    output->Commit();
    EXPECT_EQ(ReadFile(name), "new");
    EXPECT_EQ(ReadFile(folder / "precious"), "precious");
    EXPECT_EQ(SortedNames(folder), (std::vector<std::string>{"file", "precious"}));
}

TEST(AtomicFileTarget, IsNotFoundInAFolderThatTakesTheOldOnesName)
{
    const TemporaryFolder folder;
    fs::create_directory(folder / "inner");
    fs::create_directory(folder / "elsewhere");
    WriteFile(folder / "elsewhere/file", "precious");
    const auto output = AtomicFileDataOutput::Create(folder / "inner/file");
    Put(*output, "new");
    fs::rename(folder / "inner", folder / "moved");
    fs::create_directory_symlink("elsewhere", folder / "inner");
    output->Commit();
    EXPECT_EQ(ReadFile(folder / "elsewhere/file"), "precious");
    EXPECT_EQ(ReadFile(folder / "moved/file"), "new");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "moved"), {}), 1);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder / "elsewhere"), {}), 1);
}

TEST(AtomicFileTarget, InAFolderThatMayNotBeWrittenStaysAsItWas)
{
    const TemporaryFolder folder;
    fs::create_directory(folder / "inner");
    const std::string name = (folder / "inner/file").string();
    WriteFile(name, "old");
    ASSERT_EQ(::chmod(name.c_str(), 0666), 0);
    ASSERT_EQ(::chmod((folder / "inner").c_str(), 0555), 0);
    ASSERT_EQ(::chmod(folder.Path().c_str(), 0755), 0);
    {
        const Unprivileged somebody;
        ExpectFailure(ExpectThrow<CoreException>([&] { AtomicFileDataOutput::Create(name); }),
                      "Cannot write '" + name + "': Permission denied", "AtomicFileDataOutput::Create(");
    }
    EXPECT_EQ(ReadFile(name), "old");
}

namespace
{

constexpr int kCannotMount = 77;

/// Runs `action` in a process that sees a file system of 64 KiB in `folder`, which nobody else sees.
/// \returns the exit status of `action`, or `kCannotMount`
template <class Action>
int RunOnSmallDisk(const std::string& folder, Action action)
{
    const int status = RunForked([&] {
        const bool mounted = ::unshare(CLONE_NEWNS) == 0 &&
                             ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                             ::mount("none", folder.c_str(), "tmpfs", 0, "size=64k") == 0;
        if (!mounted)
        {
            return kCannotMount;
        }
        action();
        return ::testing::Test::HasFailure() ? 1 : 0;
    });
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

TEST(AtomicFileTarget, OnAFullDiskStaysAsItWas)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "file").string();
    const int status = RunOnSmallDisk(folder.Path().string(), [&] {
        WriteFile(name, "old");
        const auto output = AtomicFileDataOutput::Create(name);
        ExpectFailure(ExpectThrow<CoreException>([&] { Put(*output, std::string(100'000, 'x')); }),
                      "Cannot write '" + name + "': No space left on device", "AtomicFileDataOutput::Write(");
        EXPECT_EQ(ReadFile(name), "old");
        EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
        Save(name, "what fits");
        EXPECT_EQ(ReadFile(name), "what fits");
    });
    if (status == kCannotMount)
    {
        GTEST_SKIP() << "this process may not mount a file system";
    }
    EXPECT_EQ(status, 0);
}

TEST(AtomicFileTarget, OnADiskThatBecomesReadOnlyStaysAsItWas)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "file").string();
    const int status = RunOnSmallDisk(folder.Path().string(), [&] {
        WriteFile(name, "old");
        EXPECT_EQ(::mount("none", folder.Path().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
        ExpectFailure(ExpectThrow<CoreException>([&] { AtomicFileDataOutput::Create(name); }),
                      "Cannot write '" + name + "': Read-only file system", "AtomicFileDataOutput::Create(");
        EXPECT_EQ(ReadFile(name), "old");
        EXPECT_EQ(folder.Names(), std::vector<std::string>{"file"});
    });
    if (status == kCannotMount)
    {
        GTEST_SKIP() << "this process may not mount a file system";
    }
    EXPECT_EQ(status, 0);
}

} // namespace Zelnor::Core
