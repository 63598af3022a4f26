#pragma once

// Private to the library, not installed.

#include "Media/Batch/Batch.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// Refuses outputs of which two would be one file, and outputs that are files which the batch reads, however
/// their names are spelled: through links, or in another case where the file system folds it.
/// \param read  the paths of the inputs and presets, to open
/// \throw PlanException for the first of them
/// \returns the outputs that are there already, as paths to open
std::vector<std::string> CheckOutputs(const Batch& batch, const std::vector<std::string>& read);

} // namespace Zelnor::Media
