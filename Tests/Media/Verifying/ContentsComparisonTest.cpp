#include "Media/Verifying/ContentsComparison.h"

#include "Tests/Support/VerifyingFixtures.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

ExpectedFile Wanting() { return ExpectingFile(MakeMediaFile({MakeVideoStream()}), "matroska"); }

std::vector<std::string> Compare(const ExpectedFile& wanted, const MediaFile& found)
{
    std::vector<bool> isTaken(found.streams.size(), false);
    isTaken.front() = true;
    return Told(CompareContents(wanted, found, isTaken));
}

MediaStream Attachment(const std::string& name)
{
    MediaStream stream = MakeStream(StreamKind::Attachment, Conf::IFormatCodec::Create(), "CODEC_ID_TTF");
    stream.fileName = name;
    return stream;
}

TEST(ContentsComparison, TellsChaptersThatAreLostOrAdded)
{
    ExpectedFile wanted = Wanting();
    wanted.chapters = {{0, 1, "One"}, {1, 2, "Two"}};
    MediaFile found = MakeMediaFile({MakeVideoStream()});
    EXPECT_THAT(Compare(wanted, found), ElementsAre("chapters: wanted 2, found 0"));
    wanted.chapters = std::vector(1, MediaChapter());
    found.chapters = {{0, 1, "One"}, {1, 2, "Two"}};
    EXPECT_THAT(Compare(wanted, found), ElementsAre("chapters: wanted 1, found 2"));
    wanted.chapters = std::nullopt;
    EXPECT_THAT(Compare(wanted, found), IsEmpty());
}

TEST(ContentsComparison, TellsAnotherTitleAndAnotherTimeOfAChapter)
{
    ExpectedFile wanted = Wanting();
    wanted.chapters = {{0, 400000, "One"}, {400000, 900000, ""}};
    MediaFile found = MakeMediaFile({MakeVideoStream()});
    found.chapters = {{0, 400000, "Other"}, {402000, 900000, ""}};
    EXPECT_THAT(Compare(wanted, found),
                ElementsAre("chapter 1: wanted 'One' at 0.000 s, found 'Other' at 0.000 s",
                            "chapter 2: wanted at 0.400 s, found at 0.402 s"));
}

TEST(ContentsComparison, AContainerRoundsTimesAndEndsItsLastChapterItself)
{
    ExpectedFile wanted = Wanting();
    wanted.chapters = {{0, 400000, "One"}};
    MediaFile found = MakeMediaFile({MakeVideoStream()});
    found.chapters = {{1000, 999000, "One"}};
    EXPECT_THAT(Compare(wanted, found), IsEmpty());
}

TEST(ContentsComparison, TellsCoversThatAreLostAddedOrOfAnotherCodec)
{
    ExpectedFile wanted = Wanting();
    const MediaFile with = MakeMediaFile({MakeVideoStream(), MakeAttachedPicture()});
    EXPECT_THAT(Compare(wanted, with), IsEmpty());
    wanted.covers.emplace();
    EXPECT_THAT(Compare(wanted, with), ElementsAre("covers: wanted none, found png"));
    wanted.covers = std::vector<std::string>{"png"};
    EXPECT_THAT(Compare(wanted, with), IsEmpty());
    EXPECT_THAT(Compare(wanted, MakeMediaFile({MakeVideoStream()})),
                ElementsAre("covers: wanted png, found none"));
    wanted.covers = std::vector<std::string>{"png", "mjpeg"};
    EXPECT_THAT(Compare(wanted, with), ElementsAre("covers: wanted mjpeg, png, found png"));
}

TEST(ContentsComparison, TellsACoverOfOtherBytes)
{
    ExpectedFile wanted = Wanting();
    wanted.covers = std::vector<std::string>{"png", "png"};
    MediaFile found = MakeMediaFile({MakeVideoStream(), MakeAttachedPicture(), MakeAttachedPicture()});
    found.streams[1].picture = "front";
    found.streams[2].picture = "back";
    wanted.pictures = {"back", "front"};
    EXPECT_THAT(Compare(wanted, found), IsEmpty());
    wanted.pictures = {"front", "front"};
    EXPECT_THAT(Compare(wanted, found),
                ElementsAre("covers: wanted the source's image of 5 bytes, found another one"));
    // Of a large cover, the bytes are not known.
    wanted.pictures = {"back"};
    found.streams[1].picture = "";
    EXPECT_THAT(Compare(wanted, found), IsEmpty());
}

TEST(ContentsComparison, AStreamOfTheJobThatBecomesACoverIsNotOneMore)
{
    ExpectedFile wanted = Wanting();
    wanted.covers.emplace();
    EXPECT_THAT(Compare(wanted, MakeMediaFile({MakeAttachedPicture()})), IsEmpty());
}

TEST(ContentsComparison, TellsAttachmentsByTheirNamesInAnyOrder)
{
    ExpectedFile wanted = Wanting();
    wanted.attachments = {"b.ttf", "a.ttf"};
    EXPECT_THAT(Compare(wanted, MakeMediaFile({MakeVideoStream(), Attachment("a.ttf"), Attachment("b.ttf")})),
                IsEmpty());
    EXPECT_THAT(Compare(wanted, MakeMediaFile({MakeVideoStream(), Attachment("a.ttf")})),
                ElementsAre("attachments: wanted 'a.ttf', 'b.ttf', found 'a.ttf'"));
}

TEST(ContentsComparison, TellsATimecodeThatIsLostOrChanged)
{
    ExpectedFile wanted = Wanting();
    MediaFile found = MakeMediaFile({MakeVideoStream()});
    found.timecode = "01:00:00:00";
    EXPECT_THAT(Compare(wanted, found), IsEmpty());
    wanted.timecode = "01:02:03:04";
    EXPECT_THAT(Compare(wanted, found), ElementsAre("timecode: wanted 01:02:03:04, found 01:00:00:00"));
    found.timecode = "";
    EXPECT_THAT(Compare(wanted, found), ElementsAre("timecode: wanted 01:02:03:04, found none"));
}

} // namespace
