#include "Media/Planning/JobPlan.h"

#include "Media/MediaException.h"
#include "Media/Planning/StreamPlan.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Presets/PresetRules.h"
#include "Media/Text.h"

#include "Conf/Interfaces/MediaTypeUtils.h"

#include <array>
#include <filesystem>
#include <stdexcept>

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
Property RawStream(unsigned int index, const JobRequest& request)
{
    Property record = ITranscodingMetaGraph::MakeRawStreamDescription(index);
    for (const StreamMerge& merge : request.merges)
    {
        if (merge.base == index)
        {
            ITranscodingMetaGraph::AddSlaveStreamIndex(record, Property(), merge.overlay);
        }
    }
    return record;
}

/// `output`, with the container's default extension if it has none.
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

/// A `MediaFile` is a value that anybody can make.
void CheckSource(const MediaFile& source)
{
    if (source.descriptor == nullptr)
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>(Place{source.name}, "the file has no descriptor"));
    }
    unsigned int position = 0;
    for (const MediaStream& stream : source.streams)
    {
        const Place place = PlaceOf(source, stream);
        if (stream.index != position)
        {
            ZELNOR_THROW(kUnit,
                         MakeError<PlanException>(place, "stands at position " + std::to_string(position) +
                                                             " of the file"));
        }
        if (stream.descriptor == nullptr ||
            (IsConvertible(stream.kind) && KindOfCodecType(stream.descriptor->GetCodecType()) != stream.kind))
        {
            ZELNOR_THROW(kUnit, MakeError<PlanException>(
                                    place, std::string("expected a descriptor of ") + NameOf(stream.kind) +
                                               ", found " +
                                               (stream.descriptor == nullptr ? "nothing" : "another one")));
        }
        ++position;
    }
}

void CheckPresetOf(const boost::intrusive_ptr<const Conf::IPreset>& preset)
{
    if (preset == nullptr)
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>("A job needs a preset"));
    }
    // A preset file was checked when it was read.
    if (dynamic_cast<const PresetFile*>(preset.get()) == nullptr)
    {
        CheckPreset(preset->GetProperty());
    }
}

} // namespace

PlannedJob PlanJob(const MediaFile& source, const boost::intrusive_ptr<const Conf::IPreset>& preset,
                   const JobRequest& request)
{
    CheckSource(source);
    CheckPresetOf(preset);
    if (request.output.empty())
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>("The output has no name"));
    }
    const Property& settings = preset->GetProperty();
    const bool losslessDvd = request.streams.losslessDvd;
    const std::string container =
        losslessDvd ? IFormatFile::FORMAT_DVD : settings[IFormatFile::TAG_CONTAINER].GetString();
    StreamPlan plan = PlanStreams(source, settings, container, request.streams);
    CheckMerges(source, plan, request.merges);
    PlannedJob job = {ITranscodingMetaGraph::Create(), WithExtension(request.output, container),
                      std::move(plan.notes)};
    Property target = ITranscodingMetaGraph::MakeOutFileDescription(preset, job.output, losslessDvd);
    CarryWorkTags(source, target);
    const Conf::NodeId from = job.graph->AddNode(ITranscodingMetaGraph::MakeInFileDescription(source.name));
    const Conf::NodeId to = job.graph->AddNode(target);
    for (const PlannedStream& stream : plan.streams)
    {
        const Conf::NodeId raw = job.graph->AddNode(RawStream(stream.source, request));
        job.graph->AddLink(from, raw, Property());
        job.graph->AddLink(raw, to, stream.codec);
    }
    return job;
}

} // namespace Zelnor::Media
