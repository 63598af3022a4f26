#include "Media/Presets/PresetRules.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/MediaException.h"
#include "Media/NearestNames.h"
#include "Media/Options/OptionRules.h"
#include "Media/Options/SettingRules.h"
#include "Media/Options/ValueNames.h"
#include "Media/Presets/PresetNames.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/RecordText.h"
#include "Media/ValueText.h"

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Conf/Interfaces/ServiceRecords.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Conf::IFormatFile;
using Conf::IPreset;
using Core::Property;

template <class Record>
bool HasRecord(const Property& value)
{
    try
    {
        Record::Find(value.GetString());
        return true;
    }
    catch (const Conf::FormatException&)
    {
        return false;
    }
}

bool IsAnything(const Property&) { return true; }
bool IsContainer(const Property& value) { return Conf::IsContainer(value.GetString()); }
bool IsPositive(const Property& value) { return value.GetInt64() > 0; }
/// Products of two such numbers fit in the 32 bits that the geometry is calculated in.
bool IsShort(const Property& value) { return value.GetInt64() > 0 && value.GetInt64() <= 65535; }
bool IsPixelFormat(const Property& value)
{
    const auto& records = PixFmtDescription::s_pixelFormatRecords;
    return std::any_of(records.begin(), records.end(),
                       [number = value.GetInt64()](const auto& record) { return record.pixFmt == number; });
}
bool IsPositiveRatio(const Property& value) { return value.GetRatio() > 0; }
bool IsBitrateMode(const Property& value)
{
    const std::string& text = value.GetString();
    return text == IFormatCodec::TAG_BITRATE_MODE_CBR || text == IFormatCodec::TAG_BITRATE_MODE_CBR_AUTO ||
           text == IFormatCodec::TAG_BITRATE_MODE_VBR;
}

/// What the value under a key must be, if the key is there.
struct KeyRule
{
    const std::string* key;
    PropertyTypes type;
    bool (*accepts)(const Property& value);
    const char* expected;
};

const KeyRule* FileRules(std::size_t& count)
{
    static const KeyRule s_rules[] = {
        {&IPreset::KEY_TYPE_ID, PROPERTY_TYPE_STRING, IsAnything, "a string"},
        {&IPreset::KEY_NAME, PROPERTY_TYPE_STRING, IsAnything, "a string"},
        {&IPreset::KEY_ID, PROPERTY_TYPE_STRING, IsAnything, "a string"},
        {&IFormatFile::TAG_CONTAINER, PROPERTY_TYPE_STRING, IsContainer,
         "the name of a container, as \"mp4\""},
        {&Conf::IFormat::TAG_METADATA, PROPERTY_TYPE_GROUP, IsAnything, "a group"},
    };
    count = std::size(s_rules);
    return s_rules;
}

const KeyRule* StreamRules(std::size_t& count)
{
    constexpr const char* kNumber = "a positive integer";
    constexpr const char* kShort = "an integer from 1 to 65535";
    static const KeyRule s_rules[] = {
        {&Conf::IFormat::TAG_METADATA, PROPERTY_TYPE_GROUP, IsAnything, "a group"},
        {&IFormatCodec::TAG_CODEC_OPTIONS_ENCODE, PROPERTY_TYPE_GROUP, IsAnything, "a group"},
        {&IFormatCodec::TAG_CODEC_OPTIONS_ANALYZE, PROPERTY_TYPE_GROUP, IsAnything, "a group"},
        {&IFormatCodec::TAG_LANGUAGE, PROPERTY_TYPE_STRING, IsAnything, "a string"},
        {&IFormatCodec::TAG_BITRATE, PROPERTY_TYPE_INT64, IsPositive, kNumber},
        {&IFormatCodec::TAG_PEAK_BITRATE, PROPERTY_TYPE_INT64, IsPositive, kNumber},
        {&IFormatCodec::TAG_BITRATE_MODE, PROPERTY_TYPE_STRING, IsBitrateMode, "CBR, CBR_AUTO or VBR"},
        {&IFormatCodec::TAG_PROFILE, PROPERTY_TYPE_STRING, IsAnything, "a string"},
        {&IFormatCodec::TAG_PRESET, PROPERTY_TYPE_STRING, IsAnything, "a string"},
        {&IFormatCodecVideo::TAG_WIDTH, PROPERTY_TYPE_INT64, IsShort, kShort},
        {&IFormatCodecVideo::TAG_HEIGHT, PROPERTY_TYPE_INT64, IsShort, kShort},
        {&IFormatCodecVideo::TAG_ASPECTX, PROPERTY_TYPE_INT64, IsShort, kShort},
        {&IFormatCodecVideo::TAG_ASPECTY, PROPERTY_TYPE_INT64, IsShort, kShort},
        {&IFormatCodecVideo::TAG_FRAME_ASPECTX, PROPERTY_TYPE_INT64, IsShort, kShort},
        {&IFormatCodecVideo::TAG_FRAME_ASPECTY, PROPERTY_TYPE_INT64, IsShort, kShort},
        {&Conf::TAG_PIX_FMT, PROPERTY_TYPE_INT64, IsPixelFormat,
         "the name or the number of a pixel format, as YUV420P or 0"},
        {&IFormatCodecVideo::TAG_FPS, PROPERTY_TYPE_RATIO, IsPositiveRatio, "a rate as [30000, 1001]"},
        {&IFormatCodecVideo::TAG_X264_TUNE, PROPERTY_TYPE_STRING, IsAnything, "a string"},
        {&IFormatCodecAudio::TAG_SAMPLE_RATE, PROPERTY_TYPE_INT64, IsPositive, kNumber},
        {&IFormatCodecAudio::TAG_SAMPLE_FORMAT, PROPERTY_TYPE_STRING, HasRecord<Conf::SampleFmtRecord>,
         "a sample format, as \"SAMPLE_FMT_S16\""},
        {&IFormatCodecAudio::TAG_LAYOUT, PROPERTY_TYPE_STRING, HasRecord<Conf::LayoutRecord>,
         "a channel layout, as \"STEREO\""},
    };
    count = std::size(s_rules);
    return s_rules;
}

ExpectedValues TextsOf(const KeyRule* rules, std::size_t count)
{
    ExpectedValues texts;
    std::transform(rules, rules + count, std::back_inserter(texts),
                   [](const KeyRule& rule) { return std::pair(*rule.key, std::string(rule.expected)); });
    return texts;
}

/// Why the value is not as one of the rules says; empty when it is, or no rule is about its key.
std::string FindFault(const KeyRule* rules, std::size_t count, const Property& value)
{
    for (const KeyRule* rule = rules; rule != rules + count; ++rule)
    {
        if (*rule->key == value.GetName() && (value.GetType() != rule->type || !rule->accepts(value)))
        {
            return std::string("expected ") + rule->expected + ", found " + ValueText(value) +
                   SuggestName(value);
        }
    }
    return "";
}

const char* CodecKind(MediaType mediaType)
{
    switch (mediaType)
    {
    case MEDIA_TYPE_VIDEO:
        return "a video codec, as \"CODEC_ID_H264\"";
    case MEDIA_TYPE_AUDIO:
        return "an audio codec, as \"CODEC_ID_AAC\"";
    case MEDIA_TYPE_SUBTITLE:
        return "a subtitle codec, as \"CODEC_ID_SRT\"";
    }
    return "a codec";
}

/// The encoder that a job of the preset will use; null when it is not there, which the job says.
const AVCodec* EncoderOf(const Property& stream)
{
    const std::string wanted = TextUnder(stream, IFormatCodec::TAG_PREFERREDIMPL);
    return !stream.ChildExists(IFormatCodec::TAG_PREFERREDIMPL) || wanted == IFormatCodec::ENCODER_FFMPEG_IMPL
               ? FindEncoder(TextUnder(stream, IFormatCodec::TAG_CODEC_ID))
               : avcodec_find_encoder_by_name(wanted.c_str());
}

/// Finds everything that keeps a preset from being one.
class PresetChecker
{
public:
    PresetChecker(std::vector<PresetFault>& faults, std::size_t most) : m_faults(faults), m_most(most) {}

    void CheckPreset(const Property& preset, const Place& place)
    {
        if (preset.GetType() != PROPERTY_TYPE_GROUP)
        {
            Add(place, "expected a group, found " + ValueText(preset), preset);
            return;
        }
        std::size_t count = 0;
        const KeyRule* const rules = FileRules(count);
        Required(preset, IFormatFile::TAG_CONTAINER, "the name of a container, as \"mp4\"", place);
        Apply(rules, count, preset, place);
        CheckFileKeys(preset, place);
        const auto metadata = preset.FindChild(Conf::IFormat::TAG_METADATA);
        if (metadata != preset.end() && metadata->GetType() == PROPERTY_TYPE_GROUP)
        {
            CheckChildren(*metadata, place.Under(metadata->GetName()));
        }
        CheckStreams(preset, place);
    }

private:
    void Add(const Place& place, const std::string& reason, const Property& value,
             JobFault::Kind kind = JobFault::Setting)
    {
        // What a preset and a job both ask of a value is said once.
        const auto isSaid = [&](const PresetFault& fault) {
            return fault.value == &value && fault.place.key == place.key;
        };
        if (!IsFull() && std::none_of(m_faults.begin(), m_faults.end(), isSaid))
        {
            m_faults.push_back({place, reason, &value, "", kind});
        }
    }

    bool IsFull() const { return m_faults.size() >= m_most; }

    void AddMissing(const Place& place, const Property& group, const std::string& key,
                    const std::string& expected)
    {
        m_faults.push_back(
            {place.Under(key), "expected " + expected + ", found nothing", &group, key, JobFault::Setting});
    }

    void Apply(const KeyRule* rules, std::size_t count, const Property& group, const Place& place)
    {
        for (const KeyRule* rule = rules; rule != rules + count; ++rule)
        {
            const auto value = group.FindChild(*rule->key);
            const std::string fault = value == group.end() ? "" : FindFault(rule, 1, *value);
            if (!fault.empty())
            {
                Add(place.Under(*rule->key), fault, *value);
            }
        }
    }

    /// Null when it is missing.
    const Property* Required(const Property& group, const std::string& key, const std::string& expected,
                             const Place& place)
    {
        const auto child = group.FindChild(key);
        if (child == group.end())
        {
            AddMissing(place, group, key, expected);
            return nullptr;
        }
        return &*child;
    }

    void CheckFileKeys(const Property& preset, const Place& place)
    {
        const std::vector<std::string> known = KnownPresetKeys();
        for (const Property& value : preset)
        {
            if (!IsFull() && std::find(known.begin(), known.end(), value.GetName()) == known.end())
            {
                Add(place, "unknown key '" + value.GetName() + "'" + DidYouMean(value.GetName(), known),
                    value);
            }
        }
    }

    void CheckStreams(const Property& preset, const Place& place)
    {
        const std::string expected = "a group of at least one stream";
        const Property* const streams = Required(preset, IPreset::KEY_STREAMS, expected, place);
        if (streams == nullptr)
        {
            return;
        }
        const Place streamsPlace = place.Under(IPreset::KEY_STREAMS);
        if (streams->Count() == 0)
        {
            Add(streamsPlace,
                "expected " + expected + ", found " +
                    (streams->GetType() == PROPERTY_TYPE_GROUP ? "an empty one" : ValueText(*streams)),
                *streams);
            return;
        }
        for (auto stream = streams->begin(); stream != streams->end() && !IsFull(); ++stream)
        {
            CheckStream(*stream, streamsPlace);
        }
    }

    void CheckStream(const Property& stream, const Place& streamsPlace)
    {
        const std::optional<MediaType> mediaType = MediaTypeOf(stream, streamsPlace);
        const Place place = streamsPlace.Under(stream.GetName());
        if (!mediaType)
        {
            return;
        }
        if (stream.GetType() != PROPERTY_TYPE_GROUP)
        {
            Add(place, "expected a group of settings, found " + ValueText(stream), stream);
            return;
        }
        const Property* const codec =
            Required(stream, IFormatCodec::TAG_CODEC_ID, CodecKind(*mediaType), place);
        if (codec != nullptr && (codec->GetType() != PROPERTY_TYPE_STRING ||
                                 Conf::GetCodecMediaType(codec->GetString()) != *mediaType))
        {
            Add(place.Under(IFormatCodec::TAG_CODEC_ID),
                std::string("expected ") + CodecKind(*mediaType) + ", found " + ValueText(*codec) +
                    SuggestName(*codec),
                *codec);
        }
        std::size_t count = 0;
        const KeyRule* const rules = StreamRules(count);
        Apply(rules, count, stream, place);
        CheckSettings(stream, place);
        CheckOptions(stream, place);
    }

    std::optional<MediaType> MediaTypeOf(const Property& stream, const Place& place)
    {
        try
        {
            return IPreset::MediaTypeFromPresetStreamType(stream.GetName());
        }
        catch (const std::logic_error&)
        {
            Add(place,
                "expected a stream type (audio, video, subtitles_video, subtitles_text), found '" +
                    stream.GetName() + "'",
                stream);
            return std::nullopt;
        }
    }

    void CheckChildren(const Property& group, const Place& place)
    {
        for (const ChildFault& fault : FindChildFaults(group))
        {
            Add(place.Under(fault.child->GetName()), fault.reason, *fault.child);
        }
    }

    /// What a job asks of the same settings, so that none is lost on the way to it.
    void CheckSettings(const Property& stream, const Place& place)
    {
        for (const Property& setting : stream)
        {
            if (IsFull())
            {
                return;
            }
            const Place settingPlace = place.Under(setting.GetName());
            if (!IsSettingKnown(setting.GetName()))
            {
                Add(place, UnknownSettingText(setting.GetName()), setting);
            }
            const std::string fault = FindSettingFault(setting);
            if (!fault.empty())
            {
                Add(settingPlace, fault, setting);
            }
            if (setting.GetType() == PROPERTY_TYPE_GROUP)
            {
                CheckChildren(setting, settingPlace);
            }
        }
    }

    /// Which decoder there will be is known with the source.
    void CheckOptions(const Property& stream, const Place& place)
    {
        const auto encode = stream.FindChild(IFormatCodec::TAG_CODEC_OPTIONS_ENCODE);
        const AVCodec* const encoder = encode == stream.end() ? nullptr : EncoderOf(stream);
        if (encoder != nullptr && encode->GetType() == PROPERTY_TYPE_GROUP)
        {
            for (const Property& option : *encode)
            {
                AddOptionFault(CheckEncoderOption(*encoder, option.GetName(), option), *encode, option,
                               place);
            }
        }
        const auto analyze = stream.FindChild(IFormatCodec::TAG_CODEC_OPTIONS_ANALYZE);
        if (analyze != stream.end() && analyze->GetType() == PROPERTY_TYPE_GROUP)
        {
            for (const Property& option : *analyze)
            {
                AddOptionFault(CheckDecoderOption(nullptr, option.GetName(), option), *analyze, option,
                               place);
            }
        }
    }

    void AddOptionFault(const CheckedOption& checked, const Property& group, const Property& option,
                        const Place& place)
    {
        if (!checked.fault.empty())
        {
            Add(place.Under(group.GetName()).Under(option.GetName()), checked.fault, option,
                JobFault::Encoder);
        }
    }

    std::vector<PresetFault>& m_faults;
    std::size_t m_most;
};

/// The first fault of what a group holds.
std::string FindInnerFault(const Property& setting)
{
    const std::vector<ChildFault> faults =
        setting.GetType() == PROPERTY_TYPE_GROUP ? FindChildFaults(setting) : std::vector<ChildFault>();
    return faults.empty() ? "" : faults.front().reason;
}

} // namespace

std::string FindStreamSettingFault(const Property& setting)
{
    if (!IsSettingKnown(setting.GetName()))
    {
        return UnknownSettingText(setting.GetName());
    }
    std::size_t count = 0;
    const KeyRule* const rules = StreamRules(count);
    std::string fault = FindFault(rules, count, WithNumbers(setting));
    fault = fault.empty() ? FindSettingFault(WithNumbers(setting)) : fault;
    return fault.empty() ? FindInnerFault(setting) : fault;
}

std::string FindFileSettingFault(const Property& setting)
{
    std::size_t count = 0;
    const KeyRule* const rules = FileRules(count);
    const std::string fault = FindFault(rules, count, setting);
    return fault.empty() ? FindInnerFault(setting) : fault;
}

ExpectedValues ExpectedInPreset()
{
    std::size_t count = 0;
    const KeyRule* const rules = FileRules(count);
    return TextsOf(rules, count);
}

ExpectedValues ExpectedInStream()
{
    std::size_t count = 0;
    const KeyRule* const rules = StreamRules(count);
    return TextsOf(rules, count);
}

std::vector<std::string> KnownPresetKeys()
{
    return {IPreset::USER_PREFIX,       IPreset::KEY_USER_PRESET, IPreset::KEY_DEFAULT_PRESET,
            IPreset::IS_TEMPORARY,      IPreset::KEY_NAME,        IPreset::KEY_ID,
            IPreset::KEY_BASE_ID,       IPreset::KEY_TYPE_ID,     IPreset::KEY_FORMAT,
            IPreset::KEY_STREAMS,       IPreset::KEY_FILTERS,     IFormatFile::TAG_CONTAINER,
            Conf::IFormat::TAG_METADATA};
}

std::vector<PresetFault> FindPresetFaults(const Property& preset, const std::string& file, std::size_t most)
{
    std::vector<PresetFault> faults;
    PresetChecker(faults, most).CheckPreset(preset, Place{file}.At(preset.GetName()));
    return faults;
}

void CheckPreset(const Property& preset, const std::string& file)
{
    const std::vector<PresetFault> faults = FindPresetFaults(preset, file, 1);
    if (!faults.empty())
    {
        ZELNOR_THROW("Media/Presets/PresetRules",
                     MakeError<PresetFileException>(faults.front().place, faults.front().reason));
    }
}

} // namespace Zelnor::Media
