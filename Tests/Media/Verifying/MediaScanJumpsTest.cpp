// What is decoded of a file in parts, whatever else is in it.

#include "Media/Verifying/MediaScan.h"

#include "Tests/Support/Clip.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;

class ScannedInParts : public testing::Test
{
protected:
    std::string Name(const std::string& name) const { return (m_folder / name).string(); }
    MediaScan Scan(const std::vector<std::string>& arguments, const std::string& name) const
    {
        std::vector<std::string> all = arguments;
        all.push_back(Name(name));
        MakeClip(all);
        return DecodeFile(Name(name), VerificationDepth::Quick, {});
    }

    TemporaryFolder m_folder;
};

TEST_F(ScannedInParts, AFileWithSubtitlesAndAttachmentsHasNoErrors)
{
    WriteFile(Name("in.srt"),
              "1\n00:00:01,000 --> 00:00:02,000\nText\n\n2\n00:00:19,000 --> 00:00:19,500\nEnd\n");
    WriteFile(Name("font.ttf"), "font");
    const MediaScan scan = Scan({"-f", "lavfi", "-i", "testsrc=s=64x48:r=5:d=20", "-i", Name("in.srt"),
                                 "-attach", Name("font.ttf"), "-metadata:s:t", "mimetype=font/ttf", "-c:v",
                                 "mpeg4", "-g", "10", "-c:s", "subrip"},
                                "out.mkv");
    ASSERT_EQ(scan.streams.size(), 3U);
    EXPECT_FALSE(scan.isDecoded);
    EXPECT_TRUE(scan.isWhole);
    EXPECT_EQ(scan.streams[0].error, "");
    EXPECT_EQ(scan.streams[0].packets, 100);
    EXPECT_EQ(scan.streams[1].error, "");
    EXPECT_EQ(scan.streams[1].packets, 2);
    EXPECT_GT(scan.streams[1].frames, 0);
    EXPECT_EQ(scan.streams[2].frames, 0);
}

TEST_F(ScannedInParts, AStreamThatEndsEarlyIsNotWaitedFor)
{
    const MediaScan scan = Scan({"-f", "lavfi", "-i", "testsrc=s=64x48:r=5:d=40", "-f", "lavfi", "-i",
                                 "sine=d=2", "-c:v", "mpeg4", "-g", "10", "-c:a", "flac"},
                                "out.mkv");
    ASSERT_EQ(scan.streams.size(), 2U);
    EXPECT_EQ(scan.streams[0].error, "");
    EXPECT_EQ(scan.streams[1].error, "");
    EXPECT_GT(scan.streams[1].frames, 0);
    // Not all of the rest is decoded while the sound is looked for.
    EXPECT_LT(scan.streams[0].frames, 150);
}

TEST_F(ScannedInParts, FramesThatNeedAnEarlierGroupAreNotAnError)
{
    const MediaScan scan =
        Scan({"-f", "lavfi", "-i", "testsrc=s=64x48:r=25:d=20", "-c:v", "mpeg2video", "-bf", "2", "-g", "12"},
             "out.mkv");
    ASSERT_EQ(scan.streams.size(), 1U);
    EXPECT_FALSE(scan.isDecoded);
    EXPECT_EQ(scan.streams[0].error, "");
    EXPECT_EQ(scan.streams[0].packets, 500);
}

TEST_F(ScannedInParts, ADamagedImageIsAnError)
{
    Scan({"-f", "lavfi", "-i", "testsrc=s=176x144:r=25:d=2", "-c:v", "libx264", "-bf", "0"}, "whole.mkv");
    std::string bytes = ReadFile(Name("whole.mkv"));
    for (std::size_t i = bytes.size() / 2; i < bytes.size() / 2 + 200; ++i)
    {
        bytes[i] = static_cast<char>(~bytes[i]);
    }
    WriteFile(Name("damaged.mkv"), bytes);
    const MediaScan scan = DecodeFile(Name("damaged.mkv"), VerificationDepth::Full, {});
    ASSERT_EQ(scan.streams.size(), 1U);
    EXPECT_NE(scan.streams[0].error, "");
}

} // namespace
