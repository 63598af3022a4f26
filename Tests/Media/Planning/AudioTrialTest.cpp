#include "Media/Planning/AudioTrial.h"

#include "Media/Planning/EncoderCapabilities.h"
#include "Tests/Support/JobFixtures.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;

std::optional<long long> MeasuredBitrate(const std::string& codecId, const std::string& layout,
                                         long long bitrate, const std::string& format)
{
    return MeasureBitrate(*FindEncoder(codecId),
                          AudioRecord(R"("codec_id":")" + codecId + R"(","bitrate":)" +
                                      std::to_string(bitrate) + R"(,"sample_rate":48000,"layout":")" +
                                      layout + R"(","sample_format":")" + format + '"'));
}

TEST(AudioTrial, MeasuresTheBitrateThatAnEncoderKeeps)
{
    // Packets of whole frames: a little more or less for a quarter of a second.
    EXPECT_NEAR(
        static_cast<double>(MeasuredBitrate("CODEC_ID_MP2", "STEREO", 192000, "SAMPLE_FMT_S16").value_or(0)),
        192000, 9600);
    EXPECT_NEAR(
        static_cast<double>(MeasuredBitrate("CODEC_ID_AC3", "STEREO", 192000, "SAMPLE_FMT_FLTP").value_or(0)),
        192000, 9600);
}

TEST(AudioTrial, MeasuresPlainSamplesOfAnyKindExactly)
{
    EXPECT_EQ(MeasuredBitrate("CODEC_ID_PCM_S16LE", "MONO", 0, "SAMPLE_FMT_S16"), 768000);
    EXPECT_EQ(MeasuredBitrate("CODEC_ID_PCM_F32LE", "STEREO", 0, "SAMPLE_FMT_FLT"), 3072000);
    EXPECT_EQ(MeasuredBitrate("CODEC_ID_PCM_F64LE", "STEREO", 0, "SAMPLE_FMT_DBL"), 6144000);
}

TEST(AudioTrial, MeasuresNothingWhereTheEncoderDoesNotStart)
{
    EXPECT_EQ(MeasuredBitrate("CODEC_ID_AC3", "STEREO", 192000, "SAMPLE_FMT_S16"), std::nullopt);
    EXPECT_EQ(MeasuredBitrate("CODEC_ID_AC3", "UNKNOWN", 192000, "SAMPLE_FMT_FLTP"), std::nullopt);
}

} // namespace
