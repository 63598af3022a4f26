#include "Media/Planning/AudioChoice.h"

#include "Media/MediaException.h"
#include "Media/Planning/JobPlan.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/MediaFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;

MediaStream Audio(const std::string& language, Conf::ChannelLayout layout = Conf::CH_LAYOUT_STEREO)
{
    MediaStream stream = MakeAudioStream(layout);
    if (!language.empty())
    {
        SetTag(*stream.descriptor, "language", language);
    }
    return stream;
}

class AudioChoice : public testing::Test
{
protected:
    AudioChoice() { m_request.output = "out"; }

    PlannedJob Plan() const
    {
        return PlanJob(
            m_source,
            MakePreset("mp4",
                       R"({"video":{"codec_id":"CODEC_ID_H264"},"audio":{"codec_id":"CODEC_ID_AAC"}})"),
            m_request);
    }
    /// The source's streams in the output's order.
    std::vector<long long> Sources() const
    {
        const PlannedJob job = Plan();
        std::vector<Conf::NodeId> raws;
        job.graph->Inputs(2, raws);
        std::vector<long long> sources;
        for (const Conf::NodeId raw : raws)
        {
            sources.push_back((*job.graph)[raw]["id"].GetInt64());
        }
        return sources;
    }

    MediaFile m_source = MakeMediaFile(
        {MakeVideoStream(), Audio("eng"), Audio("ger"), Audio("deu", Conf::CH_LAYOUT_5POINT1), Audio("")});
    JobRequest m_request;
};

TEST_F(AudioChoice, TakesTheBestStreamOfEachLanguage)
{
    m_request.streams.audioLanguages = {"deu", "eng"};
    EXPECT_THAT(Sources(), ElementsAre(0, 3, 1));
    m_request.streams.audioLanguages = {"ENG", "ger", "ger"};
    EXPECT_THAT(Sources(), ElementsAre(0, 1, 3));
}

TEST_F(AudioChoice, TakesAllStreams)
{
    m_request.streams.allAudio = true;
    EXPECT_THAT(Sources(), ElementsAre(0, 1, 2, 3, 4));
    m_request.streams.audioLanguages = {"deu"};
    EXPECT_THAT(Sources(), ElementsAre(0, 2, 3));
}

TEST_F(AudioChoice, RefusesALanguageThatIsNotThere)
{
    m_request.streams.audioLanguages = {"deu", "fra"};
    EXPECT_EQ(ExpectThrow<PlanException>([&] { Plan(); }).description,
              "in.mkv: there is no audio in 'fra'; the file has eng, ger, deu, one that is not known");
    m_source = MakeMediaFile({MakeVideoStream()});
    EXPECT_EQ(ExpectThrow<PlanException>([&] { Plan(); }).description,
              "in.mkv: there is no audio in 'deu'; the file has none");
}

TEST_F(AudioChoice, IsNotMadeBesideIndexes)
{
    m_request.streams.chosen = {0, 1};
    m_request.streams.allAudio = true;
    EXPECT_EQ(ExpectThrow<PlanException>([&] { Plan(); }).description,
              "in.mkv: streams are chosen by their indexes, so audio cannot be chosen in another way");
}

TEST_F(AudioChoice, CopiesWhatTheContainerCanHold)
{
    m_request.streams.copied = {StreamKind::Video, StreamKind::Audio};
    m_request.streams.allAudio = true;
    const PlannedJob job = Plan();
    EXPECT_EQ(job.graph->GetLink(3, 2)["lossless"].GetInt64(), 1);
    EXPECT_EQ(job.graph->GetLink(7, 2)["lossless"].GetInt64(), 1);
    m_source = MakeMediaFile(
        {MakeVideoStream(), MakeAudioStream(Conf::CH_LAYOUT_STEREO, 48000, "CODEC_ID_PCM_S16LE")});
    EXPECT_EQ(ExpectThrow<PlanException>([&] { Plan(); }).description,
              "in.mkv: audio stream 1: cannot be copied, since the container mp4 cannot hold "
              "CODEC_ID_PCM_S16LE; it holds CODEC_ID_AAC, CODEC_ID_MP2 or CODEC_ID_MP3; CODEC_ID_PCM_S16LE "
              "goes into "
              "wav, avi or matroska");
}

TEST_F(AudioChoice, CopiesAllSubtitlesOrSaysWhichItCannot)
{
    m_source = MakeMediaFile({MakeVideoStream(), MakeSubtitleStream("CODEC_ID_MOV_TEXT")});
    m_request.streams.copied = {StreamKind::Subtitle};
    EXPECT_EQ(Plan().graph->GetLink(4, 2)["lossless"].GetInt64(), 1);
    m_source = MakeMediaFile({MakeVideoStream(), MakeSubtitleStream()});
    EXPECT_EQ(ExpectThrow<PlanException>([&] { Plan(); }).description,
              "in.mkv: subtitle stream 1: cannot be copied, since the container mp4 cannot hold "
              "CODEC_ID_SUBRIP; it "
              "holds CODEC_ID_DVD_SUBTITLE or CODEC_ID_MOV_TEXT; CODEC_ID_SUBRIP goes into matroska or srt");
}

TEST_F(AudioChoice, DoesNotSetAnythingOfACopy)
{
    m_request.streams.copied = {StreamKind::Video};
    m_request.settings = {ParseSetting("video.bitrate=100000")};
    EXPECT_EQ(ExpectThrow<PlanException>([&] { Plan(); }).description,
              "video.bitrate: video is copied, so it cannot be set");
    m_request.settings.clear();
    m_request.streams.maxSize = FrameLimit{640, 480};
    EXPECT_EQ(ExpectThrow<PlanException>([&] { Plan(); }).description,
              "the size: video is copied, so it cannot be set");
    m_request.streams.maxSize.reset();
    m_request.codecs = {"CODEC_ID_MPEG4"};
    EXPECT_EQ(ExpectThrow<PlanException>([&] { Plan(); }).description,
              "CODEC_ID_MPEG4: video is copied, so it cannot be set");
    m_request.codecs = {"CODEC_ID_AC3"};
    EXPECT_NO_THROW(Plan());
}

TEST_F(AudioChoice, PlansAPartOfTheSource)
{
    m_request.start = 1500000;
    m_request.end = 2500000;
    const PlannedJob job = Plan();
    EXPECT_EQ((*job.graph)[2]["start"].GetInt64(), 1500000);
    EXPECT_EQ((*job.graph)[2]["end"].GetInt64(), 2500000);
    m_request.end = 1500000;
    EXPECT_EQ(ExpectThrow<PlanException>([&] { Plan(); }).description,
              "end: expected a time after 1500000, where the target begins, found 1500000");
    m_request.end = 99000000;
    EXPECT_EQ(Plan().notes.front(),
              "'in.mkv' ends before the end that was asked for, so the output ends with it");
    m_request.start = 10000000;
    EXPECT_EQ(ExpectThrow<PlanException>([&] { Plan(); }).description,
              "in.mkv: start: lies behind the end of the file");
}

TEST_F(AudioChoice, DoesNotTakeANumberForALanguage)
{
    Core::Property metadata = m_source.streams[1].descriptor->GetMetadata();
    metadata.SetChildT("language", 7LL);
    m_source.streams[1].descriptor->SetMetadata(metadata);
    m_request.streams.audioLanguages = {"deu"};
    EXPECT_THAT(Sources(), ElementsAre(0, 3));
    m_request.streams.audioLanguages = {"eng"};
    EXPECT_EQ(ExpectThrow<PlanException>([this] { Plan(); }).description,
              "in.mkv: there is no audio in 'eng'; the file has one that is not known, ger, deu, one that is "
              "not known");
}

} // namespace
