// What becomes of a target when the system refuses what hardly ever fails.

#include "Media/Running/TargetFile.h"

#include "Media/MediaException.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/FailingCall.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace
{

using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using Zelnor::Media::RemoveAbandonedWorkFolders;
using Zelnor::Media::RunException;
using Zelnor::Media::TargetFile;

namespace fs = std::filesystem;

class FailingTargets : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!RunWhileFailing({SYS_fsync, EIO}, [] {}))
        {
            GTEST_SKIP() << "this system does not let calls fail";
        }
    }

    std::string Name() const { return (m_folder / "out").string(); }

    /// What finishing a target says while a call fails; nothing when it succeeds. The target's file is
    /// complete by then.
    std::string ErrorOfCommit(bool overwrite, const FailingCall& call) const
    {
        TargetFile target(Name(), overwrite);
        WriteFile(target.GetWorkName(), "new");
        std::string text = "not tried";
        RunWhileFailing(call, [&] {
            try
            {
                target.Commit();
                text.clear();
            }
            catch (const RunException& exception)
            {
                text = Zelnor::Testing::details::GetTag<Zelnor::TagDescription>(exception).value_or(
                    "no description");
            }
        });
        return text;
    }

    std::string Refusal(const std::string& reason) const
    {
        return "Cannot write '" + Name() + "': " + reason;
    }

    void ExpectOldFileIsKept(const FailingCall& call, const std::string& reason) const
    {
        WriteFile(Name(), "old");
        EXPECT_EQ(ErrorOfCommit(true, call), Refusal(reason));
        EXPECT_EQ(ReadFile(Name()), "old");
        EXPECT_THAT(m_folder.Names(), ElementsAre("out"));
    }

    TemporaryFolder m_folder;
};

constexpr FailingCall kNoRenaming = {SYS_renameat2, EINVAL};

TEST_F(FailingTargets, TakeTheirNameAsALinkWhereNothingCanBeRenamedWithoutReplacing)
{
    EXPECT_EQ(ErrorOfCommit(false, kNoRenaming), "");
    EXPECT_EQ(ReadFile(Name()), "new");
    EXPECT_THAT(m_folder.Names(), ElementsAre("out"));
    EXPECT_EQ(fs::hard_link_count(Name()), 1U);
}

TEST_F(FailingTargets, AreLinkedWhereTheSystemDoesNotKnowTheCall)
{
    EXPECT_EQ(ErrorOfCommit(false, {SYS_renameat2, ENOSYS}), "");
    EXPECT_EQ(ReadFile(Name()), "new");
}

TEST_F(FailingTargets, AreInPlaceEvenWhenTheirOldNameCannotBeRemoved)
{
    TargetFile target(Name(), false);
    WriteFile(target.GetWorkName(), "new");
    RunWhileFailing(kNoRenaming, [&] {
        EXPECT_TRUE(MakeFail({SYS_unlinkat, EPERM}));
        EXPECT_NO_THROW(target.Commit());
    });
    EXPECT_EQ(ReadFile(Name()), "new");
    EXPECT_EQ(m_folder.Names().size(), 2U) << "the private folder";
    RemoveAbandonedWorkFolders(m_folder.Path().string());
    EXPECT_THAT(m_folder.Names(), ElementsAre("out"));
    EXPECT_EQ(ReadFile(Name()), "new");
}

TEST_F(FailingTargets, AreKeptAsideUnderANewNameWhereNothingCanBeRenamedWithoutReplacing)
{
    WriteFile(Name() + ".unverified", "earlier");
    TargetFile target(Name(), false);
    WriteFile(target.GetWorkName(), "new");
    std::string kept;
    RunWhileFailing(kNoRenaming, [&] { kept = target.KeepAside(); });
    EXPECT_EQ(kept, Name() + ".unverified-2");
    EXPECT_EQ(ReadFile(kept), "new");
    EXPECT_EQ(ReadFile(Name() + ".unverified"), "earlier");
    EXPECT_EQ(m_folder.Names().size(), 2U);
}

TEST_F(FailingTargets, AreNotKeptAsideWhereTheyCannotBeRenamed)
{
    std::string text;
    {
        TargetFile target(Name(), false);
        WriteFile(target.GetWorkName(), "new");
        RunWhileFailing({SYS_renameat2, EDQUOT}, [&] {
            text = ExpectThrow<RunException>([&] { target.KeepAside(); }).description.value_or("");
        });
    }
    EXPECT_EQ(text, Refusal("Disk quota exceeded"));
    EXPECT_THAT(m_folder.Names(), IsEmpty());
}

TEST_F(FailingTargets, DoNotReplaceAFileByALink)
{
    TargetFile target(Name(), false);
    WriteFile(target.GetWorkName(), "new");
    WriteFile(Name(), "other");
    std::string text;
    RunWhileFailing(kNoRenaming, [&] {
        text = ExpectThrow<RunException>([&] { target.Commit(); }).description.value_or("");
    });
    EXPECT_EQ(text, Refusal("File exists"));
    EXPECT_EQ(ReadFile(Name()), "other");
}

TEST_F(FailingTargets, AreRefusedWhenTheyCannotBeRenamed)
{
    EXPECT_EQ(ErrorOfCommit(false, {SYS_renameat2, EDQUOT}), Refusal("Disk quota exceeded"));
    EXPECT_THAT(m_folder.Names(), IsEmpty());
}

TEST_F(FailingTargets, LeaveTheOldFileWhenTheyCannotTakeItsPlace)
{
    ExpectOldFileIsKept({SYS_renameat, EXDEV}, "Invalid cross-device link");
}

TEST_F(FailingTargets, LeaveTheOldFileWhenTheyAreNotOnTheDisk)
{
    ExpectOldFileIsKept({SYS_fsync, EIO}, "Input/output error");
}

TEST_F(FailingTargets, LeaveTheOldFileWhenItsPermissionsCannotBeKept)
{
    ExpectOldFileIsKept({SYS_fchmod, EPERM}, "Operation not permitted");
}

TEST_F(FailingTargets, AreRefusedWhenNothingIsKnownOfThem)
{
    // What `fstat` calls.
    constexpr auto kOpenFile = static_cast<std::uint32_t>(AT_EMPTY_PATH);
    ExpectOldFileIsKept({SYS_newfstatat, ESTALE, FailingCall::Argument{3, kOpenFile}}, "Stale file handle");
}

TEST_F(FailingTargets, AreNotMoreOpenWhenTheGroupOfTheOldFileCannotBeKept)
{
    if (::geteuid() != 0)
    {
        GTEST_SKIP() << "only root can make a file of another group";
    }
    struct Case
    {
        unsigned before;
        unsigned after;
    };
    for (const Case& each :
         {Case{0664, 0644}, Case{0640, 0600}, Case{0604, 0600}, Case{0677, 0677}, Case{0753, 0711}})
    {
        SCOPED_TRACE(each.before);
        WriteFile(Name(), "old");
        ASSERT_EQ(::chown(Name().c_str(), 0, 12345), 0);
        ASSERT_EQ(::chmod(Name().c_str(), each.before), 0);
        EXPECT_EQ(ErrorOfCommit(true, {SYS_fchown, EPERM}), "");
        struct stat status = {};
        ASSERT_EQ(::stat(Name().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, each.after);
        EXPECT_EQ(ReadFile(Name()), "new");
        fs::remove(Name());
    }
}

TEST_F(FailingTargets, AreNotAPipeThatTheProgramLeft)
{
    TargetFile target(Name(), false);
    fs::remove(target.GetWorkName());
    ASSERT_EQ(::mkfifo(target.GetWorkName().c_str(), 0600), 0);
    EXPECT_EQ(ExpectThrow<RunException>([&] { target.Commit(); }).description, Refusal("it became a pipe"));
    EXPECT_FALSE(fs::exists(Name()));
}

TEST_F(FailingTargets, AreNotAFolderThatTheProgramLeft)
{
    TargetFile target(Name(), false);
    const fs::path work = target.GetWorkName();
    fs::remove(work);
    fs::create_directory(work);
    EXPECT_EQ(ExpectThrow<RunException>([&] { target.Commit(); }).description, Refusal("it became a folder"));
    fs::remove(work);
}

TEST_F(FailingTargets, ThatAreWrittenDirectlyKeepTheirLogsInTheUsualPlaceWithoutAnother)
{
    const char* const former = std::getenv("TMPDIR");
    const std::string kept = former == nullptr ? "" : former;
    ::setenv("TMPDIR", (m_folder / "missing").c_str(), 1);
    const TargetFile target("/dev/null", false);
    former == nullptr ? ::unsetenv("TMPDIR") : ::setenv("TMPDIR", kept.c_str(), 1);
    const fs::path work = fs::canonical(fs::path(target.GetPassLog()).parent_path());
    EXPECT_EQ(work.parent_path(), fs::canonical("/tmp"));
}

} // namespace
