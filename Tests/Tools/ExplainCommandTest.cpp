#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>

#include <rapidjson/document.h>

extern "C" {
#include <libavcodec/codec_id.h>
}

namespace
{

using namespace Zelnor::Testing;

class ExplainCommand : public ZconfTest
{};

/// Codec IDs differ between versions of FFmpeg.
std::string Text(AVCodecID id) { return std::to_string(static_cast<int>(id)); }

TEST_F(ExplainCommand, DescribesEverythingWithThatName)
{
    const ProcessResult result = Zconf({"explain", "flac"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "CODEC_ID_FLAC: audio codec\n"
                             "  ffmpeg               AV_CODEC_ID_FLAC\n"
                             "  number               " +
                                 Text(AV_CODEC_ID_FLAC) +
                                 "\n"
                                 "  in the codec tables  yes\n"
                                 "  bitrate required     no\n"
                                 "\n"
                                 "flac: container\n"
                                 "  ffmpeg muxer       raw FLAC\n"
                                 "  ffmpeg demuxer     raw FLAC\n"
                                 "  default extension  flac\n"
                                 "  lists              formats, audio containers\n");
}

TEST_F(ExplainCommand, AcceptsANameWithOrWithoutItsPrefixIgnoringCase)
{
    const std::string expected = Zconf({"explain", "CODEC_ID_MPEG2TS"}).output;
    EXPECT_EQ(expected, "CODEC_ID_MPEG2TS: other codec\n"
                        "  ffmpeg               AV_CODEC_ID_MPEG2TS\n"
                        "  number               " +
                            Text(AV_CODEC_ID_MPEG2TS) +
                            "\n"
                            "  in the codec tables  yes\n"
                            "\n"
                            "mpeg2ts: container\n"
                            "  default extension  m2ts\n"
                            "  lists              formats\n");
    for (const char* const name : {"mpeg2ts", "MPEG2TS", "codec_id_mpeg2ts", "AV_CODEC_ID_MPEG2TS"})
    {
        EXPECT_EQ(Zconf({"explain", name}).output, expected) << name;
    }
}

TEST_F(ExplainCommand, ShowsWhichListsAndAcceleratorsHaveACodec)
{
    const ProcessResult result = Zconf({"explain", "CODEC_ID_H264"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "CODEC_ID_H264: video codec\n"
                             "  ffmpeg                AV_CODEC_ID_H264\n"
                             "  number                " +
                                 Text(AV_CODEC_ID_H264) +
                                 "\n"
                                 "  in the codec tables   yes\n"
                                 "  lists                 external decoders, external encoders\n"
                                 "  accelerated encoders  nvenc ENCODER_NVENC_H264, cuda ENCODER_CUDA_H264, "
                                 "im-hw ENCODER_IM_HW_H264, im-sw ENCODER_IM_SW_H264\n"
                                 "  accelerated decoders  cuda DECODER_CUDA_H264, im-hw DECODER_IM_HW_H264, "
                                 "im-sw DECODER_IM_SW_H264\n"
                                 "\n"
                                 "h264: container\n"
                                 "  ffmpeg muxer    raw H.264 video\n"
                                 "  ffmpeg demuxer  raw H.264 video\n"
                                 "  lists           formats\n");
}

TEST_F(ExplainCommand, ShowsThatACodecIsInNoTable)
{
    const ProcessResult result = Zconf({"explain", "8svx_raw"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "CODEC_ID_8SVX_RAW: audio codec\n"
                             "  in the codec tables  no\n");
}

TEST_F(ExplainCommand, ShowsThePlaneSizesOfAPixelFormat)
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

TEST_F(ExplainCommand, ShowsFFmpegsNamesOfFormatsAndLayouts)
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
    ExpectFailure(Zconf({"explain", "CODEC_ID_H246"}),
                  "'CODEC_ID_H246' is not a known name; did you mean 'CODEC_ID_H264' or 'h264' or "
                  "'CODEC_ID_H261'?");
    ExpectFailure(Zconf({"explain", "matrosca"}), "'matrosca' is not a known name; did you mean 'matroska'?");
    ExpectFailure(Zconf({"explain", "qqqqqqqqqq"}), "'qqqqqqqqqq' is not a known name");
    ExpectFailure(Zconf({"explain", ""}), "'' is not a known name");
}

TEST_F(ExplainCommand, RefusesWhatIsNotASize)
{
    for (const char* const size :
         {"1920", "1920x", "x1080", "0x1", "-2x2", "2x2x2", "1e3x2", "99999999999x2"})
    {
        ExpectFailure(Zconf({"explain", "nv12", "--size", size}),
                      std::string("'") + size +
                          "' is not a frame size: expected WIDTHxHEIGHT, such as 1920x1080");
    }
}

TEST_F(ExplainCommand, TellsWhyAContainerCannotHoldACodec)
{
    const ProcessResult result = Zconf({"explain", "--container", "webm", "--codec", "h264"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.messages, "");
    EXPECT_THAT(result.output,
                testing::HasSubstr("The container webm cannot hold CODEC_ID_H264. It holds CODEC_ID_VP9"));
}

TEST_F(ExplainCommand, AnswersForScriptsWhatAContainerCanHold)
{
    const ProcessResult result =
        Zconf({"explain", "--container", "MP4", "--codec", "CODEC_ID_AAC", "--json"});
    ExpectQuietSuccess(result);
    EXPECT_THAT(result.output,
                testing::StartsWith("{\n  \"container\": \"mp4\",\n  \"codec\": \"CODEC_ID_AAC\",\n"
                                    "  \"held\": \"yes\",\n"));
    EXPECT_THAT(result.output, testing::HasSubstr("\"reasons\": []"));
}

TEST_F(ExplainCommand, WantsANameOrBothOfTheOthers)
{
    const std::string sentence = "expected a NAME, or --container and --codec (see zconf explain --help)";
    ExpectFailure(Zconf({"explain"}), sentence);
    ExpectFailure(Zconf({"explain", "--codec", "h264"}), sentence);
    ExpectFailure(Zconf({"explain", "mp4", "--container", "mp4", "--codec", "h264"}), sentence);
    ExpectFailure(Zconf({"explain", "--container", "mp99", "--codec", "h264"}),
                  "'mp99' is not a known container; did you mean 'mp2' or 'mp3' or 'mp4'?");
}

} // namespace
