#pragma once

// Private to the library, not installed.

#include "Media/Running/Transcode.h"

#include <string>

namespace Zelnor::Media
{

/// The filters that turn a source's stream into what its target's record says it is: size, shape and samples;
/// turning interlaced pictures into whole ones, bars where the shape is another one, GIF's colours.
std::string StreamFilters(const Transcode& transcode, const TranscodeStream& stream);

/// The beginning of a description of filters that merges streams: "[0:1][0:2]amix=inputs=2:normalize=0", or
/// "[0:0][0:3]overlay". \throw RunException for streams that cannot be merged
std::string MergeFilters(const Transcode& transcode, const TranscodeStream& stream);

/// `text` as the value of an option inside a description of filters.
std::string EscapeForFilter(const std::string& text);

} // namespace Zelnor::Media
