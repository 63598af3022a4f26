#include "Media/Batch/NewBatchFolder.h"

#include "Media/MediaException.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/FailingCall.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <new>
#include <string>

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
namespace fs = std::filesystem;

class NewFolderOfABatch : public testing::Test
{
protected:
    std::string Name(const std::string& name = "films") const { return (m_folder / name).string(); }
    std::vector<std::string> Names() const { return m_folder.Names(); }
    void Make() const
    {
        NewBatchFolder folder(Name());
        folder.WriteJob(1, "{}");
        folder.Commit("{}");
    }
    std::string ReasonAgainst(const std::string& name) const
    {
        return ExpectThrow<RunException>([&name] { const NewBatchFolder folder(name); })
            .description.value_or("");
    }

private:
    TemporaryFolder m_folder;
};

/// What becomes of a batch when the system refuses what hardly ever fails.
class NewFolderWithoutACall : public NewFolderOfABatch
{
protected:
    static constexpr std::uint32_t kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    /// So that a sanitizer, which looks at memory through pipes of its own, may write meanwhile.
    static constexpr std::uint32_t kDocumentSize = 2;
    static constexpr std::uint32_t kNewFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;

    void SetUp() override
    {
        if (!RunWhileFailing({SYS_fsync, EIO}, [] {}))
        {
            GTEST_SKIP() << "this system does not let calls fail";
        }
    }
    /// The end of the message that the folder cannot be made.
    std::string ReasonWithout(const FailingCall& call) const
    {
        const std::string begin = "Cannot make '" + Name() + "': ";
        std::string text;
        RunWhileFailing(
            call, [&] { text = ExpectThrow<RunException>([this] { Make(); }).description.value_or(""); });
        EXPECT_EQ(text.substr(0, begin.size()), begin);
        return text.substr(std::min(text.size(), begin.size()));
    }
    void ExpectWholeWithout(const FailingCall& call) const
    {
        RunWhileFailing(call, [this] { Make(); });
        EXPECT_THAT(Names(), ElementsAre("films"));
        EXPECT_TRUE(fs::exists(Name("films/jobs/000001.json")) && fs::exists(Name("films/batch.json")));
    }
};

TEST_F(NewFolderOfABatch, CanBeNamedWithSlashesAtItsEnd)
{
    NewBatchFolder(Name("films//")).Commit("{}");
    EXPECT_THAT(Names(), ElementsAre("films"));
}

TEST_F(NewFolderOfABatch, NeedsANameThatAFolderCanHave)
{
    for (const std::string name : {"", "/", ".", ".."})
    {
        EXPECT_EQ(ReasonAgainst(name), "Cannot make '" + name + "': Invalid argument");
    }
    EXPECT_EQ(ReasonAgainst(Name() + std::string(1, '\0')),
              "Cannot make '" + Name() + std::string(1, '\0') + "': Invalid argument");
}

TEST_F(NewFolderOfABatch, IsGoneUnlessItIsCompleted)
{
    {
        const NewBatchFolder folder(Name());
        folder.WriteJob(1, "{}");
        EXPECT_EQ(Names().size(), 1U);
    }
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(NewFolderOfABatch, DoesNotReplaceOneThatWasMadeMeanwhile)
{
    NewBatchFolder folder(Name());
    fs::create_directory(Name());
    EXPECT_EQ(ExpectThrow<RunException>([&folder] { folder.Commit("{}"); }).description,
              "'" + Name() + "' exists already");
    EXPECT_TRUE(fs::is_empty(Name()));
}

TEST_F(NewFolderOfABatch, RemovesOnlyWhatWasLeftByOthersThatEnded)
{
    const std::string locked = Name(".zelnor-batch-locked");
    fs::create_directory(locked);
    const Descriptor lock(::open(locked.c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(lock.Get(), LOCK_EX), 0);
    fs::create_directory(Name(".zelnor-batch-ABCDEF"));
    fs::create_directory(Name(".zelnor-elsewise-ab"));
    fs::create_directory(Name("target"));
    fs::create_directory_symlink("target", Name(".zelnor-batch-linked"));
    fs::create_directory(Name(".zelnor-batch-killed"));
    Make();
    EXPECT_THAT(Names(),
                UnorderedElementsAre(".zelnor-batch-locked", ".zelnor-batch-ABCDEF", ".zelnor-elsewise-ab",
                                     ".zelnor-batch-linked", "target", "films"));
}

TEST_F(NewFolderOfABatch, LeavesWhatOthersHavePutIntoOneThatWasLeft)
{
    fs::create_directories(Name(".zelnor-batch-killed/jobs"));
    for (const char* const file : {"000001.json", "1.txt", "notes.json", "1", ".json"})
    {
        WriteFile(Name(".zelnor-batch-killed/jobs/" + std::string(file)), "");
    }
    Make();
    std::vector<std::string> left;
    for (const auto& entry : fs::directory_iterator(Name(".zelnor-batch-killed/jobs")))
    {
        left.push_back(entry.path().filename().string());
    }
    EXPECT_THAT(left, UnorderedElementsAre("1.txt", "notes.json", "1", ".json"));
}

TEST_F(NewFolderOfABatch, LeavesThatOfAnotherUser)
{
    if (::geteuid() != 0)
    {
        GTEST_SKIP() << "only root can make a folder of another user";
    }
    const std::string other = Name(".zelnor-batch-others");
    fs::create_directory(other);
    ASSERT_EQ(::chown(other.c_str(), 65534, 65534), 0);
    Make();
    EXPECT_THAT(Names(), UnorderedElementsAre(".zelnor-batch-others", "films"));
}

TEST_F(NewFolderWithoutACall, IsNotMadeWithoutARandomName)
{
    EXPECT_EQ(ReasonWithout({SYS_getrandom, EIO}), "Input/output error");
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(NewFolderWithoutACall, IsNotMadeWhereNoFolderCanBeMade)
{
    EXPECT_EQ(ReasonWithout({SYS_mkdirat, EACCES, FailingCall::Argument{2, 0700}}), "Permission denied");
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(NewFolderWithoutACall, IsNotMadeWhenEveryNameIsTaken)
{
    EXPECT_EQ(ReasonWithout({SYS_mkdirat, EEXIST, FailingCall::Argument{2, 0700}}),
              "Device or resource busy");
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(NewFolderWithoutACall, IsNotMadeWithoutTheFoldersInside)
{
    EXPECT_EQ(ReasonWithout({SYS_mkdirat, ENOSPC, FailingCall::Argument{2, 0777}}),
              "No space left on device");
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(NewFolderWithoutACall, IsNotLeftWhenItCannotBeOpened)
{
    EXPECT_EQ(ReasonWithout({SYS_openat, EMFILE, FailingCall::Argument{2, kOpenFolder}}),
              "Too many open files");
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(NewFolderWithoutACall, IsNotUsedWhenAnotherRunHasTakenIt)
{
    EXPECT_EQ(ReasonWithout({SYS_flock, EWOULDBLOCK}), "Device or resource busy");
    EXPECT_FALSE(fs::exists(Name()));
}

TEST_F(NewFolderWithoutACall, IsMadeWhereTheFileSystemHasNoLocks) { ExpectWholeWithout({SYS_flock, ENOLCK}); }

TEST_F(NewFolderWithoutACall, IsMadeWhereNothingCanBeRenamedWithoutReplacing)
{
    ExpectWholeWithout({SYS_renameat2, EINVAL});
    fs::remove_all(Name());
    ExpectWholeWithout({SYS_renameat2, ENOSYS});
}

TEST_F(NewFolderWithoutACall, IsGoneWhenADocumentCannotBeWritten)
{
    EXPECT_EQ(ReasonWithout({SYS_openat, EMFILE, FailingCall::Argument{2, kNewFile}}), "Too many open files");
    EXPECT_EQ(ReasonWithout({SYS_write, ENOSPC, FailingCall::Argument{2, kDocumentSize}}),
              "No space left on device");
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(NewFolderWithoutACall, IsGoneWhenItCannotBeCompleted)
{
    EXPECT_EQ(ReasonWithout({SYS_fchmod, EPERM}), "Operation not permitted");
    EXPECT_EQ(ReasonWithout({SYS_syncfs, EIO}), "Input/output error");
    EXPECT_EQ(ReasonWithout({SYS_renameat2, EACCES}), "Permission denied");
    EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(NewFolderWithoutACall, IsNotSearchedForWhatWasLeftWhereNothingCanBeListed)
{
    fs::create_directory(Name(".zelnor-batch-killed"));
    RunWhileFailing({SYS_getdents64, EIO}, [this] { Make(); });
    EXPECT_THAT(Names(), UnorderedElementsAre(".zelnor-batch-killed", "films"));
}

TEST_F(NewFolderWithoutACall, PassesOnThatThereIsNoMemory)
{
    RunWhileFailing({SYS_mkdirat, ENOMEM}, [this] { EXPECT_THROW(Make(), std::bad_alloc); });
    EXPECT_THAT(Names(), IsEmpty());
}

} // namespace
