#include "Media/Running/BitrateArguments.h"

#include "Conf/Interfaces/BitrateCalculator.h"
#include "Tests/Support/JobFixtures.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

struct Bitrate
{
    CodecOptions options;
    std::vector<std::string> faults;
};

Bitrate BitrateOf(const std::string& encoder, const Core::Property& record)
{
    const AVCodec* const found = avcodec_find_encoder_by_name(encoder.c_str());
    EXPECT_NE(found, nullptr) << encoder;
    FaultList faults;
    CodecOptions options;
    if (found != nullptr)
    {
        options = BitrateOptions(record, *found, Place(), faults);
    }
    return {options, Sentences(faults.Get())};
}

TEST(BitrateArguments, ProposeWhatIsMissing)
{
    const Core::Property record =
        VideoRecord(R"("codec_id":"CODEC_ID_H264","width":640,"height":360,"frameRateRatio":[25,1])");
    EXPECT_EQ(
        BitrateOf("libx264", record).options,
        (CodecOptions{{"b", std::to_string(Conf::GetDefVideoBitrate("CODEC_ID_H264", 640, 360, 25.0))}}));
}

TEST(BitrateArguments, DoNotProposeWithoutAFrame)
{
    const Bitrate outcome = BitrateOf("libx264", VideoRecord(R"("codec_id":"CODEC_ID_H264","width":640)"));
    EXPECT_TRUE(outcome.options.empty());
    EXPECT_EQ(outcome.faults,
              std::vector<std::string>{"bitrate: missing; one can be proposed only for a record with width, "
                                       "height and frameRateRatio"});
}

TEST(BitrateArguments, HoldThePeakWithABufferOfTwoSeconds)
{
    EXPECT_EQ(BitrateOf("libx264", VideoRecord(R"("bitrate":1000,"peakBitrate":1500)")).options,
              (CodecOptions{{"b", "1000"}, {"maxrate", "1500"}, {"bufsize", "2000"}}));
}

TEST(BitrateArguments, OfOpusSayWhetherItVaries)
{
    EXPECT_EQ(BitrateOf("libopus", AudioRecord(R"("bitrate":64000,"bitrate_mode":"VBR")")).options,
              (CodecOptions{{"b", "64000"}, {"vbr", "on"}}));
    EXPECT_EQ(BitrateOf("libopus", AudioRecord(R"("bitrate":64000,"bitrate_mode":"CBR")")).options,
              (CodecOptions{{"b", "64000"}, {"vbr", "off"}}));
}

TEST(BitrateArguments, OfMp3AskForAnAverageWhenItVaries)
{
    EXPECT_EQ(BitrateOf("libmp3lame", AudioRecord(R"("bitrate":64000,"bitrate_mode":"VBR")")).options,
              (CodecOptions{{"b", "64000"}, {"abr", "1"}}));
}

TEST(BitrateArguments, OfVorbisHoldTheBounds)
{
    const CodecOptions options =
        BitrateOf("libvorbis",
                  AudioRecord(R"("codec_id":"CODEC_ID_VORBIS","bitrate":64000,"bitrate_mode":"VBR")"))
            .options;
    ASSERT_EQ(options.size(), 3U);
    EXPECT_EQ(options[1].first, "minrate");
    EXPECT_LT(std::stoll(options[1].second), 64000);
    EXPECT_EQ(options[2].first, "maxrate");
    EXPECT_GT(std::stoll(options[2].second), 64000);
}

TEST(BitrateArguments, OfSoundHaveNoBoundsUnlessTheyVary)
{
    EXPECT_EQ(BitrateOf("libvorbis", AudioRecord(R"("codec_id":"CODEC_ID_VORBIS","bitrate":64000)")).options,
              (CodecOptions{{"b", "64000"}}));
    EXPECT_EQ(BitrateOf("libmp3lame", AudioRecord(R"("bitrate":64000)")).options,
              (CodecOptions{{"b", "64000"}}));
    EXPECT_EQ(
        BitrateOf("aac", AudioRecord(R"("codec_id":"CODEC_ID_AAC","bitrate":64000,"bitrate_mode":"VBR")"))
            .options,
        (CodecOptions{{"b", "64000"}}));
}

TEST(BitrateArguments, OfAnEncoderThatCannotVaryAreAFault)
{
    const Bitrate outcome = BitrateOf("ac3", AudioRecord(R"("bitrate":64000,"bitrate_mode":"VBR")"));
    EXPECT_EQ(outcome.faults,
              std::vector<std::string>{"bitrate_mode: encoder ac3 does not support a variable bitrate"});
}

/// The bitrate that the encoder of a video of that quality is asked for.
std::string VideoBitrateOf(const std::string& mode, int quality)
{
    const Bitrate outcome = BitrateOf(
        "libx264", VideoRecord(R"("codec_id":"CODEC_ID_H264","bitrate":1000000,"width":640,"height":360,)"
                               R"("frameRateRatio":[25,1],"bitrate_mode":")" +
                               mode + R"(","quality":)" + std::to_string(quality)));
    EXPECT_TRUE(outcome.faults.empty());
    return outcome.options.empty() ? "" : outcome.options.front().second;
}

TEST(BitrateArguments, OfAVideoThatVariesFollowItsQuality)
{
    EXPECT_EQ(VideoBitrateOf("VBR", 0), "1000000");
    EXPECT_EQ(VideoBitrateOf("VBR", 1), std::to_string(Conf::NormBitrate(1000000, 1)));
    EXPECT_EQ(VideoBitrateOf("VBR", 31), std::to_string(Conf::NormBitrate(1000000, 31)));
    EXPECT_NE(VideoBitrateOf("VBR", 31), "1000000");
    EXPECT_EQ(VideoBitrateOf("VBR", -1), "1000000");
    EXPECT_EQ(VideoBitrateOf("VBR", Conf::IFormatCodec::MAX_QUALITY),
              std::to_string(Conf::NormBitrate(1000000, 32)));
    EXPECT_EQ(VideoBitrateOf("VBR", Conf::IFormatCodec::MAX_QUALITY + 1), "1000000");
    EXPECT_EQ(VideoBitrateOf("CBR", 31), "1000000");
}

} // namespace
