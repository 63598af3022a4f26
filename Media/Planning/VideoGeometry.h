#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"

extern "C" {
#include <libavcodec/codec_id.h>
}

namespace Zelnor::Media
{

/// The frame as it is displayed: rotated, with its sample aspect ratio.
Conf::FrameInfo DisplayedFrame(const MediaStream& source);

/// The terms of the display aspect ratio, held below 65536 so that products fit.
void DisplayAspectOf(const Conf::FrameInfo& frame, std::uint32_t& x, std::uint32_t& y);

/// What the pixels of a codec in a container can look like.
struct PixelLimits
{
    bool areSquare = false; ///< the frame is displayed with square pixels, whatever it says
    bool areDvd = false;    ///< the frame is displayed as 4:3 or 16:9
};
PixelLimits PixelLimitsOf(AVCodecID codec, const std::string& container);

/// Sets size and sample aspect ratio where `target` leaves them open. The size is the source's, the display
/// aspect ratio stays, and the limits are kept: whole chroma samples, the few aspect ratios of MPEG-2 and
/// DVDs.
void ChooseSize(const Conf::FrameInfo& source, PixelLimits limits, Conf::IFormatCodecVideo& target);

} // namespace Zelnor::Media
