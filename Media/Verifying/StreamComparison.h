#pragma once

// Private to the library, not installed.

#include "Media/Verifying/ExpectedFile.h"
#include "Media/Verifying/MediaScan.h"
#include "Media/Verifying/Verification.h"

#include <vector>

namespace Zelnor::Media
{

/// A stream that was found in a finished file.
struct FoundStream
{
    const MediaStream& stream;
    const StreamScan& scan;
};

/// In what a stream is not what it must be: codec, profile, size, display aspect ratio, frame rate, pixel
/// format, field order, colour, channel layout, sample rate, bitrate, decoding. What the container or the
/// encoder is known to change is not a difference.
std::vector<TargetDifference> CompareStream(const ExpectedFile& file, const ExpectedStream& wanted,
                                            const FoundStream& found);

} // namespace Zelnor::Media
