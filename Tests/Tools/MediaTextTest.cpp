#include "Tools/zconf/Commands/MediaText.h"

#include "Tests/Support/MediaFixtures.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;
using namespace Zelnor::Tool;

const Painter kPlain(false);

TEST(DurationText, CountsHoursAndRoundsToMilliseconds)
{
    EXPECT_EQ(DurationText(0), "0:00:00.000");
    EXPECT_EQ(DurationText(3723500000), "1:02:03.500");
    EXPECT_EQ(DurationText(499), "0:00:00.000");
    EXPECT_EQ(DurationText(500), "0:00:00.001");
    EXPECT_EQ(DurationText(59999500), "0:01:00.000");
    EXPECT_EQ(DurationText(360000000000000), "100000:00:00.000");
}

TEST(StreamText, DescribesVideo)
{
    EXPECT_EQ(StreamText(MakeVideoStream(1920, 1080)), "CODEC_ID_H264  1920x1080 (16:9)  25 fps  YUV420P");
}

TEST(StreamText, DescribesColoursAndHighDynamicRange)
{
    Media::MediaStream stream = MakeVideoStream(1920, 1080);
    stream.color = {"tv", "bt2020nc", "bt2020", "smpte2084"};
    stream.hdr = {"G(1,2)B(3,4)R(5,6)WP(7,8)L(9,1)", "1000,400", "8.4"};
    EXPECT_EQ(StreamText(stream), "CODEC_ID_H264  1920x1080 (16:9)  25 fps  YUV420P  "
                                  "bt2020nc/bt2020/smpte2084 tv  Dolby Vision 8.4, mastering display "
                                  "G(1,2)B(3,4)R(5,6)WP(7,8)L(9,1), content light 1000,400");
}

TEST(StreamText, SaysAColourOnceWhereAllAreTheSame)
{
    Media::MediaStream stream = MakeVideoStream(1920, 1080);
    stream.color = {"tv", "bt709", "bt709", "bt709"};
    EXPECT_EQ(StreamText(stream), "CODEC_ID_H264  1920x1080 (16:9)  25 fps  YUV420P  bt709 tv");
    stream.color = {"", "bt709", "", ""};
    EXPECT_EQ(StreamText(stream), "CODEC_ID_H264  1920x1080 (16:9)  25 fps  YUV420P  bt709/?/?");
    stream.color = {"tv", "", "", ""};
    EXPECT_EQ(StreamText(stream), "CODEC_ID_H264  1920x1080 (16:9)  25 fps  YUV420P");
    stream.color = {"pc", "", "", ""};
    EXPECT_EQ(StreamText(stream), "CODEC_ID_H264  1920x1080 (16:9)  25 fps  YUV420P  pc");
}

TEST(StreamText, NamesThePixelFormatOfFFmpegWhereTheVocabularyHasNone)
{
    Media::MediaStream stream = MakeVideoStream(1920, 1080);
    RemoveValue(stream, "PIXELFORMAT");
    stream.pixelFormat = "yuv420p10le";
    EXPECT_EQ(StreamText(stream), "CODEC_ID_H264  1920x1080 (16:9)  25 fps  yuv420p10le");
}

TEST(StreamText, NamesTheOrderOfFields)
{
    Media::MediaStream stream = MakeVideoStream(720, 576);
    stream.isInterlaced = true;
    stream.fieldOrder = "bb";
    EXPECT_EQ(StreamText(stream), "CODEC_ID_H264  720x576 (5:4)  25 fps  YUV420P  interlaced bb");
}

TEST(StreamText, DescribesAudio)
{
    EXPECT_EQ(StreamText(MakeAudioStream()), "CODEC_ID_AAC  48000 Hz  STEREO  SAMPLE_FMT_FLTP");
}

TEST(StreamText, DescribesSubtitlesWithTheirLanguage)
{
    const Media::MediaStream stream = MakeSubtitleStream("CODEC_ID_SRT");
    SetTag(*stream.descriptor, "language", "deu");
    EXPECT_EQ(StreamText(stream), "CODEC_ID_SRT  deu");
}

TEST(StreamText, NamesTheCodecOfFFmpegWhereTheVocabularyHasNone)
{
    Media::MediaStream stream = MakeSubtitleStream();
    RemoveValue(stream, "codec_id");
    stream.codec = "cfhd";
    EXPECT_EQ(StreamText(stream), "cfhd");
}

TEST(StreamText, ListsTheFlags)
{
    Media::MediaStream stream = MakeVideoStream(1920, 1080);
    stream.isDefault = true;
    stream.isForced = true;
    stream.isInterlaced = true;
    stream.isAttachedPicture = true;
    stream.rotation = 90;
    EXPECT_EQ(StreamText(stream), "CODEC_ID_H264  1920x1080 (16:9)  25 fps  YUV420P  "
                                  "default, forced, interlaced, attached picture, rotated 90 degrees");
}

TEST(StreamText, TellsTheTimecodeAndTheNameAndTypeOfAnAttachment)
{
    Media::MediaStream video = MakeVideoStream();
    video.timecode = "01:00:00:00";
    EXPECT_EQ(StreamText(video), "CODEC_ID_H264  1280x720 (16:9)  25 fps  YUV420P  timecode 01:00:00:00");
    Media::MediaStream font = MakeStream(Media::StreamKind::Attachment, Conf::IFormatCodec::Create());
    font.codec = "ttf";
    font.fileName = "a font.ttf";
    font.mimeType = "font/ttf";
    EXPECT_EQ(StreamText(font), "ttf  a font.ttf  font/ttf");
}

TEST(MediaText, ShowsTheTimecodeAndTheChapters)
{
    Media::MediaFile file = MakeMediaFile({}, "in.mkv");
    file.timecode = "01:00:00:00";
    file.chapters = {{0, 1500000, "One"}, {1500000, 10000000, ""}};
    EXPECT_EQ(MediaText(file, kPlain), "in.mkv\n"
                                       "  container  matroska\n"
                                       "  duration   0:00:10.000\n"
                                       "  timecode   01:00:00:00\n"
                                       "  chapter    0:00:00.000 to 0:00:01.500  One\n"
                                       "  chapter    0:00:01.500 to 0:00:10.000\n");
}

TEST(MediaText, ShowsTheFileAndItsStreams)
{
    Media::MediaFile file = MakeMediaFile({MakeVideoStream(1280, 720), MakeAudioStream()}, "in.mkv");
    file.durationIsEstimated = true;
    SetTag(*file.descriptor, "title", "A title");
    file.notes = {"something about the file"};
    file.streams[1].notes = {"something about the stream"};
    EXPECT_EQ(MediaText(file, kPlain), "in.mkv\n"
                                       "  container  matroska\n"
                                       "  duration   0:00:10.000 (estimated from the bitrate)\n"
                                       "  title      A title\n"
                                       "  note       something about the file\n"
                                       "stream 0  video  CODEC_ID_H264  1280x720 (16:9)  25 fps  YUV420P\n"
                                       "stream 1  audio  CODEC_ID_AAC  48000 Hz  STEREO  SAMPLE_FMT_FLTP\n"
                                       "          note   something about the stream\n");
}

TEST(MediaText, SaysWhenTheDurationIsUnknown)
{
    Media::MediaFile file = MakeMediaFile({});
    file.duration.reset();
    EXPECT_EQ(MediaText(file, kPlain), "in.mkv\n"
                                       "  container  matroska\n"
                                       "  duration   unknown\n");
}

TEST(MediaText, ATagCannotSteerTheTerminal)
{
    Media::MediaFile file = MakeMediaFile({}, "two\nlines");
    file.duration.reset();
    SetTag(*file.descriptor, "t\x1b[2J",
           "\xe2\x80\xae"
           "abc");
    EXPECT_EQ(MediaText(file, kPlain), "two\\nlines\n"
                                       "  container  matroska\n"
                                       "  duration   unknown\n"
                                       "  t\\x1b[2J   \\xe2\\x80\\xaeabc\n");
}

} // namespace
