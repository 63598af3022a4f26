#include "Media/ErrorText.h"
#include "Media/Planning/JobPlan.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Probe/MediaProbe.h"
#include "Media/Running/JobCheck.h"
#include "Media/Running/JobRun.h"

#include <iostream>

using namespace Zelnor::Media;

int main(int argc, char** argv)
try
{
    if (argc != 4)
    {
        std::cerr << "usage: transcode_file <media file> <preset file> <output file>\n";
        return 2;
    }
    // What is in the file, and what the preset makes of it: a job that could be edited, saved or drawn here.
    JobRequest request;
    request.output = argv[3];
    const PlannedJob planned = PlanJob(ProbeMedia(argv[1]), PresetFile::Open(argv[2]), request);

    // Everything that would keep it from running, each with its place.
    const auto faults = CheckJob(*planned.graph);
    for (const JobFault& fault : faults)
    {
        std::cerr << fault.Sentence() << "\n";
    }
    if (!faults.empty())
    {
        return 1;
    }

    RunOptions options;
    options.onProgress = [](const RunProgress& progress) {
        std::cerr << progress.file << ": " << static_cast<int>(100 * progress.part.value_or(0)) << " %\n";
    };
    const RunResult result = RunJob(*planned.graph, options);

    // What was made.
    for (const TargetResult& target : result.targets)
    {
        for (const MediaStream& stream : ProbeMedia(target.file).streams)
        {
            std::cout << target.file << ": " << NameOf(stream.kind) << ", " << stream.codec << "\n";
        }
    }
    return result.IsDone() ? 0 : 1;
}
catch (const std::exception&)
{
    std::cerr << "transcode_file: " << ErrorText(std::current_exception()) << "\n";
    return 2;
}
