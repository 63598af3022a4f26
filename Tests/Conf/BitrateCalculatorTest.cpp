#include "Conf/Interfaces/BitrateCalculator.h"

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/Tsv.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <limits>

namespace Zelnor::Conf
{
namespace
{

using Core::Property;
using Core::PropertyException;
using Testing::ExpectThrow;
using ::testing::HasSubstr;
using Testing::ReadTsv;
using ::testing::StartsWith;
using Testing::Thrown;

constexpr long long kHighest = std::numeric_limits<long long>::max();
constexpr long long kLowest = std::numeric_limits<long long>::min();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

boost::intrusive_ptr<IFormatCodecVideo> MakeVideo(const std::string& mode)
{
    const auto video = IFormatCodecVideo::Create();
    Property record = video->GetProperty();
    record.SetChildT(IFormatCodec::TAG_BITRATE_MODE, mode);
    record.SetChildT(IFormatCodec::TAG_CODEC_ID, IFormatCodecVideo::CODEC_ID_H264);
    video->SetProperty(record);
    video->InitByPixelAspect(1920, 1080, 1, 1);
    video->SetFrameRate(60, 1);
    return video;
}

void SetQuality(IFormatCodec& codec, long long quality)
{
    Property record = codec.GetProperty();
    record.SetChildT(IFormatCodec::TAG_QUALITY, quality);
    codec.SetProperty(record);
}

Property MakeRecord(const std::string& name, const std::string& mode, long long bitrate)
{
    Property record(name);
    record.SetChildT(IFormatCodec::TAG_BITRATE, bitrate);
    record.SetChildT(IFormatCodec::TAG_BITRATE_MODE, mode);
    return record;
}

Property MakeAudioRecord(const std::string& codecId, long long bitrate)
{
    Property record = MakeRecord("format_codec_audio", "VBR", bitrate);
    record.SetChildT(IFormatCodec::TAG_CODEC_ID, codecId);
    return record;
}

Property MakeVideoRecord(long long bitrate, long long quality)
{
    Property record = MakeRecord("format_codec_video", "VBR", bitrate);
    record.SetChildT(IFormatCodec::TAG_QUALITY, quality);
    return record;
}

void ExpectInvalidArgument(const Thrown& thrown, const std::string& message)
{
    EXPECT_THAT(thrown.what, StartsWith(message + "\n"));
    EXPECT_GT(thrown.what.size(), message.size() + 1) << "no call stack";
    EXPECT_EQ(thrown.file, "Conf/Interfaces/BitrateCalculator");
    EXPECT_THAT(thrown.function.value_or(""), HasSubstr("GetBitrateBounded("));
    EXPECT_GT(thrown.line.value_or(0), 0);
}

void ExpectIncompatible(const Thrown& thrown, const std::string& function)
{
    EXPECT_EQ(thrown.description, "Incompatible type of IFormatCodec structure");
    EXPECT_FALSE(thrown.callStack.value_or("").empty());
    EXPECT_EQ(thrown.file, "Conf/Interfaces/BitrateCalculator");
    EXPECT_THAT(thrown.function.value_or(""), HasSubstr(function + "("));
    EXPECT_GT(thrown.line.value_or(0), 0);
}

TEST(VideoBitrate, AgreesWithTheIndependentTable)
{
    const auto rows = ReadTsv("Tests/Conf/Data/bitrates.tsv");
    ASSERT_GE(rows.size(), 300U);
    for (const auto& row : rows)
    {
        const std::string& codec = row[0];
        const long long width = std::stoll(row[1]);
        const long long height = std::stoll(row[2]);
        const double fps = std::strtod(row[3].c_str(), nullptr);
        const int quality = std::stoi(row[4]);
        SCOPED_TRACE(codec + " " + row[1] + "x" + row[2] + " " + row[3] + " fps, quality " + row[4]);
        EXPECT_EQ(GetDefVideoBitrate(codec, width, height, fps), std::stoll(row[5]));
        EXPECT_EQ(GetDefaultVideoBitrate(codec, width, height, fps, quality), std::stoll(row[6]));
        EXPECT_EQ(GetMinVideoBitrate(codec, width, height, fps, quality), std::stoll(row[7]));
        EXPECT_EQ(GetMaxVideoBitrate(codec, width, height, fps, quality), std::stoll(row[8]));
    }
}

TEST(VideoBitrate, OfH264GrowsWithTheFrame)
{
    EXPECT_EQ(GetDefVideoBitrate("CODEC_ID_H264", 320, 240, 25), 512012);
    EXPECT_EQ(GetDefVideoBitrate("CODEC_ID_H264", 640, 480, 25), 1578936);
    EXPECT_EQ(GetDefVideoBitrate("CODEC_ID_H264", 1280, 720, 25), 4110634);
    EXPECT_EQ(GetDefVideoBitrate("CODEC_ID_H264", 1920, 1080, 25), 8191995);
    EXPECT_EQ(GetDefVideoBitrate("CODEC_ID_H264", 3840, 2160, 25), 22278420);
}

TEST(VideoBitrate, IsHeldAtTheFirstCoefficientWhereTheCurveTurnsDown)
{
    EXPECT_EQ(GetDefVideoBitrate("CODEC_ID_MPEG2VIDEO", 1920, 1080, 25), 20479991);
    EXPECT_EQ(GetDefVideoBitrate("CODEC_ID_MPEG2VIDEO", 3840, 2160, 25), 102360);
    EXPECT_EQ(GetDefVideoBitrate("CODEC_ID_MPEG1VIDEO", 3840, 2160, 25), 102360);
    EXPECT_EQ(GetDefVideoBitrate("CODEC_ID_MJPEG", 3840, 2160, 25), 512000);
}

TEST(VideoBitrate, OfAnEmptyFrameIsTheFirstCoefficient)
{
    EXPECT_EQ(GetDefVideoBitrate("CODEC_ID_H264", 0, 0, 25), 102364);
    EXPECT_EQ(GetDefVideoBitrate("CODEC_ID_MJPEG", 0, 0, 25), 512000);
    for (const double* const table :
         {coef_h264, coef_mpeg4, coef_mpeg12, coef_mjpeg, coef_wmv2, coef_h263, coef_gif})
    {
        EXPECT_EQ(calculateBitrate(0, 0, 25, table), static_cast<long long>(table[0] * 1024));
    }
}

TEST(VideoBitrate, FollowsTheFrameRateOutside25To30)
{
    const auto at = [](double fps) { return GetDefVideoBitrate("CODEC_ID_H264", 1920, 1080, fps); };
    EXPECT_EQ(at(30), 8191995);
    EXPECT_EQ(at(50), 9011195);
    EXPECT_EQ(at(60), 9420794);
    EXPECT_EQ(at(24), 7962619);
    EXPECT_EQ(at(15), 5898236);
    EXPECT_EQ(at(0), 2457598);
    EXPECT_EQ(at(kNotANumber), 8191995);
}

TEST(VideoBitrate, OfACodecWithoutACurveIsThatOfH264)
{
    const long long h264 = GetDefVideoBitrate("CODEC_ID_H264", 1280, 720, 25);
    for (const char* const codec : {"CODEC_ID_H265", "CODEC_ID_AAC", "", "codec_id_gif"})
    {
        EXPECT_EQ(GetDefVideoBitrate(codec, 1280, 720, 25), h264) << codec;
    }
    EXPECT_NE(GetDefVideoBitrate("CODEC_ID_GIF", 1280, 720, 25), h264);
}

TEST(VideoBitrate, ReadsTheCoefficientsAtEachCall)
{
    const double before = coef_wmv2[0];
    coef_wmv2[0] = 1000;
    EXPECT_EQ(GetDefVideoBitrate("CODEC_ID_WMV2", 0, 0, 25), 1024000);
    coef_wmv2[0] = before;
    EXPECT_EQ(GetDefVideoBitrate("CODEC_ID_WMV2", 0, 0, 25), 102278);
    const double own[] = {1, 2, 3, 4};
    EXPECT_EQ(calculateBitrate(10, 10, 25, own), static_cast<long long>((4000.0 / 10000 + 3 + 21) * 1024));
}

TEST(VideoBitrate, IsHeldAtTheFirstCoefficientWhereTheCurveIsNotANumber)
{
    EXPECT_EQ(GetDefVideoBitrate("CODEC_ID_H264", -640, 480, 25), 102364);
    EXPECT_EQ(calculateBitrate(kNotANumber, 480, 25, coef_mjpeg), 512000);
    EXPECT_EQ(calculateBitrate(kInfinity, 0, 25, coef_mjpeg), 512000);
    EXPECT_EQ(calculateBitrate(kInfinity, 1, 25, coef_h264), 102364) << "infinite and minus infinite";
}

TEST(VideoBitrate, IsHeldAtTheLimitsOf64Bits)
{
    const double rising[] = {1, 1, 1, 1};
    EXPECT_EQ(calculateBitrate(kInfinity, 1, 25, rising), kHighest);
    EXPECT_EQ(calculateBitrate(1, 1, kInfinity, coef_h264), kHighest);
    EXPECT_EQ(calculateBitrate(1, 1, -kInfinity, coef_h264), kLowest);
    EXPECT_EQ(GetMaxVideoBitrate("CODEC_ID_H264", 1, 1, 1e300, 33), kHighest);
    EXPECT_EQ(GetMaxVideoBitrate("CODEC_ID_H264", 1, 1, -1e300, 33), kLowest);
    const double notANumber[] = {kNotANumber, 0, 0, 0};
    EXPECT_EQ(calculateBitrate(1, 1, 25, notANumber), 0);
}

TEST(NormBitrate, FallsLinearlyFromTheWholeToAThird)
{
    EXPECT_EQ(NormBitrate(8192000, 0), 8368172);
    EXPECT_EQ(NormBitrate(8192000, 1), 8192000);
    EXPECT_EQ(NormBitrate(8192000, 16), 5549419);
    EXPECT_EQ(NormBitrate(8192000, 32), 2730666);
    EXPECT_EQ(NormBitrate(8192000, 33), 2554494);
}

TEST(NormBitrate, TakesEveryQualityAndBitrate)
{
    EXPECT_EQ(NormBitrate(kHighest, std::numeric_limits<int>::min()), kHighest);
    EXPECT_EQ(NormBitrate(kHighest, std::numeric_limits<int>::max()), kLowest);
    EXPECT_EQ(NormBitrate(kLowest, 1), kLowest);
    EXPECT_EQ(NormBitrate(kHighest, 1), kHighest);
    EXPECT_EQ(NormBitrate(0, 32), 0);
}

TEST(MinVideoBitrate, IsExactlyHalfWithoutAQuality)
{
    const long long half = GetDefVideoBitrate("CODEC_ID_H264", 1920, 1080, 25) / 2;
    for (const int quality : {33, -1, -32, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
    {
        EXPECT_EQ(GetMinVideoBitrate("CODEC_ID_H264", 1920, 1080, 25, quality), half) << quality;
    }
}

TEST(MinVideoBitrate, IsALittleMoreThanHalfWithQualityZero)
{
    const long long half = GetDefVideoBitrate("CODEC_ID_H264", 1920, 1080, 25) / 2;
    const long long more = GetMinVideoBitrate("CODEC_ID_H264", 1920, 1080, 25, 0);
    EXPECT_EQ(more, NormBitrate(half, 0));
    EXPECT_NEAR(static_cast<double>(more) / static_cast<double>(half), 1.0215, 0.0001);
}

TEST(VideoDescriptorBitrate, IsScaledByTheQualityInTheModeVbrOnly)
{
    for (const char* const mode : {"CBR", "CBR_AUTO", "VBR", ""})
    {
        const auto video = MakeVideo(mode);
        for (const long long quality : {0, 1, 32, 33, -1})
        {
            SetQuality(*video, quality);
            const bool scaled = mode == std::string("VBR") && quality >= 0 && quality <= 32;
            const auto expected = [&](long long bitrate) {
                return scaled ? NormBitrate(bitrate, static_cast<int>(quality)) : bitrate;
            };
            EXPECT_EQ(GetDefaultVideoBitrate(video), expected(9420794)) << mode << quality;
            EXPECT_EQ(GetMinVideoBitrate(video), expected(4710397)) << mode << quality;
            EXPECT_EQ(GetMaxVideoBitrate(video), expected(18841588)) << mode << quality;
        }
    }
}

TEST(VideoDescriptorBitrate, ReadsTheQualityInTheModeVbrOnly)
{
    EXPECT_EQ(GetDefaultVideoBitrate(MakeVideo("CBR")), 9420794);
    ExpectThrow<PropertyException>([] { GetDefaultVideoBitrate(MakeVideo("VBR")); });
}

TEST(VideoDescriptorBitrate, NarrowsSizeAndQualityTo32Bits)
{
    const auto video = MakeVideo("VBR");
    SetQuality(*video, (1LL << 32) + 32);
    Property record = video->GetProperty();
    record.SetChildT(IFormatCodecVideo::TAG_WIDTH, (5LL << 32) + 1920);
    video->SetProperty(record);
    EXPECT_EQ(GetDefaultVideoBitrate(video), NormBitrate(9420794, 32));
}

TEST(VideoDescriptorBitrate, TakesAFractionalFrameRate)
{
    const auto video = MakeVideo("CBR");
    video->SetFrameRate(24000, 1001);
    EXPECT_EQ(GetDefaultVideoBitrate(video),
              GetDefVideoBitrate("CODEC_ID_H264", 1920, 1080, 24000.0 / 1001.0));
}

TEST(VideoDescriptorBitrate, AsksForModeCodecSizeAndFrameRateInThatOrder)
{
    const std::string keys[] = {IFormatCodec::TAG_BITRATE_MODE, IFormatCodec::TAG_CODEC_ID,
                                IFormatCodecVideo::TAG_WIDTH, IFormatCodecVideo::TAG_HEIGHT,
                                IFormatCodecVideo::TAG_FPS};
    const auto video = MakeVideo("CBR");
    for (std::size_t i = std::size(keys); i > 0; --i)
    {
        Property record = video->GetProperty();
        record.RemoveChild(keys[i - 1]);
        video->SetProperty(record);
        const Thrown thrown = ExpectThrow<PropertyException>([&] { GetMinVideoBitrate(video); });
        EXPECT_THAT(thrown.description.value_or(""), HasSubstr(keys[i - 1]));
    }
}

TEST(VideoDescriptorBitrate, OfOtherDescriptorsThrows)
{
    const boost::intrusive_ptr<const IFormatCodec> others[] = {nullptr, IFormatCodec::Create(),
                                                               IFormatCodecAudio::Create()};
    for (const auto& other : others)
    {
        ExpectIncompatible(ExpectThrow<ConfException>([&] { GetDefaultVideoBitrate(other); }),
                           "GetDefaultVideoBitrate");
        ExpectIncompatible(ExpectThrow<ConfException>([&] { GetMinVideoBitrate(other); }),
                           "GetMinVideoBitrate");
        ExpectIncompatible(ExpectThrow<ConfException>([&] { GetMaxVideoBitrate(other); }),
                           "GetMaxVideoBitrate");
    }
}

TEST(BitrateBounds, OfAConstantBitrateAreTheBitrateForAnyRecord)
{
    for (const char* const name : {"format_codec_audio", "format_codec_video", "format_file", ""})
    {
        const Property record = MakeRecord(name, "CBR", 1234567);
        EXPECT_EQ(GetMinBitrate(record), 1234567);
        EXPECT_EQ(GetMaxBitrate(record), 1234567);
    }
}

TEST(BitrateBounds, OfAudioAreAFifthAwayExceptForLosslessCodecs)
{
    EXPECT_EQ(GetMinBitrate(MakeAudioRecord("CODEC_ID_MP3", 128000)), 102400);
    EXPECT_EQ(GetMaxBitrate(MakeAudioRecord("CODEC_ID_MP3", 128000)), 153600);
    for (const char* const lossless : {"CODEC_ID_FLAC", "CODEC_ID_ALAC"})
    {
        EXPECT_EQ(GetMinBitrate(MakeAudioRecord(lossless, 128000)), 128000);
        EXPECT_EQ(GetMaxBitrate(MakeAudioRecord(lossless, 128000)), 128000);
    }
}

TEST(BitrateBounds, OfVideoAreHalfAndDoubleScaledByAQualityFrom1To32)
{
    EXPECT_EQ(GetMinBitrate(MakeVideoRecord(4000000, 1)), 2000000);
    EXPECT_EQ(GetMaxBitrate(MakeVideoRecord(4000000, 1)), 8000000);
    EXPECT_EQ(GetMinBitrate(MakeVideoRecord(4000000, 32)), 666666);
    for (const long long unscaled : {0LL, 40LL, 33LL, -1LL, (1LL << 32) + 32})
    {
        EXPECT_EQ(GetMinBitrate(MakeVideoRecord(4000000, unscaled)), 2000000) << unscaled;
        EXPECT_EQ(GetMaxBitrate(MakeVideoRecord(4000000, unscaled)), 8000000) << unscaled;
    }
}

TEST(BitrateBounds, AreHeldAtTheLimitsOf64Bits)
{
    EXPECT_EQ(GetMaxBitrate(MakeVideoRecord(kHighest, 0)), kHighest);
    EXPECT_EQ(GetMaxBitrate(MakeVideoRecord(kLowest, 0)), kLowest);
    EXPECT_EQ(GetMaxBitrate(MakeAudioRecord("CODEC_ID_MP3", kHighest)), kHighest);
}

TEST(BitrateBounds, OfAnotherModeThrow)
{
    ExpectInvalidArgument(ExpectThrow<std::invalid_argument>(
                              [] { GetMinBitrate(MakeRecord("format_codec_audio", "CBR_AUTO", 1)); }),
                          "Unexpected bitrate mode: CBR_AUTO");
    ExpectInvalidArgument(
        ExpectThrow<std::invalid_argument>([] { GetMaxBitrate(MakeRecord("format_file", "vbr", 1)); }),
        "Unexpected bitrate mode: vbr");
    ExpectInvalidArgument(
        ExpectThrow<std::invalid_argument>([] { GetBitrateBounded(MakeRecord("", "", 1), BOUNDARY_LOWER); }),
        "Unexpected bitrate mode: ");
}

TEST(BitrateBounds, OfARecordThatIsNeitherAudioNorVideoThrow)
{
    for (const char* const name : {"format_codec_subtitle", "", "FORMAT_CODEC_VIDEO"})
    {
        ExpectInvalidArgument(
            ExpectThrow<std::invalid_argument>([&] { GetMinBitrate(MakeRecord(name, "VBR", 1)); }),
            "Unsupported codec format for bitrate calculation");
    }
}

TEST(BitrateBounds, ReportWhatARecordLacks)
{
    const auto missing = [](const Property& record, const std::string& key) {
        const Thrown thrown = ExpectThrow<PropertyException>([&] { GetMinBitrate(record); });
        EXPECT_THAT(thrown.description.value_or(""), HasSubstr(key));
    };
    Property noMode("format_codec_audio");
    noMode.SetChildT(IFormatCodec::TAG_BITRATE, 1LL);
    missing(Property("format_codec_audio"), "bitrate");
    missing(noMode, "bitrate_mode");
    missing(MakeRecord("format_codec_audio", "VBR", 1), "codec_id");
    missing(MakeRecord("format_codec_video", "VBR", 1), "quality");
}

} // namespace
} // namespace Zelnor::Conf
