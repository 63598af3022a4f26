#include "Media/Running/JobRun.h"

#include "Media/Probe/MediaProbe.h"
#include "Media/Running/JobCheck.h"
#include "Media/Running/JobVerification.h"
#include "Tests/Support/Clip.h"
#include "Tests/Support/Graphs.h"
#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/MediaInfo.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// Two seconds of video with B-frames and few key frames, and of sound, in several containers.
class RunningPartOfAFile : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_folder = new TemporaryFolder;
        Clip({"-f", "lavfi", "-i", "testsrc2=s=64x48:r=25:d=2", "-f", "lavfi", "-i", "sine=r=48000:d=2",
              "-c:v", "libx264", "-g", "20", "-c:a", "pcm_s16le", "in.mkv"});
        Clip({"-i", "in.mkv", "-c:v", "copy", "-c:a", "aac", "in.mp4"});
        Clip({"-i", "in.mkv", "-c:v", "copy", "-c:a", "mp2", "in.ts"});
        Clip({"-i", "in.mkv", "-map", "0:a", "in.wav"});
    }
    static void TearDownTestSuite() { delete s_folder; }

    static std::string Name(const std::string& name) { return (*s_folder / name).string(); }
    static void Clip(std::vector<std::string> arguments) { MakeClip(arguments, s_folder->Path().string()); }

    /// A job that makes one stream of the source's part into `record`.
    static GraphPtr Job(const std::string& source, int stream, const std::string& span,
                        const std::string& record, const std::string& output)
    {
        return Loaded(
            R"({"vertices":[{"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":")" +
            Name(source) + R"("}}}},{"id":2,"data":{"data":{"target":{"container":"nut","filePath":")" +
            Name(output) + "\"" + span + R"(}}}},{"id":3,"data":{"data":{"streamRaw":{"id":)" +
            std::to_string(stream) + R"(}}}}],"edges":[{"from":1,"to":3},{"from":3,"to":2,"data":{"data":)" +
            record + "}}]}");
    }
    static GraphPtr VideoJob(const std::string& source, const std::string& span,
                             const std::string& output = "out.nut")
    {
        return Job(source, 0, span, R"({"format_codec_video":{"codec_id":"CODEC_ID_FFV1"}})", output);
    }

    static void Run(const Conf::ITranscodingMetaGraph& job)
    {
        RunOptions options;
        options.overwrite = true;
        EXPECT_TRUE(RunJob(job, options).IsDone());
    }

    /// A checksum of each frame that ffmpeg decodes, in order.
    static std::vector<std::string> Frames(const std::string& file)
    {
        const ProcessResult result =
            RunProcess({"ffmpeg", "-nostdin", "-v", "error", "-i", Name(file), "-map", "0:0", "-pix_fmt",
                        "yuv420p", "-f", "framemd5", "-"});
        std::vector<std::string> sums;
        std::istringstream lines(result.output);
        for (std::string line; std::getline(lines, line);)
        {
            if (line.front() != '#')
            {
                sums.push_back(line.substr(line.rfind(' ') + 1));
            }
        }
        return sums;
    }

    static std::vector<std::string> FaultsOf(const std::string& source, const std::string& span)
    {
        return Sentences(CheckJob(*VideoJob(source, span)));
    }

private:
    static inline TemporaryFolder* s_folder = nullptr;
};

TEST_F(RunningPartOfAFile, MakesExactlyTheFramesOfThePart)
{
    for (const char* const source : {"in.mkv", "in.mp4", "in.ts"})
    {
        SCOPED_TRACE(source);
        const std::vector<std::string> all = Frames(source);
        ASSERT_THAT(all, SizeIs(50));
        // Neither end is a key frame.
        Run(*VideoJob(source, R"(,"start":600000,"end":1400000)"));
        EXPECT_EQ(Frames("out.nut"), std::vector<std::string>(all.begin() + 15, all.begin() + 35));
        Run(*VideoJob(source, R"(,"end":1000000)"));
        EXPECT_EQ(Frames("out.nut"), std::vector<std::string>(all.begin(), all.begin() + 25));
        Run(*VideoJob(source, R"(,"start":1960000)"));
        EXPECT_EQ(Frames("out.nut"), std::vector<std::string>(all.end() - 1, all.end()));
    }
}

TEST_F(RunningPartOfAFile, ItsQualityIsThatOfTheSamePartOfTheSource)
{
    for (const char* const source : {"in.mkv", "in.ts"})
    {
        for (const char* const span : {R"(,"start":600000,"end":1400000)", R"(,"start":1000000)"})
        {
            SCOPED_TRACE(source + std::string(span));
            const GraphPtr job = VideoJob(source, span);
            Run(*job);
            VerifyOptions options;
            options.quality = true;
            const std::vector<TargetVerification> targets = VerifyJob(*job, options);
            ASSERT_THAT(targets.at(0).quality, SizeIs(1));
            // The codec is lossless.
            EXPECT_EQ(targets[0].quality[0].psnr, std::nullopt);
            EXPECT_EQ(targets[0].quality[0].ssim, 1.0);
            EXPECT_THAT(targets[0].differences, IsEmpty());
        }
    }
}

TEST_F(RunningPartOfAFile, MakesExactlyTheFramesOfAPartThatBeginsBetweenTwo)
{
    const std::vector<std::string> all = Frames("in.mkv");
    for (const int begin : {500, 510, 530, 610, 1010})
    {
        SCOPED_TRACE(begin);
        const std::string span =
            ",\"start\":" + std::to_string(begin * 1000) + ",\"end\":" + std::to_string((begin + 800) * 1000);
        Run(*Job("in.mkv", 0, span,
                 R"({"format_codec_video":{"codec_id":"CODEC_ID_FFV1","frameRateRatio":[25,1]}})",
                 "between.nut"));
        const int first = (begin + 39) / 40;
        EXPECT_EQ(Frames("between.nut"),
                  std::vector<std::string>(all.begin() + first, all.begin() + first + 20));
    }
}

TEST_F(RunningPartOfAFile, MakesExactlyTheSamplesOfThePart)
{
    const auto bytes = [](const std::string& file) {
        return RunProcess({"ffmpeg", "-nostdin", "-v", "error", "-i", Name(file), "-f", "s16le", "-"}).output;
    };
    const std::string all = bytes("in.wav");
    const std::string record = R"({"format_codec_audio":{"codec_id":"CODEC_ID_PCM_S16LE"}})";
    Run(*Job("in.wav", 0, R"(,"start":500500,"end":1250000)", record, "out.nut"));
    // 48 samples of two bytes in a millisecond.
    EXPECT_EQ(bytes("out.nut") == all.substr(500500 * 96 / 1000, 749500 * 96 / 1000), true);
    // Matroska counts milliseconds.
    Run(*Job("in.mkv", 1, R"(,"start":500000,"end":1250000)", record, "out.nut"));
    EXPECT_NEAR(static_cast<double>(bytes("out.nut").size()), 750 * 96, 96);
}

TEST_F(RunningPartOfAFile, DoesSoInTwoPasses)
{
    Run(*Job("in.mkv", 0, R"(,"start":600000,"end":1400000)",
             R"({"format_codec_video":{"codec_id":"CODEC_ID_MPEG4","bitrate":100000,"two_pass_encoding":1}})",
             "two.nut"));
    EXPECT_THAT(Frames("two.nut"), SizeIs(20));
}

TEST_F(RunningPartOfAFile, ReportsHowFarOfThePartItIs)
{
    RunOptions options;
    options.overwrite = true;
    std::int64_t duration = 0;
    options.onProgress = [&duration](const RunProgress& progress) {
        duration = progress.duration.value_or(0);
    };
    RunJob(*VideoJob("in.mkv", R"(,"start":600000,"end":1400000)"), options);
    EXPECT_EQ(duration, 800000);
}

TEST_F(RunningPartOfAFile, DrawsTheSubtitlesThatBelongToIt)
{
    WriteFile(Name("s.srt"), "1\n00:00:01,000 --> 00:00:01,200\n####\n");
    Clip({"-f", "lavfi", "-i", "color=black:s=128x96:r=25:d=2", "-i", "s.srt", "-c:v", "ffv1", "-c:s", "srt",
          "drawn.mkv"});
    GraphPtr job = VideoJob("drawn.mkv", "", "whole.nut");
    const auto withSubtitle = [](const std::string& span, const std::string& output) {
        std::string text = JsonOf(*VideoJob("drawn.mkv", span, output));
        const std::string raw = R"({"id":0})";
        text.replace(text.find(raw), raw.size(), R"({"id":0,"$$MERGE_WITH$$":{"":{"$$MERGE_WITH$$":1}}})");
        return Loaded(text);
    };
    Run(*withSubtitle("", "whole.nut"));
    Run(*withSubtitle(R"(,"start":800000,"end":1600000)", "part.nut"));
    const std::vector<std::string> whole = Frames("whole.nut");
    EXPECT_NE(whole[26], whole[0]);
    EXPECT_EQ(Frames("part.nut"), std::vector<std::string>(whole.begin() + 20, whole.begin() + 40));
}

TEST_F(RunningPartOfAFile, HasItsChapters)
{
    for (const char* const source : {"in.mkv", "in.ts"})
    {
        SCOPED_TRACE(source);
        std::string text = JsonOf(*VideoJob(
            source,
            R"(,"start":600000,"end":1400000,"chapters":[{"":{"start":0,"end":1000000,"title":"One"}},)"
            R"({"":{"start":1000000,"end":2000000,"title":"Two"}}])",
            "chapters.mkv"));
        text.replace(text.find("\"nut\""), 5, "\"matroska\"");
        Run(*Loaded(text));
        const MediaFile made = ProbeMedia(Name("chapters.mkv"));
        ASSERT_THAT(made.chapters, SizeIs(2));
        EXPECT_EQ(made.chapters[0].start, 0);
        EXPECT_EQ(made.chapters[0].end, 400000);
        EXPECT_EQ(made.chapters[1].start, 400000);
        EXPECT_EQ(made.chapters[1].end, 800000);
    }
}

TEST_F(RunningPartOfAFile, CopiesAVideoOnlyWhereItsKeyFramesAreFound)
{
    const std::string copy = R"({"format_codec_video":{"codec_id":"CODEC_ID_H264","lossless":1}})";
    Run(*Job("in.mkv", 0, R"(,"start":1000000)", copy, "copy.nut"));
    // From the key frame at 0.8 s on.
    EXPECT_THAT(Frames("copy.nut"), SizeIs(30));
    EXPECT_THAT(
        Sentences(CheckJob(*Job("in.ts", 0, R"(,"start":1000000)", copy, "copy.nut"))),
        ElementsAre("link 3 -> 2, video stream 0: a video that is copied from such a container can only "
                    "begin with it"));
}

TEST_F(RunningPartOfAFile, IsRefusedWhereTheSourceHasNothing)
{
    EXPECT_THAT(FaultsOf("in.mkv", R"(,"start":9000000)"),
                ElementsAre("node 2, start: expected a time before the end of the source, found 9000000"));
    EXPECT_THAT(FaultsOf("in.mkv", R"(,"start":-1)"),
                ElementsAre("node 2, start: expected a time in microseconds, as 1500000, found -1"));
    EXPECT_THAT(FaultsOf("in.mkv", R"(,"start":100,"end":100)"),
                ElementsAre("node 2, end: expected a time after 100, where the target begins, found 100"));
    EXPECT_THAT(FaultsOf("in.mkv", R"(,"start":9223372036854775807)"),
                ElementsAre("node 2, start: expected a time in microseconds, as 1500000, found "
                            "9223372036854775807"));
    EXPECT_THAT(FaultsOf("in.mkv", R"(,"end":1000000000000000)"), IsEmpty());
}

} // namespace
