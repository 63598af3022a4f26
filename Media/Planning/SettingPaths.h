#pragma once

// Private to the library and to the tool, not installed.

#include "Core/Interfaces/Export.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// What can follow what somebody has typed of a setting, as `ParseSetting` takes it, each with what is typed
/// already: for "video.bit" the paths "video.bitrate=" and "video.bitrate_mode=", for "audio.layout=" the
/// names of layouts. What ends with "." or "=" is to be typed on. Nothing is said of values that are not
/// names of the vocabulary.
ZELNOR_API std::vector<std::string> CompleteSetting(const std::string& typed);

} // namespace Zelnor::Media
