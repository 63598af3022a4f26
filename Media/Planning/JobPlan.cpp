#include "Media/Planning/JobPlan.h"

#include "Media/Jobs/FaultList.h"
#include "Media/Jobs/JobKeys.h"
#include "Media/Jobs/MediaSpan.h"
#include "Media/MediaException.h"
#include "Media/Planning/CodecReasons.h"
#include "Media/Planning/OutputContents.h"
#include "Media/Planning/SettingOverrides.h"
#include "Media/Planning/StreamLimit.h"
#include "Media/Planning/StreamPlan.h"
#include "Media/Planning/StreamsLeftOut.h"
#include "Media/Planning/TargetName.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Presets/PresetNames.h"
#include "Media/Presets/PresetRules.h"
#include "Media/Text.h"

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormat;
using Conf::IFormatCodecVideo;
using Conf::IFormatFile;
using Conf::ITranscodingMetaGraph;
using Core::Property;

constexpr const char* kUnit = "Media/Planning/JobPlan";

/// A subtitle that is drawn into a video is not kept beside it as well, unless it was chosen.
void LeaveOutDrawn(const MediaFile& source, const JobRequest& request, StreamPlan& plan)
{
    if (!request.streams.chosen.empty())
    {
        return;
    }
    for (const StreamMerge& merge : request.merges)
    {
        const auto isDrawn = [&](const PlannedStream& stream) {
            return stream.source == merge.overlay &&
                   source.streams[merge.overlay].kind == StreamKind::Subtitle;
        };
        const auto left = std::remove_if(plan.streams.begin(), plan.streams.end(), isDrawn);
        if (left != plan.streams.end())
        {
            plan.streams.erase(left, plan.streams.end());
            plan.notes.push_back("Subtitle stream " + std::to_string(merge.overlay) +
                                 " will be drawn into the video, so it will not be kept beside it");
        }
    }
}

/// The streams that the request leaves out by what it chooses. What it does not speak of, such as sound that
/// a preset has no place for, is not among them.
std::vector<unsigned int> LeftOutByChoice(const MediaFile& source, const JobRequest& request,
                                          const StreamPlan& plan)
{
    std::vector<unsigned int> leftOut;
    for (const MediaStream& stream : source.streams)
    {
        const bool isUsed =
            std::any_of(plan.streams.begin(), plan.streams.end(),
                        [&](const PlannedStream& each) { return each.source == stream.index; });
        const bool isMerged =
            std::any_of(request.merges.begin(), request.merges.end(),
                        [&](const StreamMerge& each) { return each.overlay == stream.index; });
        const bool isSpokenOf = !request.streams.chosen.empty() ||
                                (!request.streams.audioLanguages.empty() && stream.kind == StreamKind::Audio);
        if (isSpokenOf && !isUsed && !isMerged && CanBeLeftOut(stream))
        {
            leftOut.push_back(stream.index);
        }
    }
    return leftOut;
}

Property SourceRecord(const MediaFile& source, const std::vector<unsigned int>& leftOut)
{
    Property record = ITranscodingMetaGraph::MakeInFileDescription(source.name);
    if (!leftOut.empty())
    {
        Property& list = record.SetChild(JobKeys::kLeftOut);
        for (const unsigned int index : leftOut)
        {
            Property entry("");
            entry = static_cast<long long>(index);
            list.Add(entry);
        }
    }
    return record;
}

/// Without decoding, a video can only begin with a key frame.
void NoteCopiedBeginning(const MediaFile& source, const JobRequest& request, StreamPlan& plan)
{
    for (const PlannedStream& stream : plan.streams)
    {
        if (stream.isCopied && request.start.value_or(0) > 0 &&
            source.streams[stream.source].kind == StreamKind::Video)
        {
            plan.notes.push_back("Video stream " + std::to_string(stream.source) +
                                 " is copied, so the output begins with the last key frame before its start");
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

/// Of settings with one name the first counts, and only that was checked.
void LeaveOutRepeated(Property& stream)
{
    std::set<std::string_view> names;
    Property first(stream.GetName());
    for (const Property& setting : stream)
    {
        if (names.insert(setting.GetName()).second)
        {
            first.Add(setting);
        }
    }
    if (first.Count() != stream.Count())
    {
        stream = std::move(first);
    }
}

/// The preset's record as the request changes it.
Property SettingsOf(const Conf::IPreset& preset, const JobRequest& request, std::vector<std::string>& notes)
{
    Property settings = preset.GetProperty();
    ResolveNames(settings);
    // A preset file was checked when it was read.
    if (dynamic_cast<const PresetFile*>(&preset) == nullptr)
    {
        CheckPreset(settings);
    }
    for (Property& stream : settings[Conf::IPreset::KEY_STREAMS])
    {
        LeaveOutRepeated(stream);
    }
    settings = ApplyOverrides(settings, request, notes);
    ResolveNames(settings);
    if (!request.codecs.empty() || !request.settings.empty() || request.frameRate)
    {
        CheckPreset(settings);
    }
    return settings;
}

/// \throw PlanException
void RequireWritten(const std::string& container, const Property& settings)
{
    const std::string reason = CannotWriteText(container);
    if (!reason.empty())
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>(
                                Place().At(settings.GetName()).Under(IFormatFile::TAG_CONTAINER), reason));
    }
}

/// What is copied has no settings. \throw PlanException
void CheckCopied(const JobRequest& request)
{
    for (const StreamKind kind : request.streams.copied)
    {
        const std::string name = NameOf(kind);
        const auto refuse = [&name](const std::string& what) {
            ZELNOR_THROW(
                kUnit, MakeError<PlanException>(Place().At(what), name + " is copied, so it cannot be set"));
        };
        for (const SettingOverride& setting : request.settings)
        {
            if (setting.path.compare(0, name.size(), name) == 0)
            {
                refuse(setting.path);
            }
        }
        for (const std::string& codec : request.codecs)
        {
            const auto mediaType = Conf::GetCodecMediaType(codec);
            if (mediaType && KindOfMediaType(*mediaType) == kind)
            {
                refuse(codec);
            }
        }
        if (kind == StreamKind::Video && (request.frameRate || request.streams.maxSize))
        {
            refuse(request.frameRate ? IFormatCodecVideo::TAG_FPS : "the size");
        }
    }
}

/// What the request changed of the settings for the file.
void TakeOver(const Property& settings, const std::string& container, Property& target)
{
    target.SetChildT(IFormatFile::TAG_CONTAINER, container);
    const auto metadata = settings.FindChild(IFormat::TAG_METADATA);
    if (metadata != settings.end())
    {
        target.SetChild(IFormat::TAG_METADATA, *metadata);
    }
}

/// \throw PlanException
void SetSpan(const MediaFile& source, const JobRequest& request, Property& target,
             std::vector<std::string>& notes)
{
    if (request.start)
    {
        target.SetChildT(JobKeys::kStart, *request.start);
    }
    if (request.end)
    {
        target.SetChildT(JobKeys::kEnd, *request.end);
    }
    FaultList faults;
    const MediaSpan span = ReadSpan(target, Place{}, faults);
    if (!faults.Get().empty())
    {
        const JobFault& fault = faults.Get().front();
        ZELNOR_THROW(kUnit, MakeError<PlanException>(fault.place, fault.reason));
    }
    const bool isKnown = source.duration && !source.durationIsEstimated;
    if (isKnown && span.start > 0 && span.DurationOf(source.duration) == 0)
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>(Place{source.name}.At(JobKeys::kStart),
                                                     "lies behind the end of the file"));
    }
    if (isKnown && span.end && *span.end > *source.duration)
    {
        notes.push_back("'" + source.name +
                        "' ends before the end that was asked for, so the output ends with it");
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

/// Writes into the records what of the source can be kept. \returns what cannot, as sentences
/// \throw PlanException for the first of them when the request is strict
std::vector<std::string> KeepContents(const MediaFile& source, const JobRequest& request,
                                      const std::vector<unsigned int>& leftOut, const std::string& container,
                                      StreamPlan& plan, Property& target)
{
    OutputFile output = {{&source}, container, &target, {}, {leftOut}};
    std::vector<Property*> codecs;
    for (PlannedStream& stream : plan.streams)
    {
        OutputStream made = {0, stream.source, {}, &stream.codec, stream.isCopied};
        for (const StreamMerge& merge : request.merges)
        {
            if (merge.base == stream.source)
            {
                made.merged.push_back(merge.overlay);
            }
        }
        output.streams.push_back(std::move(made));
        codecs.push_back(&stream.codec);
    }
    FillRecords(output, target, codecs);
    std::vector<std::string> sentences;
    for (const Loss& loss : PlanContents(output).losses)
    {
        const Place place = loss.stream ? PlaceOf(source, source.streams[*loss.stream]) : Place{source.name};
        if (request.strict && !loss.isAsked)
        {
            ZELNOR_THROW(kUnit, MakeError<PlanException>(place, loss.reason));
        }
        sentences.push_back(place.Text() + ": " + loss.reason);
    }
    return sentences;
}

} // namespace

PlannedJob PlanJob(const MediaFile& source, const boost::intrusive_ptr<const Conf::IPreset>& preset,
                   const JobRequest& request)
{
    CheckSource(source);
    if (preset == nullptr)
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>("A job needs a preset"));
    }
    if (request.output.empty())
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>("The output has no name"));
    }
    CheckCopied(request);
    std::vector<std::string> notes;
    const Property settings = SettingsOf(*preset, request, notes);
    const bool losslessDvd = request.streams.losslessDvd;
    const std::string container =
        losslessDvd ? IFormatFile::FORMAT_DVD : settings[IFormatFile::TAG_CONTAINER].GetString();
    RequireWritten(container, settings);
    StreamPlan plan = PlanStreams(source, settings, container, request.streams, request.settings);
    CheckMerges(source, plan, request.merges);
    LeaveOutDrawn(source, request, plan);
    const std::vector<unsigned int> leftOut = LeftOutByChoice(source, request, plan);
    LimitStreams(source, request.streams, container, plan);
    NoteCopiedBeginning(source, request, plan);
    notes.insert(notes.end(), plan.notes.begin(), plan.notes.end());
    PlannedJob job = {ITranscodingMetaGraph::Create(), TargetName(request.output, source, container),
                      std::move(notes)};
    Property target = ITranscodingMetaGraph::MakeOutFileDescription(preset, job.output, losslessDvd);
    TakeOver(settings, container, target);
    SetSpan(source, request, target, job.notes);
    const std::vector<std::string> losses = KeepContents(source, request, leftOut, container, plan, target);
    job.notes.insert(job.notes.end(), losses.begin(), losses.end());
    const Conf::NodeId from = job.graph->AddNode(SourceRecord(source, leftOut));
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
