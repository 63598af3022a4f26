#pragma once

#include "Core/Interfaces/Export.h"

#include "Media/Running/Transcode.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// Where a run of ffmpeg reads and writes, beside what the job says.
struct PassFiles
{
    std::string output;  ///< the file to write, complete or not
    std::string passLog; ///< beginning of the names of the files that the first pass leaves for the second
    bool replace = true; ///< whether the file to write may be there already
};

/// The arguments, without the program's name, of the runs of ffmpeg that make the transcode: one, or two when
/// a stream is to be encoded in two passes. Everything in the records is honoured or refused.
/// \throw RunException with the reason why something cannot be done
ZELNOR_API std::vector<std::vector<std::string>> MakeFFmpegArguments(const Transcode& transcode,
                                                                     const PassFiles& files);

} // namespace Zelnor::Media
