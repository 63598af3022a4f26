#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>

#include <rapidjson/document.h>

namespace
{

using namespace Zelnor::Testing;
using testing::HasSubstr;
using testing::Not;

class ExplainCommand : public ZconfTest
{};

TEST_F(ExplainCommand, TellsEverythingThatGoesByAName)
{
    const ProcessResult result = Zconf({"explain", "flac"});
    ExpectQuietSuccess(result);
    EXPECT_THAT(result.output, HasSubstr("CODEC_ID_FLAC: audio codec\n"
                                         "  ffmpeg               AV_CODEC_ID_FLAC\n"));
    EXPECT_THAT(result.output, HasSubstr("  bitrate required     no\n"
                                         "\n"
                                         "flac: container\n"
                                         "  ffmpeg muxer       raw FLAC\n"
                                         "  ffmpeg demuxer     raw FLAC\n"
                                         "  default extension  flac\n"
                                         "  lists              formats, audio containers\n"));
}

TEST_F(ExplainCommand, TakesANameWithItsPrefixOrWithoutInWhateverLetterCase)
{
    const std::string expected = Zconf({"explain", "CODEC_ID_MPEG2TS"}).output;
    EXPECT_THAT(expected, HasSubstr("CODEC_ID_MPEG2TS: other codec\n"));
    EXPECT_THAT(expected, HasSubstr("mpeg2ts: container\n"));
    for (const char* const name : {"mpeg2ts", "MPEG2TS", "codec_id_mpeg2ts", "AV_CODEC_ID_MPEG2TS"})
    {
        EXPECT_EQ(Zconf({"explain", name}).output, expected) << name;
    }
}

TEST_F(ExplainCommand, TellsWhichListsAndAcceleratorsHaveACodec)
{
    const ProcessResult result = Zconf({"explain", "CODEC_ID_H264"});
    ExpectQuietSuccess(result);
    EXPECT_THAT(result.output, HasSubstr("  lists                 external decoders, external encoders\n"));
    EXPECT_THAT(result.output, HasSubstr("  accelerated encoders  nvenc ENCODER_NVENC_H264, cuda "
                                         "ENCODER_CUDA_H264, im-hw ENCODER_IM_HW_H264, im-sw "
                                         "ENCODER_IM_SW_H264\n"));
    EXPECT_THAT(result.output, HasSubstr("  accelerated decoders  cuda DECODER_CUDA_H264, im-hw "
                                         "DECODER_IM_HW_H264, im-sw DECODER_IM_SW_H264\n"));
    EXPECT_THAT(result.output, Not(HasSubstr("bitrate required")));
}

TEST_F(ExplainCommand, TellsThatACodecIsInNoTable)
{
    const ProcessResult result = Zconf({"explain", "8svx_raw"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "CODEC_ID_8SVX_RAW: audio codec\n"
                             "  in the codec tables  no\n");
}

TEST_F(ExplainCommand, TellsThePlaneSizesOfAPixelFormat)
{
    const ProcessResult result = Zconf({"explain", "yuv420p", "--size", "1921x1081"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "YUV420P: pixel format\n"
                             "  value              0\n"
                             "  ffmpeg             yuv420p\n"
                             "  components         3\n"
                             "  flags              yuv, planar\n"
                             "  colour range       limited\n"
                             "  chroma divided by  2x2\n"
                             "  planes             1921x1081, 961x541, 961x541\n");
    rapidjson::Document document;
    document.Parse(Zconf({"explain", "yuv420p", "--size", "1921x1081", "--json"}).output.c_str());
    ASSERT_TRUE(document.IsArray());
    ASSERT_EQ(document[0]["planes"].Size(), 3U);
    EXPECT_EQ(document[0]["planes"][1][0].GetInt(), 961);
    EXPECT_EQ(document[0]["planes"][1][1].GetInt(), 541);
}

TEST_F(ExplainCommand, TellsFFmpegsNamesOfFormatsAndLayouts)
{
    const std::pair<const char*, const char*> names[] = {
        {"GRAY8", "gray"},
        {"0RGB", "0rgb"},
        {"5POINT1", "5.1(side)"},
        {"5POINT1_BACK", "5.1"},
        {"STEREO", "stereo"},
        {"SAMPLE_FMT_FLTP", "fltp"},
        {"STEREO_DOWNMIX", "downmix"},
    };
    for (const auto& [name, ffmpegName] : names)
    {
        rapidjson::Document document;
        document.Parse(Zconf({"explain", name, "--json"}).output.c_str());
        ASSERT_TRUE(document.IsArray() && document.Size() == 1U) << name;
        EXPECT_STREQ(document[0]["ffmpeg"].GetString(), ffmpegName);
    }
}

TEST_F(ExplainCommand, ExplainsASampleFormatAndALayout)
{
    EXPECT_EQ(Zconf({"explain", "S16P"}).output, "SAMPLE_FMT_S16P: sample format\n"
                                                 "  value        6\n"
                                                 "  ffmpeg       s16p\n"
                                                 "  bits         16\n"
                                                 "  planar       yes\n"
                                                 "  counterpart  SAMPLE_FMT_S16\n");
    EXPECT_EQ(Zconf({"explain", "QUAD"}).output, "QUAD: channel layout\n"
                                                 "  value     10\n"
                                                 "  ffmpeg    quad\n"
                                                 "  channels  4\n");
}

TEST_F(ExplainCommand, SuggestsTheNearestOfTheKnownNames)
{
    const ProcessResult result = Zconf({"explain", "CODEC_ID_H246"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.messages, HasSubstr("'CODEC_ID_H246' is no known name; did you mean "));
    EXPECT_THAT(result.messages, HasSubstr("'CODEC_ID_H26"));
    ExpectFailure(Zconf({"explain", "matrosca"}), "'matrosca' is no known name; did you mean 'matroska'?");
    ExpectFailure(Zconf({"explain", "qqqqqqqqqq"}), "'qqqqqqqqqq' is no known name");
    ExpectFailure(Zconf({"explain", ""}), "'' is no known name");
}

TEST_F(ExplainCommand, RefusesASizeThatIsNone)
{
    for (const char* const size :
         {"1920", "1920x", "x1080", "0x1", "-2x2", "2x2x2", "1e3x2", "99999999999x2"})
    {
        ExpectFailure(Zconf({"explain", "nv12", "--size", size}),
                      std::string("'") + size + "' is no size: expected WIDTHxHEIGHT, such as 1920x1080");
    }
}

} // namespace
