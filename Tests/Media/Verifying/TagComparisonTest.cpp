#include "Media/Verifying/TagComparison.h"

#include "Tests/Support/VerifyingFixtures.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> FileTags(const std::string& container, const std::string& tag,
                                  const std::string& name, const std::string& value)
{
    ExpectedFile wanted = ExpectingFile(MakeMediaFile({MakeAudioStream()}), container);
    wanted.tags = {tag};
    const MediaFile found = MakeMediaFile({MakeAudioStream()});
    if (!name.empty())
    {
        SetTag(*found.descriptor, name, value);
    }
    return Told(CompareFileTags(wanted, found));
}

std::vector<std::string> StreamTag(const std::string& container, const std::string& tag,
                                   const std::string& name, const std::string& value)
{
    ExpectedFile wanted = ExpectingFile(MakeMediaFile({MakeAudioStream()}), container);
    wanted.streams.front().tags = {tag};
    const MediaStream found = MakeAudioStream();
    if (!name.empty())
    {
        SetTag(*found.descriptor, name, value);
    }
    return Told(CompareStreamTags(wanted, wanted.streams.front(), found));
}

TEST(TagComparison, TellsATagThatIsLostOrChanged)
{
    EXPECT_THAT(FileTags("mp4", "title=Film", "title", "Film"), IsEmpty());
    EXPECT_THAT(FileTags("mp4", "title=Film", "", ""), ElementsAre("tag title: wanted 'Film', found none"));
    EXPECT_THAT(FileTags("mp4", "title=Film", "title", "Other"),
                ElementsAre("tag title: wanted 'Film', found 'Other'"));
}

TEST(TagComparison, TheCaseOfATagsNameDoesNotMatter)
{
    EXPECT_THAT(FileTags("matroska", "album_artist=A", "ALBUM_ARTIST", "A"), IsEmpty());
}

TEST(TagComparison, WhatAContainerCannotHoldIsNotMissed)
{
    EXPECT_THAT(FileTags("dvd", "title=Film", "", ""), IsEmpty());
    EXPECT_THAT(FileTags("mp4", "performer=P", "", ""), IsEmpty());
    EXPECT_THAT(FileTags("wav", "composer=C", "", ""), IsEmpty());
    EXPECT_THAT(FileTags("matroska", "performer=P", "", ""),
                ElementsAre("tag performer: wanted 'P', found none"));
}

TEST(TagComparison, TheMuxersOwnTagsAreNotCompared)
{
    EXPECT_THAT(FileTags("matroska", "encoder=x", "encoder", "Lavf"), IsEmpty());
}

TEST(TagComparison, OggKeepsTheTagsOfAFileInItsStreams)
{
    ExpectedFile wanted = ExpectingFile(MakeMediaFile({MakeAudioStream()}), "ogg");
    wanted.tags = {"title=Film"};
    const MediaFile found = MakeMediaFile({MakeAudioStream()});
    SetTag(*found.streams.front().descriptor, "title", "Film");
    EXPECT_THAT(CompareFileTags(wanted, found), IsEmpty());
}

TEST(TagComparison, BothCodesOfALanguageMeanTheSame)
{
    EXPECT_THAT(StreamTag("matroska", "language=ger", "language", "deu"), IsEmpty());
    EXPECT_THAT(StreamTag("matroska", "language=deu", "language", "fra"),
                ElementsAre("language: wanted 'deu', found 'fra'"));
    EXPECT_THAT(StreamTag("matroska", "language=deu", "", ""),
                ElementsAre("language: wanted 'deu', found none"));
}

TEST(TagComparison, WhatIsNoLanguageCodeIsNotCompared)
{
    EXPECT_THAT(StreamTag("mp4", "language=de-AT", "language", "und"), IsEmpty());
    EXPECT_THAT(StreamTag("mp4", "language=und", "", ""), IsEmpty());
}

TEST(TagComparison, TitlesOfStreamsAreComparedWhereTheyAreKept)
{
    EXPECT_THAT(StreamTag("matroska", "title=T", "", ""), ElementsAre("title: wanted 'T', found none"));
    EXPECT_THAT(StreamTag("mp4", "title=T", "", ""), IsEmpty());
}

} // namespace
