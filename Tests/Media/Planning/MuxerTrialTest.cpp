#include "Media/Planning/MuxerTrial.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace Zelnor::Media;
using testing::IsEmpty;

const std::vector<std::string> kMp4 = {"CODEC_ID_H264", "CODEC_ID_AAC"};

FileContents Ask(const std::string& container, const std::vector<std::string>& codecs,
                 const FileContents& wanted)
{
    const auto found = MuxerTrial(container, codecs).Ask(wanted);
    EXPECT_TRUE(found.has_value()) << container;
    return found.value_or(FileContents());
}

TEST(MuxerTrial, TellsWhichTagsComeBack)
{
    FileContents wanted;
    wanted.tags = {{"title", "A title"}, {"MY_OWN_KEY", "Something"}};
    const FileContents mp4 = Ask("mp4", kMp4, wanted);
    ASSERT_NE(FindTag(mp4.tags, "TITLE"), nullptr);
    EXPECT_EQ(*FindTag(mp4.tags, "TITLE"), "A title");
    EXPECT_EQ(FindTag(mp4.tags, "MY_OWN_KEY"), nullptr);
    const FileContents matroska = Ask("matroska", kMp4, wanted);
    ASSERT_NE(FindTag(matroska.tags, "MY_OWN_KEY"), nullptr);
}

TEST(MuxerTrial, TellsWhatBecomesOfALanguage)
{
    FileContents wanted;
    wanted.streamTags = {{}, {{"language", "deu"}}};
    const FileContents mp4 = Ask("mp4", kMp4, wanted);
    ASSERT_EQ(mp4.streamTags.size(), 2U);
    ASSERT_NE(FindTag(mp4.streamTags[1], "language"), nullptr);
    EXPECT_EQ(*FindTag(mp4.streamTags[1], "language"), "deu");
    EXPECT_EQ(FindTag(Ask("mov", kMp4, wanted).streamTags.at(1), "language"), nullptr);
}

TEST(MuxerTrial, ReadsWhatStandsAtTheEndOfTheFile)
{
    FileContents wanted;
    wanted.tags = {{"MY_OWN_KEY", "Something"}};
    const TagList aiff = Ask("aiff", {"CODEC_ID_PCM_S16BE"}, wanted).tags;
    EXPECT_NE(FindTag(aiff, "MY_OWN_KEY"), nullptr);
    const TagList wavPack = Ask("wv", {"CODEC_ID_WAVPACK"}, wanted).tags;
    EXPECT_NE(FindTag(wavPack, "MY_OWN_KEY"), nullptr);
}

TEST(MuxerTrial, KnowsNothingOfStreamsThatAreNeitherPicturesNorSound)
{
    EXPECT_FALSE(MuxerTrial("matroska", {"CODEC_ID_DVD_SUBTITLE"}).Ask({}).has_value());
    EXPECT_FALSE(MuxerTrial("matroska", {"CODEC_ID_SRT"}).Ask({}).has_value());
}

TEST(MuxerTrial, TellsChaptersCoversAndAttachments)
{
    FileContents wanted;
    wanted.chapters = {{0, 500000, "One"}, {500000, 1000000, "Two"}};
    EXPECT_EQ(Ask("mp4", kMp4, wanted).chapters.size(), 2U);
    EXPECT_EQ(Ask("mp3", {"CODEC_ID_MP3"}, wanted).chapters.at(1).title, "Two");
    EXPECT_THAT(Ask("avi", {"CODEC_ID_MPEG4"}, wanted).chapters, IsEmpty());
    FileContents cover;
    cover.hasCover = true;
    EXPECT_TRUE(Ask("mp4", kMp4, cover).hasCover);
    EXPECT_TRUE(Ask("flac", {"CODEC_ID_FLAC"}, cover).hasCover);
    EXPECT_FALSE(Ask("mov", kMp4, cover).hasCover);
    EXPECT_FALSE(MuxerTrial("ogg", {"CODEC_ID_VORBIS"}).Ask(cover).has_value());
    FileContents font;
    font.hasAttachment = true;
    EXPECT_TRUE(Ask("matroska", kMp4, font).hasAttachment);
    EXPECT_FALSE(MuxerTrial("mp4", kMp4).Ask(font).value_or(FileContents()).hasAttachment);
    // The address sanitizer tells whether the refusal loses memory.
    EXPECT_FALSE(MuxerTrial("wtv", {"CODEC_ID_MPEG2VIDEO", "CODEC_ID_MP2"}).Ask(font).has_value());
}

TEST(MuxerTrial, HasNoAnswerWhereNothingCanBeAsked)
{
    EXPECT_FALSE(MuxerTrial("png", {"CODEC_ID_PNG"}).Ask({}).has_value());
    EXPECT_FALSE(MuxerTrial("hls", kMp4).Ask({}).has_value());
    EXPECT_FALSE(MuxerTrial("no such container", kMp4).Ask({}).has_value());
    EXPECT_FALSE(MuxerTrial("mp4", {}).Ask({}).has_value());
    EXPECT_FALSE(MuxerTrial("mp4", {"CODEC_ID_ATRAC3"}).Ask({}).has_value());
    EXPECT_FALSE(MuxerTrial("mp4", {""}).Ask({}).has_value());
}

} // namespace
