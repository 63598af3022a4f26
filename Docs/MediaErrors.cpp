#include "Docs/Errors.h"

#include "Core/Interfaces/DataStream.h"
#include "Media/Jobs/JobFile.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Probe/MediaProbe.h"

namespace Zelnor::Docs
{

namespace
{

using namespace Media;

void ReadPreset(const char* json) { PresetFile::Read(*Core::MemoryDataInput::Create(json), "mp3.json"); }
void ReadDocument(const char* json) { ReadJob(*Core::MemoryDataInput::Create(json), "job.json"); }
void ProbeBytes(const char* bytes) { ProbeMedia(*Core::MemoryDataInput::Create(bytes), "in.mov"); }

} // namespace

std::vector<ErrorClass> MediaErrors()
{
    return {
        Describe<MediaException, Exception>(
            "MediaException", "Exception",
            "The root of this library's exceptions. Each tag is there when that part of the place is known.",
            {"TagFile", "TagNode", "TagLink", "TagStream", "TagKey"}, {}),
        Describe<ProbeException, MediaException>(
            "ProbeException", "MediaException",
            "A media file cannot be read. `ProbeBytes` is `ProbeMedia` of a stream.", {},
            {ZELNOR_EXAMPLE(ProbeMedia("missing.mov")), ZELNOR_EXAMPLE(ProbeBytes("not a clip"))}),
        Describe<PresetFileException, MediaException>(
            "PresetFileException", "MediaException",
            "A preset file is missing, or it does not hold a preset. `ReadPreset` is `PresetFile::Read`.", {},
            {ZELNOR_EXAMPLE(ReadPreset("{")), ZELNOR_EXAMPLE(ReadPreset(R"({"mp3": {"container": "tape"}})")),
             ZELNOR_EXAMPLE(ReadPreset(
                 R"({"mp3": {"container": "mp3", "$$STREAMS$$": {"audio": {"codec_id": "CODEC_ID_MP3", "bitrate": "fast"}}}})"))}),
        Describe<PlanException, MediaException>(
            "PlanException", "MediaException",
            "No job can be planned for a media file, a preset and a request.", {}, {}),
        Describe<JobException, MediaException>(
            "JobException", "MediaException",
            "A job document cannot be read, or its job cannot be run as it is. `ReadDocument` is `ReadJob`.",
            {},
            {ZELNOR_EXAMPLE(ReadDocument("{")),
             ZELNOR_EXAMPLE(ReadDocument(R"({"vertices": [{"id": 1, "data": {"data": 0.5}}], "edges": []})")),
             ZELNOR_EXAMPLE(ReadDocument(
                 R"({"vertices": [{"id": 1}, {"id": 2}], "edges": [{"id": 1, "from": 1, "to": 7}]})"))}),
        Describe<RunException, MediaException>("RunException", "MediaException", "Running a job failed.", {},
                                               {}),
    };
}

} // namespace Zelnor::Docs
