#pragma once

// Private to the library, not installed.

#include "Media/Running/CodecArguments.h"

namespace Zelnor::Media
{

/// The options for the bitrate that a codec's record asks for. The mode CBR holds the encoder to it, VBR
/// keeps it between the library's bounds, scaled by the quality, and CBR_AUTO leaves it to the encoder to hit
/// it on the whole. A video record without a bitrate gets the proposed one. \throw RunException
CodecOptions BitrateOptions(const Core::Property& codec, const AVCodec& encoder);

} // namespace Zelnor::Media
