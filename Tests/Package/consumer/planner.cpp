// planner <clip> <preset file>: an application of somebody else, that looks into a file and plans a job for
// it.

#include "Media/MediaException.h"
#include "Media/Planning/JobPlan.h"
#include "Media/Planning/JobRequest.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Probe/MediaProbe.h"

#include <iostream>
#include <string>
#include <vector>

using namespace Zelnor;

namespace
{

template <class E>
void ProbeWhatIsMissing()
{
    try
    {
        Media::ProbeMedia(std::string("missing.mkv"));
        std::cout << "no exception\n";
    }
    catch (const E& e)
    {
        const std::string* const file = boost::get_error_info<Media::MediaException::TagFile>(e);
        std::cout << "cannot read " << (file == nullptr ? "a file" : *file) << "\n";
    }
}

} // namespace

int main(int, char** argv)
{
    const Media::MediaFile clip = Media::ProbeMedia(std::string(argv[1]));
    for (const Media::MediaStream& stream : clip.streams)
    {
        std::cout << Media::NameOf(stream.kind) << " " << stream.codec << "\n";
    }

    Media::JobRequest request;
    request.output = "sound";
    const Media::PlannedJob job =
        Media::PlanJob(clip, Media::PresetFile::Open(std::string(argv[2])), request);
    std::vector<Conf::NodeId> nodes;
    job.graph->Nodes(nodes);
    std::cout << job.output << ": " << nodes.size() << " nodes\n";

    ProbeWhatIsMissing<Media::ProbeException>();
    ProbeWhatIsMissing<Media::MediaException>();
    ProbeWhatIsMissing<Exception>();
}
