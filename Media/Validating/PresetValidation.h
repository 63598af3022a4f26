#pragma once

// Private to the library, not installed.

#include "Media/Validating/FaultCollector.h"

#include <string>

namespace Zelnor::Media
{

/// Finds what is wrong with a text that is JSON and shall be a preset.
/// \param document  indexed down to the members of the outermost object
void ValidatePreset(const JsonPart& document, const std::string& name, FaultCollector& faults);

} // namespace Zelnor::Media
