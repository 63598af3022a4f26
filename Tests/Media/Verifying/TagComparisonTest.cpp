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

using Tag = std::pair<std::string, std::string>;

ExpectedFile Wanting(const Tag& tag)
{
    ExpectedFile wanted = ExpectingFile(MakeMediaFile({MakeAudioStream()}), "mp4");
    wanted.tags = {tag};
    return wanted;
}

std::vector<std::string> FileTag(const Tag& wanted, const Tag& there)
{
    const MediaFile found = MakeMediaFile({MakeAudioStream()});
    if (!there.first.empty())
    {
        SetTag(*found.descriptor, there.first, there.second);
    }
    return Told(CompareFileTags(Wanting(wanted), found));
}

std::vector<std::string> StreamTag(const Tag& wanted, const Tag& there)
{
    ExpectedFile file = ExpectingFile(MakeMediaFile({MakeAudioStream()}), "mp4");
    file.streams.front().tags = {wanted};
    const MediaStream found = MakeAudioStream();
    if (!there.first.empty())
    {
        SetTag(*found.descriptor, there.first, there.second);
    }
    return Told(CompareStreamTags(file.streams.front(), found));
}

TEST(TagComparison, TellsATagThatIsLostOrChanged)
{
    EXPECT_THAT(FileTag({"title", "Film"}, {"title", "Film"}), IsEmpty());
    EXPECT_THAT(FileTag({"title", "Film"}, {}), ElementsAre("tag title: wanted 'Film', found none"));
    EXPECT_THAT(FileTag({"title", "Film"}, {"title", "Other"}),
                ElementsAre("tag title: wanted 'Film', found 'Other'"));
}

TEST(TagComparison, TheCaseOfATagsNameDoesNotMatter)
{
    EXPECT_THAT(FileTag({"album_artist", "A"}, {"ALBUM_ARTIST", "A"}), IsEmpty());
    EXPECT_THAT(StreamTag({"LANGUAGE", "deu"}, {"language", "ger"}), IsEmpty());
}

TEST(TagComparison, OggKeepsTheTagsOfAFileInItsStreams)
{
    const MediaFile found = MakeMediaFile({MakeAudioStream()});
    SetTag(*found.streams.front().descriptor, "title", "Film");
    EXPECT_THAT(CompareFileTags(Wanting({"title", "Film"}), found), IsEmpty());
}

TEST(TagComparison, BothCodesOfALanguageMeanTheSame)
{
    EXPECT_THAT(StreamTag({"language", "ger"}, {"language", "deu"}), IsEmpty());
    EXPECT_THAT(StreamTag({"language", "deu"}, {"language", "fra"}),
                ElementsAre("language: wanted 'deu', found 'fra'"));
    EXPECT_THAT(StreamTag({"language", "deu"}, {}), ElementsAre("language: wanted 'deu', found none"));
}

TEST(TagComparison, TellsATagOfAStreamThatIsLost)
{
    EXPECT_THAT(StreamTag({"title", "T"}, {}), ElementsAre("tag title: wanted 'T', found none"));
}

TEST(TagComparison, OneOfSeveralTagsOfANameIsEnough)
{
    for (const auto& [first, second] : {std::pair("Film", "Other"), std::pair("Other", "Film")})
    {
        const MediaFile found = MakeMediaFile({MakeAudioStream()});
        SetTag(*found.descriptor, "TITLE", first);
        SetTag(*found.descriptor, "title", second);
        EXPECT_THAT(CompareFileTags(Wanting({"title", "Film"}), found), IsEmpty());
    }
}

TEST(TagComparison, ANumberIsNotATag)
{
    const MediaFile found = MakeMediaFile({MakeAudioStream()});
    Core::Property metadata = found.descriptor->GetMetadata();
    metadata.SetChildT("title", 7LL);
    found.descriptor->SetMetadata(metadata);
    EXPECT_THAT(Told(CompareFileTags(Wanting({"title", "7"}), found)),
                ElementsAre("tag title: wanted '7', found none"));
}

} // namespace
