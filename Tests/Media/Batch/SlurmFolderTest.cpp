#include "Media/Batch/SlurmFolder.h"

#include "Media/Batch/SlurmText.h"
#include "Media/MediaException.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/FailingCall.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <vector>

namespace Zelnor::Media
{
namespace
{

using Jobs = std::vector<unsigned int>;
using Indices = IndexRanges;

/// A batch of nine jobs.
class KeptArrays : public testing::Test
{
protected:
    KeptArrays()
    {
        m_batch.folder = "films";
        m_batch.base = m_folder.Path().string();
        m_batch.jobs.resize(9);
    }

    const Batch& Films() const { return m_batch; }
    std::string Name(const std::string& name) const { return (m_folder / name).string(); }
    /// Why a record is refused of which one array is this.
    std::string FaultOf(const std::string& array) const
    {
        return FaultOfRecord(R"({"slurm":{"version":1,"arrays":{"000001":)" + array + "}}}");
    }
    std::string FaultOfRecord(const std::string& text) const
    {
        const SlurmFolder folder(m_batch);
        Testing::WriteFile(Name("slurm/arrays.json"), text);
        return Testing::ExpectThrow<JobException>([&folder] { folder.Read(); }).description.value_or("");
    }

private:
    Testing::TemporaryFolder m_folder;
    Batch m_batch;
};

} // namespace

TEST_F(KeptArrays, AreNoneAtFirst) { EXPECT_TRUE(SlurmFolder(Films()).Read().empty()); }

TEST_F(KeptArrays, AreReadAsTheyWereWritten)
{
    SlurmFolder(Films()).Write({{"zelnor-1", 17, 0, {{1, 3}, {9, 9}}}, {"zelnor-2", 0, 4, {{1, 1}, {3, 3}}}});

    const std::vector<SlurmArray> arrays = SlurmFolder(Films()).Read();

    ASSERT_EQ(arrays.size(), 2U);
    EXPECT_EQ(arrays[0].name, "zelnor-1");
    EXPECT_EQ(arrays[0].id, 17);
    EXPECT_EQ(arrays[0].offset, 0);
    EXPECT_EQ(arrays[0].indices, (Indices{{1, 3}, {9, 9}}));
    EXPECT_EQ(arrays[1].id, 0);
    EXPECT_EQ(arrays[1].offset, 4);
}

TEST_F(KeptArrays, OfJobsThatTheBatchDoesNotHaveAreRefused)
{
    const std::string place = "films/slurm/arrays.json: arrays.000001.indices: ";
    const std::string expected = "expected indices of jobs of the batch, such as 1-4,7, found ";

    EXPECT_EQ(FaultOf(R"({"name":"zelnor-1","id":1,"offset":0,"indices":"1-10"})"),
              place + expected + "'1-10'");
    EXPECT_EQ(FaultOf(R"({"name":"zelnor-1","id":1,"offset":0,"indices":"0-3"})"),
              place + expected + "'0-3'");
    EXPECT_EQ(FaultOf(R"({"name":"zelnor-1","id":1,"offset":7,"indices":"1-3"})"),
              place + expected + "'1-3'");
    EXPECT_EQ(FaultOf(R"({"name":"zelnor-1","id":1,"offset":0,"indices":""})"), place + expected + "''");
    EXPECT_EQ(FaultOf(R"({"name":"zelnor-1","id":1,"offset":0,"indices":"0-9223372036854775807"})"),
              place + expected + "'0-9223372036854775807'");
}

TEST_F(KeptArrays, WithNamesThatNoRunHasMadeAreRefused)
{
    const std::string expected = "films/slurm/arrays.json: arrays.000001.name: expected a name "
                                 "that a run has made, found ";
    for (const std::string name : {"", "x", "-u", "zelnor-1,2", "zelnor-1 2", "zelnor-A", "zelnor-~"})
    {
        EXPECT_EQ(FaultOf(R"({"name":")" + name + R"(","id":1,"offset":0,"indices":"1"})"),
                  expected + "'" + name + "'");
    }
}

TEST_F(KeptArrays, ThatAreNotInOrderAreRefused)
{
    EXPECT_EQ(FaultOfRecord(R"({"slurm":{"version":1,"arrays":{"000002":{}}}})"),
              "films/slurm/arrays.json: arrays.000002: expected '000001' here");
}

TEST_F(KeptArrays, OfAnotherVersionAreRefused)
{
    EXPECT_EQ(FaultOfRecord(R"({"slurm":{"version":2,"arrays":{}}})"),
              "films/slurm/arrays.json: version: expected an integer from 1 to 1, found 2");
}

TEST_F(KeptArrays, AreNotWrittenThroughALink)
{
    ASSERT_EQ(::mkdir(Name("elsewhere").c_str(), 0700), 0);
    ASSERT_EQ(::symlink(Name("elsewhere").c_str(), Name("slurm").c_str()), 0);

    EXPECT_EQ(Testing::ExpectThrow<RunException>([this] { SlurmFolder folder(Films()); }).description,
              "Cannot open 'films/slurm': Not a directory");
}

TEST_F(KeptArrays, NeedAFolderThatCanBeMadeAndLocked)
{
    const auto reasonWithout = [this](const Testing::FailingCall& call) {
        std::string reason = "this system does not let calls fail";
        Testing::RunWhileFailing(call, [&] {
            reason = Testing::ExpectThrow<RunException>([this] {
                         SlurmFolder(Films()).Lock();
                     }).description.value_or("");
        });
        return reason;
    };
    if (!Testing::RunWhileFailing({SYS_fsync, EIO}, [] {}))
    {
        GTEST_SKIP() << "this system does not let calls fail";
    }
    EXPECT_EQ(reasonWithout({SYS_mkdir, EACCES}), "Cannot make 'films/slurm': Permission denied");
    constexpr std::uint32_t kLockFile = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    EXPECT_EQ(reasonWithout({SYS_openat, EMFILE, Testing::FailingCall::Argument{2, kLockFile}}),
              "Cannot open 'films/slurm': Too many open files");
}

TEST_F(KeptArrays, AreUsedWhereTheFileSystemHasNoLocks)
{
    Testing::RunWhileFailing({SYS_flock, ENOLCK},
                             [this] { EXPECT_TRUE(SlurmFolder(Films()).Lock().IsOpen()); });
}

// Gigabytes, if each array held each of its indices, and minutes, if it looked at each of them.
TEST_F(KeptArrays, MayAllHaveAllJobs)
{
    constexpr std::size_t kCount = 50'000;
    Batch batch = Films();
    batch.jobs.resize(kCount);
    const SlurmArray array = {"zelnor-1", 1, 0, {{1, static_cast<long long>(kCount)}}};
    SlurmFolder(batch).Write(std::vector<SlurmArray>(kCount, array));

    const std::vector<SlurmArray> arrays = SlurmFolder(batch).Read();
    const auto last = LastTasks(kCount, arrays);

    ASSERT_EQ(arrays.size(), kCount);
    EXPECT_EQ(last.front(), TaskPlace(kCount - 1, 1));
    EXPECT_EQ(last.back(), TaskPlace(kCount - 1, static_cast<long long>(kCount)));
}

TEST_F(KeptArrays, HaveAFolderOnlyOnceSlurmIsAsked)
{
    EXPECT_FALSE(HasSlurmFolder(Films()));

    SlurmFolder folder(Films());

    EXPECT_TRUE(HasSlurmFolder(Films()));
}

TEST(SlurmArrays, AreOneWhereTheClusterTakesAll)
{
    const std::vector<SlurmArray> arrays = SplitIntoArrays({2, 3, 900}, 1001);

    ASSERT_EQ(arrays.size(), 1U);
    EXPECT_EQ(arrays[0].offset, 0);
    EXPECT_EQ(arrays[0].indices, (Indices{{2, 3}, {900, 900}}));
}

TEST(SlurmArrays, HaveIndicesBelowTheLimit)
{
    const std::vector<SlurmArray> arrays = SplitIntoArrays({1, 3, 4, 5, 6, 7, 9}, 4);

    ASSERT_EQ(arrays.size(), 3U);
    EXPECT_EQ(arrays[0].offset, 0);
    EXPECT_EQ(arrays[0].indices, (Indices{{1, 1}, {3, 3}}));
    EXPECT_EQ(arrays[1].offset, 3);
    EXPECT_EQ(arrays[1].indices, (Indices{{1, 3}}));
    EXPECT_EQ(arrays[2].offset, 6);
    EXPECT_EQ(arrays[2].indices, (Indices{{1, 1}, {3, 3}}));
}

TEST(SlurmArrays, OfManyGapsAreSeveralSinceACommandHasALongestLength)
{
    Jobs jobs;
    for (unsigned int job = 1; job < 100'000; job += 2)
    {
        jobs.push_back(job);
    }

    const std::vector<SlurmArray> arrays = SplitIntoArrays(jobs, 1'000'001);

    std::size_t count = 0;
    for (const SlurmArray& array : arrays)
    {
        EXPECT_LT(WriteIndices(array.indices).size(), 65536U);
        // No job follows another one, so that each is a range.
        count += array.indices.size();
    }
    EXPECT_EQ(count, jobs.size());
    EXPECT_EQ(arrays.size(), 13U);
}

TEST(SlurmArrays, OfNoJobsAreNone) { EXPECT_TRUE(SplitIntoArrays({}, 1001).empty()); }

TEST(SlurmArrays, TellTheLastTaskOfEachJob)
{
    const std::vector<SlurmArray> arrays = {{"a", 1, 0, {{1, 3}}}, {"b", 2, 1, {{1, 1}}}};

    const auto last = LastTasks(4, arrays);

    ASSERT_EQ(last.size(), 4U);
    EXPECT_EQ(last[0], TaskPlace(0, 1));
    EXPECT_EQ(last[1], TaskPlace(1, 1));
    EXPECT_EQ(last[2], TaskPlace(0, 3));
    EXPECT_EQ(last[3], std::nullopt);
}

TEST(SlurmArrays, TellTheLastTaskOfJobsThatAreInSeveral)
{
    const std::vector<SlurmArray> arrays = {
        {"a", 1, 0, {{1, 6}}}, {"b", 2, 2, {{1, 1}, {3, 3}}}, {"c", 3, 1, {{2, 2}, {4, 4}}}};

    const auto last = LastTasks(6, arrays);

    const std::vector<std::optional<TaskPlace>> expected = {
        TaskPlace(0, 1), TaskPlace(0, 2), TaskPlace(2, 2), TaskPlace(0, 4), TaskPlace(2, 4), TaskPlace(0, 6)};
    EXPECT_EQ(last, expected);
}

} // namespace Zelnor::Media
