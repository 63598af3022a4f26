#include "Media/Planning/StreamPlan.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/MediaException.h"
#include "Media/Planning/AudioChoice.h"
#include "Media/Planning/CodecReasons.h"
#include "Media/Planning/Containers.h"
#include "Media/Planning/DvdSettings.h"
#include "Media/Planning/NearestCodec.h"
#include "Media/Planning/SettingOverrides.h"
#include "Media/Planning/TargetCodec.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/RecordText.h"
#include "Media/Text.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IPreset.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Conf::IPreset;
using Core::Property;

constexpr const char* kUnit = "Media/Planning/StreamPlan";

/// The order of the output's streams.
constexpr std::array<StreamKind, 3> kKinds = {StreamKind::Video, StreamKind::Audio, StreamKind::Subtitle};

/// Largest first.
std::tuple<bool, long long, long long> RankOf(const MediaStream& stream)
{
    const Property& record = stream.descriptor->GetProperty();
    const auto number = [&record](const std::string& key) {
        const auto child = record.FindChild(key);
        return child == record.end() ? 0LL : child->GetInt64();
    };
    long long extent = 0;
    if (stream.kind == StreamKind::Video)
    {
        extent = number(IFormatCodecVideo::TAG_WIDTH) * number(IFormatCodecVideo::TAG_HEIGHT);
    }
    else if (record.ChildExists(IFormatCodecAudio::TAG_LAYOUT))
    {
        extent = Conf::LayoutRecord::Find(record[IFormatCodecAudio::TAG_LAYOUT].GetString())->channels;
    }
    return {stream.isDefault, extent, number(IFormatCodec::TAG_BITRATE)};
}

/// Empty when the vocabulary has no identifier for the codec.
std::string CodecIdOf(const MediaStream& stream)
{
    const Property& record = stream.descriptor->GetProperty();
    const auto codec = record.FindChild(IFormatCodec::TAG_CODEC_ID);
    return codec == record.end() ? "" : codec->GetString();
}

const MediaStream& StreamAt(const MediaFile& source, unsigned int index)
{
    if (index >= source.streams.size())
    {
        Place place{source.name};
        place.stream = index;
        ZELNOR_THROW(kUnit, MakeError<PlanException>(place, "there is no such stream, only " +
                                                                Count(source.streams.size(), "stream") +
                                                                " from 0 on"));
    }
    return source.streams[index];
}

/// What a preset says about a stream of the output.
struct Settings
{
    const Property* record;      ///< null: nothing
    std::string key;             ///< where they stand: "p.$$STREAMS$$.audio"; empty: not in a preset
    bool isBitrateAsked = false; ///< the bitrate is the request's
};

class Planner
{
public:
    Planner(const MediaFile& source, const Property& preset, const std::string& container,
            const StreamRequest& request, const std::vector<SettingOverride>& overrides)
        : m_source(source), m_preset(preset), m_container(container), m_request(request)
    {
        std::map<std::string, std::size_t> counts;
        for (const Property& stream : preset[IPreset::KEY_STREAMS])
        {
            const std::string& type = stream.GetName();
            const StreamKind kind = KindOfMediaType(IPreset::MediaTypeFromPresetStreamType(type));
            m_settings[kind].push_back(
                {&stream, preset.GetName() + "." + IPreset::KEY_STREAMS + "." + type,
                 IsOverridden(overrides, type, counts[type]++, IFormatCodec::TAG_BITRATE)});
        }
    }

    StreamPlan Make()
    {
        CheckChosen();
        for (const StreamKind kind : kKinds)
        {
            const std::vector<const MediaStream*> streams = Choose(kind);
            FollowProgram(streams);
            for (std::size_t i = 0; i < streams.size(); ++i)
            {
                Add(*streams[i], i);
            }
        }
        if (m_plan.streams.empty())
        {
            ZELNOR_THROW(kUnit, MakeError<PlanException>(Place{m_source.name},
                                                         "the file has no stream that preset '" +
                                                             m_preset.GetName() + "' can convert"));
        }
        return std::move(m_plan);
    }

private:
    const std::vector<Settings>& SettingsFor(StreamKind kind) const
    {
        static const std::vector<Settings> s_none;
        const auto found = m_settings.find(kind);
        return found == m_settings.end() ? s_none : found->second;
    }

    void CheckChosen() const
    {
        if (!m_request.chosen.empty() && IsAudioChosen(m_request))
        {
            ZELNOR_THROW(kUnit,
                         MakeError<PlanException>(Place{m_source.name},
                                                  "streams are chosen by their indexes, so audio cannot "
                                                  "be chosen in another way"));
        }
        for (const unsigned int index : m_request.chosen)
        {
            const MediaStream& stream = StreamAt(m_source, index);
            if (!IsConvertible(stream.kind))
            {
                ZELNOR_THROW(kUnit, MakeError<PlanException>(PlaceOf(m_source, stream),
                                                             "streams of this kind cannot be converted"));
            }
        }
    }

    std::vector<const MediaStream*> Choose(StreamKind kind)
    {
        if (!m_request.chosen.empty())
        {
            return Chosen(kind);
        }
        if (kind == StreamKind::Audio && IsAudioChosen(m_request))
        {
            return ChooseAudio(m_source, RankedOfProgram(kind), m_request);
        }
        return kind == StreamKind::Subtitle ? FittingSubtitles() : BestStreams(kind);
    }

    std::vector<const MediaStream*> Chosen(StreamKind kind) const
    {
        std::vector<const MediaStream*> streams;
        for (const unsigned int index : m_request.chosen)
        {
            const MediaStream& stream = m_source.streams[index];
            if (stream.kind == kind)
            {
                streams.push_back(&stream);
            }
        }
        return streams;
    }

    /// The best stream decides which programme of a broadcast the output shows: sound and subtitles of
    /// another one do not belong to its picture.
    void FollowProgram(const std::vector<const MediaStream*>& streams)
    {
        if (!m_request.chosen.empty() || m_program || streams.empty() || streams.front()->programs.empty())
        {
            return;
        }
        m_program = streams.front()->programs.front();
        const auto others = std::count_if(m_source.streams.begin(), m_source.streams.end(),
                                          [this](const MediaStream& stream) { return !IsOfProgram(stream); });
        if (others != 0)
        {
            m_plan.notes.push_back("'" + m_source.name + "' has several programmes, so only programme " +
                                   std::to_string(*m_program) + " is taken");
        }
    }

    bool IsOfProgram(const MediaStream& stream) const
    {
        return !m_program || stream.programs.empty() ||
               std::find(stream.programs.begin(), stream.programs.end(), *m_program) != stream.programs.end();
    }

    /// In the source's order.
    std::vector<const MediaStream*> FittingSubtitles() const
    {
        std::vector<const MediaStream*> streams;
        for (const MediaStream& stream : m_source.streams)
        {
            if (stream.kind == StreamKind::Subtitle && IsOfProgram(stream) &&
                (IsToBeCopied(stream.kind) || PresetSubtitle(stream).record != nullptr ||
                 IsCopiedSubtitle(stream) || !SubtitleCodec(stream).empty()))
            {
                streams.push_back(&stream);
            }
        }
        return streams;
    }

    std::vector<const MediaStream*> RankedOfProgram(StreamKind kind) const
    {
        std::vector<const MediaStream*> ranked = RankStreams(m_source, kind);
        ranked.erase(std::remove_if(ranked.begin(), ranked.end(),
                                    [this](const MediaStream* stream) { return !IsOfProgram(*stream); }),
                     ranked.end());
        return ranked;
    }

    std::vector<const MediaStream*> BestStreams(StreamKind kind)
    {
        const std::size_t wanted =
            std::max<std::size_t>(SettingsFor(kind).size(), IsToBeCopied(kind) ? 1 : 0);
        const std::vector<const MediaStream*> ranked = RankedOfProgram(kind);
        if (wanted != 0 && ranked.empty())
        {
            m_plan.notes.push_back("'" + m_source.name + "' has no " + NameOf(kind) +
                                   ", so the output will have none");
            return ranked;
        }
        std::vector<const MediaStream*> streams;
        for (std::size_t i = 0; i < wanted; ++i)
        {
            streams.push_back(i < ranked.size() ? ranked[i] : ranked.front());
        }
        return streams;
    }

    /// What the preset says about such a subtitle: text cannot become a bitmap, nor a bitmap text.
    Settings PresetSubtitle(const MediaStream& stream) const
    {
        for (const Settings& settings : SettingsFor(StreamKind::Subtitle))
        {
            if ((settings.record->GetName() == IPreset::STREAM_TYPE_SUBTITLES_VIDEO) == stream.isBitmap)
            {
                return settings;
            }
        }
        return {nullptr, ""};
    }

    /// Blu-ray's subtitles have no encoder. Made into others, they lose the colours of their bitmaps.
    static bool HasNoEncoder(const MediaStream& stream)
    {
        return stream.isBitmap && FindEncoder(CodecIdOf(stream)) == nullptr;
    }

    /// Of those that the preset says nothing about.
    bool IsCopiedSubtitle(const MediaStream& stream) const
    {
        return HasNoEncoder(stream) && CertainlyHolds(m_container, CodecNumberOf(CodecIdOf(stream)));
    }

    /// The codec of a subtitle that the preset says nothing about; empty when the container cannot hold one.
    std::string SubtitleCodec(const MediaStream& stream) const
    {
        if (HasNoEncoder(stream))
        {
            return "";
        }
        const std::vector<std::string> codecs =
            SubtitleCodecsFor(m_container, CodecIdOf(stream), stream.isBitmap);
        return codecs.empty() ? "" : codecs.front();
    }

    void Add(const MediaStream& stream, std::size_t position)
    {
        if (IsToBeCopied(stream.kind))
        {
            AddCopied(stream);
        }
        else if (stream.kind == StreamKind::Subtitle)
        {
            AddSubtitle(stream);
        }
        else if (m_request.losslessDvd)
        {
            AddForDvd(stream, position);
        }
        else
        {
            const std::vector<Settings>& settings = SettingsFor(stream.kind);
            if (settings.empty())
            {
                ZELNOR_THROW(kUnit,
                             MakeError<PlanException>(PlaceOf(m_source, stream),
                                                      "preset '" + m_preset.GetName() +
                                                          "' has no settings for " + NameOf(stream.kind)));
            }
            AddConverted(stream, settings[std::min(position, settings.size() - 1)]);
        }
    }

    bool IsToBeCopied(StreamKind kind) const
    {
        return std::find(m_request.copied.begin(), m_request.copied.end(), kind) != m_request.copied.end();
    }

    void AddCopied(const MediaStream& stream)
    {
        const AVCodecDescriptor* const codec = avcodec_descriptor_get_by_name(stream.codec.c_str());
        // What FFmpeg does not know of the container, it can tell of videos and audio when they are written.
        const bool isHeld =
            codec != nullptr && (stream.kind == StreamKind::Subtitle ? CertainlyHolds(m_container, codec->id)
                                                                     : MayHold(m_container, codec->id));
        if (!isHeld)
        {
            ZELNOR_THROW(kUnit,
                         MakeError<PlanException>(PlaceOf(m_source, stream),
                                                  "cannot be copied, since " + WhyNotHeld(stream, codec)));
        }
        m_plan.streams.push_back({stream.index, true, MakeCopiedCodec(stream)});
    }

    void AddSubtitle(const MediaStream& stream)
    {
        const Settings settings = PresetSubtitle(stream);
        if (settings.record != nullptr)
        {
            AddConverted(stream, settings);
            return;
        }
        if (IsCopiedSubtitle(stream))
        {
            m_plan.streams.push_back({stream.index, true, MakeCopiedCodec(stream)});
            return;
        }
        const std::string codec = SubtitleCodec(stream);
        if (codec.empty())
        {
            ZELNOR_THROW(kUnit,
                         MakeError<PlanException>(PlaceOf(m_source, stream),
                                                  "container " + m_container + " cannot hold " +
                                                      (stream.isBitmap ? "bitmap" : "text") + " subtitles"));
        }
        Property own;
        own.SetChildT(IFormatCodec::TAG_CODEC_ID, codec);
        AddConverted(stream, {&own, ""});
    }

    void AddForDvd(const MediaStream& stream, std::size_t position)
    {
        if (CertainlyHolds(m_container, CodecNumberOf(CodecIdOf(stream))))
        {
            m_plan.streams.push_back({stream.index, true, MakeCopiedCodec(stream)});
            return;
        }
        m_plan.notes.push_back("A DVD cannot hold stream " + std::to_string(stream.index) + " (" +
                               stream.codec + ") as it is, so it will be converted");
        const std::vector<Settings>& wanted = SettingsFor(stream.kind);
        const Property settings = DvdSettings(
            stream, wanted.empty() ? nullptr : wanted[std::min(position, wanted.size() - 1)].record);
        AddConverted(stream, {&settings, ""});
    }

    std::string WhyNotHeld(const MediaStream& stream, const AVCodecDescriptor* codec) const
    {
        return codec == nullptr ? "the container " + m_container + " cannot hold " + stream.codec
                                : CannotHoldText(m_container, codec->id);
    }

    void AddConverted(const MediaStream& stream, const Settings& settings)
    {
        const Place place = PlaceOf(m_source, stream).At(settings.key);
        const std::string codec = TextUnder(*settings.record, IFormatCodec::TAG_CODEC_ID);
        if (!MayHold(m_container, CodecNumberOf(codec)))
        {
            ZELNOR_THROW(kUnit, MakeError<PlanException>(place.Under(IFormatCodec::TAG_CODEC_ID),
                                                         CannotHoldText(m_container, codec)));
        }
        m_plan.streams.push_back({stream.index, false,
                                  MakeNearestCodec({stream, *settings.record, m_container, place,
                                                    m_plan.notes, settings.isBitrateAsked},
                                                   m_request)});
    }

    const MediaFile& m_source;
    const Property& m_preset;
    const std::string& m_container;
    const StreamRequest& m_request;
    std::map<StreamKind, std::vector<Settings>> m_settings;
    std::optional<int> m_program; ///< the one that the streams are taken from
    StreamPlan m_plan;
};

} // namespace

StreamPlan PlanStreams(const MediaFile& source, const Property& preset, const std::string& container,
                       const StreamRequest& request, const std::vector<SettingOverride>& overrides)
{
    return Planner(source, preset, container, request, overrides).Make();
}

std::vector<const MediaStream*> RankStreams(const MediaFile& source, StreamKind kind)
{
    std::vector<const MediaStream*> streams;
    for (const MediaStream& stream : source.streams)
    {
        if (stream.kind == kind && !stream.isAttachedPicture)
        {
            streams.push_back(&stream);
        }
    }
    std::stable_sort(streams.begin(), streams.end(), [](const MediaStream* one, const MediaStream* other) {
        return RankOf(*one) > RankOf(*other);
    });
    return streams;
}

void CheckMerges(const MediaFile& source, const StreamPlan& plan, const std::vector<StreamMerge>& merges)
{
    std::set<std::pair<unsigned int, unsigned int>> known;
    for (const StreamMerge& merge : merges)
    {
        const MediaStream& base = StreamAt(source, merge.base);
        const MediaStream& overlay = StreamAt(source, merge.overlay);
        const bool isConverted =
            std::any_of(plan.streams.begin(), plan.streams.end(), [&merge](const PlannedStream& stream) {
                return stream.source == merge.base && !stream.isCopied;
            });
        if (!isConverted)
        {
            ZELNOR_THROW(kUnit,
                         MakeError<PlanException>(PlaceOf(source, base),
                                                  "is not converted, so nothing can be merged into it"));
        }
        if (!known.emplace(merge.base, merge.overlay).second)
        {
            ZELNOR_THROW(kUnit,
                         MakeError<PlanException>(PlaceOf(source, overlay), "is merged twice into stream " +
                                                                                std::to_string(base.index)));
        }
        const bool isMixed = base.kind == StreamKind::Audio && overlay.kind == StreamKind::Audio &&
                             merge.base != merge.overlay;
        const bool isDrawn = base.kind == StreamKind::Video && overlay.kind == StreamKind::Subtitle;
        if (!isMixed && !isDrawn)
        {
            const std::string expected = base.kind == StreamKind::Audio   ? ", expected another audio stream"
                                         : base.kind == StreamKind::Video ? ", expected a subtitle"
                                                                          : "";
            ZELNOR_THROW(kUnit,
                         MakeError<PlanException>(PlaceOf(source, overlay),
                                                  std::string("cannot be merged into ") + NameOf(base.kind) +
                                                      " stream " + std::to_string(base.index) + expected));
        }
    }
}

Place PlaceOf(const MediaFile& source, const MediaStream& stream)
{
    Place place{source.name};
    place.streamKind = NameOf(stream.kind);
    place.stream = stream.index;
    return place;
}

} // namespace Zelnor::Media
