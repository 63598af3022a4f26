#include "Media/Verifying/PictureComparison.h"

#include "Media/Jobs/JobKeys.h"
#include "Tests/Support/VerifyingFixtures.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Conf;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

/// A video that must be what these keys of its record say.
std::vector<std::string> Compare(const std::vector<std::pair<std::string, std::string>>& keys,
                                 const MediaStream& found, const MediaStream& source = MakeVideoStream(),
                                 const std::string& container = "mp4")
{
    ExpectedFile file = ExpectingFile(MakeMediaFile({source}), container);
    for (const auto& [key, value] : keys)
    {
        file.streams.front().record.SetChildT(key, value);
    }
    return Told(ComparePicture(file, file.streams.front(), found));
}

MediaStream InterlacedVideo(const std::string& order)
{
    MediaStream stream = MakeVideoStream();
    stream.isInterlaced = true;
    stream.fieldOrder = order;
    return stream;
}

TEST(PictureComparison, TellsAnotherPixelFormatButNotAnotherRange)
{
    MediaStream found = MakeVideoStream();
    found.pixelFormat = "yuv422p";
    EXPECT_THAT(Compare({}, found), ElementsAre("pixel format: wanted yuv420p, found yuv422p"));
    found.pixelFormat = "yuvj420p";
    EXPECT_THAT(Compare({}, found), IsEmpty());
    found.pixelFormat = "";
    EXPECT_THAT(Compare({}, found), IsEmpty());
}

TEST(PictureComparison, APixelFormatByNameComesBeforeTheNumber)
{
    MediaStream found = MakeVideoStream();
    found.pixelFormat = "yuv420p10le";
    EXPECT_THAT(Compare({{JobKeys::kPixelFormat, "yuv420p10le"}}, found), IsEmpty());
    found.pixelFormat = "yuv420p";
    EXPECT_THAT(Compare({{JobKeys::kPixelFormat, "yuv420p10le"}}, found),
                ElementsAre("pixel format: wanted yuv420p10le, found yuv420p"));
}

TEST(PictureComparison, TellsFieldsThatShouldBeGone)
{
    EXPECT_THAT(Compare({}, InterlacedVideo("tt"), InterlacedVideo("tt")),
                ElementsAre("field order: wanted progressive, found tt"));
    EXPECT_THAT(Compare({{JobKeys::kDeinterlace, "50p"}}, InterlacedVideo("bb"), InterlacedVideo("tt")),
                ElementsAre("field order: wanted progressive, found bb"));
    EXPECT_THAT(Compare({{JobKeys::kDeinterlace, "off"}}, InterlacedVideo("tt"), InterlacedVideo("tt")),
                IsEmpty());
}

TEST(PictureComparison, TellsFieldsThatShouldBeKept)
{
    MediaStream progressive = MakeVideoStream();
    progressive.fieldOrder = "progressive";
    EXPECT_THAT(Compare({{JobKeys::kDeinterlace, "keep"}}, progressive, InterlacedVideo("tt")),
                ElementsAre("field order: wanted tt, found progressive"));
    EXPECT_THAT(Compare({{JobKeys::kDeinterlace, "keep"}}, InterlacedVideo("tt"), InterlacedVideo("tt")),
                IsEmpty());
    EXPECT_THAT(Compare({{JobKeys::kDeinterlace, "keep"}}, progressive, progressive), IsEmpty());
}

TEST(PictureComparison, TellsWhichFieldComesFirst)
{
    const auto kept = [](const std::string& source, const std::string& found) {
        return Compare({{JobKeys::kDeinterlace, "keep"}}, InterlacedVideo(found), InterlacedVideo(source));
    };
    EXPECT_THAT(kept("bb", "tt"), ElementsAre("field order: wanted bb, found tt"));
    EXPECT_THAT(kept("tt", "bt"), ElementsAre("field order: wanted tt, found bt"));
    EXPECT_THAT(kept("tt", "tb"), IsEmpty());
    EXPECT_THAT(kept("", "bb"), IsEmpty());
    EXPECT_THAT(kept("bb", ""), IsEmpty());
}

TEST(PictureComparison, TellsOtherColoursAndThoseThatAreLost)
{
    MediaStream found = MakeVideoStream();
    EXPECT_THAT(Compare({{JobKeys::kColorMatrix, "bt709"}}, found),
                ElementsAre("colour matrix: wanted bt709, found none"));
    found.color.matrix = "bt470bg";
    EXPECT_THAT(Compare({{JobKeys::kColorMatrix, "bt709"}}, found),
                ElementsAre("colour matrix: wanted bt709, found bt470bg"));
    EXPECT_THAT(Compare({}, found), IsEmpty());
}

TEST(PictureComparison, AFileThatDoesNotTellTheRangeHasTheUsualOne)
{
    MediaStream found = MakeVideoStream();
    EXPECT_THAT(Compare({{JobKeys::kColorRange, "tv"}}, found), IsEmpty());
    EXPECT_THAT(Compare({{JobKeys::kColorRange, "pc"}}, found),
                ElementsAre("colour range: wanted pc, found none"));
    found.color.range = "pc";
    EXPECT_THAT(Compare({{JobKeys::kColorRange, "tv"}}, found),
                ElementsAre("colour range: wanted tv, found pc"));
}

TEST(PictureComparison, ColoursThatTheFileHasNoPlaceForAreNotMissed)
{
    MediaStream found = MakeVideoStream(1280, 720, "CODEC_ID_MPEG4");
    found.color.matrix = "smpte170m";
    EXPECT_THAT(Compare({{JobKeys::kColorMatrix, "bt709"}}, found, MakeVideoStream(), "avi"), IsEmpty());
}

TEST(PictureComparison, ACopyMayLoseColoursThatOnlyItsContainerTold)
{
    MediaStream source = MakeVideoStream();
    source.color.matrix = "bt709";
    ExpectedFile file = ExpectingFile(MakeMediaFile({source}), "mpegts");
    file.streams.front().isCopied = true;
    MediaStream found = MakeVideoStream();
    EXPECT_THAT(ComparePicture(file, file.streams.front(), found), IsEmpty());
    found.color.matrix = "bt470bg";
    EXPECT_THAT(Told(ComparePicture(file, file.streams.front(), found)),
                ElementsAre("colour matrix: wanted bt709, found bt470bg"));
}

TEST(PictureComparison, OfASourceThatIsNotKnownGoesByTheRecord)
{
    ExpectedFile file = ExpectingFile(MakeMediaFile({MakeVideoStream()}), "mp4");
    file.sources.clear();
    file.streams.front().record.SetChildT(JobKeys::kDeinterlace, JobKeys::kDeinterlaceKeep);
    MediaStream found = MakeVideoStream();
    found.pixelFormat = "yuv422p";
    found.isInterlaced = true;
    const std::string pixels = "pixel format: wanted yuv420p, found yuv422p";
    EXPECT_THAT(Told(ComparePicture(file, file.streams.front(), found)),
                ElementsAre(pixels, "field order: wanted progressive, found interlaced"));
    file.streams.front().isCopied = true;
    EXPECT_THAT(Told(ComparePicture(file, file.streams.front(), found)), ElementsAre(pixels));
}

TEST(PictureComparison, APixelFormatThatTheRecordLeavesOpenMayBeAny)
{
    const MediaStream source = MakeVideoStream();
    RemoveValue(source, TAG_PIX_FMT);
    MediaStream found = MakeVideoStream();
    found.pixelFormat = "yuv422p";
    EXPECT_THAT(Compare({}, found, source), IsEmpty());
}

TEST(PictureComparison, AGifIsDecodedWithoutItsPalette)
{
    MediaStream found = MakeVideoStream(1280, 720, "CODEC_ID_GIF");
    found.pixelFormat = "bgra";
    EXPECT_THAT(Compare({{JobKeys::kPixelFormat, "pal8"}}, found, MakeVideoStream(), "gif"), IsEmpty());
}

TEST(PictureComparison, OfACodecThatFFmpegDoesNotKnowHasPixelsToCompare)
{
    MediaStream found = MakeVideoStream();
    found.codec = "none of FFmpeg's";
    found.pixelFormat = "yuv422p";
    EXPECT_THAT(Compare({}, found), ElementsAre("pixel format: wanted yuv420p, found yuv422p"));
}

TEST(PictureComparison, TransparencyMayStandBesideTheStream)
{
    MediaStream found = MakeVideoStream(1280, 720, "CODEC_ID_VP9");
    found.pixelFormat = "yuv420p";
    const std::vector<std::pair<std::string, std::string>> keys = {{JobKeys::kPixelFormat, "yuva420p"}};
    EXPECT_THAT(Compare(keys, found, MakeVideoStream(), "webm"),
                ElementsAre("pixel format: wanted yuva420p, found yuv420p"));
    SetTag(*found.descriptor, "alpha_mode", "1");
    EXPECT_THAT(Compare(keys, found, MakeVideoStream(), "webm"), IsEmpty());
    found.pixelFormat = "gbrp";
    EXPECT_THAT(Compare(keys, found, MakeVideoStream(), "webm"),
                ElementsAre("pixel format: wanted yuva420p, found gbrp"));
}

TEST(PictureComparison, DvSaysThatItIsInterlacedWhateverItIs)
{
    MediaStream found = MakeVideoStream(720, 576, "CODEC_ID_DVVIDEO");
    found.isInterlaced = true;
    EXPECT_THAT(Compare({}, found), IsEmpty());
}

TEST(PictureComparison, FieldsOfUnknownOrderAreInterlaced)
{
    EXPECT_THAT(Compare({}, InterlacedVideo("")),
                ElementsAre("field order: wanted progressive, found interlaced"));
}

TEST(PictureComparison, PngDoesNotTellItsRange)
{
    MediaStream found = MakeVideoStream(1280, 720, "CODEC_ID_PNG");
    found.color.range = "pc";
    EXPECT_THAT(Compare({{JobKeys::kColorRange, "tv"}}, found, MakeVideoStream(), "matroska"), IsEmpty());
}

TEST(PictureComparison, AFileThatDoesNotTellItsFieldsMayHaveKeptThem)
{
    MediaStream found = MakeVideoStream();
    found.fieldOrder = "";
    EXPECT_THAT(Compare({{JobKeys::kDeinterlace, JobKeys::kDeinterlaceKeep}}, found, InterlacedVideo("tt")),
                IsEmpty());
}

} // namespace
