#include "Media/Planning/EncoderCheck.h"

#include "Media/MediaException.h"

#include "Tests/Support/Expect.h"

#include "Core/Interfaces/PropertySerializer.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

Core::Property Record(const std::string& settings)
{
    rapidjson::Document json;
    json.Parse((R"({"codec":)" + settings + "}").c_str());
    Core::Property record;
    Core::PropertySerializer::Load(record, json);
    return record;
}

/// "key: reason" of each fault.
std::vector<std::string> FaultsOf(const std::string& codec, const std::string& settings)
{
    std::vector<std::string> faults;
    for (const EncoderFault& fault : FindEncoderFaults(Record(settings), *FindEncoder(codec)))
    {
        faults.push_back(fault.key + ": " + fault.reason);
    }
    return faults;
}

using Faults = std::vector<std::string>;

TEST(EncoderCheck, FindsNothingInWhatTheEncoderSupports)
{
    EXPECT_EQ(FaultsOf("CODEC_ID_H264",
                       R"({"PIXELFORMAT":0,"width":1920,"height":1080,"frameRateRatio":[30000,1001]})"),
              Faults());
    EXPECT_EQ(FaultsOf("CODEC_ID_MP3",
                       R"({"sample_format":"SAMPLE_FMT_S16P","sample_rate":44100,"layout":"STEREO"})"),
              Faults());
    EXPECT_EQ(FaultsOf("CODEC_ID_H264", "{}"), Faults());
    EXPECT_EQ(FaultsOf("CODEC_ID_H264", R"({"PIXELFORMAT":-1})"), Faults());
}

TEST(EncoderCheck, FindsEveryFaultOfARecord)
{
    EXPECT_EQ(FaultsOf("CODEC_ID_MPEG2VIDEO",
                       R"({"PIXELFORMAT":28,"width":65536,"height":-1,"frameRateRatio":[7,1]})"),
              (Faults{"PIXELFORMAT: encoder mpeg2video does not support pixel format RGBA",
                      "width: encoder mpeg2video does not support width 65536",
                      "height: encoder mpeg2video does not support height -1",
                      "frameRateRatio: encoder mpeg2video does not support frame rate 7/1"}));
    EXPECT_EQ(FaultsOf("CODEC_ID_MP3",
                       R"({"sample_format":"SAMPLE_FMT_DBL","sample_rate":44101,"layout":"5POINT1"})"),
              (Faults{"sample_format: encoder libmp3lame does not support sample format SAMPLE_FMT_DBL",
                      "layout: encoder libmp3lame does not support channel layout 5POINT1",
                      "sample_rate: encoder libmp3lame does not support sample rate 44101"}));
}

TEST(EncoderCheck, DoesNotCutNumbersToThirtyTwoBits)
{
    EXPECT_EQ(FaultsOf("CODEC_ID_H264", R"({"PIXELFORMAT":4294967296,"width":4294967456})"),
              (Faults{"PIXELFORMAT: encoder libx264 does not support pixel format number 4294967296",
                      "width: encoder libx264 does not support width 4294967456"}));
    EXPECT_EQ(FaultsOf("CODEC_ID_MP3", R"({"sample_rate":4295011396})"),
              Faults{"sample_rate: encoder libmp3lame does not support sample rate 4295011396"});
    EXPECT_EQ(FaultsOf("CODEC_ID_H264", R"({"frameRateRatio":[9223372036854775807,9223372036854775806]})"),
              Faults{"frameRateRatio: encoder libx264 does not support frame rate "
                     "9223372036854775807/9223372036854775806"});
}

TEST(EncoderCheck, FindsValuesOfAnotherType)
{
    EXPECT_EQ(
        FaultsOf("CODEC_ID_H264", R"({"PIXELFORMAT":"RGBA","width":null,"frameRateRatio":25})"),
        (Faults{"PIXELFORMAT: expected an integer, found 'RGBA'", "width: expected an integer, found null",
                "frameRateRatio: expected a rational, found 25"}));
    EXPECT_EQ(FaultsOf("CODEC_ID_MP3", R"({"sample_format":{},"layout":"Stereo","sample_rate":[1,2]})"),
              (Faults{"sample_format: expected a string, found a group",
                      "layout: expected a channel layout, found 'Stereo'",
                      "sample_rate: expected an integer, found 1/2"}));
}

TEST(EncoderCheck, RefusesWithThePlaceOfTheFirstFault)
{
    Place place{"in.mkv"};
    place.streamKind = "video";
    place.stream = 0;
    const Thrown thrown = ExpectThrow<PlanException>([&] {
        RequireAccepted(Record(R"({"PIXELFORMAT":28})"), *FindEncoder("CODEC_ID_H264"), place.At("p.video"));
    });
    EXPECT_EQ(thrown.description, "in.mkv: video stream 0, p.video.PIXELFORMAT: encoder libx264 does not "
                                  "support pixel format RGBA");
    EXPECT_EQ(thrown.Get<MediaException::TagKey>(), "p.video.PIXELFORMAT");
}

TEST(EncoderCheck, FindsPixelsThatTheEncoderDoesNotHaveOrThatContradictTheNumber)
{
    EXPECT_EQ(FaultsOf("CODEC_ID_H264", R"({"pixelFormat":"yuv422p"})"), Faults());
    EXPECT_EQ(FaultsOf("CODEC_ID_H264", R"({"pixelFormat":"yuv420p","PIXELFORMAT":0})"), Faults());
    EXPECT_EQ(FaultsOf("CODEC_ID_H264", R"({"pixelFormat":"yuv422p","PIXELFORMAT":0})"),
              Faults{"pixelFormat: PIXELFORMAT asks for another pixel format"});
    EXPECT_EQ(FaultsOf("CODEC_ID_H264", R"({"pixelFormat":"yuv422p","PIXELFORMAT":"x"})"),
              Faults{"PIXELFORMAT: expected an integer, found 'x'"});
    EXPECT_EQ(FaultsOf("CODEC_ID_H264", R"({"pixelFormat":"rgba64le"})"),
              Faults{"pixelFormat: encoder libx264 does not support pixel format rgba64le"});
    EXPECT_EQ(FaultsOf("CODEC_ID_H264", R"({"pixelFormat":"no format"})"),
              Faults{"pixelFormat: encoder libx264 does not support pixel format no format"});
}

TEST(EncoderCheck, FindsFieldsThatTheEncoderDoesNotCode)
{
    EXPECT_EQ(FaultsOf("CODEC_ID_H264", R"({"deinterlace":"keep"})"), Faults());
    EXPECT_EQ(FaultsOf("CODEC_ID_VP8", R"({"deinterlace":"25p"})"), Faults());
    EXPECT_EQ(FaultsOf("CODEC_ID_VP8", R"({"deinterlace":"keep"})"),
              Faults{"deinterlace: encoder libvpx does not support interlaced video"});
    EXPECT_EQ(FaultsOf("CODEC_ID_VP8", R"({"deinterlace":1})"),
              Faults{"deinterlace: expected a string, found 1"});
}

TEST(EncoderCheck, FindsRatesThatAreNotPositive)
{
    EXPECT_EQ(FaultsOf("CODEC_ID_H264", R"({"frameRateRatio":[0,1]})"),
              Faults{"frameRateRatio: encoder libx264 does not support frame rate 0/1"});
    EXPECT_EQ(FaultsOf("CODEC_ID_H264", R"({"frameRateRatio":[-25,1]})"),
              Faults{"frameRateRatio: encoder libx264 does not support frame rate -25/1"});
    EXPECT_EQ(FaultsOf("CODEC_ID_FLAC", R"({"sample_rate":0})"),
              Faults{"sample_rate: encoder flac does not support sample rate 0"});
}

TEST(EncoderCheck, SubtitlesHaveNothingToCheck)
{
    EXPECT_EQ(FaultsOf("CODEC_ID_SUBRIP", R"({"width":-1,"sample_rate":-1})"), Faults());
}

} // namespace
