#include "Tests/Support/PictureTest.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string kH264 = R"({"video":{"codec_id":"CODEC_ID_H264","preset":"ultrafast"}})";
const std::string kH264High =
    R"({"video":{"codec_id":"CODEC_ID_H264","preset":"ultrafast","profile":"high","bitrate":4000000}})";

/// Converts clips of one colour.
class ColorsRun : public PictureTest
{
protected:
    /// Luma, blue and red differences of the first frame's first sample, of a 4:2:0 video of 8 bits.
    void ExpectYuv(std::size_t width, std::size_t height, int luma, int blue, int red) const
    {
        const std::vector<std::uint8_t> samples = Samples("yuv420p");
        ASSERT_EQ(samples.size(), width * height * 3 / 2);
        EXPECT_NEAR(samples[width * height / 2 + width / 2], luma, 2);
        EXPECT_NEAR(samples[width * height + width * height / 8 + width / 4], blue, 2);
        EXPECT_NEAR(samples[width * height * 5 / 4 + width * height / 8 + width / 4], red, 2);
    }
    static std::string Text(const VideoColor& color)
    {
        return color.range + " " + color.matrix + " " + color.primaries + " " + color.transfer;
    }
};

// 0xC02040 is (74.7, 126.0, 197.0) in BT.709 and (87.7, 118.3, 196.0) in BT.601.
TEST_F(ColorsRun, OfRgbInHdAreBt709AndSaySo)
{
    Make("color=0xC02040:s=1280x720:d=0.08", {"-pix_fmt", "gbrp", "-c:v", "ffv1", "in.mkv"});
    const PlannedJob job = Convert("in.mkv", "mp4", kH264High);
    ExpectYuv(1280, 720, 75, 126, 197);
    EXPECT_EQ(Text(Video().color), "tv bt709  ");
    EXPECT_EQ(job.notes, std::vector<std::string>{
                             Loss("in.mkv", "its RGB samples become 4:2:0, whose chroma is coarser")});
}

TEST_F(ColorsRun, OfRgbInSdAreBt601AndSaySo)
{
    Make("color=0xC02040:s=640x480:d=0.08", {"-pix_fmt", "gbrp", "-c:v", "ffv1", "in.mkv"});
    Convert("in.mkv", "mp4", kH264High);
    ExpectYuv(640, 480, 88, 118, 196);
    EXPECT_EQ(Text(Video().color), "tv smpte170m  ");
}

TEST_F(ColorsRun, AreKeptWithTheirNames)
{
    Make("color=0xC02040:s=320x240:d=0.08",
         {"-vf",
          "scale=out_color_matrix=bt709:out_range=tv,format=yuv420p,setparams=range=tv:colorspace=bt709:"
          "color_primaries=bt709:color_trc=bt709",
          "-c:v", "libx264", "-qp", "4", "in.mp4"});
    for (const std::string container : {"mp4", "matroska", "mov"})
    {
        SCOPED_TRACE(container);
        const PlannedJob job = Convert("in.mp4", container, kH264High);
        ExpectYuv(320, 240, 75, 126, 197);
        EXPECT_EQ(Text(Video().color), "tv bt709 bt709 bt709");
        EXPECT_THAT(job.notes, IsEmpty());
    }
}

TEST_F(ColorsRun, OfHdBecomeBt601OnADvd)
{
    Make("color=0xC02040:s=1280x720:d=0.2:r=25",
         {"-vf", "scale=out_color_matrix=bt709:out_range=tv,format=yuv420p,setparams=colorspace=bt709",
          "-c:v", "libx264", "-qp", "4", "in.mp4"});
    Convert("in.mp4", "dvd",
            R"({"video":{"codec_id":"CODEC_ID_MPEG2VIDEO","width":720,"height":576,"frameRateRatio":[25,1],)"
            R"("bitrate":6000000}})");
    // The clip's own luma is 73.
    ExpectYuv(720, 576, 86, 118, 196);
    EXPECT_EQ(Video().color.matrix, "bt470bg");
}

TEST_F(ColorsRun, OfFullRangeAreConvertedWhereTheyCannotBeTold)
{
    Make("color=white:s=320x240:d=0.08:r=25",
         {"-vf", "scale=out_range=pc,format=yuv420p,setparams=range=pc", "-c:v", "libx265", "-x265-params",
          "log-level=none:range=full", "in.mkv"});
    ASSERT_EQ(ProbeMedia(Name("in.mkv")).streams.at(0).color.range, "pc");
    Convert("in.mkv", "mov", R"({"video":{"codec_id":"CODEC_ID_MPEG4","PIXELFORMAT":0}})");
    // Not through ffmpeg's conversion: the samples as they are stored.
    EXPECT_NEAR(Samples().at(160 * 120), 235, 2);
}

TEST_F(ColorsRun, OfFullRangeAreKeptWhereTheyCanBeTold)
{
    Make("color=white:s=320x240:d=0.08:r=25",
         {"-vf", "scale=out_range=pc,format=yuv420p,setparams=range=pc", "-c:v", "libx265", "-x265-params",
          "log-level=none:range=full", "in.mkv"});
    Convert("in.mkv", "mp4", kH264);
    EXPECT_EQ(Video().color.range, "pc");
    EXPECT_NEAR(Samples().at(160 * 120), 255, 1);
}

TEST_F(ColorsRun, OfGreyImagesStayAsBright)
{
    Make("color=0xF8F8F8:s=320x240:d=0.08:r=25", {"-vf", "format=gray", "-c:v", "png", "in.mov"});
    Convert("in.mov", "mp4", R"({"video":{"codec_id":"CODEC_ID_H264","PIXELFORMAT":0}})");
    EXPECT_NEAR(Samples("gray").at(160 * 120), 0xF8, 2);
}

TEST_F(ColorsRun, OfYuvBecomeTheRgbThatTheyStandFor)
{
    // (75, 126, 197) is 0xC02040 in BT.709.
    Make("color=0xC02040:s=1280x720:d=0.08",
         {"-vf", "scale=out_color_matrix=bt709:out_range=tv,format=yuv444p", "-c:v", "ffv1", "in.mkv"});
    Convert("in.mkv", "png", R"({"video":{"codec_id":"CODEC_ID_PNG"}})");
    const std::vector<std::uint8_t> samples = Samples("rgb24");
    EXPECT_NEAR(samples.at(0), 0xC0, 3);
    EXPECT_NEAR(samples.at(1), 0x20, 3);
    EXPECT_NEAR(samples.at(2), 0x40, 3);
}

/// White of 203 candela per square metre in PQ is at 58 % of the signal.
class HighDynamicRange : public ColorsRun
{
protected:
    HighDynamicRange()
    {
        Make("color=0x949494:s=320x240:d=0.08",
             {"-vf",
              "scale=out_color_matrix=bt2020:out_range=tv,format=yuv420p10le,setparams=range=tv:"
              "colorspace=bt2020nc:color_primaries=bt2020:color_trc=smpte2084",
              "-c:v", "libx265", "-x265-params", "log-level=none", "hdr.mkv"});
    }
};

TEST_F(HighDynamicRange, StaysInTenBits)
{
    const PlannedJob job = Convert("hdr.mkv", "matroska", kH264);
    EXPECT_EQ(Codec(job)["pixelFormat"].GetString(), "yuv420p10le");
    EXPECT_FALSE(Codec(job).ChildExists("PIXELFORMAT"));
    EXPECT_EQ(Video().pixelFormat, "yuv420p10le");
    EXPECT_EQ(Text(Video().color), "tv bt2020nc bt2020 smpte2084");
    EXPECT_THAT(job.notes, IsEmpty());
}

TEST_F(HighDynamicRange, IsMappedToStandardInEightBitsAndNamed)
{
    const PlannedJob job = Convert("hdr.mkv", "mp4", kH264High);
    EXPECT_EQ(Video().pixelFormat, "yuv420p");
    EXPECT_EQ(Text(Video().color), "tv bt709 bt709 bt709");
    EXPECT_EQ(
        job.notes,
        (std::vector<std::string>{
            Loss("hdr.mkv", "its high dynamic range (smpte2084) is mapped to standard dynamic range (bt709)"),
            Loss("hdr.mkv", "its 10 bits a sample become 8")}));
    // Brighter than the code values taken as they are (127 + 16), and not clipped.
    const int luma = Samples("yuv420p").at(120 * 320 + 160);
    EXPECT_GT(luma, 160);
    EXPECT_LT(luma, 235);
}

TEST_F(ColorsRun, OfTenBitsStayInTenBits)
{
    Make("color=0x808080:s=64x48:d=0.08", {"-pix_fmt", "yuv422p10le", "-c:v", "prores_ks", "in.mov"});
    for (const auto& [container, codec, format] : {std::tuple("matroska", "CODEC_ID_H264", "yuv422p10le"),
                                                   {"webm", "CODEC_ID_VP9", "yuv422p10le"},
                                                   {"mov", "CODEC_ID_PRORES", "yuv422p10le"},
                                                   {"matroska", "CODEC_ID_FFV1", "yuv422p10le"}})
    {
        SCOPED_TRACE(codec);
        const PlannedJob job =
            Convert("in.mov", container, std::string(R"({"video":{"codec_id":")") + codec + R"("}})");
        EXPECT_EQ(Video().pixelFormat, format);
        if (codec == std::string("CODEC_ID_PRORES"))
        {
            EXPECT_THAT(job.notes, ElementsAre(HasSubstr("calculator does not know CODEC_ID_PRORES")));
        }
        else
        {
            EXPECT_THAT(job.notes, IsEmpty());
        }
    }
}

TEST_F(ColorsRun, OfTransparentImagesOfSixteenBitsAreKept)
{
    Make("color=0xC02040@0.5:s=64x48:d=0.04,format=rgba64be,format=rgba64be",
         {"-frames:v", "1", "-c:v", "png", "-update", "1", "in.png"});
    ASSERT_EQ(ProbeMedia(Name("in.png")).streams.at(0).pixelFormat, "rgba64be");
    const std::vector<std::uint8_t> before = SamplesOf(Name("in.png"), "rgba64be");
    const PlannedJob job = Convert("in.png", "png", R"({"video":{"codec_id":"CODEC_ID_PNG"}})");
    EXPECT_EQ(Codec(job)["pixelFormat"].GetString(), "rgba64be");
    EXPECT_EQ(Samples("rgba64be"), before);
    EXPECT_THAT(job.notes, IsEmpty());
}

TEST_F(ColorsRun, OfImagesOfEveryFormatOfPngAreKept)
{
    for (const std::string format : {"rgb24", "rgba", "gray", "gray16be", "ya8", "ya16be", "rgb48be", "pal8"})
    {
        SCOPED_TRACE(format);
        Make("testsrc=s=64x48:d=0.04,format=" + format,
             {"-frames:v", "1", "-c:v", "png", "-update", "1", "in.png"});
        Convert("in.png", "png", R"({"video":{"codec_id":"CODEC_ID_PNG"}})");
        EXPECT_EQ(Video().pixelFormat, format);
        EXPECT_EQ(Samples("rgba64be"), SamplesOf(Name("in.png"), "rgba64be"));
    }
}

TEST_F(ColorsRun, NameTheTransparencyThatIsLost)
{
    Make("color=red@0.5:s=64x48:d=0.04,format=rgba", {"-c:v", "png", "in.mov"});
    const PlannedJob job = Convert("in.mov", "mp4", kH264High);
    EXPECT_EQ(job.notes, (std::vector<std::string>{
                             Loss("in.mov", "its RGB samples become 4:2:0, whose chroma is coarser"),
                             Loss("in.mov", "its transparency is left out")}));
}

} // namespace
