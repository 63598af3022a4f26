#pragma once

// Private to the library, not installed.

#include "Media/Running/Transcode.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A table for each target: what its sources have, and what the job makes of that.
std::string TargetTablesHtml(const std::vector<Transcode>& transcodes);

} // namespace Zelnor::Media
