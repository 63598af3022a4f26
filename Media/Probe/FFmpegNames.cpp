#include "Media/Probe/FFmpegNames.h"

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/ConfException.h"
#include "Media/FFmpeg/Calls.h"
#include "Media/Text.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <iterator>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

struct LayoutName
{
    Conf::ChannelLayout layout;
    const char* name;
};

constexpr LayoutName kLayoutNames[] = {
    {Conf::CH_LAYOUT_MONO, "mono"},
    {Conf::CH_LAYOUT_STEREO, "stereo"},
    {Conf::CH_LAYOUT_2POINT1, "2.1"},
    {Conf::CH_LAYOUT_2_1, "3.0(back)"},
    {Conf::CH_LAYOUT_SURROUND, "3.0"},
    {Conf::CH_LAYOUT_3POINT1, "3.1"},
    {Conf::CH_LAYOUT_4POINT0, "4.0"},
    {Conf::CH_LAYOUT_4POINT1, "4.1"},
    {Conf::CH_LAYOUT_2_2, "quad(side)"},
    {Conf::CH_LAYOUT_QUAD, "quad"},
    {Conf::CH_LAYOUT_5POINT0, "5.0(side)"},
    {Conf::CH_LAYOUT_5POINT1, "5.1(side)"},
    {Conf::CH_LAYOUT_5POINT0_BACK, "5.0"},
    {Conf::CH_LAYOUT_5POINT1_BACK, "5.1"},
    {Conf::CH_LAYOUT_6POINT0, "6.0"},
    {Conf::CH_LAYOUT_6POINT0_FRONT, "6.0(front)"},
    {Conf::CH_LAYOUT_HEXAGONAL, "hexagonal"},
    {Conf::CH_LAYOUT_6POINT1, "6.1"},
    {Conf::CH_LAYOUT_6POINT1_BACK, "6.1(back)"},
    {Conf::CH_LAYOUT_6POINT1_FRONT, "6.1(front)"},
    {Conf::CH_LAYOUT_7POINT0, "7.0"},
    {Conf::CH_LAYOUT_7POINT0_FRONT, "7.0(front)"},
    {Conf::CH_LAYOUT_7POINT1, "7.1"},
    {Conf::CH_LAYOUT_7POINT1_WIDE, "7.1(wide-side)"},
    {Conf::CH_LAYOUT_7POINT1_WIDE_BACK, "7.1(wide)"},
    {Conf::CH_LAYOUT_OCTAGONAL, "octagonal"},
    {Conf::CH_LAYOUT_STEREO_DOWNMIX, "downmix"},
};

constexpr std::string_view kSampleFormatPrefix = "SAMPLE_FMT_";

bool HasName(const AVChannelLayout& layout, const char* name)
{
    AVChannelLayout named = {};
    const bool equal =
        av_channel_layout_from_string(&named, name) == 0 && av_channel_layout_compare(&named, &layout) == 0;
    av_channel_layout_uninit(&named);
    return equal;
}

} // namespace

AVPixelFormat ToFFmpeg(PixFmt format)
{
    if (format == PIX_FMT_NONE)
    {
        return AV_PIX_FMT_NONE;
    }
    const auto& records = PixFmtDescription::s_pixelFormatRecords;
    const auto found = std::find_if(records.begin(), records.end(),
                                    [format](const auto& record) { return record.pixFmt == format; });
    return found == records.end() ? AV_PIX_FMT_NONE : av_get_pix_fmt(LowerCase(found->name).c_str());
}

std::optional<PixFmt> FromFFmpeg(AVPixelFormat format)
{
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        if (format != AV_PIX_FMT_NONE && ToFFmpeg(record.pixFmt) == format)
        {
            return record.pixFmt;
        }
    }
    return std::nullopt;
}

AVSampleFormat ToFFmpeg(Conf::SampleFormats format)
{
    const std::string& text = Conf::SampleFmtRecord::Find(format)->textId;
    return av_get_sample_fmt(LowerCase(text.substr(kSampleFormatPrefix.size())).c_str());
}

std::optional<Conf::SampleFormats> FromFFmpeg(AVSampleFormat format)
{
    for (int i = Conf::SAMPLE_FMT_U8; i <= Conf::SAMPLE_FMT_DBLP; ++i)
    {
        const auto candidate = static_cast<Conf::SampleFormats>(i);
        if (ToFFmpeg(candidate) == format)
        {
            return candidate;
        }
    }
    return std::nullopt;
}

const char* ToFFmpeg(Conf::ChannelLayout layout)
{
    const auto found = std::find_if(std::begin(kLayoutNames), std::end(kLayoutNames),
                                    [layout](const LayoutName& row) { return row.layout == layout; });
    return found == std::end(kLayoutNames) ? nullptr : found->name;
}

std::optional<Conf::ChannelLayout> FromFFmpeg(const AVChannelLayout& layout)
{
    AVChannelLayout known = {};
    if (layout.order == AV_CHANNEL_ORDER_UNSPEC)
    {
        av_channel_layout_default(&known, layout.nb_channels);
    }
    else if (av_channel_layout_copy(&known, &layout) < 0)
    {
        return std::nullopt;
    }
    const auto found = std::find_if(std::begin(kLayoutNames), std::end(kLayoutNames),
                                    [&known](const LayoutName& row) { return HasName(known, row.name); });
    av_channel_layout_uninit(&known);
    return found == std::end(kLayoutNames) ? std::nullopt : std::optional(found->layout);
}

std::optional<std::string> CodecTextOf(AVCodecID id)
{
    const Conf::MapCodecs& map = Conf::GetFFCodecsMap();
    const auto found = map.find(id);
    return id == AV_CODEC_ID_NONE || found == map.end() ? std::nullopt : std::optional(found->second);
}

AVCodecID CodecNumberOf(const std::string& textId)
{
    try
    {
        return Conf::CodecIDFromTextID(textId);
    }
    catch (const Conf::FormatException&)
    {
        return AV_CODEC_ID_NONE;
    }
}

const AVCodec* FindEncoder(const std::string& codecTextId)
{
    const AVCodecID id = CodecNumberOf(codecTextId);
    // FFmpeg's encoders of these two formats go by the numbers that replaced the older ones.
    return avcodec_find_encoder(id == AV_CODEC_ID_SRT   ? AV_CODEC_ID_SUBRIP
                                : id == AV_CODEC_ID_SSA ? AV_CODEC_ID_ASS
                                                        : id);
}

const AVCodec* FindDecoder(const std::string& codecName)
{
    const AVCodecDescriptor* const codec = avcodec_descriptor_get_by_name(codecName.c_str());
    return codec == nullptr ? nullptr : avcodec_find_decoder(codec->id);
}

} // namespace Zelnor::Media
