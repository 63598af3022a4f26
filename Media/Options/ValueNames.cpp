#include "Media/Options/ValueNames.h"

#include "Media/Jobs/JobKeys.h"
#include "Media/NearestNames.h"

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Conf/Interfaces/ServiceRecords.h"

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatFile;
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

Names Deinterlacings()
{
    return {JobKeys::kDeinterlaceOff, JobKeys::kDeinterlaceEveryFrame, JobKeys::kDeinterlaceEveryField,
            JobKeys::kDeinterlaceKeep};
}

/// A key, and what its values may be called.
struct NamedValues
{
    std::string key;
    Names (*names)();
};

const std::vector<NamedValues>& ValuesWithNames()
{
    static const std::vector<NamedValues> s_rows = {
        {IFormatFile::TAG_CONTAINER, [] { return Conf::GetContainerList(); }},
        {IFormatCodec::TAG_CODEC_ID, CodecNames},
        {IFormatCodec::TAG_BITRATE_MODE, BitrateModes},
        {Conf::TAG_PIX_FMT, PixelFormatNames},
        {IFormatCodecAudio::TAG_SAMPLE_FORMAT, SampleFormatNames},
        {IFormatCodecAudio::TAG_LAYOUT, LayoutNames},
        {JobKeys::kDeinterlace, Deinterlacings},
    };
    return s_rows;
}

} // namespace

std::vector<std::string> NamesOfValues(const std::string& key)
{
    const auto row = std::find_if(ValuesWithNames().begin(), ValuesWithNames().end(),
                                  [&key](const NamedValues& known) { return known.key == key; });
    return row == ValuesWithNames().end() ? Names() : row->names();
}

std::vector<std::string> NearestValues(const Core::Property* setting)
{
    if (setting == nullptr || setting->GetType() != PROPERTY_TYPE_STRING)
    {
        return {};
    }
    const Names names = NamesOfValues(setting->GetName());
    // A codec of another kind is a name, too, and so is the one that stands for any.
    const bool isKnown = std::find(names.begin(), names.end(), setting->GetString()) != names.end() ||
                         setting->GetString() == IFormatCodec::CODEC_ID_AUTO;
    return isKnown ? Names() : NearestNames(setting->GetString(), names);
}

std::string SuggestName(const Core::Property& setting) { return DidYouMean(NearestValues(&setting)); }

std::string SuggestName(const std::string& key, const std::string& value)
{
    return SuggestName(Core::Property(key, value));
}

} // namespace Zelnor::Media
