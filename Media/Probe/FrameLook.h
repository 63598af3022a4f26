#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

extern "C" {
#include <libavformat/avformat.h>
}

#include <vector>

namespace Zelnor::Media
{

/// Decodes the first frames of each video and adds what only they say: that they are interlaced, their
/// colours, what they say of high dynamic range. Containers and codecs are often silent about it. A video
/// that cannot be decoded stays as it is described.
///
/// \param context  after `avformat_find_stream_info`; packets are read from it
/// \param streams  of `context`, in its order
void LookAtFrames(AVFormatContext& context, std::vector<MediaStream>& streams);

} // namespace Zelnor::Media
