#include "Media/Batch/BatchRun.h"

#include "Media/Batch/BatchFolder.h"
#include "Media/Batch/BatchRecord.h"
#include "Media/MediaException.h"
#include "Tests/Support/BatchTest.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/FileFixtures.h"

#include <gmock/gmock.h>

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

/// Makes the target, and counts the runs.
constexpr const char* kCopy = "echo run >> log; cp in/a.wav \"$target\"; echo progress=end";

class RunningBatch : public BatchTest
{
protected:
    RunningBatch() : m_former(fs::current_path())
    {
        // The scripts that stand for ffmpeg name files of the test's folder.
        fs::current_path(Folder().Path());
        MakeInputs({"a.wav", "b.wav", "c.wav"});
        Plan();
    }
    ~RunningBatch() override { fs::current_path(m_former); }

    BatchStatus Run(const BatchRunOptions& options) const { return RunBatch(Name("b"), options); }
    /// A run of the second job that is killed while ffmpeg makes a file in place of one that holds "old".
    void KillWhileReplacingOld() const
    {
        fs::create_directory(Name("out"));
        WriteFile(Name("out/b.wav"), "old");
        BatchRunOptions options = With("kill -9 $PPID; exec sleep 60");
        options.job.overwrite = true;
        options.choice = {};
        RunForked([&] {
            RunBatchJob(Name("b"), 2, options);
            return 0;
        });
    }
    BatchResult Result(unsigned int number) const
    {
        const std::string text = ReadFile(Name("b/results/00000" + std::to_string(number) + ".json"));
        return ParseResult(text, "result");
    }
    void WriteResult(unsigned int number, const BatchResult& result) const
    {
        WriteFile(Name("b/results/00000" + std::to_string(number) + ".json"), ResultText(result));
    }
    std::size_t RunCount() const
    {
        const std::string log = ReadFile(Name("log"));
        return static_cast<std::size_t>(std::count(log.begin(), log.end(), '\n'));
    }
    /// As a run writes it before ffmpeg starts.
    static BatchResult Begun()
    {
        BatchResult result;
        result.started = "2026-11-22T11:03:07Z";
        result.attempts = 1;
        return result;
    }

private:
    fs::path m_former;
};

TEST_F(RunningBatch, RunsEachJobOnceAndWritesWhatBecameOfIt)
{
    const BatchStatus status = Run(With(kCopy));
    EXPECT_THAT(States(status), ElementsAre("done", "done", "done"));
    EXPECT_TRUE(status.IsDone());
    EXPECT_EQ(status.mediaDone, 600000);
    EXPECT_EQ(status.mediaLeft, 0);
    EXPECT_EQ(ReadFile(Name("out/c.wav")), SilentWav());
    const BatchResult result = Result(2);
    EXPECT_EQ(result.state, BatchResult::State::Done);
    EXPECT_EQ(result.attempts, 1U);
    EXPECT_EQ(result.sizeBefore, SilentWav().size());
    EXPECT_EQ(result.sizeAfter, SilentWav().size());
    EXPECT_EQ(result.duration, 200000);
    EXPECT_EQ(result.process, ::getpid());
    EXPECT_EQ(result.verification, "off");
    EXPECT_GT(result.elapsed, 0);
    EXPECT_FALSE(result.ended.empty());
    Run(With(kCopy));
    EXPECT_EQ(RunCount(), 3U);
}

TEST_F(RunningBatch, RunsSeveralAtOnceAndTellsHowFarItIs)
{
    BatchRunOptions options = With("sleep 0.1; " + std::string(kCopy));
    options.parallel = 3;
    std::size_t most = 0;
    BatchProgress last;
    std::vector<unsigned int> ended;
    options.onProgress = [&](const BatchProgress& progress) {
        most = std::max(most, progress.running);
        last = progress;
    };
    options.onJobEnd = [&](const BatchJob& job, const BatchResult&) { ended.push_back(job.number); };
    Run(options);
    EXPECT_GE(most, 2U);
    EXPECT_THAT(ended, testing::UnorderedElementsAre(1, 2, 3));
    EXPECT_EQ(last.count, 3U);
    EXPECT_EQ(last.done, 3U);
    EXPECT_EQ(last.running, 0U);
    EXPECT_EQ(last.mediaDone, 600000);
    EXPECT_EQ(last.mediaLeft, 0);
    EXPECT_GT(last.speed, 0);
}

TEST_F(RunningBatch, GoesOnWhenAJobFailsAndTriesItAgainTheNextTime)
{
    const std::string fail = "[[ $* != *b.wav* ]] || { echo 'no b' >&2; exit 69; }; ";
    const BatchStatus status = Run(With(fail + kCopy));
    EXPECT_THAT(States(status), ElementsAre("done", "failed", "done"));
    const BatchResult result = Result(2);
    EXPECT_EQ(result.failure, BatchResult::Failure::FFmpeg);
    EXPECT_EQ(result.exitCode, 69);
    EXPECT_THAT(result.messages, ElementsAre("no b"));
    EXPECT_EQ(result.reason, "ffmpeg failed to make '" + Name("out/b.wav") + "' (exit code 69): no b");
    EXPECT_THAT(States(Run(With(kCopy))), ElementsAre("done", "done", "done"));
    EXPECT_EQ(Result(2).attempts, 2U);
    EXPECT_THAT(Result(2).messages, IsEmpty());
}

TEST_F(RunningBatch, BeginsNoOtherJobAfterAFailureWhenToldSo)
{
    BatchRunOptions options = With("exit 1");
    options.failFast = true;
    EXPECT_THAT(States(Run(options)), ElementsAre("failed", "waiting", "waiting"));
    options.retries = 2;
    EXPECT_THAT(States(Run(options)), ElementsAre("failed", "waiting", "waiting"));
    EXPECT_EQ(Result(1).attempts, 4U);
}

TEST_F(RunningBatch, BeginsOthersWhenWhatFailedSucceedsInTheEnd)
{
    BatchRunOptions options =
        With("echo run >> log; [[ $(grep -c . log) -gt 2 ]] || exit 1; " + std::string(kCopy));
    options.failFast = true;
    options.retries = 2;
    EXPECT_THAT(States(Run(options)), ElementsAre("done", "done", "done"));
}

TEST_F(RunningBatch, KeepsTheCommandOfAFailureAndNoneOfWhatIsDone)
{
    BatchRunOptions options = With("[[ $* != *b.wav* ]] || exit 1; " + std::string(kCopy));
    EXPECT_THAT(States(Run(options)), ElementsAre("done", "failed", "done"));
    EXPECT_THAT(Result(1).commands, IsEmpty());
    ASSERT_EQ(Result(2).commands.size(), 1U);
    const std::vector<std::string> words = Result(2).commands.front();
    EXPECT_EQ(words.front(), options.job.ffmpeg);
    EXPECT_EQ(words.back(), "file:" + Name("out/b.wav"));
    EXPECT_THAT(words, testing::Contains("file:" + Name("in/b.wav")));
    EXPECT_THAT(words, testing::Contains("-n"));
    // One that a task of a cluster runs is written by the same process that ran it.
    RunBatchJob(Name("b"), 2, options);
    EXPECT_THAT(Result(2).commands, ElementsAre(words));
}

TEST_F(RunningBatch, HasNoCommandWhereFFmpegWasNotStarted)
{
    Run(With("exit 1"));
    EXPECT_FALSE(Result(2).commands.empty());
    fs::remove(Name("in/b.wav"));
    Run(With("exit 1"));
    EXPECT_EQ(Result(2).failure, BatchResult::Failure::Job);
    EXPECT_THAT(Result(2).commands, IsEmpty());
}

TEST_F(RunningBatch, TriesAgainWhatFails)
{
    BatchRunOptions options =
        With("echo run >> log; [[ $(grep -c . log) -gt 2 ]] || exit 1; " + std::string(kCopy));
    options.retries = 2;
    EXPECT_THAT(States(Run(options)), ElementsAre("done", "done", "done"));
    EXPECT_EQ(Result(1).attempts, 3U);
    EXPECT_EQ(Result(2).attempts, 1U);
}

TEST_F(RunningBatch, DoesNotTryAgainWhatCannotBeRun)
{
    fs::remove(Name("in/b.wav"));
    BatchRunOptions options = With(kCopy);
    options.retries = 5;
    EXPECT_THAT(States(Run(options)), ElementsAre("done", "failed", "done"));
    EXPECT_EQ(Result(2).failure, BatchResult::Failure::Job);
    EXPECT_EQ(Result(2).attempts, 1U);
    EXPECT_NE(Result(2).reason.find("No such file or directory"), std::string::npos) << Result(2).reason;
}

TEST_F(RunningBatch, DoesNotReplaceFilesUnlessItIsTold)
{
    fs::create_directory(Name("out"));
    WriteFile(Name("out/b.wav"), "old");
    BatchRunOptions options = With(kCopy);
    EXPECT_THAT(States(Run(options)), ElementsAre("done", "failed", "done"));
    EXPECT_EQ(Result(2).reason.find(Name("b/jobs/000002.json") + ": node 2, filePath: '" + Name("out/b.wav") +
                                    "' exists already"),
              0U)
        << Result(2).reason;
    EXPECT_EQ(ReadFile(Name("out/b.wav")), "old");
    options.job.overwrite = true;
    EXPECT_THAT(States(Run(options)), ElementsAre("done", "done", "done"));
    EXPECT_EQ(ReadFile(Name("out/b.wav")), SilentWav());
}

TEST_F(RunningBatch, VerifiesWhatItMakes)
{
    BatchRunOptions options = With("echo 'not media' > \"$target\"");
    options.job.verification = VerificationDepth::Quick;
    EXPECT_THAT(States(Run(options)), ElementsAre("failed", "failed", "failed"));
    EXPECT_EQ(Result(1).failure, BatchResult::Failure::Different);
    EXPECT_FALSE(Result(1).notes.empty());
    EXPECT_FALSE(Exists("out/a.wav"));
}

TEST_F(RunningBatch, StopsWhenItIsCancelledAndGoesOnLater)
{
    BatchRunOptions options =
        With("echo half > \"$target\"; echo out_time_us=1; echo progress=continue; exec sleep 60");
    options.onProgress = [&options](const BatchProgress&) { options.job.cancel.Cancel(); };
    EXPECT_THAT(States(Run(options)), ElementsAre("cancelled", "waiting", "waiting"));
    EXPECT_TRUE(fs::is_empty(Name("out")));
    EXPECT_THAT(States(Run(With(kCopy))), ElementsAre("done", "done", "done"));
}

TEST_F(RunningBatch, TakesAnOutputThatAKilledRunHasPutInPlace)
{
    WriteResult(2, Begun());
    fs::create_directory(Name("out"));
    WriteFile(Name("out/b.wav"), SilentWav());
    EXPECT_THAT(States(), ElementsAre("waiting", "interrupted", "waiting"));
    BatchRunOptions options = With(kCopy);
    options.job.verification = VerificationDepth::Quick;
    EXPECT_THAT(States(Run(options)), ElementsAre("done", "done", "done"));
    EXPECT_EQ(RunCount(), 2U);
    EXPECT_THAT(Result(2).notes, ElementsAre("the run that made it was killed before it could say so"));
    EXPECT_EQ(Result(2).sizeAfter, SilentWav().size());
}

TEST_F(RunningBatch, VerifiesAsAWholeWhatAKilledRunHasPutInPlaceWhenToldSo)
{
    WriteResult(2, Begun());
    fs::create_directory(Name("out"));
    WriteFile(Name("out/b.wav"), SilentWav());
    BatchRunOptions options = With(kCopy);
    options.job.verification = VerificationDepth::Full;
    EXPECT_EQ(RunBatchJob(Name("b"), 2, options).state, BatchResult::State::Done);
    EXPECT_EQ(Result(2).verification, "full");
}

TEST_F(RunningBatch, KeepsAJobInterruptedWhoseOutputCannotBeVerifiedYet)
{
    WriteResult(2, Begun());
    fs::create_directory(Name("out"));
    WriteFile(Name("out/b.wav"), SilentWav());
    BatchRunOptions options = With(kCopy);
    options.job.cancel.Cancel();
    EXPECT_EQ(RunBatchJob(Name("b"), 2, options).state, BatchResult::State::Cancelled);
    EXPECT_THAT(States(), ElementsAre("waiting", "interrupted", "waiting"));
    fs::remove(Name("in/b.wav"));
    const BatchResult result = RunBatchJob(Name("b"), 2, With(kCopy));
    EXPECT_EQ(result.failure, BatchResult::Failure::Job);
    EXPECT_THAT(States(), ElementsAre("waiting", "interrupted", "waiting"));
}

TEST_F(RunningBatch, DoesNotTakeAnOutputOfSomebodyElseEvenWhenItVerifiesNothing)
{
    WriteResult(2, Begun());
    fs::create_directory(Name("out"));
    WriteFile(Name("out/b.wav"), "not media");
    EXPECT_THAT(States(Run(With(kCopy))), ElementsAre("done", "failed", "done"));
    EXPECT_EQ(Result(2).verification, "quick");
    EXPECT_EQ(Result(2).failure, BatchResult::Failure::Different);
    EXPECT_EQ(ReadFile(Name("out/b.wav")), "not media");
}

TEST_F(RunningBatch, TellsTheFileThatWasToBeReplacedFromTheNewOne)
{
    KillWhileReplacingOld();
    EXPECT_THAT(States(), ElementsAre("waiting", "interrupted", "waiting"));
    ASSERT_EQ(Result(2).commands.size(), 1U);
    EXPECT_EQ(Result(2).commands.front().back(), "file:" + Name("out/b.wav"));
    BatchRunOptions again = With(kCopy);
    again.job.overwrite = true;
    EXPECT_THAT(States(Run(again)), ElementsAre("done", "done", "done"));
    EXPECT_EQ(RunCount(), 3U);
    EXPECT_EQ(ReadFile(Name("out/b.wav")), SilentWav());
}

TEST_F(RunningBatch, MakesMissingOutputsAgainOnlyWhenItIsTold)
{
    Run(With(kCopy));
    fs::remove(Name("out/a.wav"));
    WriteFile(Name("out/b.wav"), "changed");
    BatchRunOptions options = With(kCopy);
    EXPECT_THAT(States(Run(options)), ElementsAre("missing", "changed", "done"));
    EXPECT_EQ(RunCount(), 3U);
    options.choice.missing = true;
    EXPECT_THAT(States(Run(options)), ElementsAre("done", "changed", "done"));
    options.choice.changed = true;
    options.job.overwrite = true;
    EXPECT_THAT(States(Run(options)), ElementsAre("done", "done", "done"));
    EXPECT_EQ(RunCount(), 5U);
}

TEST_F(RunningBatch, IsRefusedWhileAnotherOneRunsTheBatch)
{
    const BatchFolder folder(Name("b"));
    const Descriptor lock = folder.Lock(BatchFolder::LockKind::Exclusive);
    const auto thrown = ExpectThrow<RunException>([this] { Run({}); });
    EXPECT_EQ(thrown.description, Name("b") + " is being run by another process");
    const auto one = ExpectThrow<RunException>([this] { RunBatchJob(Name("b"), 1); });
    EXPECT_EQ(one.description, Name("b") + " is being run by another process");
}

TEST_F(RunningBatch, RunsSingleJobsBesideEachOther)
{
    const BatchFolder folder(Name("b"));
    const Descriptor lock = folder.Lock(BatchFolder::LockKind::Shared);
    const Descriptor job = folder.LockJob(1);
    WriteResult(1, Begun());
    EXPECT_THAT(States(), ElementsAre("running", "waiting", "waiting"));
    EXPECT_EQ(RunBatchJob(Name("b"), 2, With(kCopy)).state, BatchResult::State::Done);
    EXPECT_EQ(RunBatchJob(Name("b"), 2, With(kCopy)).state, BatchResult::State::Done);
    EXPECT_EQ(RunCount(), 1U);
    const auto thrown = ExpectThrow<RunException>([this] { RunBatchJob(Name("b"), 1, With(kCopy)); });
    EXPECT_EQ(thrown.description, Name("b/jobs/000001.json") + " is being run by another process");
    const auto none = ExpectThrow<JobException>([this] { RunBatchJob(Name("b"), 4); });
    EXPECT_EQ(none.description, Name("b") + ": there is no job 4; the batch has 3");
}

TEST_F(RunningBatch, RunsOnlyDocumentsThatDoWhatTheBatchSays)
{
    Edit("b/jobs/000001.json", Name("out/a.wav"), Name("elsewhere.wav"));
    Edit("b/jobs/000002.json", Name("in/b.wav"), Name("in/c.wav"));
    WriteFile(Name("b/jobs/000003.json"), "{}");
    EXPECT_THAT(States(Run(With(kCopy))), ElementsAre("failed", "failed", "failed"));
    EXPECT_EQ(Result(1).reason, Name("b/jobs/000001.json") + ": node 2, filePath: the batch says '" +
                                    Name("out/a.wav") + "', the document '" + Name("elsewhere.wav") + "'");
    EXPECT_EQ(Result(2).reason, Name("b/jobs/000002.json") + ": node 1, filePath: the batch says '" +
                                    Name("in/b.wav") + "', the document '" + Name("in/c.wav") + "'");
    EXPECT_EQ(Result(3).reason.find(Name("b/jobs/000003.json") + ": "), 0U) << Result(3).reason;
    EXPECT_FALSE(Exists("log"));
    EXPECT_FALSE(Exists("elsewhere.wav"));
}

TEST_F(RunningBatch, RefusesDocumentsWithASecondTarget)
{
    WriteFile(Name("b/jobs/000001.json"),
              JsonOf(*WavJob(Name("in/a.wav"), {Name("out/a.wav"), Name("elsewhere.wav")})));
    Run(With(kCopy));
    EXPECT_EQ(Result(1).reason,
              Name("b/jobs/000001.json") + ": expected one source and one target, found 1 and 2");
}

TEST_F(RunningBatch, DoesNotFollowLinksThatStandForDocumentsOrResults)
{
    fs::rename(Name("b/jobs/000001.json"), Name("moved.json"));
    fs::create_symlink(Name("moved.json"), Name("b/jobs/000001.json"));
    const auto thrown = ExpectThrow<JobException>([this] { RunBatchJob(Name("b"), 1, With(kCopy)); });
    EXPECT_EQ(thrown.description,
              "Cannot open '" + Name("b/jobs/000001.json") + "': Too many levels of symbolic links");
    WriteFile(Name("precious"), "mine");
    fs::create_symlink(Name("precious"), Name("b/results/.000002.json.new"));
    EXPECT_EQ(RunBatchJob(Name("b"), 2, With(kCopy)).state, BatchResult::State::Done);
    fs::create_symlink(Name("precious"), Name("b/results/000003.json"));
    EXPECT_THROW(RunBatchJob(Name("b"), 3, With(kCopy)), JobException);
    EXPECT_EQ(ReadFile(Name("precious")), "mine");
}

TEST_F(RunningBatch, SaysWhichResultCannotBeRead)
{
    WriteFile(Name("b/results/000002.json"), "{");
    const auto thrown = ExpectThrow<JobException>([this] { Run(With(kCopy)); });
    EXPECT_EQ(thrown.description, Name("b/results/000002.json") +
                                      ": line 1, column 2: Missing a name for object member. "
                                      "(delete the file to make the job wait again)");
    const auto one = ExpectThrow<JobException>([this] { RunBatchJob(Name("b"), 2, With(kCopy)); });
    EXPECT_EQ(one.description, thrown.description);
    fs::remove(Name("b/results/000002.json"));
    EXPECT_THAT(States(), ElementsAre("waiting", "waiting", "waiting"));
}

TEST_F(RunningBatch, DoesNotReadFilesThatNoBatchCanHave)
{
    // With a hole, so that nothing is written.
    WriteFile(Name("b/results/000002.json"), "");
    fs::resize_file(Name("b/results/000002.json"), 16'000'001);
    const auto result = ExpectThrow<JobException>([this] { Run(With(kCopy)); });
    EXPECT_EQ(result.description,
              "Cannot read '" + Name("b/results/000002.json") + "': it is larger than 16.0 MB");
    fs::remove(Name("b/results/000002.json"));
    fs::resize_file(Name("b/jobs/000001.json"), 1'000'000'001);
    EXPECT_THAT(States(Run(With(kCopy))), ElementsAre("failed", "done", "done"));
    EXPECT_EQ(Result(1).reason, "Cannot read '" + Name("b/jobs/000001.json") + "': it is larger than 1.0 GB");
    fs::resize_file(Name("b/batch.json"), 1'000'000'001);
    const auto batch = ExpectThrow<JobException>([this] { Run(With(kCopy)); });
    EXPECT_EQ(batch.description, "Cannot read '" + Name("b/batch.json") + "': it is larger than 1.0 GB");
}

TEST_F(RunningBatch, CountsNoFurtherThanAnIntegerHolds)
{
    for (int i = 0; i < 3; ++i)
    {
        Edit("b/batch.json", "\"duration\": 200000", "\"duration\": 9223372036854775807");
    }
    // The first one fails, the others are made at once, and tell that they are.
    BatchRunOptions options = With("[[ $* != *a.wav* ]] || exit 1; echo out_time_us=9223372036854775807; "
                                   "echo progress=continue; sleep 0.1; " +
                                   std::string(kCopy));
    options.parallel = 2;
    std::int64_t least = 0;
    BatchProgress last;
    options.onProgress = [&](const BatchProgress& progress) {
        least = std::min({least, progress.mediaDone, progress.mediaLeft});
        last = progress;
    };
    EXPECT_THAT(States(Run(options)), ElementsAre("failed", "done", "done"));
    EXPECT_EQ(least, 0);
    EXPECT_EQ(last.mediaDone, 9223372036854775807);
    EXPECT_EQ(last.mediaLeft, 0);
    EXPECT_GT(last.speed, 0);
}

TEST_F(RunningBatch, CountsAJobOnceWhoseEndCannotBeTold)
{
    BatchRunOptions options = With("[[ $* == *a.wav* ]] || sleep 0.3; " + std::string(kCopy));
    options.parallel = 2;
    std::size_t most = 0;
    options.onProgress = [&most](const BatchProgress& progress) { most = std::max(most, progress.running); };
    options.onJobEnd = [](const BatchJob& job, const BatchResult&) {
        if (job.number == 1)
        {
            throw std::runtime_error("no room for a line");
        }
    };
    EXPECT_THROW(Run(options), std::runtime_error);
    EXPECT_LE(most, 2U);
    EXPECT_THAT(States(), ElementsAre("done", "done", "waiting"));
}

TEST_F(RunningBatch, SaysThatAnOutputFolderCannotBeMade)
{
    Edit("b/batch.json", Name("out"), Name("no/out"));
    Edit("b/jobs/000001.json", Name("out"), Name("no/out"));
    EXPECT_EQ(RunBatchJob(Name("b"), 1, With(kCopy)).reason,
              "Cannot make '" + Name("no/out") + "': No such file or directory");
}

TEST_F(RunningBatch, DoesNotFollowALinkOfTheOutputFolderIntoTheBatch)
{
    const std::string document = ReadFile(Name("b/jobs/000002.json"));
    fs::create_symlink("b/jobs", Name("out"));
    BatchRunOptions options = With(kCopy);
    options.job.overwrite = true;
    EXPECT_EQ(RunBatchJob(Name("b"), 1, options).reason,
              Name("b") + ": outputFolder: expected a folder outside of the batch, found '" +
                  fs::canonical(Name("b/jobs")).string() + "'");
    EXPECT_EQ(ReadFile(Name("b/jobs/000002.json")), document);
    EXPECT_FALSE(Exists("b/jobs/a.wav"));
}

TEST_F(RunningBatch, KeepsItsPlaceWhenTheWholeTreeIsMoved)
{
    fs::remove_all(Name("b"));
    fs::create_directory(Name("tree"));
    fs::rename(Name("in"), Name("tree/in"));
    BatchRequest request = Request();
    request.folder = "tree/b";
    request.inputs = {"tree/in"};
    request.outputFolder = "tree/out";
    PlanBatch(request);
    const Batch planned = ReadBatch(Name("tree/b"));
    EXPECT_EQ(planned.jobs[0].input, "../in/a.wav");
    EXPECT_EQ(planned.outputFolder, "../out");
    fs::rename(Name("tree"), Name("moved"));
    BatchRunOptions options = With("cp moved/in/a.wav \"$target\"");
    EXPECT_TRUE(RunBatch("moved/b", options).IsDone());
    EXPECT_TRUE(Exists("moved/out/c.wav"));
}

TEST_F(RunningBatch, DoesNotTakeTheFileThatWasToBeReplacedForTheNewOneWhenItChangesLater)
{
    KillWhileReplacingOld();
    WriteFile(Name("out/b.wav"), SilentWav());
    BatchRunOptions again = With(kCopy);
    again.job.overwrite = true;
    EXPECT_THAT(States(Run(again)), ElementsAre("done", "done", "done"));
    EXPECT_EQ(RunCount(), 2U) << "what stands in the place is taken";
}

TEST_F(RunningBatch, CountsAJobThatIsBeingVerifiedAsAWholeOne)
{
    BatchRunOptions options = With(kCopy);
    options.job.verification = VerificationDepth::Full;
    bool isTold = false;
    options.onProgress = [&isTold](const BatchProgress& progress) {
        isTold = isTold || progress.mediaDone > static_cast<std::int64_t>(progress.done) * 200000;
    };
    EXPECT_THAT(States(Run(options)), ElementsAre("done", "done", "done"));
    EXPECT_TRUE(isTold);
}

} // namespace
