#pragma once

// Private to the library, not installed.

#include "Media/Validating/FaultCollector.h"

#include <string>

namespace Zelnor::Media
{

/// Finds what is wrong with a text that is JSON and shall be a job.
/// \param document  indexed down to the members of nodes and links
void ValidateJob(const std::string& text, const JsonPart& document, const std::string& name,
                 FaultCollector& faults);

/// How deep a job's document is indexed for that: to the members of nodes and links.
constexpr std::size_t kJobLevels = 3;

} // namespace Zelnor::Media
