#include "Media/Running/ContentsExpectation.h"

#include "Conf/Interfaces/IFormatFile.h"
#include "Tests/Support/JobFixtures.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// A file of two streams, the sound first, that gets `command` beside them.
ExpectedFile Expect(const std::string& container, TranscodeCommand command, const std::string& sound = "AAC",
                    const std::string& video = "H264")
{
    Transcode transcode = MakeTranscode(MakeMediaFile({MakeAudioStream(), MakeVideoStream()}),
                                        AudioRecord("\"codec_id\":\"CODEC_ID_" + sound + "\""), container);
    transcode.streams.push_back(transcode.streams.front());
    transcode.streams.back().stream = 1;
    transcode.streams.back().codec = VideoRecord("\"codec_id\":\"CODEC_ID_" + video + "\"");
    command.streams.resize(2);
    ExpectedFile expected;
    expected.streams.resize(2);
    ExpectContents(transcode, command, expected);
    return expected;
}

TranscodeCommand WithTags(std::vector<std::string> tags)
{
    TranscodeCommand command;
    command.metadata = std::move(tags);
    return command;
}

TranscodeCommand WithLanguages(const std::string& sound, const std::string& video)
{
    TranscodeCommand command;
    command.streams.resize(2);
    command.streams[0].metadata = {"language=" + sound};
    command.streams[1].metadata = {"language=" + video};
    return command;
}

TEST(ContentsExpectation, TagsAreThoseThatTheContainerBringsBack)
{
    const TranscodeCommand command = WithTags({"title=Film", "MY_OWN_KEY=x"});
    EXPECT_THAT(Expect("mp4", command).tags, ElementsAre(Pair("title", "Film")));
    EXPECT_THAT(Expect("matroska", command).tags,
                ElementsAre(Pair("title", "Film"), Pair("MY_OWN_KEY", "x")));
    EXPECT_THAT(Expect("mpegts", command, "MP2", "MPEG2VIDEO").tags, IsEmpty());
}

TEST(ContentsExpectation, TheLastTagOfANameCountsAndAnEmptyOneIsNone)
{
    EXPECT_THAT(Expect("matroska", WithTags({"title=A", "TITLE=B"})).tags, ElementsAre(Pair("TITLE", "B")));
    EXPECT_THAT(Expect("matroska", WithTags({"title=A", "title="})).tags, IsEmpty());
}

TEST(ContentsExpectation, WhatMuxersWriteThemselvesIsNotExpected)
{
    EXPECT_THAT(Expect("matroska", WithTags({"encoder=x", "DURATION=x"})).tags, IsEmpty());
    TranscodeCommand command;
    command.streams.resize(2);
    command.streams[1].metadata = {"DURATION=00:00:01.000000000"};
    EXPECT_THAT(Expect("matroska", command).streams[1].tags, IsEmpty());
}

TEST(ContentsExpectation, LanguagesAreThoseThatTheContainerBringsBack)
{
    const TranscodeCommand command = WithLanguages("deu", "fra");
    const ExpectedFile matroska = Expect("matroska", command);
    EXPECT_THAT(matroska.streams[0].tags, ElementsAre(Pair("language", "deu")));
    EXPECT_THAT(matroska.streams[1].tags, ElementsAre(Pair("language", "fra")));
    const ExpectedFile mov = Expect("mov", command);
    EXPECT_THAT(mov.streams[0].tags, IsEmpty());
    EXPECT_THAT(mov.streams[1].tags, ElementsAre(Pair("language", "fra")));
    const ExpectedFile mpegts = Expect("mpegts", command, "MP2", "MPEG2VIDEO");
    EXPECT_THAT(mpegts.streams[0].tags, ElementsAre(Pair("language", "deu")));
    EXPECT_THAT(mpegts.streams[1].tags, IsEmpty());
}

TEST(ContentsExpectation, ChaptersAreAsTheContainerBringsThemBack)
{
    TranscodeCommand command;
    command.chapters = {{0, 400400, "One"}, {400400, 1000000, "Two"}};
    const auto matroska = Expect("matroska", command).chapters;
    ASSERT_TRUE(matroska && matroska->size() == 2);
    EXPECT_EQ(matroska->at(1).title, "Two");
    EXPECT_EQ(matroska->at(1).start, 400400);
    const auto mp4 = Expect("mp4", command).chapters;
    ASSERT_TRUE(mp4 && mp4->size() == 2);
    EXPECT_EQ(mp4->at(1).start, 400000);
    // ffmpeg itself takes away what stands before the part.
    command.span.start = 300000;
    command.chapters = {{300000, 400000, "One"}, {400000, 1000000, "Two"}};
    EXPECT_EQ(Expect("matroska", command).chapters.value().at(1).start, 100000);
    command.seeksInInputs = true;
    EXPECT_EQ(Expect("matroska", command).chapters.value().at(1).start, 400000);
}

TEST(ContentsExpectation, AFileThatGetsNoChaptersHasNone)
{
    EXPECT_THAT(Expect("matroska", {}).chapters.value(), IsEmpty());
    EXPECT_THAT(Expect("matroska", {}).covers.value(), IsEmpty());
}

TEST(ContentsExpectation, NothingIsExpectedWhereNothingCanBeAsked)
{
    TranscodeCommand command = WithTags({"title=Film"});
    command.chapters = {{0, 400000, "One"}};
    const ExpectedFile expected = Expect("mov", command, "ATRAC3");
    EXPECT_THAT(expected.tags, IsEmpty());
    EXPECT_FALSE(expected.chapters.has_value());
}

TEST(ContentsExpectation, ATimecodeIsExpectedWhereItComesBackAsItIs)
{
    TranscodeCommand command;
    command.streams.resize(2);
    command.streams[1].metadata = {"timecode=01:02:03:04"};
    EXPECT_EQ(Expect("mov", command).timecode, "01:02:03:04");
    EXPECT_EQ(Expect("matroska", command).timecode, "01:02:03:04");
    EXPECT_EQ(Expect("avi", command, "MP3", "MPEG4").timecode, "");
    EXPECT_THAT(Expect("mov", command).streams[1].tags, IsEmpty());
}

TEST(ContentsExpectation, ATimecodeMayBeTheWholeFiles)
{
    EXPECT_EQ(Expect("matroska", WithTags({"timecode=01:02:03:04"})).timecode, "01:02:03:04");
    EXPECT_EQ(Expect("mp3", WithTags({"timecode=01:02:03:04"}), "MP3", "PNG").timecode, "01:02:03:04");
    EXPECT_EQ(Expect("mpegts", WithTags({"timecode=01:02:03:04"}), "MP2", "MPEG2VIDEO").timecode, "");
}

TEST(ContentsExpectation, ACoverIsExpectedWithItsImageWhereThatIsKnown)
{
    const auto expect = [](const std::string& picture) {
        MediaStream cover = MakeAttachedPicture();
        cover.picture = picture;
        const Transcode transcode = MakeTranscode(MakeMediaFile({MakeAudioStream(), cover}),
                                                  AudioRecord(R"("codec_id":"CODEC_ID_AAC")"), "mp4");
        TranscodeCommand command;
        command.streams.resize(1);
        command.carried = {{0, 1, CarriedStream::Cover, {}}};
        ExpectedFile expected;
        expected.streams.resize(1);
        ExpectContents(transcode, command, expected);
        EXPECT_THAT(expected.covers.value(), ElementsAre("png"));
        return expected.pictures;
    };
    EXPECT_THAT(expect("image"), ElementsAre("image"));
    EXPECT_THAT(expect(""), IsEmpty());
}

} // namespace
