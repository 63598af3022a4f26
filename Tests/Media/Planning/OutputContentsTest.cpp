#include "Media/Planning/OutputContents.h"

#include "Media/MediaException.h"
#include "Media/Planning/CoverTag.h"
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
using testing::IsSupersetOf;

const std::string kVideoAndAudio =
    R"({"video":{"codec_id":"CODEC_ID_H264"},"audio":{"codec_id":"CODEC_ID_AAC"}})";
const std::string kSound = R"({"audio":{"codec_id":"CODEC_ID_AAC"}})";

PlannedJob Plan(const MediaFile& source, const std::string& container, const std::string& streams,
                bool strict = false)
{
    JobRequest request;
    request.output = "out";
    request.strict = strict;
    return PlanJob(source, MakePreset(container, streams), request);
}

/// The metadata of the planned target.
Property TargetTags(const PlannedJob& job) { return (*job.graph)[2]["metadata"]; }

MediaStream Spoken(const std::string& language)
{
    MediaStream stream = MakeAudioStream();
    SetTag(*stream.descriptor, "language", language);
    return stream;
}

TEST(OutputContents, KeepsTheTagsThatTheContainerHoldsAndNamesTheOthers)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeAudioStream()});
    SetTag(*source.descriptor, "TITLE", "A title");
    SetTag(*source.descriptor, "SYNOPSIS", "A synopsis");
    SetTag(*source.descriptor, "MY_OWN_KEY", "Something");
    SetTag(*source.descriptor, "major_brand", "isom");
    const PlannedJob mp4 = Plan(source, "mp4", kVideoAndAudio);
    EXPECT_EQ(TargetTags(mp4), RecordOf(R"({"metadata":{"title":"A title","SYNOPSIS":"A synopsis"}})"));
    EXPECT_THAT(mp4.notes, ElementsAre("in.mkv: container mp4 cannot hold the tags 'MY_OWN_KEY'"));
    const PlannedJob matroska = Plan(source, "matroska", kVideoAndAudio);
    EXPECT_EQ(
        TargetTags(matroska),
        RecordOf(R"({"metadata":{"title":"A title","SYNOPSIS":"A synopsis","MY_OWN_KEY":"Something"}})"));
    EXPECT_THAT(matroska.notes, IsEmpty());
}

TEST(OutputContents, KeepsOneOfTwoTagsThatShareAPlace)
{
    const MediaFile source = MakeMediaFile({MakeAudioStream()});
    SetTag(*source.descriptor, "comment", "A comment");
    SetTag(*source.descriptor, "description", "A description");
    const PlannedJob job = Plan(source, "flac", R"({"audio":{"codec_id":"CODEC_ID_FLAC"}})");
    EXPECT_EQ(TargetTags(job), RecordOf(R"({"metadata":{"comment":"A comment"}})"));
    EXPECT_THAT(job.notes, ElementsAre("in.mkv: container flac cannot hold the tags 'description'"));
}

TEST(OutputContents, TakesTheTagsOfAnOggFilesStreamForThoseOfTheFile)
{
    MediaFile source = MakeMediaFile({MakeAudioStream()}, "in.ogg");
    source.demuxer = "ogg";
    SetTag(*source.streams[0].descriptor, "TITLE", "A title");
    SetTag(*source.streams[0].descriptor, "MY_OWN_KEY", "Something");
    const PlannedJob job = Plan(source, "mp3", R"({"audio":{"codec_id":"CODEC_ID_MP3"}})");
    EXPECT_EQ(TargetTags(job), RecordOf(R"({"metadata":{"title":"A title","MY_OWN_KEY":"Something"}})"));
    EXPECT_THAT(job.notes, IsEmpty());
}

TEST(OutputContents, NamesTheStreamsThatAreLeftOut)
{
    MediaStream data = MakeStream(StreamKind::Data, Conf::IFormatCodec::Create());
    data.codec = "klv";
    const MediaFile source = MakeMediaFile(
        {MakeVideoStream(), Spoken("deu"), Spoken("eng"), MakeBitmapSubtitle("CODEC_ID_DVB_TELETEXT"), data});
    EXPECT_THAT(
        Plan(source, "webm",
             R"({"video":{"codec_id":"CODEC_ID_VP8"},"audio":{"codec_id":"CODEC_ID_VORBIS"}})")
            .notes,
        ElementsAre("in.mkv: audio stream 2: (aac, eng) is left out; the output file has 1 audio stream",
                    "in.mkv: subtitle stream 3: (dvb_teletext) is left out; container webm cannot hold "
                    "dvb_teletext",
                    "in.mkv: data stream 4: (klv) is left out; data streams are not converted"));
    // What else it names does not matter here.
    EXPECT_THAT(
        Plan(source, "mp3", R"({"audio":{"codec_id":"CODEC_ID_MP3"}})").notes,
        IsSupersetOf({"in.mkv: video stream 0: (h264) is left out; the output file has no video",
                      "in.mkv: audio stream 2: (aac, eng) is left out; the output file has 1 audio stream"}));
}

TEST(OutputContents, AStrictRequestRefusesALoss)
{
    const MediaFile source = MakeMediaFile({Spoken("deu"), Spoken("eng")});
    const Thrown thrown = ExpectThrow<PlanException>([&] { Plan(source, "mp4", kSound, true); });
    EXPECT_EQ(thrown.description,
              "in.mkv: audio stream 1: (aac, eng) is left out; the output file has 1 audio stream");
    EXPECT_EQ(thrown.Get<MediaException::TagFile>(), "in.mkv");
    EXPECT_EQ(thrown.Get<MediaException::TagStream>(), 1U);
    EXPECT_THAT(Plan(MakeMediaFile({Spoken("deu")}), "mp4", kSound, true).notes, IsEmpty());
}

TEST(OutputContents, AStrictRequestMayLeaveOutWhatItDoesNotChoose)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream(), Spoken("deu"), Spoken("eng")});
    JobRequest request;
    request.output = "out";
    request.strict = true;
    request.streams.chosen = {0, 2};
    EXPECT_THAT(PlanJob(source, MakePreset("mp4", kVideoAndAudio), request).notes,
                ElementsAre("in.mkv: audio stream 1: (aac, deu) is left out; the output file has 1 audio "
                            "stream"));
}

TEST(OutputContents, WritesACoverAsATagWhereTheContainerHoldsItSo)
{
    MediaStream cover = MakeAttachedPicture();
    const auto plan = [&cover](bool twice) {
        std::vector<MediaStream> streams = {Spoken(""), cover};
        streams.insert(streams.end(), twice ? 1 : 0, cover);
        return Plan(MakeMediaFile(streams), "ogg", R"({"audio":{"codec_id":"CODEC_ID_VORBIS"}})").notes;
    };
    EXPECT_THAT(plan(false), ElementsAre("in.mkv: video stream 1: (cover, png) is left out; container ogg "
                                         "cannot hold covers of more than 96000 bytes"));
    cover.picture = "\x89PNG\r\n\x1a\n";
    EXPECT_THAT(plan(false), IsEmpty());
    EXPECT_THAT(plan(true), ElementsAre("in.mkv: video stream 2: (cover, png) is left out; container ogg "
                                        "cannot hold more than one cover"));
}

TEST(OutputContents, WritesALanguageInTheCodeThatTheContainerKnows)
{
    const MediaFile german = MakeMediaFile({Spoken("deu")});
    EXPECT_EQ(Plan(german, "mp4", kSound).graph->GetLink(3, 2)["metadata"]["language"].GetString(), "deu");
    EXPECT_EQ(Plan(german, "mov", kSound).graph->GetLink(3, 2)["metadata"]["language"].GetString(), "ger");
    const MediaFile french = MakeMediaFile({Spoken("fre")});
    EXPECT_EQ(Plan(french, "mov", kSound).graph->GetLink(3, 2)["metadata"]["language"].GetString(), "fra");
    EXPECT_THAT(Plan(MakeMediaFile({Spoken("gsw")}), "mov", kSound).notes,
                ElementsAre("in.mkv: audio stream 0: container mov cannot hold its language, gsw"));
}

TEST(OutputContents, AsksForTheLanguageOfEachStreamByItself)
{
    MediaFile source = MakeMediaFile({MakeVideoStream(), Spoken("deu")});
    EXPECT_THAT(Plan(source, "mpegts", kVideoAndAudio).notes, IsEmpty());
    SetTag(*source.streams[0].descriptor, "language", "deu");
    EXPECT_THAT(Plan(source, "mpegts", kVideoAndAudio).notes,
                ElementsAre("in.mkv: video stream 0: container mpegts cannot hold its language, deu"));
}

TEST(OutputContents, WritesChaptersWhereTheContainerHoldsThem)
{
    MediaFile source = MakeMediaFile({MakeVideoStream()});
    source.chapters = {{0, 4000000, "One"}, {4000000, 10000000, ""}};
    const std::string video = R"({"video":{"codec_id":"CODEC_ID_MPEG4"}})";
    const PlannedJob mp4 = Plan(source, "mp4", video);
    EXPECT_EQ((*mp4.graph)[2]["chapters"],
              RecordOf(R"({"chapters":[{"":{"start":0,"end":4000000,"title":"One"}},)"
                       R"({"":{"start":4000000,"end":10000000,"title":""}}]})"));
    EXPECT_THAT(mp4.notes, IsEmpty());
    const PlannedJob avi = Plan(source, "avi", video);
    EXPECT_FALSE((*avi.graph)[2].ChildExists("chapters"));
    EXPECT_THAT(avi.notes, ElementsAre("in.mkv: container avi cannot hold chapters"));
}

TEST(OutputContents, ListsCoversAndAttachmentsWhereTheContainerHoldsThem)
{
    MediaStream font = MakeStream(StreamKind::Attachment, Conf::IFormatCodec::Create());
    font.codec = "ttf";
    font.fileName = "a font.ttf";
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeAttachedPicture(), font});
    const std::string video = R"({"video":{"codec_id":"CODEC_ID_MPEG4"}})";
    const PlannedJob matroska = Plan(source, "matroska", video);
    EXPECT_EQ((*matroska.graph)[2]["attachments"], RecordOf(R"({"attachments":[{"":1},{"":2}]})"));
    EXPECT_THAT(matroska.notes, IsEmpty());
    const PlannedJob mp4 = Plan(source, "mp4", video);
    EXPECT_EQ((*mp4.graph)[2]["attachments"], RecordOf(R"({"attachments":{"":1}})"));
    EXPECT_THAT(mp4.notes,
                ElementsAre("in.mkv: attachment stream 2: (ttf, 'a font.ttf') is left out; the job "
                            "does not have it, or container mp4 cannot hold it"));
}

TEST(OutputContents, KeepsATimecodeOnlyAtItsFrameRate)
{
    MediaFile source = MakeMediaFile({MakeVideoStream()});
    source.timecode = "01:02:03:04";
    const auto plan = [&source](const std::string& container, const std::string& more) {
        return Plan(source, container, R"({"video":{"codec_id":"CODEC_ID_MPEG4")" + more + "}}");
    };
    const PlannedJob mov = plan("mov", "");
    EXPECT_EQ(mov.graph->GetLink(3, 2)["metadata"]["timecode"].GetString(), "01:02:03:04");
    EXPECT_THAT(mov.notes, IsEmpty());
    const PlannedJob slow = plan("mov", R"(,"frameRateRatio":[12,1])");
    EXPECT_FALSE(slow.graph->GetLink(3, 2)["metadata"].ChildExists("timecode"));
    EXPECT_THAT(slow.notes, ElementsAre("in.mkv: video stream 0: its timecode, 01:02:03:04, is left out; the "
                                        "job does not have it, the frame rate changes, or it begins later"));
    EXPECT_THAT(plan("avi", "").notes,
                ElementsAre("in.mkv: video stream 0: container avi cannot hold its timecode, 01:02:03:04"));
}

TEST(OutputContents, LeavesOutTheLoudnessOfOtherSound)
{
    MediaStream six = MakeAudioStream(Conf::CH_LAYOUT_5POINT1);
    six.channels = 6;
    const MediaFile source = MakeMediaFile({six});
    SetTag(*source.descriptor, "REPLAYGAIN_TRACK_GAIN", "-3.00 dB");
    const PlannedJob job = Plan(source, "mp3", R"({"audio":{"codec_id":"CODEC_ID_MP3"}})");
    EXPECT_EQ(TargetTags(job).Count(), 0U);
    EXPECT_THAT(job.notes,
                ElementsAre("in.mkv: audio stream 0: its 6 channels become 2",
                            "in.mkv: the channels change, so these are left out: 'REPLAYGAIN_TRACK_GAIN'"));
    const MediaFile stereo = MakeMediaFile({MakeAudioStream()});
    SetTag(*stereo.descriptor, "REPLAYGAIN_TRACK_GAIN", "-3.00 dB");
    EXPECT_EQ(TargetTags(Plan(stereo, "mp3", R"({"audio":{"codec_id":"CODEC_ID_MP3"}})")).Count(), 1U);
}

TEST(OutputContents, KeepsChannelsThatTheVocabularyHasNoLayoutFor)
{
    MediaStream sixteen = MakeAudioStream();
    RemoveValue(sixteen, "layout");
    sixteen.channels = 16;
    const MediaFile source = MakeMediaFile({sixteen});
    const PlannedJob wav = Plan(source, "wav", R"({"audio":{"codec_id":"CODEC_ID_PCM_S16LE"}})");
    EXPECT_FALSE(wav.graph->GetLink(3, 2).ChildExists("layout"));
    EXPECT_THAT(wav.notes, IsEmpty());
    EXPECT_THAT(Plan(source, "mp3", R"({"audio":{"codec_id":"CODEC_ID_MP3"}})").notes,
                ElementsAre("in.mkv: audio stream 0: its 16 channels become 1"));
}

TEST(OutputContents, FlacGetsTheBitsOfAFloatingPointSource)
{
    const std::string flac = R"({"audio":{"codec_id":"CODEC_ID_FLAC"}})";
    const auto formatFrom = [&flac](const MediaStream& stream) {
        return Plan(MakeMediaFile({stream}), "flac", flac).graph->GetLink(3, 2)["sample_format"].GetString();
    };
    EXPECT_EQ(formatFrom(
                  MakeAudioStream(Conf::CH_LAYOUT_STEREO, 48000, "CODEC_ID_PCM_F32LE", Conf::SAMPLE_FMT_FLT)),
              "SAMPLE_FMT_S32");
    // A decoder of lossy sound makes floating-point samples of whatever it gets.
    EXPECT_EQ(formatFrom(MakeAudioStream()), "SAMPLE_FMT_S16");
}

TEST(OutputContents, ATagOfAStrangerThatCannotBePassedOnIsNamed)
{
    const MediaFile source = MakeMediaFile({MakeAudioStream()});
    SetTag(*source.descriptor, "a=b", "x");
    SetTag(*source.descriptor, "long", std::string(70000, 'x'));
    SetTag(*source.descriptor, "line\nbreak", "x");
    const PlannedJob job = Plan(source, "matroska", kSound);
    EXPECT_EQ(TargetTags(job).Count(), 0U);
    EXPECT_THAT(
        job.notes,
        ElementsAre("in.mkv: its tag 'a=b' is left out: the name of a tag is a visible text without '='",
                    "in.mkv: its tag 'long' is left out: is longer than 65536 bytes",
                    "in.mkv: its tag 'line\nbreak' is left out: the name of a tag is a visible text "
                    "without '='"));
}

TEST(OutputContents, EscapesTheTitlesOfChapters)
{
    EXPECT_EQ(ChaptersText({{1, 2, "a=b;c#d\\e\nf"}, {3, 4, ""}}),
              ";FFMETADATA1\n"
              "[CHAPTER]\nTIMEBASE=1/1000000\nSTART=1\nEND=2\ntitle=a\\=b\\;c\\#d\\\\e\\\nf\n"
              "[CHAPTER]\nTIMEBASE=1/1000000\nSTART=3\nEND=4\n");
}

TEST(OutputContents, ListsACoverInJpeg)
{
    MediaStream cover = MakeAttachedPicture();
    cover.codec = "mjpeg";
    const PlannedJob job = Plan(MakeMediaFile({MakeAudioStream(), cover}), "mp4", kSound);
    EXPECT_EQ((*job.graph)[2]["attachments"], RecordOf(R"({"attachments":{"":1}})"));
    EXPECT_THAT(job.notes, IsEmpty());
}

TEST(OutputContents, TellsOtherProgramsTheTypeOfACover)
{
    MediaStream cover = MakeAttachedPicture();
    cover.codec = "mjpeg";
    // What stands in it: 3, the type and its length, no text, 500 x 500 of 12 bits, no palette, and the
    // image.
    EXPECT_EQ(CoverTagText(cover, "abc"), "AAAAAwAAAAppbWFnZS9qcGVnAAAAAAAAAfQAAAH0AAAADAAAAAAAAAADYWJj");
}

/// What an output file gets beside streams of its sources, each of them an input and an index, and what it
/// loses.
OutputContents ContentsOf(const std::vector<MediaFile>& sources, const std::string& container,
                          const std::string& target,
                          const std::vector<std::pair<std::size_t, unsigned int>>& streams)
{
    const Property record = RecordOf("{\"target\":{" + target + "}}");
    const Property video =
        VideoRecord(R"("codec_id":"CODEC_ID_MPEG4","metadata":{"timecode":"01:02:03:04"})");
    const Property sound = AudioRecord(R"("codec_id":"CODEC_ID_MP2")");
    const Property text = RecordOf(R"({"format_codec_subtitle":{"codec_id":"CODEC_ID_MOV_TEXT"}})");
    OutputFile output = {{}, container, &record, {}};
    for (const MediaFile& source : sources)
    {
        output.inputs.push_back(&source);
    }
    for (const auto& [input, index] : streams)
    {
        const StreamKind kind = sources[input].streams[index].kind;
        output.streams.push_back({input,
                                  index,
                                  {},
                                  kind == StreamKind::Video   ? &video
                                  : kind == StreamKind::Audio ? &sound
                                                              : &text,
                                  false});
    }
    return PlanContents(output);
}

/// "0 1: reason" for what is lost of a stream, and "0: reason" for what is lost of a file.
std::vector<std::string> LossesOf(const OutputContents& contents)
{
    std::vector<std::string> losses;
    for (const Loss& loss : contents.losses)
    {
        losses.push_back(std::to_string(loss.input) +
                         (loss.stream ? " " + std::to_string(*loss.stream) : "") + ": " + loss.reason);
    }
    return losses;
}

TEST(OutputContents, HaveTheTimecodeWhicheverStreamIsFirst)
{
    MediaFile source =
        MakeMediaFile({MakeVideoStream(), MakeAudioStream(), MakeSubtitleStream("CODEC_ID_MOV_TEXT")});
    source.timecode = "01:02:03:04";
    EXPECT_THAT(LossesOf(ContentsOf({source}, "mov", "", {{0, 2}, {0, 1}, {0, 0}})), IsEmpty());
    EXPECT_THAT(LossesOf(ContentsOf({source}, "avi", "", {{0, 1}, {0, 0}})),
                ElementsAre("0 2: (mov_text) is left out; container avi cannot hold text subtitles",
                            "0 0: container avi cannot hold its timecode, 01:02:03:04"));
}

TEST(OutputContents, GiveACoverThatIsConvertedNoTimecode)
{
    MediaFile source = MakeMediaFile({MakeAttachedPicture(), MakeAudioStream()});
    source.timecode = "01:02:03:04";
    EXPECT_THAT(LossesOf(ContentsOf({source}, "avi", "", {{0, 0}, {0, 1}})), IsEmpty());
}

TEST(OutputContents, CutTheTitlesOfChaptersThatOnlyTheJobHas)
{
    const std::string chapters =
        R"("chapters":[{"":{"start":0,"end":10000000,"title":")" + std::string(70000, 'x') + R"("}}])";
    EXPECT_THAT(LossesOf(ContentsOf({MakeMediaFile({MakeAudioStream()})}, "mp4", chapters, {{0, 0}})),
                ElementsAre("0: container mp4 cannot hold the titles of chapters"));
}

TEST(OutputContents, ListAttachmentsOfTheFirstSourceAlone)
{
    const MediaFile source = MakeMediaFile({MakeAudioStream(), MakeAttachedPicture()});
    const OutputContents contents =
        ContentsOf({source, source}, "mp4", R"("attachments":[{"":1}])", {{0, 0}, {1, 0}});
    ASSERT_EQ(contents.carried.size(), 1U);
    EXPECT_EQ(contents.carried[0].input, 0U);
    EXPECT_THAT(
        LossesOf(contents),
        ElementsAre(
            "1 1: (cover, png) is left out; the job does not have it, or container mp4 cannot hold it"));
}

} // namespace
