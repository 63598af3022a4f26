#include "Media/Planning/SettingPaths.h"

#include "Media/Jobs/JobKeys.h"
#include "Media/Options/SettingRules.h"
#include "Media/Options/ValueNames.h"
#include "Media/Planning/SettingOverrides.h"

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"

#include <algorithm>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormat;
using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecSubtitle;
using Conf::IFormatCodecVideo;
using Conf::IFormatFile;
using Conf::IPreset;
using Names = std::vector<std::string>;

bool Has(const Names& names, const std::string& name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

// clang-format off
/// Keys that streams of all types have.
const Names& SharedKeys()
{
    static const Names s_keys = {
#define ZELNOR_TEXT(name, text) IFormatCodec::name,
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
        IFormat::TAG_METADATA};
    return s_keys;
}

/// The values of the constants whose names begin so.
Names VideoConstants(std::string_view prefix)
{
    Names values;
    const auto add = [&](std::string_view name, const std::string& value) {
        if (name.substr(0, prefix.size()) == prefix)
        {
            values.push_back(value);
        }
    };
#define ZELNOR_TEXT(name, text) add(#name, IFormatCodecVideo::name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
    return values;
}

Names AudioConstants(std::string_view prefix)
{
    Names values;
    const auto add = [&](std::string_view name, const std::string& value) {
        if (name.substr(0, prefix.size()) == prefix)
        {
            values.push_back(value);
        }
    };
#define ZELNOR_TEXT(name, text) add(#name, IFormatCodecAudio::name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
    return values;
}
// clang-format on

/// Those that a stream of the type can have.
Names KeysOf(const std::string& streamType)
{
    const Names audio = {IFormatCodecAudio::TAG_SAMPLE_RATE, IFormatCodecAudio::TAG_SAMPLE_FORMAT,
                         IFormatCodecAudio::TAG_LAYOUT, IFormatCodecAudio::TAG_FRAME_SIZE};
    const Names subtitle = {IFormatCodecSubtitle::TAG_CHARSET_ENCODING};
    Names keys;
    for (const std::string& key : KnownSettings())
    {
        const bool isFitting =
            Has(SharedKeys(), key) ||
            (streamType == IPreset::STREAM_TYPE_AUDIO   ? Has(audio, key)
             : streamType == IPreset::STREAM_TYPE_VIDEO ? !Has(audio, key) && !Has(subtitle, key)
                                                        : Has(subtitle, key));
        if (isFitting)
        {
            keys.push_back(key);
        }
    }
    return keys;
}

Names CodecsOfType(const std::string& streamType)
{
    Names codecs;
    for (const auto& [number, codec] : Conf::GetFFCodecsMap())
    {
        if (Conf::GetCodecMediaType(codec) == IPreset::MediaTypeFromPresetStreamType(streamType))
        {
            codecs.push_back(codec);
        }
    }
    return codecs;
}

Names WordsOf(const std::string& key)
{
    if (key == IFormatCodec::TAG_PRESET || key == IFormatCodecVideo::TAG_X264_TUNE)
    {
        const std::string suffix = key == IFormatCodec::TAG_PRESET ? "_PRESET_" : "_TUNE_";
        return VideoConstants("TAG_X264" + suffix);
    }
    if (key == IFormatCodec::TAG_MULTIPASS_ENCODING)
    {
        return {IFormatCodec::TAG_ONE_PASS_MODE, IFormatCodec::TAG_TWO_PASS_MODE};
    }
    return key == JobKeys::kColorRange ? Names{"tv", "pc"} : NamesOfValues(key);
}

Names ValuesOf(const std::string& streamType, const std::string& key)
{
    if (key == IFormatCodec::TAG_CODEC_ID)
    {
        return CodecsOfType(streamType);
    }
    if (key == IFormatCodec::TAG_PROFILE)
    {
        return streamType == IPreset::STREAM_TYPE_VIDEO   ? VideoConstants("TAG_X264_PROFILE_")
               : streamType == IPreset::STREAM_TYPE_AUDIO ? AudioConstants("TAG_AAC_PROFILE_")
                                                          : Names();
    }
    return Has(KeysOf(streamType), key) ? WordsOf(key) : Names();
}

/// What follows a path: a value, or the name of a member of the group.
std::string EndOf(const std::string& key)
{
    const bool isGroup = key == IFormat::TAG_METADATA || key == IFormatCodec::TAG_CODEC_OPTIONS_ENCODE ||
                         key == IFormatCodec::TAG_CODEC_OPTIONS_ANALYZE;
    return isGroup ? "." : "=";
}

/// "audio[1]" is of the type "audio"; empty when there is no such type.
std::string StreamTypeOf(const std::string& text)
{
    const std::string type = text.substr(0, text.find('['));
    return Has(SettingStreamTypes(), type) ? type : "";
}

Names Paths(const std::string& typed)
{
    const std::size_t dot = typed.find('.');
    const std::string before = typed.substr(0, dot);
    Names paths;
    if (dot == std::string::npos)
    {
        for (const std::string& type : SettingStreamTypes())
        {
            paths.push_back(type + ".");
        }
        paths.push_back(IFormatFile::TAG_CONTAINER + "=");
        paths.push_back(IFormat::TAG_METADATA + ".");
    }
    else if (const std::string type = StreamTypeOf(before); !type.empty())
    {
        for (const std::string& key : KeysOf(type))
        {
            paths.push_back(before + "." + key + EndOf(key));
        }
    }
    return paths;
}

Names Values(const std::string& path)
{
    const std::size_t dot = path.find('.');
    const std::string type = StreamTypeOf(path.substr(0, dot));
    const bool isOfStream = dot != std::string::npos && !type.empty();
    Names values = path == IFormatFile::TAG_CONTAINER ? NamesOfValues(path)
                   : isOfStream                       ? ValuesOf(type, path.substr(dot + 1))
                                                      : Names();
    for (std::string& value : values)
    {
        value.insert(0, path + "=");
    }
    return values;
}

} // namespace

std::vector<std::string> CompleteSetting(const std::string& typed)
{
    const std::size_t equals = typed.find('=');
    Names found = equals == std::string::npos ? Paths(typed) : Values(typed.substr(0, equals));
    found.erase(std::remove_if(found.begin(), found.end(),
                               [&typed](const std::string& candidate) {
                                   return candidate.compare(0, typed.size(), typed) != 0;
                               }),
                found.end());
    return found;
}

} // namespace Zelnor::Media
