#include "Media/Planning/PresetSupport.h"

#include "Media/MediaException.h"
#include "Media/Planning/JobPlan.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/MediaFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::IsEmpty;
using testing::SizeIs;

const std::string kVp8 = R"({"video":{"codec_id":"CODEC_ID_VP8"}})";

class PresetReasons : public testing::Test
{
protected:
    PresetReasons()
    {
        m_source = MakeMediaFile({MakeVideoStream()});
        m_request.output = "out";
    }

    PlannedJob Plan(const std::string& container, const std::string& streams)
    {
        return PlanJob(m_source, MakePreset(container, streams), m_request);
    }

    Thrown Refusal(const std::string& container, const std::string& streams)
    {
        return ExpectThrow<PlanException>([&] { Plan(container, streams); });
    }

    MediaFile m_source;
    JobRequest m_request;
};

TEST_F(PresetReasons, TellWhatTheContainerOfAPlannedJobHolds)
{
    const Thrown thrown = Refusal("mp4", kVp8);
    EXPECT_EQ(thrown.description,
              "in.mkv: video stream 0, p.$$STREAMS$$.video.codec_id: the container mp4 cannot hold "
              "CODEC_ID_VP8; it holds CODEC_ID_H264, CODEC_ID_VP9 or CODEC_ID_MPEG1VIDEO; CODEC_ID_VP8 goes "
              "into avi, matroska or mov");
    EXPECT_EQ(thrown.Get<MediaException::TagKey>(), "p.$$STREAMS$$.video.codec_id");
    EXPECT_EQ(thrown.Get<MediaException::TagFile>(), "in.mkv");
}

TEST_F(PresetReasons, TellWhatAPlannedJobCanEncode)
{
    EXPECT_EQ(Refusal("rm", R"({"video":{"codec_id":"CODEC_ID_RV40"}})").description,
              "in.mkv: video stream 0, p.$$STREAMS$$.video.codec_id: the installed FFmpeg does not have an "
              "encoder for CODEC_ID_RV40; for rm it can encode CODEC_ID_RV10 or CODEC_ID_RV20");
}

TEST_F(PresetReasons, TellOfAContainerThatIsNotWritten)
{
    EXPECT_EQ(Refusal("rtp", R"({"video":{"codec_id":"CODEC_ID_H264"}})").description,
              "p.container: the container 'rtp' is not written as one file");
}

TEST_F(PresetReasons, AreAboutTheContainerThatARequestSets)
{
    m_request.settings = {ParseSetting("container=webm")};
    EXPECT_NO_THROW(Plan("mp4", kVp8));
    m_request.settings = {ParseSetting("container=mp4")};
    EXPECT_THROW(Plan("webm", kVp8), PlanException);
}

TEST_F(PresetReasons, AreNotAboutStreamsThatTheSourceDoesNotHave)
{
    EXPECT_NO_THROW(Plan("mp4", R"({"video":{"codec_id":"CODEC_ID_MPEG4"},)"
                                R"("audio":{"codec_id":"CODEC_ID_WMAV2"}})"));
}

TEST_F(PresetReasons, AreNotAboutStreamsThatAreCopied)
{
    m_request.streams.copied = {StreamKind::Video};
    EXPECT_NO_THROW(Plan("mp4", kVp8));
}

TEST(UnsupportedSettings, AreFoundInAllStreams)
{
    const auto preset = MakePreset("mp4", R"([{"video":{"codec_id":"CODEC_ID_VP8"}},
        {"audio":{"codec_id":"CODEC_ID_AAC"}},{"audio":{"codec_id":"CODEC_ID_QCELP"}}])");
    const std::vector<UnsupportedSetting> found = FindUnsupportedSettings(preset->GetProperty(), "p.json");
    ASSERT_THAT(found, SizeIs(2));
    EXPECT_EQ(found[0].kind, JobFault::Container);
    EXPECT_EQ(found[0].place.Text(), "p.json: p.$$STREAMS$$.video.codec_id");
    EXPECT_EQ(found[1].kind, JobFault::Encoder);
    EXPECT_EQ(found[1].place.Text(), "p.json: p.$$STREAMS$$.audio.codec_id");
}

TEST(UnsupportedSettings, AreNotSoughtInWhatIsNotAPreset)
{
    EXPECT_THAT(FindUnsupportedSettings(Core::Property("p", 1LL)), IsEmpty());
    Core::Property preset("p");
    EXPECT_THAT(FindUnsupportedSettings(preset), IsEmpty());
    preset.SetChildT("container", std::string("mp4"));
    EXPECT_THAT(FindUnsupportedSettings(preset), IsEmpty());
    preset.SetChildT("$$STREAMS$$", 1LL);
    EXPECT_THAT(FindUnsupportedSettings(preset), IsEmpty());
    preset.SetChild("$$STREAMS$$").SetChildT("video", 1LL);
    preset["$$STREAMS$$"].SetChild("audio").SetChildT("codec_id", 1LL);
    EXPECT_THAT(FindUnsupportedSettings(preset), IsEmpty());
}

} // namespace
