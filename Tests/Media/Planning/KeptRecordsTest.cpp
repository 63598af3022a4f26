#include "Media/Planning/OutputContents.h"

#include "Media/Planning/JobPlan.h"
#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/MediaFixtures.h"

#include <gmock/gmock.h>

#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Core::Property;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kMpeg4AndMp2 =
    R"({"video":{"codec_id":"CODEC_ID_MPEG4"},"audio":{"codec_id":"CODEC_ID_MP2"}})";
const std::string kMpeg4Preset = R"({"video":{"codec_id":"CODEC_ID_MPEG4"}})";

PlannedJob PlanKept(const MediaFile& source, const std::string& container, const std::string& streams)
{
    JobRequest request;
    request.output = "out";
    return PlanJob(source, MakePreset(container, streams), request);
}

/// A file of a video and a sound, of which the sound has a title.
MediaFile WithTitledSound()
{
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeAudioStream()});
    SetTag(*source.streams[1].descriptor, "TITLE", "Commentary");
    return source;
}

TEST(KeptRecords, HaveTheTagsOfTheirStreamsWhereTheContainerHoldsThem)
{
    const PlannedJob matroska = PlanKept(WithTitledSound(), "matroska", kMpeg4AndMp2);
    EXPECT_EQ(matroska.graph->GetLink(4, 2)["metadata"]["title"].GetString(), "Commentary");
    EXPECT_FALSE((*matroska.graph)[2]["metadata"].ChildExists("title"));
    EXPECT_THAT(matroska.notes, IsEmpty());
}

TEST(KeptRecords, LeaveOutTheTagsOfStreamsThatTheContainerDrops)
{
    const PlannedJob job = PlanKept(WithTitledSound(), "mpegts", kMpeg4AndMp2);
    EXPECT_FALSE(job.graph->GetLink(4, 2)["metadata"].ChildExists("title"));
    EXPECT_THAT(job.notes,
                ElementsAre("in.mkv: audio stream 1: container mpegts cannot hold the tags 'title'"));
}

TEST(KeptRecords, DoNotGetTheTimecodeOfAFileWithoutItsVideo)
{
    MediaFile source = MakeMediaFile({MakeAudioStream(), MakeAttachedPicture()});
    source.timecode = "01:02:03:04";
    const PlannedJob job = PlanKept(source, "mov", R"({"audio":{"codec_id":"CODEC_ID_AAC"}})");
    EXPECT_FALSE(job.graph->GetLink(3, 2)["metadata"].ChildExists("timecode"));
}

TEST(KeptRecords, OfACopiedVideoHaveItsTimecode)
{
    MediaFile source = MakeMediaFile({MakeVideoStream()});
    source.timecode = "01:02:03:04";
    const PlannedJob job = PlanKept(source, "mov", R"({"video":{"codec_id":"CODEC_ID_H264","lossless":1}})");
    EXPECT_EQ(job.graph->GetLink(3, 2)["metadata"]["timecode"].GetString(), "01:02:03:04");
}

TEST(KeptRecords, LeaveOutChaptersWhoseTitlesAreTooLong)
{
    MediaFile source = MakeMediaFile({MakeVideoStream()});
    source.chapters = {{0, 5000000, std::string(100000, 'x')}, {5000000, 10000000, "Two"}};
    const PlannedJob job = PlanKept(source, "mp4", kMpeg4Preset);
    EXPECT_FALSE((*job.graph)[2].ChildExists("chapters"));
    EXPECT_THAT(job.notes, ElementsAre("in.mkv: its 2 chapters are left out; their titles are too long"));
}

TEST(KeptRecords, NameTitlesOfChaptersThatTheContainerCuts)
{
    MediaFile source = MakeMediaFile({MakeVideoStream()});
    source.chapters = {{0, 10000000, std::string(70000, 'x')}};
    const PlannedJob job = PlanKept(source, "mp4", kMpeg4Preset);
    EXPECT_EQ((*job.graph)[2]["chapters"].Count(), 1U);
    EXPECT_THAT(job.notes, ElementsAre("in.mkv: container mp4 cannot hold the titles of chapters"));
}

TEST(KeptRecords, LeaveOutCoversThatNoPlayerShows)
{
    MediaStream cover = MakeAttachedPicture();
    cover.codec = "bmp";
    const PlannedJob job = PlanKept(MakeMediaFile({MakeVideoStream(), cover}), "mp4", kMpeg4Preset);
    EXPECT_FALSE((*job.graph)[2].ChildExists("attachments"));
    EXPECT_THAT(
        job.notes,
        ElementsAre(
            "in.mkv: video stream 1: (cover, bmp) is left out; container mp4 cannot hold such a cover"));
}

TEST(KeptRecords, SayNothingOfTextThatMakesTheChapters)
{
    MediaStream text = MakeStream(StreamKind::Data, Conf::IFormatCodec::Create());
    text.codec = "bin_data";
    MediaFile source = MakeMediaFile({MakeVideoStream(), text});
    EXPECT_THAT(PlanKept(source, "mp4", kMpeg4Preset).notes,
                ElementsAre("in.mkv: data stream 1: (bin_data) is left out; data streams are not converted"));
    source.chapters = {{0, 10000000, "One"}};
    EXPECT_THAT(PlanKept(source, "mp4", kMpeg4Preset).notes, IsEmpty());
}

TEST(KeptRecords, NameTheStreamsWithoutALanguage)
{
    MediaStream second = MakeAudioStream();
    SetTag(*second.descriptor, "language", "und");
    EXPECT_THAT(
        PlanKept(MakeMediaFile({MakeVideoStream(), MakeAudioStream(), second}), "mp4", kMpeg4AndMp2).notes,
        ElementsAre("in.mkv: audio stream 2: (aac) is left out; the output file has 1 audio stream"));
}

TEST(KeptRecords, KeepAPlaceWithOtherDigits)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream()});
    SetTag(*source.descriptor, "location", "+48.1+011.5/");
    const PlannedJob job = PlanKept(source, "mov", kMpeg4Preset);
    EXPECT_EQ((*job.graph)[2]["metadata"]["location"].GetString(), "+48.1+011.5/");
    EXPECT_THAT(job.notes, IsEmpty());
}

TEST(KeptRecords, KeepAPlaceThatTheContainerRounds)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream()});
    SetTag(*source.descriptor, "location", "+48.1+011.5/");
    const PlannedJob job = PlanKept(source, "3gp", kMpeg4Preset);
    EXPECT_EQ((*job.graph)[2]["metadata"]["location"].GetString(), "+48.1+011.5/");
    EXPECT_THAT(job.notes, IsEmpty());
}

TEST(KeptRecords, HaveTheTagsOfTheFileBesideThoseOfItsStreams)
{
    const MediaFile source = WithTitledSound();
    SetTag(*source.descriptor, "TITLE", "The film");
    SetTag(*source.streams[1].descriptor, "artist", "Somebody");
    const PlannedJob job = PlanKept(source, "matroska", kMpeg4AndMp2);
    EXPECT_EQ((*job.graph)[2]["metadata"]["title"].GetString(), "The film");
    EXPECT_EQ(job.graph->GetLink(4, 2)["metadata"]["title"].GetString(), "Commentary");
    EXPECT_EQ(job.graph->GetLink(4, 2)["metadata"]["artist"].GetString(), "Somebody");
    EXPECT_THAT(job.notes, IsEmpty());
}

TEST(KeptRecords, HaveTheTimecodeThatTheContainerKeepsForTheWholeFile)
{
    MediaFile source = MakeMediaFile({MakeVideoStream()});
    source.timecode = "01:02:03:04";
    const PlannedJob job = PlanKept(source, "mxf", R"({"video":{"codec_id":"CODEC_ID_MPEG2VIDEO"}})");
    EXPECT_EQ(job.graph->GetLink(3, 2)["metadata"]["timecode"].GetString(), "01:02:03:04");
}

TEST(KeptRecords, DoNotGiveACoverThatIsConvertedATimecode)
{
    MediaFile source = MakeMediaFile({MakeAttachedPicture(), MakeVideoStream()});
    source.timecode = "01:02:03:04";
    JobRequest request;
    request.output = "out";
    request.streams.chosen = {0};
    const PlannedJob job = PlanJob(source, MakePreset("mov", kMpeg4Preset), request);
    EXPECT_FALSE(job.graph->GetLink(3, 2)["metadata"].ChildExists("timecode"));
    EXPECT_FALSE((*job.graph)[2].ChildExists("attachments"));
    EXPECT_THAT(
        job.notes,
        ElementsAre("in.mkv: video stream 1: (h264) is left out; the output file has 1 video stream"));
}

TEST(KeptRecords, LeaveOutATimecodeThatNoArgumentCanHold)
{
    MediaFile source = MakeMediaFile({MakeVideoStream()});
    source.timecode = std::string("01:02\0", 6);
    EXPECT_FALSE(
        PlanKept(source, "mov", kMpeg4Preset).graph->GetLink(3, 2)["metadata"].ChildExists("timecode"));
}

TEST(KeptRecords, NameALanguageThatTheContainerCannotWrite)
{
    const MediaFile source = MakeMediaFile({MakeAudioStream()});
    SetTag(*source.streams[0].descriptor, "language", "bavarian");
    const PlannedJob job = PlanKept(source, "mov", R"({"audio":{"codec_id":"CODEC_ID_AAC"}})");
    EXPECT_THAT(job.notes,
                ElementsAre("in.mkv: audio stream 0: container mov cannot hold its language, bavarian"));
}

TEST(KeptRecords, OfSubtitlesHaveTheirTitles)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeSubtitleStream()});
    SetTag(*source.streams[1].descriptor, "title", "For the deaf");
    JobRequest request;
    request.output = "out";
    request.streams.copied = {StreamKind::Subtitle};
    const PlannedJob job = PlanJob(source, MakePreset("matroska", kMpeg4Preset), request);
    EXPECT_EQ(job.graph->GetLink(4, 2)["metadata"]["title"].GetString(), "For the deaf");
    EXPECT_THAT(job.notes, IsEmpty());
}

} // namespace
