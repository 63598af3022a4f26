#include "Media/Running/WorkFolder.h"

#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>

namespace
{

using namespace Zelnor::Testing;
using namespace Zelnor::Media;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

constexpr const char* kLeft = ".zelnor-a1B2c3";

class WorkFolders : public testing::Test
{
protected:
    /// What a killed run leaves.
    void Leave(const std::string& name = kLeft, mode_t mode = 0700) const
    {
        fs::create_directory(m_folder / name);
        WriteFile(m_folder / name / "output", "half");
        WriteFile(m_folder / name / "pass-0-0-0.log", "x");
        WriteFile(m_folder / name / "pass-0-0-0.log.mbtree", "x");
        ::chmod((m_folder / name).c_str(), mode);
    }
    void RemoveAbandoned() const { RemoveAbandonedWorkFolders(m_folder.Path().string()); }

    TemporaryFolder m_folder;
};

TEST_F(WorkFolders, ArePrivateAndDisappearWithWhatARunMakes)
{
    {
        const WorkFolder folder(m_folder.Path().string(), 0666);
        ASSERT_THAT(m_folder.Names(), ElementsAre(MatchesRegex("\\.zelnor-[0-9A-Za-z]{6}")));
        struct stat status = {};
        ASSERT_EQ(::stat((m_folder / m_folder.Names().front()).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0700U);
        EXPECT_TRUE(fs::exists(folder.NameOf("output")));
        WriteFile(folder.NameOf("pass-0-0.log"), "x");
    }
    EXPECT_THAT(m_folder.Names(), IsEmpty());
}

TEST_F(WorkFolders, KeepWhatARunDoesNotMake)
{
    std::string name;
    {
        const WorkFolder folder(m_folder.Path().string(), 0666);
        name = m_folder.Names().front();
        WriteFile(folder.NameOf("letter"), "precious");
    }
    EXPECT_EQ(ReadFile(m_folder / name / "letter"), "precious");
    EXPECT_FALSE(fs::exists(m_folder / name / "output"));
}

TEST_F(WorkFolders, NeedAFolderThatCanBeWrittenTo)
{
    try
    {
        const WorkFolder folder((m_folder / "none").string(), 0666);
        FAIL() << "nothing was thrown";
    }
    catch (const std::system_error& error)
    {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    }
}

TEST_F(WorkFolders, OfKilledRunsAreRemoved)
{
    Leave();
    fs::create_directory(m_folder / ".zelnor-000000"); // killed before the file was made
    ::chmod((m_folder / ".zelnor-000000").c_str(), 0700);
    RemoveAbandoned();
    EXPECT_THAT(m_folder.Names(), IsEmpty());
}

TEST_F(WorkFolders, OfOtherRunsAreLeftAlone)
{
    const WorkFolder folder(m_folder.Path().string(), 0666);
    RemoveAbandoned();
    EXPECT_EQ(m_folder.Names().size(), 1U);
    EXPECT_TRUE(fs::exists(folder.NameOf("output")));
}

TEST_F(WorkFolders, OfRunsOnOtherMachinesAreLeftAlone)
{
    // There a folder's lock is not seen, but that of a file is.
    Leave();
    WriteFile(m_folder / kLeft / "lock", "");
    const Descriptor elsewhere(::open((m_folder / kLeft / "lock").c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(::flock(elsewhere.Get(), LOCK_EX), 0);
    RemoveAbandoned();
    EXPECT_TRUE(fs::exists(m_folder / kLeft / "output"));

    ::flock(elsewhere.Get(), LOCK_UN);
    RemoveAbandoned();
    EXPECT_THAT(m_folder.Names(), IsEmpty());
}

TEST_F(WorkFolders, AreLockedByAFileToo)
{
    const WorkFolder folder(m_folder.Path().string(), 0666);
    const Descriptor other(::open(folder.NameOf("lock").c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_TRUE(other.IsOpen());
    EXPECT_NE(::flock(other.Get(), LOCK_EX | LOCK_NB), 0);
}

TEST_F(WorkFolders, ThatHoldAnythingElseAreLeftAlone)
{
    Leave();
    WriteFile(m_folder / kLeft / "letter", "precious");
    RemoveAbandoned();
    EXPECT_TRUE(fs::exists(m_folder / kLeft / "output"));
    EXPECT_TRUE(fs::exists(m_folder / kLeft / "letter"));
}

TEST_F(WorkFolders, OfOtherNamesOrPermissionsAreLeftAlone)
{
    Leave(kLeft, 0750);
    Leave(".zelnor-a1B2c3d");
    Leave(".zelnor-a1B2c");
    Leave(".zelnor-a1B2c.");
    Leave("zelnor-a1B2c3");
    RemoveAbandoned();
    EXPECT_EQ(m_folder.Names().size(), 5U);
}

TEST_F(WorkFolders, OfOtherUsersAreLeftAlone)
{
    Leave();
    constexpr uid_t kNobody = 65534;
    if (::chown((m_folder / kLeft).c_str(), kNobody, kNobody) != 0)
    {
        GTEST_SKIP() << "only root gives folders away";
    }
    RemoveAbandoned();
    EXPECT_TRUE(fs::exists(m_folder / kLeft / "output"));
}

TEST_F(WorkFolders, AreNotFoundThroughLinks)
{
    fs::create_directory(m_folder / "other");
    WriteFile(m_folder / "other/output", "precious");
    ::chmod((m_folder / "other").c_str(), 0700);
    fs::create_directory_symlink("other", m_folder / kLeft);
    RemoveAbandoned();
    EXPECT_EQ(ReadFile(m_folder / "other/output"), "precious");
    EXPECT_THAT(m_folder.Names(), UnorderedElementsAre("other", kLeft));
}

TEST_F(WorkFolders, LoseLinksAndNotWhatTheyLeadTo)
{
    Leave();
    WriteFile(m_folder / "letter", "precious");
    fs::remove(m_folder / kLeft / "output");
    fs::create_symlink("../letter", m_folder / kLeft / "output");
    RemoveAbandoned();
    EXPECT_EQ(ReadFile(m_folder / "letter"), "precious");
    EXPECT_THAT(m_folder.Names(), ElementsAre("letter"));
}

TEST_F(WorkFolders, ThatCannotBeRemovedAreNoError)
{
    Leave();
    fs::create_directory(m_folder / kLeft / "pass-folder");
    RemoveAbandoned();
    EXPECT_TRUE(fs::exists(m_folder / kLeft / "pass-folder"));
    RemoveAbandonedWorkFolders((m_folder / "none").string());
}

} // namespace
