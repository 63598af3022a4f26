#pragma once

// Private to the library, not installed.

#include "Media/Verifying/ExpectedFile.h"
#include "Media/Verifying/MediaScan.h"
#include "Media/Verifying/Verification.h"

#include <vector>

namespace Zelnor::Media
{

/// Whether the stream keeps within the bounds that its encoder was given. Nothing is said of a stream whose
/// packets were not all read. Less than was asked for is not a difference: simple images and silence need
/// less, but for encoders that fill up to a constant bitrate.
std::vector<TargetDifference> CompareBitrate(const ExpectedStream& wanted, const StreamScan& found);

} // namespace Zelnor::Media
