#include "Media/Verifying/MediaScan.h"

#include "Media/MediaException.h"
#include "Tests/Support/Clip.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

/// Twenty seconds of video with a key frame every ten, and sound.
class ScannedFile : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        s_folder = new TemporaryFolder;
        MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:r=25:d=20", "-f", "lavfi", "-i", "sine=d=20", "-c:v",
                  "libx264", "-preset", "ultrafast", "-g", "250", "-c:a", "aac", Name("in.mp4")});
    }
    static void TearDownTestSuite() { delete s_folder; }
    static std::string Name(const std::string& name) { return (*s_folder / name).string(); }

    static TemporaryFolder* s_folder;
};
TemporaryFolder* ScannedFile::s_folder = nullptr;

TEST_F(ScannedFile, CountsItsPackets)
{
    const MediaScan scan = MeasurePackets(Name("in.mp4"), {});
    ASSERT_EQ(scan.streams.size(), 2U);
    EXPECT_TRUE(scan.isWhole);
    EXPECT_FALSE(scan.isDecoded);
    EXPECT_EQ(scan.streams[0].packets, 500);
    EXPECT_EQ(scan.streams[0].begin, 0);
    EXPECT_EQ(scan.streams[0].end, 20000000);
    EXPECT_EQ(scan.streams[0].frameLength, 40000);
    EXPECT_EQ(scan.streams[0].frames, 0);
    EXPECT_GT(scan.streams[0].bytes, 0);
}

TEST_F(ScannedFile, TellsHowFarItIsDecodedWhereAllOfItIs)
{
    std::vector<std::int64_t> told;
    const auto tell = [&told](std::int64_t done) { told.push_back(done); };
    DecodeFile(Name("in.mp4"), VerificationDepth::Quick, {}, tell);
    EXPECT_EQ(told.size(), 0U);
    const MediaScan scan = DecodeFile(Name("in.mp4"), VerificationDepth::Full, {}, tell);
    EXPECT_EQ(static_cast<std::int64_t>(told.size()), scan.streams[0].packets + scan.streams[1].packets);
    EXPECT_LT(told.front(), 1000000);
    EXPECT_GT(told.back(), 19000000);
}

TEST_F(ScannedFile, IsDecodedInPartsUnlessAllOfItIsAskedFor)
{
    const MediaScan quick = DecodeFile(Name("in.mp4"), VerificationDepth::Quick, {});
    EXPECT_FALSE(quick.isDecoded);
    EXPECT_TRUE(quick.isWhole);
    // At least a second at the beginning and the end, and no more than what is needed to get there.
    EXPECT_GT(quick.streams[0].frames, 50);
    EXPECT_LT(quick.streams[0].frames, 400);
    EXPECT_EQ(quick.streams[0].packets, 500);
    EXPECT_EQ(quick.streams[0].error, "");
    EXPECT_EQ(quick.streams[1].error, "");
    const MediaScan full = DecodeFile(Name("in.mp4"), VerificationDepth::Full, {});
    EXPECT_TRUE(full.isDecoded);
    EXPECT_EQ(full.streams[0].frames, 500);
    EXPECT_EQ(full.streams[0].error, "");
}

TEST_F(ScannedFile, StopsWhenItIsCancelled)
{
    int packets = 0;
    const MediaScan scan =
        DecodeFile(Name("in.mp4"), VerificationDepth::Full, [&packets] { return ++packets == 10; });
    EXPECT_TRUE(scan.isCancelled);
    EXPECT_EQ(packets, 10);
}

TEST_F(ScannedFile, AFileThatIsNoMediaIsRefused)
{
    WriteFile(Name("text"), "text");
    EXPECT_THROW(DecodeFile(Name("text"), VerificationDepth::Quick, {}), ProbeException);
    EXPECT_THROW(MeasurePackets(Name("none"), {}), ProbeException);
    EXPECT_THROW(MeasurePackets("/dev/null", {}), ProbeException);
}

TEST_F(ScannedFile, OfFramesWithoutALengthEndsAFrameAfterTheLast)
{
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:r=10:d=0.5", "-c:v", "mjpeg", Name("in.asf")});
    const MediaScan scan = MeasurePackets(Name("in.asf"), {});
    ASSERT_EQ(scan.streams.size(), 1U);
    EXPECT_EQ(scan.streams[0].end, 500000);
    EXPECT_EQ(scan.streams[0].frameLength, 100000);
}

} // namespace
