#include "Media/Running/JobRun.h"

#include "Media/Probe/MediaProbe.h"
#include "Tests/Support/Clip.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/RunFixtures.h"

#include <gmock/gmock.h>

#include <fcntl.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

using Outcome = TargetResult::Outcome;

constexpr const char* kWrite = "echo made > \"$target\"";

class RunningJob : public testing::Test
{
protected:
    RunningJob() { WriteFile(Name("in.wav"), SilentWav()); }

    std::string Name(const std::string& name) const { return (m_folder / name).string(); }
    GraphPtr Job(const std::vector<std::string>& targets = {"out.wav"}) const
    {
        std::vector<std::string> names;
        for (const std::string& target : targets)
        {
            names.push_back(Name(target));
        }
        return WavJob(Name("in.wav"), names);
    }
    /// With a script in place of ffmpeg, which makes something that is not media.
    RunOptions With(const std::string& script) const
    {
        RunOptions options;
        options.verification = VerificationDepth::Off;
        options.ffmpeg = MakeScript(m_folder, script);
        return options;
    }
    bool Exists(const std::string& name) const { return std::filesystem::exists(Name(name)); }
    /// But for the source and the script.
    std::vector<std::string> Made() const
    {
        std::vector<std::string> names;
        for (const std::string& name : m_folder.Names())
        {
            if (name != "in.wav" && name != "ffmpeg")
            {
                names.push_back(name);
            }
        }
        return names;
    }

    TemporaryFolder m_folder;
};

TEST_F(RunningJob, MakesTheTargetsOneAfterTheOther)
{
    const RunResult result = RunJob(*Job({"a.wav", "b.wav"}), With(kWrite));
    EXPECT_TRUE(result.IsDone());
    ASSERT_EQ(result.targets.size(), 2U);
    EXPECT_EQ(result.targets[0].file, Name("a.wav"));
    EXPECT_EQ(result.targets[0].outcome, Outcome::Done);
    EXPECT_EQ(result.targets[1].file, Name("b.wav"));
    EXPECT_EQ(result.targets[1].outcome, Outcome::Done);
    EXPECT_EQ(ReadFile(Name("a.wav")), "made\n");
    EXPECT_THAT(Made(), UnorderedElementsAre("a.wav", "b.wav"));
}

TEST_F(RunningJob, MakesARealFileInTwoPasses)
{
    WriteFile(Name("in.mkv"), TinyClip());
    const GraphPtr job =
        Loaded(R"({"vertices":[{"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":")" +
               Name("in.mkv") + R"("}}}},{"id":2,"data":{"data":{"streamRaw":{"id":0}}}},
            {"id":3,"data":{"data":{"target":{"container":"avi","filePath":")" +
               Name("out.avi") + R"("}}}}],
            "edges":[{"from":1,"to":2},{"from":2,"to":3,"data":{"data":{"format_codec_video":
                {"codec_id":"CODEC_ID_MPEG4","bitrate":100000,"two_pass_encoding":1}}}}]})");
    std::vector<RunProgress> reports;
    RunOptions options;
    options.onProgress = [&reports](const RunProgress& progress) { reports.push_back(progress); };
    EXPECT_TRUE(RunJob(*job, options).IsDone());
    EXPECT_EQ(ProbeMedia(Name("out.avi")).streams.at(0).codec, "mpeg4");
    ASSERT_GE(reports.size(), 4U);
    EXPECT_EQ(reports.front().pass, 0U);
    EXPECT_EQ(reports.front().passCount, 2U);
    EXPECT_EQ(reports.front().part, 0.0);
    EXPECT_EQ(reports.back().pass, 1U);
    EXPECT_GT(reports.back().done, 0);
    for (std::size_t i = 1; i < reports.size(); ++i)
    {
        EXPECT_GE(reports[i].part, reports[i - 1].part);
        EXPECT_LE(reports[i].part, 1.0);
    }
}

TEST_F(RunningJob, ReportsHowFarItIs)
{
    std::vector<RunProgress> reports;
    RunOptions options =
        With(std::string(kWrite) + "; echo out_time_us=50000; echo speed=2x; echo progress=continue");
    options.onProgress = [&reports](const RunProgress& progress) { reports.push_back(progress); };
    RunJob(*Job({"a.wav", "b.wav"}), options);
    ASSERT_EQ(reports.size(), 4U);
    EXPECT_EQ(reports[0].done, 0);
    EXPECT_EQ(reports[0].part, 0.0);
    EXPECT_EQ(reports[0].file, Name("a.wav"));
    EXPECT_EQ(reports[3].file, Name("b.wav"));
    EXPECT_EQ(reports[3].target, 1U);
    EXPECT_EQ(reports[3].targetCount, 2U);
    EXPECT_EQ(reports[3].pass, 0U);
    EXPECT_EQ(reports[3].passCount, 1U);
    EXPECT_EQ(reports[3].done, 50000);
    EXPECT_EQ(reports[3].duration, 200000);
    EXPECT_EQ(reports[3].speed, 2.0);
    EXPECT_EQ(reports[3].part, 0.25);
}

TEST_F(RunningJob, TellsEachTargetThatIsDoneBeforeTheNextOneBegins)
{
    std::vector<std::string> events;
    RunOptions options = With(std::string(kWrite) + "; echo warning >&2");
    options.onProgress = [&](const RunProgress& progress) { events.push_back("at " + progress.file); };
    options.onTargetDone = [&](const TargetResult& target) {
        EXPECT_TRUE(std::filesystem::exists(target.file));
        EXPECT_THAT(target.warnings, ElementsAre("warning"));
        events.push_back("done " + target.file);
    };
    RunJob(*Job({"a.wav", "b.wav"}), options);
    EXPECT_THAT(events, ElementsAre("at " + Name("a.wav"), "done " + Name("a.wav"), "at " + Name("b.wav"),
                                    "done " + Name("b.wav")));
}

TEST_F(RunningJob, TellsTheCommandsThatWouldWriteRightToATargetBeforeItMakesIt)
{
    std::vector<std::string> events;
    RunOptions options = With(kWrite);
    options.overwrite = true;
    options.onCommands = [&](const std::vector<std::vector<std::string>>& commands) {
        ASSERT_EQ(commands.size(), 1U);
        EXPECT_EQ(commands[0].front(), options.ffmpeg);
        EXPECT_THAT(commands[0], testing::Contains("-y"));
        events.push_back("command " + commands[0].back());
    };
    options.onProgress = [&](const RunProgress& progress) { events.push_back("at " + progress.file); };
    RunJob(*Job({"a.wav", "b.wav"}), options);
    EXPECT_THAT(events, ElementsAre("command file:" + Name("a.wav"), "at " + Name("a.wav"),
                                    "command file:" + Name("b.wav"), "at " + Name("b.wav")));
}

TEST_F(RunningJob, AFailureOfFFmpegCarriesItsExitCodeAndLastLines)
{
    const Thrown thrown = ExpectThrow<TranscodeFailed>(
        [&] { RunJob(*Job(), With(std::string(kWrite) + "; echo one >&2; echo two >&2; exit 7")); });
    EXPECT_EQ(thrown.description, "ffmpeg failed to make '" + Name("out.wav") + "' (exit code 7): two");
    EXPECT_EQ(thrown.Get<TranscodeFailed::TagExitCode>(), 7);
    EXPECT_EQ(thrown.Get<TranscodeFailed::TagMessages>(), std::vector<std::string>({"one", "two"}));
    EXPECT_EQ(thrown.Get<MediaException::TagFile>(), Name("out.wav"));
    EXPECT_THAT(Made(), IsEmpty());
}

TEST_F(RunningJob, ASignalThatEndsFFmpegIsAFailure)
{
    const Thrown thrown = ExpectThrow<TranscodeFailed>([&] { RunJob(*Job(), With("kill -SEGV $$")); });
    EXPECT_EQ(thrown.description, "ffmpeg failed to make '" + Name("out.wav") + "' (exit code 139)");
    EXPECT_EQ(thrown.Get<TranscodeFailed::TagExitCode>(), 128 + SIGSEGV);
}

TEST_F(RunningJob, TargetsThatAreDoneStayWhenALaterOneFails)
{
    const RunOptions options = With(std::string(kWrite) + "; test ! -e " + Name("a.wav"));
    EXPECT_THROW(RunJob(*Job({"a.wav", "b.wav"}), options), TranscodeFailed);
    EXPECT_THAT(Made(), ElementsAre("a.wav"));
}

TEST_F(RunningJob, IsCancelledInACallback)
{
    RunOptions options = With(std::string(kWrite) + "; echo progress=continue; exec sleep 60");
    options.onProgress = [token = options.cancel](const RunProgress&) { token.Cancel(); };
    const RunResult result = RunJob(*Job({"a.wav", "b.wav"}), options);
    EXPECT_FALSE(result.IsDone());
    ASSERT_EQ(result.targets.size(), 2U);
    EXPECT_EQ(result.targets[0].outcome, Outcome::Cancelled);
    EXPECT_EQ(result.targets[1].outcome, Outcome::Cancelled);
    EXPECT_EQ(result.targets[1].file, Name("b.wav"));
    EXPECT_THAT(Made(), IsEmpty());
}

TEST_F(RunningJob, IsCancelledWhileFFmpegRuns)
{
    RunOptions options =
        With(std::string(kWrite) + "; echo out_time_us=1; echo progress=continue; exec sleep 60");
    options.onProgress = [token = options.cancel](const RunProgress& progress) {
        if (progress.done > 0)
        {
            token.Cancel();
        }
    };
    EXPECT_EQ(RunJob(*Job(), options).targets.at(0).outcome, Outcome::Cancelled);
    EXPECT_THAT(Made(), IsEmpty());
}

TEST_F(RunningJob, MessagesNameTheTargetAndNotWhereItIsMade)
{
    const Thrown thrown = ExpectThrow<TranscodeFailed>(
        [&] { RunJob(*Job(), With("echo \"$target is bad, $target\" >&2; exit 1")); });
    EXPECT_EQ(thrown.Get<TranscodeFailed::TagMessages>(),
              std::vector<std::string>({Name("out.wav") + " is bad, " + Name("out.wav")}));
}

TEST_F(RunningJob, WritesToTheNullDeviceInItsPlace)
{
    const RunResult result =
        RunJob(*WavJob(Name("in.wav"), {"/dev/null"}), With("echo made > \"$target\"; echo \"$target\" >&2"));
    ASSERT_TRUE(result.IsDone());
    EXPECT_THAT(result.targets.at(0).warnings, ElementsAre("/dev/null"));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(RunningJob, ACancelledRunKeepsWhatIsDone)
{
    RunOptions options = With(kWrite);
    options.onTargetDone = [token = options.cancel](const TargetResult&) { token.Cancel(); };
    const RunResult result = RunJob(*Job({"a.wav", "b.wav"}), options);
    ASSERT_EQ(result.targets.size(), 2U);
    EXPECT_EQ(result.targets[0].outcome, Outcome::Done);
    EXPECT_EQ(result.targets[1].outcome, Outcome::Cancelled);
    EXPECT_THAT(Made(), ElementsAre("a.wav"));
}

TEST_F(RunningJob, StartsNothingWhenItIsCancelledBeforehand)
{
    const RunOptions options = With("touch " + Name("started"));
    options.cancel.Cancel();
    EXPECT_EQ(RunJob(*Job(), options).targets.at(0).outcome, Outcome::Cancelled);
    EXPECT_THAT(Made(), IsEmpty());
}

TEST_F(RunningJob, WhatACallbackThrowsStopsFFmpegAndPassesThrough)
{
    RunOptions options = With(std::string(kWrite) + "; echo $$ > " + Name("running") +
                              "; echo out_time_us=1; echo progress=continue; exec sleep 60");
    options.onProgress = [](const RunProgress& progress) {
        if (progress.done > 0)
        {
            throw std::domain_error("enough");
        }
    };
    EXPECT_THROW(RunJob(*Job(), options), std::domain_error);
    EXPECT_THAT(Made(), ElementsAre("running"));
    EXPECT_EQ(::kill(static_cast<pid_t>(std::stol(ReadFile(Name("running")))), 0), -1);
}

TEST_F(RunningJob, ATargetThatIsThereStaysUnlessItMayBeReplaced)
{
    WriteFile(Name("out.wav"), "old");
    RunOptions options = With(kWrite);
    EXPECT_THROW(RunJob(*Job(), options), MediaException);
    EXPECT_EQ(ReadFile(Name("out.wav")), "old");
    options.overwrite = true;
    EXPECT_TRUE(RunJob(*Job(), options).IsDone());
    EXPECT_EQ(ReadFile(Name("out.wav")), "made\n");
}

TEST_F(RunningJob, EveryTargetIsAskedBeforeAnythingIsMade)
{
    WriteFile(Name("b.wav"), "old");
    EXPECT_THROW(RunJob(*Job({"a.wav", "b.wav"}), With(kWrite)), MediaException);
    EXPECT_THAT(Made(), ElementsAre("b.wav"));
}

TEST_F(RunningJob, NothingIsWrittenOverItsSourceWhateverItIsCalled)
{
    std::filesystem::create_directory(Name("sub"));
    std::filesystem::create_symlink("in.wav", Name("symbolic.wav"));
    std::filesystem::create_hard_link(Name("in.wav"), Name("hard.wav"));
    for (const char* const name : {"in.wav", "./in.wav", "sub/../in.wav", "symbolic.wav", "hard.wav"})
    {
        SCOPED_TRACE(name);
        RunOptions options = With("touch " + Name("started"));
        options.overwrite = true;
        options.document = "job.json";
        const Thrown thrown = ExpectThrow<JobException>([&] { RunJob(*Job({name}), options); });
        EXPECT_EQ(thrown.Get<MediaException::TagNode>(), 3);
        EXPECT_EQ(thrown.Get<MediaException::TagFile>(), "job.json");
        EXPECT_FALSE(Exists("started"));
        EXPECT_EQ(ReadFile(Name("in.wav")), SilentWav());
    }
}

TEST_F(RunningJob, AProgramThatIsNotThereIsARunException)
{
    RunOptions options;
    options.ffmpeg = "./none";
    const Thrown thrown = ExpectThrow<RunException>([&] { RunJob(*Job(), options); });
    EXPECT_EQ(thrown.description, "Cannot run './none': No such file or directory");
    EXPECT_THAT(Made(), IsEmpty());
}

/// What a program finds that this process starts, and that a library should leave alone.
std::string ProcessState()
{
    std::string state = std::filesystem::current_path().string();
    for (int signal = 1; signal < 32; ++signal)
    {
        struct sigaction action = {};
        ::sigaction(signal, nullptr, &action);
        state += " " + std::to_string(reinterpret_cast<std::uintptr_t>(action.sa_handler));
    }
    for (int stream = 0; stream < 3; ++stream)
    {
        state += " " + std::to_string(::fcntl(stream, F_GETFL));
    }
    return state;
}

std::size_t OpenFiles()
{
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

TEST_F(RunningJob, LeavesTheProcessAsItWas)
{
    RunOptions options = With(std::string(kWrite) + "; echo message >&2; echo progress=continue");
    options.overwrite = true;
    RunJob(*Job(), options);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const std::string state = ProcessState();
    const std::size_t files = OpenFiles();
    std::string during;
    options.onProgress = [&during](const RunProgress&) { during = ProcessState(); };
    RunJob(*Job(), options);
    const std::string after = ProcessState();
    const std::size_t filesAfter = OpenFiles();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(during, state);
    EXPECT_EQ(after, state);
    EXPECT_EQ(filesAfter, files);
}

TEST(CancelTokens, OfTheSameOriginShareOneState)
{
    const CancelToken token;
    const CancelToken copy = token; // NOLINT(performance-unnecessary-copy-initialization)
    const CancelToken other;
    EXPECT_FALSE(copy.IsCancelled());
    token.Cancel();
    EXPECT_TRUE(copy.IsCancelled());
    EXPECT_FALSE(other.IsCancelled());
}

TEST_F(RunningJob, RemovesWhatAKilledRunLeftBesideItsTarget)
{
    const std::string left = Name(".zelnor-a1B2c3");
    std::filesystem::create_directory(left);
    std::filesystem::permissions(left, std::filesystem::perms::owner_all);
    WriteFile(left + "/output", "half");
    EXPECT_TRUE(RunJob(*Job(), With(kWrite)).IsDone());
    EXPECT_THAT(Made(), ElementsAre("out.wav"));
}

} // namespace
