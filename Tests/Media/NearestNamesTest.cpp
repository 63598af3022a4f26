#include "Media/NearestNames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor::Media;
using Strings = std::vector<std::string>;

TEST(BareName, IsInLowerCaseAndWithoutThePrefix)
{
    EXPECT_EQ(BareName("CODEC_ID_H264"), "h264");
    EXPECT_EQ(BareName("AV_CODEC_ID_H264"), "h264");
    EXPECT_EQ(BareName("sample_fmt_S16"), "s16");
    EXPECT_EQ(BareName("PIX_FMT_YUV420P"), "yuv420p");
    EXPECT_EQ(BareName("CH_LAYOUT_STEREO"), "stereo");
    EXPECT_EQ(BareName("FORMAT_MP4"), "mp4");
    EXPECT_EQ(BareName("mp4"), "mp4");
}

TEST(BareName, APrefixAloneIsAName) { EXPECT_EQ(BareName("CODEC_ID_"), "codec_id_"); }

TEST(BareName, OnlyOnePrefixIsLeftOut) { EXPECT_EQ(BareName("FORMAT_CODEC_ID_X"), "codec_id_x"); }

TEST(NearestNames, FindsAMisspeltName)
{
    const Strings known = {"CODEC_ID_MP3", "CODEC_ID_VORBIS", "CODEC_ID_THEORA", "CODEC_ID_FLAC"};
    EXPECT_EQ(NearestNames("theorra", known), Strings{"CODEC_ID_THEORA"});
    EXPECT_EQ(NearestNames("codec_id_vobris", known), Strings{"CODEC_ID_VORBIS"});
    EXPECT_EQ(NearestNames("MP4", known), Strings{"CODEC_ID_MP3"});
}

TEST(NearestNames, PutsTheLikeliestFirstAndStopsAtThree)
{
    const Strings known = {"h26x22", "h264", "h265", "h263", "h2"};
    EXPECT_EQ(NearestNames("h264", known), (Strings{"h264", "h265", "h263"}));
}

TEST(NearestNames, FindsAPartOfALongName)
{
    EXPECT_EQ(NearestNames("prores", {"CODEC_ID_PRORES_WITH_A_LONG_NAME", "CODEC_ID_H264"}),
              Strings{"CODEC_ID_PRORES_WITH_A_LONG_NAME"});
}

TEST(NearestNames, TellsANameOnce) { EXPECT_EQ(NearestNames("mp", {"mp4", "mp4"}), Strings{"mp4"}); }

TEST(NearestNames, FindsNothingForAStrangeName)
{
    const Strings known = {"mp4", "matroska"};
    EXPECT_EQ(NearestNames("qqqqqqqqqq", known), Strings{});
    EXPECT_EQ(NearestNames("", known), Strings{});
    EXPECT_EQ(NearestNames("mp4", {}), Strings{});
    EXPECT_EQ(NearestNames(std::string(65, 'a'), {std::string(65, 'a')}), Strings{});
}

TEST(DidYouMean, EndsASentenceWithAQuestion)
{
    EXPECT_EQ(DidYouMean("h246", {"h264"}), "; did you mean 'h264'?");
    EXPECT_EQ(DidYouMean("h26", {"h264", "h265"}), "; did you mean 'h264' or 'h265'?");
    EXPECT_EQ(DidYouMean("smell", {"h264"}), "");
}

TEST(NearestNames, CountsTwoSwappedLettersAsOneMistake)
{
    EXPECT_EQ(NearestNames("h246", {"h261", "h264"}), (std::vector<std::string>{"h264", "h261"}));
    EXPECT_EQ(NearestNames("vorbsi", {"vorbix", "vorbis"}).front(), "vorbis");
}

} // namespace
