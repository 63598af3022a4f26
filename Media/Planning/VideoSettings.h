#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

#include "Core/Interfaces/Property.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/pixfmt.h>
}

#include <cstdint>
#include <string>

/// \file
/// What the record of a video of checked settings says about its frames beyond their size and rate, and what
/// is known of a source's.

namespace Zelnor::Media
{

/// What becomes of a source whose frames are interlaced.
enum class Deinterlacing
{
    Off,        ///< nothing: its frames are taken for progressive ones
    EveryFrame, ///< "25p": one progressive frame of both fields
    EveryField, ///< "50p": one progressive frame of each field
    Keep,       ///< it stays interlaced
};

/// Without a word, each frame becomes a progressive one.
Deinterlacing DeinterlacingIn(const Core::Property& record);

/// AV_PIX_FMT_NONE where the record leaves it open.
AVPixelFormat PixelFormatIn(const Core::Property& record);

/// The colours that the record names.
VideoColor ColorIn(const Core::Property& record);
void SetColor(const VideoColor& color, Core::Property& record);

/// The format of the source's samples; AV_PIX_FMT_NONE where it is not known.
AVPixelFormat PixelFormatOf(const MediaStream& source);

/// Whether samples of the format are red, green and blue, or numbers of such colours.
bool IsRgb(AVPixelFormat format);
/// Bits of a colour component; 0 when the format is not known.
int DepthOf(AVPixelFormat format);
bool HasAlpha(AVPixelFormat format);
/// Whether the format itself says that the samples use all values.
bool IsFullRange(AVPixelFormat format);

/// The matrix that players take for that of a video of this size which does not name one: "bt709" for HD.
std::string UsualMatrix(std::uint32_t width, std::uint32_t height);
/// Whether the two names stand for the same coefficients.
bool IsSameMatrix(const std::string& one, const std::string& other);
/// "smpte2084" and "arib-std-b67"
bool IsHdr(const std::string& transfer);

/// The fields that are displayed first: "tff" or "bff".
std::string ParityOf(const MediaStream& source);

/// Whether the encoder can code interlaced frames as such.
bool SupportsInterlaced(const AVCodec& encoder);

} // namespace Zelnor::Media
