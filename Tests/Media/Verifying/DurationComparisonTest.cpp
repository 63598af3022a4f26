#include "Media/Verifying/DurationComparison.h"

#include "Tests/Support/Clip.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/VerifyingFixtures.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Compare(const ExpectedFile& wanted, const MediaFile& source, std::int64_t end)
{
    const std::function<bool()> never;
    StreamScan scan = GoodScan();
    scan.end = end;
    return Told(
        DurationComparison(wanted, never).Compare(wanted.streams.front(), source.streams.front(), scan));
}

std::vector<std::string> Compare(const MediaFile& source, std::int64_t end)
{
    return Compare(ExpectingFile(source, "mp4"), source, end);
}

/// A source whose own word is enough does not have to be there.
TEST(DurationComparison, BelievesASourceThatSaysWhatWasMade)
{
    EXPECT_THAT(Compare(MakeMediaFile({MakeVideoStream()}), 10000000), IsEmpty());
    EXPECT_THAT(Compare(MakeMediaFile({MakeVideoStream()}), 9920000), IsEmpty());
}

TEST(DurationComparison, ReadsASourceThatSaysOtherwise)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "in.mkv").string();
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:r=25:d=2", "-c:v", "mpeg4", name});
    MediaFile source = ProbeMedia(name);
    EXPECT_THAT(Compare(source, 2000000), IsEmpty());
    EXPECT_THAT(Compare(source, 1000000), ElementsAre("duration: wanted 2.000 s, found 1.000 s"));
    source.duration = std::nullopt;
    EXPECT_THAT(Compare(source, 2000000), IsEmpty());
    source.duration = 60000000;
    EXPECT_THAT(Compare(source, 2000000),
                ElementsAre("source '" + name + "': wanted 60.000 s, found 2.000 s, it is cut"));
}

TEST(DurationComparison, ExpectsThePartOfTheSourceThatTheJobAsksFor)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "in.mkv").string();
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:r=25:d=2", "-c:v", "mpeg4", name});
    const MediaFile source = ProbeMedia(name);
    ExpectedFile wanted = ExpectingFile(source, "mp4");
    wanted.span = {500000, 1500000};
    const auto compare = [&](std::int64_t end) { return Compare(wanted, source, end); };
    EXPECT_THAT(compare(1000000), IsEmpty());
    EXPECT_THAT(compare(2000000), ElementsAre("duration: wanted 1.000 s, found 2.000 s"));
    EXPECT_THAT(compare(500000), ElementsAre("duration: wanted 1.000 s, found 0.500 s"));
    // A copy may begin at any key frame before its part.
    wanted.streams.front().isCopied = true;
    EXPECT_THAT(compare(1500000), IsEmpty());
    EXPECT_THAT(compare(1000000), IsEmpty());
    EXPECT_THAT(compare(1800000), ElementsAre("duration: wanted 1.000 s, found 1.300 s"));
    EXPECT_THAT(compare(500000), ElementsAre("duration: wanted 1.000 s, found 0.500 s"));
}

TEST(DurationComparison, AStreamMayEndBeforeItsFile)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "in.mkv").string();
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:r=25:d=1", "-f", "lavfi", "-i", "sine=d=3", "-c:v",
              "mpeg4", "-c:a", "flac", name});
    EXPECT_THAT(Compare(ProbeMedia(name), 1000000), IsEmpty());
}

TEST(DurationComparison, SubtitlesAndCoversHaveNoDuration)
{
    EXPECT_THAT(Compare(MakeMediaFile({MakeSubtitleStream()}), 1), IsEmpty());
    EXPECT_THAT(Compare(MakeMediaFile({MakeAttachedPicture()}), 1), IsEmpty());
}

/// What is told of a stream of ten seconds of a source that says that it lasts as long, with a change of one
/// of the three.
template <class Change>
std::vector<std::string> CompareChanged(const Change& change)
{
    ExpectedFile wanted = ExpectingFile(MakeMediaFile({MakeVideoStream(), MakeSubtitleStream()}), "mp4");
    MediaStream found = MakeVideoStream();
    StreamScan scan = GoodScan();
    change(wanted, found, scan);
    const std::function<bool()> never;
    return Told(DurationComparison(wanted, never).Compare(wanted.streams.front(), found, scan));
}

TEST(DurationComparison, ImagesHaveNoDuration)
{
    EXPECT_THAT(CompareChanged([](ExpectedFile& wanted, MediaStream&, StreamScan& scan) {
                    wanted.isPicture = true;
                    scan.end = 1;
                }),
                IsEmpty());
    EXPECT_THAT(CompareChanged([](ExpectedFile&, MediaStream& found, StreamScan& scan) {
                    found.isAttachedPicture = true;
                    scan.end = 1;
                }),
                IsEmpty());
}

TEST(DurationComparison, NothingIsSaidOfAnEndThatWasNotSeen)
{
    EXPECT_THAT(
        CompareChanged([](ExpectedFile&, MediaStream&, StreamScan& scan) { scan.end = std::nullopt; }),
        IsEmpty());
}

TEST(DurationComparison, BelievesTheLongestOfTheStreamsThatAreMerged)
{
    EXPECT_THAT(CompareChanged([](ExpectedFile& wanted, MediaStream&, StreamScan& scan) {
                    wanted.sources.front().streams[0].duration = 4000000;
                    // A subtitle does not make a video longer.
                    wanted.sources.front().streams[1].duration = 20000000;
                    wanted.streams.front().streams = {0, 1};
                    scan.end = 4000000;
                }),
                IsEmpty());
}

TEST(DurationComparison, ARecordWithoutARateAllowsNoFrameMore)
{
    const auto compare = [](const auto& rate) {
        return CompareChanged([&rate](ExpectedFile& wanted, MediaStream&, StreamScan& scan) {
            Core::Property& record = wanted.streams.front().record;
            record.RemoveChild(Conf::IFormatCodecVideo::TAG_FPS);
            record.SetChildT(Conf::IFormatCodecVideo::TAG_FPS, rate);
            // A frame of the source, one of the file, and what containers round.
            scan.end = 10100000;
        });
    };
    EXPECT_THAT(compare(Core::Property::Ratio(25)), IsEmpty());
    EXPECT_THAT(compare(Core::Property::Ratio(0)), IsEmpty());
    EXPECT_THAT(compare(std::string("25")), IsEmpty());
}

TEST(DurationComparison, ACoverThatBecomesAVideoHasNoDuration)
{
    EXPECT_THAT(CompareChanged([](ExpectedFile& wanted, MediaStream&, StreamScan& scan) {
                    wanted.sources.front().streams[0].isAttachedPicture = true;
                    scan.end = 1;
                }),
                IsEmpty());
}

TEST(DurationComparison, AStreamMayBeginLaterThanItsFile)
{
    EXPECT_THAT(CompareChanged([](ExpectedFile&, MediaStream&, StreamScan& scan) {
                    scan.begin = 2000000;
                    scan.end = 12000000;
                }),
                IsEmpty());
}

TEST(DurationComparison, WhatIsCancelledFindsNoCut)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "in.mkv").string();
    WriteFile(name, TinyClip());
    MediaFile source = ProbeMedia(name);
    source.duration = 60000000;
    source.durationIsEstimated = false;
    const ExpectedFile wanted = ExpectingFile(source, "mp4");
    const auto isCutFound = [&](bool isCancelled) {
        const std::function<bool()> cancels = [isCancelled] { return isCancelled; };
        const auto told = Told(DurationComparison(wanted, cancels)
                                   .Compare(wanted.streams.front(), source.streams.front(), GoodScan()));
        return std::any_of(told.begin(), told.end(), [](const std::string& each) {
            return each.find("it is cut") != std::string::npos;
        });
    };
    EXPECT_TRUE(isCutFound(false));
    EXPECT_FALSE(isCutFound(true));
}

TEST(DurationComparison, APauseAtTheBeginningMayStayOrGo)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "in.mkv").string();
    MakeClip({"-itsoffset", "1", "-f", "lavfi", "-i", "testsrc=s=64x48:r=25:d=2", "-f", "lavfi", "-i",
              "sine=d=3", "-c:v", "mpeg4", "-c:a", "flac", name});
    MediaFile source = ProbeMedia(name);
    source.durationIsEstimated = true;
    // A video that is not in the file any more.
    source.streams.push_back(source.streams.front());
    ExpectedFile wanted = ExpectingFile(source, "mp4");
    wanted.streams.front().streams = {0, 2};
    const auto compare = [&](std::int64_t begin, std::int64_t end) {
        const std::function<bool()> never;
        StreamScan scan = GoodScan();
        scan.begin = begin;
        scan.end = end;
        return Told(
            DurationComparison(wanted, never).Compare(wanted.streams.front(), source.streams.front(), scan));
    };
    EXPECT_THAT(compare(1000000, 3000000), IsEmpty());
    EXPECT_THAT(compare(0, 2000000), IsEmpty());
    EXPECT_THAT(compare(1000000, 4000000), IsEmpty());
    EXPECT_THAT(compare(1000000, 2000000), IsEmpty());
    EXPECT_THAT(compare(0, 1000000), ElementsAre("duration: wanted 3.000 s, found 1.000 s"));
}

TEST(DurationComparison, OfACopyOfAPartMayBeginEarlierWhateverTheSourceSays)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "in.mkv").string();
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:r=25:d=2", "-c:v", "mpeg4", name});
    MediaFile source = ProbeMedia(name);
    source.duration.reset();
    ExpectedFile wanted = ExpectingFile(source, "mp4");
    wanted.span = {500000, std::nullopt};
    wanted.streams.front().isCopied = true;
    const auto compare = [&](std::int64_t end) { return Compare(wanted, source, end); };
    EXPECT_THAT(compare(1500000), IsEmpty());
    EXPECT_THAT(compare(2000000), IsEmpty());
    EXPECT_THAT(compare(2300000), ElementsAre("duration: wanted 1.500 s, found 1.800 s"));
    EXPECT_THAT(compare(1000000), ElementsAre("duration: wanted 1.500 s, found 1.000 s"));
}

} // namespace
