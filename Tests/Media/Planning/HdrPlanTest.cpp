#include "Media/Planning/HdrPlan.h"

#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/PictureTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kDisplay = "G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,50)";

/// A clip whose frames alone tell the mastering display and the content light.
class HdrPlan : public PictureTest
{
protected:
    void MakeHdr() const
    {
        Make("color=0x949494:s=64x64:d=0.08",
             {"-vf",
              "format=yuv420p10le,setparams=range=tv:colorspace=bt2020nc:color_primaries=bt2020:"
              "color_trc=smpte2084",
              "-c:v", "libx265", "-x265-params",
              std::string("log-level=none:master-display=") + kDisplay + ":max-cll=1000,400", "hdr.mkv"});
    }
    /// What a source made by hand loses.
    static std::string LossOf(const VideoHdr& hdr, const std::string& container,
                              const std::string& transfer = "smpte2084")
    {
        MediaStream source = MakeVideoStream();
        source.hdr = hdr;
        Core::Property record;
        record.SetChildT("colorTransfer", transfer);
        const AVCodec& encoder = *avcodec_find_encoder_by_name("libx264");
        PlanHdr(source, encoder, record);
        EXPECT_EQ(record.Count(), 1U);
        return HdrLoss(source, record, encoder, container);
    }
};

TEST_F(HdrPlan, TellsAnEncoderThatWritesItWhatOnlyTheFramesSay)
{
    MakeHdr();
    ASSERT_TRUE(ProbeMedia(Name("hdr.mkv")).streams.at(0).hdr.isOnlyInFrames);
    const PlannedJob job = Convert(
        "hdr.mkv", "matroska",
        R"({"video":{"codec_id":"CODEC_ID_H265","preferred_encoder":"libx265","preset":"ultrafast"}})");
    EXPECT_THAT(job.notes, ElementsAre(HasSubstr("calculator does not know CODEC_ID_H265")));
    EXPECT_EQ(Video().hdr.masteringDisplay, kDisplay);
    EXPECT_EQ(Video().hdr.contentLight, "1000,400");
}

TEST_F(HdrPlan, KeepsTheParametersThatAPresetGivesTheEncoder)
{
    MakeHdr();
    const PlannedJob job =
        Convert("hdr.mkv", "matroska",
                R"({"video":{"codec_id":"CODEC_ID_H265","preferred_encoder":"libx265","preset":"ultrafast",)"
                R"("codec.options.encode":{"x265-params":"max-cll=500,200:bframes=0"}}})");
    EXPECT_EQ(Video().hdr.masteringDisplay, kDisplay);
    EXPECT_EQ(Video().hdr.contentLight, "500,200");
}

TEST_F(HdrPlan, NamesWhatTheEncoderDoesNotWrite)
{
    MakeHdr();
    const PlannedJob job =
        Convert("hdr.mkv", "matroska", R"({"video":{"codec_id":"CODEC_ID_H264","preset":"ultrafast"}})");
    EXPECT_THAT(job.notes, ElementsAre(Loss(
                               "hdr.mkv", "its mastering display and its content light are left out; encoder "
                                          "libx264 does not write them")));
    EXPECT_EQ(Video().hdr.masteringDisplay + Video().hdr.contentLight, "");
}

TEST_F(HdrPlan, TrustsContainersThatHoldWhatTheSourcesContainerSays)
{
    EXPECT_EQ(LossOf({kDisplay, "1000,400", "", false}, "mp4"), "");
    EXPECT_EQ(LossOf({kDisplay, "", "", false}, "mpegts"),
              "its mastering display is left out; encoder libx264 does not write it");
    EXPECT_EQ(LossOf({"", "1000,400", "", true}, "mp4"),
              "its content light is left out; encoder libx264 does not write it");
}

TEST_F(HdrPlan, IsSilentWhereThereIsNothingToKeep)
{
    EXPECT_EQ(LossOf({}, "mpegts"), "");
    EXPECT_EQ(LossOf({kDisplay, "1000,400", "", true}, "mpegts", "bt709"), "");
}

TEST_F(HdrPlan, NamesWhatAJobDoesNotTellTheEncoder)
{
    const AVCodec& x265 = *avcodec_find_encoder_by_name("libx265");
    MediaStream source = MakeVideoStream();
    source.hdr = {kDisplay, "1000,400", "", true};
    source.color.transfer = "smpte2084";
    EXPECT_EQ(HdrLoss(source, VideoRecord(""), x265, "matroska"),
              "its mastering display and its content light are left out; encoder libx265 is not told them");
    EXPECT_EQ(HdrLoss(source, VideoRecord(R"("codec.options.encode":{"x265-params":"max-cll=1000,400"})"),
                      x265, "matroska"),
              "its mastering display is left out; encoder libx265 is not told it");
}

/// What x265 is told of a source made by hand.
std::string ParametersFor(const VideoHdr& hdr, const std::string& settings)
{
    MediaStream source = MakeVideoStream();
    source.color.transfer = "smpte2084";
    source.hdr = hdr;
    Core::Property record = VideoRecord(settings);
    PlanHdr(source, *avcodec_find_encoder_by_name("libx265"), record);
    const auto options = record.FindChild("codec.options.encode");
    return options == record.end() ? "" : (*options)["x265-params"].GetString();
}

TEST_F(HdrPlan, TellsOnlyWhatIsKnown)
{
    EXPECT_EQ(ParametersFor({kDisplay, "", "", true}, ""), std::string("master-display=") + kDisplay);
    EXPECT_EQ(ParametersFor({"", "1000,400", "", true}, ""), "max-cll=1000,400");
    EXPECT_EQ(
        ParametersFor({"", "1000,400", "", true}, R"("codec.options.encode":{"x265-params":"bframes=0"})"),
        "bframes=0:max-cll=1000,400");
    EXPECT_EQ(ParametersFor({}, ""), "");
}

} // namespace
