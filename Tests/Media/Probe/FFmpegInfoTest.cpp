#include "Media/Probe/FFmpegInfo.h"

#include <gtest/gtest.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;

TEST(FFmpegInfo, HasFFmpegsNamesOfFormatsAndLayouts)
{
    EXPECT_EQ(FFmpegNameOf(PIX_FMT_YUV420P), "yuv420p");
    EXPECT_EQ(FFmpegNameOf(Conf::SAMPLE_FMT_FLTP), "fltp");
    EXPECT_EQ(FFmpegNameOf(Conf::CH_LAYOUT_5POINT1), "5.1(side)");
}

TEST(FFmpegInfo, HasNoNameOfWhatIsNotThere)
{
    EXPECT_EQ(FFmpegNameOf(PIX_FMT_NONE), "");
    EXPECT_EQ(FFmpegNameOf(Conf::SAMPLE_FMT_NONE), "");
    EXPECT_EQ(FFmpegNameOf(Conf::CH_LAYOUT_UNKNOWN), "");
    EXPECT_EQ(MuxerDescription("no-such-muxer"), "");
    EXPECT_EQ(DemuxerDescription("no-such-demuxer"), "");
    EXPECT_EQ(MuxerDescription(""), "");
}

TEST(FFmpegInfo, DescribesFormatsByAnyOfTheirNames)
{
    EXPECT_EQ(MuxerDescription("mov"), "QuickTime / MOV");
    EXPECT_EQ(DemuxerDescription("mov"), "QuickTime / MOV");
    EXPECT_EQ(DemuxerDescription("mp4"), "QuickTime / MOV");
    EXPECT_EQ(DemuxerDescription("mov,mp4"), "QuickTime / MOV");
    EXPECT_EQ(DemuxerDescription("ov"), "");
}

} // namespace
