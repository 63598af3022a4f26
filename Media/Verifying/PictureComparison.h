#pragma once

// Private to the library, not installed.

#include "Media/Verifying/ExpectedFile.h"
#include "Media/Verifying/Verification.h"

#include <vector>

namespace Zelnor::Media
{

/// In what the frames of a video are not what they must be: pixel format, field order, colour. Where the
/// container or the codec does not say it, nothing is compared.
std::vector<TargetDifference> ComparePicture(const ExpectedFile& file, const ExpectedStream& wanted,
                                             const MediaStream& found);

} // namespace Zelnor::Media
