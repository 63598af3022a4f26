#include "Media/Presets/PresetStore.h"

#include "Media/ErrorText.h"
#include "Media/MediaException.h"
#include "Media/NearestNames.h"
#include "Media/Presets/PresetFile.h"
#include "Media/RecordText.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"

#include <algorithm>
#include <exception>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Conf::IPreset;
using Core::Property;

/// 0 when the stream leaves it open.
long long IntegerUnder(const Property& stream, const std::string& key)
{
    const auto child = stream.FindChild(key);
    return child != stream.end() && child->GetType() == PROPERTY_TYPE_INT64 ? child->GetInt64() : 0;
}

std::string CodecName(const Property& stream)
{
    std::string name = BareName(TextUnder(stream, IFormatCodec::TAG_CODEC_ID));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return name;
}

std::string DescribeStream(const Property& stream)
{
    std::string text = stream.GetName() + " " + CodecName(stream);
    const long long width = IntegerUnder(stream, IFormatCodecVideo::TAG_WIDTH);
    const long long height = IntegerUnder(stream, IFormatCodecVideo::TAG_HEIGHT);
    if (width > 0 && height > 0)
    {
        text += " " + std::to_string(width) + "x" + std::to_string(height);
    }
    const std::string layout = TextUnder(stream, IFormatCodecAudio::TAG_LAYOUT);
    text += layout.empty() ? "" : " " + layout;
    const long long sampleRate = IntegerUnder(stream, IFormatCodecAudio::TAG_SAMPLE_RATE);
    text += sampleRate > 0 ? ", " + std::to_string(sampleRate) + " Hz" : "";
    const long long bitrate = IntegerUnder(stream, IFormatCodec::TAG_BITRATE);
    constexpr long long kKilobit = 1000;
    if (bitrate > 0)
    {
        text += bitrate % kKilobit == 0 ? ", " + std::to_string(bitrate / kKilobit) + " kbit/s"
                                        : ", " + std::to_string(bitrate) + " bit/s";
    }
    return text;
}

StoredPreset Describe(const std::string& name, const std::vector<ioPath>& folders)
{
    StoredPreset stored = {name, ""};
    try
    {
        stored.file = FindPreset(name, folders);
        const auto preset = PresetFile::Open(stored.file);
        const Property& record = preset->GetProperty();
        stored.title = TextUnder(record, IPreset::KEY_NAME);
        stored.container = TextUnder(record, Conf::IFormatFile::TAG_CONTAINER);
        stored.makes = DescribePreset(record);
    }
    catch (const PresetFileException&)
    {
        stored.fault = ErrorText(std::current_exception());
    }
    return stored;
}

} // namespace

std::string DescribePreset(const Property& preset)
{
    std::string text = TextUnder(preset, Conf::IFormatFile::TAG_CONTAINER);
    const auto streams = preset.FindChild(IPreset::KEY_STREAMS);
    if (streams == preset.end() || streams->GetType() != PROPERTY_TYPE_GROUP)
    {
        return text;
    }
    for (const Property& stream : *streams)
    {
        if (stream.GetType() == PROPERTY_TYPE_GROUP)
        {
            text += "; " + DescribeStream(stream);
        }
    }
    return text;
}

std::vector<StoredPreset> ListStoredPresets(const std::vector<ioPath>& folders)
{
    std::vector<StoredPreset> presets;
    for (const std::string& name : ListPresets(folders))
    {
        presets.push_back(Describe(name, folders));
    }
    return presets;
}

} // namespace Zelnor::Media
