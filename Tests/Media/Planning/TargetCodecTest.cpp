#include "Media/Planning/TargetCodec.h"

#include "Media/MediaException.h"
#include "Media/Planning/JobPlan.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/MediaFixtures.h"

#include "Conf/Interfaces/PixelFormatDescription.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Core::Property;
using testing::ElementsAre;
using testing::IsEmpty;

/// A job that converts the stream with these settings of its codec.
PlannedJob PlanOne(const MediaStream& source, const std::string& settings,
                   const std::string& container = "matroska")
{
    JobRequest request;
    request.output = "out";
    const std::string kind = source.kind == StreamKind::Video ? "video" : "audio";
    return PlanJob(MakeMediaFile({source}), MakePreset(container, "{\"" + kind + "\":{" + settings + "}}"),
                   request);
}

Property PlannedRecord(const MediaStream& source, const std::string& settings,
                       const std::string& container = "matroska")
{
    return PlanOne(source, settings, container).graph->GetLink(3, 2);
}

std::string RateOfRecord(const Property& record)
{
    const Property::Ratio& rate = record[IFormatCodecVideo::TAG_FPS].GetRatio();
    return std::to_string(rate.numerator()) + "/" + std::to_string(rate.denominator());
}

const std::string kH264 = R"("codec_id":"CODEC_ID_H264")";
const std::string kMpeg4Video = R"("codec_id":"CODEC_ID_MPEG4")";

TEST(TargetCodec, OfAVideoOfUnknownPixelsHasTheUsualOnes)
{
    const MediaStream source = MakeVideoStream();
    RemoveValue(source, Conf::TAG_PIX_FMT);
    EXPECT_EQ(PlannedRecord(source, kH264)[Conf::TAG_PIX_FMT].GetInt64(), PIX_FMT_YUV420P);
}

TEST(TargetCodec, OfAProfileThatEveryPlayerDecodesHasTheUsualPixels)
{
    const MediaStream source = MakeVideoStream();
    SetValue(source, Conf::TAG_PIX_FMT, static_cast<long long>(PIX_FMT_YUV444P));
    for (const std::string profile : {"baseline", "main", "high"})
    {
        EXPECT_EQ(
            PlannedRecord(source, kH264 + R"(,"profile":")" + profile + '"')[Conf::TAG_PIX_FMT].GetInt64(),
            PIX_FMT_YUV420P)
            << profile;
    }
    EXPECT_EQ(PlannedRecord(source, kH264)[Conf::TAG_PIX_FMT].GetInt64(), PIX_FMT_YUV444P);
}

TEST(TargetCodec, OfAVideoOfUnknownRateHasTheUsualOne)
{
    const MediaStream source = MakeVideoStream();
    RemoveValue(source, IFormatCodecVideo::TAG_FPS);
    EXPECT_EQ(RateOfRecord(PlannedRecord(source, kH264)), "25/1");
}

TEST(TargetCodec, OfAVideoOfUnknownSizeIsRefused)
{
    MediaStream source = MakeVideoStream();
    RemoveValue(source, IFormatCodecVideo::TAG_WIDTH);
    EXPECT_EQ(ExpectThrow<PlanException>([&] { PlannedRecord(source, kH264); }).description,
              "in.mkv: video stream 0: its size is not known");
}

/// Television of 50 fields a second.
MediaStream Interlaced()
{
    MediaStream source = MakeVideoStream(720, 576, "CODEC_ID_MPEG2VIDEO");
    source.isInterlaced = true;
    return source;
}

TEST(TargetCodec, OfAnInterlacedVideoIsProgressiveWhereItIsNotMadeForTelevision)
{
    const auto deinterlacing = [](const std::string& settings, const std::string& container) {
        return PlannedRecord(Interlaced(), settings, container)["deinterlace"].GetString();
    };
    EXPECT_EQ(deinterlacing(kH264, "mp4"), "25p");
    EXPECT_EQ(deinterlacing(kH264 + R"(,"frameRateRatio":[50,1])", "mp4"), "50p");
    EXPECT_EQ(deinterlacing(R"("codec_id":"CODEC_ID_DVVIDEO")", "avi"), "keep");
    EXPECT_EQ(deinterlacing(R"("codec_id":"CODEC_ID_MPEG2VIDEO")", "mpegts"), "25p");
}

TEST(TargetCodec, OfAFrameForEachFieldHasTwiceTheRate)
{
    EXPECT_EQ(RateOfRecord(PlannedRecord(Interlaced(), kH264 + R"(,"deinterlace":"50p")", "mp4")), "50/1");
    EXPECT_EQ(RateOfRecord(PlannedRecord(MakeVideoStream(), kH264 + R"(,"deinterlace":"50p")", "mp4")),
              "25/1");
}

TEST(TargetCodec, RaisesABitrateThatIsTooLittleUnlessThePresetSetsTheSize)
{
    MediaStream source = MakeVideoStream(1920, 1080);
    SetValue(source, IFormatCodecVideo::TAG_FPS, Property::Ratio(30000, 1001));
    const auto bitrate = [&source](const std::string& more) {
        return PlannedRecord(source, kMpeg4Video + R"(,"bitrate":1000)" + more)[IFormatCodec::TAG_BITRATE]
            .GetInt64();
    };
    const PlannedJob raised = PlanOne(source, kMpeg4Video + R"(,"bitrate":1000)");
    const long long least = raised.graph->GetLink(3, 2)[IFormatCodec::TAG_BITRATE].GetInt64();
    EXPECT_GT(least, 1000);
    EXPECT_THAT(raised.notes, ElementsAre("Stream 0 gets " + std::to_string(least) +
                                          " bit/s instead of 1000, which is too little for 1920x1080 at "
                                          "30000/1001 frames per second"));
    EXPECT_EQ(bitrate(R"(,"width":1920,"height":1080)"), 1000);
    EXPECT_EQ(bitrate(R"(,"height":1080)"), 1000);
}

TEST(TargetCodec, OfSoundWithoutRateOrSamplesHasTheUsualOnes)
{
    const MediaStream source = MakeAudioStream();
    RemoveValue(source, IFormatCodecAudio::TAG_SAMPLE_RATE);
    RemoveValue(source, IFormatCodecAudio::TAG_SAMPLE_FORMAT);
    const Property record = PlannedRecord(source, R"("codec_id":"CODEC_ID_AAC")");
    EXPECT_EQ(record[IFormatCodecAudio::TAG_SAMPLE_RATE].GetInt64(), 48000);
    EXPECT_EQ(record[IFormatCodecAudio::TAG_SAMPLE_FORMAT].GetString(), "SAMPLE_FMT_FLTP");
}

TEST(TargetCodec, OfACodecThatFFmpegDoesNotKnowHasItsSamples)
{
    MediaStream source = MakeAudioStream(Conf::CH_LAYOUT_STEREO, 48000, "CODEC_ID_AAC", Conf::SAMPLE_FMT_S16);
    source.codec = "none of FFmpeg's";
    EXPECT_EQ(
        PlannedRecord(source, R"("codec_id":"CODEC_ID_FLAC")", "flac")[IFormatCodecAudio::TAG_SAMPLE_FORMAT]
            .GetString(),
        "SAMPLE_FMT_S16");
}

TEST(TargetCodec, KeepsTheTitleAndTheLanguageUnlessThePresetSetsThem)
{
    const MediaStream source = MakeAudioStream();
    SetTag(*source.descriptor, "language", "deu");
    SetTag(*source.descriptor, "title", "Commentary");
    const std::string aac = R"("codec_id":"CODEC_ID_AAC")";
    EXPECT_EQ(PlannedRecord(source, aac)["metadata"]["language"].GetString(), "deu");
    EXPECT_EQ(PlannedRecord(source, aac)["metadata"]["title"].GetString(), "Commentary");
    const Property record =
        PlannedRecord(source, aac + R"(,"language":"fra","metadata":{"title":"Another"})");
    EXPECT_EQ(record["metadata"]["language"].GetString(), "fra");
    EXPECT_EQ(record["metadata"]["title"].GetString(), "Another");
}

} // namespace
