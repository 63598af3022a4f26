// Any bytes as a job's document: whatever is loaded and not refused becomes arguments of ffmpeg that hold
// nothing but what the job says. No file is opened, and nothing is started.

#include "Core/Interfaces/DataStream.h"
#include "Media/Jobs/JobFile.h"
#include "Media/MediaException.h"
#include "Tests/Fuzz/Fuzzer.h"
#include "Tests/Support/ArgumentsOracle.h"
#include "Tests/Support/JobTranscodes.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Zelnor;
    Media::JobFile job;
    try
    {
        job = Media::ReadJob(*Core::MemoryDataInput::Create(Fuzz::ToString(data, size)), "job.json");
    }
    catch (const Media::JobException&)
    {
        return -1;
    }
    for (const Media::Transcode& transcode : Testing::TranscodesOf(*job.graph))
    {
        bool isAccepted = false;
        const std::string fault = Testing::FindArgumentsFault(transcode, isAccepted);
        Fuzz::Require(fault.empty(), fault.c_str());
    }
    return 0;
}
