#include "Media/Planning/ColorPlan.h"

#include "Media/Planning/VideoSettings.h"
#include "Media/Probe/FFmpegNames.h"
#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/MediaFixtures.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Core::Property;
using Notes = std::vector<std::string>;

/// Plans the colours of one video.
class ColorPlan : public testing::Test
{
protected:
    /// "range matrix primaries transfer" of what is planned; "-" is what is left open.
    std::string Plan(const std::string& codecId, const std::string& container,
                     const std::string& pixelFormat = "yuv420p", int width = 1280, int height = 720,
                     const std::string& more = "")
    {
        Property record =
            VideoRecord(R"("codec_id":")" + codecId + R"(","pixelFormat":")" + pixelFormat + R"(","width":)" +
                        std::to_string(width) + R"(,"height":)" + std::to_string(height) + more);
        PlanColor(m_source, *FindEncoder(codecId), container, record);
        m_notes = ColorLosses(m_source, record, *FindEncoder(codecId), container);
        const VideoColor color = ColorIn(record);
        const auto text = [](const std::string& name) { return name.empty() ? "-" : name; };
        return text(color.range) + " " + text(color.matrix) + " " + text(color.primaries) + " " +
               text(color.transfer);
    }
    void Is(const VideoColor& color, const std::string& pixelFormat = "yuv420p")
    {
        m_source.color = color;
        m_source.pixelFormat = pixelFormat;
    }

    MediaStream m_source = MakeVideoStream(1280, 720);
    Notes m_notes;
};

const VideoColor kHd = {"tv", "bt709", "bt709", "bt709"};
const VideoColor kHdr = {"tv", "bt2020nc", "bt2020", "smpte2084"};

TEST_F(ColorPlan, KeepsTheSources)
{
    Is({"tv", "smpte170m", "bt470m", "gamma28"});
    EXPECT_EQ(Plan("CODEC_ID_H264", "mp4"), "tv smpte170m bt470m gamma28");
    EXPECT_EQ(Plan("CODEC_ID_VP8", "webm"), "tv smpte170m bt470m gamma28");
    EXPECT_EQ(m_notes, Notes{});
}

TEST_F(ColorPlan, DoesNotInventWhatIsNotKnown) { EXPECT_EQ(Plan("CODEC_ID_H264", "mp4"), "- - - -"); }

TEST_F(ColorPlan, ConvertsRgbToTheMatrixOfTheSize)
{
    Is({"pc", "gbr", "", ""}, "gbrp");
    EXPECT_EQ(Plan("CODEC_ID_H264", "mp4"), "tv bt709 - -");
    EXPECT_EQ(Plan("CODEC_ID_H264", "mp4", "yuv420p", 720, 576), "tv bt470bg - -");
    EXPECT_EQ(Plan("CODEC_ID_H264", "mp4", "yuv420p", 640, 480), "tv smpte170m - -");
    EXPECT_EQ(Plan("CODEC_ID_PNG", "png", "rgb24"), "- - - -");
}

TEST_F(ColorPlan, ConvertsToTheMatrixThatPlayersOfDvdsExpect)
{
    Is(kHd);
    EXPECT_EQ(Plan("CODEC_ID_MPEG2VIDEO", "dvd", "yuv420p", 720, 576), "- bt470bg bt709 bt709");
    Is({});
    EXPECT_EQ(Plan("CODEC_ID_MPEG2VIDEO", "dvd", "yuv420p", 720, 480), "- smpte170m - -");
}

TEST_F(ColorPlan, ConvertsToTheMatrixThatPlayersExpectWhereNoneCanBeNamed)
{
    Is(kHd);
    EXPECT_EQ(Plan("CODEC_ID_MPEG4", "avi", "yuv420p", 640, 360), "- smpte170m - -");
    EXPECT_EQ(Plan("CODEC_ID_MPEG4", "avi"), "- - - -");
    EXPECT_EQ(m_notes, Notes{});
}

TEST_F(ColorPlan, KeepsHighDynamicRangeInTenBits)
{
    Is(kHdr, "yuv420p10le");
    EXPECT_EQ(Plan("CODEC_ID_H264", "matroska", "yuv420p10le"), "tv bt2020nc bt2020 smpte2084");
    EXPECT_EQ(m_notes, Notes{});
}

TEST_F(ColorPlan, MapsHighDynamicRangeToWhatEightBitsCanHoldAndSaysSo)
{
    Is(kHdr, "yuv420p10le");
    EXPECT_EQ(Plan("CODEC_ID_H264", "mp4"), "tv bt709 bt709 bt709");
    EXPECT_EQ(m_notes,
              Notes{"its high dynamic range (smpte2084) is mapped to standard dynamic range (bt709)"});
    EXPECT_EQ(Plan("CODEC_ID_PNG", "png", "rgb24"), "- - bt709 bt709");
}

TEST_F(ColorPlan, NamesColoursThatTheOutputCannotName)
{
    Is({"tv", "bt2020nc", "bt2020", "bt709"});
    Plan("CODEC_ID_MPEG4", "avi");
    EXPECT_EQ(m_notes, Notes{"its colours (primaries bt2020, transfer bt709) cannot be "
                             "named in the output, so players will show others"});
}

TEST_F(ColorPlan, KeepsTheFullRangeWhereItCanBeTold)
{
    Is({"pc", "bt709", "bt709", "bt709"});
    EXPECT_EQ(Plan("CODEC_ID_H264", "mp4"), "pc bt709 bt709 bt709");
    EXPECT_EQ(Plan("CODEC_ID_MPEG4", "mov"), "tv bt709 bt709 bt709");
    EXPECT_EQ(Plan("CODEC_ID_MJPEG", "avi", "yuvj420p"), "pc - - -");
}

TEST_F(ColorPlan, ConvertsTheRangeWithTheFormatThatMeansIt)
{
    Is({"pc", "bt709", "", ""}, "yuvj420p");
    EXPECT_EQ(Plan("CODEC_ID_H264", "mp4", "yuvj420p"), "pc bt709 - -");
    EXPECT_EQ(Plan("CODEC_ID_H264", "mp4", "yuv420p"), "tv bt709 - -");
}

TEST_F(ColorPlan, LeavesWhatIsAskedFor)
{
    Is(kHd);
    EXPECT_EQ(Plan("CODEC_ID_H264", "mp4", "yuv420p", 640, 360, R"(,"colorMatrix":"smpte170m")"),
              "tv smpte170m bt709 bt709");
}

TEST_F(ColorPlan, SaysThatDolbyVisionIsLeftOut)
{
    m_source.hdr.dolbyVision = "8.4";
    Plan("CODEC_ID_H264", "mp4");
    EXPECT_EQ(m_notes, Notes{"its Dolby Vision data (profile 8.4) are left out"});
}

TEST_F(ColorPlan, MapsHighDynamicRangeWhereNoColourCanBeNamed)
{
    Is(kHdr, "yuv420p10le");
    EXPECT_EQ(Plan("CODEC_ID_FFV1", "avi", "yuv420p10le"), "- bt709 bt709 bt709");
    EXPECT_EQ(Plan("CODEC_ID_MPEG2VIDEO", "dvd", "yuv420p", 720, 576), "- bt470bg bt709 bt709");
}

TEST_F(ColorPlan, OfAnUnknownFormatIsLeftOpen)
{
    Is({"", "bt709", "", ""}, "no format");
    EXPECT_EQ(Plan("CODEC_ID_MPEG4", "avi", "yuv420p", 640, 360), "- - - -");
}

TEST_F(ColorPlan, NamesTheMatrixOfADvdWhereItIsKnown)
{
    Is({"tv", "bt470bg", "", ""});
    EXPECT_EQ(Plan("CODEC_ID_MPEG2VIDEO", "dvd", "yuv420p", 720, 576), "- bt470bg - -");
    EXPECT_EQ(Plan("CODEC_ID_MPEG1VIDEO", "dvd", "yuv420p", 720, 576), "- - - -");
}

TEST_F(ColorPlan, EitherUnusualColourIsLost)
{
    const auto isLost = [this](const char* primaries, const char* transfer) {
        Is({"tv", "bt709", primaries, transfer});
        Plan("CODEC_ID_MPEG4", "avi");
        return !m_notes.empty();
    };
    EXPECT_FALSE(isLost("bt709", "bt709"));
    EXPECT_FALSE(isLost("", ""));
    EXPECT_TRUE(isLost("bt2020", ""));
    EXPECT_TRUE(isLost("bt709", "gamma28"));
    Is({"tv", "bt709", "", "gamma28"});
    Plan("CODEC_ID_MPEG4", "avi");
    EXPECT_EQ(m_notes,
              Notes{"its colours (primaries unknown, transfer gamma28) cannot be named in the output, so "
                    "players will show others"});
}

TEST_F(ColorPlan, AFullRangeThatCannotBeToldIsConverted)
{
    Is({"pc", "", "", ""});
    EXPECT_EQ(Plan("CODEC_ID_MPEG2VIDEO", "mp4"), "tv - - -");
    EXPECT_EQ(Plan("CODEC_ID_VP9", "avi"), "pc - - -");
    Is({"", "", "", ""}, "yuvj420p");
    EXPECT_EQ(Plan("CODEC_ID_VP9", "avi"), "tv - - -");
}

} // namespace
