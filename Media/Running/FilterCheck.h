#pragma once

// Private to the library, not installed.

#include "Media/Running/Transcode.h"

#include <string>

namespace Zelnor::Media
{

class FaultList;

/// Asks the ffmpeg program whether it has the filters that it may be built without and that the transcode
/// needs: those for high dynamic range and for text subtitles. It is run only for a transcode that needs one.
/// A program that does not tell its filters is not blamed.
void CheckFilters(const Transcode& transcode, const std::string& ffmpeg, FaultList& faults);

} // namespace Zelnor::Media
