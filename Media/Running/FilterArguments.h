#pragma once

// Private to the library, not installed.

#include "Media/Jobs/FaultList.h"
#include "Media/Running/Transcode.h"

#include <string>

namespace Zelnor::Media
{

/// The filters that turn a source's stream into what its record of checked settings says: size, aspect, frame
/// rate and samples; deinterlacing, letterbox and pillarbox where the aspect is another one, GIF's palette.
/// \param isPart  of a part of the source: its first frame may come after its beginning
std::string StreamFilters(const MediaStream& source, const Core::Property& codec, bool isPart = false);

/// Those that follow after streams were merged into it by `MergeFilters`.
std::string MergedFilters(const MediaStream& source, const Core::Property& codec);

/// The beginning of a filter graph that merges streams: "[0:1][0:2]amix=inputs=2:normalize=0", or
/// "[0:3]scale=...[bitmap3];[0:0]fps=25/1[base];[base][bitmap3]overlay=...". What makes the frames that there
/// will be comes before anything is drawn on them. Streams that cannot be merged are faults.
/// \param codec  the record of checked settings of what the stream becomes
std::string MergeFilters(const Transcode& transcode, const TranscodeStream& stream,
                         const Core::Property& codec, FaultList& faults);

/// `text` as the value of an option inside a filter graph.
std::string EscapeForFilter(const std::string& text);

} // namespace Zelnor::Media
