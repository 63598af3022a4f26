#include "Media/Planning/StreamPlan.h"

#include "Media/MediaException.h"
#include "Media/Planning/Containers.h"
#include "Media/Planning/TargetCodec.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/Text.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IPreset.h"

#include <algorithm>
#include <array>
#include <tuple>

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

constexpr std::array<StreamKind, 3> kKinds = {StreamKind::Video, StreamKind::Audio, StreamKind::Subtitle};

MediaType MediaTypeOf(StreamKind kind)
{
    return kind == StreamKind::Video   ? MEDIA_TYPE_VIDEO
           : kind == StreamKind::Audio ? MEDIA_TYPE_AUDIO
                                       : MEDIA_TYPE_SUBTITLE;
}

std::vector<const Property*> SettingsFor(const Property& preset, StreamKind kind)
{
    std::vector<const Property*> settings;
    for (const Property& stream : preset[IPreset::KEY_STREAMS])
    {
        if (IPreset::MediaTypeFromPresetStreamType(stream.GetName()) == MediaTypeOf(kind))
        {
            settings.push_back(&stream);
        }
    }
    return settings;
}

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

/// "subtitles_text" or "subtitles_video": text cannot be made pictures, nor pictures text.
bool FitsSubtitle(const Property& settings, const MediaStream& source)
{
    return (settings.GetName() == IPreset::STREAM_TYPE_SUBTITLES_VIDEO) == source.isBitmap;
}

/// The settings of a subtitle in the target; a group without a codec when it cannot be held there.
Property SubtitleSettings(const MediaStream& source, const Property& preset, const std::string& container)
{
    for (const Property* const settings : SettingsFor(preset, StreamKind::Subtitle))
    {
        if (FitsSubtitle(*settings, source))
        {
            return *settings;
        }
    }
    Property settings;
    const auto own = source.descriptor->GetProperty().FindChild(IFormatCodec::TAG_CODEC_ID);
    const std::string codec = own == source.descriptor->GetProperty().end() ? "" : own->GetString();
    const std::vector<std::string> codecs = SubtitleCodecsFor(container, codec, source.isBitmap);
    if (!codecs.empty())
    {
        settings.SetChildT(IFormatCodec::TAG_CODEC_ID, codecs.front());
    }
    return settings;
}

class Planner
{
public:
    Planner(const MediaFile& source, const Property& preset, const std::string& container,
            const StreamWishes& wishes)
        : m_source(source), m_preset(preset), m_container(container), m_wishes(wishes)
    {}

    StreamPlan Make()
    {
        for (const StreamKind kind : kKinds)
        {
            const std::vector<const MediaStream*> streams = Choose(kind);
            for (std::size_t i = 0; i < streams.size(); ++i)
            {
                Add(*streams[i], i);
            }
        }
        if (m_plan.streams.empty())
        {
            ZELNOR_THROW(kUnit,
                         MakeError<PlanException>("'" + m_source.name + "' has no stream that the preset '" +
                                                  m_preset.GetName() + "' can make anything of"));
        }
        return std::move(m_plan);
    }

private:
    std::vector<const MediaStream*> Choose(StreamKind kind)
    {
        if (!m_wishes.chosen.empty())
        {
            return Chosen(kind);
        }
        std::vector<const MediaStream*> ranked = RankStreams(m_source, kind);
        if (kind == StreamKind::Subtitle)
        {
            ranked.erase(std::remove_if(ranked.begin(), ranked.end(),
                                        [this](const MediaStream* stream) { return !CanHold(*stream); }),
                         ranked.end());
            std::sort(ranked.begin(), ranked.end(),
                      [](const auto* one, const auto* other) { return one->index < other->index; });
            return ranked;
        }
        const std::size_t wanted = SettingsFor(m_preset, kind).size();
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

    std::vector<const MediaStream*> Chosen(StreamKind kind) const
    {
        std::vector<const MediaStream*> streams;
        for (const unsigned int index : m_wishes.chosen)
        {
            if (index >= m_source.streams.size())
            {
                ZELNOR_THROW(kUnit, MakeError<PlanException>(
                                        "'" + m_source.name + "' has no stream " + std::to_string(index) +
                                        ", only " + Count(m_source.streams.size(), "stream") + " from 0 on"));
            }
            const MediaStream& stream = m_source.streams[index];
            if (std::find(kKinds.begin(), kKinds.end(), stream.kind) == kKinds.end())
            {
                ZELNOR_THROW(kUnit,
                             MakeError<PlanException>("Stream " + std::to_string(index) + " is of the kind " +
                                                      NameOf(stream.kind) + ", which cannot be converted"));
            }
            if (stream.kind == kind)
            {
                streams.push_back(&stream);
            }
        }
        return streams;
    }

    bool CanHold(const MediaStream& subtitle) const
    {
        return SubtitleSettings(subtitle, m_preset, m_container).ChildExists(IFormatCodec::TAG_CODEC_ID);
    }

    /// The settings for the `position`-th stream of a kind.
    Property SettingsOf(const MediaStream& stream, std::size_t position) const
    {
        if (stream.kind == StreamKind::Subtitle)
        {
            if (!CanHold(stream))
            {
                ZELNOR_THROW(
                    kUnit, MakeError<PlanException>("The container " + m_container + " cannot hold stream " +
                                                    std::to_string(stream.index) + ", a subtitle of " +
                                                    (stream.isBitmap ? "pictures" : "text")));
            }
            return SubtitleSettings(stream, m_preset, m_container);
        }
        const std::vector<const Property*> settings = SettingsFor(m_preset, stream.kind);
        if (settings.empty())
        {
            ZELNOR_THROW(kUnit, MakeError<PlanException>("The preset '" + m_preset.GetName() +
                                                         "' does not say what to make of stream " +
                                                         std::to_string(stream.index) + ", which is " +
                                                         NameOf(stream.kind)));
        }
        return *settings[std::min(position, settings.size() - 1)];
    }

    void Add(const MediaStream& stream, std::size_t position)
    {
        if (m_wishes.losslessDvd && stream.kind != StreamKind::Subtitle)
        {
            AddForDvd(stream);
            return;
        }
        m_plan.streams.push_back(
            {stream.index, MakeTargetCodec(stream, SettingsOf(stream, position), m_container)});
    }

    void AddForDvd(const MediaStream& stream)
    {
        const auto codec = stream.descriptor->GetProperty().FindChild(IFormatCodec::TAG_CODEC_ID);
        const bool fits = codec != stream.descriptor->GetProperty().end() &&
                          CertainlyHolds(m_container, CodecNumberOf(codec->GetString()));
        if (!fits)
        {
            m_plan.notes.push_back("A DVD cannot hold stream " + std::to_string(stream.index) + " (" +
                                   stream.codec + ") as it is, so it will be converted");
        }
        m_plan.streams.push_back(
            {stream.index,
             fits ? MakeCopiedCodec(stream) : MakeTargetCodec(stream, DvdSettings(stream), m_container)});
    }

    const MediaFile& m_source;
    const Property& m_preset;
    const std::string& m_container;
    const StreamWishes& m_wishes;
    StreamPlan m_plan;
};

} // namespace

StreamPlan PlanStreams(const MediaFile& source, const Property& preset, const std::string& container,
                       const StreamWishes& wishes)
{
    return Planner(source, preset, container, wishes).Make();
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

} // namespace Zelnor::Media
