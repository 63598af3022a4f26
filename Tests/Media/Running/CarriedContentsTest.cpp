#include "Media/Running/TranscodeCommand.h"

#include "Tests/Support/JobFixtures.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <optional>
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

/// What ffmpeg is told of the second stream of a file, which is carried.
std::vector<std::string> CarriedTagsOf(const MediaStream& stream, CarriedStream::Form form)
{
    Transcode transcode =
        MakeTranscode(MakeMediaFile({MakeAudioStream(), stream}),
                      AudioRecord(R"("codec_id":"CODEC_ID_AAC","bitrate":96000)"), "matroska");
    transcode.contents.carried = {{0, 1, form}};
    FaultList faults;
    const TranscodeCommand command = MakeTranscodeCommand(transcode, faults);
    EXPECT_EQ(command.carried.at(0).stream, 1U);
    return command.carried.at(0).metadata;
}

MediaStream Font(const std::string& fileName, const std::string& mimeType)
{
    MediaStream stream = MakeVideoStream();
    stream.kind = StreamKind::Attachment;
    stream.fileName = fileName;
    stream.mimeType = mimeType;
    return stream;
}

TEST(CarriedContents, AnAttachmentHasANameAndAType)
{
    EXPECT_THAT(CarriedTagsOf(Font("a.ttf", "font/ttf"), CarriedStream::Attachment),
                ElementsAre("filename=a.ttf", "mimetype=font/ttf"));
    EXPECT_THAT(CarriedTagsOf(Font("", ""), CarriedStream::Attachment),
                ElementsAre("filename=attachment-1", "mimetype=application/octet-stream"));
}

TEST(CarriedContents, ACoverThatIsAFileIsNamedAfterItsCodec)
{
    MediaStream cover = MakeAttachedPicture();
    EXPECT_THAT(CarriedTagsOf(cover, CarriedStream::CoverFile),
                ElementsAre("filename=cover.png", "mimetype=image/png"));
    cover.codec = "mjpeg";
    EXPECT_THAT(CarriedTagsOf(cover, CarriedStream::CoverFile),
                ElementsAre("filename=cover.jpg", "mimetype=image/jpeg"));
    EXPECT_THAT(CarriedTagsOf(cover, CarriedStream::Cover), IsEmpty());
}

TEST(CarriedContents, KeepTheirTags)
{
    const MediaStream cover = MakeAttachedPicture();
    SetTag(*cover.descriptor, "title", "Front");
    EXPECT_THAT(CarriedTagsOf(cover, CarriedStream::Cover), ElementsAre("title=Front"));
}

/// The titles of the chapters of a part of a file.
std::string ChaptersIn(std::int64_t start, std::optional<std::int64_t> end)
{
    Transcode transcode =
        MakeTranscode(MakeMediaFile({MakeAudioStream()}),
                      AudioRecord(R"("codec_id":"CODEC_ID_AAC","bitrate":96000)"), "matroska");
    transcode.span = {start, end};
    transcode.contents.chapters = {
        {0, 2000000, "One"}, {2000000, 4000000, "Two"}, {4000000, 9000000, "Three"}};
    FaultList faults;
    std::string titles;
    const TranscodeCommand command = MakeTranscodeCommand(transcode, faults);
    for (const MediaChapter& chapter : command.chapters)
    {
        titles += chapter.title + " ";
    }
    return titles;
}

TEST(CarriedContents, OfThePartThatIsConvertedAreItsChapters)
{
    EXPECT_EQ(ChaptersIn(0, std::nullopt), "One Two Three ");
    EXPECT_EQ(ChaptersIn(2000000, std::nullopt), "Two Three ");
    EXPECT_EQ(ChaptersIn(0, 2000000), "One ");
    EXPECT_EQ(ChaptersIn(3000000, 4000000), "Two ");
    EXPECT_EQ(ChaptersIn(9000000, std::nullopt), "");
}

TEST(CarriedContents, LeaveOutTagsThatNoArgumentCanHold)
{
    const MediaStream cover = MakeAttachedPicture();
    SetTag(*cover.descriptor, "title", "Front");
    SetTag(*cover.descriptor, "comment", std::string(70000, 'x'));
    SetTag(*cover.descriptor, "artist", std::string("a\0b", 3));
    EXPECT_THAT(CarriedTagsOf(cover, CarriedStream::Cover), ElementsAre("title=Front"));
}

} // namespace
