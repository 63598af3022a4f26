#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

#include <optional>
#include <string>

namespace Zelnor::Media
{

/// That a file ends before it should.
struct Truncation
{
    std::string wanted; ///< "2000 bytes"
    std::string found;  ///< "1000 bytes"
};

/// Whether the file ends before its own structure says, which FFmpeg does not tell: it measures how long such
/// a file is from what is there. Looks at a few bytes only. Nothing when the file is whole, when its format
/// cannot tell, and when its length is declared and so is known to the probe.
std::optional<Truncation> FindTruncation(const MediaFile& file);

} // namespace Zelnor::Media
