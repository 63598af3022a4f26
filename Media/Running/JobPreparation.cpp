#include "Media/Running/JobPreparation.h"

#include "Media/MediaException.h"
#include "Media/Running/Files.h"
#include "Media/Running/TargetFile.h"

#include <utility>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Running/JobPreparation";

/// Nothing may write over what it reads.
void CheckTarget(const Transcode& transcode, const Place& place, bool overwrite)
{
    for (const MediaFile& input : transcode.inputs)
    {
        if (IsSameFile(input.name, transcode.output))
        {
            ZELNOR_THROW(kUnit,
                         MakeError<JobException>(place, "the target and the source are the same file: '" +
                                                            transcode.output + "'"));
        }
    }
    CheckReplaceable(transcode.output, overwrite);
}

} // namespace

std::vector<PreparedTranscode> PrepareJob(const Conf::ITranscodingMetaGraph& job,
                                          const PreparationOptions& options)
{
    std::vector<PreparedTranscode> prepared;
    for (Transcode& transcode : ReadTranscodes(job))
    {
        std::vector<FFmpegPass> passes = MakeFFmpegArguments(transcode);
        prepared.push_back({std::move(transcode), std::move(passes)});
    }
    if (!options.checkTargets)
    {
        return prepared;
    }
    std::vector<Conf::NodeId> targets;
    job.Outputs(targets);
    for (std::size_t i = 0; i < prepared.size(); ++i)
    {
        Place place;
        place.file = options.document;
        place.node = targets[i];
        CheckTarget(prepared[i].transcode, place, options.overwrite);
    }
    return prepared;
}

} // namespace Zelnor::Media
