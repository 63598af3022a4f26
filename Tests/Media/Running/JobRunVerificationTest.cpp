#include "Media/Running/JobRun.h"

#include "Media/Running/JobVerification.h"
#include "Tests/Support/Clip.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/RunFixtures.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

/// Runs whose ffmpeg ends well, whatever it has made.
class VerifiedRun : public testing::Test
{
protected:
    VerifiedRun() { WriteFile(Name("in.wav"), SilentWav()); }

    std::string Name(const std::string& name) const { return (m_folder / name).string(); }
    GraphPtr Job(const std::string& target = "out.wav") const
    {
        return WavJob(Name("in.wav"), {Name(target)});
    }
    RunOptions With(const std::string& script) const
    {
        RunOptions options;
        options.ffmpeg = MakeScript(m_folder, script);
        options.overwrite = true;
        options.document = "job.json";
        return options;
    }
    std::string Copy(const std::string& name) const { return "cp '" + Name(name) + "' \"$target\""; }
    /// What is said of the run.
    std::vector<std::string> Sentences(const GraphPtr& job, const RunOptions& options) const
    {
        try
        {
            RunJob(*job, options);
        }
        catch (const VerificationFailed& failure)
        {
            std::vector<std::string> sentences;
            for (const TargetDifference& difference :
                 *boost::get_error_info<VerificationFailed::TagDifferences>(failure))
            {
                sentences.push_back(difference.Sentence());
            }
            return sentences;
        }
        return {};
    }
    /// A job that converts streams of "in.mkv" or another source.
    GraphPtr Convert(const std::string& container, const std::string& record,
                     const std::string& source = "in.mkv") const
    {
        return Loaded(
            R"({"vertices":[{"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":")" +
            Name(source) + R"("}}}},{"id":2,"data":{"data":{"streamRaw":{"id":0}}}},
            {"id":3,"data":{"data":{"target":{"container":")" +
            container + R"(","filePath":")" + Name("out." + container) +
            R"("}}}}],"edges":[{"from":1,"to":2},{"from":2,"to":3,"data":{"data":)" + record + "}}]}");
    }

    TemporaryFolder m_folder;
};

TEST_F(VerifiedRun, PutsAGoodFileInPlace)
{
    const RunResult result = RunJob(*Job(), With(Copy("in.wav")));
    EXPECT_TRUE(result.IsDone());
    EXPECT_THAT(result.targets.at(0).notes, IsEmpty());
    EXPECT_EQ(ReadFile(Name("out.wav")), SilentWav());
}

TEST_F(VerifiedRun, AProgramThatWritesNothingLeavesTheOldTarget)
{
    WriteFile(Name("out.wav"), "old");
    const Thrown thrown = ExpectThrow<VerificationFailed>([&] { RunJob(*Job(), With("true")); });
    EXPECT_EQ(thrown.description, "'" + Name("out.wav") +
                                      "' is not what the job says: node 3: file: wanted wav, found cannot be "
                                      "read: Invalid data found when processing input");
    EXPECT_EQ(thrown.Get<MediaException::TagFile>(), Name("out.wav"));
    EXPECT_EQ(ReadFile(Name("out.wav")), "old");
    EXPECT_THAT(m_folder.Names(), testing::UnorderedElementsAre("ffmpeg", "in.wav", "out.wav"));
}

TEST_F(VerifiedRun, AnotherFileThanTheJobSaysIsRefused)
{
    MakeClip({"-f", "lavfi", "-i", "sine=r=16000:d=0.2", "-ac", "2", "-c:a", "pcm_s16le", Name("other.wav")});
    EXPECT_THAT(Sentences(WavJob(Name("in.wav"), {Name("out.wav")}), With("true")), testing::SizeIs(1));
    const GraphPtr job = Convert("wav", R"({"format_codec_audio":{"codec_id":"CODEC_ID_PCM_S16LE",
        "sample_rate":8000,"layout":"MONO"}})",
                                 "in.wav");
    EXPECT_THAT(Sentences(job, With(Copy("other.wav"))),
                ElementsAre("link 2 -> 3, audio stream 0: channel layout: wanted MONO, found STEREO",
                            "link 2 -> 3, audio stream 0: sample rate: wanted 8000 Hz, found 16000 Hz"));
}

TEST_F(VerifiedRun, AFileThatIsTooShortIsRefused)
{
    MakeClip({"-f", "lavfi", "-i", "sine=r=8000:d=3", "-c:a", "pcm_s16le", Name("in.wav")});
    MakeClip({"-i", Name("in.wav"), "-t", "1.5", "-c", "copy", Name("half.wav")});
    EXPECT_THAT(Sentences(Job(), With(Copy("half.wav"))),
                ElementsAre("link 2 -> 3, audio stream 0: duration: wanted 3.000 s, found 1.536 s"));
    EXPECT_FALSE(std::filesystem::exists(Name("out.wav")));
}

TEST_F(VerifiedRun, AnUnverifiedFileIsKeptBesideItsPlaceWhenAskedFor)
{
    WriteFile(Name("out.wav"), "old");
    WriteFile(Name("out.unverified.wav"), "older");
    RunOptions options = With("echo bad > \"$target\"");
    options.keepUnverified = true;
    const Thrown thrown = ExpectThrow<VerificationFailed>([&] { RunJob(*Job(), options); });
    EXPECT_EQ(thrown.Get<VerificationFailed::TagKeptFile>(), Name("out.unverified-2.wav"));
    EXPECT_EQ(ReadFile(Name("out.unverified-2.wav")), "bad\n");
    EXPECT_EQ(ReadFile(Name("out.unverified.wav")), "older");
    EXPECT_EQ(ReadFile(Name("out.wav")), "old");
}

TEST_F(VerifiedRun, NothingIsComparedWhenItIsOff)
{
    RunOptions options = With("echo bad > \"$target\"");
    options.verification = VerificationDepth::Off;
    EXPECT_TRUE(RunJob(*Job(), options).IsDone());
    EXPECT_EQ(ReadFile(Name("out.wav")), "bad\n");
}

TEST_F(VerifiedRun, ATargetThatIsNoRegularFileIsSaidToBeUnverified)
{
    RunOptions options = With("true");
    const RunResult result = RunJob(*WavJob(Name("in.wav"), {"/dev/null"}), options);
    EXPECT_TRUE(result.IsDone());
    EXPECT_THAT(result.targets.at(0).notes,
                ElementsAre("'/dev/null' cannot be verified, because it is not a regular file"));
}

TEST_F(VerifiedRun, SoundThatNoDecoderTakesIsRefused)
{
    MakeClip({"-f", "lavfi", "-i", "sine=r=48000:d=0.4", "-c:a", "flac", Name("sound.mka")});
    const GraphPtr job = Convert(
        "mp4", R"({"format_codec_audio":{"codec_id":"CODEC_ID_AAC","bitrate":64000,"profile":"aac_he"}})",
        "sound.mka");
    EXPECT_THAT(Sentences(job, {}),
                ElementsAre("link 2 -> 3, audio stream 0: decoding: wanted no error, found the decoder aac "
                            "cannot be opened: Function not implemented"));
    EXPECT_FALSE(std::filesystem::exists(Name("out.mp4")));
}

TEST_F(VerifiedRun, ACutSourceIsNamed)
{
    MakeClip({"-f", "lavfi", "-i", "testsrc2=s=64x48:r=25:d=4", "-c:v", "mjpeg", "-movflags", "+faststart",
              Name("whole.mov")});
    const std::string whole = ReadFile(Name("whole.mov"));
    WriteFile(Name("in.mov"), whole.substr(0, whole.size() / 2));
    const GraphPtr job =
        Convert("avi", R"({"format_codec_video":{"codec_id":"CODEC_ID_MPEG4","bitrate":200000}})", "in.mov");
    const std::vector<std::string> sentences = Sentences(job, {});
    ASSERT_THAT(sentences, testing::SizeIs(1));
    // How many frames are left depends on the encoder.
    EXPECT_THAT(
        sentences.front(),
        testing::MatchesRegex("link 2 -> 3, video stream 0: source '.*/in.mov': wanted 4.000 s, found "
                              "[0-3]\\.[0-9]+ s, it is cut"));
    EXPECT_FALSE(std::filesystem::exists(Name("out.avi")));
}

TEST_F(VerifiedRun, DamageInTheMiddleIsSeenWhenEverythingIsDecoded)
{
    MakeClip({"-f", "lavfi", "-i", "sine=r=8000:d=20", "-c:a", "flac", Name("in.flac")});
    std::string damaged = ReadFile(Name("in.flac"));
    for (std::size_t i = damaged.size() / 4; i < damaged.size() / 4 + 64; ++i)
    {
        damaged[i] = static_cast<char>(~damaged[i]);
    }
    WriteFile(Name("damaged.flac"), damaged);
    const GraphPtr job = Convert("flac", R"({"format_codec_audio":{"codec_id":"CODEC_ID_FLAC"}})", "in.flac");
    RunOptions options = With(Copy("damaged.flac"));
    EXPECT_THAT(Sentences(job, options), IsEmpty());
    options.verification = VerificationDepth::Full;
    std::filesystem::remove(Name("out.flac"));
    const std::vector<std::string> sentences = Sentences(job, options);
    ASSERT_THAT(sentences, testing::SizeIs(1));
    EXPECT_THAT(sentences.front(),
                testing::HasSubstr("audio stream 0: decoding: wanted no error, found at "));
    EXPECT_FALSE(std::filesystem::exists(Name("out.flac")));
}

TEST_F(VerifiedRun, IsCancelledWhileItVerifies)
{
    RunOptions options = With(Copy("in.wav") + "; echo progress=end");
    // The last report comes when ffmpeg is about to end.
    int reports = 0;
    options.onProgress = [&reports, token = options.cancel](const RunProgress&) {
        if (++reports == 2)
        {
            token.Cancel();
        }
    };
    EXPECT_FALSE(RunJob(*Job(), options).IsDone());
    EXPECT_FALSE(std::filesystem::exists(Name("out.wav")));
}

TEST_F(VerifiedRun, AFinishedJobIsVerifiedLater)
{
    RunJob(*Job(), With(Copy("in.wav")));
    const std::vector<TargetVerification> good = VerifyJob(*Job());
    ASSERT_EQ(good.size(), 1U);
    EXPECT_EQ(good[0].file, Name("out.wav"));
    EXPECT_THAT(good[0].differences, IsEmpty());
    std::filesystem::remove(Name("out.wav"));
    const std::vector<TargetVerification> gone = VerifyJob(*Job());
    ASSERT_EQ(gone.at(0).differences.size(), 1U);
    EXPECT_EQ(gone[0].differences[0].Sentence(),
              "node 3: file: wanted wav, found cannot be read: No such file or directory");
}

TEST_F(VerifiedRun, MeasuresTheQualityOfAVideo)
{
    WriteFile(Name("in.mkv"), TinyClip());
    const GraphPtr job = Convert("avi", R"({"format_codec_video":{"codec_id":"CODEC_ID_FFV1"}})");
    RunJob(*job, {});
    VerifyOptions options;
    options.quality = true;
    const std::vector<TargetVerification> equal = VerifyJob(*job, options);
    ASSERT_EQ(equal.at(0).quality.size(), 1U);
    EXPECT_EQ(equal[0].quality[0].psnr, std::nullopt);
    EXPECT_EQ(equal[0].quality[0].ssim, 1.0);
    EXPECT_EQ(equal[0].quality[0].place.Text(), "link 2 -> 3, video stream 0");
    MakeClip({"-i", Name("in.mkv"), "-an", "-vf", "negate", "-c:v", "ffv1", Name("out.avi")});
    const std::vector<TargetVerification> other = VerifyJob(*job, options);
    ASSERT_EQ(other.at(0).quality.size(), 1U);
    ASSERT_TRUE(other[0].quality[0].psnr.has_value());
    EXPECT_LT(*other[0].quality[0].psnr, 15);
    EXPECT_LT(other[0].quality[0].ssim, 0.5);
}

TEST_F(VerifiedRun, IsNotVerifiedLaterByAJobThatSaysTooLittle)
{
    WriteFile(Name("out.wav"), SilentWav());
    const GraphPtr job =
        Loaded(R"({"vertices":[{"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":")" +
               Name("in.wav") +
               R"("}}}},{"id":2,"data":{"data":{"streamRaw":{"id":0}}}},{"id":3,"data":{"data":{"target":{
            "container":"wav","chapters":1,"filePath":")" +
               Name("out.wav") + R"("}}}}],"edges":[{"from":1,"to":2},{"from":2,"to":3,"data":{"data":{
            "format_codec_audio":{"codec_id":"CODEC_ID_PCM_S16LE"}}}}]})");
    EXPECT_EQ(ExpectThrow<JobException>([&] { VerifyJob(*job); }).Get<MediaException::TagKey>(), "chapters");
}

} // namespace
