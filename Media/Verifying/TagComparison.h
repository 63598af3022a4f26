#pragma once

// Private to the library, not installed.

#include "Media/Verifying/ExpectedFile.h"
#include "Media/Verifying/Verification.h"

#include <vector>

namespace Zelnor::Media
{

/// Which of the file's tags it lacks, or has with another value. The case of names does not matter.
std::vector<TargetDifference> CompareFileTags(const ExpectedFile& wanted, const MediaFile& found);

/// The same for the tags and the language of a stream.
std::vector<TargetDifference> CompareStreamTags(const ExpectedStream& wanted, const MediaStream& found);

} // namespace Zelnor::Media
