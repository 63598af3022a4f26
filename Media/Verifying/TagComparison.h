#pragma once

// Private to the library, not installed.

#include "Media/Verifying/ExpectedFile.h"
#include "Media/Verifying/Verification.h"

#include <vector>

namespace Zelnor::Media
{

/// Which of the tags that the container can hold are not in the file, or have another value.
std::vector<TargetDifference> CompareFileTags(const ExpectedFile& wanted, const MediaFile& found);

/// The same for the language and the title of a stream.
std::vector<TargetDifference> CompareStreamTags(const ExpectedFile& file, const ExpectedStream& wanted,
                                                const MediaStream& found);

} // namespace Zelnor::Media
