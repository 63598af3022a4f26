#pragma once

#include "Media/Probe/MediaProbe.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"

extern "C" {
#include <libavcodec/codec_id.h>
}

namespace Zelnor::Media
{

/// The frame as it is shown: turned, with its pixel aspect.
Conf::FrameInfo ShownFrame(const MediaStream& source);

/// The terms of the aspect at which the whole frame is shown, held below 65536 so that products fit.
void FrameAspectOf(const Conf::FrameInfo& frame, std::uint32_t& x, std::uint32_t& y);

/// Whether pictures of the codec in the container are shown with square pixels, whatever they say.
bool NeedsSquarePixels(AVCodecID codec, const std::string& container);

/// Sets size and pixel aspect where `target` leaves them open. The size is the source's, the frame keeps its
/// shape, and the codec's limits are kept: whole chroma samples, the shapes that MPEG-2 knows.
void ChooseSize(const Conf::FrameInfo& source, bool squarePixels, Conf::IFormatCodecVideo& target);

} // namespace Zelnor::Media
