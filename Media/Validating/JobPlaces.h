#pragma once

// Private to the library, not installed.

#include "Media/Jobs/JobFault.h"
#include "Media/Validating/JobElements.h"

namespace Zelnor::Media
{

/// Adds a fault that was found in the graph of a document, at its place in the text.
void AddJobFault(const JobFault& fault, const JsonPart& document, const JobElements& elements,
                 FaultCollector& faults);

} // namespace Zelnor::Media
