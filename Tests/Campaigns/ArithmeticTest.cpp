// The arithmetic of aspects and bitrates beside the same in whole numbers of 128 bits, or in floating point
// of more digits, where nothing overflows and nothing is rounded on the way.

#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include "Tests/Support/Campaign.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <utility>

namespace Zelnor::Conf
{

namespace
{

using namespace Zelnor::Testing;

__extension__ typedef __int128 Wide;

/// Numbers of all magnitudes, each as likely.
class Numbers
{
public:
    std::uint64_t Seed() const { return m_seed; }
    std::uint64_t UpTo64Bits() { return m_random() >> (m_random() % 64); }
    std::uint32_t UpTo32Bits() { return static_cast<std::uint32_t>(m_random() >> (32 + m_random() % 32)); }
    long long Bitrate()
    {
        const auto magnitude = static_cast<long long>(UpTo64Bits() >> 1);
        return m_random() % 4 == 0 ? -magnitude : magnitude;
    }

private:
    const std::uint64_t m_seed = CampaignSeed(1);
    std::mt19937_64 m_random{m_seed};
};

class Arithmetic : public ::testing::Test
{
protected:
    /// Runs `action` as often as the campaign says, until it fails.
    template <class Action>
    void Repeat(Action&& action)
    {
        const std::size_t runs = CampaignRuns(QuickRuns(10'000));
        std::size_t done = 0;
        for (; done < runs && !HasFailure(); ++done)
        {
            action();
        }
        EXPECT_FALSE(HasFailure()) << "run " << done << " of the seed " << numbers.Seed();
        ReportFigures(std::to_string(done) + " of " +
                      ::testing::UnitTest::GetInstance()->current_test_info()->name() + ", " +
                      (HasFailure() ? "1 finding" : "0 findings"));
    }

    Numbers numbers;
};

/// The terms without a common factor, found with subtraction and halving alone.
std::pair<std::uint32_t, std::uint32_t> Lowest(std::uint32_t x, std::uint32_t y)
{
    if (x == 0 || y == 0)
    {
        return {x == 0 ? 0 : 1, y == 0 ? 0 : 1};
    }
    std::uint32_t a = x;
    std::uint32_t b = y;
    unsigned int twos = 0;
    for (; ((a | b) & 1) == 0; ++twos)
    {
        a >>= 1;
        b >>= 1;
    }
    while (a != 0)
    {
        while ((a & 1) == 0)
        {
            a >>= 1;
        }
        while ((b & 1) == 0)
        {
            b >>= 1;
        }
        (a >= b ? a : b) = a >= b ? a - b : b - a;
    }
    return {x / (b << twos), y / (b << twos)};
}

std::uint32_t LowHalf(Wide product) { return static_cast<std::uint32_t>(product % (Wide{1} << 32)); }

TEST_F(Arithmetic, OfAspectsIsThatOfWideNumbers)
{
    Repeat([this] {
        const std::uint32_t width = numbers.UpTo32Bits();
        const std::uint32_t height = numbers.UpTo32Bits();
        const std::uint32_t x = numbers.UpTo32Bits();
        const std::uint32_t y = numbers.UpTo32Bits();
        std::pair<std::uint32_t, std::uint32_t> dar;
        std::pair<std::uint32_t, std::uint32_t> sar;
        IFormatCodecVideo::PixelToFrameAspect(width, height, x, y, dar.first, dar.second);
        IFormatCodecVideo::FrameToPixelAspect(width, height, x, y, sar.first, sar.second);
        EXPECT_EQ(dar, Lowest(LowHalf(Wide{width} * x), LowHalf(Wide{height} * y)))
            << width << 'x' << height << ' ' << x << ':' << y;
        EXPECT_EQ(sar, Lowest(LowHalf(Wide{height} * x), LowHalf(Wide{width} * y)))
            << width << 'x' << height << ' ' << x << ':' << y;
    });
}

long long Clamp(Wide value)
{
    using Limits = std::numeric_limits<long long>;
    return static_cast<long long>(std::clamp(value, Wide{Limits::min()}, Wide{Limits::max()}));
}

/// Expects that the numbers differ by no more than what a double loses that was `of`, rounded a few times. A
/// factor near 0 is the difference of two that are not.
void ExpectNear(long long actual, Wide expected, long long of)
{
    const Wide difference = Wide{actual} - Clamp(expected);
    const Wide most = 1 + (of < 0 ? -Wide{of} : Wide{of}) / (Wide{1} << 49);
    EXPECT_LE(static_cast<long double>(difference < 0 ? -difference : difference),
              static_cast<long double>(most))
        << actual << " of " << of;
}

TEST_F(Arithmetic, OfQualitiesIsThatOfWideNumbers)
{
    Repeat([this] {
        const long long bitrate = numbers.Bitrate();
        const int quality = static_cast<int>(numbers.UpTo32Bits() % 64) - 16;
        // From 1 at quality 1 to 1/3 at quality 32.
        ExpectNear(NormBitrate(bitrate, quality), Wide{bitrate} * (95 - 2 * quality) / 93, bitrate);
    });
}

TEST_F(Arithmetic, OfBoundsIsThatOfWideNumbers)
{
    Repeat([this] {
        const long long bitrate = numbers.Bitrate();
        Core::Property audio(IFormatCodecAudio::TAG_FORMAT_CODEC_AUDIO);
        audio.SetChildT(IFormatCodec::TAG_BITRATE, bitrate);
        audio.SetChildT(IFormatCodec::TAG_BITRATE_MODE, IFormatCodec::TAG_BITRATE_MODE_VBR);
        audio.SetChildT(IFormatCodec::TAG_CODEC_ID, IFormatCodecAudio::CODEC_ID_MP3);
        ExpectNear(GetMinBitrate(audio), Wide{bitrate} * 4 / 5, bitrate);
        ExpectNear(GetMaxBitrate(audio), Wide{bitrate} * 6 / 5, bitrate);
        Core::Property video(IFormatCodecVideo::TAG_FORMAT_CODEC_VIDEO);
        const long long quality = 1 + numbers.UpTo32Bits() % 32;
        video.SetChildT(IFormatCodec::TAG_BITRATE, bitrate);
        video.SetChildT(IFormatCodec::TAG_BITRATE_MODE, IFormatCodec::TAG_BITRATE_MODE_VBR);
        video.SetChildT(IFormatCodec::TAG_QUALITY, quality);
        ExpectNear(GetMinBitrate(video), Wide{bitrate} / 2 * (95 - 2 * quality) / 93, bitrate);
        ExpectNear(GetMaxBitrate(video), Wide{Clamp(Wide{bitrate} * 2)} * (95 - 2 * quality) / 93, bitrate);
    });
}

/// The curve in another order and with more digits.
long double Curve(Wide area, double fps, const double* c)
{
    const long double side = std::sqrt(static_cast<long double>(area)) / 10;
    const long double curve = ((c[3] / 10 * side + c[2]) * side + c[1] * 10) * side + c[0];
    const long double rate = fps;
    const long double factor = rate > 30 ? (rate - 30) / 200 + 1 : rate < 25 ? rate * 7 / 250 + 0.3L : 1;
    return std::max<long double>(curve, c[0]) * factor * 1024;
}

TEST_F(Arithmetic, OfDefaultBitratesIsThatOfMoreDigits)
{
    const std::pair<std::string, const double*> curves[] = {
        {IFormatCodecVideo::CODEC_ID_H264, coef_h264},
        {IFormatCodecVideo::CODEC_ID_MPEG4, coef_mpeg4},
        {IFormatCodecVideo::CODEC_ID_MPEG2VIDEO, coef_mpeg12},
        {IFormatCodecVideo::CODEC_ID_MJPEG, coef_mjpeg},
        {IFormatCodecVideo::CODEC_ID_WMV2, coef_wmv2},
        {IFormatCodecVideo::CODEC_ID_H263, coef_h263},
        {IFormatCodecVideo::CODEC_ID_GIF, coef_gif}};
    Repeat([this, &curves] {
        const auto& [codec, coefficients] = curves[numbers.UpTo64Bits() % std::size(curves)];
        const std::uint32_t width = numbers.UpTo32Bits() % 20'000;
        const std::uint32_t height = numbers.UpTo32Bits() % 20'000;
        const double fps = static_cast<double>(numbers.UpTo32Bits() % 300'000) / 1001;
        const long double expected = Curve(Wide{width} * height, fps, coefficients);
        // The terms of the curve cancel each other for large frames.
        const long double side = std::sqrt(static_cast<long double>(width) * height);
        const long double most = 1 + (side * side * side * 1e-4L + 1) * fps * 1e-9L;
        EXPECT_NEAR(static_cast<double>(GetDefVideoBitrate(codec, width, height, fps)),
                    static_cast<double>(expected), static_cast<double>(most))
            << codec << ' ' << width << 'x' << height << ' ' << fps;
    });
}

} // namespace

} // namespace Zelnor::Conf
