#pragma once

#include "Conf/Interfaces/IFormatCodec.h"
#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/Property.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <cstdint>
#include <string>

/// \file
/// Default bitrates for video, and bounds around the bitrate of a record. Bitrates are in bits per second;
/// doubles are rounded toward zero, clamped to 64 bits, and 0 if they are not a number. Results are not
/// clamped to `IFormatCodecVideo::MAX_VIDEO_BITRATE`; callers do that.

namespace Zelnor::Conf
{

/// Coefficients c0 to c3 of the curve in `calculateBitrate`, for each family of codecs. They are read at each
/// call. Do not change one while another thread calculates.
extern ZELNOR_API double coef_h264[4];
extern ZELNOR_API double coef_mpeg4[4];
extern ZELNOR_API double coef_mpeg12[4];
extern ZELNOR_API double coef_mjpeg[4];
extern ZELNOR_API double coef_wmv2[4];
extern ZELNOR_API double coef_h263[4];
extern ZELNOR_API double coef_gif[4];

/// Which bound of a bitrate is requested.
enum Boundary : std::int32_t
{
    BOUNDARY_LOWER = 0,
    BOUNDARY_UPPER = 1,
};

/// The bitrate of a video stream with `fps` frames per second. A cubic curve over the square root of the
/// frame's area gives kilobits (of 1024 bits) for 25 to 30 frames per second; other frame rates scale the
/// result. The curve is held at c0 where it is lower, which it may be for large frames, and where it is not a
/// number. `coefficients` has four elements.
ZELNOR_API long long calculateBitrate(double width, double height, double fps, const double* coefficients);

/// `calculateBitrate` with the coefficients of the codec `codecId`, a `CODEC_ID_` text. Codecs without
/// coefficients use those of H.264.
ZELNOR_API long long GetDefVideoBitrate(const std::string& codecId, long long width, long long height,
                                        double fps);

/// Whether that codec has coefficients.
ZELNOR_API bool HasVideoBitrateCurve(const std::string& codecId);

/// Scales `bitrate` by a factor that falls linearly from 1 at quality 1 to 1/3 at quality 32. Other qualities
/// are extrapolated.
ZELNOR_API long long NormBitrate(long long bitrate, int quality);

/// The default bitrate, and its half and its double as bounds. A `quality` from 0 to 32 scales them with
/// `NormBitrate`; any other has no effect.
ZELNOR_API long long GetDefaultVideoBitrate(const std::string& codecId, long long width, long long height,
                                            double fps, int quality);
ZELNOR_API long long GetMinVideoBitrate(const std::string& codecId, long long width, long long height,
                                        double fps, int quality);
ZELNOR_API long long GetMaxVideoBitrate(const std::string& codecId, long long width, long long height,
                                        double fps, int quality);

/// The same for the bitrate mode, codec, frame size and frame rate in a video descriptor's record. The
/// quality is read only in the mode "VBR". \throw ConfException "Incompatible type of IFormatCodec structure"
/// when `codec` is null or not an
///   `IFormatCodecVideo`
/// \throw Core::PropertyException when the record lacks one of these values
ZELNOR_API long long GetDefaultVideoBitrate(boost::intrusive_ptr<const IFormatCodec> codec);
ZELNOR_API long long GetMinVideoBitrate(boost::intrusive_ptr<const IFormatCodec> codec);
ZELNOR_API long long GetMaxVideoBitrate(boost::intrusive_ptr<const IFormatCodec> codec);

/// A bound of the bitrate in an audio or video codec's record. In the mode "CBR" both bounds are the bitrate
/// itself, for any record. In the mode "VBR" they are 0.8 and 1.2 times the bitrate for audio (the bitrate
/// itself for FLAC and ALAC), and 0.5 and 2 times for video, scaled by a quality from 1 to 32. \throw
/// std::invalid_argument "Unsupported codec format for bitrate calculation" for any other record in the
///   mode "VBR"
/// \throw std::invalid_argument "Unexpected bitrate mode: " and the mode
/// \throw Core::PropertyException when the record lacks a value that is read
ZELNOR_API long long GetBitrateBounded(const Core::Property& codec, Boundary boundary);
/// `GetBitrateBounded` with `BOUNDARY_LOWER` and with `BOUNDARY_UPPER`.
ZELNOR_API long long GetMinBitrate(const Core::Property& codec);
ZELNOR_API long long GetMaxBitrate(const Core::Property& codec);

} // namespace Zelnor::Conf
