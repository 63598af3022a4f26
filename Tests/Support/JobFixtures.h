#pragma once

#include "Media/Jobs/FaultList.h"
#include "Media/Running/FFmpegArguments.h"
#include "Media/Running/Transcode.h"
#include "Tests/Support/MediaFixtures.h"

#include "Core/Interfaces/PropertySerializer.h"

#include <rapidjson/document.h>

#include <stdexcept>

#include <string>
#include <utility>
#include <vector>

/// \file
/// Transcodes made by hand, for tests of what ffmpeg is told to do about them.

namespace Zelnor::Testing
{

/// The record with that JSON form: {"format_codec_video":{"width":640}}.
inline Core::Property RecordOf(const std::string& json)
{
    rapidjson::Document document;
    document.Parse(json.data(), json.size());
    if (document.HasParseError())
    {
        throw std::invalid_argument("no JSON: " + json);
    }
    Core::Property record;
    Core::PropertySerializer::Load(record, document);
    return record;
}

/// A record of a codec with these settings, as they stand in JSON: "codec_id":"CODEC_ID_H264".
inline Core::Property VideoRecord(const std::string& settings)
{
    return RecordOf("{\"format_codec_video\":{" + settings + "}}");
}
inline Core::Property AudioRecord(const std::string& settings)
{
    return RecordOf("{\"format_codec_audio\":{" + settings + "}}");
}

/// A transcode of the file's first stream into a stream of that record.
inline Media::Transcode MakeTranscode(Media::MediaFile file, Core::Property codec,
                                      const std::string& container = "mp4",
                                      std::vector<unsigned int> merged = {})
{
    Media::Transcode transcode;
    transcode.output = "out.mp4";
    transcode.container = container;
    transcode.target = Core::Property("target");
    transcode.place.file = "job.json";
    transcode.place.node = 2;
    Media::TranscodeStream stream;
    stream.merged = std::move(merged);
    stream.codec = std::move(codec);
    stream.place.file = "job.json";
    stream.place.link = std::pair(3, 2);
    stream.place.streamKind = Media::NameOf(file.streams.front().kind);
    stream.place.stream = 0;
    transcode.streams.push_back(std::move(stream));
    transcode.inputs.push_back(std::move(file));
    return transcode;
}

/// "link 3 -> 2, video stream 0, width: expected ..." for each fault.
inline std::vector<std::string> Sentences(const std::vector<Media::JobFault>& faults)
{
    std::vector<std::string> sentences;
    for (const Media::JobFault& fault : faults)
    {
        sentences.push_back(fault.Sentence());
    }
    return sentences;
}

/// What is wrong with the transcode.
inline std::vector<std::string> FaultsOf(const Media::Transcode& transcode)
{
    Media::FaultList faults;
    Media::MakeFFmpegArguments(transcode, faults);
    return Sentences(faults.Get());
}

/// The arguments of each run, with the words that every run begins with left out.
inline std::vector<std::vector<std::string>> ArgumentsOf(const Media::Transcode& transcode)
{
    std::vector<std::vector<std::string>> runs;
    for (const Media::FFmpegPass& pass : Media::MakeFFmpegArguments(transcode))
    {
        runs.push_back(pass.Arguments({transcode.output, "log-", false}));
        // -hide_banner -nostdin -v error -nostats -progress pipe:1
        runs.back().erase(runs.back().begin(), runs.back().begin() + 7);
    }
    return runs;
}

} // namespace Zelnor::Testing
