#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
}

#include <string>

namespace Zelnor::Media
{

/// The colours that the stream's parameters name.
VideoColor ColorOf(const AVCodecParameters& codec);
/// Those that a decoded frame names.
VideoColor ColorOf(const AVFrame& frame);

/// What the container says of high dynamic range.
VideoHdr HdrOf(const AVStream& stream);
/// What a decoded frame says of it.
VideoHdr HdrOf(const AVFrame& frame);

/// "progressive", "tt", "bb", "tb" or "bt"; empty when it is not known.
std::string FieldOrderName(AVFieldOrder order);

} // namespace Zelnor::Media
