#include "Media/Running/VideoFilters.h"

#include "Tests/Support/JobFixtures.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Core::Property;

MediaStream Interlaced(const std::string& order = "tt")
{
    MediaStream source = MakeVideoStream(720, 576);
    source.isInterlaced = true;
    source.fieldOrder = order;
    return source;
}

/// A record of square pixels.
Property Sized(int width, int height, const std::string& more = "")
{
    return VideoRecord(R"("codec_id":"CODEC_ID_H264","width":)" + std::to_string(width) + R"(,"height":)" +
                       std::to_string(height) + R"(,"aspect_x":1,"aspect_y":1)" + more);
}

MediaStream Colored(const VideoColor& color, const std::string& pixelFormat = "yuv420p")
{
    MediaStream source = MakeVideoStream(1280, 720);
    source.color = color;
    source.pixelFormat = pixelFormat;
    return source;
}

const std::string kAspect = ",setsar=1/1:max=65535";

TEST(TimeFilters, DeinterlaceAsTheRecordSays)
{
    const auto filters = [](const std::string& word, const MediaStream& source) {
        return TimeFilters(source, VideoRecord(R"("deinterlace":")" + word + R"(","frameRateRatio":[50,1])"));
    };
    EXPECT_EQ(filters("25p", Interlaced()), "yadif=deint=interlaced,fps=50/1");
    EXPECT_EQ(filters("50p", Interlaced()), "yadif=mode=send_field:deint=interlaced,fps=50/1");
    EXPECT_EQ(filters("keep", Interlaced()), "fps=50/1");
    EXPECT_EQ(filters("off", Interlaced()), "setfield=prog,fps=50/1");
    EXPECT_EQ(filters("50p", MakeVideoStream()), "fps=50/1");
}

TEST(TimeFilters, MarkFramesThatDoNotSayThatTheyAreInterlaced)
{
    MediaStream source = Interlaced("bb");
    source.isInterlacedByHeader = true;
    EXPECT_EQ(TimeFilters(source, VideoRecord("")), "setfield=bff,yadif=deint=interlaced");
    EXPECT_EQ(TimeFilters(source, VideoRecord(R"("deinterlace":"keep")")), "setfield=bff");
}

TEST(FrameFilters, ScaleEachFieldOfFramesThatStayInterlaced)
{
    EXPECT_EQ(FrameFilters(Interlaced(), Sized(720, 480, R"(,"deinterlace":"keep")")),
              "scale=600:480:interl=1,pad=720:480:60:0" + kAspect);
    EXPECT_EQ(FrameFilters(Interlaced(), Sized(720, 576, R"(,"deinterlace":"keep")")),
              "scale=720:576" + kAspect);
}

TEST(FrameFilters, PutFieldsInTheirPlacesInALetterbox)
{
    // 18 lines above would swap the fields of the chroma.
    EXPECT_EQ(FrameFilters(Interlaced(), Sized(720, 612, R"(,"deinterlace":"keep")")),
              "scale=720:576:interl=1,pad=720:612:0:16" + kAspect);
    EXPECT_EQ(FrameFilters(Interlaced(), Sized(720, 612)), "scale=720:576,pad=720:612:0:18" + kAspect);
}

TEST(FrameFilters, NameTheMatrixOfRgb)
{
    EXPECT_EQ(
        FrameFilters(Colored({"pc", "gbr", "", ""}, "gbrp"),
                     Sized(1280, 720, R"(,"PIXELFORMAT":0,"colorRange":"tv","colorMatrix":"bt709")")),
        "scale=1280:720:flags=bicubic+accurate_rnd+full_chroma_int:out_color_matrix=bt709:out_range=tv" +
            kAspect + ",format=yuv420p,setparams=range=tv:colorspace=bt709");
}

TEST(FrameFilters, NameTheMatrixForRgb)
{
    EXPECT_EQ(FrameFilters(Colored({}), Sized(1280, 720, R"(,"PIXELFORMAT":2)")),
              "scale=1280:720:flags=bicubic+accurate_rnd+full_chroma_int:in_color_matrix=bt709" + kAspect +
                  ",format=rgb24");
}

TEST(FrameFilters, ConvertTheMatrixOnlyWhereItIsAnotherOne)
{
    const MediaStream source = Colored({"tv", "bt709", "", ""});
    EXPECT_EQ(FrameFilters(source, Sized(1280, 720, R"(,"colorMatrix":"bt709")")),
              "scale=1280:720" + kAspect + ",setparams=colorspace=bt709");
    EXPECT_EQ(FrameFilters(source, Sized(1280, 720, R"(,"colorMatrix":"bt470bg")")),
              "scale=1280:720:in_color_matrix=bt709:out_color_matrix=bt470" + kAspect +
                  ",setparams=colorspace=bt470bg");
}

TEST(FrameFilters, ConvertTheRange)
{
    EXPECT_EQ(FrameFilters(Colored({"pc", "", "", ""}), Sized(1280, 720, R"(,"colorRange":"tv")")),
              "scale=1280:720:in_range=pc:out_range=tv" + kAspect + ",setparams=range=tv");
    EXPECT_EQ(FrameFilters(Colored({"", "", "", ""}, "yuvj420p"),
                           VideoRecord(R"("codec_id":"CODEC_ID_H264","colorRange":"tv")")),
              "scale=in_range=pc:out_range=tv,setparams=range=tv")
        << "without a size as well";
}

TEST(FrameFilters, NameARangeThatStaysFull)
{
    EXPECT_EQ(FrameFilters(Colored({"pc", "", "", ""}), Sized(1280, 720, R"(,"colorRange":"pc")")),
              "scale=1280:720:in_range=pc:out_range=pc" + kAspect + ",setparams=range=pc");
}

TEST(FrameFilters, OfARecordWithoutColoursLeaveThemAlone)
{
    EXPECT_EQ(FrameFilters(Colored({"pc", "gbr", "bt709", "bt709"}, "gbrp"), Sized(1280, 720)),
              "scale=1280:720" + kAspect);
}

TEST(FrameFilters, MapHighDynamicRange)
{
    EXPECT_EQ(FrameFilters(Colored({"tv", "bt2020nc", "bt2020", "smpte2084"}, "yuv420p10le"),
                           Sized(1280, 720,
                                 R"(,"PIXELFORMAT":0,"colorRange":"tv","colorMatrix":"bt709",)"
                                 R"("colorPrimaries":"bt709","colorTransfer":"bt709")")),
              "scale=1280:720" + kAspect +
                  ",zscale=tin=smpte2084:min=bt2020nc:pin=bt2020:rin=tv:t=linear:npl=100,format=gbrpf32le,"
                  "zscale=p=bt709,tonemap=tonemap=hable:desat=0,zscale=t=bt709:m=bt709:r=tv,format=yuv420p,"
                  "setparams=range=tv:colorspace=bt709:color_primaries=bt709:color_trc=bt709");
}

TEST(FrameFilters, TakeAFormatByFFmpegsName)
{
    EXPECT_EQ(
        FrameFilters(Colored({}), VideoRecord(R"("codec_id":"CODEC_ID_H264","pixelFormat":"yuv420p10le")")),
        "format=yuv420p10le");
}

TEST(BitmapFilters, CoverTheFrameWithADvdsAndFitABluRays)
{
    MediaStream subtitle = MakeBitmapSubtitle();
    subtitle.codec = "dvd_subtitle";
    EXPECT_EQ(BitmapFilters(subtitle, MakeVideoStream(720, 576)), "scale=720:576:out_color_matrix=bt470");
    subtitle.codec = "hdmv_pgs_subtitle";
    EXPECT_EQ(BitmapFilters(subtitle, MakeVideoStream(1920, 800)),
              "scale=1920:800:force_original_aspect_ratio=decrease:out_color_matrix=bt709");
}

TEST(FindColorFault, NamesWhatCannotBeConverted)
{
    const MediaStream source = Colored({"tv", "ycgco", "bt709", "bt709"});
    std::string key;
    EXPECT_EQ(FindColorFault(source, VideoRecord(R"("colorTransfer":"smpte2084")"), key),
              "colours of bt709 cannot be converted to smpte2084");
    EXPECT_EQ(key, "colorTransfer");
    EXPECT_EQ(FindColorFault(source, VideoRecord(R"("colorPrimaries":"bt2020")"), key),
              "colours of bt709 cannot be converted to bt2020");
    EXPECT_EQ(key, "colorPrimaries");
    EXPECT_EQ(FindColorFault(source, VideoRecord(R"("colorMatrix":"bt709")"), key),
              "colours of ycgco cannot be converted to bt709");
    EXPECT_EQ(key, "colorMatrix");
    EXPECT_EQ(FindColorFault(source, VideoRecord(R"("colorMatrix":"ycgco","colorRange":"pc")"), key), "");
}

TEST(TimeFilters, MoveTheFramesOfAPartToItsBeginning)
{
    const MediaStream source = MakeVideoStream();
    const std::string fps = R"("frameRateRatio":[50,1])";
    EXPECT_EQ(TimeFilters(source, VideoRecord(fps), true),
              "setpts=PTS-STARTPTS*lt(STARTT\\,1/25+0.001),fps=50/1");
    RemoveValue(source, "frameRateRatio");
    EXPECT_EQ(TimeFilters(source, VideoRecord(fps), true),
              "setpts=PTS-STARTPTS*lt(STARTT\\,1/50+0.001),fps=50/1");
    EXPECT_EQ(TimeFilters(source, VideoRecord(""), true), "");
}

TEST(FrameFilters, KeepHighDynamicRangeThatNothingIsSaidOf)
{
    const MediaStream source = Colored({"tv", "bt2020nc", "bt2020", "smpte2084"}, "yuv420p10le");
    EXPECT_EQ(FrameFilters(source, VideoRecord(R"("codec_id":"CODEC_ID_HEVC")")), "");
}

TEST(FrameFilters, ConvertEveryMatrixThatTheFilterKnows)
{
    for (const std::string matrix : {"bt709", "fcc", "smpte170m", "smpte240m"})
    {
        const std::string filters =
            FrameFilters(Colored({"tv", "bt2020nc", "", ""}),
                         VideoRecord(R"("codec_id":"CODEC_ID_H264","colorMatrix":")" + matrix + '"'));
        EXPECT_NE(filters.find(":out_color_matrix=" + matrix), std::string::npos) << filters;
    }
}

TEST(BitmapFilters, TakeTheMatrixOfTheVideoWhereTheFilterKnowsIt)
{
    MediaStream video = MakeVideoStream(720, 576);
    video.color.matrix = "bt709";
    EXPECT_EQ(BitmapFilters(MakeBitmapSubtitle(), video), "scale=720:576:out_color_matrix=bt709");
    video.color.matrix = "ycgco";
    EXPECT_EQ(BitmapFilters(MakeBitmapSubtitle(), video), "scale=720:576");
}

TEST(FindColorFault, TakesTheNamesOfOneMatrixForTheSame)
{
    std::string key;
    EXPECT_EQ(
        FindColorFault(Colored({"tv", "bt470bg", "", ""}), VideoRecord(R"("colorMatrix":"smpte170m")"), key),
        "");
    EXPECT_EQ(FindColorFault(Colored({"tv", "bt709", "", ""}), VideoRecord(R"("colorMatrix":"ycgco")"), key),
              "colours of bt709 cannot be converted to ycgco");
    EXPECT_EQ(key, "colorMatrix");
}

} // namespace
