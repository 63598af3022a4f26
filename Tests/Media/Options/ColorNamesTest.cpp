#include "Media/Options/ColorNames.h"

#include "Tests/Support/Clip.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <string>

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;

TEST(ColorNames, AreThoseOfFFmpeg)
{
    EXPECT_TRUE(IsColorRange("tv"));
    EXPECT_TRUE(IsColorRange("pc"));
    EXPECT_TRUE(IsColorMatrix("bt2020nc"));
    EXPECT_TRUE(IsColorPrimaries("bt2020"));
    EXPECT_TRUE(IsColorTransfer("arib-std-b67"));
    EXPECT_TRUE(IsPixelFormatName("yuv420p10le"));
}

TEST(ColorNames, AreWhole)
{
    EXPECT_FALSE(IsColorRange("tvx"));
    EXPECT_FALSE(IsColorRange("t"));
    EXPECT_FALSE(IsColorMatrix("bt709:bt709"));
    EXPECT_FALSE(IsColorPrimaries("bt709,format=gray"));
    EXPECT_FALSE(IsColorTransfer(" bt709"));
    EXPECT_FALSE(IsPixelFormatName("yuv420p10")); // FFmpeg takes it for the machine's byte order.
    EXPECT_FALSE(IsPixelFormatName("YUV420P"));
}

TEST(ColorNames, DoNotStandForNothing)
{
    for (const std::string name : {"", "unknown", "reserved", "reserved0", "auto", "none"})
    {
        EXPECT_FALSE(IsColorRange(name)) << name;
        EXPECT_FALSE(IsColorMatrix(name)) << name;
        EXPECT_FALSE(IsColorPrimaries(name)) << name;
        EXPECT_FALSE(IsColorTransfer(name)) << name;
        EXPECT_FALSE(IsPixelFormatName(name)) << name;
    }
}

TEST(ColorNames, AreNotThoseOfFramesInHardware)
{
    EXPECT_NE(av_get_pix_fmt("vaapi"), AV_PIX_FMT_NONE);
    EXPECT_FALSE(IsPixelFormatName("vaapi"));
    EXPECT_FALSE(IsPixelFormatName("cuda"));
}

/// What a job may say must be what the filter takes.
TEST(ColorNames, AreUnderstoodByTheFilterThatSetsThem)
{
    std::string filters = "null";
    const auto add = [&filters](const char* option, const char* name, bool isKnown) {
        filters += isKnown ? std::string(",setparams=") + option + "=" + name : "";
    };
    for (int i = 0; i < AVCOL_SPC_NB; ++i)
    {
        const char* const matrix = av_color_space_name(static_cast<AVColorSpace>(i));
        add("colorspace", matrix, matrix != nullptr && IsColorMatrix(matrix));
    }
    for (int i = 0; i < AVCOL_PRI_NB; ++i)
    {
        const char* const primaries = av_color_primaries_name(static_cast<AVColorPrimaries>(i));
        add("color_primaries", primaries, primaries != nullptr && IsColorPrimaries(primaries));
    }
    for (int i = 0; i < AVCOL_TRC_NB; ++i)
    {
        const char* const transfer = av_color_transfer_name(static_cast<AVColorTransferCharacteristic>(i));
        add("color_trc", transfer, transfer != nullptr && IsColorTransfer(transfer));
    }
    add("range", "tv", IsColorRange("tv"));
    add("range", "pc", IsColorRange("pc"));
    const TemporaryFolder folder;
    EXPECT_NO_THROW(MakeClip({"-f", "lavfi", "-i", "color=s=16x16:d=0.04", "-vf", filters, "a.nut"},
                             folder.Path().string()));
}

} // namespace
