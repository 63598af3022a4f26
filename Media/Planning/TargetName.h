#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

#include <string>

namespace Zelnor::Media
{

/// The full name of the file that a job makes. A folder gets the file under the source's name, and a name
/// without an extension the container's default one.
/// \throw PlanException when the extension is that of another container: "'out.mkv' is the name of a file in
///        matroska, and ..."
std::string TargetName(const std::string& output, const MediaFile& source, const std::string& container);

} // namespace Zelnor::Media
