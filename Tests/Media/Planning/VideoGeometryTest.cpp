#include "Media/Planning/VideoGeometry.h"

#include "Tests/Support/MediaFixtures.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <sstream>
#include <string>
#include <utility>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Conf::FrameInfo;
using Conf::IFormatCodecVideo;

/// "1920x1080 ax=1 ay=1": the frame that is chosen for a source and these settings.
std::string Chosen(const FrameInfo& source, const Core::Property& settings = Core::Property(),
                   PixelLimits limits = {})
{
    const auto target = IFormatCodecVideo::Create();
    Core::Property record = target->GetProperty();
    for (const Core::Property& setting : settings)
    {
        record.SetChild(setting.GetName(), setting);
    }
    target->SetProperty(record);
    ChooseSize(source, limits, *target);
    std::ostringstream text;
    text << target->GetFrameInfo();
    return text.str();
}

Core::Property Numbers(std::initializer_list<std::pair<std::string, long long>> numbers)
{
    Core::Property settings;
    for (const auto& [key, number] : numbers)
    {
        settings.SetChildT(key, number);
    }
    return settings;
}

std::pair<std::uint32_t, std::uint32_t> AspectOf(const FrameInfo& frame)
{
    std::pair<std::uint32_t, std::uint32_t> aspect;
    DisplayAspectOf(frame, aspect.first, aspect.second);
    return aspect;
}

TEST(VideoGeometry, KeepsTheSourcesSizeAndDisplayAspectRatio)
{
    EXPECT_EQ(Chosen({1920, 1080, 1, 1}), "1920x1080 ax=1 ay=1");
    EXPECT_EQ(Chosen({720, 576, 64, 45}), "720x576 ax=64 ay=45");
}

TEST(VideoGeometry, FollowsFromOneLengthToTheOther)
{
    EXPECT_EQ(Chosen({1920, 1080, 1, 1}, Numbers({{"width", 1280}})), "1280x720 ax=1 ay=1");
    EXPECT_EQ(Chosen({1920, 1080, 1, 1}, Numbers({{"height", 360}})), "640x360 ax=1 ay=1");
    EXPECT_EQ(Chosen({720, 576, 64, 45}, Numbers({{"height", 576}})), "1024x576 ax=1 ay=1");
}

TEST(VideoGeometry, ChangesTheSampleAspectRatioWhenBothLengthsAreGiven)
{
    EXPECT_EQ(Chosen({1920, 1080, 1, 1}, Numbers({{"width", 720}, {"height", 576}})), "720x576 ax=64 ay=45");
}

TEST(VideoGeometry, TakesTheAspectRatioThatIsAskedFor)
{
    EXPECT_EQ(Chosen({720, 576, 64, 45}, Numbers({{"frame_aspect_x", 4}, {"frame_aspect_y", 3}})),
              "720x576 ax=16 ay=15");
    EXPECT_EQ(Chosen({720, 576, 64, 45}, Numbers({{"aspect_x", 2}, {"aspect_y", 1}})), "720x576 ax=2 ay=1");
}

TEST(VideoGeometry, CutsToWholeChromaSamples)
{
    EXPECT_EQ(Chosen({1921, 1081, 1, 1}, Numbers({{"PIXELFORMAT", PIX_FMT_YUV420P}})).substr(0, 9),
              "1920x1080");
    EXPECT_EQ(Chosen({1921, 1081, 1, 1}, Numbers({{"PIXELFORMAT", PIX_FMT_YUV422P}})).substr(0, 9),
              "1920x1081");
    EXPECT_EQ(Chosen({1, 1, 1, 1}, Numbers({{"PIXELFORMAT", PIX_FMT_YUV420P}})), "2x2 ax=1 ay=1");
    EXPECT_EQ(Chosen({1921, 1081, 1, 1}, Numbers({{"PIXELFORMAT", PIX_FMT_RGB24}})), "1921x1081 ax=1 ay=1");
}

TEST(VideoGeometry, StretchesTheWidthWherePixelsMustBeSquare)
{
    EXPECT_EQ(Chosen({720, 576, 64, 45}, Core::Property(), {true, false}), "1024x576 ax=1 ay=1");
    EXPECT_TRUE(PixelLimitsOf(AV_CODEC_ID_GIF, "gif").areSquare);
    EXPECT_TRUE(PixelLimitsOf(AV_CODEC_ID_PNG, "png").areSquare);
    EXPECT_FALSE(PixelLimitsOf(AV_CODEC_ID_H264, "mp4").areSquare);
}

TEST(VideoGeometry, Mpeg2HasTheNearestOfItsAspectRatios)
{
    Core::Property settings;
    settings.SetChildT("codec_id", IFormatCodecVideo::CODEC_ID_MPEG2VIDEO);
    EXPECT_EQ(Chosen({720, 576, 1, 1}, settings), "720x576 ax=16 ay=15");
    EXPECT_EQ(Chosen({1280, 720, 1, 1}, settings), "1280x720 ax=1 ay=1");
    EXPECT_EQ(Chosen({2390, 1000, 1, 1}, settings), "2390x1000 ax=221 ay=239");
}

TEST(VideoGeometry, ADvdIsDisplayedAs4By3OrAs16By9)
{
    Core::Property settings = Numbers({{"width", 720}, {"height", 576}});
    settings.SetChildT("codec_id", IFormatCodecVideo::CODEC_ID_MPEG2VIDEO);
    const PixelLimits limits = PixelLimitsOf(AV_CODEC_ID_MPEG2VIDEO, "dvd");
    EXPECT_EQ(Chosen({2390, 1000, 1, 1}, settings, limits), "720x576 ax=64 ay=45");
    EXPECT_EQ(Chosen({640, 480, 1, 1}, settings, limits), "720x576 ax=16 ay=15");
    EXPECT_FALSE(PixelLimitsOf(AV_CODEC_ID_MPEG2VIDEO, "mpegts").areDvd);
}

TEST(VideoGeometry, ARotatedFrameHasItsSidesExchanged)
{
    MediaStream video = MakeVideoStream(720, 576);
    dynamic_cast<IFormatCodecVideo&>(*video.descriptor).InitByPixelAspect(720, 576, 64, 45);
    video.rotation = 180;
    EXPECT_EQ(DisplayedFrame(video).width, 720U);
    video.rotation = 270;
    const FrameInfo frame = DisplayedFrame(video);
    EXPECT_EQ(frame.width, 576U);
    EXPECT_EQ(frame.height, 720U);
    EXPECT_EQ(frame.ax, 45U);
    EXPECT_EQ(frame.ay, 64U);
}

TEST(VideoGeometry, TheTermsOfAnAspectRatioStayBelow65536)
{
    EXPECT_EQ(AspectOf({720, 576, 64, 45}), std::pair(16U, 9U));
    EXPECT_EQ(AspectOf({1920, 1080, 0, 0}), std::pair(1920U, 1080U));
    constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max();
    for (const FrameInfo& frame : {FrameInfo{65535, 65533, 65521, 65519}, FrameInfo{65535, 1, 65535, 1},
                                   FrameInfo{1, 65535, 1, 65535}, FrameInfo{65535, 65535, kMost, kMost - 1}})
    {
        const auto [x, y] = AspectOf(frame);
        EXPECT_GT(x, 0U);
        EXPECT_GT(y, 0U);
        EXPECT_LE(x, 65535U);
        EXPECT_LE(y, 65535U);
    }
}

TEST(VideoGeometry, AnAspectRatioOfWhichOneTermIsZeroIsNotKnown)
{
    EXPECT_EQ(AspectOf({1920, 1080, 1, 0}), std::pair(1920U, 1080U));
    EXPECT_EQ(AspectOf({1920, 1080, 0, 1}), std::pair(1920U, 1080U));
    EXPECT_EQ(AspectOf({0, 0, 1, 1}), std::pair(1U, 1U));
}

TEST(VideoGeometry, OneTermOfAnAspectRatioIsNotOne)
{
    EXPECT_EQ(Chosen({720, 576, 64, 45}, Numbers({{"frame_aspect_x", 4}, {"frame_aspect_y", 0}})),
              "720x576 ax=64 ay=45");
    EXPECT_EQ(Chosen({720, 576, 64, 45}, Numbers({{"aspect_x", 2}, {"aspect_y", 0}})), "720x576 ax=64 ay=45");
}

} // namespace
