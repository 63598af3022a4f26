#include "Tests/Support/SlurmBatchTest.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor::Testing;
using testing::HasSubstr;

using Words = std::vector<std::string>;

/// With programs in place of Slurm's whose answers the test writes: the queue is the file "queue", the
/// accounts are the file "accounts", and none of them answers as long as there is a file "silent".
class BatchOnAnswers : public SlurmBatchTest
{
protected:
    BatchOnAnswers()
    {
        std::filesystem::create_directory(Folder() / "fake");
        const std::string begin =
            "cd '" + Folder().string() +
            "'\n[[ ! -e silent ]] || { echo 'Unable to contact slurm controller' >&2; exit 1; }\n";
        WriteProgram("fake/scontrol", begin + "echo 'MaxArraySize = 1001'");
        WriteProgram("fake/squeue", begin + "touch asked; [[ ! -e queue ]] || cat queue");
        WriteProgram("fake/sacct", begin + "[[ -e accounts ]] || exit 1; cat accounts");
        WriteProgram("fake/scancel", begin + "echo \"$@\" >> cancelled; rm -f queue");
        WriteProgram("fake/sbatch", begin + kSubmit);
    }

    std::vector<std::string> Environment() const override
    {
        return {"PATH=" + (Folder() / "fake").string() + ":/usr/bin:/bin"};
    }
    /// Runs a line for the shell with these programs.
    ProcessResult ShellWithSlurm(const std::string& line) const
    {
        ProcessOptions options;
        options.environment = Environment();
        return Shell(line, options);
    }
    /// Slurm runs the tasks as soon as it is given them, and forgets them.
    void RunAtOnce() const { Write("at-once", ""); }
    /// As if the queue had forgotten the tasks of the first array.
    void Account(const std::vector<std::string>& tasks) const
    {
        std::string text;
        const std::string name = ReadName();
        for (const std::string& task : tasks)
        {
            const std::size_t bar = task.find('|');
            text += task.substr(0, bar) + "|" + name + task.substr(bar) + "\n";
        }
        Write("accounts", text);
        std::filesystem::remove(Folder() / "queue");
    }

    /// Who asks for the queue after there is an identifier has read the answer to the submission.
    inline static const std::string kUntilSubmitted = "until [ -e id ]; do sleep 0.05; done; rm -f asked; "
                                                      "until [ -e asked ]; do sleep 0.05; done; ";

private:
    static constexpr const char* kSubmit = R"sh(printf '%s\n' "$@" > "submitted.$$"
sleep "$(cat delay 2>/dev/null || echo 0)"
for word; do
    case $word in
    --job-name=*) name=${word#*=} ;;
    --array=*) array=${word#*=} ;;
    --chdir=*) folder=${word#*=} ;;
    */task.sh) break ;;
    esac
    shift
done
id=$(($(cat id 2>/dev/null || echo 0) + 1))
echo $id >id
echo "$name" >>names
[[ $array != *-* ]] || array=$(seq -s ' ' "${array%-*}" "${array#*-}")
for index in ${array//,/ }; do
    if [[ -e at-once ]]; then
        (cd "$folder" && SLURM_ARRAY_TASK_ID=$index sh "$@" >>slurm/"${id}_$index".log 2>&1)
    else
        echo "$id|$index|$name|PENDING|0||Priority|" >>queue
    fi
done
echo $id)sh";

    std::string ReadName() const
    {
        const std::string names = Read("names");
        return names.substr(0, names.find('\n'));
    }
};

TEST_F(BatchOnAnswers, IsSubmittedOnceByTwoRunsAtATime)
{
    PlanBatch(3);
    Write("delay", "0.5");

    const ProcessResult runs =
        ShellWithSlurm("$ZCONF batch run b --engine slurm & $ZCONF batch run b --engine slurm; wait $!");

    EXPECT_THAT(runs.messages, HasSubstr("zconf: b: 3 jobs submitted as array 1\n"));
    EXPECT_THAT(runs.messages, HasSubstr("zconf: b: no job is left to submit, 3 are in the queue already\n"));
    EXPECT_EQ(Read("id"), "1\n");
}

// The lines are what sacct 22.05 printed on a cluster with a database.
TEST_F(BatchOnAnswers, IsToldByTheAccountsWhatTheQueueHasForgotten)
{
    PlanBatch(7);
    RunOnSlurm();
    Account({"1_1|CANCELLED by 0|node1|None", "1_2|TIMEOUT|node2|None", "1_3|NODE_FAIL|node1|None",
             "1_4|OUT_OF_MEMORY|node1|None", "1_5|COMPLETED|node1|None",
             "1_[6-7]|CANCELLED by 0|None assigned|None"});

    EXPECT_EQ(TaskStates(),
              (Words{"cancelled", "timed-out", "lost", "out-of-memory", "ended", "cancelled", "cancelled"}));
    EXPECT_EQ(RunOnSlurm().messages, "zconf: b: 7 jobs submitted as array 2\n");
}

TEST_F(BatchOnAnswers, IsNotWaitedForBecauseAccountsNeverHeardOfItsEnd)
{
    PlanBatch(2);
    RunOnSlurm();
    Account({"1_1|RUNNING|node1|None", "1_2|PENDING|None assigned|None"});
    Write("b/slurm/1_1.log", "");

    EXPECT_EQ(TaskStates(), (Words{"unknown", "cancelled"}));
    EXPECT_EQ(RunOnSlurm().messages, "zconf: b: 2 jobs submitted as array 2\n");
}

TEST_F(BatchOnAnswers, IsToldByTheQueueWhatAlsoTheAccountsKnow)
{
    PlanBatch(1);
    RunOnSlurm();
    const std::string queue = Read("queue");
    Account({"1_1|NODE_FAIL|node1|None"});
    Write("queue", queue);

    EXPECT_EQ(TaskStates(), Words{"queued"});
}

TEST_F(BatchOnAnswers, IsSubmittedAgainWhenTheQueueHasForgottenItAndThereAreNoAccounts)
{
    PlanBatch(2);
    RunOnSlurm();
    std::filesystem::remove(Folder() / "queue");
    Write("b/slurm/1_1.log", "");

    EXPECT_EQ(TaskStates(), (Words{"unknown", "cancelled"}));
    EXPECT_EQ(RunOnSlurm().messages, "zconf: b: 2 jobs submitted as array 2\n");
}

TEST_F(BatchOnAnswers, DoesNotReachSlurmsProgramsWithAUsersDefaultsForThem)
{
    PlanBatch(1);
    const std::string keep =
        "env | grep -E '^(SQUEUE|SACCT|SCANCEL|SBATCH|SLURM)_' >> '" + Folder().string() + "/seen'\n";
    for (const char* const name : {"squeue", "sacct", "sbatch"})
    {
        const std::string program = std::string("fake/") + name;
        const std::string script = Read(program);
        Write(program, script.substr(0, script.find('\n') + 1) + keep + script.substr(script.find('\n') + 1));
    }

    ShellWithSlurm("export SQUEUE_USERS=nobody SQUEUE_FORMAT2=JobID SACCT_FEDERATION=1 SCANCEL_STATE=PENDING "
                   "SBATCH_WAIT=1 SBATCH_PARTITION=long SLURM_EXIT_ERROR=0 SLURM_CLUSTERS=one; "
                   "$ZCONF batch run b --engine slurm; $ZCONF batch status b; sort -u seen > seen.sorted");

    EXPECT_EQ(Read("seen.sorted"), "SBATCH_PARTITION=long\nSLURM_CLUSTERS=one\n");
}

TEST_F(BatchOnAnswers, GoesToOneClusterOnly)
{
    PlanBatch(1);

    EXPECT_EQ(
        ShellWithSlurm("SBATCH_CLUSTERS=far $ZCONF batch run b --engine slurm").messages,
        "zconf: SBATCH_CLUSTERS is set, which the other programs of Slurm do not know; name the cluster with "
        "SLURM_CLUSTERS\n");
    for (const std::string clusters : {"all", "near,far"})
    {
        EXPECT_EQ(
            ShellWithSlurm("SLURM_CLUSTERS=" + clusters + " $ZCONF batch run b --engine slurm").messages,
            "zconf: SLURM_CLUSTERS: expected the name of one cluster, found '" + clusters + "'\n");
    }
    EXPECT_FALSE(Exists("id"));
}

TEST_F(BatchOnAnswers, HandsOptionsOnAsTheyAre)
{
    PlanBatch(1);
    const std::string comment = "--comment=$(touch x); `touch y` 'a' \"b\" *";

    EXPECT_EQ(RunOnSlurm({"--slurm=" + comment, "--slurm=--time=0"}).exitCode, 0);

    EXPECT_THAT(Shell("cat submitted.*").output, HasSubstr("\n" + comment + "\n--time=0\n--parsable\n"));
    EXPECT_FALSE(Exists("x") || Exists("b/x"));
}

TEST_F(BatchOnAnswers, ThatIsWaitedForReturnsWhatARunHereWould)
{
    RunAtOnce();
    PlanBatch(2);

    EXPECT_EQ(RunOnSlurm({"--wait"}).exitCode, 0);

    // An output that is gone is not made again by itself.
    std::filesystem::remove(Folder() / "out/1001.wav");
    EXPECT_EQ(RunOnSlurm({"--wait"}).exitCode, 0);
    EXPECT_EQ(RunOnSlurm({"--wait", "--missing"}).exitCode, 0);
    EXPECT_TRUE(Exists("out/1001.wav"));
}

TEST_F(BatchOnAnswers, ThatIsWaitedForTellsThatFFmpegFailed)
{
    RunAtOnce();
    PlanBatch(2);
    WriteProgram("slow", "[[ \"$*\" != *progress*1002.wav* ]] || exit 1\nexec ffmpeg \"$@\"");

    const ProcessResult run = RunOnSlurm({"--wait"});

    EXPECT_EQ(run.exitCode, 3);
    EXPECT_EQ(run.messages, "zconf: b: 2 jobs submitted as array 1\nzconf: b: 2 jobs: 1 done, 1 failed\n");
}

TEST_F(BatchOnAnswers, ThatIsWaitedForTellsThatAnOutputIsNotWhatItsJobSays)
{
    RunAtOnce();
    PlanBatch(1);
    WriteProgram(
        "slow",
        "[[ \"$*\" != *progress* ]] || set -- \"${@:1:$#-1}\" -c:a pcm_u8 \"${@: -1}\"\nexec ffmpeg \"$@\"");

    EXPECT_EQ(RunOnSlurm({"--wait"}).exitCode, 4);
}

TEST_F(BatchOnAnswers, ThatIsWaitedForTellsThatTasksWereCancelled)
{
    PlanBatch(2);

    const ProcessResult run =
        ShellWithSlurm("$ZCONF batch run b --engine slurm --wait & " + kUntilSubmitted + "rm queue; wait $!");

    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.messages, "zconf: b: 2 jobs submitted as array 1\nzconf: b: 2 jobs: 2 waiting\n");
}

TEST_F(BatchOnAnswers, ThatIsInterruptedCancelsItsTasksOnceSlurmAnswersAgain)
{
    PlanBatch(2);

    const ProcessResult run = ShellWithSlurm("$ZCONF batch run b --engine slurm --wait & " + kUntilSubmitted +
                                             "touch silent; kill -TERM $!; sleep 1; rm silent; wait $!");

    EXPECT_EQ(run.exitCode, 128 + SIGTERM);
    EXPECT_EQ(Read("cancelled"), "--quiet 1_1 1_2\n");
}

TEST_F(BatchOnAnswers, SaysThatTheControllerDoesNotAnswer)
{
    PlanBatch(1);
    Write("silent", "");

    ExpectFailure(RunOnSlurm(), "Unable to contact slurm controller");
}

TEST_F(BatchOnAnswers, ShowsItsStateAlsoWhenTheControllerDoesNotAnswer)
{
    PlanBatch(1);
    RunOnSlurm();
    Write("silent", "");

    const ProcessResult status = Batch({"status", "b"});

    EXPECT_EQ(status.messages, "zconf: Unable to contact slurm controller\n");
    EXPECT_THAT(status.output, HasSubstr("b: 1 job: 1 waiting\n"));
}

TEST_F(BatchOnAnswers, SaysThatSlurmIsNotInstalled)
{
    PlanBatch(1);
    ProcessOptions options;
    options.environment = {"PATH=" + Folder().string()};

    ExpectFailure(Zconf({"batch", "run", "b", "--engine", "slurm"}, options),
                  "there is no program 'scontrol': Slurm's client programs are not installed");
}

TEST_F(BatchOnAnswers, LeavesArraysAloneThatHaveItsNumberAndAnotherName)
{
    PlanBatch(1);
    Write("queue", "4711|1|holiday|PENDING|0||launch failed requeued held|\n");
    std::filesystem::create_directory(Folder() / "b/slurm");
    Write("b/slurm/arrays.json", R"({"slurm":{"version":1,"arrays":{"000001":)"
                                 R"({"name":"zelnor-1","id":4711,"offset":0,"indices":"1"}}}})");

    EXPECT_EQ(RunOnSlurm().messages, "zconf: b: 1 job submitted as array 1\n");
    EXPECT_FALSE(Exists("cancelled"));
}

TEST_F(BatchOnAnswers, IsNotSubmittedWithOptionsThatAreSetForIt)
{
    PlanBatch(1);

    ExpectFailure(Zconf({"batch", "run", "b", "--engine", "slurm", "--slurm=--wrap=rm"}),
                  "--wrap=rm: this option of sbatch is set for the batch");
}

} // namespace
