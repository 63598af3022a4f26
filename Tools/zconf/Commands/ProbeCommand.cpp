#include "Media/Probe/MediaProbe.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/MediaText.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Input.h"
#include "Tools/zconf/Console/JsonOutput.h"
#include "Tools/zconf/Console/Output.h"

#include <memory>

namespace Zelnor::Tool
{

namespace
{

struct Options
{
    std::string media;
    bool json = false;
};

void WriteNotes(JsonOutput& json, const std::vector<std::string>& notes)
{
    json.Key("notes");
    json.GetWriter().StartArray();
    for (const std::string& note : notes)
    {
        json.String(note);
    }
    json.GetWriter().EndArray();
}

void WriteDuration(JsonOutput& json, const std::optional<std::int64_t>& duration)
{
    json.Key("durationMicroseconds");
    if (duration)
    {
        json.GetWriter().Int64(*duration);
    }
    else
    {
        json.GetWriter().Null();
    }
}

void WriteFlag(JsonOutput& json, const char* key, bool value)
{
    json.Key(key);
    json.GetWriter().Bool(value);
}

void WriteStream(JsonOutput& json, const Media::MediaStream& stream)
{
    json.GetWriter().StartObject();
    json.Key("index");
    json.GetWriter().Uint(stream.index);
    json.Key("kind");
    json.String(Media::NameOf(stream.kind));
    json.Key("codec");
    json.String(stream.codec);
    WriteDuration(json, stream.duration);
    WriteFlag(json, "default", stream.isDefault);
    WriteFlag(json, "forced", stream.isForced);
    WriteFlag(json, "attachedPicture", stream.isAttachedPicture);
    WriteFlag(json, "interlaced", stream.isInterlaced);
    json.Key("rotation");
    json.GetWriter().Uint(stream.rotation);
    WriteNotes(json, stream.notes);
    json.Key("record");
    json.Record(stream.descriptor->GetProperty());
    json.GetWriter().EndObject();
}

void WriteJson(const Media::MediaFile& file)
{
    JsonOutput json;
    json.GetWriter().StartObject();
    json.Key("demuxer");
    json.String(file.demuxer);
    WriteDuration(json, file.duration);
    WriteFlag(json, "durationIsEstimated", file.durationIsEstimated);
    WriteNotes(json, file.notes);
    json.Key("record");
    json.Record(file.descriptor->GetProperty());
    json.Key("streams");
    json.GetWriter().StartArray();
    for (const Media::MediaStream& stream : file.streams)
    {
        WriteStream(json, stream);
    }
    json.GetWriter().EndArray();
    json.GetWriter().EndObject();
    json.Finish();
}

int Run(const Options& options)
{
    const Media::MediaFile file = IsStandardStream(options.media)
                                      ? Media::ProbeMedia(*MakeStandardInput(), InputName(options.media))
                                      : Media::ProbeMedia(options.media);
    if (options.json)
    {
        WriteJson(file);
    }
    else
    {
        WriteText(MediaText(file, Painter::ForStandardOutput()));
    }
    return kExitSuccess;
}

} // namespace

void AddProbeCommand(CLI::App& app)
{
    CLI::App* const command = AddCommand(app, "probe", "Show what is in a media file");
    const auto options = std::make_shared<Options>();
    command->add_option("MEDIA", options->media, "The media file; \"-\" is standard input")->required();
    AddJsonFlag(*command, options->json);
    OnRun(*command, [options] { return Run(*options); });
}

} // namespace Zelnor::Tool
