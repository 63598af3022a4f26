#include "Media/Planning/StreamsLeftOut.h"

#include "Media/MediaException.h"
#include "Media/Planning/JobPlan.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/MediaFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Core::Property;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kMp3 = R"({"audio":{"codec_id":"CODEC_ID_MP3"}})";

PlannedJob PlanFor(const MediaFile& source, const std::string& container, const std::string& streams,
                   bool strict = false, std::vector<unsigned int> chosen = {})
{
    JobRequest request;
    request.output = "out";
    request.strict = strict;
    request.streams.chosen = std::move(chosen);
    return PlanJob(source, MakePreset(container, streams), request);
}

TEST(StreamsLeftOut, ArePicturesOfAFileOfSound)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeAudioStream()});
    EXPECT_THAT(PlanFor(source, "mp3", kMp3).notes,
                ElementsAre("in.mkv: video stream 0: (h264) is left out; the output file has no video"));
    const Thrown thrown = ExpectThrow<PlanException>([&] { PlanFor(source, "mp3", kMp3, true); });
    EXPECT_EQ(thrown.description, "in.mkv: video stream 0: (h264) is left out; the output file has no video");
}

TEST(StreamsLeftOut, AreSoundsOfAFileOfPictures)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeAudioStream(), MakeAudioStream()});
    EXPECT_THAT(
        PlanFor(source, "gif", R"({"video":{"codec_id":"CODEC_ID_GIF"}})").notes,
        ElementsAre("in.mkv: audio stream 1: (aac) and 1 more are left out; the output file has no audio"));
}

TEST(StreamsLeftOut, AreNamedOnceForAKindThatIsMissing)
{
    const MediaFile source = MakeMediaFile(
        {MakeVideoStream(), MakeAudioStream(), MakeVideoStream(), MakeVideoStream(), MakeSubtitleStream()});
    EXPECT_THAT(
        PlanFor(source, "mp3", kMp3).notes,
        ElementsAre("in.mkv: video stream 0: (h264) and 2 more are left out; the output file has no video",
                    "in.mkv: subtitle stream 4: (subrip) is left out; container mp3 cannot hold text "
                    "subtitles"));
}

TEST(StreamsLeftOut, AreNotCoversThatTheContainerKeeps)
{
    const MediaFile source = MakeMediaFile({MakeAttachedPicture(), MakeAudioStream()});
    EXPECT_THAT(PlanFor(source, "mp3", kMp3, true).notes, IsEmpty());
}

TEST(StreamsLeftOut, AreNotNamedWhereTheSoundWasChosen)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeAudioStream()});
    const PlannedJob job = PlanFor(source, "mp3", kMp3, true, {1});
    EXPECT_THAT(job.notes, IsEmpty());
    EXPECT_EQ((*job.graph)[1]["leftOut"], RecordOf(R"({"leftOut":{"":0}})"));
}

TEST(StreamsLeftOut, StandInTheJobOnlyWhereSomebodyChose)
{
    MediaStream data = MakeStream(StreamKind::Data, Conf::IFormatCodec::Create());
    data.codec = "klv";
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeAudioStream(), MakeAudioStream(),
                                            MakeSubtitleStream(), MakeAttachedPicture(), data});
    EXPECT_FALSE((*PlanFor(source, "mp3", kMp3).graph)[1].ChildExists("leftOut"));
    EXPECT_EQ((*PlanFor(source, "mp3", kMp3, false, {2}).graph)[1]["leftOut"],
              RecordOf(R"({"leftOut":[{"":0},{"":1},{"":3},{"":5}]})"));
    EXPECT_THAT(
        PlanFor(source, "mp3", kMp3, true, {2}).notes,
        ElementsAre(
            "in.mkv: audio stream 1: (aac) is left out; the output file has 1 audio stream",
            "in.mkv: subtitle stream 3: (subrip) is left out; container mp3 cannot hold text subtitles",
            "in.mkv: data stream 5: (klv) is left out; data streams are not converted"));
}

TEST(StreamsLeftOut, AreThoseOfOtherLanguagesWhereLanguagesAreChosen)
{
    MediaStream german = MakeAudioStream();
    SetTag(*german.descriptor, "language", "deu");
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeAudioStream(), german});
    JobRequest request;
    request.output = "out";
    request.streams.audioLanguages = {"deu"};
    // Nobody said that the pictures are to go.
    EXPECT_EQ((*PlanJob(source, MakePreset("mp3", kMp3), request).graph)[1]["leftOut"],
              RecordOf(R"({"leftOut":{"":1}})"));
    request.strict = true;
    const Thrown thrown =
        ExpectThrow<PlanException>([&] { PlanJob(source, MakePreset("mp3", kMp3), request); });
    EXPECT_EQ(thrown.description, "in.mkv: video stream 0: (h264) is left out; the output file has no video");
}

TEST(StreamsLeftOut, AreNamedBesideThoseThatSomebodyChose)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeAudioStream(), MakeVideoStream()});
    const Property codec = AudioRecord(R"("codec_id":"CODEC_ID_MP3")");
    const Property target("target");
    OutputFile output = {{&source}, "mp3", &target, {{0, 1, {}, &codec, false}}, {{0}}};
    const std::vector<Loss> losses = PlanContents(output).losses;
    ASSERT_EQ(losses.size(), 1U);
    EXPECT_EQ(losses[0].stream, 2U);
    EXPECT_EQ(losses[0].reason, "(h264) is left out; the output file has no video");
    output.leftOut = {{}, {0, 2}};
    EXPECT_EQ(PlanContents(output).losses.size(), 1U);
    output.leftOut = {{0, 2}};
    EXPECT_THAT(PlanContents(output).losses, IsEmpty());
}

TEST(StreamsLeftOut, AreBitmapsWhereTheContainerHasNoPlaceForThem)
{
    const MediaFile source = MakeMediaFile({MakeAudioStream(), MakeBitmapSubtitle()});
    EXPECT_THAT(
        PlanFor(source, "mp3", kMp3).notes,
        ElementsAre("in.mkv: subtitle stream 1: (dvd_subtitle) is left out; container mp3 cannot hold "
                    "bitmap subtitles"));
}

TEST(StreamsLeftOut, AreNotAttachmentsThatNobodyChose)
{
    MediaStream font = MakeStream(StreamKind::Attachment, Conf::IFormatCodec::Create());
    font.codec = "ttf";
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeAudioStream(), font});
    const PlannedJob job = PlanFor(source, "matroska", kMp3, true, {1});
    EXPECT_EQ((*job.graph)[1]["leftOut"], RecordOf(R"({"leftOut":{"":0}})"));
    EXPECT_EQ((*job.graph)[2]["attachments"], RecordOf(R"({"attachments":{"":2}})"));
    EXPECT_THAT(job.notes, IsEmpty());
}

TEST(StreamsLeftOut, AreNotCoversThatAreConvertedToVideo)
{
    const MediaFile source = MakeMediaFile({MakeAttachedPicture(), MakeAudioStream()});
    const PlannedJob job =
        PlanFor(source, "matroska", R"({"video":{"codec_id":"CODEC_ID_MPEG4"}})", true, {0});
    EXPECT_FALSE((*job.graph)[2].ChildExists("attachments"));
    EXPECT_THAT(job.notes, IsEmpty());
}

} // namespace
