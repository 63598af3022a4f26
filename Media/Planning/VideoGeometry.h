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

/// Whether images of the codec in the container are displayed with square pixels, whatever they say.
bool NeedsSquarePixels(AVCodecID codec, const std::string& container);

/// Sets size and sample aspect ratio where `target` leaves them open. The size is the source's, the display
/// aspect ratio stays, and the codec's limits are kept: whole chroma samples, MPEG-2's few aspect ratios.
void ChooseSize(const Conf::FrameInfo& source, bool squarePixels, Conf::IFormatCodecVideo& target);

} // namespace Zelnor::Media
