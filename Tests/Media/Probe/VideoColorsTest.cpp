#include "Media/Probe/VideoColors.h"

#include "Tests/Support/Clip.h"
#include "Tests/Support/FormatContext.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/dovi_meta.h>
#include <libavutil/mastering_display_metadata.h>
}

#include <memory>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

/// A stream of a file that there is not.
class VideoColors : public testing::Test
{
protected:
    AVCodecParameters& Codec() { return *m_stream->codecpar; }

    template <class Data>
    Data& AddSideData(AVPacketSideDataType type)
    {
        return *reinterpret_cast<Data*>(av_stream_new_side_data(m_stream, type, sizeof(Data)));
    }
    AVMasteringDisplayMetadata& AddDisplay()
    {
        auto& display = AddSideData<AVMasteringDisplayMetadata>(AV_PKT_DATA_MASTERING_DISPLAY_METADATA);
        const AVMasteringDisplayMetadata known = {
            {{{34000, 50000}, {16000, 50000}}, {{13250, 50000}, {34500, 50000}}, {{3, 20}, {3, 50}}},
            {{15635, 50000}, {16450, 50000}},
            {1, 200},
            {1000, 1},
            1,
            1};
        display = known;
        return display;
    }

    Zelnor::Testing::FormatContext m_context = Zelnor::Testing::MakeFormatContext();
    AVStream* m_stream = avformat_new_stream(m_context.get(), nullptr);
};

TEST_F(VideoColors, HaveFFmpegsNames)
{
    Codec().color_range = AVCOL_RANGE_MPEG;
    Codec().color_space = AVCOL_SPC_BT2020_NCL;
    Codec().color_primaries = AVCOL_PRI_BT2020;
    Codec().color_trc = AVCOL_TRC_SMPTE2084;
    const VideoColor color = ColorOf(Codec());
    EXPECT_EQ(color.range, "tv");
    EXPECT_EQ(color.matrix, "bt2020nc");
    EXPECT_EQ(color.primaries, "bt2020");
    EXPECT_EQ(color.transfer, "smpte2084");
}

TEST_F(VideoColors, AreEmptyWhereTheyAreNotKnown)
{
    Codec().color_primaries = AVCOL_PRI_RESERVED0;
    Codec().color_space = AVCOL_SPC_RESERVED;
    Codec().color_trc = AVCOL_TRC_UNSPECIFIED;
    const VideoColor color = ColorOf(Codec());
    EXPECT_EQ(color.range, "");
    EXPECT_EQ(color.matrix, "");
    EXPECT_EQ(color.primaries, "");
    EXPECT_EQ(color.transfer, "");
}

TEST_F(VideoColors, OfRgbHaveAMatrixToo)
{
    Codec().color_space = AVCOL_SPC_RGB;
    EXPECT_EQ(ColorOf(Codec()).matrix, "gbr");
}

TEST_F(VideoColors, TellTheMasteringDisplayAsEncodersAreTold)
{
    AddDisplay();
    EXPECT_EQ(HdrOf(*m_stream).masteringDisplay,
              "G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,50)");
}

TEST_F(VideoColors, DoNotTellHalfADisplay)
{
    AddDisplay().has_luminance = 0;
    EXPECT_EQ(HdrOf(*m_stream).masteringDisplay, "");
}

TEST_F(VideoColors, SurviveADisplayWithoutDenominators)
{
    AVMasteringDisplayMetadata& display = AddDisplay();
    display.min_luminance = {1, 0};
    display.white_point[0] = {0, 0};
    EXPECT_EQ(HdrOf(*m_stream).masteringDisplay,
              "G(13250,34500)B(7500,3000)R(34000,16000)WP(0,16450)L(10000000,0)");
}

TEST_F(VideoColors, TellTheContentLight)
{
    auto& light = AddSideData<AVContentLightMetadata>(AV_PKT_DATA_CONTENT_LIGHT_LEVEL);
    light.MaxCLL = 1000;
    light.MaxFALL = 400;
    EXPECT_EQ(HdrOf(*m_stream).contentLight, "1000,400");
}

TEST_F(VideoColors, TellTheProfileOfDolbyVision)
{
    auto& dovi = AddSideData<AVDOVIDecoderConfigurationRecord>(AV_PKT_DATA_DOVI_CONF);
    dovi = {};
    dovi.dv_profile = 8;
    dovi.dv_bl_signal_compatibility_id = 4;
    EXPECT_EQ(HdrOf(*m_stream).dolbyVision, "8.4");
}

TEST_F(VideoColors, DoNotReadSideDataThatIsTooShort)
{
    av_stream_new_side_data(m_stream, AV_PKT_DATA_MASTERING_DISPLAY_METADATA, 3);
    av_stream_new_side_data(m_stream, AV_PKT_DATA_CONTENT_LIGHT_LEVEL, 3);
    av_stream_new_side_data(m_stream, AV_PKT_DATA_DOVI_CONF, 3);
    const VideoHdr hdr = HdrOf(*m_stream);
    EXPECT_EQ(hdr.masteringDisplay + hdr.contentLight + hdr.dolbyVision, "");
}

TEST(FieldOrderName, NamesWhatIsCodedAndWhatIsDisplayedFirst)
{
    EXPECT_EQ(FieldOrderName(AV_FIELD_UNKNOWN), "");
    EXPECT_EQ(FieldOrderName(AV_FIELD_PROGRESSIVE), "progressive");
    EXPECT_EQ(FieldOrderName(AV_FIELD_TT), "tt");
    EXPECT_EQ(FieldOrderName(AV_FIELD_BB), "bb");
    EXPECT_EQ(FieldOrderName(AV_FIELD_TB), "tb");
    EXPECT_EQ(FieldOrderName(AV_FIELD_BT), "bt");
}

TEST(ProbedVideo, KeepsWhatItsFileSaysOfItsColours)
{
    const TemporaryFolder folder;
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.08", "-vf",
              "format=yuv420p10le,setparams=range=tv:colorspace=bt2020nc:color_primaries=bt2020:"
              "color_trc=smpte2084",
              "-c:v", "libx265", "-x265-params",
              "log-level=none:master-display=G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)"
              "L(10000000,50):max-cll=1000,400",
              "hdr.mkv"},
             folder.Path().string());
    const MediaFile file = ProbeMedia(folder / "hdr.mkv");
    const MediaStream& video = file.streams.at(0);
    EXPECT_EQ(video.color.range, "tv");
    EXPECT_EQ(video.color.matrix, "bt2020nc");
    EXPECT_EQ(video.color.primaries, "bt2020");
    EXPECT_EQ(video.color.transfer, "smpte2084");
    EXPECT_EQ(video.pixelFormat, "yuv420p10le");
    EXPECT_EQ(video.bitsPerSample, 10U);
    EXPECT_EQ(video.profile, "Main 10");
    EXPECT_EQ(video.fieldOrder, "progressive");
}

} // namespace
