#pragma once

// Private to the library, not installed.

#include "Media/Jobs/JobFault.h"
#include "Media/Running/FFmpegArguments.h"
#include "Media/Running/Transcode.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/Export.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A transcode that was asked everything there is to ask before it starts.
struct PreparedTranscode
{
    Transcode transcode;
    std::vector<FFmpegPass> passes;
    std::vector<JobFault> losses; ///< what of the sources the target will not have
};

/// What is asked of a job beside what stands in it.
struct PreparationOptions
{
    std::string document = {};     ///< what messages call the job; empty when it is not from a file
    bool mayReplace = true;        ///< whether its targets may be there already
    bool strict = false;           ///< whether a loss is a fault
    std::string ffmpeg = "ffmpeg"; ///< the program that will run it
};

/// Asks everything that can be known before the job runs, of every target: topology, sources, encoders,
/// containers, settings, and whether the targets can be written. What is prepared is of use only when there
/// is no fault.
std::vector<PreparedTranscode> PrepareJob(const Conf::ITranscodingMetaGraph& job,
                                          const PreparationOptions& options, FaultList& faults);
/// What of that its document tells alone, whatever files there are. Of the machine, it asks which encoders,
/// muxers and options the installed FFmpeg has. Not asked: whether sources are there and can be read, whether
/// they have these streams and what the streams are, and whether the targets can be written.
void CheckJobDocument(const Conf::ITranscodingMetaGraph& job, const std::string& document, FaultList& faults);
/// \throw JobException for the first fault
ZELNOR_API std::vector<PreparedTranscode> PrepareJob(const Conf::ITranscodingMetaGraph& job,
                                                     const PreparationOptions& options = {});

/// The command lines of ffmpeg that write right to the target: the program and its arguments, for each pass.
/// \param replace  whether the target may be there already
ZELNOR_API std::vector<std::vector<std::string>> CommandsOf(const PreparedTranscode& prepared,
                                                            const std::string& ffmpeg, bool replace);

} // namespace Zelnor::Media
