#pragma once

// Private to the library, not installed.

#include "Media/Running/CodecArguments.h"

namespace Zelnor::Media
{

/// The options for the bitrate that a codec's record of checked settings asks for. The mode CBR holds the
/// encoder to it, VBR keeps it between the library's bounds, scaled by the quality, and CBR_AUTO is an
/// average bitrate. A video record without a bitrate gets the proposed one.
CodecOptions BitrateOptions(const Core::Property& codec, const AVCodec& encoder, const Place& place,
                            FaultList& faults);

} // namespace Zelnor::Media
