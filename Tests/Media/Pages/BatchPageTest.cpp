#include "Media/Pages/BatchPage.h"

#include "Media/MediaException.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/Html.h"

#include <gmock/gmock.h>

#include <ctime>
#include <limits>

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr std::int64_t kSecond = 1'000'000;

Batch MakeBatch(unsigned int count)
{
    Batch batch;
    batch.folder = "films";
    batch.base = "/media/films";
    batch.presets = {{"mp3", "mp3.json"}, {"flac", "flac.json"}};
    batch.outputFolder = "../out";
    batch.namePattern = "{stem}.{ext}";
    for (unsigned int number = 1; number <= count; ++number)
    {
        BatchJob job;
        job.number = number;
        job.input = "../in/" + std::to_string(number) + ".wav";
        job.preset = "mp3";
        job.output = std::to_string(number) + ".mp3";
        job.duration = 90 * kSecond;
        job.size = 4000;
        batch.jobs.push_back(job);
    }
    return batch;
}

BatchResult Done()
{
    BatchResult result;
    result.state = BatchResult::State::Done;
    result.verification = "quick";
    result.attempts = 1;
    result.host = "node7";
    result.started = "2026-11-22T11:03:07Z";
    result.ended = "2026-11-22T11:03:52Z";
    result.elapsed = 45 * kSecond;
    result.duration = 90 * kSecond;
    result.sizeBefore = 4000;
    result.sizeAfter = 1000;
    return result;
}

BatchResult Failed(const std::string& reason)
{
    BatchResult result = Done();
    result.state = BatchResult::State::Failed;
    result.failure = BatchResult::Failure::FFmpeg;
    result.reason = reason;
    result.exitCode = 187;
    result.messages = {"first line", "last line"};
    result.sizeAfter = 0;
    return result;
}

BatchStatus StatusOf(const std::vector<BatchJobStatus>& jobs)
{
    BatchStatus status;
    status.jobs = jobs;
    return status;
}

/// The rows of the table of jobs, each with its cells.
std::vector<std::string> RowsOf(const std::string& html)
{
    return AllMatches(html, "<tr id=\"job-[0-9]+\">(.*)</tr>");
}

/// The details of a job, if there are some.
std::string DetailsOf(const std::string& html, int number)
{
    const std::string begin = "<section class=\"record\" id=\"details-" + std::to_string(number) + "\">";
    const std::size_t place = html.find(begin);
    return place == std::string::npos ? "" : html.substr(place, html.find("</section>", place) - place);
}

TEST(BatchPage, TellsAllOfAJobThatIsDoneInItsRow)
{
    BatchStatus status = StatusOf({{BatchJobState::Done, Done()}});
    status.mediaDone = 90 * kSecond;
    status.speed = 2;
    const std::string html = MakeBatchPage(MakeBatch(1), status);
    ExpectGoodPage(html);
    EXPECT_THAT(
        RowsOf(html),
        ElementsAre("<td class=\"amount\" data-key=\"1\">1</td><td>done</td><td>../in/1.wav</td>"
                    "<td>mp3</td><td>1.mp3</td><td class=\"amount\" data-key=\"90000000\">0:01:30</td>"
                    "<td class=\"amount\" data-key=\"4000\">4.0 kB</td>"
                    "<td class=\"amount\" data-key=\"1000\">1.0 kB</td>"
                    "<td class=\"amount\" data-key=\"25.000000\">25.0 %</td>"
                    "<td class=\"amount\" data-key=\"45000000\">0:00:45</td>"
                    "<td class=\"amount\" data-key=\"2.000000\">2.0x</td>"
                    "<td>2026-11-22T11:03:07Z</td><td>node7</td>"));
    EXPECT_EQ(DetailsOf(html, 1), "");
    EXPECT_THAT(html, Not(HasSubstr("Not all that could be planned is done.")));
}

TEST(BatchPage, BeginsWithASummary)
{
    BatchStatus status = StatusOf({{BatchJobState::Done, Done()}, {BatchJobState::Waiting}});
    status.mediaDone = 90 * kSecond;
    status.mediaLeft = 30 * kSecond;
    status.speed = 2;
    const std::string html = MakeBatchPage(MakeBatch(2), status);
    EXPECT_THAT(html, HasSubstr("<title>films</title>"));
    EXPECT_THAT(html, HasSubstr("<p class=\"verdict\">2 jobs: 1 done, 1 waiting. <span class=\"bad\">Not all "
                                "that could be planned is done.</span></p>"));
    EXPECT_THAT(
        AllMatches(html, "<tr><th scope=\"row\">(.*)</td></tr>"),
        ElementsAre("Folder</th><td>/media/films", "Outputs</th><td>/media/out", "Presets</th><td>mp3, flac",
                    "Media</th><td>0:01:30 made, 0:00:30 left", "Sizes</th><td>4.0 kB became 1.0 kB (25.0 %)",
                    "Times (UTC)</th><td>from 2026-11-22T11:03:07Z to 2026-11-22T11:03:52Z, 0:00:45 in "
                    "the jobs",
                    "Speed</th><td>2.0x"));
}

TEST(BatchPage, TellsWhyAJobFailedAndHowToLookFurther)
{
    const std::string html =
        MakeBatchPage(MakeBatch(1), StatusOf({{BatchJobState::Failed, Failed("ffmpeg failed")}}));
    ExpectGoodPage(html);
    EXPECT_THAT(RowsOf(html).front(), HasSubstr("<td class=\"bad\"><a href=\"#details-1\">failed</a></td>"));
    EXPECT_EQ(DetailsOf(html, 1),
              "<section class=\"record\" id=\"details-1\">\n"
              "<h3><a href=\"#job-1\">Job 1</a>: failed</h3>\n"
              "<p class=\"neighbours\">../in/1.wav, preset mp3, to 1.mp3</p>\n"
              "<p class=\"bad\">ffmpeg failed</p>\n"
              "<p class=\"neighbours\">exit code 187, 1 attempt, verification quick, on node7, from "
              "2026-11-22T11:03:07Z to 2026-11-22T11:03:52Z</p>\n"
              "<p class=\"neighbours\">ffmpeg's last lines:</p>\n<ul>\n"
              "<li class=\"value\">first line</li>\n<li class=\"value\">last line</li>\n</ul>\n"
              "<p class=\"neighbours\">ffmpeg's command, asked in the batch's folder: <code>zconf job run "
              "--dry-run --overwrite jobs/000001.json</code></p>\n");
}

TEST(BatchPage, ShowsTheCommandsOfAFailureAsTheyAreTyped)
{
    BatchResult result = Failed("so");
    result.commands = {{"ffmpeg", "-pass", "1", "file:it's <b> & \\ $HOME"}};
    std::string html = MakeBatchPage(MakeBatch(1), StatusOf({{BatchJobState::Failed, result}}));
    ExpectGoodPage(html);
    EXPECT_THAT(DetailsOf(html, 1),
                HasSubstr("<p class=\"neighbours\">ffmpeg's command:</p>\n<pre>ffmpeg -pass 1 "
                          "&#39;file:it&#39;\\&#39;&#39;s &lt;b&gt; &amp; \\ $HOME&#39;</pre>\n"));
    EXPECT_THAT(DetailsOf(html, 1), Not(HasSubstr("--dry-run")));
    result.commands = {{"ffmpeg", "-pass", "1"}, {"ffmpeg", "-pass", "2"}};
    html = MakeBatchPage(MakeBatch(1), StatusOf({{BatchJobState::Cancelled, result}}));
    EXPECT_THAT(DetailsOf(html, 1), HasSubstr("ffmpeg's commands:</p>\n<pre>ffmpeg -pass 1</pre>\n"
                                              "<pre>ffmpeg -pass 2</pre>\n"));
}

TEST(BatchPage, KnowsEveryState)
{
    Batch batch = MakeBatch(9);
    batch.jobs[0].refusal = "in/1.wav: cannot be read";
    batch.jobs[0].output = "";
    const std::string html = MakeBatchPage(batch, StatusOf({{BatchJobState::Refused},
                                                            {BatchJobState::Waiting},
                                                            {BatchJobState::Running, Done()},
                                                            {BatchJobState::Interrupted, Done()},
                                                            {BatchJobState::Done, Done()},
                                                            {BatchJobState::Missing, Done()},
                                                            {BatchJobState::Changed, Done()},
                                                            {BatchJobState::Failed, Failed("so")},
                                                            {BatchJobState::Cancelled, Done()}}));
    ExpectGoodPage(html);
    EXPECT_THAT(AllMatches(html, ">Job [0-9]</a>: ([a-z]+)<"),
                ElementsAre("refused", "interrupted", "missing", "changed", "failed", "cancelled"));
    EXPECT_THAT(AllMatches(html, "<p class=\"bad\">(.*)</p>"),
                ElementsAre("in/1.wav: cannot be read", "The process that ran it is gone.",
                            "It was done, and its output is not there any more.",
                            "It was done, and its output has another size now.", "so",
                            "Somebody stopped the run."));
    EXPECT_THAT(DetailsOf(html, 1), Not(HasSubstr("<code>")));
}

TEST(BatchPage, KeepsWhatIsToBeKnownOfJobsThatAreDone)
{
    Batch batch = MakeBatch(2);
    batch.jobs[0].notes = {"subtitle stream 3 will be lost"};
    BatchResult result = Done();
    result.messages = {"a warning"};
    result.notes = {"the frame rate could not be verified"};
    const std::string html =
        MakeBatchPage(batch, StatusOf({{BatchJobState::Waiting}, {BatchJobState::Done, result}}));
    ExpectGoodPage(html);
    EXPECT_THAT(DetailsOf(html, 1), HasSubstr("<li class=\"value\">subtitle stream 3 will be lost</li>"));
    EXPECT_THAT(DetailsOf(html, 2), HasSubstr("<li class=\"value\">a warning</li>"));
    EXPECT_THAT(DetailsOf(html, 2),
                HasSubstr("<li class=\"value\">the frame rate could not be verified</li>"));
    EXPECT_THAT(html, Not(HasSubstr("What is not done")));
}

TEST(BatchPage, ShowsWhatSlurmKnows)
{
    SlurmTask task;
    task.array = 1234;
    task.index = 2;
    task.state = SlurmState::TimedOut;
    task.node = "node<7>";
    task.reason = "TimeLimit";
    const std::string html =
        MakeBatchPage(MakeBatch(2), StatusOf({{BatchJobState::Done, Done()}, {BatchJobState::Interrupted}}),
                      {std::nullopt, task});
    ExpectGoodPage(html);
    EXPECT_THAT(html, HasSubstr("<th scope=\"col\">Slurm</th>"));
    EXPECT_THAT(RowsOf(html)[1], testing::EndsWith("<td>timed-out</td>"));
    EXPECT_THAT(DetailsOf(html, 2), HasSubstr("Slurm 1234_2: timed-out on node&lt;7&gt; (TimeLimit)"));
    EXPECT_THAT(MakeBatchPage(MakeBatch(1), StatusOf({{BatchJobState::Waiting}})),
                Not(HasSubstr("Slurm</th>")));
}

TEST(BatchPage, KeepsNotesOfWhatWasMadeWithoutAMessage)
{
    BatchResult noted = Done();
    noted.notes = {"the frame rate could not be verified"};
    const std::string html =
        MakeBatchPage(MakeBatch(2), StatusOf({{BatchJobState::Done, Done()}, {BatchJobState::Done, noted}}));
    EXPECT_EQ(DetailsOf(html, 1), "");
    EXPECT_THAT(DetailsOf(html, 2),
                HasSubstr("<li class=\"value\">the frame rate could not be verified</li>"));
}

TEST(BatchPage, GivesNoReasonWhyAJobRuns)
{
    Batch batch = MakeBatch(1);
    batch.jobs[0].notes = {"the output is there"};
    EXPECT_THAT(DetailsOf(MakeBatchPage(batch, StatusOf({{BatchJobState::Running}})), 1),
                testing::AllOf(HasSubstr("the output is there"), Not(HasSubstr("reason"))));
}

TEST(BatchPage, ShowsATaskInDetailsUnlessItsJobIsDone)
{
    SlurmTask task;
    task.state = SlurmState::Queued;
    const std::string html = MakeBatchPage(
        MakeBatch(2), StatusOf({{BatchJobState::Done, Done()}, {BatchJobState::Waiting}}), {task, task});
    EXPECT_EQ(DetailsOf(html, 1), "");
    EXPECT_THAT(DetailsOf(html, 2), HasSubstr("Slurm 0_0: queued"));
}

TEST(BatchPage, TellsOfAnAttemptWhatIsKnown)
{
    BatchResult result;
    result.state = BatchResult::State::Failed;
    result.failure = BatchResult::Failure::Run;
    result.attempts = 1;
    const std::string html =
        MakeBatchPage(MakeBatch(2), StatusOf({{BatchJobState::Failed, result}, {BatchJobState::Failed}}));
    ExpectGoodPage(html);
    EXPECT_THAT(DetailsOf(html, 1), HasSubstr("<p class=\"neighbours\">1 attempt</p>"));
    EXPECT_THAT(DetailsOf(html, 2), Not(HasSubstr("attempt")));
}

TEST(BatchPage, TellsWhenTheFirstJobBeganAndTheLastEnded)
{
    BatchResult earlier = Done();
    earlier.started = "2026-11-22T11:00:00Z";
    earlier.ended = "2026-11-22T11:00:45Z";
    const std::string html = MakeBatchPage(
        MakeBatch(2), StatusOf({{BatchJobState::Done, Done()}, {BatchJobState::Done, earlier}}));
    EXPECT_THAT(html, HasSubstr("from 2026-11-22T11:00:00Z to 2026-11-22T11:03:52Z, "));
    BatchResult running = Done();
    running.state = BatchResult::State::Running;
    running.ended = "";
    EXPECT_THAT(MakeBatchPage(MakeBatch(1), StatusOf({{BatchJobState::Running, running}})),
                HasSubstr("from 2026-11-22T11:03:07Z, "));
}

TEST(BatchPage, ShowsHostileTextsAsTexts)
{
    for (const std::string& text :
         {std::string("</td></table><script>alert(1)</script>"),
          std::string("\"><img src=x onerror=alert(1)>"), std::string("' onmouseover='alert(1)"),
          std::string("--><!-- ]]> <![CDATA["), std::string("&lt;b&gt;"), std::string("a\nb\r\t\x1b[31m\x7f"),
          std::string("\xff\xfe \xed\xa0\x80"), std::string("\xe2\x80\xae gpj.exe"),
          std::string("javascript:alert(1)"), std::string("\n</pre>\xef\xbf\xbf"), std::string("a\0b", 3)})
    {
        Batch batch = MakeBatch(2);
        batch.folder = batch.base = batch.outputFolder = batch.presets[0].name = text;
        batch.jobs[0].input = batch.jobs[0].preset = batch.jobs[0].output = text;
        batch.jobs[0].notes = {text};
        batch.jobs[1].refusal = text;
        BatchResult result = Failed(text);
        result.messages = result.notes = {text};
        result.commands = {{text, text}, {text + text}};
        result.verification = result.host = result.started = result.ended = text;
        SlurmTask task;
        task.node = task.reason = text;
        ExpectGoodPage(MakeBatchPage(
            batch, StatusOf({{BatchJobState::Failed, result}, {BatchJobState::Refused}}), {task, task}));
    }
}

TEST(BatchPage, EndsEachTextWhereItEnds)
{
    Batch batch = MakeBatch(1);
    batch.jobs[0].input = "<b>&\"'\n\\";
    EXPECT_THAT(RowsOf(MakeBatchPage(batch, StatusOf({{BatchJobState::Waiting}}))).front(),
                HasSubstr("<td>&lt;b&gt;&amp;&quot;&#39;\\n\\\\</td>"));
}

TEST(BatchPage, LeavesUnknownAmountsEmpty)
{
    Batch batch = MakeBatch(1);
    batch.jobs[0].duration.reset();
    batch.jobs[0].refusal = "so";
    const std::string html = MakeBatchPage(batch, StatusOf({{BatchJobState::Refused}}));
    EXPECT_EQ(AllMatches(html, "(<td class=\"amount\" data-key=\"\"></td>)").size(), 6U);
    EXPECT_THAT(html, Not(HasSubstr("Sizes</th>")));
    EXPECT_THAT(html, Not(HasSubstr("Times (UTC)</th>")));
    EXPECT_THAT(html, Not(HasSubstr("<th scope=\"row\">Speed</th>")));
}

TEST(BatchPage, SurvivesAmountsBeyondAllSums)
{
    BatchResult result = Done();
    result.sizeBefore = result.sizeAfter = std::numeric_limits<std::uint64_t>::max();
    result.elapsed = std::numeric_limits<std::int64_t>::max();
    result.duration = std::numeric_limits<std::int64_t>::min();
    BatchStatus status = StatusOf({{BatchJobState::Done, result}, {BatchJobState::Done, result}});
    status.speed = std::numeric_limits<double>::infinity();
    const std::string html = MakeBatchPage(MakeBatch(2), status);
    ExpectGoodPage(html);
    EXPECT_THAT(html, HasSubstr("18446.7 PB became 18446.7 PB (100.0 %)"));
    EXPECT_THAT(html, Not(HasSubstr("inf")));
}

TEST(BatchPage, OfAnotherBatchsStatusIsRefused)
{
    const Batch batch = MakeBatch(2);
    const BatchStatus status = StatusOf({{BatchJobState::Waiting}});
    const Thrown few = ExpectThrow<JobException>([&] { MakeBatchPage(batch, status); });
    EXPECT_EQ(few.description, "films: expected 2 jobs in the status, found 1");
    EXPECT_EQ(few.Get<MediaException::TagFile>(), "films");
    const BatchStatus whole = StatusOf({{BatchJobState::Waiting}, {BatchJobState::Waiting}});
    const Thrown fewTasks = ExpectThrow<JobException>([&] { MakeBatchPage(batch, whole, {std::nullopt}); });
    EXPECT_EQ(fewTasks.description, "films: expected 2 jobs in the tasks, found 1");
}

TEST(BatchPage, OfAnEmptyBatchIsAPage) { ExpectGoodPage(MakeBatchPage(MakeBatch(0), BatchStatus())); }

TEST(BatchPage, IsTheSameEachTimeAndQuickForThousandsOfJobs)
{
    constexpr unsigned int kCount = 5000;
    const Batch batch = MakeBatch(kCount);
    std::vector<BatchJobStatus> jobs;
    for (unsigned int i = 0; i < kCount; ++i)
    {
        jobs.push_back(i % 10 == 0 ? BatchJobStatus{BatchJobState::Failed, Failed("ffmpeg failed")}
                                   : BatchJobStatus{BatchJobState::Done, Done()});
    }
    const BatchStatus status = StatusOf(jobs);
    const std::clock_t begin = std::clock();
    const std::string html = MakeBatchPage(batch, status);
    // Far more work than it takes, and far less than copying the page for each job would.
    EXPECT_LT(std::clock() - begin, 2 * CLOCKS_PER_SEC);
    EXPECT_EQ(MakeBatchPage(batch, status), html);
    EXPECT_THAT(html, HasSubstr("<tr id=\"job-5000\">"));
}

} // namespace
