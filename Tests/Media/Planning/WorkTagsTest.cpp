#include "Media/Planning/WorkTags.h"

#include "Tests/Support/MediaFixtures.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using Tags = std::vector<std::pair<std::string, std::string>>;

/// What is told about the work of a file with these tags.
TagList WorkTagsOfFile(const Tags& tags)
{
    const MediaFile file = MakeMediaFile({MakeVideoStream()});
    for (const auto& [name, text] : tags)
    {
        SetTag(*file.descriptor, name, text);
    }
    return WorkTagsOf(file);
}

TEST(WorkTags, AreNotThoseAboutTheFile)
{
    EXPECT_THAT(WorkTagsOfFile({{"major_brand", "isom"},
                                {"_STATISTICS_TAGS", "BPS"},
                                {"WMFSDKVersion", "12"},
                                {"BPS-eng", "5"},
                                {"TITLE", "A title"},
                                {"own", ""}}),
                ElementsAre(Pair("title", "A title")));
}

TEST(WorkTags, AreSaidOnce)
{
    EXPECT_THAT(WorkTagsOfFile({{"location", "+48+11/"}, {"location-eng", "+48+11/"}, {"LOCATION", "x"}}),
                ElementsAre(Pair("location", "+48+11/")));
    EXPECT_THAT(WorkTagsOfFile({{"location", "+48+11/"}, {"location-deu", "+50+11/"}}),
                ElementsAre(Pair("location", "+48+11/"), Pair("location-deu", "+50+11/")));
    EXPECT_THAT(WorkTagsOfFile({{"own-eng", "x"}}), ElementsAre(Pair("own-eng", "x")));
    EXPECT_THAT(WorkTagsOfFile({{"-eng", "x"}}), ElementsAre(Pair("-eng", "x")));
}

TEST(WorkTags, ThatAreNoTextsAreNotPassedOn)
{
    const MediaFile file = MakeMediaFile({MakeVideoStream()});
    Core::Property metadata = file.descriptor->GetMetadata();
    metadata.SetChildT("number", 5LL);
    metadata.SetChildT("number-eng", std::string("5"));
    file.descriptor->SetMetadata(metadata);
    EXPECT_THAT(WorkTagsOf(file), ElementsAre(Pair("number-eng", "5")));
}

/// A file with tags of its own and of its streams.
MediaFile OggFile(std::vector<MediaStream> streams)
{
    MediaFile file = MakeMediaFile(std::move(streams), "in.ogg");
    file.demuxer = "ogg";
    SetTag(*file.descriptor, "artist", "A");
    for (const MediaStream& stream : file.streams)
    {
        SetTag(*stream.descriptor, "artist", "B");
        SetTag(*stream.descriptor, "title", "T");
        SetTag(*stream.descriptor, "language", "deu");
    }
    return file;
}

TEST(WorkTags, OfTheOneStreamOfAnOggFileAreThoseOfTheFile)
{
    const MediaFile file = OggFile({MakeAudioStream(), MakeAttachedPicture()});
    EXPECT_THAT(WorkTagsOf(file), testing::UnorderedElementsAre(Pair("artist", "A"), Pair("title", "T"),
                                                                Pair("language", "deu")));
    EXPECT_THAT(WorkTagsOf(file, file.streams[0]), IsEmpty());
    EXPECT_THAT(WorkTagsOf(file, file.streams[1]), ElementsAre(Pair("artist", "B"), Pair("title", "T")));
}

TEST(WorkTags, OfOneStreamAmongSeveralAreItsOwn)
{
    for (const MediaFile& file :
         {OggFile({MakeAudioStream(), MakeAudioStream()}), OggFile({MakeAudioStream(), MakeVideoStream()})})
    {
        EXPECT_THAT(WorkTagsOf(file), ElementsAre(Pair("artist", "A")));
        EXPECT_THAT(WorkTagsOf(file, file.streams[0]), ElementsAre(Pair("artist", "B"), Pair("title", "T")));
    }
}

TEST(WorkTags, TellHowLoudTheSoundIs)
{
    EXPECT_TRUE(IsAboutLoudness("REPLAYGAIN_TRACK_GAIN"));
    EXPECT_TRUE(IsAboutLoudness("R128_ALBUM_GAIN"));
    EXPECT_TRUE(IsAboutLoudness("iTunNORM"));
    EXPECT_FALSE(IsAboutLoudness("title"));
}

TEST(WorkTags, ThatAreTooLongForAnArgumentCannotBePassedOn)
{
    EXPECT_EQ(FindTagFault("title", "A title"), "");
    EXPECT_EQ(FindTagFault("title", std::string(65531, 'x')), "");
    EXPECT_EQ(FindTagFault("title", std::string(65532, 'x')), "is longer than 65536 bytes");
}

} // namespace
