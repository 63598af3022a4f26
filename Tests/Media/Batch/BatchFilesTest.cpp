#include "Media/Batch/BatchFiles.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/FailingCall.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <new>
#include <string>

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;

class FilesOfABatch : public testing::Test
{
protected:
    FilesOfABatch() { WriteFile(m_folder / "1.json", "old"); }

    std::string ReasonAgainstReading(const std::string& file, std::size_t most = kMostOfDocument) const
    {
        return ExpectThrow<JobException>([&] { ReadFileIn(m_opened, file, "b/" + file, most); })
            .description.value_or("");
    }
    /// So that a sanitizer, which looks at memory through pipes of its own, may write meanwhile.
    static constexpr std::uint32_t kNewSize = 3;
    void Write() const { WriteFileIn(m_opened, "1.json", "b/1.json", "new"); }
    std::string Text() const { return ReadFile(m_folder / "1.json"); }
    const TemporaryFolder& Folder() const { return m_folder; }
    const Descriptor& Opened() const { return m_opened; }

private:
    TemporaryFolder m_folder;
    Descriptor m_opened = Descriptor(::open(m_folder.Path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
};

/// What becomes of the files when the system refuses what hardly ever fails.
class FilesOfABatchWithoutACall : public FilesOfABatch
{
protected:
    void SetUp() override
    {
        if (!RunWhileFailing({SYS_fsync, EIO}, [] {}))
        {
            GTEST_SKIP() << "this system does not let calls fail";
        }
    }
    std::string ReasonAgainstReadingWithout(const FailingCall& call) const
    {
        std::string reason;
        RunWhileFailing(call, [&] { reason = ReasonAgainstReading("1.json"); });
        return reason;
    }
    /// Nothing is changed then.
    std::string ReasonAgainstWritingWithout(const FailingCall& call) const
    {
        std::string reason;
        RunWhileFailing(
            call, [&] { reason = ExpectThrow<RunException>([this] { Write(); }).description.value_or(""); });
        EXPECT_EQ(Text(), "old");
        EXPECT_THAT(Folder().Names(), ElementsAre("1.json"));
        return reason;
    }
};

TEST_F(FilesOfABatch, AreReadWhereTheyAre)
{
    EXPECT_EQ(ReadFileIn(Opened(), "1.json", "b/1.json"), "old");
    EXPECT_EQ(ReadFileIn(Opened(), "2.json", "b/2.json"), std::nullopt);
}

TEST_F(FilesOfABatch, AreReadUpToTheirMostBytes)
{
    EXPECT_EQ(ReadFileIn(Opened(), "1.json", "b/1.json", 3), "old");
    EXPECT_EQ(ReasonAgainstReading("1.json", 2), "Cannot read 'b/1.json': it is larger than 2 bytes");
}

TEST_F(FilesOfABatch, AreNotReadFurtherThanTheirMostBytesWhenTheyGrow)
{
    // The system tells no size of its own files.
    const Descriptor process(::open("/proc/self", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    EXPECT_EQ(
        ExpectThrow<JobException>([&process] { ReadFileIn(process, "status", "b/1.json", 10); }).description,
        "Cannot read 'b/1.json': it is larger than 10 bytes");
}

TEST_F(FilesOfABatch, AreNeitherFoldersNorPipes)
{
    std::filesystem::create_directory(Folder() / "2.json");
    EXPECT_EQ(ReasonAgainstReading("2.json"), "Cannot open 'b/2.json': Invalid argument");
    ASSERT_EQ(::mkfifo((Folder() / "3.json").c_str(), 0600), 0);
    EXPECT_EQ(ReasonAgainstReading("3.json"), "Cannot open 'b/3.json': Invalid argument");
}

TEST_F(FilesOfABatch, AreReplacedAlsoWhereAKilledRunHasLeftAHalf)
{
    WriteFile(Folder() / ".1.json.new", "ne");
    Write();
    EXPECT_EQ(Text(), "new");
    EXPECT_THAT(Folder().Names(), ElementsAre("1.json"));
}

TEST_F(FilesOfABatchWithoutACall, AreRefusedWhenTheyCannotBeRead)
{
    EXPECT_EQ(ReasonAgainstReadingWithout({SYS_read, EIO}), "Cannot read 'b/1.json': Input/output error");
    EXPECT_EQ(ReasonAgainstReadingWithout({SYS_newfstatat, EIO}),
              "Cannot open 'b/1.json': Input/output error");
}

TEST_F(FilesOfABatchWithoutACall, StayAsTheyWereWhenTheyCannotBeWritten)
{
    constexpr std::uint32_t kNewFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    EXPECT_EQ(ReasonAgainstWritingWithout({SYS_openat, EMFILE, FailingCall::Argument{2, kNewFile}}),
              "Cannot write 'b/1.json': Too many open files");
    EXPECT_EQ(ReasonAgainstWritingWithout({SYS_write, ENOSPC, FailingCall::Argument{2, kNewSize}}),
              "Cannot write 'b/1.json': No space left on device");
    EXPECT_EQ(ReasonAgainstWritingWithout({SYS_fdatasync, EIO}),
              "Cannot write 'b/1.json': Input/output error");
    EXPECT_EQ(ReasonAgainstWritingWithout({SYS_renameat, EACCES}),
              "Cannot write 'b/1.json': Permission denied");
}

TEST_F(FilesOfABatchWithoutACall, PassOnThatThereIsNoMemory)
{
    RunWhileFailing({SYS_fdatasync, ENOMEM}, [this] { EXPECT_THROW(Write(), std::bad_alloc); });
    EXPECT_EQ(Text(), "old");
}

} // namespace
