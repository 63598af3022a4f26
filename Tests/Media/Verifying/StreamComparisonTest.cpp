#include "Media/Verifying/StreamComparison.h"

#include "Tests/Support/VerifyingFixtures.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Conf;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

/// A video of 1280x720 at 25 frames a second, against `found`.
std::vector<std::string> Video(const MediaStream& found, const StreamScan& scan = GoodScan(),
                               const std::string& container = "mp4")
{
    const ExpectedFile file = ExpectingFile(MakeMediaFile({MakeVideoStream()}), container);
    return Told(CompareStream(file, file.streams.front(), {found, scan}));
}

/// Stereo AAC of 48 kHz, against `found`.
std::vector<std::string> Audio(const MediaStream& found, ChannelLayout wanted = CH_LAYOUT_STEREO)
{
    const ExpectedFile file = ExpectingFile(MakeMediaFile({MakeAudioStream(wanted)}), "mp4");
    return Told(CompareStream(file, file.streams.front(), {found, GoodScan()}));
}

TEST(StreamComparison, FindsNothingInAStreamThatIsAsItMustBe)
{
    EXPECT_THAT(Video(MakeVideoStream()), IsEmpty());
    EXPECT_THAT(Audio(MakeAudioStream()), IsEmpty());
}

TEST(StreamComparison, AnotherCodecIsTheOnlyDifferenceThatIsTold)
{
    EXPECT_THAT(Video(MakeVideoStream(640, 360, "CODEC_ID_MPEG4")),
                ElementsAre("codec: wanted h264, found mpeg4"));
}

TEST(StreamComparison, TellsAnotherSize)
{
    EXPECT_THAT(Video(MakeVideoStream(1280, 718)), ElementsAre("size: wanted 1280x720, found 1280x718"));
}

TEST(StreamComparison, TellsADisplayAspectRatioThatCanBeSeen)
{
    const MediaStream found = MakeVideoStream();
    dynamic_cast<IFormatCodecVideo&>(*found.descriptor).InitByPixelAspect(1280, 720, 64, 45);
    EXPECT_THAT(Video(found), ElementsAre("display aspect ratio: wanted 1.778, found 2.528"));
    dynamic_cast<IFormatCodecVideo&>(*found.descriptor).InitByPixelAspect(1280, 720, 1001, 1000);
    EXPECT_THAT(Video(found), IsEmpty());
}

TEST(StreamComparison, TellsAnotherFrameRateButNotARoundedOne)
{
    const MediaStream found = MakeVideoStream();
    StreamScan scan = GoodScan();
    scan.packets = 500;
    SetValue(found, IFormatCodecVideo::TAG_FPS, Core::Property::Ratio(50));
    EXPECT_THAT(Video(found, scan), ElementsAre("frame rate: wanted 25.000, found 50.000"));
    SetValue(found, IFormatCodecVideo::TAG_FPS, Core::Property::Ratio(1000));
    EXPECT_THAT(Video(found), IsEmpty());
    SetValue(found, IFormatCodecVideo::TAG_FPS, Core::Property::Ratio(25025, 1001));
    EXPECT_THAT(Video(found, scan), IsEmpty());
}

TEST(StreamComparison, AStreamWithoutTimesHasNoRateToCompare)
{
    const MediaStream found = MakeVideoStream();
    SetValue(found, IFormatCodecVideo::TAG_FPS, Core::Property::Ratio(50));
    StreamScan scan = GoodScan();
    scan.packets = 500;
    EXPECT_THAT(Video(found, scan, "h264"), IsEmpty());
}

TEST(StreamComparison, AnEncoderMayNeedLessThanTheProfileThatItMayUse)
{
    const auto compare = [](const char* wanted, const char* found) {
        const MediaStream source = MakeVideoStream();
        SetValue(source, IFormatCodec::TAG_PROFILE, std::string(wanted));
        const MediaStream made = MakeVideoStream();
        SetValue(made, IFormatCodec::TAG_PROFILE, std::string(found));
        const ExpectedFile file = ExpectingFile(MakeMediaFile({source}), "mp4");
        return Told(CompareStream(file, file.streams.front(), {made, GoodScan()}));
    };
    EXPECT_THAT(compare("high", "main"), IsEmpty());
    EXPECT_THAT(compare("main", "main"), IsEmpty());
    EXPECT_THAT(compare("baseline", "high"), ElementsAre("profile: wanted baseline, found high"));
}

TEST(StreamComparison, TellsOtherChannelsButNotTheSideFromTheBack)
{
    EXPECT_THAT(Audio(MakeAudioStream(CH_LAYOUT_MONO)),
                ElementsAre("channel layout: wanted STEREO, found MONO"));
    EXPECT_THAT(Audio(MakeAudioStream(CH_LAYOUT_5POINT1_BACK), CH_LAYOUT_5POINT1), IsEmpty());
}

TEST(StreamComparison, TellsAnotherSampleRateButOfOpus)
{
    EXPECT_THAT(Audio(MakeAudioStream(CH_LAYOUT_STEREO, 44100)),
                ElementsAre("sample rate: wanted 48000 Hz, found 44100 Hz"));
    const MediaFile source = MakeMediaFile({MakeAudioStream(CH_LAYOUT_STEREO, 16000, "CODEC_ID_OPUS")});
    const ExpectedFile file = ExpectingFile(source, "webm");
    const MediaStream found = MakeAudioStream(CH_LAYOUT_STEREO, 48000, "CODEC_ID_OPUS");
    EXPECT_THAT(CompareStream(file, file.streams.front(), {found, GoodScan()}), IsEmpty());
}

TEST(StreamComparison, TellsWhatTheDecoderSays)
{
    StreamScan scan = GoodScan();
    scan.error = "at 3.000 s: Invalid data found when processing input";
    EXPECT_THAT(Video(MakeVideoStream(), scan),
                ElementsAre("decoding: wanted no error, found at 3.000 s: Invalid data found when processing "
                            "input"));
    scan = GoodScan();
    scan.frames = 0;
    EXPECT_THAT(Video(MakeVideoStream(), scan), ElementsAre("decoding: wanted frames, found none"));
    scan.hasDecoder = false;
    EXPECT_THAT(Video(MakeVideoStream(), scan), IsEmpty());
}

TEST(StreamComparison, ACopyIsComparedWithItsSource)
{
    ExpectedFile file = ExpectingFile(MakeMediaFile({MakeVideoStream(640, 480)}), "mp4");
    file.streams.front().isCopied = true;
    file.streams.front().record = MakeVideoStream().descriptor->GetProperty();
    const MediaStream same = MakeVideoStream(640, 480);
    EXPECT_THAT(CompareStream(file, file.streams.front(), {same, GoodScan()}), IsEmpty());
    const MediaStream other = MakeVideoStream();
    EXPECT_THAT(Told(CompareStream(file, file.streams.front(), {other, GoodScan()})),
                ElementsAre("size: wanted 640x480, found 1280x720"));
}

TEST(StreamComparison, AConvertedVideoStandsUpright)
{
    MediaStream found = MakeVideoStream();
    found.rotation = 90;
    EXPECT_THAT(Video(found), ElementsAre("rotation: wanted 0, found 90"));
}

TEST(StreamComparison, WhatEitherSideDoesNotKnowIsNotCompared)
{
    const MediaStream video = MakeVideoStream();
    RemoveValue(video, IFormatCodecVideo::TAG_FPS);
    EXPECT_THAT(Video(video), IsEmpty());
    for (const std::string& key : {IFormatCodecAudio::TAG_SAMPLE_RATE, IFormatCodecAudio::TAG_LAYOUT})
    {
        const MediaStream unknown = MakeAudioStream();
        RemoveValue(unknown, key);
        EXPECT_THAT(Audio(unknown), IsEmpty()) << key;
        const ExpectedFile file = ExpectingFile(MakeMediaFile({unknown}), "mp4");
        const MediaStream found = MakeAudioStream(CH_LAYOUT_MONO, 48000);
        EXPECT_EQ(CompareStream(file, file.streams.front(), {found, GoodScan()}).empty(),
                  key == IFormatCodecAudio::TAG_LAYOUT)
            << key;
    }
    const MediaStream text = MakeAudioStream();
    SetValue(text, IFormatCodecAudio::TAG_SAMPLE_RATE, std::string("44100"));
    EXPECT_THAT(Audio(text), IsEmpty());
}

TEST(StreamComparison, AVideoWhoseSizeTheJobLeavesOpenMayHaveAnySize)
{
    const auto compare = [](const MediaStream& source) {
        const ExpectedFile file = ExpectingFile(MakeMediaFile({source}), "mp4");
        const MediaStream found = MakeVideoStream(640, 360);
        return Told(CompareStream(file, file.streams.front(), {found, GoodScan()}));
    };
    EXPECT_THAT(compare(MakeVideoStream()), ElementsAre("size: wanted 1280x720, found 640x360"));
    for (const std::string& key : {IFormatCodecVideo::TAG_WIDTH, IFormatCodecVideo::TAG_HEIGHT})
    {
        const MediaStream source = MakeVideoStream();
        RemoveValue(source, key);
        EXPECT_THAT(compare(source), IsEmpty()) << key;
    }
    for (const std::string& key : {IFormatCodecVideo::TAG_WIDTH, IFormatCodecVideo::TAG_HEIGHT,
                                   IFormatCodecVideo::TAG_ASPECTX, IFormatCodecVideo::TAG_ASPECTY})
    {
        const MediaStream source = MakeVideoStream();
        SetValue(source, key, 0LL);
        EXPECT_THAT(compare(source), IsEmpty()) << key;
    }
}

TEST(StreamComparison, TellsAVideoOfUnknownSize)
{
    const MediaStream found = MakeVideoStream();
    RemoveValue(found, IFormatCodecVideo::TAG_WIDTH);
    EXPECT_THAT(Video(found), ElementsAre("size: wanted 1280x720, found 0x0"));
}

TEST(StreamComparison, AnImageHasNoFrameRate)
{
    MediaStream found = MakeVideoStream();
    SetValue(found, IFormatCodecVideo::TAG_FPS, Core::Property::Ratio(50));
    StreamScan scan = GoodScan();
    scan.packets = 500;
    ASSERT_THAT(Video(found, scan), ElementsAre("frame rate: wanted 25.000, found 50.000"));
    ExpectedFile picture = ExpectingFile(MakeMediaFile({MakeVideoStream()}), "mp4");
    picture.isPicture = true;
    EXPECT_THAT(CompareStream(picture, picture.streams.front(), {found, scan}), IsEmpty());
    found.isAttachedPicture = true;
    EXPECT_THAT(Video(found, scan), IsEmpty());
}

TEST(StreamComparison, AVideoWhoseRateTheJobLeavesOpenMayHaveAnyRate)
{
    const MediaStream source = MakeVideoStream();
    RemoveValue(source, IFormatCodecVideo::TAG_FPS);
    const ExpectedFile file = ExpectingFile(MakeMediaFile({source}), "mp4");
    const MediaStream found = MakeVideoStream();
    EXPECT_THAT(CompareStream(file, file.streams.front(), {found, GoodScan()}), IsEmpty());
}

TEST(StreamComparison, AContainerThatIsNotKnownHereHasNoFrameRate)
{
    const MediaStream found = MakeVideoStream();
    SetValue(found, IFormatCodecVideo::TAG_FPS, Core::Property::Ratio(50));
    StreamScan scan = GoodScan();
    scan.packets = 500;
    EXPECT_THAT(Video(found, scan, "none of FFmpeg's"), IsEmpty());
}

TEST(StreamComparison, ARateThatCannotBeMeasuredIsTheOneThatTheFileSays)
{
    const MediaStream found = MakeVideoStream();
    SetValue(found, IFormatCodecVideo::TAG_FPS, Core::Property::Ratio(50));
    const std::string told = "frame rate: wanted 25.000, found 50.000";
    StreamScan scan = GoodScan();
    scan.packets = 1;
    EXPECT_THAT(Video(found, scan), ElementsAre(told));
    scan = GoodScan();
    scan.end = std::nullopt;
    EXPECT_THAT(Video(found, scan), ElementsAre(told));
    scan.end = scan.begin;
    EXPECT_THAT(Video(found, scan), ElementsAre(told));
}

TEST(StreamComparison, AGifMayHaveFewerFramesButNotMore)
{
    const ExpectedFile file =
        ExpectingFile(MakeMediaFile({MakeVideoStream(1280, 720, "CODEC_ID_GIF")}), "gif");
    const MediaStream found = MakeVideoStream(1280, 720, "CODEC_ID_GIF");
    SetValue(found, IFormatCodecVideo::TAG_FPS, Core::Property::Ratio(50));
    const auto compare = [&](std::int64_t packets) {
        StreamScan scan = GoodScan();
        scan.packets = packets;
        return Told(CompareStream(file, file.streams.front(), {found, scan}));
    };
    EXPECT_THAT(compare(1), IsEmpty());
    EXPECT_THAT(compare(100), IsEmpty());
    EXPECT_THAT(compare(500), ElementsAre("frame rate: wanted 25.000, found 50.000"));
}

TEST(StreamComparison, TellsAnotherProfileOfAacButNotOfOtherCodecs)
{
    const auto compare = [](const char* codecId) {
        const MediaStream source = MakeAudioStream(CH_LAYOUT_STEREO, 48000, codecId);
        SetValue(source, IFormatCodec::TAG_PROFILE, std::string("aac_he"));
        const MediaStream found = MakeAudioStream(CH_LAYOUT_STEREO, 48000, codecId);
        SetValue(found, IFormatCodec::TAG_PROFILE, std::string("aac_low"));
        const ExpectedFile file = ExpectingFile(MakeMediaFile({source}), "matroska");
        return Told(CompareStream(file, file.streams.front(), {found, GoodScan()}));
    };
    EXPECT_THAT(compare("CODEC_ID_AAC"), ElementsAre("profile: wanted aac_he, found aac_low"));
    EXPECT_THAT(compare("CODEC_ID_DTS"), IsEmpty());
}

TEST(StreamComparison, ASubtitleMayHaveNothingToDecode)
{
    const ExpectedFile file = ExpectingFile(MakeMediaFile({MakeSubtitleStream()}), "matroska");
    const MediaStream found = MakeSubtitleStream();
    StreamScan scan = GoodScan();
    scan.frames = 0;
    EXPECT_THAT(CompareStream(file, file.streams.front(), {found, scan}), IsEmpty());
}

TEST(StreamComparison, TellsAnotherPixelFormat)
{
    MediaStream found = MakeVideoStream();
    found.pixelFormat = "yuv422p";
    EXPECT_THAT(Video(found), ElementsAre("pixel format: wanted yuv420p, found yuv422p"));
}

TEST(StreamComparison, TellsAnotherBitrate)
{
    ExpectedFile file = ExpectingFile(MakeMediaFile({MakeVideoStream()}), "mp4");
    file.streams.front().options = {{"maxrate", "100000"}, {"bufsize", "100000"}};
    const MediaStream found = MakeVideoStream();
    EXPECT_THAT(Told(CompareStream(file, file.streams.front(), {found, GoodScan()})),
                ElementsAre("bitrate: wanted at most 121 kb/s, found 200 kb/s"));
}

TEST(StreamComparison, ADifferenceWithoutAPlaceIsASentenceAsWell)
{
    EXPECT_EQ((TargetDifference{{}, "size", "1x1", "2x2"}.Sentence()), "size: wanted 1x1, found 2x2");
}

} // namespace
