#include "Media/Planning/JobPlan.h"

#include "Media/MediaException.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/MediaFixtures.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Conf::IFormatCodec;
using Conf::IFormatCodecVideo;
using Core::Property;
using testing::ElementsAre;
using testing::IsEmpty;

/// What becomes of requests that go beyond the preset.
class RequestedJob : public testing::Test
{
protected:
    RequestedJob() { m_request.output = "out"; }

    PlannedJob Plan() const { return PlanJob(m_source, MakePreset(m_container, m_streams), m_request); }
    std::optional<std::string> Refusal() const
    {
        return ExpectThrow<PlanException>([this] { Plan(); }).description;
    }

    JobRequest m_request;
    std::string m_container = "matroska";
    std::string m_streams = R"({"video":{"codec_id":"CODEC_ID_MPEG4"},"audio":{"codec_id":"CODEC_ID_MP2"}})";
    MediaFile m_source = MakeMediaFile({MakeVideoStream(), MakeAudioStream(), MakeSubtitleStream()});
};

TEST_F(RequestedJob, RefusesSettingsOfWhatIsCopiedAlone)
{
    m_request.streams.copied = {StreamKind::Video};
    m_request.settings = {ParseSetting("audio.bitrate=192000")};
    m_request.codecs = {"CODEC_ID_AC3"};
    EXPECT_EQ(Plan().graph->GetLink(4, 2)[IFormatCodec::TAG_CODEC_ID].GetString(), "CODEC_ID_AC3");
    m_request.codecs = {"CODEC_ID_H264"};
    EXPECT_EQ(Refusal(), "CODEC_ID_H264: video is copied, so it cannot be set");
    m_request.settings = {ParseSetting("video.bitrate=192000")};
    EXPECT_EQ(Refusal(), "video.bitrate: video is copied, so it cannot be set");
}

TEST_F(RequestedJob, RefusesAnotherRateOrSizeOfAVideoThatIsCopied)
{
    m_request.streams.copied = {StreamKind::Audio};
    m_request.frameRate = Property::Ratio(50);
    m_request.streams.maxSize = FrameLimit{640, 360};
    const Property video = Plan().graph->GetLink(3, 2);
    EXPECT_EQ(video[IFormatCodecVideo::TAG_FPS].GetRatio(), Property::Ratio(50));
    EXPECT_EQ(video[IFormatCodecVideo::TAG_WIDTH].GetInt64(), 640);
    m_request.streams.copied = {StreamKind::Video};
    EXPECT_EQ(Refusal(), "frameRateRatio: video is copied, so it cannot be set");
    m_request.frameRate = std::nullopt;
    EXPECT_EQ(Refusal(), "the size: video is copied, so it cannot be set");
}

TEST_F(RequestedJob, ChecksAFrameRateByTheRulesOfPresets)
{
    m_request.frameRate = Property::Ratio(-1);
    EXPECT_EQ(Refusal(), "video.frameRateRatio: expected a rate as [30000, 1001], found -1/1");
}

TEST_F(RequestedJob, NotesWhereAVideoThatIsCopiedBegins)
{
    m_request.streams.copied = {StreamKind::Video, StreamKind::Audio, StreamKind::Subtitle};
    EXPECT_THAT(Plan().notes, IsEmpty());
    m_request.start = 0;
    EXPECT_THAT(Plan().notes, IsEmpty());
    m_request.start = 1000000;
    EXPECT_THAT(Plan().notes, ElementsAre("Video stream 0 is copied, so the output begins with the last key "
                                          "frame before its start"));
}

TEST_F(RequestedJob, DoesNotJudgeAPartByALengthThatIsEstimated)
{
    m_request.start = 20000000;
    EXPECT_EQ(Refusal(), "in.mkv: start: lies behind the end of the file");
    m_source.durationIsEstimated = true;
    EXPECT_THAT(Plan().notes, IsEmpty());
    m_source.duration = std::nullopt;
    m_source.durationIsEstimated = false;
    EXPECT_THAT(Plan().notes, IsEmpty());
}

TEST_F(RequestedJob, LeavesOutASubtitleThatIsDrawnButNoSoundThatIsMixed)
{
    m_source.streams.push_back(MakeAudioStream());
    m_source.streams.back().index = 3;
    m_streams = R"([{"video":{"codec_id":"CODEC_ID_MPEG4"}},{"audio":{"codec_id":"CODEC_ID_MP2"}},
                    {"audio":{"codec_id":"CODEC_ID_MP2"}}])";
    m_request.merges = {{0, 2}, {1, 3}};
    const PlannedJob job = Plan();
    std::vector<Conf::NodeId> raws;
    job.graph->Inputs(2, raws);
    EXPECT_EQ(raws.size(), 3U);
    EXPECT_THAT(
        job.notes,
        ElementsAre("Subtitle stream 2 will be drawn into the video, so it will not be kept beside it"));
}

TEST_F(RequestedJob, RefusesAMergeThatIsThereTwice)
{
    m_request.merges = {{0, 2}, {0, 2}};
    EXPECT_EQ(Refusal(), "in.mkv: subtitle stream 2: is merged twice into stream 0");
}

TEST_F(RequestedJob, RefusesToMergeAnythingIntoASubtitle)
{
    m_request.streams.chosen = {0, 2};
    m_request.merges = {{2, 1}};
    EXPECT_EQ(Refusal(), "in.mkv: audio stream 1: cannot be merged into subtitle stream 2");
}

TEST_F(RequestedJob, RefusesToCopyWhatFFmpegDoesNotKnow)
{
    m_source.streams[1].codec = "none of FFmpeg's";
    m_request.streams.copied = {StreamKind::Audio};
    EXPECT_EQ(Refusal(), "in.mkv: audio stream 1: cannot be copied, since the container matroska cannot hold "
                         "none of FFmpeg's");
}

TEST_F(RequestedJob, ConvertsForADvdWithoutSettingsOfThePreset)
{
    m_streams = R"({"audio":{"codec_id":"CODEC_ID_MP2"}})";
    m_request.streams.chosen = {0};
    m_request.streams.losslessDvd = true;
    EXPECT_EQ(Plan().graph->GetLink(3, 2)[IFormatCodec::TAG_CODEC_ID].GetString(), "CODEC_ID_MPEG2VIDEO");
}

TEST_F(RequestedJob, DoesNotTakeThePresetsBitmapsForTexts)
{
    m_streams = R"({"video":{"codec_id":"CODEC_ID_MPEG4"},
                    "subtitles_video":{"codec_id":"CODEC_ID_DVD_SUBTITLE"}})";
    EXPECT_EQ(Plan().graph->GetLink(4, 2)[IFormatCodec::TAG_CODEC_ID].GetString(), "CODEC_ID_SUBRIP");
}

TEST_F(RequestedJob, LeavesOutASubtitleWhoseCodecHasNoIdentifier)
{
    m_source.streams[2] = MakeBitmapSubtitle();
    m_source.streams[2].index = 2;
    RemoveValue(m_source.streams[2], IFormatCodec::TAG_CODEC_ID);
    std::vector<Conf::NodeId> raws;
    Plan().graph->Inputs(2, raws);
    EXPECT_EQ(raws.size(), 2U);
}

TEST_F(RequestedJob, KeepsChannelsInTheArrangementThatTheEncoderHas)
{
    const auto layout = [this](const std::string& codec, const std::string& wanted) {
        m_source = MakeMediaFile({MakeAudioStream(Conf::CH_LAYOUT_5POINT1)});
        m_streams = R"({"audio":{"codec_id":")" + codec + R"(","layout":")" + wanted + R"("}})";
        return Plan().graph->GetLink(3, 2)["layout"].GetString();
    };
    EXPECT_EQ(layout("CODEC_ID_AAC", "5POINT1"), "5POINT1_BACK");
    EXPECT_EQ(layout("CODEC_ID_AAC", "5POINT1_BACK"), "5POINT1_BACK");
    m_streams = R"({"audio":{"codec_id":"CODEC_ID_MP3","layout":"5POINT1_BACK"}})";
    EXPECT_EQ(Refusal(), "in.mkv: audio stream 0, p.$$STREAMS$$.audio.layout: encoder libmp3lame does not "
                         "support channel layout 5POINT1_BACK");
}

TEST_F(RequestedJob, LimitsTheSizeOfMpeg2ByItsAspectRatios)
{
    m_streams = R"({"video":{"codec_id":"CODEC_ID_MPEG2VIDEO"}})";
    m_request.streams.maxSize = FrameLimit{640, 360};
    const Property video = Plan().graph->GetLink(3, 2);
    EXPECT_EQ(video[IFormatCodecVideo::TAG_WIDTH].GetInt64(), 640);
    EXPECT_EQ(video[IFormatCodecVideo::TAG_HEIGHT].GetInt64(), 360);
}

TEST_F(RequestedJob, DoesNotTryALittleBitrateOfWhatHasNone)
{
    m_streams = R"({"audio":{"codec_id":"CODEC_ID_FLAC","bitrate":10}})";
    EXPECT_EQ(Plan().graph->GetLink(3, 2)[IFormatCodec::TAG_BITRATE].GetInt64(), 10);
}

} // namespace
