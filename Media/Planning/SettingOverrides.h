#pragma once

// Private to the library, not installed.

#include "Media/Planning/JobRequest.h"

#include "Core/Interfaces/Property.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// The types of streams with which a setting's path can begin, in the order in which messages list them.
const std::vector<std::string>& SettingStreamTypes();

/// The preset's record with what the request sets in place of it: codecs, frame rate, settings by path.
/// \param preset  keeps to the rules; so does the result
/// \param notes   gets what of the preset is left out
/// \throw PlanException "video.bitrate: expected a positive integer, found 'fast'"
Core::Property ApplyOverrides(const Core::Property& preset, const JobRequest& request,
                              std::vector<std::string>& notes);

/// Whether one of the settings is for `key` of the preset's stream of that type and position.
bool IsOverridden(const std::vector<SettingOverride>& settings, const std::string& streamType,
                  std::size_t position, const std::string& key);

} // namespace Zelnor::Media
