#include "Conf/Interfaces/BitrateCalculator.h"

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Private/Texts.h"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string_view>

namespace Zelnor::Conf
{

double coef_h264[4] = {99.9650872204623, 0.163652062395517, 0.483820240871237, -0.00793080245421208};
double coef_mpeg4[4] = {99.9621364307958, 0.163669325776921, 0.483816664965792, -0.00793062549157845};
double coef_mpeg12[4] = {99.96133044, 6.526160392, 1.639234292, -0.078663524};
double coef_mjpeg[4] = {500.0, -4.62500677917623, 2.72373244426795, -0.114934628771719};
double coef_wmv2[4] = {99.8816487838461, 4.16562325661246, 0.339860979808646, -0.00718604072365845};
double coef_h263[4] = {99.8919472955631, 4.50545164115977, -0.684179758313058, 0.0641868167610101};
double coef_gif[4] = {602.9157590971861, 0.0, 7.261130503590738, 0.21906541848060573};

namespace
{

constexpr const char* kUnit = "Conf/Interfaces/BitrateCalculator";

using Limits = std::numeric_limits<long long>;

struct CodecCurve
{
    std::string_view codecId;
    const double* coefficients;
};

constexpr CodecCurve kCurves[] = {
    {Texts::IFormatCodecVideo::CODEC_ID_H264, coef_h264},
    {Texts::IFormatCodecVideo::CODEC_ID_THEORA, coef_h264},
    {Texts::IFormatCodecVideo::CODEC_ID_VP8, coef_h264},
    {Texts::IFormatCodecVideo::CODEC_ID_VP9, coef_h264},
    {Texts::IFormatCodecVideo::CODEC_ID_MPEG4, coef_mpeg4},
    {Texts::IFormatCodecVideo::CODEC_ID_MPEG1VIDEO, coef_mpeg12},
    {Texts::IFormatCodecVideo::CODEC_ID_MPEG2VIDEO, coef_mpeg12},
    {Texts::IFormatCodecVideo::CODEC_ID_MJPEG, coef_mjpeg},
    {Texts::IFormatCodecVideo::CODEC_ID_WMV2, coef_wmv2},
    {Texts::IFormatCodecVideo::CODEC_ID_H263, coef_h263},
    {Texts::IFormatCodecVideo::CODEC_ID_GIF, coef_gif},
};

/// Null when there is none.
const double* FindOwnCurve(const std::string& codecId)
{
    for (const CodecCurve& curve : kCurves)
    {
        if (curve.codecId == codecId)
        {
            return curve.coefficients;
        }
    }
    return nullptr;
}

const double* FindCurve(const std::string& codecId)
{
    const double* const curve = FindOwnCurve(codecId);
    return curve == nullptr ? coef_h264 : curve;
}

/// Rounds toward zero. A cast alone would be undefined outside the 64-bit range. No double equals its upper
/// limit: the nearest one is 2^63.
long long Truncate(double value)
{
    constexpr double kTwoTo63 = 9223372036854775808.0;
    if (std::isnan(value))
    {
        return 0;
    }
    if (value >= kTwoTo63)
    {
        return Limits::max();
    }
    return value < -kTwoTo63 ? Limits::min() : static_cast<long long>(value);
}

long long Half(long long bitrate) { return bitrate / 2; }

long long Double(long long bitrate)
{
    if (bitrate > Limits::max() / 2)
    {
        return Limits::max();
    }
    return bitrate < Limits::min() / 2 ? Limits::min() : bitrate * 2;
}

/// kept: compared as an unsigned number, so that a quality of 0 scales the bitrate and a negative one does
/// not.
long long ScaleUnlessOutOfRange(long long bitrate, std::uint32_t quality)
{
    return quality > IFormatCodec::MAX_QUALITY ? bitrate : NormBitrate(bitrate, static_cast<int>(quality));
}

double FrameRateOf(const Core::Property& record)
{
    const Core::Property::Ratio& fps = record[IFormatCodecVideo::TAG_FPS].GetRatio();
    return fps.denominator() > 0
               ? static_cast<double>(fps.numerator()) / static_cast<double>(fps.denominator())
               : 0.0;
}

struct VideoSettings
{
    bool isVbr;
    long long defaultBitrate;
};

VideoSettings ReadVideoSettings(const Core::Property& record)
{
    const std::string& mode = record[IFormatCodec::TAG_BITRATE_MODE].GetString();
    const std::string& codecId = record[IFormatCodec::TAG_CODEC_ID].GetString();
    const auto width = static_cast<std::uint32_t>(record[IFormatCodecVideo::TAG_WIDTH].GetInt64());
    const auto height = static_cast<std::uint32_t>(record[IFormatCodecVideo::TAG_HEIGHT].GetInt64());
    const double fps = FrameRateOf(record);
    return {mode == IFormatCodec::TAG_BITRATE_MODE_VBR, GetDefVideoBitrate(codecId, width, height, fps)};
}

long long ScaleByRecord(long long bitrate, const VideoSettings& settings, const Core::Property& record)
{
    if (!settings.isVbr)
    {
        return bitrate;
    }
    const long long quality = record[IFormatCodec::TAG_QUALITY].GetInt64();
    return ScaleUnlessOutOfRange(bitrate, static_cast<std::uint32_t>(quality));
}

/// The record of a video descriptor; null for any other.
const Core::Property* FindVideoRecord(const IFormatCodec* codec)
{
    const auto* const video = dynamic_cast<const IFormatCodecVideo*>(codec);
    return video == nullptr ? nullptr : &video->GetProperty();
}

ConfException IncompatibleType()
{
    ConfException exception;
    exception << TagDescription("Incompatible type of IFormatCodec structure");
    return exception;
}

double AudioFactor(const Core::Property& record, Boundary boundary)
{
    const std::string& codecId = record[IFormatCodec::TAG_CODEC_ID].GetString();
    if (codecId == IFormatCodecAudio::CODEC_ID_ALAC || codecId == IFormatCodecAudio::CODEC_ID_FLAC)
    {
        return 1.0;
    }
    return boundary == BOUNDARY_LOWER ? 0.8 : 1.2;
}

/// kept: unlike the proposals, a quality of 0 does not scale.
long long BoundVideoBitrate(long long bitrate, const Core::Property& record, Boundary boundary)
{
    const double factor = boundary == BOUNDARY_LOWER ? 0.5 : 2.0;
    const long long bound = Truncate(static_cast<double>(bitrate) * factor);
    const long long quality = record[IFormatCodec::TAG_QUALITY].GetInt64();
    return quality < 1 || quality > IFormatCodec::MAX_QUALITY ? bound
                                                              : NormBitrate(bound, static_cast<int>(quality));
}

} // namespace

long long calculateBitrate(double width, double height, double fps, const double* coefficients)
{
    // The result depends on the order of the operations.
    const double c0 = coefficients[0];
    const double s = std::sqrt(width * height);
    const double s2 = s * s;
    double v = c0 + coefficients[1] * s;
    v = s2 / 100 * coefficients[2] + v;
    v = s * s2 / 10000 * coefficients[3] + v;
    v = v > c0 ? v : c0;
    if (fps > 30)
    {
        v *= (fps - 30) * 0.1 / 20 + 1;
    }
    else if (fps < 25)
    {
        v *= fps * 0.7 / 25 + 0.3;
    }
    return Truncate(v * 1024);
}

long long GetDefVideoBitrate(const std::string& codecId, long long width, long long height, double fps)
{
    return calculateBitrate(static_cast<double>(width), static_cast<double>(height), fps, FindCurve(codecId));
}

bool HasVideoBitrateCurve(const std::string& codecId) { return FindOwnCurve(codecId) != nullptr; }

long long NormBitrate(long long bitrate, int quality)
{
    const double steps = static_cast<double>(quality) - 1;
    return Truncate((steps * -0.6666666666666666 / 31 + 1) * static_cast<double>(bitrate));
}

long long GetDefaultVideoBitrate(const std::string& codecId, long long width, long long height, double fps,
                                 int quality)
{
    const long long bitrate = GetDefVideoBitrate(codecId, width, height, fps);
    return ScaleUnlessOutOfRange(bitrate, static_cast<std::uint32_t>(quality));
}

long long GetMinVideoBitrate(const std::string& codecId, long long width, long long height, double fps,
                             int quality)
{
    const long long bitrate = GetDefVideoBitrate(codecId, width, height, fps);
    return ScaleUnlessOutOfRange(Half(bitrate), static_cast<std::uint32_t>(quality));
}

long long GetMaxVideoBitrate(const std::string& codecId, long long width, long long height, double fps,
                             int quality)
{
    const long long bitrate = GetDefVideoBitrate(codecId, width, height, fps);
    return ScaleUnlessOutOfRange(Double(bitrate), static_cast<std::uint32_t>(quality));
}

long long GetDefaultVideoBitrate(boost::intrusive_ptr<const IFormatCodec> codec)
{
    const Core::Property* const record = FindVideoRecord(codec.get());
    if (record == nullptr)
    {
        ZELNOR_THROW(kUnit, IncompatibleType());
    }
    const VideoSettings settings = ReadVideoSettings(*record);
    return ScaleByRecord(settings.defaultBitrate, settings, *record);
}

long long GetMinVideoBitrate(boost::intrusive_ptr<const IFormatCodec> codec)
{
    const Core::Property* const record = FindVideoRecord(codec.get());
    if (record == nullptr)
    {
        ZELNOR_THROW(kUnit, IncompatibleType());
    }
    const VideoSettings settings = ReadVideoSettings(*record);
    return ScaleByRecord(Half(settings.defaultBitrate), settings, *record);
}

long long GetMaxVideoBitrate(boost::intrusive_ptr<const IFormatCodec> codec)
{
    const Core::Property* const record = FindVideoRecord(codec.get());
    if (record == nullptr)
    {
        ZELNOR_THROW(kUnit, IncompatibleType());
    }
    const VideoSettings settings = ReadVideoSettings(*record);
    return ScaleByRecord(Double(settings.defaultBitrate), settings, *record);
}

long long GetBitrateBounded(const Core::Property& codec, Boundary boundary)
{
    const long long bitrate = codec[IFormatCodec::TAG_BITRATE].GetInt64();
    const std::string& mode = codec[IFormatCodec::TAG_BITRATE_MODE].GetString();
    if (mode == IFormatCodec::TAG_BITRATE_MODE_CBR)
    {
        return bitrate;
    }
    if (mode != IFormatCodec::TAG_BITRATE_MODE_VBR)
    {
        ZELNOR_THROW(kUnit, std::invalid_argument("Unexpected bitrate mode: " + mode));
    }
    if (codec.GetName() == IFormatCodecAudio::TAG_FORMAT_CODEC_AUDIO)
    {
        return Truncate(static_cast<double>(bitrate) * AudioFactor(codec, boundary));
    }
    if (codec.GetName() == IFormatCodecVideo::TAG_FORMAT_CODEC_VIDEO)
    {
        return BoundVideoBitrate(bitrate, codec, boundary);
    }
    ZELNOR_THROW(kUnit, std::invalid_argument("Unsupported codec format for bitrate calculation"));
}

long long GetMinBitrate(const Core::Property& codec) { return GetBitrateBounded(codec, BOUNDARY_LOWER); }

long long GetMaxBitrate(const Core::Property& codec) { return GetBitrateBounded(codec, BOUNDARY_UPPER); }

} // namespace Zelnor::Conf
