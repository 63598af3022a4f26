// Feeds documents to the reader of jobs: a job or a reason with the file's name, faults exactly when the
// topology is not valid, and no difference from itself.

#include "Media/Jobs/JobDifferences.h"
#include "Media/Jobs/JobFault.h"
#include "Media/Jobs/JobFile.h"
#include "Media/MediaException.h"

#include "Core/Interfaces/DataStream.h"
#include "Tests/Fuzz/Fuzzer.h"
#include "Tests/Support/GraphRoundTrip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Zelnor;
    Media::JobFile job;
    try
    {
        job = Media::ReadJob(*Core::MemoryDataInput::Create(Fuzz::ToString(data, size)), "job.json");
    }
    catch (const Media::JobException& e)
    {
        const std::string* const description = boost::get_error_info<TagDescription>(e);
        Fuzz::Require(description != nullptr && description->find("job.json: ") == 0,
                      "a refusal begins with the file");
        return -1;
    }
    const auto faults = Media::FindTopologyFaults(*job.graph, job.name);
    Fuzz::Require(faults.empty() == job.graph->TopologyIsValid(), "faults exactly when it is not valid");
    for (const Media::JobFault& fault : faults)
    {
        Fuzz::Require(!fault.Sentence().empty() && fault.IsOfTopology(), "a fault of the topology");
    }
    Fuzz::Require(Media::DiffJobs(*job.graph, *job.graph).empty(), "no difference from itself");
    const std::string difference = Testing::GraphRoundTrip(*job.graph).FindDifference();
    Fuzz::Require(difference.empty(), difference.c_str());
    return 0;
}
