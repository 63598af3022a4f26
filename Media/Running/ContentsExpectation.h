#pragma once

// Private to the library, not installed.

#include "Media/Running/Transcode.h"
#include "Media/Running/TranscodeCommand.h"
#include "Media/Verifying/ExpectedFile.h"

namespace Zelnor::Media
{

/// Adds to what the finished file must be what it holds beside its images and sounds: tags, languages,
/// chapters, covers, attachments, a timecode. It is what the container brings back of what ffmpeg is told.
/// Where that cannot be asked, nothing is expected.
/// \param expected  with its streams
void ExpectContents(const Transcode& transcode, const TranscodeCommand& command, ExpectedFile& expected);

} // namespace Zelnor::Media
