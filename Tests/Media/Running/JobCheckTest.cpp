#include "Media/Running/JobCheck.h"

#include "Tests/Support/Graphs.h"
#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/RunFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

class CheckingJob : public testing::Test
{
protected:
    CheckingJob() { WriteFile(Name("in.wav"), SilentWav()); }

    std::string Name(const std::string& name) const { return (m_folder / name).string(); }
    /// What is wrong with a job that makes these files.
    std::vector<std::string> Check(const std::vector<std::string>& targets) const
    {
        std::vector<std::string> names;
        for (const std::string& target : targets)
        {
            names.push_back(Name(target));
        }
        return Sentences(CheckJob(*WavJob(Name("in.wav"), names)));
    }

    TemporaryFolder m_folder;
};

TEST_F(CheckingJob, FindsNothingInOneThatCanBeRun)
{
    EXPECT_THAT(Check({"a.wav", "b.wav"}), IsEmpty());
    WriteFile(Name("a.wav"), "old");
    EXPECT_THAT(Check({"a.wav"}), IsEmpty());
}

TEST_F(CheckingJob, FindsTargetsThatAreOneFile)
{
    std::filesystem::create_directory(Name("sub"));
    std::filesystem::create_directory_symlink("sub", Name("link"));
    EXPECT_THAT(Check({"sub/a.wav", "link/a.wav"}),
                ElementsAre("node 4, filePath: node 3 has the same target: '" + Name("link/a.wav") + "'"));
}

TEST_F(CheckingJob, FindsFoldersThatAreNotThereForEveryTarget)
{
    EXPECT_THAT(
        Check({"none/a.wav", "none/b.wav"}),
        ElementsAre("node 3, filePath: cannot write '" + Name("none/a.wav") + "': No such file or directory",
                    "node 4, filePath: cannot write '" + Name("none/b.wav") +
                        "': No such file or directory"));
}

TEST_F(CheckingJob, FindsAFolderThatMayNotBeWrittenTo)
{
    std::filesystem::create_directory(Name("sub"));
    ::chmod(Name("sub").c_str(), 0555);
    ::chmod(m_folder.Path().c_str(), 0755);
    // In a process of its own, for nothing stops the superuser.
    const auto check = [this] {
        if (::geteuid() == 0 && ::setuid(65534) != 0)
        {
            std::_Exit(2);
        }
        const std::vector<std::string> expected = {"node 3, filePath: cannot write '" + Name("sub/a.wav") +
                                                   "': Permission denied"};
        std::_Exit(Check({"sub/a.wav"}) == expected ? 0 : 1);
    };
    EXPECT_EXIT(check(), testing::ExitedWithCode(0), "");
}

TEST_F(CheckingJob, GivesEachFaultItsKindAndPlace)
{
    const auto job = Loaded(R"({"vertices":[{"id":1},{"id":2},{"id":3}],"edges":[{"from":1,"to":2}]})");
    const std::vector<JobFault> faults = CheckJob(*job, "job.json");
    ASSERT_GE(faults.size(), 2U);
    EXPECT_EQ(faults[0].kind, JobFault::UnlinkedNodes);
    EXPECT_EQ(faults[0].Name(), "unlinked_nodes");
    EXPECT_THAT(faults[0].groups, ElementsAre(ElementsAre(3)));
    EXPECT_EQ(faults[0].place.file, "job.json");
    EXPECT_EQ(faults[1].kind, JobFault::Structure);
    EXPECT_EQ(faults[1].place.node, 2);
    EXPECT_EQ(faults[1].place.key, "filePath");
    EXPECT_EQ(faults[1].reason, "expected a string, found nothing");
    EXPECT_EQ(faults[1].Sentence(), "node 2, filePath: expected a string, found nothing");
}

TEST_F(CheckingJob, AnEmptyGraphHasTooFewNodes)
{
    EXPECT_THAT(Sentences(CheckJob(*Conf::ITranscodingMetaGraph::Create())),
                ElementsAre("There are 0 nodes; a job has at least 2."));
}

} // namespace
