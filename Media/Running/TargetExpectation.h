#pragma once

// Private to the library, not installed.

#include "Media/Running/Transcode.h"
#include "Media/Running/TranscodeCommand.h"
#include "Media/Verifying/ExpectedFile.h"

namespace Zelnor::Media
{

/// What the finished file of a transcode must be, of which everything was asked.
ExpectedFile ExpectationOf(const Transcode& transcode);
ExpectedFile ExpectationOf(const Transcode& transcode, const TranscodeCommand& command);

} // namespace Zelnor::Media
