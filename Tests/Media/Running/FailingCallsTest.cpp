// What becomes of a run when the system refuses what hardly ever fails.

#include "Media/Running/ChildStart.h"
#include "Media/Running/Files.h"
#include "Media/Running/Subprocess.h"
#include "Media/Running/WorkFolder.h"

#include "Tests/Support/FailingCall.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

#if defined(__has_feature)
#if __has_feature(undefined_behavior_sanitizer)
#define ZELNOR_TESTS_WITH_UBSAN
#endif
#endif
#if defined(ZELNOR_TESTS_WITH_UBSAN)
/// It looks at memory through pipes of its own, and takes an object for none when it gets none.
constexpr bool kMayPipesFail = false;
#else
constexpr bool kMayPipesFail = true;
#endif

/// What makes a process.
#if defined(SYS_vfork)
constexpr long kStart = SYS_vfork;
#else
constexpr long kStart = SYS_clone;
#endif

constexpr const char* kNotAllowed = "this system does not let calls fail";

FailingCall::Argument Flags(int flags) { return {2, static_cast<std::uint32_t>(flags)}; }

/// The text of the error of a program that is not started.
std::string ErrorOfRun(const FailingCall& call, const std::string& input)
{
    std::string text = kNotAllowed;
    RunWhileFailing(call, [&] {
        SubprocessOptions options;
        options.input = input;
        try
        {
            RunSubprocess({"cat"}, options);
            text = "no error";
        }
        catch (const SubprocessError& error)
        {
            text = error.what();
        }
    });
    return text;
}

/// The reason why no folder can be made, which leaves nothing behind.
int ErrorOfWorkFolder(const FailingCall& call)
{
    const TemporaryFolder parent;
    int reason = -1;
    RunWhileFailing(call, [&] {
        try
        {
            const WorkFolder folder(parent.Path().string(), 0666);
            reason = 0;
        }
        catch (const std::system_error& error)
        {
            reason = error.code().value();
        }
    });
    EXPECT_THAT(parent.Names(), IsEmpty());
    return reason;
}

class FailingCalls : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!RunWhileFailing({SYS_fsync, EIO}, [] {}))
        {
            GTEST_SKIP() << kNotAllowed;
        }
    }
};

TEST_F(FailingCalls, WithoutAPipeNoProgramIsStarted)
{
    if (!kMayPipesFail)
    {
        GTEST_SKIP() << "the undefined-behaviour sanitizer needs pipes";
    }
    EXPECT_EQ(ErrorOfRun({SYS_pipe2, EMFILE}, ""), "Cannot make a pipe: Too many open files");
}

TEST_F(FailingCalls, WithoutMemoryForItsInputNoProgramIsStarted)
{
    EXPECT_EQ(ErrorOfRun({SYS_memfd_create, ENFILE}, "text"),
              "Cannot make a program's input: Too many open files in system");
}

TEST_F(FailingCalls, AProgramIsNotStartedWithAPartOfItsInput)
{
    constexpr std::uint32_t kSize = 11;
    EXPECT_EQ(ErrorOfRun({SYS_write, ENOSPC, FailingCall::Argument{2, kSize}}, std::string(kSize, 'x')),
              "Cannot write to memory: No space left on device");
}

TEST_F(FailingCalls, AProcessThatCannotBeMadeIsAnError)
{
    EXPECT_EQ(ErrorOfRun({kStart, EAGAIN}, ""), "Cannot run 'cat': Resource temporarily unavailable");
}

TEST_F(FailingCalls, AFilterThatCannotBeStartedIsNotTakenForOneThatIsMissing)
{
    bool failed = false;
    RunWhileFailing({kStart, EAGAIN}, [&failed] {
        try
        {
            RunFilter({"cat"}, "text");
        }
        catch (const SubprocessError& error)
        {
            failed = error.code() == std::errc::resource_unavailable_try_again;
        }
    });
    EXPECT_TRUE(failed);
}

TEST_F(FailingCalls, AProcessWithoutAPipeForItsReportIsNotMade)
{
    if (!kMayPipesFail)
    {
        GTEST_SKIP() << "the undefined-behaviour sanitizer needs pipes";
    }
    int reason = 0;
    pid_t process = -1;
    RunWhileFailing({SYS_pipe2, EMFILE}, [&] {
        reason = StartChild({{"true"}, {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}}, process);
    });
    EXPECT_EQ(reason, EMFILE);
    EXPECT_EQ(process, -1);
}

TEST_F(FailingCalls, AFolderWithoutARandomNameIsNotMade)
{
    EXPECT_EQ(ErrorOfWorkFolder({SYS_getrandom, ENOSYS}), ENOSYS);
}

TEST_F(FailingCalls, AFolderThatIsRefusedIsNotTriedAgain)
{
    EXPECT_EQ(ErrorOfWorkFolder({SYS_mkdirat, EDQUOT}), EDQUOT);
}

TEST_F(FailingCalls, AFolderThatCannotBeOpenedIsRemoved)
{
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    EXPECT_EQ(ErrorOfWorkFolder({SYS_openat, EMFILE, Flags(kFlags)}), EMFILE);
}

TEST_F(FailingCalls, AFolderThatTakesNoFileIsRemoved)
{
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    EXPECT_EQ(ErrorOfWorkFolder({SYS_openat, EDQUOT, Flags(kFlags)}), EDQUOT);
}

TEST_F(FailingCalls, AFolderHasItsOwnNameWhereProgramsMayNotLookIntoTheProcess)
{
    const TemporaryFolder parent;
    std::string name;
    std::string expected;
    RunWhileFailing({SYS_prctl, EINVAL, FailingCall::Argument{0, PR_GET_DUMPABLE}}, [&] {
        const WorkFolder folder(parent.Path().string(), 0666);
        name = folder.NameOf("output");
        expected = (parent.Path() / parent.Names().at(0) / "output").string();
    });
    EXPECT_EQ(name, expected);
    EXPECT_THAT(name, HasSubstr("/.zelnor-"));
}

TEST_F(FailingCalls, AFolderIsMadeWhereTheFileSystemHasNoLocks)
{
    EXPECT_EQ(ErrorOfWorkFolder({SYS_flock, ENOLCK}), 0);
}

TEST_F(FailingCalls, AFolderThatAnotherRunHasTakenIsNotUsed)
{
    const TemporaryFolder parent;
    int reason = 0;
    RunWhileFailing({SYS_flock, EWOULDBLOCK}, [&] {
        try
        {
            const WorkFolder folder(parent.Path().string(), 0666);
        }
        catch (const std::system_error& error)
        {
            reason = error.code().value();
        }
    });
    EXPECT_EQ(reason, EEXIST);
    // Those who took them remove them.
    EXPECT_EQ(parent.Names().size(), 10U);
}

TEST_F(FailingCalls, AFolderThatIsLockedIsUsedWhateverHasFailedBefore)
{
    const TemporaryFolder parent;
    errno = EWOULDBLOCK;
    const WorkFolder folder(parent.Path().string(), 0666);
    EXPECT_EQ(parent.Names().size(), 1U);
}

TEST_F(FailingCalls, ANameThatIsTakenIsNotUsed)
{
    EXPECT_EQ(ErrorOfWorkFolder({SYS_mkdirat, EEXIST}), EEXIST);
}

TEST_F(FailingCalls, WithoutLocksNoFolderIsTakenForAnAbandonedOne)
{
    const TemporaryFolder parent;
    std::filesystem::create_directory(parent / ".zelnor-a1B2c3");
    std::filesystem::permissions(parent / ".zelnor-a1B2c3", std::filesystem::perms::owner_all);
    RunWhileFailing({SYS_flock, ENOLCK}, [&] { RemoveAbandonedWorkFolders(parent.Path().string()); });
    EXPECT_THAT(parent.Names(), ElementsAre(".zelnor-a1B2c3"));
    RemoveAbandonedWorkFolders(parent.Path().string());
    EXPECT_THAT(parent.Names(), IsEmpty());
}

TEST_F(FailingCalls, WhatCannotBeListedIsLeftAlone)
{
    const TemporaryFolder parent;
    std::filesystem::create_directory(parent / ".zelnor-a1B2c3");
    std::filesystem::permissions(parent / ".zelnor-a1B2c3", std::filesystem::perms::owner_all);
    // What `fdopendir` asks first.
    RunWhileFailing({SYS_fcntl, EBADF, FailingCall::Argument{1, F_GETFL}},
                    [&] { RemoveAbandonedWorkFolders(parent.Path().string()); });
    EXPECT_THAT(parent.Names(), ElementsAre(".zelnor-a1B2c3"));
}

TEST_F(FailingCalls, NothingIsRemovedFromAFolderThatIsNotThere)
{
    const TemporaryFolder parent;
    RemoveAbandonedWorkFolders((parent / "missing").string());
    EXPECT_THAT(parent.Names(), IsEmpty());
}

TEST_F(FailingCalls, AFolderThatIsNotThereDoesNotFoldCase)
{
    const TemporaryFolder parent;
    EXPECT_FALSE(FoldsCase((parent / "missing").string()));
}

} // namespace
