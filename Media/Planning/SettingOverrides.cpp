#include "Media/Planning/SettingOverrides.h"

#include "Media/Jobs/JobKeys.h"
#include "Media/MediaException.h"
#include "Media/NearestNames.h"
#include "Media/Presets/PresetRules.h"

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <limits>
#include <optional>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormat;
using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Conf::IFormatFile;
using Conf::IPreset;
using Core::Property;

constexpr const char* kUnit = "Media/Planning/SettingOverrides";
constexpr std::size_t kEveryStream = std::numeric_limits<std::size_t>::max();

[[noreturn]] void Refuse(const std::string& path, const std::string& reason)
{
    ZELNOR_THROW(kUnit, MakeError<PlanException>(Place().At(path), reason));
}

/// The parts of a path.
struct Path
{
    std::string streamType = {}; ///< empty: of the file
    std::size_t position = kEveryStream;
    std::string key = {};
    std::string child = {}; ///< in the group `key`; empty: the key is not a group's
};

template <class Number>
std::optional<Number> ParseNumber(std::string_view text)
{
    Number number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return !text.empty() && result.ec == std::errc() && result.ptr == text.data() + text.size()
               ? std::optional(number)
               : std::nullopt;
}

/// "audio[1]": takes the number off.
std::size_t TakePosition(const std::string& whole, std::string& type)
{
    const std::size_t bracket = type.find('[');
    if (bracket == std::string::npos)
    {
        return kEveryStream;
    }
    const std::string_view rest = std::string_view(type).substr(bracket + 1);
    const auto position = rest.empty() || rest.back() != ']'
                              ? std::nullopt
                              : ParseNumber<unsigned int>(rest.substr(0, rest.size() - 1));
    if (!position)
    {
        Refuse(whole, "expected the position of a stream, as audio[1]");
    }
    type.erase(bracket);
    return *position;
}

/// Cuts a child's name off the key of a group; keys of groups may hold dots themselves.
void TakeChild(Path& path)
{
    for (const std::string* const group : {&IFormat::TAG_METADATA, &IFormatCodec::TAG_CODEC_OPTIONS_ENCODE,
                                           &IFormatCodec::TAG_CODEC_OPTIONS_ANALYZE})
    {
        if (path.key.compare(0, group->size() + 1, *group + ".") == 0)
        {
            path.child = path.key.substr(group->size() + 1);
            path.key = *group;
            return;
        }
    }
}

Path ParsePath(const std::string& text)
{
    Path path;
    const std::size_t dot = text.find('.');
    std::string first = text.substr(0, dot);
    if (first == IFormatFile::TAG_CONTAINER || first == IFormat::TAG_METADATA)
    {
        path.key = text;
    }
    else
    {
        path.position = TakePosition(text, first);
        const std::vector<std::string>& types = SettingStreamTypes();
        if (dot == std::string::npos || std::find(types.begin(), types.end(), first) == types.end())
        {
            std::vector<std::string> known = types;
            known.insert(known.end(), {IFormatFile::TAG_CONTAINER, IFormat::TAG_METADATA});
            Refuse(text, "expected a path as video.bitrate, metadata.title or container" +
                             (dot == std::string::npos ? "" : DidYouMean(first, known)));
        }
        path.streamType = first;
        path.key = text.substr(dot + 1);
    }
    TakeChild(path);
    return path;
}

/// The value as the path's record would hold it.
Property RecordFor(const Path& path, const Property& value)
{
    if (path.child.empty())
    {
        Property record;
        record.SetChild(path.key, value);
        return record[path.key];
    }
    Property group(path.key);
    group.SetChild(path.child, value);
    return group;
}

std::string FaultOf(const Path& path, const Property& value)
{
    const Property setting = RecordFor(path, value);
    return path.streamType.empty() ? FindFileSettingFault(setting) : FindStreamSettingFault(setting);
}

/// What the text can be, the most special first.
std::vector<Property> ReadingsOf(const std::string& text)
{
    std::vector<Property> readings;
    const std::size_t slash = text.find('/');
    const auto number = ParseNumber<long long>(std::string_view(text).substr(0, slash));
    if (number && slash == std::string::npos)
    {
        readings.emplace_back("", *number);
        readings.emplace_back("", Property::Ratio(*number));
    }
    else if (number)
    {
        const auto divisor = ParseNumber<int>(std::string_view(text).substr(slash + 1));
        if (divisor && *divisor > 0)
        {
            readings.emplace_back("", Property::Ratio(*number, *divisor));
        }
    }
    readings.emplace_back("", text);
    return readings;
}

/// Settings that mean something for one codec only.
bool IsAboutCodec(const std::string& key)
{
    const std::string* const keys[] = {&IFormatCodec::TAG_PROFILE,
                                       &IFormatCodec::TAG_PRESET,
                                       &IFormatCodec::TAG_PREFERREDIMPL,
                                       &IFormatCodec::TAG_CODEC_OPTIONS_ENCODE,
                                       &IFormatCodec::TAG_FOURCC,
                                       &IFormatCodec::TAG_MULTIPASS_ENCODING,
                                       &IFormatCodec::TAG_NAME,
                                       &IFormatCodecVideo::TAG_X264_TUNE,
                                       &IFormatCodecVideo::TAG_X264_OPTS,
                                       &IFormatCodecVideo::TAG_X264_SLICE_MAX_SIZE,
                                       &IFormatCodecVideo::TAG_MAX_B_FRAME_SEQUENCE,
                                       &IFormatCodecVideo::TAG_MOTION_SRCH_RNG,
                                       &Conf::TAG_PIX_FMT,
                                       &IFormatCodecAudio::TAG_SAMPLE_FORMAT};
    return key == JobKeys::kPixelFormat ||
           std::any_of(std::begin(keys), std::end(keys),
                       [&key](const std::string* known) { return *known == key; });
}

std::vector<std::string> CodecIds()
{
    std::vector<std::string> names;
    for (const auto& [number, textId] : Conf::GetFFCodecsMap())
    {
        names.push_back(textId);
    }
    return names;
}

/// Builds the record.
class Overrider
{
public:
    Overrider(const Property& preset, std::vector<std::string>& notes) : m_preset(preset), m_notes(notes) {}

    void SetCodec(const std::string& codecId)
    {
        const std::string type = StreamTypeOf(codecId);
        for (Property* const stream : Find({type, kEveryStream, IFormatCodec::TAG_CODEC_ID, ""}, codecId))
        {
            ChangeCodec(*stream, codecId);
        }
    }

    void Set(const std::string& text, const Property& value)
    {
        const Path path = ParsePath(text);
        const std::string fault = FaultOf(path, value);
        if (!fault.empty())
        {
            Refuse(text, fault);
        }
        for (Property* const record : Find(path, text))
        {
            if (path.key == IFormatCodec::TAG_CODEC_ID)
            {
                ChangeCodec(*record, value.GetString());
                continue;
            }
            if (path.child.empty())
            {
                record->SetChild(path.key, value);
                continue;
            }
            Property& group =
                record->ChildExists(path.key) ? (*record)[path.key] : record->SetChild(path.key);
            group.SetChild(path.child, value);
        }
    }

    Property Take() { return std::move(m_preset); }

private:
    static std::string StreamTypeOf(const std::string& codecId)
    {
        const auto mediaType = Conf::GetCodecMediaType(codecId);
        if (mediaType != MEDIA_TYPE_VIDEO && mediaType != MEDIA_TYPE_AUDIO)
        {
            Refuse(IFormatCodec::TAG_CODEC_ID,
                   "expected a video or an audio codec, as CODEC_ID_H264, found '" + codecId + "'" +
                       DidYouMean(codecId, CodecIds()));
        }
        return mediaType == MEDIA_TYPE_VIDEO ? IPreset::STREAM_TYPE_VIDEO : IPreset::STREAM_TYPE_AUDIO;
    }

    void ChangeCodec(Property& stream, const std::string& codecId)
    {
        if (stream[IFormatCodec::TAG_CODEC_ID].GetString() == codecId)
        {
            return;
        }
        std::string left;
        Property changed(stream.GetName());
        for (const Property& setting : stream)
        {
            if (!IsAboutCodec(setting.GetName()))
            {
                changed.Add(setting);
            }
            else if (setting.GetType() != PROPERTY_TYPE_GROUP || setting.Count() != 0)
            {
                left += (left.empty() ? "" : ", ") + setting.GetName();
            }
        }
        if (!left.empty())
        {
            m_notes.push_back("The preset's " + left + " for " + stream.GetName() + " belong to " +
                              stream[IFormatCodec::TAG_CODEC_ID].GetString() + ", and are not used for " +
                              codecId);
        }
        changed.SetChildT(IFormatCodec::TAG_CODEC_ID, codecId);
        stream = std::move(changed);
    }

    /// The records that the path means.
    std::vector<Property*> Find(const Path& path, const std::string& text)
    {
        if (path.streamType.empty())
        {
            return {&m_preset};
        }
        std::vector<Property*> found;
        for (Property& stream : m_preset[IPreset::KEY_STREAMS])
        {
            if (stream.GetName() == path.streamType)
            {
                found.push_back(&stream);
            }
        }
        if (found.empty())
        {
            Refuse(text, "preset '" + m_preset.GetName() + "' has no settings for " + path.streamType);
        }
        if (path.position == kEveryStream)
        {
            return found;
        }
        if (path.position >= found.size())
        {
            Refuse(text, "preset '" + m_preset.GetName() + "' has only " + std::to_string(found.size()) +
                             " of them, from 0 on");
        }
        return {found[path.position]};
    }

    Property m_preset;
    std::vector<std::string>& m_notes;
};

} // namespace

const std::vector<std::string>& SettingStreamTypes()
{
    static const std::vector<std::string> s_types = {IPreset::STREAM_TYPE_VIDEO, IPreset::STREAM_TYPE_AUDIO,
                                                     IPreset::STREAM_TYPE_SUBTITLES_VIDEO,
                                                     IPreset::STREAM_TYPE_SUBTITLES_TEXT};
    return s_types;
}

SettingOverride ParseSetting(const std::string& text)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
    {
        Refuse(text, "expected a setting as video.bitrate=4000000");
    }
    SettingOverride setting;
    setting.path = text.substr(0, equals);
    const Path path = ParsePath(setting.path);
    const std::vector<Property> readings = ReadingsOf(text.substr(equals + 1));
    const auto fitting = std::find_if(readings.begin(), readings.end(), [&path](const Property& reading) {
        return FaultOf(path, reading).empty();
    });
    if (fitting == readings.end())
    {
        Refuse(setting.path, FaultOf(path, readings.front()));
    }
    setting.value = *fitting;
    return setting;
}

Property ApplyOverrides(const Property& preset, const JobRequest& request, std::vector<std::string>& notes)
{
    Overrider overrider(preset, notes);
    for (const std::string& codec : request.codecs)
    {
        overrider.SetCodec(codec);
    }
    if (request.frameRate)
    {
        overrider.Set(IPreset::STREAM_TYPE_VIDEO + "." + IFormatCodecVideo::TAG_FPS,
                      Property("", *request.frameRate));
    }
    for (const SettingOverride& setting : request.settings)
    {
        overrider.Set(setting.path, setting.value);
    }
    return overrider.Take();
}

bool IsOverridden(const std::vector<SettingOverride>& settings, const std::string& streamType,
                  std::size_t position, const std::string& key)
{
    return std::any_of(settings.begin(), settings.end(), [&](const SettingOverride& setting) {
        const Path path = ParsePath(setting.path);
        return path.streamType == streamType && path.key == key &&
               (path.position == kEveryStream || path.position == position);
    });
}

} // namespace Zelnor::Media
