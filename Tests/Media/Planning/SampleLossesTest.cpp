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

std::vector<std::string> PixelNotes(const std::string& from, const std::string& to)
{
    MediaStream source = MakeVideoStream();
    source.pixelFormat = from;
    std::vector<std::string> notes;
    NoteLostPixels(source, VideoRecord("\"pixelFormat\":\"" + to + "\""), "video 0", notes);
    return notes;
}

std::vector<std::string> SoundNotes(const std::string& codec, const std::string& format, unsigned int bits,
                                    const std::string& encoder, AVSampleFormat to)
{
    MediaStream source = MakeAudioStream();
    source.codec = codec;
    source.sampleFormat = format;
    source.bitsPerSample = bits;
    std::vector<std::string> notes;
    NoteLostSoundBits(source, *FindEncoder(encoder), to, "audio 1", notes);
    return notes;
}

TEST(SampleLosses, AreCoarserChroma)
{
    EXPECT_THAT(PixelNotes("yuv422p", "yuv420p"),
                ElementsAre("The 4:2:2 chroma of video 0 will become 4:2:0"));
    EXPECT_THAT(PixelNotes("yuv444p", "yuv422p"),
                ElementsAre("The 4:4:4 chroma of video 0 will become 4:2:2"));
    EXPECT_THAT(PixelNotes("yuv420p", "yuv411p"),
                ElementsAre("The 4:2:0 chroma of video 0 will become 4:1:1"));
    EXPECT_THAT(PixelNotes("rgb24", "yuv420p"),
                ElementsAre("The RGB samples of video 0 will become 4:2:0, whose chroma is coarser"));
    EXPECT_THAT(PixelNotes("yuv420p", "gray"), ElementsAre("The colours of video 0 will be lost"));
}

TEST(SampleLosses, AreBitsAndChromaAndTransparency)
{
    EXPECT_THAT(PixelNotes("yuva444p10le", "yuv420p"),
                ElementsAre("The 10 bits a sample of video 0 will become 8",
                            "The 4:4:4 chroma of video 0 will become 4:2:0",
                            "The transparency of video 0 will be lost"));
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

TEST(SampleLosses, AreFewerBitsOfSound)
{
    EXPECT_THAT(SoundNotes("pcm_s24le", "s32", 24, "CODEC_ID_PCM_S16LE", AV_SAMPLE_FMT_S16),
                ElementsAre("The 24 bits a sample of audio 1 will become 16"));
    EXPECT_THAT(SoundNotes("pcm_f32le", "flt", 32, "CODEC_ID_FLAC", AV_SAMPLE_FMT_S16),
                ElementsAre("The floating-point samples of audio 1 will become 16 bits"));
    // FLAC writes 24 bits of its samples of 32.
    EXPECT_THAT(SoundNotes("pcm_s32le", "s32", 32, "CODEC_ID_FLAC", AV_SAMPLE_FMT_S32),
                ElementsAre("The 32 bits a sample of audio 1 will become 24"));
    EXPECT_THAT(SoundNotes("pcm_s16le", "s16", 16, "CODEC_ID_PCM_U8", AV_SAMPLE_FMT_U8),
                ElementsAre("The 16 bits a sample of audio 1 will become 8"));
}

TEST(SampleLosses, OfSoundAreNotThoseOfLossyCodecs)
{
    EXPECT_THAT(SoundNotes("pcm_s24le", "s32", 24, "CODEC_ID_MP2", AV_SAMPLE_FMT_S16), IsEmpty());
    EXPECT_THAT(SoundNotes("aac", "fltp", 0, "CODEC_ID_PCM_S16LE", AV_SAMPLE_FMT_S16), IsEmpty());
    EXPECT_THAT(SoundNotes("pcm_f32le", "flt", 32, "CODEC_ID_FLAC", AV_SAMPLE_FMT_S32), IsEmpty());
    EXPECT_THAT(SoundNotes("flac", "s16", 16, "CODEC_ID_FLAC", AV_SAMPLE_FMT_S16), IsEmpty());
}

} // namespace
