#include "Media/Planning/JobPlan.h"

#include "Media/MediaException.h"
#include "Media/Text.h"

#include "Conf/Interfaces/MediaTypeUtils.h"

#include <algorithm>
#include <array>
#include <filesystem>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormat;
using Conf::IFormatFile;
using Conf::ITranscodingMetaGraph;
using Core::Property;

constexpr const char* kUnit = "Media/Planning/JobPlan";

/// The tags about the work, which stay true in another file; those about the file do not.
const std::array<const std::string*, 14>& WorkTags()
{
    static const std::array<const std::string*, 14> s_tags = {
        &IFormatFile::TAG_TITLE,        &IFormatFile::TAG_ARTIST,    &IFormatFile::TAG_ALBUM,
        &IFormatFile::TAG_ALBUM_ARTIST, &IFormatFile::TAG_COMPOSER,  &IFormatFile::TAG_PERFORMER,
        &IFormatFile::TAG_PUBLISHER,    &IFormatFile::TAG_COPYRIGHT, &IFormatFile::TAG_COMMENT,
        &IFormatFile::TAG_GENRE,        &IFormatFile::TAG_DATE,      &IFormatFile::TAG_YEAR,
        &IFormatFile::TAG_DISC,         &IFormatFile::TAG_TRACK};
    return s_tags;
}

void CarryWorkTags(const MediaFile& source, Property& target)
{
    if (!target.ChildExists(IFormat::TAG_METADATA))
    {
        target.SetChild(IFormat::TAG_METADATA);
    }
    Property& metadata = target[IFormat::TAG_METADATA];
    for (const Property& tag : source.descriptor->GetMetadata())
    {
        for (const std::string* const key : WorkTags())
        {
            if (LowerCase(tag.GetName()) == LowerCase(*key) && !metadata.ChildExists(*key))
            {
                metadata.SetChild(*key, tag);
            }
        }
    }
}

/// The record of a raw stream with what is merged into it.
Property RawStream(unsigned int index, const JobWishes& wishes)
{
    Property record = ITranscodingMetaGraph::MakeRawStreamDescription(index);
    for (const auto& [master, slave] : wishes.merges)
    {
        if (master == index)
        {
            ITranscodingMetaGraph::AddSlaveStreamIndex(record, Property(), slave);
        }
    }
    return record;
}

void CheckMerges(const StreamPlan& plan, const JobWishes& wishes)
{
    for (const auto& merge : wishes.merges)
    {
        if (std::none_of(plan.streams.begin(), plan.streams.end(),
                         [&merge](const PlannedStream& stream) { return stream.source == merge.first; }))
        {
            ZELNOR_THROW(kUnit,
                         MakeError<PlanException>("Nothing can be merged into stream " +
                                                  std::to_string(merge.first) + ", which is not converted"));
        }
    }
}

} // namespace

std::string WithExtension(const std::string& output, const std::string& container)
{
    if (std::filesystem::path(output).has_extension())
    {
        return output;
    }
    try
    {
        return output + "." + Conf::GetDefaultFileExtensionForContainer(container);
    }
    catch (const std::invalid_argument&)
    {
        // Some containers have no usual extension.
        return output;
    }
}

std::string ContainerOf(const Property& preset, bool losslessDvd)
{
    return losslessDvd ? IFormatFile::FORMAT_DVD : preset[IFormatFile::TAG_CONTAINER].GetString();
}

PlannedJob PlanJob(const MediaFile& source, const boost::intrusive_ptr<const Conf::IPreset>& preset,
                   const JobWishes& wishes)
{
    const bool losslessDvd = wishes.streams.losslessDvd;
    const std::string container = ContainerOf(preset->GetProperty(), losslessDvd);
    StreamPlan plan = PlanStreams(source, preset->GetProperty(), container, wishes.streams);
    CheckMerges(plan, wishes);
    Property target = ITranscodingMetaGraph::MakeOutFileDescription(
        preset, WithExtension(wishes.output, container), losslessDvd);
    CarryWorkTags(source, target);
    PlannedJob job = {ITranscodingMetaGraph::Create(), std::move(plan.notes)};
    const Conf::NodeId from = job.graph->AddNode(ITranscodingMetaGraph::MakeInFileDescription(source.name));
    const Conf::NodeId to = job.graph->AddNode(target);
    for (const PlannedStream& stream : plan.streams)
    {
        const Conf::NodeId raw = job.graph->AddNode(RawStream(stream.source, wishes));
        job.graph->AddLink(from, raw, Property());
        job.graph->AddLink(raw, to, stream.codec);
    }
    return job;
}

} // namespace Zelnor::Media
