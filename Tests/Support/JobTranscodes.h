#pragma once

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Media/Running/Transcode.h"
#include "Tests/Support/MediaFixtures.h"

#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Testing
{

namespace details
{

inline std::string TextIn(const Core::Property& record, const std::string& key)
{
    const auto child = record.FindChild(key);
    const bool isText = child != record.end() && child->GetType() == PROPERTY_TYPE_STRING;
    // A file's name with a NUL byte is refused where the job is read.
    return isText && child->GetString().find('\0') == std::string::npos ? child->GetString() : "";
}

inline std::size_t NumberIn(const Core::Property& record, const std::string& key)
{
    const auto child = record.FindChild(key);
    const bool isNumber = child != record.end() && child->GetType() == PROPERTY_TYPE_INT64;
    return isNumber ? static_cast<std::size_t>(child->GetInt64()) : 0;
}

} // namespace details

/// What a job asks for, read as a run reads it, but for its sources: nothing is opened, and each source has a
/// video, two audio streams, a text and a bitmap subtitle. Streams that are not there are taken for others.
inline std::vector<Media::Transcode> TranscodesOf(const Conf::ITranscodingMetaGraph& job)
{
    using Conf::ITranscodingMetaGraph;
    static const Media::MediaFile s_file =
        MakeMediaFile({MakeVideoStream(), MakeAudioStream(), MakeAudioStream(Conf::CH_LAYOUT_MONO),
                       MakeSubtitleStream(), MakeBitmapSubtitle()});
    std::vector<Media::Transcode> transcodes;
    std::vector<Conf::NodeId> targets;
    job.Outputs(targets);
    for (const Conf::NodeId target : targets)
    {
        Media::Transcode transcode;
        transcode.place.node = target;
        transcode.target = job[target];
        transcode.output = details::TextIn(transcode.target, ITranscodingMetaGraph::KEY_FILEPATH);
        transcode.container = details::TextIn(transcode.target, Conf::IFormatFile::TAG_CONTAINER);
        std::vector<Conf::NodeId> raws;
        job.Inputs(target, raws);
        for (const Conf::NodeId raw : raws)
        {
            Media::TranscodeStream stream;
            stream.codec = job.GetLink(raw, target);
            stream.place.link = std::pair(raw, target);
            stream.input = transcode.inputs.size();
            stream.stream = static_cast<unsigned int>(
                details::NumberIn(job[raw], ITranscodingMetaGraph::KEY_STREAM_RAW_ID) %
                s_file.streams.size());
            const Core::Property record = job[raw];
            const auto merges = record.FindChild(ITranscodingMetaGraph::MERGE_WITH);
            for (auto merge = merges == record.end() ? record.end() : merges->begin();
                 merges != record.end() && merge != merges->end(); ++merge)
            {
                stream.merged.push_back(static_cast<unsigned int>(
                    details::NumberIn(*merge, ITranscodingMetaGraph::MERGE_WITH) % s_file.streams.size()));
            }
            Media::MediaFile file = s_file;
            std::vector<Conf::NodeId> sources;
            job.Inputs(raw, sources);
            file.name = sources.empty()
                            ? ""
                            : details::TextIn(job[sources.front()], ITranscodingMetaGraph::KEY_FILEPATH);
            transcode.inputs.push_back(std::move(file));
            transcode.streams.push_back(std::move(stream));
        }
        transcodes.push_back(std::move(transcode));
    }
    return transcodes;
}

} // namespace Zelnor::Testing
