#include "Media/Planning/VideoSettings.h"

#include "Media/Probe/FFmpegNames.h"
#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/MediaFixtures.h"

#include <gtest/gtest.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

TEST(DeinterlacingIn, IsEveryFrameWithoutAWord)
{
    EXPECT_EQ(DeinterlacingIn(VideoRecord("")), Deinterlacing::EveryFrame);
    EXPECT_EQ(DeinterlacingIn(VideoRecord(R"("deinterlace":"25p")")), Deinterlacing::EveryFrame);
    EXPECT_EQ(DeinterlacingIn(VideoRecord(R"("deinterlace":"50p")")), Deinterlacing::EveryField);
    EXPECT_EQ(DeinterlacingIn(VideoRecord(R"("deinterlace":"keep")")), Deinterlacing::Keep);
    EXPECT_EQ(DeinterlacingIn(VideoRecord(R"("deinterlace":"off")")), Deinterlacing::Off);
}

TEST(PixelFormatIn, IsTheNamedOneOrThatOfTheVocabulary)
{
    EXPECT_EQ(PixelFormatIn(VideoRecord("")), AV_PIX_FMT_NONE);
    EXPECT_EQ(PixelFormatIn(VideoRecord(R"("PIXELFORMAT":25)")), AV_PIX_FMT_NV12);
    EXPECT_EQ(PixelFormatIn(VideoRecord(R"("pixelFormat":"yuv420p10le")")), AV_PIX_FMT_YUV420P10LE);
    EXPECT_EQ(PixelFormatIn(VideoRecord(R"("PIXELFORMAT":"NV12")")), AV_PIX_FMT_NONE);
}

TEST(PixelFormatOf, OfASourceIsFFmpegsOrThatOfItsDescriptor)
{
    MediaStream source = MakeVideoStream();
    EXPECT_EQ(PixelFormatOf(source), AV_PIX_FMT_YUV420P);
    source.pixelFormat = "gbrp";
    EXPECT_EQ(PixelFormatOf(source), AV_PIX_FMT_GBRP);
}

TEST(PixelFormats, AreKnownByWhatMatters)
{
    EXPECT_TRUE(IsRgb(AV_PIX_FMT_GBRP));
    EXPECT_TRUE(IsRgb(AV_PIX_FMT_PAL8));
    EXPECT_FALSE(IsRgb(AV_PIX_FMT_YUV420P));
    EXPECT_FALSE(IsRgb(AV_PIX_FMT_NONE));
    EXPECT_EQ(DepthOf(AV_PIX_FMT_YUV420P10LE), 10);
    EXPECT_EQ(DepthOf(AV_PIX_FMT_NONE), 0);
    EXPECT_TRUE(HasAlpha(AV_PIX_FMT_RGBA64BE));
    EXPECT_FALSE(HasAlpha(AV_PIX_FMT_RGB24));
    EXPECT_TRUE(IsFullRange(AV_PIX_FMT_YUVJ422P));
    EXPECT_FALSE(IsFullRange(AV_PIX_FMT_YUV422P));
}

TEST(UsualMatrix, DependsOnTheSize)
{
    EXPECT_EQ(UsualMatrix(1920, 1080), "bt709");
    EXPECT_EQ(UsualMatrix(1280, 534), "bt709");
    EXPECT_EQ(UsualMatrix(720, 576), "bt470bg");
    EXPECT_EQ(UsualMatrix(720, 480), "smpte170m");
    EXPECT_EQ(UsualMatrix(1279, 719), "smpte170m");
}

TEST(IsSameMatrix, KnowsTheTwoNamesOfOne)
{
    EXPECT_TRUE(IsSameMatrix("bt470bg", "smpte170m"));
    EXPECT_TRUE(IsSameMatrix("bt709", "bt709"));
    EXPECT_FALSE(IsSameMatrix("bt709", "smpte170m"));
}

TEST(ParityOf, IsTheFieldThatIsShownFirst)
{
    MediaStream source = MakeVideoStream();
    source.fieldOrder = "bb";
    EXPECT_EQ(ParityOf(source), "bff");
    source.fieldOrder = "tb";
    EXPECT_EQ(ParityOf(source), "tff");
}

TEST(IsSameMatrix, TakesOneOfTheTwoNamesForNoOther)
{
    EXPECT_FALSE(IsSameMatrix("bt470bg", "bt709"));
    EXPECT_FALSE(IsSameMatrix("", "smpte170m"));
}

TEST(IsHdr, KnowsBothTransfers)
{
    EXPECT_TRUE(IsHdr("smpte2084"));
    EXPECT_TRUE(IsHdr("arib-std-b67"));
    EXPECT_FALSE(IsHdr("bt709"));
}

TEST(DeinterlacingIn, PassesOverWhatIsNotAWord)
{
    EXPECT_EQ(DeinterlacingIn(VideoRecord(R"("deinterlace":1)")), Deinterlacing::EveryFrame);
}

} // namespace
