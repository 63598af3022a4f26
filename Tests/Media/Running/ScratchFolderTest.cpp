#include "Media/Running/TargetFile.h"

#include "Media/MediaException.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/FailingCall.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace
{

using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using Zelnor::Media::MediaException;
using Zelnor::Media::RunException;
using Zelnor::Media::TargetFile;

namespace fs = std::filesystem;

bool Never() { return false; }

/// A target whose scratch folder is in another file system, in memory, where there is one.
class ScratchFolder : public testing::Test
{
protected:
    ScratchFolder()
    {
        std::string name = "/dev/shm/zelnor-test-XXXXXX";
        m_scratch = ::mkdtemp(name.data()) == nullptr ? (m_own / "scratch").string() : name;
        fs::create_directories(m_scratch);
    }
    ~ScratchFolder() override
    {
        std::error_code ignored;
        fs::remove_all(m_scratch, ignored);
    }

    std::string Name() const { return (m_folder / "out").string(); }
    bool IsScratchEmpty() const { return fs::is_empty(m_scratch); }
    void ExpectNothingLeft() const
    {
        EXPECT_TRUE(IsScratchEmpty());
        EXPECT_THAT(m_folder.Names(), IsEmpty());
    }

    TemporaryFolder m_own;
    TemporaryFolder m_folder;
    std::string m_scratch;
};

TEST_F(ScratchFolder, IsWhereTheFileIsWrittenUntilItIsPutInPlace)
{
    TargetFile target(Name(), false, m_scratch);
    const std::string text(3'000'001, 'x');
    WriteFile(target.GetWorkName(), text);
    WriteFile(target.GetPassLog() + "0.log", "pass");
    EXPECT_FALSE(IsScratchEmpty());
    EXPECT_EQ(fs::canonical(target.GetWorkName()).string().substr(0, m_scratch.size()), m_scratch);
    EXPECT_FALSE(fs::exists(Name()));
    target.Commit();
    EXPECT_TRUE(IsScratchEmpty());
    EXPECT_THAT(m_folder.Names(), ElementsAre("out"));
    EXPECT_TRUE(ReadFile(Name()) == text);
}

TEST_F(ScratchFolder, IsEmptiedWhenTheFileLeavesIt)
{
    TargetFile target(Name(), false, m_scratch);
    WriteFile(target.GetWorkName(), "new");
    EXPECT_TRUE(target.LeaveScratch(&Never));
    EXPECT_TRUE(IsScratchEmpty());
    EXPECT_EQ(ReadFile(target.GetWorkName()), "new");
    EXPECT_FALSE(fs::exists(Name()));
    EXPECT_TRUE(target.LeaveScratch(&Never));
    target.Commit();
    EXPECT_EQ(ReadFile(Name()), "new");
}

TEST_F(ScratchFolder, AndTheTargetsHoldNothingWithoutCommit)
{
    {
        const TargetFile target(Name(), false, m_scratch);
        WriteFile(target.GetWorkName(), "half");
    }
    ExpectNothingLeft();
    {
        TargetFile target(Name(), false, m_scratch);
        WriteFile(target.GetWorkName(), "whole");
        target.LeaveScratch(&Never);
    }
    ExpectNothingLeft();
}

TEST_F(ScratchFolder, IsLeftNoFurtherOnceThatIsCancelled)
{
    WriteFile(Name(), "old");
    {
        TargetFile target(Name(), true, m_scratch);
        WriteFile(target.GetWorkName(), std::string(3'000'001, 'x'));
        int asked = 0;
        EXPECT_FALSE(target.LeaveScratch([&asked] { return ++asked == 2; }));
        EXPECT_EQ(asked, 2);
    }
    EXPECT_TRUE(IsScratchEmpty());
    EXPECT_THAT(m_folder.Names(), ElementsAre("out"));
    EXPECT_EQ(ReadFile(Name()), "old");
}

TEST_F(ScratchFolder, ChangesNeitherThePermissionsNorWhatMayBeReplaced)
{
    WriteFile(Name(), "old");
    ::chmod(Name().c_str(), 0640);
    {
        TargetFile target(Name(), true, m_scratch);
        WriteFile(target.GetWorkName(), "new");
        target.Commit();
    }
    struct stat status = {};
    ASSERT_EQ(::stat(Name().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
    EXPECT_EQ(ReadFile(Name()), "new");
    const Thrown thrown = ExpectThrow<RunException>([this] { TargetFile(Name(), false, m_scratch); });
    EXPECT_EQ(thrown.description, "'" + Name() + "' exists already; the option 'overwrite' replaces it");
    EXPECT_TRUE(IsScratchEmpty());
}

TEST_F(ScratchFolder, DoesNotLetAFileThatAppearedMeanwhileBeReplaced)
{
    TargetFile target(Name(), false, m_scratch);
    WriteFile(target.GetWorkName(), "new");
    WriteFile(Name(), "somebody else's");
    ExpectThrow<RunException>([&target] { target.Commit(); });
    EXPECT_EQ(ReadFile(Name()), "somebody else's");
}

TEST_F(ScratchFolder, HoldsWhatIsKeptAsideToo)
{
    TargetFile target(Name() + ".mp4", false, m_scratch);
    WriteFile(target.GetWorkName(), "different");
    EXPECT_EQ(target.KeepAside(), Name() + ".unverified.mp4");
    EXPECT_TRUE(IsScratchEmpty());
    EXPECT_EQ(ReadFile(Name() + ".unverified.mp4"), "different");
}

TEST_F(ScratchFolder, ThatIsNotThereIsRefusedByItsName)
{
    for (const auto& [folder, reason] :
         {std::pair<std::string, std::string>{m_scratch + "/none", "No such file or directory"},
          {Name(), "No such file or directory"},
          {m_scratch + std::string("\0x", 2), "Invalid argument"}})
    {
        const std::string name = folder;
        const Thrown thrown = ExpectThrow<RunException>([&] { TargetFile(Name(), false, name); });
        EXPECT_EQ(thrown.description, "Cannot write in the scratch folder '" + name + "': " + reason);
        EXPECT_EQ(thrown.Get<MediaException::TagFile>(), Name());
        ExpectNothingLeft();
    }
}

TEST_F(ScratchFolder, IsNotReadThroughALinkThatTookTheFilesPlace)
{
    WriteFile(m_own / "secret", "secret");
    {
        TargetFile target(Name(), false, m_scratch);
        fs::remove(target.GetWorkName());
        fs::create_symlink(m_own / "secret", target.GetWorkName());
        const Thrown thrown = ExpectThrow<RunException>([&target] { target.Commit(); });
        EXPECT_EQ(thrown.description, "Cannot write '" + Name() + "': Too many levels of symbolic links");
    }
    ExpectNothingLeft();
}

TEST_F(ScratchFolder, IsEmptiedAndTheFormerFileKeptWhenTheTargetsDiskIsFull)
{
    // A size by which its write is told from those of sanitizers.
    constexpr std::uint32_t kSize = 4321;
    WriteFile(Name(), "old");
    std::string text;
    bool isAllowed = false;
    {
        TargetFile target(Name(), true, m_scratch);
        WriteFile(target.GetWorkName(), std::string(kSize, 'x'));
        isAllowed = RunWhileFailing({SYS_write, ENOSPC, FailingCall::Argument{2, kSize}}, [&] {
            text = ExpectThrow<RunException>([&] { target.Commit(); }).description.value_or("");
        });
    }
    EXPECT_TRUE(IsScratchEmpty());
    EXPECT_THAT(m_folder.Names(), ElementsAre("out"));
    EXPECT_EQ(ReadFile(Name()), "old");
    if (!isAllowed)
    {
        GTEST_SKIP() << "calls cannot be made to fail here";
    }
    EXPECT_EQ(text, "Cannot write '" + Name() + "': No space left on device");
}

TEST_F(ScratchFolder, HoldsThePassesOfATargetThatIsWrittenDirectly)
{
    TargetFile target("/dev/null", false, m_scratch);
    EXPECT_EQ(target.GetWorkName(), "/dev/null");
    EXPECT_EQ(fs::canonical(fs::path(target.GetPassLog()).parent_path()).string().substr(0, m_scratch.size()),
              m_scratch);
    EXPECT_TRUE(target.LeaveScratch(&Never));
    target.Commit();
}

} // namespace
