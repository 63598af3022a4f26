#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor::Testing;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class BitrateCommand : public ZconfTest
{
protected:
    ProcessResult Ask(const std::string& codec, const std::string& size, const std::string& fps,
                      const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> arguments = {"bitrate", "--codec", codec, "--size", size, "--fps", fps};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Zconf(arguments);
    }
};

TEST_F(BitrateCommand, ProposesABitrateAndItsBounds)
{
    const ProcessResult result = Ask("CODEC_ID_H264", "1920x1080", "25");
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "default  8191995\nminimum  4095997\nmaximum  16383990\n");
    EXPECT_EQ(Ask("h264", "1920x1080", "25").output, result.output);
}

TEST_F(BitrateCommand, TakesARateAsANumberOrAFraction)
{
    const std::string expected = "default  9420794\nminimum  4710397\nmaximum  18841588\n";
    EXPECT_EQ(Ask("h264", "1920x1080", "60").output, expected);
    EXPECT_EQ(Ask("h264", "1920x1080", "60000/1000").output, expected);
    EXPECT_EQ(Ask("h264", "1920x1080", "24000/1001").output,
              Ask("h264", "1920x1080", "23.976023976023978").output);
}

TEST_F(BitrateCommand, ScalesByTheQuality)
{
    EXPECT_EQ(Ask("h264", "1920x1080", "25", {"--quality", "32"}).output,
              "default  2730665\nminimum  1365332\nmaximum  5461330\n");
    EXPECT_EQ(Ask("h264", "1920x1080", "25", {"--quality", "1"}).output,
              Ask("h264", "1920x1080", "25").output);
    EXPECT_EQ(Ask("h264", "1920x1080", "25", {"--quality", "0"}).exitCode, 2);
    EXPECT_EQ(Ask("h264", "1920x1080", "25", {"--quality", "33"}).exitCode, 2);
}

TEST_F(BitrateCommand, WritesTheQuestionAndTheAnswerAsJson)
{
    EXPECT_EQ(Ask("mpeg2video", "3840x2160", "30000/1001", {"--json", "--quality", "1"}).output,
              R"({
  "codec": "CODEC_ID_MPEG2VIDEO",
  "width": 3840,
  "height": 2160,
  "fps": 29.97002997002997,
  "quality": 1,
  "default": 102360,
  "minimum": 51180,
  "maximum": 204720
}
)");
}

TEST_F(BitrateCommand, RefusesACodecThatIsNotAVideoCodec)
{
    ExpectFailure(Ask("aac", "2x2", "25"),
                  "'CODEC_ID_AAC' is not a video codec; bitrates are proposed for video only");
    ExpectFailure(Ask("theorra", "2x2", "25"),
                  "'theorra' is not a known codec; did you mean 'CODEC_ID_THEORA'?");
}

TEST_F(BitrateCommand, RefusesWhatIsNotASizeOrARate)
{
    ExpectFailure(Ask("h264", "1080p", "25"),
                  "'1080p' is not a frame size: expected WIDTHxHEIGHT, such as 1920x1080");
    for (const char* const fps : {"0", "-25", "25/0", "25/", "/1", "nan", "inf", "25fps", "", "0/5", "1e999"})
    {
        ExpectFailure(Ask("h264", "2x2", fps),
                      std::string("'") + fps +
                          "' is not a frame rate: expected a number such as 25, 29.97 or 30000/1001");
    }
    EXPECT_EQ(Zconf({"bitrate", "--codec", "h264", "--size", "2x2"}).exitCode, 2);
}

TEST_F(BitrateCommand, DrawsTheCurve)
{
    const ProcessResult result = Ask("h264", "1920x1080", "25", {"--curve", "curve.svg"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "default  8191995\nminimum  4095997\nmaximum  16383990\n");
    // How gnuplot draws differs between its versions; what is drawn is tested with the script.
    const std::string drawing = Read("curve.svg");
    EXPECT_THAT(drawing, HasSubstr("<svg"));
    EXPECT_THAT(drawing, HasSubstr("</svg>"));
    EXPECT_THAT(drawing, HasSubstr("CODEC_ID_H264, display aspect ratio 16:9, 25 fps"));
    EXPECT_THAT(drawing, HasSubstr("maximum"));
}

TEST_F(BitrateCommand, DrawsTheCurveAloneToStandardOutput)
{
    const ProcessResult result = Ask("gif", "640x480", "25", {"--curve", "-"});
    ExpectQuietSuccess(result);
    // The drawing is the whole document: nothing stands before or behind it.
    EXPECT_THAT(result.output, StartsWith("<?xml"));
    EXPECT_THAT(result.output, EndsWith("</svg>\n\n"));
    EXPECT_TRUE(Files().empty());
}

TEST_F(BitrateCommand, ReportsThatGnuplotIsMissingAndLeavesNoFile)
{
    ProcessOptions options;
    options.environment.emplace_back("PATH=/nowhere");
    const ProcessResult result = Zconf(
        {"bitrate", "--codec", "h264", "--size", "2x2", "--fps", "25", "--curve", "curve.svg"}, options);
    ExpectFailure(result, "Drawing the curve needs gnuplot, which is not in PATH");
    EXPECT_FALSE(Exists("curve.svg"));
}

} // namespace
