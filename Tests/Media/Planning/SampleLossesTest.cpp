#include "Media/Planning/SampleLosses.h"

#include "Media/Probe/FFmpegNames.h"
#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/MediaFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> PixelLossesOf(const std::string& from, const std::string& record,
                                       const std::string& encoder = "CODEC_ID_RAWVIDEO",
                                       const std::string& container = "matroska")
{
    MediaStream source = MakeVideoStream();
    source.pixelFormat = from;
    return PixelLosses(source, VideoRecord(record), *FindEncoder(encoder), container);
}

/// Of a record that asks for the format.
std::vector<std::string> PixelNotes(const std::string& from, const std::string& to)
{
    return PixelLossesOf(from, "\"pixelFormat\":\"" + to + "\"");
}

std::vector<std::string> SoundNotes(const std::string& codec, const std::string& format, unsigned int bits,
                                    const std::string& encoder, const std::string& to)
{
    MediaStream source = MakeAudioStream();
    source.codec = codec;
    source.sampleFormat = format;
    source.bitsPerSample = bits;
    return SoundLosses(source, AudioRecord(to.empty() ? "" : R"("sample_format":"SAMPLE_FMT_)" + to + "\""),
                       *FindEncoder(encoder));
}

TEST(SampleLosses, AreCoarserChroma)
{
    EXPECT_THAT(PixelNotes("yuv422p", "yuv420p"), ElementsAre("its 4:2:2 chroma becomes 4:2:0"));
    EXPECT_THAT(PixelNotes("yuv444p", "yuv422p"), ElementsAre("its 4:4:4 chroma becomes 4:2:2"));
    EXPECT_THAT(PixelNotes("yuv420p", "yuv411p"), ElementsAre("its 4:2:0 chroma becomes 4:1:1"));
    EXPECT_THAT(PixelNotes("rgb24", "yuv420p"),
                ElementsAre("its RGB samples become 4:2:0, whose chroma is coarser"));
    EXPECT_THAT(PixelNotes("yuv420p", "gray"), ElementsAre("its colours are left out"));
}

TEST(SampleLosses, AreBitsAndChromaAndTransparency)
{
    EXPECT_THAT(PixelNotes("yuva444p10le", "yuv420p"),
                ElementsAre("its 10 bits a sample become 8", "its 4:4:4 chroma becomes 4:2:0",
                            "its transparency is left out"));
}

TEST(SampleLosses, AreNoneWhereEverythingIsHeld)
{
    for (const auto& [from, to] : {std::pair("yuv420p", "yuv420p"),
                                   {"yuv420p", "yuv422p"},
                                   {"gray", "yuv420p"},
                                   {"rgb24", "yuv444p"},
                                   {"gbrp", "rgb24"},
                                   {"rgba", "pal8"},
                                   {"nv12", "yuv420p"},
                                   {"", "yuv420p"}})
    {
        EXPECT_THAT(PixelNotes(from, to), IsEmpty()) << from << " " << to;
    }
}

TEST(SampleLosses, AreThoseOfTheFormatThatFFmpegChooses)
{
    EXPECT_THAT(PixelLossesOf("rgb24", "", "CODEC_ID_MPEG4"),
                ElementsAre("its RGB samples become 4:2:0, whose chroma is coarser"));
    EXPECT_THAT(PixelLossesOf("yuv444p", "", "CODEC_ID_H264"), IsEmpty());
    EXPECT_THAT(SoundNotes("pcm_s32le", "s32", 32, "CODEC_ID_PCM_S16LE", ""),
                ElementsAre("its 32 bits a sample become 16"));
}

TEST(SampleLosses, AreTheTransparencyThatTheContainerHasNoPlaceFor)
{
    const std::string alpha = R"("pixelFormat":"yuva420p")";
    EXPECT_THAT(PixelLossesOf("yuva420p", alpha, "CODEC_ID_VP9", "mp4"),
                ElementsAre("its transparency is left out"));
    EXPECT_THAT(PixelLossesOf("yuva420p", alpha, "CODEC_ID_VP9", "webm"), IsEmpty());
}

TEST(SampleLosses, AreNotOfAGifsPalette)
{
    EXPECT_THAT(PixelLossesOf("rgba", R"("pixelFormat":"rgb8")", "CODEC_ID_GIF", "gif"), IsEmpty());
}

TEST(SampleLosses, AreFewerChannels)
{
    MediaStream source = MakeAudioStream();
    source.channels = 6;
    const auto losses = [&source](const std::string& record) {
        return SoundLosses(source, AudioRecord(record), *FindEncoder("CODEC_ID_AAC"));
    };
    EXPECT_THAT(losses(R"("layout":"STEREO")"), ElementsAre("its 6 channels become 2"));
    EXPECT_THAT(losses(R"("layout":"7POINT1")"), IsEmpty());
    EXPECT_THAT(losses(""), IsEmpty());
}

TEST(SampleLosses, AreFewerBitsOfSound)
{
    EXPECT_THAT(SoundNotes("pcm_s24le", "s32", 24, "CODEC_ID_PCM_S16LE", "S16"),
                ElementsAre("its 24 bits a sample become 16"));
    EXPECT_THAT(SoundNotes("pcm_f32le", "flt", 32, "CODEC_ID_FLAC", "S16"),
                ElementsAre("its floating-point samples become 16 bits"));
    // FLAC writes 24 bits of its samples of 32.
    EXPECT_THAT(SoundNotes("pcm_s32le", "s32", 32, "CODEC_ID_FLAC", "S32"),
                ElementsAre("its 32 bits a sample become 24"));
    EXPECT_THAT(SoundNotes("pcm_s16le", "s16", 16, "CODEC_ID_PCM_U8", "U8"),
                ElementsAre("its 16 bits a sample become 8"));
}

TEST(SampleLosses, OfSoundAreNotThoseOfLossyCodecs)
{
    EXPECT_THAT(SoundNotes("pcm_s24le", "s32", 24, "CODEC_ID_MP2", "S16"), IsEmpty());
    EXPECT_THAT(SoundNotes("aac", "fltp", 0, "CODEC_ID_PCM_S16LE", "S16"), IsEmpty());
    EXPECT_THAT(SoundNotes("pcm_f32le", "flt", 32, "CODEC_ID_FLAC", "S32"), IsEmpty());
    EXPECT_THAT(SoundNotes("flac", "s16", 16, "CODEC_ID_FLAC", "S16"), IsEmpty());
}

TEST(SampleLosses, AreOfAPaletteAsOfItsColours)
{
    EXPECT_THAT(PixelNotes("pal8", "gray"),
                ElementsAre("its colours are left out", "its transparency is left out"));
}

TEST(SampleLosses, AreFewerBitsOfFloatingPointSamples)
{
    EXPECT_THAT(SoundNotes("pcm_f64le", "dbl", 0, "CODEC_ID_PCM_S16LE", ""),
                ElementsAre("its floating-point samples become 16 bits"));
    EXPECT_THAT(SoundNotes("pcm_f64le", "dbl", 0, "CODEC_ID_PCM_F32LE", ""),
                ElementsAre("its floating-point samples become 24 bits"));
    EXPECT_THAT(SoundNotes("pcm_s32le", "s32", 0, "CODEC_ID_PCM_F32LE", ""),
                ElementsAre("its 32 bits a sample become 24"));
    EXPECT_THAT(SoundNotes("pcm_s24le", "s32", 24, "CODEC_ID_PCM_F32LE", ""), IsEmpty());
    EXPECT_THAT(SoundNotes("pcm_s32le", "s32", 32, "CODEC_ID_PCM_F64LE", ""), IsEmpty());
}

TEST(SampleLosses, OfSoundAreNotThoseOfUnknownSamples)
{
    EXPECT_THAT(SoundNotes("pcm_s32le", "", 0, "CODEC_ID_PCM_S16LE", ""), IsEmpty());
    EXPECT_THAT(SoundNotes("nosuchcodec", "s32", 0, "CODEC_ID_PCM_S16LE", ""), IsEmpty());
}

TEST(SampleLosses, AreNoneWhereWavPackKeepsTheBits)
{
    EXPECT_THAT(SoundNotes("flac", "s32", 24, "CODEC_ID_WAVPACK", "S32P"), IsEmpty());
    EXPECT_THAT(SoundNotes("flac", "s32", 24, "CODEC_ID_TTA", "S16"),
                ElementsAre("its 24 bits a sample become 16"));
}

} // namespace
