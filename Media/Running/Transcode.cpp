#include "Media/Running/Transcode.h"

#include "Media/ErrorText.h"
#include "Media/Jobs/FaultList.h"
#include "Media/Jobs/JobKeys.h"
#include "Media/MediaException.h"
#include "Media/Options/SettingRules.h"
#include "Media/Probe/StreamKinds.h"
#include "Media/Running/SourceKeys.h"
#include "Media/ValueText.h"

#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatFile;
using Conf::ITranscodingMetaGraph;
using Conf::NodeId;
using Core::Property;

/// "video"; empty when the record is not one of a codec.
std::string KindNameOf(const Property& codec)
{
    const StreamKind kind = KindOfRecord(codec.GetName());
    return IsConvertible(kind) ? NameOf(kind) : "";
}

/// Reads a job's transcodes. Sources that several targets need are opened once.
class Reader
{
public:
    Reader(const ITranscodingMetaGraph& job, const std::string& document, SourceFiles files,
           FaultList& faults)
        : m_graph(job), m_document(document), m_files(files), m_faults(faults)
    {}

    /// Nothing, and a fault, if the node is none that a file is made of.
    std::optional<Transcode> Read(NodeId target)
    {
        m_sources.clear();
        Transcode transcode;
        transcode.place = NodePlace(target);
        transcode.target = m_graph[target];
        const std::string& name = transcode.target.GetName();
        if (name == ITranscodingMetaGraph::KEY_SOURCE || name == ITranscodingMetaGraph::KEY_STREAM_RAW)
        {
            m_faults.Add(JobFault::Structure, transcode.place,
                         "expected a link from this '" + name + "' to a target, found none");
            return std::nullopt;
        }
        transcode.output =
            Text(transcode.place, transcode.target, ITranscodingMetaGraph::KEY_FILEPATH).value_or("");
        transcode.container =
            Text(transcode.place, transcode.target, IFormatFile::TAG_CONTAINER).value_or("");
        transcode.span = ReadSpan(transcode.target, transcode.place, m_faults);
        std::vector<NodeId> raws;
        m_graph.Inputs(target, raws);
        for (const NodeId raw : raws)
        {
            AddStream(raw, target, transcode);
        }
        CheckStart(transcode);
        return transcode;
    }

private:
    Place NodePlace(NodeId node) const
    {
        Place place{m_document};
        place.node = node;
        return place;
    }

    /// Nothing would be left of the sources.
    void CheckStart(const Transcode& transcode)
    {
        const std::vector<MediaFile>& inputs = transcode.inputs;
        const bool isKnown =
            !inputs.empty() && std::all_of(inputs.begin(), inputs.end(), [](const MediaFile& input) {
                return input.duration && !input.durationIsEstimated;
            });
        if (isKnown && transcode.span.start > 0 && transcode.Duration() == 0)
        {
            m_faults.Add(JobFault::Setting, transcode.place.At(JobKeys::kStart),
                         "expected a time before the end of the source, found " +
                             std::to_string(transcode.span.start));
        }
    }

    /// The child under `key`; null, and a fault, when there is none of that type.
    const Property* Child(const Place& place, const Property& record, const std::string& key,
                          PropertyTypes type)
    {
        const auto child = record.FindChild(key);
        if (child != record.end() && child->GetType() == type)
        {
            return &*child;
        }
        m_faults.Add(JobFault::Structure, place.At(key),
                     std::string("expected ") + TypeText(type) + ", found " +
                         (child == record.end() ? "nothing" : ValueText(*child)));
        return nullptr;
    }

    /// A text that can be the name of something.
    std::optional<std::string> Text(const Place& place, const Property& record, const std::string& key)
    {
        const Property* const child = Child(place, record, key, PROPERTY_TYPE_STRING);
        if (child == nullptr)
        {
            return std::nullopt;
        }
        if (HasNul(child->GetString()))
        {
            m_faults.Add(JobFault::Structure, place.At(key), "a name cannot hold a NUL byte");
            return std::nullopt;
        }
        return child->GetString();
    }

    void AddStream(NodeId raw, NodeId target, Transcode& transcode)
    {
        const Place rawPlace = NodePlace(raw);
        const Property record = m_graph[raw];
        TranscodeStream stream;
        stream.codec = m_graph.GetLink(raw, target);
        stream.place.file = m_document;
        stream.place.link = std::pair(raw, target);
        stream.place.streamKind = KindNameOf(stream.codec);
        stream.input = TranscodeStream::kNoInput;
        std::vector<NodeId> sources;
        m_graph.Inputs(raw, sources);
        if (record.GetName() != ITranscodingMetaGraph::KEY_STREAM_RAW || sources.size() != 1)
        {
            m_faults.Add(JobFault::Structure, rawPlace,
                         "expected a '" + ITranscodingMetaGraph::KEY_STREAM_RAW +
                             "' with one source, found '" + record.GetName() + "' with " +
                             std::to_string(sources.size()));
        }
        else
        {
            CheckDecoder(rawPlace, record);
            Resolve(rawPlace, record, sources.front(), transcode, stream);
        }
        transcode.streams.push_back(std::move(stream));
    }

    void CheckDecoder(const Place& place, const Property& record)
    {
        if (!record.ChildExists(ITranscodingMetaGraph::KEY_DECODER))
        {
            return;
        }
        const auto decoder = Text(place, record, ITranscodingMetaGraph::KEY_DECODER);
        if (decoder && *decoder != Conf::IFormatCodec::DECODER_FFMPEG_IMPL)
        {
            m_faults.Add(JobFault::Setting, place.At(ITranscodingMetaGraph::KEY_DECODER),
                         "there is no decoder '" + *decoder + "' here");
        }
    }

    /// Finds the stream of the source, and those that are merged into it.
    void Resolve(const Place& place, const Property& record, NodeId source, Transcode& transcode,
                 TranscodeStream& stream)
    {
        const Property* const id =
            Child(place, record, ITranscodingMetaGraph::KEY_STREAM_RAW_ID, PROPERTY_TYPE_INT64);
        const std::vector<const Property*> merged = MergedStreams(place, record);
        if (id != nullptr && id->GetInt64() >= 0 && id->GetInt64() <= std::numeric_limits<int>::max())
        {
            stream.place.stream = static_cast<unsigned int>(id->GetInt64());
        }
        const std::size_t input = InputOf(source, transcode);
        if (m_files == SourceFiles::Ignored)
        {
            CheckIndexes(place, source, id, merged);
            std::transform(
                merged.begin(), merged.end(), std::back_inserter(stream.merged),
                [](const Property* index) { return static_cast<unsigned int>(index->GetInt64()); });
        }
        if (id == nullptr || input == TranscodeStream::kNoInput)
        {
            return;
        }
        const MediaFile& file = transcode.inputs[input];
        if (!HasStream(place.At(id->GetName()), file, id->GetInt64()))
        {
            return;
        }
        stream.input = input;
        stream.stream = static_cast<unsigned int>(id->GetInt64());
        CheckTaken(place.At(id->GetName()), source, stream.stream);
        stream.place.streamKind = NameOf(file.streams[stream.stream].kind);
        for (const Property* const index : merged)
        {
            if (HasStream(place.At(ITranscodingMetaGraph::MERGE_WITH), file, index->GetInt64()))
            {
                stream.merged.push_back(static_cast<unsigned int>(index->GetInt64()));
                CheckTaken(place.At(ITranscodingMetaGraph::MERGE_WITH), source, stream.merged.back());
            }
        }
    }

    /// What the document says of the streams, without their file.
    void CheckIndexes(const Place& place, NodeId source, const Property* id,
                      std::vector<const Property*> indexes)
    {
        if (id != nullptr)
        {
            indexes.insert(indexes.begin(), id);
        }
        for (const Property* const index : indexes)
        {
            const Place indexPlace = place.At(index->GetName());
            if (index->GetInt64() < 0 || index->GetInt64() > std::numeric_limits<int>::max())
            {
                m_faults.Add(JobFault::Input, indexPlace,
                             "expected the index of a stream, found " + ValueText(*index));
                continue;
            }
            CheckTaken(indexPlace, source, static_cast<unsigned int>(index->GetInt64()));
        }
    }

    /// A stream is taken or left out.
    void CheckTaken(const Place& place, NodeId source, unsigned int index)
    {
        const std::vector<unsigned int>& leftOut = m_leftOut[source];
        if (std::find(leftOut.begin(), leftOut.end(), index) != leftOut.end())
        {
            m_faults.Add(JobFault::Setting, place,
                         "'" + std::string(JobKeys::kLeftOut) + "' of node " + std::to_string(source) +
                             " says that stream " + std::to_string(index) + " is left out");
        }
    }

    bool HasStream(const Place& place, const MediaFile& file, long long index)
    {
        const bool exists = index >= 0 && static_cast<unsigned long long>(index) < file.streams.size();
        if (!exists)
        {
            m_faults.Add(JobFault::Input, place,
                         "'" + file.name + "' does not have a stream " + std::to_string(index));
        }
        return exists;
    }

    /// The numbers of the streams that are merged.
    std::vector<const Property*> MergedStreams(const Place& place, const Property& record)
    {
        std::vector<const Property*> merged;
        const auto list = record.FindChild(ITranscodingMetaGraph::MERGE_WITH);
        if (list == record.end())
        {
            return merged;
        }
        const Place listPlace = place.At(list->GetName());
        if (list->GetType() != PROPERTY_TYPE_GROUP)
        {
            m_faults.Add(JobFault::Structure, listPlace, "expected a group, found " + ValueText(*list));
            return merged;
        }
        for (const Property& entry : *list)
        {
            const auto index = entry.FindChild(ITranscodingMetaGraph::MERGE_WITH);
            if (index == entry.end() || index->GetType() != PROPERTY_TYPE_INT64)
            {
                m_faults.Add(JobFault::Structure, listPlace,
                             "expected the number of a stream, found " +
                                 (index == entry.end() ? "nothing" : ValueText(*index)));
                continue;
            }
            const auto settings = entry.FindChild(ITranscodingMetaGraph::MERGE_SETTINGS);
            if (settings != entry.end() &&
                (settings->GetType() != PROPERTY_TYPE_GROUP || settings->Count() != 0))
            {
                m_faults.Add(JobFault::Setting, listPlace,
                             "stream " + std::to_string(index->GetInt64()) +
                                 " can only be merged without settings");
            }
            merged.push_back(&*index);
        }
        return merged;
    }

    std::size_t InputOf(NodeId source, Transcode& transcode)
    {
        const auto [entry, isNew] = m_opened.try_emplace(source);
        if (isNew)
        {
            entry->second = Open(source);
            if (m_files == SourceFiles::Ignored)
            {
                m_leftOut[source] = ReadLeftOut(m_graph[source], NodePlace(source), m_faults);
            }
            else if (entry->second)
            {
                m_leftOut[source] = ReadLeftOut(m_graph[source], *entry->second, NodePlace(source), m_faults);
            }
        }
        if (!entry->second)
        {
            return TranscodeStream::kNoInput;
        }
        const auto known = std::find(m_sources.begin(), m_sources.end(), source);
        if (known != m_sources.end())
        {
            return static_cast<std::size_t>(known - m_sources.begin());
        }
        transcode.inputs.push_back(*entry->second);
        transcode.leftOut.push_back(m_leftOut[source]);
        m_sources.push_back(source);
        return m_sources.size() - 1;
    }

    std::optional<MediaFile> Open(NodeId source)
    {
        const Place place = NodePlace(source);
        const Property record = m_graph[source];
        if (record.GetName() != ITranscodingMetaGraph::KEY_SOURCE)
        {
            m_faults.Add(JobFault::Structure, place,
                         "expected a '" + ITranscodingMetaGraph::KEY_SOURCE + "', found '" +
                             record.GetName() + "'");
            return std::nullopt;
        }
        const auto type = Text(place, record, Conf::IPreset::KEY_TYPE_ID);
        const auto path = Text(place, record, ITranscodingMetaGraph::KEY_FILEPATH);
        bool isReadable = type && path;
        if (type && *type != ITranscodingMetaGraph::KEY_SOURCE_TYPE_FILE)
        {
            m_faults.Add(JobFault::Structure, place.At(Conf::IPreset::KEY_TYPE_ID),
                         "expected '" + ITranscodingMetaGraph::KEY_SOURCE_TYPE_FILE + "', found '" + *type +
                             "'");
            isReadable = false;
        }
        isReadable = IsReadable(place, record) && isReadable;
        return isReadable && m_files == SourceFiles::Opened ? Probe(place, *path) : std::nullopt;
    }

    bool IsReadable(const Place& place, const Property& record)
    {
        if (!record.ChildExists(IFormatFile::TAG_ENCRYPTION))
        {
            return true;
        }
        const auto encryption = Text(place, record, IFormatFile::TAG_ENCRYPTION);
        const bool readable = encryption && Conf::CanReadWithEncryption(*encryption);
        if (encryption && !readable)
        {
            m_faults.Add(JobFault::Input, place.At(IFormatFile::TAG_ENCRYPTION),
                         "files encrypted with '" + *encryption + "' cannot be read");
        }
        return readable;
    }

    std::optional<MediaFile> Probe(const Place& place, const std::string& path)
    {
        try
        {
            return ProbeMedia(path);
        }
        catch (const Exception&)
        {
            m_faults.Add(JobFault::Input, place.At(ITranscodingMetaGraph::KEY_FILEPATH),
                         ErrorText(std::current_exception()));
            return std::nullopt;
        }
    }

    const ITranscodingMetaGraph& m_graph;
    const std::string& m_document;
    SourceFiles m_files;
    FaultList& m_faults;
    /// What was found in each source; nothing for those that cannot be read.
    std::map<NodeId, std::optional<MediaFile>> m_opened;
    /// The streams of each source that somebody chose to leave out.
    std::map<NodeId, std::vector<unsigned int>> m_leftOut;
    /// The nodes of the transcode's inputs.
    std::vector<NodeId> m_sources;
};

} // namespace

bool Transcode::SeeksInInputs() const
{
    return std::all_of(inputs.begin(), inputs.end(), [](const MediaFile& input) {
        return input.demuxer.compare(0, 8, "matroska") == 0 || input.demuxer.compare(0, 4, "mov,") == 0;
    });
}

std::optional<std::int64_t> Transcode::Duration() const
{
    std::optional<std::int64_t> longest;
    for (const MediaFile& input : inputs)
    {
        longest = std::max(longest, input.duration);
    }
    return span.DurationOf(longest);
}

std::vector<Transcode> ReadTranscodes(const ITranscodingMetaGraph& job, const std::string& document,
                                      FaultList& faults, SourceFiles files)
{
    for (const JobFault& fault : FindTopologyFaults(job, document))
    {
        faults.Add(fault);
    }
    std::vector<NodeId> targets;
    job.Outputs(targets);
    Reader reader(job, document, files, faults);
    std::vector<Transcode> transcodes;
    for (const NodeId target : targets)
    {
        std::vector<NodeId> inputs;
        job.Inputs(target, inputs);
        // The topology's faults name the nodes without links.
        if (inputs.empty())
        {
            continue;
        }
        if (std::optional<Transcode> transcode = reader.Read(target))
        {
            transcodes.push_back(*std::move(transcode));
        }
    }
    return transcodes;
}

} // namespace Zelnor::Media
