#include "Media/Planning/NearestCodec.h"

#include "Media/MediaException.h"
#include "Media/Planning/JobPlan.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/MediaFixtures.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Core::Property;
using testing::ElementsAre;
using testing::IsEmpty;

class NearestCodec : public testing::Test
{
protected:
    NearestCodec() { m_request.output = "out"; }

    Property Make(const MediaStream& source, const std::string& streams, const std::string& container = "mp4")
    {
        const PlannedJob job = PlanJob(MakeMediaFile({source}), MakePreset(container, streams), m_request);
        m_notes = job.notes;
        return job.graph->GetLink(3, 2);
    }
    /// The size of a video that is converted within a limit, as "1280x720 1:1".
    std::string SizeOf(const MediaStream& source, const std::string& settings = "")
    {
        const Property video = Make(source, R"({"video":{"codec_id":"CODEC_ID_H264")" + settings + "}}");
        const auto text = [&video](const char* key) { return std::to_string(video[key].GetInt64()); };
        return text("width") + "x" + text("height") + " " + text("aspect_x") + ":" + text("aspect_y");
    }

    JobRequest m_request;
    std::vector<std::string> m_notes;
};

TEST_F(NearestCodec, ScalesDownIntoTheLargestSize)
{
    m_request.streams.maxSize = FrameLimit{1280, 720};
    EXPECT_EQ(SizeOf(MakeVideoStream(1920, 1080)), "1280x720 1:1");
    EXPECT_EQ(SizeOf(MakeVideoStream(1920, 800)), "1280x532 1:1");
    EXPECT_EQ(SizeOf(MakeVideoStream(1080, 1920)), "404x720 1:1");
    EXPECT_THAT(m_notes, IsEmpty());
}

TEST_F(NearestCodec, NeverScalesUpUnlessAsked)
{
    m_request.streams.maxSize = FrameLimit{1280, 720};
    EXPECT_EQ(SizeOf(MakeVideoStream(640, 360)), "640x360 1:1");
    EXPECT_EQ(SizeOf(MakeVideoStream(1280, 720)), "1280x720 1:1");
    m_request.streams.mayUpscale = true;
    EXPECT_EQ(SizeOf(MakeVideoStream(640, 360)), "1280x720 1:1");
    EXPECT_EQ(SizeOf(MakeVideoStream(640, 480)), "960x720 1:1");
    EXPECT_EQ(SizeOf(MakeVideoStream(1920, 1080)), "1280x720 1:1");
}

TEST_F(NearestCodec, MeasuresTheSizeAsItIsDisplayed)
{
    m_request.streams.maxSize = FrameLimit{960, 540};
    const MediaStream anamorphic = MakeVideoStream(1440, 1080);
    const auto video = boost::dynamic_pointer_cast<Conf::IFormatCodecVideo>(anamorphic.descriptor);
    video->InitByPixelAspect(1440, 1080, 4, 3);
    EXPECT_EQ(SizeOf(anamorphic), "720x540 4:3");
    MediaStream rotated = MakeVideoStream(1920, 1080);
    rotated.rotation = 90;
    EXPECT_EQ(SizeOf(rotated), "302x540 1:1");
}

TEST_F(NearestCodec, LimitsTheSizeOfAPresetToo)
{
    m_request.streams.maxSize = FrameLimit{640, 640};
    EXPECT_EQ(SizeOf(MakeVideoStream(640, 360), R"(,"width":1280,"height":720)"), "640x360 1:1");
    EXPECT_THAT(m_notes, IsEmpty());
}

TEST_F(NearestCodec, SurvivesTheSmallestSizes)
{
    m_request.streams.maxSize = FrameLimit{1, 1};
    EXPECT_EQ(SizeOf(MakeVideoStream(1920, 1080)), "2x2 1:1");
    m_request.streams.maxSize = FrameLimit{4294967295U, 4294967295U};
    EXPECT_EQ(SizeOf(MakeVideoStream(1920, 1080)), "1920x1080 1:1");
}

TEST_F(NearestCodec, TellsWhatItChangesOfTheSettings)
{
    EXPECT_EQ(SizeOf(MakeVideoStream(), R"(,"width":321,"height":241)").substr(0, 7), "320x240");
    EXPECT_THAT(
        m_notes,
        ElementsAre("in.mkv: video stream 0, p.$$STREAMS$$.video.width: 321 becomes 320, the nearest that "
                    "the encoder supports",
                    "in.mkv: video stream 0, p.$$STREAMS$$.video.height: 241 becomes 240, the nearest "
                    "that the encoder supports"));
}

TEST_F(NearestCodec, HasABitrateThatTheCodecHas)
{
    EXPECT_EQ(
        Make(MakeAudioStream(), R"({"audio":{"codec_id":"CODEC_ID_MP3","bitrate":10}})", "mp3")["bitrate"]
            .GetInt64(),
        32000);
    EXPECT_THAT(m_notes,
                ElementsAre("in.mkv: audio stream 0, p.$$STREAMS$$.audio.bitrate: 10 becomes 32000, the "
                            "nearest that the encoder supports"));
    EXPECT_EQ(NearestAudioBitrate("CODEC_ID_MP3", 44100, 200000), 192000);
    EXPECT_EQ(NearestAudioBitrate("CODEC_ID_MP3", 44100, 2000000000), 320000);
    EXPECT_EQ(NearestAudioBitrate("CODEC_ID_MP3", 22050, 10), 8000);
    EXPECT_EQ(NearestAudioBitrate("CODEC_ID_MP2", 48000, 320000), 320000);
    EXPECT_EQ(NearestAudioBitrate("CODEC_ID_MP2", 48000, 40000), 32000);
    EXPECT_EQ(NearestAudioBitrate("CODEC_ID_AC3", 48000, 450000), 448000);
    EXPECT_EQ(NearestAudioBitrate("CODEC_ID_AAC", 48000, 123456), 123456);
}

TEST_F(NearestCodec, TellsWhatAnEncoderMakesThatIsAskedForTooLittle)
{
    const auto streams = [](const std::string& codec) {
        return R"({"audio":{"codec_id":"CODEC_ID_)" + codec + R"(","bitrate":10}})";
    };
    EXPECT_EQ(Make(MakeAudioStream(), streams("AAC"))["bitrate"].GetInt64(), 10);
    ASSERT_EQ(m_notes.size(), 1U);
    // How much it is belongs to the installed FFmpeg.
    EXPECT_THAT(m_notes[0],
                testing::MatchesRegex("in.mkv: audio stream 0, p.\\$\\$STREAMS\\$\\$.audio.bitrate: 10 "
                                      "becomes about [0-9]+000, the least that encoder aac makes"));
    for (const auto& [codec, encoder] :
         {std::pair("OPUS", "libopus"), std::pair("VORBIS", "libvorbis"), std::pair("EAC3", "eac3")})
    {
        const std::string text = streams(codec);
        EXPECT_EQ(ExpectThrow<PlanException>([&] { Make(MakeAudioStream(), text, "matroska"); }).description,
                  "in.mkv: audio stream 0, p.$$STREAMS$$.audio.bitrate: encoder " + std::string(encoder) +
                      " does not support bitrate 10");
    }
}

TEST_F(NearestCodec, DoesNotTryUsualBitrates)
{
    Make(MakeAudioStream(), R"({"audio":{"codec_id":"CODEC_ID_AAC","bitrate":32000}})");
    EXPECT_THAT(m_notes, IsEmpty());
    Make(MakeAudioStream(), R"({"audio":{"codec_id":"CODEC_ID_OPUS","bitrate":6000}})", "matroska");
    EXPECT_THAT(m_notes, IsEmpty());
}

TEST_F(NearestCodec, HasTheArrangementOfChannelsThatTheEncoderHas)
{
    const Property audio = Make(MakeAudioStream(Conf::CH_LAYOUT_5POINT1),
                                R"({"audio":{"codec_id":"CODEC_ID_AAC","layout":"5POINT1"}})");
    EXPECT_EQ(audio["layout"].GetString(), "5POINT1_BACK");
    EXPECT_THAT(m_notes, ElementsAre("in.mkv: audio stream 0, p.$$STREAMS$$.audio.layout: '5POINT1' becomes "
                                     "'5POINT1_BACK', the nearest that the encoder supports"));
    const Property kept = Make(MakeAudioStream(Conf::CH_LAYOUT_5POINT1),
                               R"({"audio":{"codec_id":"CODEC_ID_AC3","layout":"5POINT1"}})");
    EXPECT_EQ(kept["layout"].GetString(), "5POINT1");
    EXPECT_THAT(m_notes, IsEmpty());
}

TEST_F(NearestCodec, UsesADisabledEncoderOnlyWhenAsked)
{
    const std::string plain = R"({"video":{"codec_id":"CODEC_ID_H265"}})";
    const Thrown thrown = ExpectThrow<PlanException>([&] { Make(MakeVideoStream(), plain); });
    EXPECT_EQ(
        thrown.description,
        "in.mkv: video stream 0, p.$$STREAMS$$.video.codec_id: encoding CODEC_ID_H265 is disabled unless its "
        "encoder is named ('libx265', under preferred_encoder) or the request allows it");
    EXPECT_EQ(
        Make(MakeVideoStream(),
             R"({"video":{"codec_id":"CODEC_ID_H265","preferred_encoder":"libx265"}})")["preferred_encoder"]
            .GetString(),
        "libx265");
    m_request.streams.allowDisabled = true;
    EXPECT_EQ(Make(MakeVideoStream(), plain)["preferred_encoder"].GetString(), "libx265");
    EXPECT_FALSE(Make(MakeVideoStream(), R"({"video":{"codec_id":"CODEC_ID_H264"}})")
                     .ChildExists("preferred_encoder"));
}

TEST_F(NearestCodec, AsksTheEncoderThatIsNamed)
{
    // libx264rgb has RGB only, and libx264 does not.
    const Property video =
        Make(MakeVideoStream(), R"({"video":{"codec_id":"CODEC_ID_H264","preferred_encoder":"libx264rgb"}})");
    EXPECT_NE(video["PIXELFORMAT"].GetInt64(), PIX_FMT_YUV420P);
    EXPECT_EQ(ExpectThrow<PlanException>([&] {
                  Make(MakeVideoStream(),
                       R"({"video":{"codec_id":"CODEC_ID_H264","preferred_encoder":"ENCODER_NVENC_H264"}})");
              }).description,
              "in.mkv: video stream 0, p.$$STREAMS$$.video.preferred_encoder: the installed FFmpeg does not "
              "have an "
              "encoder 'ENCODER_NVENC_H264' for CODEC_ID_H264; it has 'libx264'");
}

TEST_F(NearestCodec, OfADisabledCodecWithAnEncoderThatIsNotThereNamesTheEncoder)
{
    EXPECT_EQ(ExpectThrow<PlanException>([&] {
                  Make(MakeVideoStream(),
                       R"({"video":{"codec_id":"CODEC_ID_H265","preferred_encoder":"ENCODER_NVENC_H265"}})");
              }).description,
              "in.mkv: video stream 0, p.$$STREAMS$$.video.preferred_encoder: the installed FFmpeg does not "
              "have an encoder 'ENCODER_NVENC_H265' for CODEC_ID_H265; it has 'libx265'");
}

TEST_F(NearestCodec, OfACodecWithoutAnEncoderIsRefusedWithALayoutToo)
{
    EXPECT_EQ(
        ExpectThrow<PlanException>([&] {
            Make(MakeAudioStream(), R"({"audio":{"codec_id":"CODEC_ID_QDM2","layout":"5POINT1"}})", "mov");
        }).description,
        "in.mkv: audio stream 0, p.$$STREAMS$$.audio.codec_id: the installed FFmpeg does not have an encoder "
        "for CODEC_ID_QDM2; for mov it can encode CODEC_ID_AAC, CODEC_ID_PCM_S16LE or CODEC_ID_PCM_S16BE");
}

TEST_F(NearestCodec, MeasuresASizeWithoutAnAspectByItsPixels)
{
    m_request.streams.maxSize = FrameLimit{640, 360};
    const MediaStream source = MakeVideoStream(1280, 720);
    SetValue(source, "aspect_x", 0LL);
    EXPECT_EQ(SizeOf(source), "640x360 1:1");
}

} // namespace
