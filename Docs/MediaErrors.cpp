#include "Docs/Errors.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/DataStream.h"
#include "Media/Jobs/JobFile.h"
#include "Media/Pages/Graphviz.h"
#include "Media/Planning/JobPlan.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Probe/MediaProbe.h"
#include "Media/Running/JobRun.h"

namespace Zelnor::Docs
{

namespace
{

using namespace Media;

constexpr const char* kMp3 =
    R"({"mp3": {"container": "mp3", "$$STREAMS$$": {"audio": {"codec_id": "CODEC_ID_MP3", "bitrate": 64000}}}})";
constexpr const char* kPng =
    R"({"png": {"container": "png", "$$STREAMS$$": {"video": {"codec_id": "CODEC_ID_PNG"}}}})";

boost::intrusive_ptr<PresetFile> ReadPreset(const char* json)
{
    return PresetFile::Read(*Core::MemoryDataInput::Create(json), "preset.json");
}
void ReadDocument(const char* json) { ReadJob(*Core::MemoryDataInput::Create(json), "job.json"); }
void ProbeBytes(const char* bytes) { ProbeMedia(*Core::MemoryDataInput::Create(bytes), "in.mov"); }

/// The job that makes an MP3 file of the sound in "in.wav", by a preset.
PlannedJob Plan(const char* preset)
{
    JobRequest request;
    request.output = "out.mp3";
    return PlanJob(ProbeMedia("in.wav"), ReadPreset(preset), request);
}

/// Runs that job by another program, or with one more setting of its stream.
void Run(const char* ffmpeg, const std::string& key = "", const std::string& value = "")
{
    const auto job = Plan(kMp3).graph;
    if (!key.empty())
    {
        Core::Property codec = job->GetLink(3, 2);
        codec.SetChildT(key, value);
        job->RemoveLink(3, 2);
        job->AddLink(3, 2, codec);
    }
    RunOptions options;
    options.ffmpeg = ffmpeg;
    options.document = "job.json";
    RunJob(*job, options);
}

std::vector<ErrorClass> RunErrors()
{
    return {
        Describe<JobException, MediaException>(
            "JobException", "MediaException",
            "A job document cannot be read, or its job cannot be run as it is. `ReadDocument` is `ReadJob`; "
            "`Run` runs "
            "the planned job by another program than `ffmpeg`, or with another setting of its stream.",
            {},
            {ZELNOR_EXAMPLE(ReadDocument("{")),
             ZELNOR_EXAMPLE(ReadDocument(R"({"vertices": [{"id": 1, "data": {"data": 0.5}}], "edges": []})")),
             ZELNOR_EXAMPLE(ReadDocument(
                 R"({"vertices": [{"id": 1}, {"id": 2}], "edges": [{"id": 1, "from": 1, "to": 7}]})")),
             ZELNOR_EXAMPLE(Run("ffmpeg", "odd", "value")), ZELNOR_EXAMPLE(Run("ffmpeg", "bitrate", "fast")),
             ZELNOR_EXAMPLE(Run("ffmpeg", "codec_id", "CODEC_ID_FLAC"))}),
        Describe<DrawingException, MediaException>("DrawingException", "MediaException",
                                                   "A job cannot be drawn: Graphviz is missing, or it fails.",
                                                   {}, {ZELNOR_EXAMPLE(DrawWithGraphviz("no graph", "svg"))}),
        Describe<RunException, MediaException>("RunException", "MediaException", "Running a job failed.", {},
                                               {ZELNOR_EXAMPLE(Run("missing-ffmpeg"))}),
        Describe<TranscodeFailed, RunException>(
            "TranscodeFailed", "RunException",
            "`ffmpeg` failed while it made a target; nothing is left of it.", {"TagExitCode", "TagMessages"},
            {ZELNOR_EXAMPLE(Run("false"))}),
        Describe<VerificationFailed, RunException>(
            "VerificationFailed", "RunException",
            "A target that `ffmpeg` has made is not what its job says; it was not put in place.",
            {"TagDifferences", "TagKeptFile"}, {ZELNOR_EXAMPLE(Run("true"))}),
    };
}

} // namespace

std::vector<ErrorClass> MediaErrors()
{
    std::vector<ErrorClass> errors = {
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
            "A preset file does not hold a preset. `ReadPreset` is `PresetFile::Read`.", {},
            {ZELNOR_EXAMPLE(ReadPreset("{")), ZELNOR_EXAMPLE(ReadPreset(R"({"mp3": {"container": "tape"}})")),
             ZELNOR_EXAMPLE(ReadPreset(
                 R"({"mp3": {"container": "mp3", "$$STREAMS$$": {"audio": {"codec_id": "CODEC_ID_MP3", "bitrate": "fast"}}}})"))}),
        Describe<PlanException, MediaException>("PlanException", "MediaException",
                                                "No job can be planned for a media file, a preset and a "
                                                "request. `Plan` makes a job of the sound in `in.wav`.",
                                                {}, {ZELNOR_EXAMPLE(Plan(kPng))}),
    };
    for (ErrorClass& error : RunErrors())
    {
        errors.push_back(std::move(error));
    }
    return errors;
}

} // namespace Zelnor::Docs
