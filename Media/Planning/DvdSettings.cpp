#include "Media/Planning/DvdSettings.h"

#include "Media/Jobs/JobKeys.h"
#include "Media/RecordText.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>
#include <array>
#include <string>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Core::Property;

Property DvdVideo(const Property& source)
{
    const auto rate = source.FindChild(IFormatCodecVideo::TAG_FPS);
    const bool isPal =
        rate != source.end() && rate->GetRatio().numerator() % 25 == 0 && rate->GetRatio().denominator() == 1;
    Property settings;
    settings.SetChildT(IFormatCodec::TAG_CODEC_ID, IFormatCodecVideo::CODEC_ID_MPEG2VIDEO);
    settings.SetChildT(IFormatCodec::TAG_BITRATE_MODE, IFormatCodec::TAG_BITRATE_MODE_CBR_AUTO);
    settings.SetChildT(IFormatCodec::TAG_BITRATE, 6000000LL);
    settings.SetChildT(IFormatCodecVideo::TAG_WIDTH, 720LL);
    settings.SetChildT(IFormatCodecVideo::TAG_HEIGHT, isPal ? 576LL : 480LL);
    settings.SetChildT(IFormatCodecVideo::TAG_FPS,
                       isPal ? Property::Ratio(25, 1) : Property::Ratio(30000, 1001));
    return settings;
}

/// What a DVD prescribes, whatever a preset says.
bool IsFixedForDvd(const std::string& key)
{
    static const std::array<const std::string*, 9> s_keys = {&IFormatCodec::TAG_CODEC_ID,
                                                             &IFormatCodecVideo::TAG_WIDTH,
                                                             &IFormatCodecVideo::TAG_HEIGHT,
                                                             &IFormatCodecVideo::TAG_FPS,
                                                             &IFormatCodecVideo::TAG_ASPECTX,
                                                             &IFormatCodecVideo::TAG_ASPECTY,
                                                             &Conf::TAG_PIX_FMT,
                                                             &IFormatCodecAudio::TAG_SAMPLE_RATE,
                                                             &IFormatCodecAudio::TAG_SAMPLE_FORMAT};
    return key == JobKeys::kPixelFormat ||
           std::any_of(s_keys.begin(), s_keys.end(),
                       [&key](const std::string* fixed) { return *fixed == key; });
}

} // namespace

Property DvdSettings(const MediaStream& source, const Property* wanted)
{
    Property settings;
    if (source.kind == StreamKind::Video)
    {
        settings = DvdVideo(source.descriptor->GetProperty());
    }
    else if (source.kind == StreamKind::Audio)
    {
        settings.SetChildT(IFormatCodec::TAG_CODEC_ID, IFormatCodecAudio::CODEC_ID_AC3);
        settings.SetChildT(IFormatCodec::TAG_BITRATE_MODE, IFormatCodec::TAG_BITRATE_MODE_CBR);
        settings.SetChildT(IFormatCodec::TAG_BITRATE, 448000LL);
        settings.SetChildT(IFormatCodecAudio::TAG_SAMPLE_RATE, 48000LL);
    }
    const auto codec = settings.FindChild(IFormatCodec::TAG_CODEC_ID);
    if (wanted != nullptr && codec != settings.end() &&
        TextUnder(*wanted, IFormatCodec::TAG_CODEC_ID) == codec->GetString())
    {
        for (const Property& setting : *wanted)
        {
            if (!IsFixedForDvd(setting.GetName()))
            {
                settings.SetChild(setting.GetName(), setting);
            }
        }
    }
    return settings;
}

} // namespace Zelnor::Media
