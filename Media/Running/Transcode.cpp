#include "Media/Running/Transcode.h"

#include "Media/MediaException.h"

#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatFile;
using Conf::ITranscodingMetaGraph;
using Conf::NodeId;
using Core::Property;

constexpr const char* kUnit = "Media/Running/Transcode";

[[noreturn]] void Refuse(NodeId node, const std::string& reason)
{
    ZELNOR_THROW(kUnit,
                 MakeError<RunException>("Node " + std::to_string(node) + " cannot be run: " + reason));
}

/// The child of that type; `what` says what is missing otherwise.
const Property& Required(NodeId node, const Property& record, const std::string& key, PropertyTypes type)
{
    const auto child = record.FindChild(key);
    if (child == record.end() || child->GetType() != type)
    {
        Refuse(node, "its record '" + record.GetName() + "' has no " +
                         (type == PROPERTY_TYPE_STRING ? "text" : "number") + " under '" + key + "'");
    }
    return *child;
}

bool IsSource(const Property& record) { return record.GetName() == ITranscodingMetaGraph::KEY_SOURCE; }
bool IsRawStream(const Property& record) { return record.GetName() == ITranscodingMetaGraph::KEY_STREAM_RAW; }

std::string SourcePath(NodeId node, const Property& record)
{
    const std::string type =
        Required(node, record, Conf::IPreset::KEY_TYPE_ID, PROPERTY_TYPE_STRING).GetString();
    if (type != ITranscodingMetaGraph::KEY_SOURCE_TYPE_FILE)
    {
        Refuse(node, "its source is of the type '" + type + "', not a file");
    }
    const auto encryption = record.FindChild(IFormatFile::TAG_ENCRYPTION);
    if (encryption != record.end() && encryption->GetType() == PROPERTY_TYPE_STRING &&
        !Conf::CanReadWithEncryption(encryption->GetString()))
    {
        Refuse(node, "its source is encrypted (" + encryption->GetString() + ")");
    }
    return Required(node, record, ITranscodingMetaGraph::KEY_FILEPATH, PROPERTY_TYPE_STRING).GetString();
}

std::vector<unsigned int> MergedStreams(NodeId node, const Property& record)
{
    std::vector<unsigned int> merged;
    const auto list = record.FindChild(ITranscodingMetaGraph::MERGE_WITH);
    if (list == record.end())
    {
        return merged;
    }
    for (const Property& entry : *list)
    {
        const Property& index = Required(node, entry, ITranscodingMetaGraph::MERGE_WITH, PROPERTY_TYPE_INT64);
        const auto settings = entry.FindChild(ITranscodingMetaGraph::MERGE_SETTINGS);
        if (settings != entry.end() && settings->Count() != 0)
        {
            Refuse(node, "streams are merged without settings, and it has some");
        }
        merged.push_back(static_cast<unsigned int>(index.GetInt64()));
    }
    return merged;
}

void CheckDecoder(NodeId node, const Property& record)
{
    const auto decoder = record.FindChild(ITranscodingMetaGraph::KEY_DECODER);
    if (decoder != record.end() && decoder->GetType() == PROPERTY_TYPE_STRING &&
        decoder->GetString() != Conf::IFormatCodec::DECODER_FFMPEG_IMPL)
    {
        Refuse(node, "there is no decoder '" + decoder->GetString() + "' here");
    }
}

/// Gathers one target's transcode.
class Reader
{
public:
    Reader(const ITranscodingMetaGraph& job, NodeId target) : m_graph(job), m_target(target) {}

    Transcode Read()
    {
        m_transcode.target = m_graph[m_target];
        m_transcode.output =
            Required(m_target, m_transcode.target, ITranscodingMetaGraph::KEY_FILEPATH, PROPERTY_TYPE_STRING)
                .GetString();
        m_transcode.container =
            Required(m_target, m_transcode.target, IFormatFile::TAG_CONTAINER, PROPERTY_TYPE_STRING)
                .GetString();
        std::vector<NodeId> raws;
        m_graph.Inputs(m_target, raws);
        for (const NodeId raw : raws)
        {
            AddStream(raw);
        }
        return std::move(m_transcode);
    }

private:
    void AddStream(NodeId raw)
    {
        const Property record = m_graph[raw];
        std::vector<NodeId> sources;
        m_graph.Inputs(raw, sources);
        if (!IsRawStream(record) || sources.size() != 1)
        {
            Refuse(raw, "only a raw stream with one source can be made into a target's stream");
        }
        CheckDecoder(raw, record);
        TranscodeStream stream;
        stream.input = InputOf(sources.front());
        stream.stream = Index(
            raw, stream.input,
            Required(raw, record, ITranscodingMetaGraph::KEY_STREAM_RAW_ID, PROPERTY_TYPE_INT64).GetInt64());
        stream.merged = MergedStreams(raw, record);
        for (const unsigned int merged : stream.merged)
        {
            Index(raw, stream.input, merged);
        }
        stream.codec = m_graph.GetLink(raw, m_target);
        m_transcode.streams.push_back(std::move(stream));
    }

    std::size_t InputOf(NodeId source)
    {
        const auto known = std::find(m_sources.begin(), m_sources.end(), source);
        if (known != m_sources.end())
        {
            return static_cast<std::size_t>(known - m_sources.begin());
        }
        const Property record = m_graph[source];
        if (!IsSource(record))
        {
            Refuse(source, "it stands before a raw stream, but is no source");
        }
        m_transcode.inputs.push_back(ProbeMedia(SourcePath(source, record)));
        m_sources.push_back(source);
        return m_sources.size() - 1;
    }

    unsigned int Index(NodeId raw, std::size_t input, long long index) const
    {
        const MediaFile& file = m_transcode.inputs[input];
        if (index < 0 || static_cast<unsigned long long>(index) >= file.streams.size())
        {
            Refuse(raw, "'" + file.name + "' has no stream " + std::to_string(index));
        }
        return static_cast<unsigned int>(index);
    }

    const ITranscodingMetaGraph& m_graph;
    NodeId m_target;
    std::vector<NodeId> m_sources;
    Transcode m_transcode;
};

} // namespace

std::vector<Transcode> ReadTranscodes(const ITranscodingMetaGraph& job)
{
    if (!job.TopologyIsValid())
    {
        ZELNOR_THROW(kUnit, MakeError<RunException>("The job is not valid; 'zconf job check' tells why"));
    }
    std::vector<NodeId> targets;
    job.Outputs(targets);
    std::vector<Transcode> transcodes;
    for (const NodeId target : targets)
    {
        transcodes.push_back(Reader(job, target).Read());
    }
    return transcodes;
}

} // namespace Zelnor::Media
