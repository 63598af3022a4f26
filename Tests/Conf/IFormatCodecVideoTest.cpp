#include "Conf/Interfaces/IFormatCodecVideo.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/GroupedNumbers.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <boost/rational.hpp>

#include <cmath>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <numeric>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

namespace Zelnor::Conf
{
namespace
{

using Core::Property;
using Testing::ExpectThrow;
using Testing::Thrown;

using Terms = std::pair<std::uint32_t, std::uint32_t>;

static_assert(IFormatCodecVideo::MAX_VIDEO_BITRATE == 500'000'000);
static_assert(std::is_same_v<decltype(IFormatCodecVideo::MAX_VIDEO_BITRATE), const std::int64_t>);
static_assert(std::is_same_v<std::underlying_type_t<IFormatCodecVideo::AcceleratorType>, std::int32_t>);
static_assert(IFormatCodecVideo::ACCELERATOR_NVENC == 0 && IFormatCodecVideo::ACCELERATOR_CUDA == 1 &&
              IFormatCodecVideo::ACCELERATOR_IM_HW == 2 && IFormatCodecVideo::ACCELERATOR_IM_SW == 3);
static_assert(!std::is_default_constructible_v<IFormatCodecVideo>, "Create() is the only door");
static_assert(std::is_same_v<decltype(FrameInfo::width), std::uint32_t> && sizeof(FrameInfo) == 16);

Terms FrameToPixel(std::uint32_t width, std::uint32_t height, std::uint32_t x, std::uint32_t y)
{
    Terms result(77, 77);
    IFormatCodecVideo::FrameToPixelAspect(width, height, x, y, result.first, result.second);
    return result;
}

Terms PixelToFrame(std::uint32_t width, std::uint32_t height, std::uint32_t x, std::uint32_t y)
{
    Terms result(77, 77);
    IFormatCodecVideo::PixelToFrameAspect(width, height, x, y, result.first, result.second);
    return result;
}

Terms GetFrameAspect(const IFormatCodecVideo& video)
{
    return {video.GetFrameAspectX(), video.GetFrameAspectY()};
}

Terms GetPixelAspect(const IFormatCodecVideo& video)
{
    return {video.GetFrameInfo().ax, video.GetFrameInfo().ay};
}

/// A pair in lowest terms, by the rational numbers of Boost.
Terms GetLowestTerms(std::uint32_t a, std::uint32_t b)
{
    if (b == 0)
    {
        return {a == 0 ? 0u : 1u, 0u};
    }
    const boost::rational<std::int64_t> ratio(a, b);
    return {static_cast<std::uint32_t>(ratio.numerator()), static_cast<std::uint32_t>(ratio.denominator())};
}

std::string Print(const FrameInfo& info)
{
    std::ostringstream os;
    os << info;
    return os.str();
}

TEST(IFormatCodecVideo, PixelAspectIsStoredInOrderAsIntegers)
{
    const auto video = IFormatCodecVideo::Create();
    Property expected = video->GetProperty();
    expected.CreateChildT("width", 640LL);
    expected.CreateChildT("height", 480LL);
    expected.CreateChildT("aspect_x", 16LL);
    expected.CreateChildT("aspect_y", 12LL);
    video->InitByPixelAspect(640, 480, 16, 12);
    EXPECT_EQ(video->GetProperty(), expected);
}

TEST(IFormatCodecVideo, GeometryIsUnsigned)
{
    const auto video = IFormatCodecVideo::Create();
    video->InitByPixelAspect(0xFFFFFFFF, 0x80000000, 0, 0xFFFFFFFE);
    EXPECT_EQ(video->GetProperty()["width"].GetInt64(), 4294967295LL);
    EXPECT_EQ(video->GetProperty()["height"].GetInt64(), 2147483648LL);
    EXPECT_EQ(Print(video->GetFrameInfo()), "4294967295x2147483648 ax=0 ay=4294967294");
}

TEST(IFormatCodecVideo, GeometryIsSetAgainInPlace)
{
    const auto video = IFormatCodecVideo::Create();
    video->InitByPixelAspect(640, 480, 1, 1);
    video->SetFrameRate(25, 1);
    const unsigned long count = video->GetProperty().Count();
    video->InitByFrameAspect(720, 576, 4, 3);
    EXPECT_EQ(video->GetProperty().Count(), count);
    EXPECT_EQ(Print(video->GetFrameInfo()), "720x576 ax=16 ay=15");
}

TEST(IFormatCodecVideo, FrameAspectStoresThePixelAspectThatShowsIt)
{
    const auto video = IFormatCodecVideo::Create();
    video->InitByFrameAspect(720, 576, 16, 9);
    EXPECT_EQ(video->GetProperty()["aspect_x"].GetInt64(), 64);
    EXPECT_EQ(video->GetProperty()["aspect_y"].GetInt64(), 45);
    EXPECT_EQ(GetFrameAspect(*video), Terms(16, 9));
}

TEST(IFormatCodecVideo, FrameAspectIsThatOfTheWholeFrame)
{
    const auto video = IFormatCodecVideo::Create();
    video->InitByPixelAspect(1920, 1080, 1, 1);
    EXPECT_EQ(GetFrameAspect(*video), Terms(16, 9));
    EXPECT_DOUBLE_EQ(video->GetFrameAspect(), 16.0 / 9.0);
    EXPECT_EQ(Print(video->GetFrameInfo()), "1920x1080 ax=1 ay=1");
    video->InitByPixelAspect(720, 576, 16, 15);
    EXPECT_EQ(GetFrameAspect(*video), Terms(4, 3));
}

TEST(IFormatCodecVideo, PixelAspectIsNotReducedWhenItIsStored)
{
    const auto video = IFormatCodecVideo::Create();
    video->InitByPixelAspect(640, 480, 2, 2);
    EXPECT_EQ(GetPixelAspect(*video), Terms(2, 2));
    EXPECT_EQ(GetFrameAspect(*video), Terms(4, 3));
}

TEST(IFormatCodecVideo, AZeroTermOfTheAspectMakesItZeroOrInfinite)
{
    const auto video = IFormatCodecVideo::Create();
    video->InitByPixelAspect(640, 480, 0, 1);
    EXPECT_EQ(GetFrameAspect(*video), Terms(0, 1));
    EXPECT_EQ(video->GetFrameAspect(), 0.0);
    video->InitByPixelAspect(640, 480, 1, 0);
    EXPECT_EQ(GetFrameAspect(*video), Terms(1, 0));
    EXPECT_TRUE(std::isinf(video->GetFrameAspect()));
    video->InitByPixelAspect(640, 480, 0, 0);
    EXPECT_EQ(GetFrameAspect(*video), Terms(0, 0));
    EXPECT_TRUE(std::isnan(video->GetFrameAspect()));
}

TEST(IFormatCodecVideo, AspectsOfAnEmptyFrameStayZero)
{
    EXPECT_EQ(FrameToPixel(0, 0, 4, 3), Terms(0, 0));
    EXPECT_EQ(PixelToFrame(0, 0, 4, 3), Terms(0, 0));
    EXPECT_EQ(FrameToPixel(0, 480, 4, 3), Terms(1, 0));
    EXPECT_EQ(PixelToFrame(0, 480, 4, 3), Terms(0, 1));
}

TEST(IFormatCodecVideo, AspectsConvertBothWays)
{
    EXPECT_EQ(FrameToPixel(720, 576, 16, 9), Terms(64, 45));
    EXPECT_EQ(PixelToFrame(720, 576, 64, 45), Terms(16, 9));
}

TEST(IFormatCodecVideo, ProductsWrapAtThirtyTwoBits)
{
    EXPECT_EQ(PixelToFrame(65536, 3, 65536, 5), Terms(0, 1));
    EXPECT_EQ(PixelToFrame(0x80000001, 1, 2, 4), Terms(1, 2));
    EXPECT_EQ(FrameToPixel(7, 0xFFFFFFFF, 0xFFFFFFFF, 1), Terms(1, 7));
    const auto video = IFormatCodecVideo::Create();
    video->InitByPixelAspect(65536, 3, 65536, 5);
    EXPECT_EQ(GetFrameAspect(*video), Terms(0, 1));
}

TEST(IFormatCodecVideo, OnlyTheLowHalfOfAStoredNumberCounts)
{
    const auto video = IFormatCodecVideo::Create();
    Property record = video->GetProperty();
    record.SetChildT("width", (1LL << 32) + 1920);
    record.SetChildT("height", (7LL << 40) + 1080);
    record.SetChildT("aspect_x", std::numeric_limits<long long>::min() + 1);
    record.SetChildT("aspect_y", -1LL);
    video->SetProperty(record);
    EXPECT_EQ(Print(video->GetFrameInfo()), "1920x1080 ax=1 ay=4294967295");
    EXPECT_EQ(GetFrameAspect(*video), GetLowestTerms(1920, 0u - 1080u));
}

RC_GTEST_PROP(IFormatCodecVideo, AspectsAreTheProductsInLowestTerms,
              (std::uint32_t width, std::uint32_t height, std::uint32_t x, std::uint32_t y))
{
    RC_ASSERT(PixelToFrame(width, height, x, y) == GetLowestTerms(width * x, height * y));
    RC_ASSERT(FrameToPixel(width, height, x, y) == GetLowestTerms(height * x, width * y));
}

RC_GTEST_PROP(IFormatCodecVideo, ReducingKeepsTheRatioAndLeavesNoCommonFactor, ())
{
    const auto side = rc::gen::inRange<std::uint32_t>(0, 5000);
    const std::uint32_t width = *side;
    const std::uint32_t height = *side;
    const std::uint32_t x = *side;
    const std::uint32_t y = *side;
    const auto [ax, ay] = PixelToFrame(width, height, x, y);
    RC_ASSERT(std::uint64_t{ax} * (height * y) == std::uint64_t{ay} * (width * x));
    RC_ASSERT(std::gcd(ax, ay) <= 1u);
    RC_ASSERT((ax == 0) == (width * x == 0));
    RC_ASSERT((ay == 0) == (height * y == 0));
}

RC_GTEST_PROP(IFormatCodecVideo, TheFrameAspectThatWasAskedForIsTheOneThatIsShown, ())
{
    const auto side = rc::gen::inRange<std::uint32_t>(1, 1000);
    const auto term = rc::gen::inRange<std::uint32_t>(1, 60);
    const std::uint32_t width = *side;
    const std::uint32_t height = *side;
    const std::uint32_t x = *term;
    const std::uint32_t y = *term;
    const auto video = IFormatCodecVideo::Create();
    video->InitByFrameAspect(width, height, x, y);
    RC_ASSERT(GetFrameAspect(*video) == GetLowestTerms(x, y));
    RC_ASSERT(GetPixelAspect(*video) == FrameToPixel(width, height, x, y));
}

void ExpectMissing(const Thrown& thrown, const std::string& key)
{
    ASSERT_TRUE(thrown.description);
    EXPECT_NE(thrown.description->find(key), std::string::npos) << *thrown.description;
    EXPECT_NE(thrown.callStack.value_or(""), "");
}

TEST(IFormatCodecVideo, AskingForAGeometryThatWasNeverSetIsAnErrorOfTheRecord)
{
    const auto video = IFormatCodecVideo::Create();
    ExpectMissing(ExpectThrow<Core::PropertyException>([&] { video->GetFrameInfo(); }), "width");
    ExpectMissing(ExpectThrow<Core::PropertyException>([&] { video->GetFrameAspectX(); }), "aspect_x");
    ExpectMissing(ExpectThrow<Core::PropertyException>([&] { video->GetFrameAspectY(); }), "aspect_x");
    ExpectMissing(ExpectThrow<Core::PropertyException>([&] { video->GetFrameAspect(); }), "aspect_x");
}

TEST(IFormatCodecVideo, FrameRatesAreStoredInLowestTerms)
{
    const auto video = IFormatCodecVideo::Create();
    const auto stored = [&video](std::uint32_t num, std::uint32_t den) {
        video->SetFrameRate(num, den);
        return video->GetProperty()["frameRateRatio"].GetRatio();
    };
    EXPECT_EQ(stored(30000, 1001), Property::Ratio(30000, 1001));
    EXPECT_EQ(stored(50, 2), Property::Ratio(25, 1));
    EXPECT_EQ(stored(50, 2).denominator(), 1);
    EXPECT_EQ(stored(0, 25).numerator(), 0);
    EXPECT_EQ(stored(0, 25).denominator(), 1);
    EXPECT_EQ(stored(0xFFFFFFFF, 1).numerator(), 4294967295LL);
    EXPECT_EQ(video->GetProperty().Count(), 5u);
}

TEST(IFormatCodecVideo, AZeroDenominatorIsRefusedAndChangesNothing)
{
    const auto video = IFormatCodecVideo::Create();
    const Property fresh = video->GetProperty();
    const Thrown thrown = ExpectThrow<boost::bad_rational>([&] { video->SetFrameRate(25, 0); });
    EXPECT_EQ(thrown.what, "bad rational: zero denominator");
    EXPECT_EQ(thrown.file, "Conf/Interfaces/IFormatCodecVideo");
    EXPECT_GT(thrown.line.value_or(0), 0);
    EXPECT_NE(thrown.function.value_or("").find("SetFrameRate("), std::string::npos);
    EXPECT_EQ(video->GetProperty(), fresh);

    video->SetFrameRate(24, 1);
    const Property set = video->GetProperty();
    ExpectThrow<boost::bad_rational>([&] { video->SetFrameRate(0, 0); });
    EXPECT_EQ(video->GetProperty(), set);
}

TEST(IFormatCodecVideo, NoPixelFormatIsMinusOne)
{
    const auto video = IFormatCodecVideo::Create();
    EXPECT_EQ(video->GetPixelFormat(), -1);
    EXPECT_FALSE(video->GetProperty().ChildExists("PIXELFORMAT")) << "asking stores nothing";
}

TEST(IFormatCodecVideo, PixelFormatsAreStoredAsTheirNumbers)
{
    const auto video = IFormatCodecVideo::Create();
    video->SetPixelFormat(PIX_FMT_YUVA422P);
    EXPECT_EQ(video->GetPixelFormat(), PIX_FMT_YUVA422P);
    EXPECT_EQ(video->GetProperty()["PIXELFORMAT"].GetInt64(), 300);
    video->SetPixelFormat(PIX_FMT_NONE);
    EXPECT_EQ(video->GetPixelFormat(), PIX_FMT_NONE);
    EXPECT_EQ(video->GetProperty()["PIXELFORMAT"].GetInt64(), -1);
    EXPECT_EQ(video->GetProperty().Count(), 5u);
}

TEST(IFormatCodecVideo, PixelFormatsAreNotCheckedAndCutTo32Bits)
{
    const auto video = IFormatCodecVideo::Create();
    video->SetPixelFormat(static_cast<PixFmt>(4711));
    EXPECT_EQ(video->GetPixelFormat(), 4711);
    Property record = video->GetProperty();
    record.SetChildT("PIXELFORMAT", (5LL << 32) + 25);
    video->SetProperty(record);
    EXPECT_EQ(video->GetPixelFormat(), PIX_FMT_NV12);
}

TEST(IFormatCodecVideo, ACloneHasEqualValuesUnderEveryKey)
{
    const auto video = IFormatCodecVideo::Create();
    video->InitByFrameAspect(720, 576, 16, 9);
    video->SetFrameRate(25, 1);
    video->SetPixelFormat(PIX_FMT_YUV420P);
    const auto held = video;
    const auto clone = video->Clone();
    EXPECT_EQ(clone->GetRefCount(), 1);
    ASSERT_EQ(clone->GetProperty().Count(), video->GetProperty().Count());
    for (const Property& child : video->GetProperty())
    {
        EXPECT_EQ(clone->GetProperty()[child.GetName()], child);
    }
    clone->SetPixelFormat(PIX_FMT_RGB24);
    EXPECT_EQ(video->GetPixelFormat(), PIX_FMT_YUV420P);
}

TEST(FrameInfo, IsPrintedInDecimalsWhateverTheStream)
{
    const Testing::GroupedNumbers locale;
    std::ostringstream os;
    os << std::hex << std::showbase << std::showpos << FrameInfo{1920, 1080, 1, 1};
    EXPECT_EQ(os.str(), "1920x1080 ax=1 ay=1");
}

TEST(FrameInfo, IsPrintedAsOneField)
{
    std::ostringstream os;
    os << std::setw(22) << std::setfill('.') << FrameInfo{1920, 1080, 1, 1} << std::setw(2) << 5;
    EXPECT_EQ(os.str(), "...1920x1080 ax=1 ay=1.5");
}

} // namespace
} // namespace Zelnor::Conf
