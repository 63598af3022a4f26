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

struct ProbeArguments
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

void WriteTime(JsonOutput& json, const char* key, const std::optional<std::int64_t>& microseconds)
{
    json.Key(key);
    if (microseconds)
    {
        json.GetWriter().Int64(*microseconds);
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

/// Null when it is not known.
void WriteTextOrNull(JsonOutput& json, const char* key, const std::string& text)
{
    json.Key(key);
    if (text.empty())
    {
        json.GetWriter().Null();
    }
    else
    {
        json.String(text);
    }
}

/// Only where there is one.
void WriteOptional(JsonOutput& json, const char* key, const std::string& text)
{
    if (!text.empty())
    {
        json.Key(key);
        json.String(text);
    }
}

void WriteVideo(JsonOutput& json, const Media::MediaStream& stream)
{
    WriteTextOrNull(json, "pixelFormat", stream.pixelFormat);
    WriteTextOrNull(json, "fieldOrder", stream.fieldOrder);
    json.Key("color");
    json.GetWriter().StartObject();
    WriteTextOrNull(json, "range", stream.color.range);
    WriteTextOrNull(json, "matrix", stream.color.matrix);
    WriteTextOrNull(json, "primaries", stream.color.primaries);
    WriteTextOrNull(json, "transfer", stream.color.transfer);
    json.GetWriter().EndObject();
    json.Key("hdr");
    json.GetWriter().StartObject();
    WriteTextOrNull(json, "masteringDisplay", stream.hdr.masteringDisplay);
    WriteTextOrNull(json, "contentLight", stream.hdr.contentLight);
    WriteTextOrNull(json, "dolbyVision", stream.hdr.dolbyVision);
    json.GetWriter().EndObject();
}

/// What depends on the stream's kind.
void WriteSamples(JsonOutput& json, const Media::MediaStream& stream)
{
    if (stream.kind == Media::StreamKind::Video)
    {
        WriteVideo(json, stream);
    }
    else if (stream.kind == Media::StreamKind::Audio)
    {
        WriteTextOrNull(json, "sampleFormat", stream.sampleFormat);
    }
    if (stream.bitsPerSample != 0)
    {
        json.Key("bitsPerSample");
        json.GetWriter().Uint(stream.bitsPerSample);
    }
}

void WriteChapters(JsonOutput& json, const std::vector<Media::MediaChapter>& chapters)
{
    json.Key("chapters");
    json.GetWriter().StartArray();
    for (const Media::MediaChapter& chapter : chapters)
    {
        json.GetWriter().StartObject();
        json.Key("startMicroseconds");
        json.GetWriter().Int64(chapter.start);
        json.Key("endMicroseconds");
        json.GetWriter().Int64(chapter.end);
        json.Key("title");
        json.String(chapter.title);
        json.GetWriter().EndObject();
    }
    json.GetWriter().EndArray();
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
    WriteTime(json, "durationMicroseconds", stream.duration);
    WriteTime(json, "startMicroseconds", stream.start);
    WriteFlag(json, "default", stream.isDefault);
    WriteFlag(json, "forced", stream.isForced);
    WriteFlag(json, "attachedPicture", stream.isAttachedPicture);
    WriteFlag(json, "interlaced", stream.isInterlaced);
    json.Key("rotation");
    json.GetWriter().Uint(stream.rotation);
    WriteTextOrNull(json, "profile", stream.profile);
    WriteSamples(json, stream);
    WriteOptional(json, "timecode", stream.timecode);
    WriteOptional(json, "fileName", stream.fileName);
    WriteOptional(json, "mimeType", stream.mimeType);
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
    WriteTime(json, "durationMicroseconds", file.duration);
    WriteFlag(json, "durationIsEstimated", file.durationIsEstimated);
    WriteOptional(json, "timecode", file.timecode);
    WriteChapters(json, file.chapters);
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

int RunProbe(const ProbeArguments& options)
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
    const auto options = std::make_shared<ProbeArguments>();
    command->add_option("MEDIA", options->media, "The media file; \"-\" is standard input")
        ->type_name("FILE")
        ->required();
    AddJsonFlag(*command, options->json);
    OnRun(*command, [options] { return RunProbe(*options); });
}

} // namespace Zelnor::Tool
