#pragma once

// Private to the library, not installed.

#include "Media/Pages/GraphLayout.h"
#include "Media/Pages/JobItems.h"

#include <string>

namespace Zelnor::Media
{

/// The boxes of a job: its nodes, then those of its links that have a record or a fault.
BoxGraph BoxesOf(const JobItems& items);

/// The drawing as an SVG element for a page: each box and each line is a link to what the page says of it.
/// \param layout  of `BoxesOf` the same items
std::string JobDrawingSvg(const JobItems& items, const GraphLayout& layout);

} // namespace Zelnor::Media
