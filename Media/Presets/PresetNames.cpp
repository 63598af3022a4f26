#include "Media/Presets/PresetNames.h"

#include "Media/NearestNames.h"

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Conf/Interfaces/ServiceRecords.h"

#include <algorithm>
#include <vector>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatFile;
using Conf::IPreset;
using Core::Property;
using Names = std::vector<std::string>;

Names PixelFormatNames()
{
    Names names;
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        names.push_back(record.name);
    }
    return names;
}

Names SampleFormatNames()
{
    Names names;
    for (int i = Conf::SAMPLE_FMT_U8; i <= Conf::SAMPLE_FMT_DBLP; ++i)
    {
        names.push_back(Conf::SampleFmtRecord::Find(static_cast<Conf::SampleFormats>(i))->textId);
    }
    return names;
}

Names LayoutNames()
{
    Names names;
    for (int i = Conf::CH_LAYOUT_MONO; i <= Conf::CH_LAYOUT_STEREO_DOWNMIX; ++i)
    {
        names.push_back(*Conf::LayoutRecord::Find(static_cast<Conf::ChannelLayout>(i))->textId);
    }
    return names;
}

Names CodecNames()
{
    Names names;
    for (const auto& [number, textId] : Conf::GetFFCodecsMap())
    {
        names.push_back(textId);
    }
    return names;
}

Names BitrateModes()
{
    return {IFormatCodec::TAG_BITRATE_MODE_CBR, IFormatCodec::TAG_BITRATE_MODE_CBR_AUTO,
            IFormatCodec::TAG_BITRATE_MODE_VBR};
}

/// A key, and what its values may be called.
struct Row
{
    const std::string* key;
    Names (*names)();
};

void Resolve(Property& setting)
{
    if (setting.GetName() != Conf::TAG_PIX_FMT || setting.GetType() != PROPERTY_TYPE_STRING)
    {
        return;
    }
    const std::string name = BareName(setting.GetString());
    const auto& records = PixFmtDescription::s_pixelFormatRecords;
    const auto found = std::find_if(records.begin(), records.end(),
                                    [&name](const auto& record) { return BareName(record.name) == name; });
    if (found != records.end())
    {
        setting = static_cast<long long>(found->pixFmt);
    }
}

} // namespace

void ResolveNames(Property& preset)
{
    // A preset that is not of this form is refused later.
    const auto streams = preset.GetType() == PROPERTY_TYPE_GROUP && preset.ChildExists(IPreset::KEY_STREAMS)
                             ? &preset[IPreset::KEY_STREAMS]
                             : nullptr;
    if (streams == nullptr || streams->GetType() != PROPERTY_TYPE_GROUP)
    {
        return;
    }
    for (Property& stream : *streams)
    {
        if (stream.GetType() == PROPERTY_TYPE_GROUP)
        {
            for (Property& setting : stream)
            {
                Resolve(setting);
            }
        }
    }
}

Property WithNumbers(Property setting)
{
    Resolve(setting);
    return setting;
}

std::string SuggestName(const Property& setting)
{
    static const Row s_rows[] = {
        {&IFormatFile::TAG_CONTAINER, [] { return Conf::GetContainerList(); }},
        {&IFormatCodec::TAG_CODEC_ID, CodecNames},
        {&IFormatCodec::TAG_BITRATE_MODE, BitrateModes},
        {&Conf::TAG_PIX_FMT, PixelFormatNames},
        {&IFormatCodecAudio::TAG_SAMPLE_FORMAT, SampleFormatNames},
        {&IFormatCodecAudio::TAG_LAYOUT, LayoutNames},
    };
    if (setting.GetType() != PROPERTY_TYPE_STRING)
    {
        return "";
    }
    for (const Row& row : s_rows)
    {
        if (*row.key == setting.GetName())
        {
            const Names names = row.names();
            // A codec of another kind is a name, too.
            const bool isKnown = std::find(names.begin(), names.end(), setting.GetString()) != names.end();
            return isKnown ? "" : DidYouMean(setting.GetString(), names);
        }
    }
    return "";
}

} // namespace Zelnor::Media
