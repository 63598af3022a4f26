#pragma once

#include "Conf/Interfaces/IFormatCodec.h"
#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/Property.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <cstdint>
#include <string>

/// \file
/// Proposals for video bitrates, and bounds around the bitrate of a record. Bitrates are in bits per second;
/// doubles become integers by cutting off the fraction. What exceeds 64 bits is held at their limits, and
/// what is not a number becomes 0. Nothing is held at `IFormatCodecVideo::MAX_VIDEO_BITRATE`: callers do
/// that.

namespace Zelnor::Conf
{

/// Coefficients c0 to c3 of the curve in `calculateBitrate`, by family of codecs. They are read at each call;
/// a caller that changes one sees to it that nobody calculates meanwhile.
extern ZELNOR_API double coef_h264[4];
extern ZELNOR_API double coef_mpeg4[4];
extern ZELNOR_API double coef_mpeg12[4];
extern ZELNOR_API double coef_mjpeg[4];
extern ZELNOR_API double coef_wmv2[4];
extern ZELNOR_API double coef_h263[4];
extern ZELNOR_API double coef_gif[4];

/// Which bound is asked for.
enum Boundary : std::int32_t
{
    BOUNDARY_LOWER = 0,
    BOUNDARY_UPPER = 1,
};

/// The bitrate of a stream of `fps` frames a second: a cubic curve over the side of a square frame of that
/// area gives kilobits, of 1024 bits, for 25 to 30 frames a second, and other rates scale it. The curve is
/// never below c0, where it is also held when it turns down for large frames or is not a number.
/// `coefficients` has four elements.
ZELNOR_API long long calculateBitrate(double width, double height, double fps, const double* coefficients);

/// `calculateBitrate` with the coefficients of the codec, a `CODEC_ID_` text; H.264's for all that have none.
ZELNOR_API long long GetDefVideoBitrate(const std::string& codecId, long long width, long long height,
                                        double fps);

/// Scales `bitrate` by a factor that falls linearly from 1 at quality 1 to a third at 32. Other qualities lie
/// on the same line.
ZELNOR_API long long NormBitrate(long long bitrate, int quality);

/// The bitrate to propose, and half and double of it as bounds, scaled by `quality` from 0 to 32 (0 gives a
/// little more than 1 does); not scaled by any other.
ZELNOR_API long long GetDefaultVideoBitrate(const std::string& codecId, long long width, long long height,
                                            double fps, int quality);
ZELNOR_API long long GetMinVideoBitrate(const std::string& codecId, long long width, long long height,
                                        double fps, int quality);
ZELNOR_API long long GetMaxVideoBitrate(const std::string& codecId, long long width, long long height,
                                        double fps, int quality);

/// The same for what a video descriptor's record holds: its bitrate mode, codec, size and frame rate. Its
/// quality counts, and is read, in the mode "VBR" only.
/// \throw ConfException "Incompatible type of IFormatCodec structure" when `codec` is null or no
/// `IFormatCodecVideo`
/// \throw Core::PropertyException when the record lacks one of them
ZELNOR_API long long GetDefaultVideoBitrate(boost::intrusive_ptr<const IFormatCodec> codec);
ZELNOR_API long long GetMinVideoBitrate(boost::intrusive_ptr<const IFormatCodec> codec);
ZELNOR_API long long GetMaxVideoBitrate(boost::intrusive_ptr<const IFormatCodec> codec);

/// The bound of the bitrate in an audio or video codec's record. In the mode "CBR" it is the bitrate itself,
/// whatever the record; in the mode "VBR" 0.8 and 1.2 times the bitrate for audio (1 for FLAC and ALAC), and
/// 0.5 and 2 times, scaled by a quality from 1 to 32, for video.
/// \throw std::invalid_argument "Unsupported codec format for bitrate calculation" for another record in the
/// mode "VBR"
/// \throw std::invalid_argument "Unexpected bitrate mode: " and the mode
/// \throw Core::PropertyException when the record lacks what is read
ZELNOR_API long long GetBitrateBounded(const Core::Property& codec, Boundary boundary);
/// `GetBitrateBounded` with the lower and with the upper boundary.
ZELNOR_API long long GetMinBitrate(const Core::Property& codec);
ZELNOR_API long long GetMaxBitrate(const Core::Property& codec);

} // namespace Zelnor::Conf
