#include "Tests/Support/MediaTest.h"

#include <gmock/gmock.h>

#include <cmath>
#include <ostream>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;
using testing::HasSubstr;

/// What a preset makes. What is 0 or empty is as in the source.
struct Expected
{
    const char* preset;
    const char* extension;
    const char* format;
    const char* video; ///< codec; empty: none
    const char* audio;
    int width;
    int height;
    double fps;
    const char* layout;
    const char* surround; ///< what becomes of 5.1(side)
    bool wholeChroma;     ///< sizes are even
    bool squareSamples;
};

std::ostream& operator<<(std::ostream& os, const Expected& expected) { return os << expected.preset; }

const Expected kPresets[] = {
    {"mp4-h264-aac", "mp4", "mp4", "h264", "aac", 0, 0, 0, "stereo", "stereo", true, false},
    {"mkv-h264-ac3", "mkv", "matroska", "h264", "ac3", 0, 0, 0, "", "5.1(side)", true, false},
    {"mkv-vp8-vorbis", "mkv", "matroska", "vp8", "vorbis", 1280, 720, 30000.0 / 1001, "stereo", "stereo",
     true, false},
    {"webm-vp8-vorbis", "webm", "webm", "vp8", "vorbis", 0, 0, 0, "stereo", "stereo", true, false},
    {"webm-vp9-opus", "webm", "webm", "vp9", "opus", 0, 0, 0, "", "5.1", true, false},
    {"mov-mpeg4-aac", "mov", "mov", "mpeg4", "aac", 0, 0, 0, "stereo", "stereo", true, false},
    {"dvd-pal", "vob", "mpeg", "mpeg2video", "ac3", 720, 576, 25, "", "5.1(side)", true, false},
    {"mp3", "mp3", "mp3", "", "mp3", 0, 0, 0, "stereo", "stereo", false, false},
    {"flac", "flac", "flac", "", "flac", 0, 0, 0, "", "5.1(side)", false, false},
    {"gif", "gif", "gif", "gif", "", 0, 0, 12.5, "", "", false, true},
    {"png", "png", "png", "png", "", 0, 0, 0, "", "", false, true},
};

class EveryPreset : public MediaTest, public testing::WithParamInterface<Expected>
{
protected:
    void Convert(const std::string& source)
    {
        m_source = Info(source);
        const std::string name = std::string("out of '") + GetParam().preset + "'";
        m_name = name + "." + GetParam().extension;
        const ProcessResult made = New(GetParam().preset, source, m_name);
        ASSERT_EQ(made.exitCode, 0) << made.messages;
        const ProcessResult run = RunJob();
        ASSERT_EQ(run.exitCode, 0) << run.messages;
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.messages, HasSubstr("'." + std::string(GetParam().extension) + ": done in 0:0"));
        m_target = Info(m_name);
        EXPECT_THAT(m_target.format, HasSubstr(GetParam().format));
    }

    static int Even(int length) { return length / 2 * 2; }

    void CheckVideo() const
    {
        const Expected& expected = GetParam();
        ASSERT_EQ(m_target.Of(AVMEDIA_TYPE_VIDEO).size(), *expected.video != 0 ? 1U : 0U);
        if (*expected.video == 0)
        {
            return;
        }
        const StreamInfo source = m_source.Video();
        const StreamInfo target = m_target.Video();
        EXPECT_EQ(target.codec, expected.video);
        const int width = expected.width != 0 ? expected.width
                          : expected.squareSamples
                              ? static_cast<int>(std::lround(source.height * source.aspect))
                              : source.width;
        const int height = expected.height != 0 ? expected.height : source.height;
        EXPECT_EQ(target.width, expected.wholeChroma ? Even(width) : width);
        EXPECT_EQ(target.height, expected.wholeChroma ? Even(height) : height);
        EXPECT_NEAR(target.aspect, source.aspect, 0.01 * source.aspect);
        if (std::string(expected.video) == "png")
        {
            return;
        }
        const double fps = expected.fps != 0 ? expected.fps : source.rate;
        EXPECT_NEAR(target.rate, fps, 0.001 * fps);
        EXPECT_NEAR(target.seconds, source.seconds, 1.01 / std::min(fps, source.rate));
    }

    void CheckAudio() const
    {
        const Expected& expected = GetParam();
        ASSERT_EQ(m_target.Of(AVMEDIA_TYPE_AUDIO).size(), *expected.audio != 0 ? 1U : 0U);
        if (*expected.audio == 0)
        {
            return;
        }
        const StreamInfo source = m_source.Audio();
        const StreamInfo target = m_target.Audio();
        EXPECT_EQ(target.codec, expected.audio);
        EXPECT_EQ(target.layout, source.layout == "5.1(side)" ? expected.surround
                                 : *expected.layout != 0      ? expected.layout
                                                              : source.layout);
        // Two blocks: audio encoders begin with a silent one and fill up the last one.
        EXPECT_NEAR(target.seconds, source.seconds, 2 * 1536.0 / target.rate);
    }

    std::string m_name;
    MediaInfo m_source;
    MediaInfo m_target;
};

TEST_P(EveryPreset, KeepsTheDisplayAspectRatioOfAnamorphicVideo)
{
    Make({"-f", "lavfi", "-i", "testsrc2=s=720x576:r=25:d=0.4", "-f", "lavfi", "-i", "sine=r=48000:d=0.4",
          "-ac", "2", "-vf", "setsar=64/45", "-c:v", "mpeg4", "-c:a", "pcm_s16le", "pal wide.mkv"});
    Convert("pal wide.mkv");
    EXPECT_NEAR(m_source.Video().aspect, 16.0 / 9, 0.001);
    CheckVideo();
    CheckAudio();
}

TEST_P(EveryPreset, ConvertsVideoWithSurroundSound)
{
    Make({"-f", "lavfi", "-i", "testsrc2=s=320x240:r=24000/1001:d=0.5", "-f", "lavfi", "-i",
          "anullsrc=cl=5.1(side):r=48000:d=0.5", "-c:v", "mpeg4", "-c:a", "ac3", "-t", "0.5",
          "surround.mkv"});
    Convert("surround.mkv");
    CheckVideo();
    CheckAudio();
}

TEST_P(EveryPreset, ConvertsOddSizesUnderAnAwkwardName)
{
    const std::string name = "-it's \"50%d\" http:x\n.mkv";
    Make({"-f", "lavfi", "-i", "testsrc2=s=161x121:r=30:d=0.4", "-f", "lavfi", "-i", "sine=d=0.4", "-c:v",
          "ffv1", "-pix_fmt", "yuv444p", "-c:a", "flac", "file:" + name});
    Convert(name);
    CheckVideo();
    CheckAudio();
}

TEST_P(EveryPreset, ConvertsInterlacedVideo)
{
    Make({"-f", "lavfi", "-i", "testsrc2=s=720x576:r=50:d=0.4", "-f", "lavfi", "-i", "sine=r=48000:d=0.4",
          "-ac", "2", "-vf", "interlace,setsar=16/15", "-c:v", "mpeg2video", "-flags", "+ilme+ildct", "-c:a",
          "mp2", "i.mkv"});
    Convert("i.mkv");
    CheckVideo();
    CheckAudio();
}

TEST_P(EveryPreset, ConvertsAudioAloneOrRefuses)
{
    Make({"-f", "lavfi", "-i", "sine=r=44100:d=0.4", "-ac", "2", "audio.wav"});
    if (*GetParam().audio == 0)
    {
        const ProcessResult made = New(GetParam().preset, "audio.wav", "out");
        EXPECT_EQ(made.exitCode, 2);
        // The rest names what the preset would convert.
        EXPECT_THAT(made.messages, HasSubstr("audio.wav: the file has no stream that preset '"));
        return;
    }
    Convert("audio.wav");
    CheckAudio();
    EXPECT_EQ(m_target.Of(AVMEDIA_TYPE_VIDEO).size(), 0U);
}

TEST_P(EveryPreset, RefusesTextNamedLikeVideo)
{
    Write("text.mp4", "not video\n" + std::string(3000, '.'));
    const ProcessResult made = New(GetParam().preset, "text.mp4", "out");
    EXPECT_EQ(made.exitCode, 2);
    // The reason is FFmpeg's.
    EXPECT_THAT(made.messages, HasSubstr("text.mp4: cannot be read: "));
    EXPECT_FALSE(Exists("job.json"));
}

INSTANTIATE_TEST_SUITE_P(Presets, EveryPreset, testing::ValuesIn(kPresets), [](const auto& parameter) {
    std::string name = parameter.param.preset;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

} // namespace
