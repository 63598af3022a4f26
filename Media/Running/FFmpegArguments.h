#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Export.h"

#include "Media/Running/Transcode.h"

#include <string>
#include <utility>
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

/// One run of ffmpeg. Its arguments are made and checked before anything starts; the files that are known
/// only when it starts are filled in.
class ZELNOR_API FFmpegPass
{
public:
    enum class Slot
    {
        Text,    ///< the text as it is
        Replace, ///< "-y" or "-n"
        PassLog, ///< the beginning of the pass log's name, then the text
        Cover,   ///< the beginning of the pass log's name, then the text: a file with a cover
        Output,  ///< the output file
    };

    void Add(Slot slot, const std::string& text = "") { m_arguments.emplace_back(slot, text); }
    /// Without the program's name.
    std::vector<std::string> Arguments(const PassFiles& files) const;

private:
    std::vector<std::pair<Slot, std::string>> m_arguments;
};

/// The runs of ffmpeg that make the transcode: one, or two when a stream is to be encoded in two passes.
/// Everything in the records is honoured, or a fault with its place; the passes are of use only when there is
/// none.
std::vector<FFmpegPass> MakeFFmpegArguments(const Transcode& transcode, FaultList& faults);
/// \throw JobException for the first fault
ZELNOR_API std::vector<FFmpegPass> MakeFFmpegArguments(const Transcode& transcode);

} // namespace Zelnor::Media
