#include "Media/Running/QualityMeasurement.h"

#include "Media/Running/JobVerification.h"
#include "Tests/Support/BluRaySubtitles.h"
#include "Tests/Support/Clip.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/RunFixtures.h"

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

/// The quality of "out.avi", made from a fifth of a second of "in.mkv".
class MeasuredVideo : public testing::Test
{
protected:
    MeasuredVideo() { WriteFile(Name("in.mkv"), TinyClip()); }

    std::string Name(const std::string& name) const { return (m_folder / name).string(); }
    void MakeTarget(const std::vector<std::string>& filters) const
    {
        std::vector<std::string> arguments = {"-i", Name(m_source), "-an"};
        arguments.insert(arguments.end(), filters.begin(), filters.end());
        arguments.insert(arguments.end(), {"-c:v", "ffv1", Name("out.avi")});
        MakeClip(arguments);
    }
    TargetVerification Measure(const std::string& record, const std::string& target = "",
                               const VerifyOptions& options = {}) const
    {
        return Verify(record, target, options).at(0);
    }
    std::vector<TargetVerification> Verify(const std::string& record, const std::string& target,
                                           VerifyOptions options) const
    {
        const GraphPtr job = Loaded(
            R"({"vertices":[{"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":")" +
            Name(m_source) + R"("}}}},{"id":2,"data":{"data":{"streamRaw":{"id":0}}}},
            {"id":3,"data":{"data":{"target":{"container":"avi","filePath":")" +
            Name("out.avi") + "\"" + target +
            R"(}}}}],"edges":[{"from":1,"to":2},{"from":2,"to":3,"data":{"data":{"format_codec_video":)" +
            record + "}}}]}");
        options.quality = true;
        return VerifyJob(*job, options);
    }

    TemporaryFolder m_folder;
    std::string m_source = "in.mkv";
};

const std::string kFfv1 = R"({"codec_id":"CODEC_ID_FFV1"})";

TEST_F(MeasuredVideo, IsComparedWithThePartThatItWasMadeFrom)
{
    MakeTarget({"-ss", "0.08", "-t", "0.08"});
    const TargetVerification verification = Measure(kFfv1, R"(,"start":80000,"end":160000)");
    ASSERT_EQ(verification.quality.size(), 1U);
    EXPECT_EQ(verification.quality[0].psnr, std::nullopt);
    EXPECT_EQ(verification.quality[0].ssim, 1.0);
}

/// ffmpeg seeks in some containers only; in others, what comes before the part is dropped behind the filters.
TEST_F(MeasuredVideo, IsComparedWithThePartOfASourceThatIsReadFromItsBeginning)
{
    MakeClip({"-i", Name("in.mkv"), "-an", "-c:v", "ffv1", Name("in.avi")});
    m_source = "in.avi";
    const auto isEqual = [this](const std::vector<std::string>& part, const std::string& target) {
        MakeTarget(part);
        const TargetVerification verification = Measure(kFfv1, target);
        return verification.quality.size() == 1 && !verification.quality[0].psnr &&
               verification.quality[0].ssim == 1.0;
    };
    EXPECT_TRUE(isEqual({}, ""));
    EXPECT_TRUE(isEqual({"-t", "0.08"}, R"(,"end":80000)"));
    EXPECT_TRUE(isEqual({"-ss", "0.08"}, R"(,"start":80000)"));
    EXPECT_TRUE(isEqual({"-ss", "0.08", "-t", "0.08"}, R"(,"start":80000,"end":160000)"));
}

TEST_F(MeasuredVideo, IsFoundBehindOtherStreams)
{
    MakeClip({"-i", Name("in.mkv"), "-map", "0:a", "-map", "0:v", "-c:a", "pcm_s16le", "-c:v", "ffv1",
              Name("out.avi")});
    const TargetVerification verification = Measure(kFfv1);
    ASSERT_EQ(verification.quality.size(), 1U);
    EXPECT_EQ(verification.quality[0].ssim, 1.0);
}

TEST_F(MeasuredVideo, IsNotMeasuredWhenItIsNotThere)
{
    MakeClip({"-i", Name("in.mkv"), "-vn", "-c:a", "pcm_s16le", Name("out.avi")});
    const TargetVerification verification = Measure(kFfv1);
    EXPECT_THAT(verification.quality, IsEmpty());
    EXPECT_THAT(verification.notes, IsEmpty());
    EXPECT_FALSE(verification.differences.empty());
}

TEST_F(MeasuredVideo, IsComparedWithItsSourceUnderItsSubtitles)
{
    WriteFile(Name("boxes.sup"), BluRaySubtitles(320, 240, {{9000, 90000}}));
    MakeClip({"-f", "lavfi", "-i", "color=gray:s=320x240:d=1:r=25", "-itsoffset", "0.1", "-i",
              Name("boxes.sup"), "-map", "0", "-map", "1", "-c:v", "ffv1", "-c:s", "copy", Name("text.mkv")});
    const GraphPtr job = Loaded(
        R"({"vertices":[{"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":")" +
        Name("text.mkv") +
        R"("}}}},{"id":2,"data":{"data":{"streamRaw":{"id":0,"$$MERGE_WITH$$":[{"":{"$$MERGE_WITH$$":1}}]}}}},
        {"id":3,"data":{"data":{"target":{"container":"avi","filePath":")" +
        Name("out.avi") +
        R"("}}}}],"edges":[{"from":1,"to":2},{"from":2,"to":3,"data":{"data":{"format_codec_video":
        {"codec_id":"CODEC_ID_FFV1"}}}}]})");
    RunJob(*job, {});
    VerifyOptions options;
    options.quality = true;
    const TargetVerification drawn = VerifyJob(*job, options).at(0);
    ASSERT_EQ(drawn.quality.size(), 1U);
    EXPECT_EQ(drawn.quality[0].ssim, 1.0);
    m_source = "text.mkv";
    MakeTarget({});
    const TargetVerification plain = VerifyJob(*job, options).at(0);
    ASSERT_EQ(plain.quality.size(), 1U);
    EXPECT_LT(plain.quality[0].ssim, 1.0);
}

TEST_F(MeasuredVideo, IsLeftAloneWhenSomebodyCancelsIt)
{
    MakeClip({"-i", Name("in.mkv"), "-map", "0:v", "-map", "0:v", "-c:v", "ffv1", Name("out.mkv")});
    const std::string video = R"(,"data":{"data":{"format_codec_video":{"codec_id":"CODEC_ID_FFV1"}}}})";
    const GraphPtr job = Loaded(
        R"({"vertices":[{"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":")" +
        Name("in.mkv") +
        R"("}}}},{"id":2,"data":{"data":{"streamRaw":{"id":0}}}},{"id":3,"data":{"data":{"streamRaw":{"id":0}}}},
        {"id":4,"data":{"data":{"target":{"container":"matroska","filePath":")" +
        Name("out.mkv") + R"("}}}}],"edges":[{"from":1,"to":2},{"from":1,"to":3},{"from":2,"to":4)" + video +
        R"(,{"from":3,"to":4)" + video + "]}");
    VerifyOptions options;
    options.quality = true;
    options.ffmpeg = MakeScript(m_folder, "echo begun >> '" + Name("begun") + "'; exec sleep 60");
    const auto cancelling = std::async([&, token = options.cancel] {
        while (!std::filesystem::exists(Name("begun")))
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        token.Cancel();
    });
    EXPECT_THAT(VerifyJob(*job, options), IsEmpty());
    EXPECT_EQ(ReadFile(Name("begun")), "begun\n") << "the second one is not begun";
}

TEST_F(MeasuredVideo, MayBeMadeOfAnImage)
{
    MakeClip({"-i", Name("in.mkv"), "-frames:v", "1", Name("in.png")});
    m_source = "in.png";
    MakeTarget({});
    const TargetVerification verification = Measure(kFfv1);
    ASSERT_EQ(verification.quality.size(), 1U);
    EXPECT_EQ(verification.quality[0].ssim, 1.0);
}

TEST_F(MeasuredVideo, IsNotMeasuredAfterItsVerificationWasCancelled)
{
    MakeTarget({});
    VerifyOptions options;
    options.depth = VerificationDepth::Full;
    options.ffmpeg = MakeScript(m_folder, "touch '" + Name("begun") + "'");
    options.onProgress = [token = options.cancel](const RunProgress&) { token.Cancel(); };
    EXPECT_THAT(Verify(kFfv1, "", options), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(Name("begun")));
}

TEST_F(MeasuredVideo, IsComparedAtItsOwnSizeAndRate)
{
    MakeTarget({"-vf", "scale=32:24", "-sws_flags", "neighbor"});
    const TargetVerification verification = Measure(
        R"({"codec_id":"CODEC_ID_FFV1","width":32,"height":24,"aspect_x":1,"aspect_y":1,"frameRateRatio":[25,1]})");
    ASSERT_EQ(verification.quality.size(), 1U);
    ASSERT_TRUE(verification.quality[0].psnr.has_value());
    EXPECT_GT(*verification.quality[0].psnr, 10);
}

TEST_F(MeasuredVideo, IsNotMeasuredWhenItIsACopy)
{
    MakeClip({"-i", Name("in.mkv"), "-an", "-c:v", "copy", Name("out.avi")});
    EXPECT_THAT(Measure(R"({"codec_id":"CODEC_ID_MPEG4","lossless":1})").quality, IsEmpty());
}

TEST_F(MeasuredVideo, ThatCannotBeReadIsADifferenceAndNotMeasured)
{
    WriteFile(Name("out.avi"), "text");
    const TargetVerification verification = Measure(kFfv1);
    EXPECT_EQ(verification.differences.size(), 1U);
    EXPECT_THAT(verification.quality, IsEmpty());
    EXPECT_THAT(verification.notes, IsEmpty());
}

TEST_F(MeasuredVideo, SaysWhyItCannotBeMeasured)
{
    MakeTarget({});
    const std::string note = "the quality of '" + Name("out.avi") + "' cannot be measured: ";
    VerifyOptions options;
    options.ffmpeg = MakeScript(m_folder, "echo first >&2; echo the reason >&2; exit 1");
    EXPECT_THAT(Measure(kFfv1, "", options).notes, ElementsAre(note + "the reason"));
    options.ffmpeg = MakeScript(m_folder, "exit 0");
    EXPECT_THAT(Measure(kFfv1, "", options).notes, ElementsAre(note + "there is no frame to compare"));
    options.ffmpeg = MakeScript(m_folder, "echo n:1 mse_avg:0.00 psnr_avg:inf; exit 0");
    EXPECT_THAT(Measure(kFfv1, "", options).notes, ElementsAre(note + "there is no frame to compare"));
}

TEST_F(MeasuredVideo, NeedsTheProgramThatMeasures)
{
    MakeTarget({});
    VerifyOptions options;
    options.ffmpeg = Name("missing");
    EXPECT_EQ(ExpectThrow<RunException>([&] { Measure(kFfv1, "", options); }).description,
              "Cannot run '" + Name("missing") + "': No such file or directory");
}

TEST(VerifiedJob, SaysThatAPipeOrDeviceCannotBeVerified)
{
    const TemporaryFolder folder;
    WriteFile(folder / "in.wav", SilentWav());
    const std::vector<TargetVerification> found =
        VerifyJob(*WavJob((folder / "in.wav").string(), {"/dev/null"}));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].file, "/dev/null");
    EXPECT_THAT(found[0].notes, ElementsAre("'/dev/null' cannot be verified, because it is a device"));
    EXPECT_THAT(found[0].differences, IsEmpty());
}

TEST(VerifiedJob, LeavesOutTheTargetsAfterItWasCancelled)
{
    const TemporaryFolder folder;
    WriteFile(folder / "in.wav", SilentWav());
    VerifyOptions options;
    options.cancel.Cancel();
    EXPECT_THAT(VerifyJob(*WavJob((folder / "in.wav").string(), {(folder / "out.wav").string()}), options),
                IsEmpty());
}

TEST(VerifiedJob, IsDecodedAsAWholeWhenAskedFor)
{
    const TemporaryFolder folder;
    WriteFile(folder / "in.wav", SilentWav());
    WriteFile(folder / "out.wav", SilentWav());
    VerifyOptions options;
    options.depth = VerificationDepth::Full;
    EXPECT_THAT(VerifyJob(*WavJob((folder / "in.wav").string(), {(folder / "out.wav").string()}), options)
                    .at(0)
                    .differences,
                IsEmpty());
}

TEST(QualityMeter, ReadsTheLinesOfBothFilters)
{
    QualityMeter meter;
    EXPECT_EQ(meter.Get().has_value(), false);
    meter.Take("n:1 mse_avg:4.00 psnr_avg:42.11");
    EXPECT_EQ(meter.Get().has_value(), false);
    meter.Take("n:1 Y:0.9 All:0.50 (3.0)");
    meter.Take("n:2 Y:0.9 All:1.00 (3.0)");
    meter.Take("something else");
    meter.Take("n:2 mse_avg:4.00");
    ASSERT_TRUE(meter.Get().has_value());
    EXPECT_DOUBLE_EQ(meter.Get()->ssim, 0.75);
    EXPECT_NEAR(meter.Get()->psnr.value_or(0), 42.11, 0.001);
}

TEST(QualityMeter, TellsNoDistanceOfEqualFrames)
{
    QualityMeter meter;
    meter.Take("n:1 mse_avg:0.00 psnr_avg:100.00");
    meter.Take("n:1 Y:1.0 All:1.00 (inf)");
    ASSERT_TRUE(meter.Get().has_value());
    EXPECT_EQ(meter.Get()->psnr, std::nullopt);
    EXPECT_DOUBLE_EQ(meter.Get()->ssim, 1.0);
}

} // namespace
