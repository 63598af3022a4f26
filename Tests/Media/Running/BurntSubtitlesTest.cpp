#include "Tests/Support/BluRaySubtitles.h"
#include "Tests/Support/PictureTest.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::Contains;
using testing::HasSubstr;

const std::string kVideo = R"("video":{"codec_id":"CODEC_ID_MPEG4"})";

/// Two seconds of grey, 320x240, with a white box of 60x20 at (100, 180) from 0.5 to 1 s and from 1.2 to
/// 1.7 s.
class BurntSubtitles : public PictureTest
{
protected:
    BurntSubtitles()
    {
        WriteFile(Name("boxes.sup"), BluRaySubtitles(320, 240, {{45000, 90000}, {108000, 153000}}));
        Make("color=gray:s=320x240:d=2:r=25", {"-itsoffset", "0.5", "-i", "boxes.sup", "-map", "0", "-map",
                                               "1", "-c:v", "mpeg4", "-c:s", "copy", "bluray.mkv"});
        MakeClip({"-fix_sub_duration:1", "-i", "bluray.mkv", "-map", "0", "-c:v", "copy", "-c:s", "dvdsub",
                  "dvd.mkv"},
                 m_folder.Path().string());
    }

    static JobRequest Drawn()
    {
        JobRequest request;
        request.merges = {{0, 1}};
        return request;
    }
    /// The brightness inside the box of each frame.
    std::vector<int> Boxes() const
    {
        constexpr std::size_t kPlace = 190 * 320 + 130;
        const std::vector<std::uint8_t> samples = SamplesOf(m_output, "gray", "1000");
        std::vector<int> boxes;
        for (std::size_t frame = 0; frame + kPlace < samples.size(); frame += 320 * 240)
        {
            boxes.push_back(samples[frame + kPlace]);
        }
        return boxes;
    }
    std::vector<std::string> CodecsMade() const
    {
        std::vector<std::string> codecs;
        for (const MediaStream& stream : ProbeMedia(m_output).streams)
        {
            codecs.push_back(stream.codec);
        }
        return codecs;
    }
};

TEST_F(BurntSubtitles, EndWithTheVideoAndAreShownInTime)
{
    for (const std::string source : {"bluray.mkv", "dvd.mkv"})
    {
        SCOPED_TRACE(source);
        const PlannedJob job = Convert(source, "matroska", "{" + kVideo + "}", Drawn());
        const std::vector<int> boxes = Boxes();
        ASSERT_EQ(boxes.size(), 50U);
        EXPECT_LT(boxes[5], 150);
        EXPECT_GT(boxes[18], 200);
        EXPECT_LT(boxes[27], 150);
        EXPECT_GT(boxes[36], 200);
        EXPECT_LT(boxes[47], 150);
    }
}

TEST_F(BurntSubtitles, AreNotKeptBesideTheVideoAsWell)
{
    const PlannedJob job = Convert("bluray.mkv", "matroska", "{" + kVideo + "}", Drawn());
    EXPECT_EQ(CodecsMade(), std::vector<std::string>{"mpeg4"});
    EXPECT_EQ(job.notes, std::vector<std::string>{"Subtitle stream 1 will be drawn into the video, so it "
                                                  "will not be kept beside it"});
}

TEST_F(BurntSubtitles, AreKeptBesideTheVideoWhenTheyWereChosen)
{
    JobRequest request = Drawn();
    request.streams.chosen = {0, 1};
    Convert("dvd.mkv", "matroska", "{" + kVideo + "}", request);
    EXPECT_EQ(CodecsMade(), (std::vector<std::string>{"mpeg4", "dvd_subtitle"}));
}

TEST_F(BurntSubtitles, FollowTheFrameRateOfTheTarget)
{
    Convert("bluray.mkv", "matroska",
            R"({"video":{"codec_id":"CODEC_ID_MPEG4","frameRateRatio":[10,1],"width":160,"height":120}})",
            Drawn());
    EXPECT_EQ(FrameCount(160, 120), 20U);
}

TEST_F(BurntSubtitles, OfBluRaysAreCopiedWhereTheContainerHoldsThem)
{
    const PlannedJob job = Convert("bluray.mkv", "matroska", "{" + kVideo + "}");
    EXPECT_EQ(CodecsMade(), (std::vector<std::string>{"mpeg4", "hdmv_pgs_subtitle"}));
    EXPECT_EQ(job.notes, std::vector<std::string>{});
    EXPECT_LT(ReadMediaInfo(m_output).streams.at(1).seconds, 2.5);
}

TEST_F(BurntSubtitles, OfBluRaysAreLeftOutOfMp4AndNamed)
{
    const PlannedJob job = Convert("bluray.mkv", "mp4", "{" + kVideo + "}");
    EXPECT_EQ(CodecsMade(), std::vector<std::string>{"mpeg4"});
    EXPECT_THAT(job.notes,
                testing::ElementsAre(testing::EndsWith(
                    "bluray.mkv: subtitle stream 1: (hdmv_pgs_subtitle) is left out; container mp4 "
                    "cannot hold hdmv_pgs_subtitle")));
}

TEST_F(BurntSubtitles, OfBluRaysEndWhenTheyAreConverted)
{
    Convert("bluray.mkv", "matroska",
            "{" + kVideo + R"(,"subtitles_video":{"codec_id":"CODEC_ID_DVD_SUBTITLE"}})");
    EXPECT_EQ(CodecsMade(), (std::vector<std::string>{"mpeg4", "dvd_subtitle"}));
    EXPECT_NEAR(ReadMediaInfo(m_output).streams.at(1).seconds, 1.2, 0.05);
}

TEST_F(BurntSubtitles, FitACanvasThatIsHigherThanTheVideo)
{
    Make("color=gray:s=320x120:d=1:r=25", {"-itsoffset", "0.5", "-i", "boxes.sup", "-map", "0", "-map", "1",
                                           "-c:v", "mpeg4", "-c:s", "copy", "-t", "1", "wide.mkv"});
    Convert("wide.mkv", "matroska", "{" + kVideo + "}", Drawn());
    const std::vector<std::uint8_t> samples = SamplesOf(m_output, "gray", "100");
    // Half as large: the canvas begins at 80, so the box is at (130, 90) and 30x10 large.
    EXPECT_GT(samples.at(18 * 320 * 120 + 95 * 320 + 145), 200);
    EXPECT_LT(samples.at(18 * 320 * 120 + 95 * 320 + 110), 150);
}

} // namespace
