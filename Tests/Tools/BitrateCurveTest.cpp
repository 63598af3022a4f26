#include "Tools/zconf/Commands/BitrateCurve.h"

#include "Conf/Interfaces/BitrateCalculator.h"

#include "Tests/Support/GroupedNumbers.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Tool;

constexpr int kNoQuality = -1;

/// The lines of the script up to and including its "plot".
std::string HeadOf(const std::string& script)
{
    const std::size_t plot = script.find("\nplot ");
    return script.substr(0, script.find('\n', plot + 1) + 1);
}

/// The blocks of data behind the plot command: lines of "height bitrate".
std::vector<std::vector<std::pair<long long, long long>>> BlocksOf(const std::string& script)
{
    std::istringstream lines(script.substr(HeadOf(script).size()));
    std::vector<std::vector<std::pair<long long, long long>>> blocks(1);
    for (std::string line; std::getline(lines, line);)
    {
        if (line == "e")
        {
            blocks.emplace_back();
            continue;
        }
        std::istringstream point(line);
        long long height = -1;
        long long bitrate = -1;
        point >> height >> bitrate;
        EXPECT_TRUE(point.eof()) << line;
        blocks.back().emplace_back(height, bitrate);
    }
    blocks.pop_back();
    return blocks;
}

TEST(BitrateCurveScript, TellsGnuplotWhatIsPlotted)
{
    EXPECT_EQ(HeadOf(BitrateCurveScript({"CODEC_ID_H264", {1920, 1080}, 29.97, kNoQuality})),
              "set terminal svg size 900,540 noenhanced background 'white'\n"
              "set encoding utf8\n"
              "set title 'CODEC_ID_H264, display aspect ratio 16:9, 29.97 fps'\n"
              "set xlabel 'Frame height'\n"
              "set ylabel 'Mbit/s'\n"
              "set key left top\n"
              "set grid\n"
              "plot '-' using 1:($2/1e6) with lines lw 2 title 'maximum', "
              "'-' using 1:($2/1e6) with lines lw 2 title 'default', "
              "'-' using 1:($2/1e6) with lines lw 2 title 'minimum', "
              "'-' using 1:($2/1e6) with points pt 7 title '1920x1080'\n");
}

TEST(BitrateCurveScript, ReducesTheDisplayAspectRatio)
{
    EXPECT_NE(BitrateCurveScript({"CODEC_ID_GIF", {1921, 1081}, 25, kNoQuality}).find("ratio 1921:1081,"),
              std::string::npos);
    EXPECT_NE(BitrateCurveScript({"CODEC_ID_GIF", {480, 640}, 25, kNoQuality}).find("ratio 3:4,"),
              std::string::npos);
}

TEST(BitrateCurveScript, PlotsTheBitratesThatTheLibraryProposes)
{
    const BitrateQuestion question = {"CODEC_ID_H264", {1920, 1080}, 25, 10};
    const auto blocks = BlocksOf(BitrateCurveScript(question));
    ASSERT_EQ(blocks.size(), 4U);
    using Calculate = long long (*)(const std::string&, long long, long long, double, int);
    const Calculate calculations[] = {&Conf::GetMaxVideoBitrate, &Conf::GetDefaultVideoBitrate,
                                      &Conf::GetMinVideoBitrate};
    std::size_t block = 0;
    for (const Calculate calculate : calculations)
    {
        for (const auto& [height, bitrate] : blocks[block])
        {
            EXPECT_EQ(bitrate, calculate("CODEC_ID_H264", height * 1920 / 1080, height, 25, 10));
        }
        ++block;
    }
    EXPECT_EQ(
        blocks[3],
        (std::vector{std::pair(1080LL, Conf::GetDefaultVideoBitrate("CODEC_ID_H264", 1920, 1080, 25, 10))}));
}

TEST(BitrateCurveScript, ReachesHalfAgainTheHeightAndAtLeast1080)
{
    const auto lastHeight = [](long long width, long long height) {
        const auto blocks = BlocksOf(BitrateCurveScript({"CODEC_ID_H264", {width, height}, 25, kNoQuality}));
        EXPECT_EQ(blocks[0].front().first, 0);
        return blocks[0].back().first;
    };
    EXPECT_EQ(lastHeight(1920, 1080), 1620);
    EXPECT_EQ(lastHeight(64, 48), 1080);
    EXPECT_EQ(lastHeight(2147483647, 2147483647), 3221225470);
}

TEST(BitrateCurveScript, DoesNotDependOnTheLocale)
{
    const BitrateQuestion question = {"CODEC_ID_H264", {1920, 1080}, 29.97, kNoQuality};
    const std::string expected = BitrateCurveScript(question);
    const Testing::GroupedNumbers locale;
    EXPECT_EQ(BitrateCurveScript(question), expected);
}

} // namespace
