#include "Media/Batch/SlurmPrograms.h"
#include "Media/Batch/SlurmFolder.h"
#include "Media/Batch/SlurmRun.h"

#include "Media/MediaException.h"
#include "Media/Running/Subprocess.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Media
{
namespace
{

std::string FaultOf(const std::string& option)
{
    return Testing::ExpectThrow<RunException>([&option] {
               CheckOptions({"--partition=long", option});
           })
        .description.value_or("");
}

bool IsRefused(const std::string& option)
{
    try
    {
        CheckOptions({option});
        return false;
    }
    catch (const RunException&)
    {
        return true;
    }
}

/// With scripts in place of Slurm's programs.
class SlurmPrograms : public testing::Test
{
protected:
    SlurmPrograms() { ::setenv("PATH", (m_folder.Path().string() + ":" + m_path).c_str(), 1); }
    ~SlurmPrograms() override { ::setenv("PATH", m_path.c_str(), 1); }

    void Script(const std::string& name, const std::string& lines) const
    {
        Testing::WriteFile(m_folder / name, "#!/bin/sh\n" + lines + "\n");
        std::filesystem::permissions(m_folder / name, std::filesystem::perms::owner_all);
    }
    std::string File(const std::string& name) const { return (m_folder / name).string(); }
    std::string Read(const std::string& name) const { return Testing::ReadFile(m_folder / name); }

    template <class Action>
    static std::string ReasonOf(Action&& action)
    {
        return Testing::ExpectThrow<RunException>(std::forward<Action>(action)).description.value_or("");
    }

private:
    Testing::TemporaryFolder m_folder;
    std::string m_path = std::getenv("PATH");
};

} // namespace

TEST(SlurmOptions, ThatSbatchHasPass)
{
    EXPECT_NO_THROW(CheckOptions({}));
    EXPECT_NO_THROW(
        CheckOptions({"--partition=long", "--no-requeue", "--time=1:00", "--ntasks=4", "--comment=x"}));
}

TEST(SlurmOptions, ThatAreSetForTheBatchAreRefused)
{
    for (const char* const option :
         {"--array=1-3", "--job-name=x", "--output=x", "--chdir=/", "--wrap=rm", "--parsable", "--wait",
          "--test-only", "--help", "--version", "--clusters=all", "--quiet"})
    {
        EXPECT_EQ(FaultOf(option), std::string(option) + ": this option of sbatch is set for the batch");
    }
}

TEST(SlurmOptions, ThatAreSetForTheBatchAreRefusedInAnySpellingThatSbatchTakes)
{
    for (const char* const option : {"--wra=rm", "--w=rm", "--arr", "--job=x", "--tes"})
    {
        EXPECT_EQ(FaultOf(option), std::string(option) + ": this option of sbatch is set for the batch");
    }
}

TEST(SlurmOptions, OfTheInstalledSbatchAreRefusedOnlyWhereTheBatchSetsThem)
{
    const Testing::TemporaryFolder folder;
    const std::string settings = (folder / "slurm.conf").string();
    Testing::WriteFile(settings, "ClusterName=x\nSlurmctldHost=localhost\nNodeName=x\n");
    const FilterResult help = RunFilter({"env", "SLURM_CONF=" + settings, "sbatch", "--help"}, "");
    if (help.exitCode != 0)
    {
        GTEST_SKIP() << "sbatch does not tell its options: " << help.messages;
    }
    const std::regex pattern("--[a-z][-a-z0-9]*");
    std::set<std::string> accepted;
    std::set<std::string> refused;
    for (std::sregex_iterator option(help.output.begin(), help.output.end(), pattern), end; option != end;
         ++option)
    {
        (IsRefused(option->str()) ? refused : accepted).insert(option->str());
    }

    EXPECT_EQ(refused,
              (std::set<std::string>{"--array", "--chdir", "--clusters", "--help", "--job-name", "--output",
                                     "--parsable", "--quiet", "--usage", "--version", "--wait", "--wrap"}));
    EXPECT_GT(accepted.size(), 50U);
}

TEST(SlurmOptions, ThatAreOtherWordsAreRefused)
{
    for (const char* const option : {"", "long", "-", "--", "/bin/sh", "-plong", "-HW"})
    {
        EXPECT_EQ(FaultOf(option), "'" + std::string(option) +
                                       "' is not a long option of sbatch; give it and its value as one word, "
                                       "as in --partition=long");
    }
}

TEST_F(SlurmPrograms, AreToldByTheirExitCodeWhenTheyFailWithoutAWord)
{
    Script("scontrol", "exit 7");
    EXPECT_EQ(ReasonOf([] { AskArrayLimit(); }), "scontrol ended with exit code 7");
}

TEST_F(SlurmPrograms, AreToldByTheirOwnWordsInOneLineWhenTheyRefuse)
{
    Script("sbatch", "printf 'sbatch: error: invalid partition\\nsbatch: error: refused \\n\\n' >&2; exit 1");
    EXPECT_EQ(ReasonOf([] { SubmitArray({}); }), "sbatch: error: invalid partition sbatch: error: refused");
}

TEST_F(SlurmPrograms, TellHowLargeAnArrayCanBe)
{
    Script("scontrol", "echo 'Configuration data'; echo 'MaxArraySize            = 1001'");
    EXPECT_EQ(AskArrayLimit(), 1001);
    Script("scontrol", "echo 'MaxArraySize = 2'");
    EXPECT_EQ(AskArrayLimit(), 2);
}

TEST_F(SlurmPrograms, OfAClusterWithoutArraysAreNotUsed)
{
    for (const char* const line :
         {"MaxArraySize = 1", "MaxArraySize = 0", "MaxArraySize = many", "MaxJobCount = 9"})
    {
        Script("scontrol", "echo '" + std::string(line) + "'");
        EXPECT_EQ(ReasonOf([] { AskArrayLimit(); }), "the cluster does not take arrays of jobs") << line;
    }
}

TEST_F(SlurmPrograms, ArePutTogetherOfWhatTheArrayIs)
{
    Script("sbatch", "printf '%s\\n' \"$@\" > '" + File("given") + "'; echo '31;one'");
    ArrayRequest request;
    request.name = "films";
    request.indices = {{1, 3}, {7, 7}};
    request.parallel = 2;
    request.folder = "/data/films";
    request.log = "slurm/%A_%a.log";
    request.options = {"--time=0"};
    request.script = "task.sh";
    request.arguments = {"5", "zconf"};
    EXPECT_EQ(SubmitArray(request), 31);
    EXPECT_EQ(Read("given"),
              "--open-mode=append\n--time=0\n--parsable\n--output=slurm/%A_%a.log\n--job-name=films\n"
              "--chdir=/data/films\n--array=1-3,7%2\ntask.sh\n5\nzconf\n");
    request.parallel = 0;
    SubmitArray(request);
    EXPECT_NE(Read("given").find("\n--array=1-3,7\n"), std::string::npos)
        << "the number that run at once is all that changed";
}

TEST_F(SlurmPrograms, ThatDoNotTellTheNumberOfAnArrayAreNotBelieved)
{
    for (const std::string printed : {"", "Submitted batch job 31", "0", "-31"})
    {
        Script("sbatch", "echo '" + printed + "'");
        EXPECT_EQ(ReasonOf([] { SubmitArray({}); }),
                  "sbatch does not tell the number of the array: '" + printed + "'");
    }
}

TEST_F(SlurmPrograms, FindTheArrayOfAName)
{
    Script("squeue",
           "printf '%s\\n' \"$@\" > '" + File("given") + "'; echo '31|4|films|PENDING|0||Priority|'");
    EXPECT_EQ(FindArray("films"), 31);
    EXPECT_NE(Read("given").find("\n--me\n--name=films\n"), std::string::npos)
        << "the other options say how it is printed";
    Script("squeue", "");
    EXPECT_EQ(FindArray("films"), 0);
}

TEST_F(SlurmPrograms, AreNotAskedForNoArrays)
{
    Script("squeue", "touch '" + File("asked") + "'; exit 1");
    EXPECT_TRUE(AskTasks({}).empty());
    EXPECT_FALSE(std::filesystem::exists(File("asked")));
}

TEST_F(SlurmPrograms, LetTheAccountsTellWhatTheQueueHasForgotten)
{
    Script("squeue", "echo 'slurm_load_jobs error: Invalid job id specified' >&2; exit 1");
    Script("sacct", "echo '31_4|films|FAILED|node2|None'");
    const std::vector<SlurmTask> tasks = AskTasks({31});
    ASSERT_EQ(tasks.size(), 1U);
    EXPECT_EQ(tasks[0].array, 31);
    EXPECT_EQ(tasks[0].index, 4);
    EXPECT_EQ(tasks[0].state, SlurmState::Failed);
    EXPECT_EQ(tasks[0].node, "node2");
}

TEST_F(SlurmPrograms, TellTasksInTheOrderOfTheirIndicesAndTheQueueBeforeTheAccounts)
{
    Script("squeue", "echo '31|3|films|RUNNING|0|node1|None|'; echo '31|1|films|PENDING|0||Priority|'");
    Script("sacct", "echo '31_3|films|NODE_FAIL|node1|None'; echo '31_2|films|COMPLETED|node1|None'");
    std::vector<std::pair<long long, SlurmState>> states;
    for (const SlurmTask& task : AskTasks({31}))
    {
        states.emplace_back(task.index, task.state);
    }
    EXPECT_EQ(states, (std::vector<std::pair<long long, SlurmState>>{
                          {1, SlurmState::Queued}, {2, SlurmState::Ended}, {3, SlurmState::Running}}));
}

TEST_F(SlurmPrograms, WithoutAccountsTellWhatTheQueueKnows)
{
    Script("squeue", "echo '31|1|films|RUNNING|0|node1|None|'");
    EXPECT_EQ(AskTasks({31}).size(), 1U) << "there is no such program";
    Script("sacct", "echo 'Slurm accounting storage is disabled' >&2; exit 1");
    EXPECT_EQ(AskTasks({31}).size(), 1U);
}

TEST_F(SlurmPrograms, CancelThousandsOfTasksWithCommandsOfAThousand)
{
    Script("scancel", "echo $# $1 $2 >> '" + File("given") + "'");
    std::vector<std::string> tasks;
    for (int i = 1; i <= 2001; ++i)
    {
        tasks.push_back("31_" + std::to_string(i));
    }
    CancelTasks(tasks);
    EXPECT_EQ(Read("given"), "1001 --quiet 31_1\n1001 --quiet 31_1001\n2 --quiet 31_2001\n");
}

TEST_F(SlurmPrograms, CancelOfABatchOnlyWhatHasNotEnded)
{
    Batch batch;
    batch.folder = "films";
    batch.base = std::filesystem::path(File("")).parent_path().string();
    batch.jobs.resize(4);
    SlurmFolder(batch).Write({{"zelnor-1", 31, 0, {{1, 3}}}});
    Script("squeue", "echo '31|1|zelnor-1|RUNNING|0|node1|None|'; echo '31|2|zelnor-1|PENDING|0||Priority|'");
    Script("sacct", "echo '31_3|zelnor-1|COMPLETED|node1|None'");
    Script("scancel", "echo \"$*\" >> '" + File("given") + "'");
    CancelSlurm(batch);
    EXPECT_EQ(Read("given"), "--quiet 31_1 31_2\n");
}

TEST_F(SlurmPrograms, CancelNothingWhenThereIsNoTask)
{
    Script("scancel", "touch '" + File("asked") + "'");
    CancelTasks({});
    EXPECT_FALSE(std::filesystem::exists(File("asked")));
}

} // namespace Zelnor::Media
