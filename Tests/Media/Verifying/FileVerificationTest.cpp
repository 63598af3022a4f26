#include "Media/Verifying/FileVerification.h"

#include "Tests/Support/Clip.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/VerifyingFixtures.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

/// A Matroska file of a video and a sound, and what it must be.
class VerifiedFile : public testing::Test
{
protected:
    VerifiedFile() { WriteFile(Name("out"), TinyClip()); }

    std::string Name(const std::string& name) const { return (m_folder / name).string(); }

    /// A file that must hold what "out" holds, as it is there.
    ExpectedFile Expected(const std::string& container = "matroska") const
    {
        const MediaFile file = ProbeMedia(Name("out"));
        ExpectedFile wanted = ExpectingFile(file, container);
        wanted.streams.clear();
        for (const MediaStream& stream : file.streams)
        {
            ExpectedStream each = Expecting(MakeMediaFile({stream}));
            each.streams = {stream.index};
            each.place.stream = stream.index;
            wanted.streams.push_back(each);
        }
        return wanted;
    }
    TargetVerification Verify(const ExpectedFile& wanted) const
    {
        return VerifyFile(Name("out"), "film", wanted, {});
    }

    TemporaryFolder m_folder;
};

TEST_F(VerifiedFile, HasNoDifferenceWhenItIsWhatItMustBe)
{
    const TargetVerification verification = Verify(Expected());
    EXPECT_EQ(verification.file, "film");
    EXPECT_THAT(Told(verification.differences), IsEmpty());
    EXPECT_THAT(verification.notes, IsEmpty());
}

TEST_F(VerifiedFile, LacksAStream)
{
    ExpectedFile wanted = Expected();
    wanted.streams.push_back(wanted.streams.back());
    wanted.streams.back().place.stream = 2;
    const TargetVerification verification = Verify(wanted);
    EXPECT_THAT(Told(verification.differences), ElementsAre("stream: wanted audio ac3, found none"));
    EXPECT_EQ(verification.differences.at(0).place.stream, 2U);
}

TEST_F(VerifiedFile, HasAStreamTooMany)
{
    ExpectedFile wanted = Expected();
    wanted.streams.pop_back();
    EXPECT_THAT(Told(Verify(wanted).differences), ElementsAre("stream 1: wanted none, found audio ac3"));
}

TEST_F(VerifiedFile, HasItsStreamsInAnotherOrder)
{
    ExpectedFile wanted = Expected();
    std::swap(wanted.streams.front(), wanted.streams.back());
    EXPECT_THAT(Told(Verify(wanted).differences),
                ElementsAre("order of streams: wanted audio ac3, video mpeg4, found video mpeg4, audio ac3"));
}

TEST_F(VerifiedFile, OfAContainerThatOrdersItsStreamsItselfHasThemInAnyOrder)
{
    WriteFile(Name("in"), TinyClip());
    MakeClip({"-i", Name("in"), "-c:v", "mpeg1video", "-c:a", "mp2", "-f", "mpeg", Name("out")});
    ExpectedFile wanted = Expected("mpeg");
    std::swap(wanted.streams.front(), wanted.streams.back());
    EXPECT_THAT(Told(Verify(wanted).differences), IsEmpty());
}

TEST_F(VerifiedFile, IsAnotherContainer)
{
    EXPECT_THAT(Told(Verify(Expected("mp4")).differences),
                ElementsAre("container: wanted mp4, found matroska"));
}

TEST_F(VerifiedFile, OfAContainerThatIsNotKnownHereIsComparedAllTheSame)
{
    ExpectedFile wanted = Expected("none of FFmpeg's");
    wanted.streams.pop_back();
    EXPECT_THAT(Told(Verify(wanted).differences), ElementsAre("stream 1: wanted none, found audio ac3"));
}

TEST_F(VerifiedFile, ThatDoesNotSayWhatIsInItIsOnlyLookedAtForBytes)
{
    const ExpectedFile wanted = Expected("rawvideo");
    const std::string note = "'film' cannot be verified, because rawvideo files do not say what is in them";
    EXPECT_THAT(Told(Verify(wanted).differences), IsEmpty());
    EXPECT_THAT(Verify(wanted).notes, ElementsAre(note));
    WriteFile(Name("out"), "");
    EXPECT_THAT(Told(Verify(wanted).differences), ElementsAre("file: wanted rawvideo, found an empty file"));
    std::filesystem::remove(Name("out"));
    EXPECT_THAT(Told(Verify(wanted).differences), ElementsAre("file: wanted rawvideo, found an empty file"));
    EXPECT_THAT(Verify(wanted).notes, ElementsAre(note));
}

TEST_F(VerifiedFile, WithoutKnownSourcesHasAnyDuration)
{
    ExpectedFile wanted = Expected();
    EXPECT_THAT(Told(Verify(wanted).differences), IsEmpty());
    wanted.sources.clear();
    EXPECT_THAT(Told(Verify(wanted).differences), IsEmpty());
}

TEST_F(VerifiedFile, IsNotDecodedWhereFFmpegHasNoDecoder)
{
    std::string bytes = TinyClip();
    const std::string mpeg4 = "V_MPEG4/ISO/ASP";
    // A codec that FFmpeg knows, with decoders of other libraries alone.
    std::string other = "V_AVS3";
    other.resize(mpeg4.size());
    ASSERT_NE(bytes.find(mpeg4), std::string::npos);
    WriteFile(Name("out"), bytes.replace(bytes.find(mpeg4), mpeg4.size(), other));
    const TargetVerification verification = Verify(Expected());
    EXPECT_THAT(Told(verification.differences), IsEmpty());
    EXPECT_THAT(verification.notes, ElementsAre("the installed FFmpeg does not have a decoder for avs3, so a "
                                                "stream of 'film' is not decoded"));
}

TEST_F(VerifiedFile, IsNotComparedAnyFurtherWhenItIsCancelled)
{
    ExpectedFile wanted = Expected();
    wanted.streams.clear();
    FileVerificationOptions options;
    options.isCancelled = [] { return true; };
    EXPECT_THAT(VerifyFile(Name("out"), "film", wanted, options).differences, IsEmpty());
}

/// A WAV file that says that it is longer than it is.
MediaFile CutSource(const TemporaryFolder& folder)
{
    using namespace std::string_literals;
    MediaFile source = MakeMediaFile({MakeAudioStream()}, (folder / "in.wav").string());
    source.demuxer = "wav";
    // Two channels of 16 bits at 48 kHz.
    const std::string format = "fmt \x10\0\0\0\1\0\2\0\x80\xBB\0\0\0\xEE\2\0\4\0\x10\0"s;
    WriteFile(source.name, "RIFF\x24\0\1\0WAVE"s + format + "data\0\0\1\0"s + std::string(400, '\0'));
    return source;
}

TEST_F(VerifiedFile, CallsBackOnlyInTheThreadThatVerifiesIt)
{
    std::set<std::thread::id> threads;
    int reports = 0;
    FileVerificationOptions options;
    options.depth = VerificationDepth::Full;
    options.isCancelled = [&threads] {
        threads.insert(std::this_thread::get_id());
        return false;
    };
    options.onProgress = [&threads, &reports](std::int64_t) {
        threads.insert(std::this_thread::get_id());
        ++reports;
    };
    EXPECT_THAT(Told(VerifyFile(Name("out"), "film", Expected(), options).differences), IsEmpty());
    EXPECT_GT(reports, 0);
    EXPECT_THAT(threads, ElementsAre(std::this_thread::get_id()));
}

TEST_F(VerifiedFile, PassesOnWhatItsCallbackThrows)
{
    FileVerificationOptions options;
    options.depth = VerificationDepth::Full;
    options.onProgress = [](std::int64_t) { throw std::out_of_range("enough"); };
    EXPECT_THROW(VerifyFile(Name("out"), "film", Expected(), options), std::out_of_range);
}

TEST_F(VerifiedFile, IsMadeOfASourceThatIsCut)
{
    ExpectedFile wanted = Expected();
    wanted.sources.push_back(CutSource(m_folder));
    EXPECT_THAT(Told(Verify(wanted).differences), IsEmpty());
    // Two streams of one source tell it once.
    wanted.streams[0].source = 1;
    wanted.streams[0].streams = {0};
    wanted.streams[1].source = 1;
    wanted.streams[1].streams = {0};
    wanted.streams[1].isCopied = false;
    const auto isCut = testing::Contains("source '" + wanted.sources[1].name +
                                         "': wanted 65580 bytes, found 444 bytes, it is cut");
    wanted.sources[1].duration = std::nullopt;
    EXPECT_THAT(Told(Verify(wanted).differences), isCut.Times(1));
    wanted.isPicture = true;
    EXPECT_THAT(Told(Verify(wanted).differences), testing::Not(isCut));
}

TEST_F(VerifiedFile, MayBeMadeOfThePartOfASourceThatIsThere)
{
    ExpectedFile wanted = Expected();
    wanted.streams.erase(wanted.streams.begin());
    wanted.sources.push_back(CutSource(m_folder));
    wanted.streams.front().source = 1;
    wanted.streams.front().streams = {0};
    const auto isCut = testing::Contains(testing::HasSubstr("wanted 65580 bytes, found 444 bytes"));
    wanted.span = {0, 200000};
    EXPECT_THAT(Told(Verify(wanted).differences), testing::Not(isCut));
    wanted.sources[1].duration = 100000;
    EXPECT_THAT(Told(Verify(wanted).differences), isCut);
    wanted.sources[1].duration = std::nullopt;
    EXPECT_THAT(Told(Verify(wanted).differences), isCut);
}

TEST_F(VerifiedFile, MayHoldACoverThatIsCopiedAsAVideo)
{
    WriteFile(Name("in"), TinyClip());
    MakeClip({"-i", Name("in"), "-f", "lavfi", "-i", "color=s=32x32:d=0.04", "-map", "0:a", "-map", "1",
              "-c:a", "copy", "-c:v", "mjpeg", "-disposition:v", "attached_pic", "-f", "mp4", Name("out")});
    ExpectedFile wanted = Expected("mp4");
    wanted.covers = std::nullopt;
    wanted.streams[1].isCopied = true;
    EXPECT_THAT(Told(Verify(wanted).differences), IsEmpty());
    wanted.streams[1].isCopied = false;
    EXPECT_THAT(Told(Verify(wanted).differences), ElementsAre("stream: wanted video mjpeg, found none"));
}

TEST_F(VerifiedFile, ThatCannotBeReadIsADifferenceWithoutItsNameWhileItIsMade)
{
    const ExpectedFile wanted = Expected();
    WriteFile(Name("out"), "no Matroska");
    EXPECT_THAT(
        Told(Verify(wanted).differences),
        ElementsAre("file: wanted matroska, found cannot be read: Invalid data found when processing input"));
}

} // namespace
