#include "Media/Planning/SettingOverrides.h"

#include "Media/MediaException.h"
#include "Media/Planning/JobPlan.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/MediaFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Core::Property;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kStreams = R"([
    {"video":{"codec_id":"CODEC_ID_H264","profile":"high","preset":"fast","bitrate":900000,"PIXELFORMAT":0}},
    {"audio":{"codec_id":"CODEC_ID_AAC","bitrate":128000}},
    {"audio":{"codec_id":"CODEC_ID_AC3","bitrate":192000}}])";

class Overrides : public testing::Test
{
protected:
    Property Apply(const std::vector<std::string>& settings)
    {
        for (const std::string& setting : settings)
        {
            m_request.settings.push_back(ParseSetting(setting));
        }
        return ApplyOverrides(MakePreset("mp4", kStreams)->GetProperty(), m_request, m_notes);
    }
    std::string RefusalOf(const std::string& setting)
    {
        m_request.settings.clear();
        return ExpectThrow<PlanException>([&] { Apply({setting}); }).description.value_or("");
    }

    JobRequest m_request;
    std::vector<std::string> m_notes;
};

TEST_F(Overrides, ReplaceASettingOfEveryStreamOfAType)
{
    const Property preset = Apply({"audio.bitrate=96000"});
    EXPECT_EQ(preset["$$STREAMS$$"][1]["bitrate"].GetInt64(), 96000);
    EXPECT_EQ(preset["$$STREAMS$$"][2]["bitrate"].GetInt64(), 96000);
    EXPECT_EQ(preset["$$STREAMS$$"][0]["bitrate"].GetInt64(), 900000);
    EXPECT_THAT(m_notes, IsEmpty());
}

TEST_F(Overrides, ReplaceASettingOfOneStream)
{
    const Property preset = Apply({"audio[1].bitrate=96000"});
    EXPECT_EQ(preset["$$STREAMS$$"][1]["bitrate"].GetInt64(), 128000);
    EXPECT_EQ(preset["$$STREAMS$$"][2]["bitrate"].GetInt64(), 96000);
}

TEST_F(Overrides, ReachIntoGroups)
{
    const Property preset = Apply({"video.codec.options.encode.crf=20", "video.codec.options.encode.crf=21",
                                   "metadata.title=A = B", "audio.metadata.title=1", "container=matroska"});
    EXPECT_EQ(preset["$$STREAMS$$"][0]["codec.options.encode"]["crf"].GetInt64(), 21);
    EXPECT_EQ(preset["$$STREAMS$$"][0]["codec.options.encode"].Count(), 1U);
    EXPECT_EQ(preset["metadata"]["title"].GetString(), "A = B");
    EXPECT_EQ(preset["container"].GetString(), "matroska");
}

TEST_F(Overrides, AreOfTheTypeThatTheirKeyAsksFor)
{
    EXPECT_EQ(ParseSetting("video.width=640").value, Property("", 640LL));
    EXPECT_EQ(ParseSetting("video.frameRateRatio=25").value, Property("", Property::Ratio(25)));
    EXPECT_EQ(ParseSetting("video.frameRateRatio=30000/1001").value,
              Property("", Property::Ratio(30000, 1001)));
    EXPECT_EQ(ParseSetting("video.profile=44").value, Property("", std::string("44")));
    EXPECT_EQ(ParseSetting("video.PIXELFORMAT=YUV422P").value, Property("", std::string("YUV422P")));
    EXPECT_EQ(ParseSetting("video.two_pass_encoding=two_pass").value, Property("", std::string("two_pass")));
    EXPECT_EQ(ParseSetting("video.profile=").value, Property("", std::string()));
}

TEST_F(Overrides, ObeyTheRulesOfPresets)
{
    const std::pair<std::string, std::string> kCases[] = {
        {"video.bitrate=fast", "video.bitrate: expected a positive integer, found 'fast'"},
        {"video.bitrate=-3", "video.bitrate: expected a positive integer, found -3"},
        {"video.bitrate=4294967296",
         "video.bitrate: expected an integer from 1 to 2147483647, found 4294967296"},
        {"video.width=0", "video.width: expected an integer from 1 to 65535, found 0"},
        {"video.frameRateRatio=1/0", "video.frameRateRatio: expected a rate as [30000, 1001], found '1/0'"},
        {"video.quality=99", "video.quality: expected an integer from 0 to 32, found 99"},
        {"video.maxIFrameInterval=-3", "video.maxIFrameInterval: expected a number from -1 on, found -3"},
        {"video.bitrat=1", "video.bitrat: unknown setting 'bitrat'; did you mean 'bitrate' or 'bitrate_mode' "
                           "or 'peakBitrate'?"},
        {"vidio.bitrate=1",
         "vidio.bitrate: expected a path as video.bitrate, metadata.title or container; did you "
         "mean 'video' or 'audio'?"},
        {"bitrate=1", "bitrate: expected a path as video.bitrate, metadata.title or container"},
        {"video.bitrate", "video.bitrate: expected a setting as video.bitrate=4000000"},
        {"", "expected a setting as video.bitrate=4000000"},
        {"audio[2].bitrate=1", "audio[2].bitrate: preset 'p' has only 2 of them, from 0 on"},
        {"audio[x].bitrate=1", "audio[x].bitrate: expected the position of a stream, as audio[1]"},
        {"audio[-1].bitrate=1", "audio[-1].bitrate: expected the position of a stream, as audio[1]"},
        {"audio[1.bitrate=1", "audio[1.bitrate: expected the position of a stream, as audio[1]"},
        {"subtitles_text.language=deu",
         "subtitles_text.language: preset 'p' has no settings for subtitles_text"},
        {"audio.layout=5POINT", "audio.layout: expected a channel layout, as \"STEREO\", found '5POINT'; did "
                                "you mean '5POINT0' or '5POINT1' or '2POINT1'?"},
        {"container=mp5",
         "container: expected the name of a container, as \"mp4\", found 'mp5'; did you mean "
         "'md5' or 'mp2' or 'mp3'?"},
        {"metadata.a\nb=c", "metadata.a\nb: the name of a tag is a visible text without '='"},
        {"video.metadata=c", "video.metadata: expected a group, found 'c'"},
    };
    for (const auto& [setting, sentence] : kCases)
    {
        SCOPED_TRACE(setting);
        EXPECT_EQ(RefusalOf(setting), sentence);
    }
}

TEST_F(Overrides, LeaveTheSettingsOfAnotherCodecOut)
{
    m_request.codecs = {"CODEC_ID_MPEG4"};
    m_request.frameRate = Property::Ratio(25);
    const Property video = Apply({"video.profile=simple"})["$$STREAMS$$"][0];
    EXPECT_EQ(video["codec_id"].GetString(), "CODEC_ID_MPEG4");
    EXPECT_EQ(video["bitrate"].GetInt64(), 900000);
    EXPECT_EQ(video["frameRateRatio"].GetRatio(), Property::Ratio(25));
    EXPECT_EQ(video["profile"].GetString(), "simple");
    EXPECT_FALSE(video.ChildExists("preset"));
    EXPECT_THAT(m_notes, ElementsAre("The preset's profile, preset, PIXELFORMAT for video belong to "
                                     "CODEC_ID_H264, and are not used for CODEC_ID_MPEG4"));
}

TEST_F(Overrides, KeepTheSettingsOfTheSameCodec)
{
    m_request.codecs = {"CODEC_ID_H264"};
    EXPECT_EQ(Apply({})["$$STREAMS$$"][0]["profile"].GetString(), "high");
    EXPECT_THAT(m_notes, IsEmpty());
}

TEST_F(Overrides, RefuseWhatIsNotACodec)
{
    m_request.codecs = {"CODEC_ID_H246"};
    EXPECT_EQ(
        ExpectThrow<PlanException>([&] { Apply({}); }).description,
        "codec_id: expected a video or an audio codec, as CODEC_ID_H264, found 'CODEC_ID_H246'; did you "
        "mean 'CODEC_ID_H264' or 'CODEC_ID_H261' or 'CODEC_ID_H263'?");
}

TEST_F(Overrides, ComeIntoTheJob)
{
    JobRequest request;
    request.output = "out";
    request.settings = {ParseSetting("video.PIXELFORMAT=yuv422p"), ParseSetting("video.profile=high422"),
                        ParseSetting("container=matroska"), ParseSetting("metadata.title=T")};
    const PlannedJob job = PlanJob(MakeMediaFile({MakeVideoStream()}), MakePreset("mp4", kStreams), request);
    EXPECT_EQ(job.output, "out.mkv");
    EXPECT_EQ((*job.graph)[2]["container"].GetString(), "matroska");
    EXPECT_EQ((*job.graph)[2]["metadata"]["title"].GetString(), "T");
    EXPECT_EQ(job.graph->GetLink(3, 2)["PIXELFORMAT"].GetInt64(), PIX_FMT_YUV422P);
    EXPECT_EQ(job.graph->GetLink(3, 2)["profile"].GetString(), "high422");
}

TEST_F(Overrides, ThatAnEncoderDoesNotHaveAreRefusedWithTheirPlace)
{
    JobRequest request;
    request.output = "out";
    request.settings = {ParseSetting("video.codec.options.encode.report=1")};
    const Thrown thrown = ExpectThrow<PresetFileException>(
        [&] { PlanJob(MakeMediaFile({MakeVideoStream()}), MakePreset("mp4", kStreams), request); });
    EXPECT_EQ(thrown.description,
              "p.$$STREAMS$$.video.codec.options.encode.report: encoder libx264 does not have "
              "an option 'report'");
}

TEST_F(Overrides, NameAStreamByItsWholePosition)
{
    EXPECT_EQ(RefusalOf("audio[.bitrate=1"),
              "audio[.bitrate: expected the position of a stream, as audio[1]");
    EXPECT_EQ(RefusalOf("video.frameRateRatio=1/x"),
              "video.frameRateRatio: expected a rate as [30000, 1001], found '1/x'");
}

TEST_F(Overrides, ThatNobodyHasParsedAreCheckedAsWell)
{
    m_request.settings = {{"video.width", Property("", 0LL)}};
    EXPECT_EQ(ExpectThrow<PlanException>([&] { Apply({}); }).description,
              "video.width: expected an integer from 1 to 65535, found 0");
}

TEST_F(Overrides, OfTheCodecLeaveItsSettingsOut)
{
    const Property video = Apply({"video.pixelFormat=yuv420p10le", "video.codec.options.encode.crf=20",
                                  "video.codec_id=CODEC_ID_MPEG4"})["$$STREAMS$$"][0];
    EXPECT_EQ(video["codec_id"].GetString(), "CODEC_ID_MPEG4");
    EXPECT_FALSE(video.ChildExists("pixelFormat"));
    EXPECT_FALSE(video.ChildExists("codec.options.encode"));
    EXPECT_THAT(m_notes, ElementsAre("The preset's profile, preset, PIXELFORMAT, pixelFormat, "
                                     "codec.options.encode for video belong to CODEC_ID_H264, and are not "
                                     "used for CODEC_ID_MPEG4"));
}

TEST_F(Overrides, SayNothingOfAGroupWithoutOptions)
{
    Property preset = MakePreset("mp4", kStreams)->GetProperty();
    Property& video = preset["$$STREAMS$$"][0];
    for (const char* const key : {"profile", "preset", "PIXELFORMAT"})
    {
        video.RemoveChild(key);
    }
    video.SetChild("codec.options.encode");
    m_request.codecs = {"CODEC_ID_MPEG4"};
    EXPECT_FALSE(
        ApplyOverrides(preset, m_request, m_notes)["$$STREAMS$$"][0].ChildExists("codec.options.encode"));
    EXPECT_THAT(m_notes, IsEmpty());
}

TEST_F(Overrides, AreOfOneStreamOrOfAllOfItsType)
{
    const std::vector<SettingOverride> one = {ParseSetting("audio[1].bitrate=96000")};
    EXPECT_TRUE(IsOverridden(one, "audio", 1, "bitrate"));
    EXPECT_FALSE(IsOverridden(one, "audio", 0, "bitrate"));
    EXPECT_FALSE(IsOverridden(one, "audio", 1, "sample_rate"));
    EXPECT_FALSE(IsOverridden(one, "video", 1, "bitrate"));
    EXPECT_TRUE(IsOverridden({ParseSetting("audio.bitrate=96000")}, "audio", 7, "bitrate"));
}

} // namespace
