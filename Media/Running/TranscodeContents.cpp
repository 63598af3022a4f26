#include "Media/Running/TranscodeContents.h"

#include "Media/Jobs/FaultList.h"
#include "Media/Planning/EncoderChoice.h"

namespace Zelnor::Media
{

OutputFile OutputOf(const Transcode& transcode)
{
    OutputFile output = {{}, transcode.container, &transcode.target, {}, transcode.leftOut};
    for (const MediaFile& input : transcode.inputs)
    {
        output.inputs.push_back(&input);
    }
    for (const TranscodeStream& stream : transcode.streams)
    {
        output.streams.push_back(
            {stream.input, stream.stream, stream.merged, &stream.codec, IsCopied(stream.codec)});
    }
    return output;
}

void PlanContentsOf(Transcode& transcode, FaultList& faults)
{
    transcode.contents = PlanContents(OutputOf(transcode));
    for (const TargetFault& fault : transcode.contents.faults)
    {
        faults.Add(JobFault::Setting, transcode.place.At(fault.key), fault.reason);
    }
}

} // namespace Zelnor::Media
