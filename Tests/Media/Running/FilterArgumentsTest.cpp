#include "Media/Running/FilterArguments.h"

#include "Tests/Support/JobFixtures.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

/// The settings of a stream of that size with square pixels.
Core::Property Sized(int width, int height, const std::string& more = "")
{
    return VideoRecord(R"("codec_id":"CODEC_ID_H264","width":)" + std::to_string(width) + R"(,"height":)" +
                       std::to_string(height) + R"(,"aspect_x":1,"aspect_y":1)" + more);
}

TEST(StreamFilters, ScaleWithinTheSameAspect)
{
    EXPECT_EQ(StreamFilters(MakeVideoStream(1280, 720), Sized(640, 360)),
              "scale=640:360,setsar=1/1:max=65535");
}

TEST(StreamFilters, PutAWideFrameIntoALetterbox)
{
    EXPECT_EQ(StreamFilters(MakeVideoStream(1280, 720), Sized(640, 480)),
              "scale=640:360,pad=640:480:0:60,setsar=1/1:max=65535");
}

TEST(StreamFilters, PutANarrowFrameIntoAPillarbox)
{
    EXPECT_EQ(StreamFilters(MakeVideoStream(640, 480), Sized(1280, 720)),
              "scale=960:720,pad=1280:720:160:0,setsar=1/1:max=65535");
}

TEST(StreamFilters, MeasureARotatedFrameAsItIsDisplayed)
{
    MediaStream source = MakeVideoStream(1280, 720);
    source.rotation = 90;
    EXPECT_EQ(StreamFilters(source, Sized(360, 640)), "scale=360:640,setsar=1/1:max=65535");
}

TEST(StreamFilters, DeinterlaceBeforeAnythingElse)
{
    MediaStream source = MakeVideoStream(640, 360);
    source.isInterlaced = true;
    EXPECT_EQ(StreamFilters(source, Sized(640, 360, R"(,"frameRateRatio":[25,1])")),
              "yadif=deint=interlaced,fps=25/1,scale=640:360,setsar=1/1:max=65535");
}

TEST(StreamFilters, OfSoundNameWhatIsSet)
{
    EXPECT_EQ(StreamFilters(MakeAudioStream(), AudioRecord(R"("codec_id":"CODEC_ID_AC3")")), "");
    EXPECT_EQ(
        StreamFilters(MakeAudioStream(), AudioRecord(R"("codec_id":"CODEC_ID_AC3","sample_rate":48000)")),
        "aformat=sample_rates=48000");
}

TEST(MergeFilters, MixSoundIntoSound)
{
    FaultList faults;
    const Transcode transcode = MakeTranscode(MakeMediaFile({MakeAudioStream(), MakeAudioStream()}),
                                              AudioRecord(R"("codec_id":"CODEC_ID_AC3")"), "ac3", {1});
    EXPECT_EQ(MergeFilters(transcode, transcode.streams.front(), transcode.streams.front().codec, faults),
              "[0:0][0:1]amix=inputs=2:normalize=0");
    EXPECT_EQ(Sentences(faults.Get()), std::vector<std::string>{});
}

TEST(MergeFilters, DrawSubtitlesOverVideo)
{
    FaultList faults;
    const Transcode transcode =
        MakeTranscode(MakeMediaFile({MakeVideoStream(), MakeSubtitleStream(), MakeBitmapSubtitle()}),
                      Sized(640, 360), "mp4", {1, 2});
    EXPECT_EQ(MergeFilters(transcode, transcode.streams.front(), transcode.streams.front().codec, faults),
              "[0:2]scale=1280:720:out_color_matrix=bt709[bitmap2];"
              "[0:0]subtitles=filename=file\\\\:in.mkv:si=0[drawn];"
              "[drawn][bitmap2]overlay=x=(W-w)/2:y=(H-h)/2:eof_action=pass:format=auto");
    EXPECT_EQ(Sentences(faults.Get()), std::vector<std::string>{});
}

/// Where ffmpeg seeks, the frames of a part count their time from its beginning, and the texts do not.
TEST(MergeFilters, DrawTheSubtitlesOfAPartInTime)
{
    const auto filters = [](const std::string& demuxer) {
        FaultList faults;
        Transcode transcode = MakeTranscode(MakeMediaFile({MakeVideoStream(), MakeSubtitleStream()}),
                                            Sized(640, 360), "mp4", {1});
        transcode.inputs.front().demuxer = demuxer;
        transcode.span.start = 2000000;
        return MergeFilters(transcode, transcode.streams.front(), transcode.streams.front().codec, faults);
    };
    EXPECT_EQ(filters("matroska,webm"),
              "[0:0]setpts=PTS+2000000/1000000/TB,subtitles=filename=file\\\\:in.mkv:si=0,"
              "setpts=PTS-2000000/1000000/TB");
    EXPECT_EQ(filters("avi"), "[0:0]subtitles=filename=file\\\\:in.mkv:si=0");
}

TEST(MergeFilters, RefuseKindsThatDoNotFit)
{
    FaultList faults;
    const Transcode transcode =
        MakeTranscode(MakeMediaFile({MakeVideoStream(), MakeAudioStream()}), Sized(640, 360), "mp4", {1});
    MergeFilters(transcode, transcode.streams.front(), transcode.streams.front().codec, faults);
    EXPECT_EQ(faults.Get().size(), 1U);
}

TEST(EscapeForFilter, EscapesForTheOptionAndForTheGraph)
{
    EXPECT_EQ(EscapeForFilter("plain.mkv"), "plain.mkv");
    EXPECT_EQ(EscapeForFilter("a:b"), "a\\\\:b");
    EXPECT_EQ(EscapeForFilter("a,b"), "a\\,b");
    EXPECT_EQ(EscapeForFilter("it's"), "it\\\\\\'s");
}

} // namespace
