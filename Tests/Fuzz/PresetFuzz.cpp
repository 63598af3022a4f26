// Feeds documents to the reader of presets. What it takes keeps to the rules: it is the same after being
// saved, and a job can be planned from it or the reason is told.

#include "Media/MediaException.h"
#include "Media/Planning/JobPlan.h"

#include "Core/Interfaces/PropertyEvents.h"
#include "Tests/Fuzz/Fuzzer.h"
#include "Tests/Support/GraphRoundTrip.h"
#include "Tests/Support/MediaFixtures.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace
{

using namespace Zelnor;
using Preset = boost::intrusive_ptr<Media::PresetFile>;

void RequireDescription(const Media::MediaException& e)
{
    const std::string* const description = boost::get_error_info<TagDescription>(e);
    Fuzz::Require(description != nullptr && !description->empty(), "a refusal says why");
}

/// The preset, or nothing when it is refused.
Preset Read(const std::string& document)
{
    try
    {
        return Media::PresetFile::Read(*Core::MemoryDataInput::Create(document), "p.json");
    }
    catch (const Media::PresetFileException& e)
    {
        RequireDescription(e);
        const std::string* const file = boost::get_error_info<Media::MediaException::TagFile>(e);
        Fuzz::Require(file != nullptr && *file == "p.json", "a refusal names the file");
        return nullptr;
    }
}

std::string Write(const Core::Property& record)
{
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    Core::PropertyEvents(writer, false).Record(record);
    return {text.GetString(), text.GetSize()};
}

void Plan(const Preset& preset)
{
    static const Media::MediaFile source = Testing::MakeMediaFile(
        {Testing::MakeVideoStream(), Testing::MakeAudioStream(), Testing::MakeSubtitleStream()});
    Media::JobRequest request;
    request.output = "out";
    try
    {
        const Media::PlannedJob job = Media::PlanJob(source, preset, request);
        Fuzz::Require(job.graph->TopologyIsValid(), "a planned job is valid");
        const std::string difference = Testing::GraphRoundTrip(*job.graph).FindDifference();
        Fuzz::Require(difference.empty(), difference.c_str());
    }
    catch (const Media::PlanException& e)
    {
        RequireDescription(e);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Preset preset = Read(Fuzz::ToString(data, size));
    if (preset == nullptr)
    {
        return -1;
    }
    const Preset again = Read(Write(preset->GetProperty()));
    Fuzz::Require(again != nullptr, "what was read is read again");
    Fuzz::Require(again->GetProperty() == preset->GetProperty(), "what was read is read equal");
    std::vector<int> indexes;
    for (const Core::Property& stream : preset->GetProperty()[Conf::IPreset::KEY_STREAMS])
    {
        Conf::IPreset::MediaTypeFromPresetStreamType(stream.GetName());
    }
    preset->GetStreamIndexes(Conf::IPreset::STREAM_TYPE_AUDIO, indexes);
    Fuzz::Require(indexes.size() <= preset->GetStreamCount(), "as many streams as there are");
    Plan(preset);
    return 0;
}
