#pragma once

// Private to the library, not installed.

#include "Media/Verifying/ExpectedFile.h"
#include "Media/Verifying/Verification.h"

#include <vector>

namespace Zelnor::Media
{

/// In what a file's chapters, covers, attachments and timecode are not what they must be.
/// \param isTaken  for each stream of the file, whether it is one of `wanted.streams`
std::vector<TargetDifference> CompareContents(const ExpectedFile& wanted, const MediaFile& found,
                                              const std::vector<bool>& isTaken);

} // namespace Zelnor::Media
