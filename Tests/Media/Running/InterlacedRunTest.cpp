#include "Tests/Support/PictureTest.h"

#include "Media/MediaException.h"
#include "Media/Running/JobCheck.h"
#include "Tests/Support/Expect.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::IsEmpty;

const std::string kLoss =
    "one of two fields of its interlaced frames is left out; 'deinterlace' 50p keeps the "
    "motion of all fields, 'keep' the fields";

std::string Dvd(const std::string& more = "")
{
    return R"({"video":{"codec_id":"CODEC_ID_MPEG2VIDEO","bitrate":6000000,"width":720,"height":576,)"
           R"("frameRateRatio":[25,1])" +
           more + "}}";
}
std::string Mpeg4(const std::string& more = "")
{
    return R"({"video":{"codec_id":"CODEC_ID_MPEG4","bitrate":4000000)" + more + "}}";
}

/// Ten interlaced frames of a bar that moves sideways, so that only lines of two moments differ.
class InterlacedRun : public PictureTest
{
protected:
    void MakeInterlaced(const std::string& name, const std::vector<std::string>& codec,
                        const std::string& scan = "bff", const std::string& size = "720x576") const
    {
        std::vector<std::string> more = {"-vf", "interlace=lowpass=off:scan=" + scan};
        more.insert(more.end(), codec.begin(), codec.end());
        more.push_back(name);
        Make("color=black:s=" + size +
                 ":r=50:d=0.4,drawbox=x=100:y=0:w=100:h=ih:color=white:t=fill,"
                 "scroll=horizontal=0.03",
             more);
    }

    static constexpr double kCombed = 3;
};

TEST_F(InterlacedRun, OfDvIsNotCombed)
{
    MakeInterlaced("dv.avi", {"-pix_fmt", "yuv420p", "-c:v", "dvvideo"});
    const PlannedJob job = Convert("dv.avi", "matroska", Mpeg4());
    EXPECT_EQ(Codec(job)["deinterlace"].GetString(), "25p");
    EXPECT_EQ(job.notes, std::vector<std::string>{Loss("dv.avi", kLoss)});
    EXPECT_LT(Combing(720, 576), kCombed);
    EXPECT_EQ(FrameCount(720, 576), 10U);
    EXPECT_FALSE(Video().isInterlaced);
}

TEST_F(InterlacedRun, OfDnxhdIsNotCombed)
{
    MakeInterlaced("dnx.mov",
                   {"-pix_fmt", "yuv422p", "-c:v", "dnxhd", "-b:v", "120M", "-flags", "+ildct+ilme"}, "tff",
                   "1920x1080");
    Convert("dnx.mov", "matroska", Mpeg4());
    EXPECT_LT(Combing(1920, 1080), kCombed);
}

TEST_F(InterlacedRun, OfMpeg4IsNotCombed)
{
    MakeInterlaced("m4.avi", {"-c:v", "mpeg4", "-qscale:v", "2", "-flags", "+ildct+ilme"}, "tff", "352x288");
    Convert("m4.avi", "matroska", Mpeg4());
    EXPECT_LT(Combing(352, 288), kCombed);
}

TEST_F(InterlacedRun, OfFramesThatAreSilentIsNotCombed)
{
    MakeInterlaced("mj.mov", {"-pix_fmt", "yuvj422p", "-c:v", "mjpeg", "-qscale:v", "2"}, "tff", "352x288");
    Convert("mj.mov", "matroska", Mpeg4());
    EXPECT_LT(Combing(352, 288), kCombed);
}

TEST_F(InterlacedRun, MakesAFrameOfEachFieldOnRequest)
{
    MakeInterlaced("dv.avi", {"-pix_fmt", "yuv420p", "-c:v", "dvvideo"});
    const PlannedJob job = Convert("dv.avi", "matroska", Mpeg4(R"(,"deinterlace":"50p")"));
    EXPECT_EQ(Codec(job)["frameRateRatio"].GetRatio(), Core::Property::Ratio(50, 1));
    EXPECT_THAT(job.notes, IsEmpty());
    EXPECT_EQ(FrameCount(720, 576), 20U);
    EXPECT_LT(Combing(720, 576), kCombed);
}

TEST_F(InterlacedRun, MakesAFrameOfEachFieldWhereTheTargetHasThatRate)
{
    MakeInterlaced("dv.avi", {"-pix_fmt", "yuv420p", "-c:v", "dvvideo"});
    const PlannedJob job = Convert("dv.avi", "matroska", Mpeg4(R"(,"frameRateRatio":[50,1])"));
    EXPECT_EQ(Codec(job)["deinterlace"].GetString(), "50p");
    EXPECT_THAT(job.notes, IsEmpty());
    EXPECT_EQ(FrameCount(720, 576), 20U);
}

TEST_F(InterlacedRun, StaysInterlacedOnADvd)
{
    MakeInterlaced("dv.avi", {"-pix_fmt", "yuv420p", "-c:v", "dvvideo"});
    const PlannedJob job = Convert("dv.avi", "dvd", Dvd());
    EXPECT_EQ(Codec(job)["deinterlace"].GetString(), "keep");
    EXPECT_THAT(job.notes, IsEmpty());
    EXPECT_TRUE(Video().isInterlaced);
    EXPECT_EQ(Video().fieldOrder, "bb");
    EXPECT_GT(Combing(720, 576), kCombed);
    EXPECT_EQ(FrameCount(720, 576), 10U);
}

TEST_F(InterlacedRun, StaysInterlacedOnADvdWhenItIsScaled)
{
    MakeInterlaced("hd.mkv", {"-c:v", "libx264", "-preset", "ultrafast", "-flags", "+ildct+ilme"}, "tff",
                   "1440x1080");
    Convert("hd.mkv", "dvd", Dvd());
    EXPECT_EQ(Video().fieldOrder, "tt");
    // Scaled as frames, the lines of both fields would become the same grey.
    EXPECT_GT(Combing(720, 576), kCombed);
}

TEST_F(InterlacedRun, BecomesProgressiveOnADvdOfAnotherRate)
{
    MakeInterlaced("dv.avi", {"-pix_fmt", "yuv420p", "-c:v", "dvvideo"});
    const PlannedJob job =
        Convert("dv.avi", "dvd",
                R"({"video":{"codec_id":"CODEC_ID_MPEG2VIDEO","bitrate":6000000,"width":720,"height":480,)"
                R"("frameRateRatio":[30000,1001]}})");
    EXPECT_EQ(Codec(job)["deinterlace"].GetString(), "25p");
    EXPECT_LT(Combing(720, 480), kCombed);
}

TEST_F(InterlacedRun, StaysInterlacedOnRequest)
{
    MakeInterlaced("dv.avi", {"-pix_fmt", "yuv420p", "-c:v", "dvvideo"});
    for (const auto& [container, codec] : {std::pair("matroska", "CODEC_ID_MPEG4"),
                                           {"matroska", "CODEC_ID_H264"},
                                           {"mov", "CODEC_ID_PRORES"},
                                           {"mov", "CODEC_ID_DVVIDEO"},
                                           {"mp4", "CODEC_ID_MPEG2VIDEO"}})
    {
        SCOPED_TRACE(codec);
        Convert("dv.avi", container,
                std::string(R"({"video":{"codec_id":")") + codec +
                    R"(","preferred_encoder":"ENCODER_FFMPEG","deinterlace":"keep"}})");
        EXPECT_TRUE(Video().isInterlaced);
        EXPECT_EQ(Video().fieldOrder.substr(0, 1), "b");
        EXPECT_GT(Combing(720, 576), kCombed);
    }
}

TEST_F(InterlacedRun, IsTakenForProgressiveOnRequest)
{
    MakeInterlaced("dv.avi", {"-pix_fmt", "yuv420p", "-c:v", "dvvideo"});
    Convert("dv.avi", "matroska", Mpeg4(R"(,"deinterlace":"off")"));
    EXPECT_FALSE(Video().isInterlaced);
    EXPECT_GT(Combing(720, 576), kCombed);
}

TEST_F(InterlacedRun, IsRefusedWhereTheEncoderCannotKeepIt)
{
    MakeInterlaced("dv.avi", {"-pix_fmt", "yuv420p", "-c:v", "dvvideo"});
    EXPECT_EQ(ExpectThrow<PlanException>([&] {
                  Convert("dv.avi", "webm", R"({"video":{"codec_id":"CODEC_ID_VP8","deinterlace":"keep"}})");
              }).description,
              Name("dv.avi") + ": video stream 0, p.$$STREAMS$$.video.deinterlace: encoder libvpx does not "
                               "support interlaced video");
}

TEST_F(InterlacedRun, KeepsItsFrameRateOrIsRefused)
{
    MakeInterlaced("dv.avi", {"-pix_fmt", "yuv420p", "-c:v", "dvvideo"});
    JobRequest request;
    request.output = Name("out");
    const PlannedJob job =
        PlanJob(ProbeMedia(Name("dv.avi")),
                MakePreset("matroska", Mpeg4(R"(,"deinterlace":"keep","frameRateRatio":[50,1])")), request);
    const std::vector<JobFault> faults = CheckJob(*job.graph);
    ASSERT_EQ(faults.size(), 1U);
    EXPECT_EQ(faults[0].Sentence(),
              "link 3 -> 2, video stream 0, deinterlace: interlaced frames keep the frame rate of their "
              "source, 25/1; found 50/1");
}

} // namespace
