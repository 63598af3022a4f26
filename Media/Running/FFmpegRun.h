#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Export.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// How far a run of ffmpeg is.
struct FFmpegProgress
{
    std::int64_t done = 0; ///< microseconds of the output
    double speed = 0;      ///< 2.0: twice as fast as it plays; 0: not known yet
};

/// What became of a run of ffmpeg.
struct FFmpegResult
{
    int exitCode = 0;                  ///< 128 + the signal's number when a signal ended it
    std::vector<std::string> messages; ///< its last lines; the ends of very long ones are left out
};

/// Runs the program, found through PATH and without a shell, and reports its progress. Once `isCancelled`
/// says so, the program is asked to end, and ended when it does not do so soon. What the functions throw ends
/// the program, and passes through.
/// \throw RunException when there is no such program, or it may not be run, or the system does not tell how
/// it ended
FFmpegResult RunFFmpeg(const std::vector<std::string>& command,
                       const std::function<void(const FFmpegProgress&)>& report,
                       const std::function<bool()>& isCancelled);

} // namespace Zelnor::Media
