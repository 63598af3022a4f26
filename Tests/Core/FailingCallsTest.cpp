// What becomes of a file that is saved when the system refuses what hardly ever fails.

#include "Core/Interfaces/DataStream.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/FailingCall.h"
#include "Tests/Support/FileFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>

namespace Zelnor::Core
{

namespace
{

namespace fs = std::filesystem;
using namespace Testing;

constexpr const char* kNotAllowed = "this system does not let calls fail";

class FailingSave : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!RunWhileFailing({SYS_fsync, EIO}, [] {}))
        {
            GTEST_SKIP() << kNotAllowed;
        }
        WriteFile(m_target, "old");
    }
    void TearDown() override
    {
        if (!IsSkipped())
        {
            // Without litter, whatever failed.
            EXPECT_THAT(m_folder.Names(), ::testing::ElementsAre("job.json"));
        }
    }

    /// What it throws to save the target while a call fails.
    std::string ErrorOfSave(const FailingCall& call) const
    {
        std::string text = kNotAllowed;
        RunWhileFailing(call, [&] {
            text = "no error";
            try
            {
                const auto output = AtomicFileDataOutput::Create(m_target);
                Put(*output, "new");
                output->Commit();
            }
            catch (const CoreException& exception)
            {
                text = Testing::details::GetTag<TagDescription>(exception).value_or("no description");
            }
        });
        return text;
    }

    /// The text of the error that a save ends with for this reason, which leaves the old file.
    void ExpectRefusal(const FailingCall& call, const std::string& reason) const
    {
        EXPECT_EQ(ErrorOfSave(call), "Cannot write '" + m_target.string() + "': " + reason);
        EXPECT_EQ(ReadFile(m_target), "old");
    }

    /// A save to which the failing call does not matter.
    void ExpectSuccess(const FailingCall& call) const
    {
        EXPECT_EQ(ErrorOfSave(call), "no error");
        EXPECT_EQ(ReadFile(m_target), "new");
    }

    TemporaryFolder m_folder;
    fs::path m_target = m_folder / "job.json";
};

TEST_F(FailingSave, IsRefusedWhenThePermissionsCannotBeKept)
{
    ASSERT_EQ(::chmod(m_target.c_str(), 0640), 0);
    ExpectRefusal({SYS_fchmod, EPERM}, "Operation not permitted");
}

TEST_F(FailingSave, IsRefusedWhenTheSpecialBitsCannotBeKept)
{
    constexpr std::uint32_t kMode = 04755;
    ASSERT_EQ(::chmod(m_target.c_str(), kMode), 0);
    ExpectRefusal({SYS_fchmod, EPERM, FailingCall::Argument{1, kMode}}, "Operation not permitted");
}

TEST_F(FailingSave, IsRefusedWhenTheFileCannotTakeItsPlace)
{
    ExpectRefusal({SYS_renameat, EXDEV}, "Invalid cross-device link");
}

TEST_F(FailingSave, IsRefusedWhenTheFileCannotBeMade)
{
    constexpr auto kFlags = static_cast<std::uint32_t>(O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC);
    ExpectRefusal({SYS_openat, EDQUOT, FailingCall::Argument{2, kFlags}}, "Disk quota exceeded");
}

TEST_F(FailingSave, IsRefusedWhenNothingIsKnownOfTheNewFile)
{
    // What `fstat` calls.
    constexpr auto kOpenFile = static_cast<std::uint32_t>(AT_EMPTY_PATH);
    ExpectRefusal({SYS_newfstatat, ESTALE, FailingCall::Argument{3, kOpenFile}}, "Stale file handle");
}

TEST_F(FailingSave, DoesNotTakeANameThatIsTaken)
{
    std::string name;
    {
        const auto output = AtomicFileDataOutput::Create(m_target);
        for (const std::string& found : m_folder.Names())
        {
            name = found == "job.json" ? name : found;
        }
    }
    const std::size_t number = name.rfind('-') + 1;
    const fs::path taken =
        m_folder / (name.substr(0, number) + std::to_string(std::stoul(name.substr(number)) + 1));
    ASSERT_TRUE(fs::create_directory(taken));
    ExpectSuccess({SYS_fsync, EIO, FailingCall::Argument{0, ~0U}});
    EXPECT_TRUE(fs::remove(taken));
}

TEST_F(FailingSave, IsRefusedWhenEveryNameIsTaken)
{
    constexpr auto kFlags = static_cast<std::uint32_t>(O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC);
    ExpectRefusal({SYS_openat, EEXIST, FailingCall::Argument{2, kFlags}},
                  "Another process takes every temporary file beside it");
}

TEST_F(FailingSave, IsRefusedWhenSomebodyLocksEveryTemporaryFileFirst)
{
    ExpectRefusal({SYS_flock, EWOULDBLOCK}, "Another process takes every temporary file beside it");
    EXPECT_EQ(m_folder.Names().size(), 101u) << "whoever locks a file removes it";
    // The locks are gone.
    AtomicFileDataOutput::Create(m_target);
}

TEST_F(FailingSave, LeavesWhatAKilledOneLeftWhenItCannotBeOpened)
{
    RunForked([this] {
        const auto output = AtomicFileDataOutput::Create(m_target);
        return ::raise(SIGKILL);
    });
    EXPECT_EQ(m_folder.Names().size(), 2u);
    constexpr int kFlags = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const auto failing = [](int flags) {
        return FailingCall{SYS_openat, EMFILE, FailingCall::Argument{2, static_cast<std::uint32_t>(flags)}};
    };
    RunWhileFailing(failing(O_WRONLY | kFlags), [&] {
        EXPECT_TRUE(MakeFail(failing(O_RDONLY | kFlags)));
        AtomicFileDataOutput::Create(m_target);
    });
    EXPECT_EQ(m_folder.Names().size(), 2u);
    AtomicFileDataOutput::Create(m_target);
}

TEST_F(FailingSave, SucceedsWhereTheFileSystemHasNoLocks) { ExpectSuccess({SYS_flock, ENOLCK}); }

TEST_F(FailingSave, SucceedsWhenTheFolderCannotBeListed)
{
    // What `fdopendir` asks first.
    ExpectSuccess({SYS_fcntl, EBADF, FailingCall::Argument{1, F_GETFL}});
}

TEST_F(FailingSave, SucceedsWhenTheFolderCannotBeOpenedToBeSynchronized)
{
    constexpr auto kFlags = static_cast<std::uint32_t>(O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ExpectSuccess({SYS_openat, EACCES, FailingCall::Argument{2, kFlags}});
}

} // namespace

} // namespace Zelnor::Core
