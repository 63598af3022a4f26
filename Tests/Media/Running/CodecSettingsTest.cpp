#include "Media/Running/CodecSettings.h"

#include "Tests/Support/JobFixtures.h"

#include <gtest/gtest.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

Place LinkPlace()
{
    Place place{"job.json"};
    place.link = {3, 2};
    place.streamKind = "video";
    place.stream = 0;
    return place;
}

/// What is wrong with a record of these settings.
std::vector<std::string> FaultsIn(const std::string& settings, bool isCopied = false)
{
    FaultList faults;
    CheckSettings(VideoRecord(settings), isCopied, LinkPlace(), faults);
    return Sentences(faults.Get());
}

void ExpectFault(const std::string& settings, const std::string& keyAndReason)
{
    SCOPED_TRACE(settings);
    EXPECT_EQ(FaultsIn(settings), std::vector<std::string>{"link 3 -> 2, video stream 0" + keyAndReason});
}

TEST(CodecSettings, ThatAreRightAreGivenBack)
{
    FaultList faults;
    const Core::Property record = VideoRecord(
        R"("codec_id":"CODEC_ID_H264","width":640,"height":360,"aspect_x":1,"aspect_y":1,"PIXELFORMAT":-1,)"
        R"("frameRateRatio":[30000,1001],"bitrate":1,"two_pass_encoding":"one_pass","metadata":{"a":"b","c":null},)"
        R"("codec.options.encode":{"x":1,"y":"z","r":[1,2]},"number_of_threads":"auto")");
    EXPECT_EQ(CheckSettings(record, false, LinkPlace(), faults), record);
    EXPECT_EQ(faults.Count(), 0U);
}

TEST(CodecSettings, ThatAreWrongAreLeftOut)
{
    FaultList faults;
    const Core::Property good =
        CheckSettings(VideoRecord(R"("bitrate":-1,"odd":1,"quality":5)"), false, LinkPlace(), faults);
    EXPECT_EQ(good, VideoRecord(R"("quality":5)"));
    EXPECT_EQ(faults.Count(), 2U);
}

TEST(CodecSettings, OfUnknownKeysAreFaults) { ExpectFault(R"("odd":1)", ": unknown setting 'odd'"); }

TEST(CodecSettings, ThatAppearTwiceAreFaults)
{
    FaultList faults;
    Core::Property record("format_codec_video");
    record.Add(Core::Property("quality", 1LL));
    record.Add(Core::Property("quality", 2LL));
    EXPECT_EQ(CheckSettings(record, false, LinkPlace(), faults), VideoRecord(R"("quality":1)"));
    EXPECT_EQ(Sentences(faults.Get()),
              std::vector<std::string>{"link 3 -> 2, video stream 0, quality: appears more than once"});
}

TEST(CodecSettings, OfAnotherKindAreFaults)
{
    ExpectFault(R"("bitrate":"fast")", ", bitrate: expected an integer from 1 to 2147483647, found 'fast'");
    ExpectFault(R"("profile":{"x":1})", ", profile: expected a string, found a group");
    ExpectFault(R"("profile":null)", ", profile: expected a string, found null");
    ExpectFault(R"("quality":[1,2])", ", quality: expected an integer from 0 to 32, found 1/2");
    ExpectFault(R"("metadata":5)", ", metadata: expected a group, found 5");
    ExpectFault(R"("language":5)", ", language: expected a string, found 5");
    ExpectFault(R"("codec_id":5)", ", codec_id: expected a string, found 5");
    ExpectFault(R"("lossless":"yes")", ", lossless: expected an integer, found 'yes'");
    ExpectFault(R"("preferred_encoder":1)", ", preferred_encoder: expected a string, found 1");
    ExpectFault(R"("frameRateRatio":25)",
                ", frameRateRatio: expected a positive rational as 30000/1001, found 25");
    ExpectFault(R"("codec.options.encode":"crf=1")",
                ", codec.options.encode: expected a group, found 'crf=1'");
    ExpectFault(R"("codec.options.encode":{"crf":{}})",
                ", codec.options.encode.crf: expected an integer, a string or a rational, found a group");
    ExpectFault(R"("codec.options.analyze":{"skip":[1,2]})",
                ", codec.options.analyze.skip: expected an integer or a string, found 1/2");
    ExpectFault(R"("keyOnly":"1")", ", keyOnly: expected an integer, found '1'");
}

TEST(CodecSettings, CountsMayBeLeftToTheEncoderAsNumbersAndAsTexts)
{
    EXPECT_TRUE(FaultsIn(R"("dpi":-1)").empty());
    EXPECT_TRUE(FaultsIn(R"("dpi":"-1")").empty());
    ExpectFault(R"("dpi":-2)", ", dpi: expected a number from -1 on, found -2");
    ExpectFault(R"("dpi":"-2")", ", dpi: expected a number from -1 on, found '-2'");
}

TEST(CodecSettings, OutOfRangeAreFaults)
{
    ExpectFault(R"("bitrate":0)", ", bitrate: expected an integer from 1 to 2147483647, found 0");
    ExpectFault(R"("bitrate":9223372036854775807)",
                ", bitrate: expected an integer from 1 to 2147483647, found 9223372036854775807");
    ExpectFault(R"("bitrate_mode":"ABR")",
                ", bitrate_mode: expected CBR, CBR_AUTO or VBR, found 'ABR'; did you mean 'CBR' or 'VBR'?");
    ExpectFault(R"("frameRateRatio":[0,1])",
                ", frameRateRatio: expected a positive rational as 30000/1001, found 0/1");
    ExpectFault(R"("frameRateRatio":[-25,1])",
                ", frameRateRatio: expected a positive rational as 30000/1001, found -25/1");
    ExpectFault(R"("frameRateRatio":[4294967296,1])",
                ", frameRateRatio: expected a positive rational as 30000/1001, found 4294967296/1");
    ExpectFault(R"("frameRateRatio":[1,2147483648])",
                ", frameRateRatio: expected a positive rational as 30000/1001, found 1/2147483648");
    ExpectFault(R"("PIXELFORMAT":1)", ", PIXELFORMAT: expected the number of a pixel format, found 1");
    // Cut to 32 bits it would be 0, that of YUV420P.
    ExpectFault(R"("PIXELFORMAT":4294967296)",
                ", PIXELFORMAT: expected the number of a pixel format, found 4294967296");
    ExpectFault(R"("two_pass_encoding":"three_pass")",
                ", two_pass_encoding: expected an integer, one_pass or two_pass, found 'three_pass'");
    ExpectFault(R"("sample_rate":-48000)",
                ", sample_rate: expected an integer from 1 to 2147483647, found -48000");
    ExpectFault(R"("sample_format":"S16")",
                ", sample_format: expected a sample format as SAMPLE_FMT_S16, found 'S16'; did you mean "
                "'SAMPLE_FMT_S16' or 'SAMPLE_FMT_S16P'?");
    ExpectFault(R"("sample_format":"SAMPLE_FMT_NONE")",
                ", sample_format: expected a sample format as SAMPLE_FMT_S16, found 'SAMPLE_FMT_NONE'");
    ExpectFault(R"("layout":"stereo")", ", layout: expected a channel layout as STEREO, found 'stereo'; did "
                                        "you mean 'STEREO' or 'STEREO_DOWNMIX'?");
    ExpectFault(R"("number_of_threads":-1)",
                ", number_of_threads: expected an integer from 0 to 2147483647, or auto, found -1");
}

TEST(CodecSettings, OfTheGeometryAreInRangeAndTogether)
{
    const auto geometry = [](const std::string& width, const std::string& height, const std::string& x,
                             const std::string& y) {
        return R"("width":)" + width + R"(,"height":)" + height + R"(,"aspect_x":)" + x + R"(,"aspect_y":)" +
               y;
    };
    ExpectFault(geometry("-640", "360", "1", "1"),
                ", width: expected an integer from 1 to 65535, found -640");
    ExpectFault(geometry("4294967456", "360", "1", "1"),
                ", width: expected an integer from 1 to 65535, found 4294967456");
    ExpectFault(geometry("640", "0", "1", "1"), ", height: expected an integer from 1 to 65535, found 0");
    ExpectFault(geometry("640", "360", "-1", "1"),
                ", aspect_x: expected an integer from 0 to 4294967295, found -1");
    ExpectFault(geometry("640", "360", "1", "0"),
                ", aspect_y: expected an integer from 1 to 4294967295, found 0");
    EXPECT_EQ(FaultsIn(geometry("640", "360", "0", "1")), std::vector<std::string>());
    ExpectFault(R"("width":640,"height":360,"aspect_x":1)",
                ", aspect_y: missing; width, height, aspect_x and aspect_y are used together");
}

TEST(CodecSettings, WithANulByteAreFaults)
{
    const std::string reason = ": a text with a NUL byte cannot be given to ffmpeg";
    ExpectFault(R"("profile":"high\u0000er")", ", profile" + reason);
    ExpectFault(R"("metadata":{"title":"a\u0000b"})", ", metadata.title" + reason);
    ExpectFault(R"("metadata":{"a\u0000":"b"})", std::string(", metadata.a\0", 13) + reason);
    ExpectFault(R"("codec.options.encode":{"x":"\u0000"})", ", codec.options.encode.x" + reason);
}

TEST(CodecSettings, OfAStreamThatIsCopiedCountOnlyWhereTheyAreUsed)
{
    EXPECT_EQ(FaultsIn(R"("width":0,"odd":1,"bitrate":0)", true), std::vector<std::string>());
    EXPECT_EQ(FaultsIn(R"("language":5)", true),
              std::vector<std::string>{"link 3 -> 2, video stream 0, language: expected a string, found 5"});
}

TEST(CodecSettings, EveryReasonIsGiven)
{
    EXPECT_EQ(FaultsIn(R"("odd":1,"bitrate":0,"profile":1)").size(), 3U);
}

TEST(CodecSettings, MetadataIsAGroup)
{
    FaultList faults;
    const Core::Property record = VideoRecord(R"("metadata":5)");
    EXPECT_EQ(CheckMetadata(record, LinkPlace(), faults).Count(), 0U);
    EXPECT_EQ(Sentences(faults.Get()),
              std::vector<std::string>{"link 3 -> 2, video stream 0, metadata: expected a group, found 5"});
}

} // namespace
