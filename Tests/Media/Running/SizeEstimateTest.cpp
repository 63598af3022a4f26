#include "Media/Running/SizeEstimate.h"

#include "Tests/Support/JobFixtures.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <optional>
#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

/// Of ten seconds.
std::optional<std::int64_t> SizeOf(const MediaStream& source, const Core::Property& codec)
{
    return EstimateSize(MakeTranscode(MakeMediaFile({source}), codec, "matroska"));
}

TEST(SizeEstimate, IsFromTheBitratesThatEncodersAreAskedFor)
{
    EXPECT_EQ(SizeOf(MakeVideoStream(), VideoRecord(R"("codec_id":"CODEC_ID_H264","bitrate":800000)")),
              1000000);
    EXPECT_EQ(SizeOf(MakeAudioStream(), AudioRecord(R"("codec_id":"CODEC_ID_MP3","bitrate":192000)")),
              240000);
    // FFmpeg's encoder of AAC decides on a bitrate when nobody asks for one.
    EXPECT_EQ(SizeOf(MakeAudioStream(), AudioRecord(R"("codec_id":"CODEC_ID_AAC")")), std::nullopt);
}

TEST(SizeEstimate, OfPlainSamplesIsFromTheirNumber)
{
    EXPECT_EQ(SizeOf(MakeAudioStream(),
                     AudioRecord(R"("codec_id":"CODEC_ID_PCM_S16LE","sample_rate":48000,"layout":"STEREO")")),
              1920000);
}

TEST(SizeEstimate, OfACopyIsTheSources)
{
    const MediaStream source = MakeAudioStream();
    const Core::Property copy = AudioRecord(R"("codec_id":"CODEC_ID_AAC","lossless":1)");
    EXPECT_EQ(SizeOf(source, copy), std::nullopt);
    SetValue(source, "bitrate", 64000LL);
    EXPECT_EQ(SizeOf(source, copy), 80000);
}

TEST(SizeEstimate, IsNotToldWhereNobodyKnows)
{
    EXPECT_EQ(SizeOf(MakeAudioStream(), AudioRecord(R"("codec_id":"CODEC_ID_FLAC")")), std::nullopt);
    Transcode transcode = MakeTranscode(MakeMediaFile({MakeAudioStream()}),
                                        AudioRecord(R"("codec_id":"CODEC_ID_AAC","bitrate":96000)"));
    EXPECT_EQ(EstimateSize(transcode), 120000);
    transcode.span = {2000000, 3000000};
    EXPECT_EQ(EstimateSize(transcode), 12000);
    transcode.span = {};
    transcode.inputs[0].duration.reset();
    EXPECT_EQ(EstimateSize(transcode), std::nullopt);
}

TEST(SizeEstimate, LeavesOutWhatASubtitleNeeds)
{
    EXPECT_EQ(
        SizeOf(MakeSubtitleStream(), RecordOf(R"({"format_codec_subtitle":{"codec_id":"CODEC_ID_SRT"}})")),
        0);
}

TEST(SizeEstimate, IsNotToldOfAJobThatCannotBeRun)
{
    EXPECT_EQ(SizeOf(MakeAudioStream(), AudioRecord(R"("codec_id":"CODEC_ID_AAC","bitrate":"fast")")),
              std::nullopt);
}

TEST(SizeEstimate, OfPlainSamplesNeedsTheirRateAndLayout)
{
    EXPECT_EQ(
        SizeOf(MakeAudioStream(), AudioRecord(R"("codec_id":"CODEC_ID_PCM_S16LE","sample_rate":48000)")),
        std::nullopt);
    EXPECT_EQ(SizeOf(MakeAudioStream(), AudioRecord(R"("codec_id":"CODEC_ID_PCM_S16LE","layout":"STEREO")")),
              std::nullopt);
}

TEST(SizeEstimate, OfOneImageIsNotTold)
{
    EXPECT_EQ(EstimateSize(MakeTranscode(MakeMediaFile({MakeVideoStream()}),
                                         VideoRecord(R"("codec_id":"CODEC_ID_PNG")"), "image2")),
              std::nullopt);
}

TEST(SizeEstimate, IsNotToldWhereABitrateIsNotANumber)
{
    const MediaStream source = MakeAudioStream();
    SetValue(source, "bitrate", std::string("64000"));
    EXPECT_EQ(SizeOf(source, AudioRecord(R"("codec_id":"CODEC_ID_AAC","lossless":1)")), std::nullopt);
}

TEST(SizeEstimate, TakesTheBitrateThatAnEncoderHasByItself)
{
    const auto size = SizeOf(MakeAudioStream(), AudioRecord(R"("codec_id":"CODEC_ID_AC3")"));
    const AVCodec* const encoder = avcodec_find_encoder_by_name("ac3");
    ASSERT_NE(encoder, nullptr);
    AVCodecContext* context = avcodec_alloc_context3(encoder);
    const std::int64_t bitrate = context->bit_rate;
    avcodec_free_context(&context);
    EXPECT_EQ(size, bitrate > 0 ? std::optional<std::int64_t>(bitrate * 10 / 8) : std::nullopt);
}

} // namespace
