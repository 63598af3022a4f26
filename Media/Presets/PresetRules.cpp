#include "Media/Presets/PresetRules.h"

#include "Media/MediaException.h"
#include "Media/Options/OptionRules.h"
#include "Media/Options/SettingRules.h"
#include "Media/Presets/PresetNames.h"
#include "Media/Probe/FFmpegNames.h"
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

constexpr const char* kUnit = "Media/Presets/PresetRules";

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
struct Rule
{
    const std::string* key;
    PropertyTypes type;
    bool (*accepts)(const Property& value);
    const char* expected;
};

const Rule* FileRules(std::size_t& count)
{
    static const Rule s_rules[] = {
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

const Rule* StreamRules(std::size_t& count)
{
    constexpr const char* kNumber = "a positive integer";
    constexpr const char* kShort = "an integer from 1 to 65535";
    static const Rule s_rules[] = {
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

[[noreturn]] void Refuse(const Place& place, const std::string& reason)
{
    ZELNOR_THROW(kUnit, MakeError<PresetFileException>(place, reason));
}

[[noreturn]] void Refuse(const Place& place, const std::string& expected, const std::string& found)
{
    Refuse(place, "expected " + expected + ", found " + found);
}

/// Why the value is not as one of the rules says; empty when it is, or no rule is about its key.
std::string FindFault(const Rule* rules, std::size_t count, const Property& value)
{
    for (const Rule* rule = rules; rule != rules + count; ++rule)
    {
        if (*rule->key == value.GetName() && (value.GetType() != rule->type || !rule->accepts(value)))
        {
            return std::string("expected ") + rule->expected + ", found " + ValueText(value) +
                   SuggestName(value);
        }
    }
    return "";
}

void Apply(const Rule* rules, std::size_t count, const Property& group, const Place& place)
{
    for (const Rule* rule = rules; rule != rules + count; ++rule)
    {
        const auto value = group.FindChild(*rule->key);
        const std::string fault = value == group.end() ? "" : FindFault(rule, 1, *value);
        if (!fault.empty())
        {
            Refuse(place.Under(*rule->key), fault);
        }
    }
}

const Property& Required(const Property& group, const std::string& key, const std::string& expected,
                         const Place& place)
{
    const auto child = group.FindChild(key);
    if (child == group.end())
    {
        Refuse(place.Under(key), expected, "nothing");
    }
    return *child;
}

MediaType MediaTypeOf(const Property& stream, const Place& place)
{
    try
    {
        return IPreset::MediaTypeFromPresetStreamType(stream.GetName());
    }
    catch (const std::logic_error&)
    {
        Refuse(place, "a stream type (audio, video, subtitles_video, subtitles_text)",
               "'" + stream.GetName() + "'");
    }
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

void CheckChildren(const Property& group, const Place& place)
{
    for (const ChildFault& fault : FindChildFaults(group))
    {
        Refuse(place.Under(fault.child->GetName()), fault.reason);
    }
}

/// Keys of a preset that are not of the file to make, and those of the file.
bool IsFileKeyKnown(const std::string& key)
{
    const std::string* const keys[] = {
        &IPreset::USER_PREFIX,       &IPreset::KEY_USER_PRESET, &IPreset::KEY_DEFAULT_PRESET,
        &IPreset::IS_TEMPORARY,      &IPreset::KEY_NAME,        &IPreset::KEY_ID,
        &IPreset::KEY_BASE_ID,       &IPreset::KEY_TYPE_ID,     &IPreset::KEY_FORMAT,
        &IPreset::KEY_STREAMS,       &IPreset::KEY_FILTERS,     &IFormatFile::TAG_CONTAINER,
        &Conf::IFormat::TAG_METADATA};
    return std::any_of(std::begin(keys), std::end(keys),
                       [&key](const std::string* known) { return *known == key; });
}

/// What a job asks of the same settings, so that none is lost on the way to it.
void CheckSettings(const Property& stream, const Place& place)
{
    for (const Property& setting : stream)
    {
        const Place settingPlace = place.Under(setting.GetName());
        if (!IsSettingKnown(setting.GetName()))
        {
            Refuse(place, UnknownSettingText(setting.GetName()));
        }
        const std::string fault = FindSettingFault(setting);
        if (!fault.empty())
        {
            Refuse(settingPlace, fault);
        }
        if (setting.GetType() == PROPERTY_TYPE_GROUP)
        {
            CheckChildren(setting, settingPlace);
        }
    }
}

/// The encoder that a job of the preset will use; null when it is not there, which the job says.
const AVCodec* EncoderOf(const Property& stream)
{
    const auto wanted = stream.FindChild(IFormatCodec::TAG_PREFERREDIMPL);
    return wanted == stream.end() || wanted->GetString() == IFormatCodec::ENCODER_FFMPEG_IMPL
               ? FindEncoder(stream[IFormatCodec::TAG_CODEC_ID].GetString())
               : avcodec_find_encoder_by_name(wanted->GetString().c_str());
}

/// Which decoder there will be is known with the source.
void CheckOptions(const Property& stream, const Place& place)
{
    const auto encode = stream.FindChild(IFormatCodec::TAG_CODEC_OPTIONS_ENCODE);
    const AVCodec* const encoder = encode == stream.end() ? nullptr : EncoderOf(stream);
    if (encoder != nullptr)
    {
        for (const Property& option : *encode)
        {
            const CheckedOption checked = CheckEncoderOption(*encoder, option.GetName(), option);
            if (!checked.fault.empty())
            {
                Refuse(place.Under(encode->GetName()).Under(option.GetName()), checked.fault);
            }
        }
    }
    const auto analyze = stream.FindChild(IFormatCodec::TAG_CODEC_OPTIONS_ANALYZE);
    if (analyze == stream.end())
    {
        return;
    }
    for (const Property& option : *analyze)
    {
        const CheckedOption checked = CheckDecoderOption(nullptr, option.GetName(), option);
        if (!checked.fault.empty())
        {
            Refuse(place.Under(analyze->GetName()).Under(option.GetName()), checked.fault);
        }
    }
}

void CheckStream(const Property& stream, const Place& streamsPlace)
{
    const MediaType mediaType = MediaTypeOf(stream, streamsPlace);
    const Place place = streamsPlace.Under(stream.GetName());
    if (stream.GetType() != PROPERTY_TYPE_GROUP)
    {
        Refuse(place, "a group of settings", ValueText(stream));
    }
    const Property& codec = Required(stream, IFormatCodec::TAG_CODEC_ID, CodecKind(mediaType), place);
    if (codec.GetType() != PROPERTY_TYPE_STRING || Conf::GetCodecMediaType(codec.GetString()) != mediaType)
    {
        Refuse(place.Under(IFormatCodec::TAG_CODEC_ID), CodecKind(mediaType),
               ValueText(codec) + SuggestName(codec));
    }
    std::size_t count = 0;
    const Rule* const rules = StreamRules(count);
    Apply(rules, count, stream, place);
    CheckSettings(stream, place);
    CheckOptions(stream, place);
}

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
    const Rule* const rules = StreamRules(count);
    std::string fault = FindFault(rules, count, WithNumbers(setting));
    fault = fault.empty() ? FindSettingFault(WithNumbers(setting)) : fault;
    return fault.empty() ? FindInnerFault(setting) : fault;
}

std::string FindFileSettingFault(const Property& setting)
{
    std::size_t count = 0;
    const Rule* const rules = FileRules(count);
    const std::string fault = FindFault(rules, count, setting);
    return fault.empty() ? FindInnerFault(setting) : fault;
}

void CheckPreset(const Property& preset, const std::string& file)
{
    const Place place = Place{file}.At(preset.GetName());
    if (preset.GetType() != PROPERTY_TYPE_GROUP)
    {
        Refuse(place, "a group", ValueText(preset));
    }
    std::size_t count = 0;
    const Rule* const rules = FileRules(count);
    Required(preset, IFormatFile::TAG_CONTAINER, "the name of a container, as \"mp4\"", place);
    Apply(rules, count, preset, place);
    for (const Property& value : preset)
    {
        if (!IsFileKeyKnown(value.GetName()))
        {
            Refuse(place, "unknown key '" + value.GetName() + "'");
        }
    }
    const auto metadata = preset.FindChild(Conf::IFormat::TAG_METADATA);
    if (metadata != preset.end())
    {
        CheckChildren(*metadata, place.Under(metadata->GetName()));
    }
    const std::string expected = "a group of at least one stream";
    const Property& streams = Required(preset, IPreset::KEY_STREAMS, expected, place);
    if (streams.Count() == 0)
    {
        Refuse(place.Under(IPreset::KEY_STREAMS), expected,
               streams.GetType() == PROPERTY_TYPE_GROUP ? "an empty one" : ValueText(streams));
    }
    for (const Property& stream : streams)
    {
        CheckStream(stream, place.Under(IPreset::KEY_STREAMS));
    }
}

} // namespace Zelnor::Media
