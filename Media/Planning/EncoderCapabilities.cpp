#include "Media/Planning/EncoderCapabilities.h"

#include "Media/FFmpeg/Calls.h"

extern "C" {
#include <libavutil/pixdesc.h>
#include <libavutil/samplefmt.h>
}

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <vector>

namespace Zelnor::Media
{

namespace
{

using Conf::ChannelLayout;
using Conf::LayoutRecord;
using Conf::SampleFmtRecord;
using Conf::SampleFormats;

/// The layouts of codecs whose FFmpeg encoders do not list them, or support others that few players play.
const std::vector<ChannelLayout>& KnownLayouts(AVCodecID codec)
{
    static const std::vector<ChannelLayout> s_vorbis = {
        Conf::CH_LAYOUT_MONO,         Conf::CH_LAYOUT_STEREO,       Conf::CH_LAYOUT_SURROUND,
        Conf::CH_LAYOUT_QUAD,         Conf::CH_LAYOUT_5POINT0_BACK, Conf::CH_LAYOUT_5POINT1_BACK,
        Conf::CH_LAYOUT_6POINT1_BACK, Conf::CH_LAYOUT_7POINT1};
    static const std::vector<ChannelLayout> s_aac = {Conf::CH_LAYOUT_MONO,
                                                     Conf::CH_LAYOUT_STEREO,
                                                     Conf::CH_LAYOUT_SURROUND,
                                                     Conf::CH_LAYOUT_4POINT0,
                                                     Conf::CH_LAYOUT_5POINT0_BACK,
                                                     Conf::CH_LAYOUT_5POINT1_BACK,
                                                     Conf::CH_LAYOUT_7POINT1_WIDE_BACK};
    static const std::vector<ChannelLayout> s_wma = {Conf::CH_LAYOUT_MONO, Conf::CH_LAYOUT_STEREO};
    static const std::vector<ChannelLayout> s_none;
    switch (codec)
    {
    case AV_CODEC_ID_AAC:
        return s_aac;
    case AV_CODEC_ID_VORBIS:
    case AV_CODEC_ID_OPUS:
        return s_vorbis;
    case AV_CODEC_ID_WMAV1:
    case AV_CODEC_ID_WMAV2:
        return s_wma;
    default:
        return s_none;
    }
}

/// Empty when the encoder supports all.
std::vector<ChannelLayout> LayoutsOf(const AVCodec& encoder)
{
    std::vector<ChannelLayout> layouts = KnownLayouts(encoder.id);
    if (layouts.empty() && encoder.ch_layouts != nullptr)
    {
        for (const AVChannelLayout* layout = encoder.ch_layouts; layout->nb_channels != 0; ++layout)
        {
            if (const auto known = FromFFmpeg(*layout))
            {
                layouts.push_back(*known);
            }
        }
    }
    return layouts;
}

std::vector<PixFmt> PixelFormatsOf(const AVCodec& encoder)
{
    std::vector<PixFmt> formats;
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        if (Supports(encoder, record.pixFmt))
        {
            formats.push_back(record.pixFmt);
        }
    }
    return formats;
}

std::vector<SampleFormats> SampleFormatsOf(const AVCodec& encoder)
{
    std::vector<SampleFormats> formats;
    for (const AVSampleFormat* format = encoder.sample_fmts;
         format != nullptr && *format != AV_SAMPLE_FMT_NONE; ++format)
    {
        if (const auto known = FromFFmpeg(*format))
        {
            formats.push_back(*known);
        }
    }
    return formats;
}

template <class T>
bool Contains(const std::vector<T>& values, const T& value)
{
    return std::find(values.begin(), values.end(), value) != values.end();
}

int ChannelsOf(ChannelLayout layout) { return LayoutRecord::Find(layout)->channels; }

} // namespace

bool Supports(const AVCodec& encoder, PixFmt format) { return Supports(encoder, ToFFmpeg(format)); }

bool Supports(const AVCodec& encoder, AVPixelFormat format)
{
    const AVPixFmtDescriptor* const description = av_pix_fmt_desc_get(format);
    if (description == nullptr || (description->flags & AV_PIX_FMT_FLAG_HWACCEL) != 0)
    {
        return false;
    }
    // The encoder lists limited ranges too, and refuses them unless it is told to break the standard.
    if (encoder.id == AV_CODEC_ID_MJPEG && std::string_view(description->name).substr(0, 4) != "yuvj")
    {
        return false;
    }
    const AVPixelFormat* candidate = encoder.pix_fmts;
    while (candidate != nullptr && *candidate != AV_PIX_FMT_NONE && *candidate != format)
    {
        ++candidate;
    }
    return candidate == nullptr || *candidate == format;
}

bool Supports(const AVCodec& encoder, SampleFormats format)
{
    const std::vector<SampleFormats> formats = SampleFormatsOf(encoder);
    return formats.empty() || Contains(formats, format);
}

bool Supports(const AVCodec& encoder, ChannelLayout layout)
{
    const std::vector<ChannelLayout> layouts = LayoutsOf(encoder);
    return layouts.empty() || Contains(layouts, layout);
}

bool SupportsSampleRate(const AVCodec& encoder, int sampleRate)
{
    return sampleRate > 0 && NearestRate(encoder, sampleRate) == sampleRate;
}

PixFmt NearestPixelFormat(const AVCodec& encoder, PixFmt wanted)
{
    const std::vector<PixFmt> formats = PixelFormatsOf(encoder);
    const AVPixelFormat source = ToFFmpeg(wanted);
    if (formats.empty() || Contains(formats, wanted) || source == AV_PIX_FMT_NONE)
    {
        return formats.empty() ? PIX_FMT_NONE : Contains(formats, wanted) ? wanted : formats.front();
    }
    PixFmt best = formats.front();
    for (const PixFmt format : formats)
    {
        const bool hasAlpha = (PixFmtDescription::Find(wanted)->flags & 8) != 0;
        if (av_find_best_pix_fmt_of_2(ToFFmpeg(best), ToFFmpeg(format), source, hasAlpha, nullptr) ==
            ToFFmpeg(format))
        {
            best = format;
        }
    }
    return best;
}

AVPixelFormat NearestPixelFormat(const AVCodec& encoder, AVPixelFormat wanted)
{
    if (wanted == AV_PIX_FMT_NONE || Supports(encoder, wanted))
    {
        return wanted;
    }
    const AVPixFmtDescriptor* const description = av_pix_fmt_desc_get(wanted);
    const int hasAlpha = description != nullptr && (description->flags & AV_PIX_FMT_FLAG_ALPHA) != 0 ? 1 : 0;
    AVPixelFormat best = AV_PIX_FMT_NONE;
    for (const AVPixelFormat* format = encoder.pix_fmts; format != nullptr && *format != AV_PIX_FMT_NONE;
         ++format)
    {
        if (Supports(encoder, *format))
        {
            best = best == AV_PIX_FMT_NONE
                       ? *format
                       : av_find_best_pix_fmt_of_2(best, *format, wanted, hasAlpha, nullptr);
        }
    }
    return best;
}

SampleFormats NearestSampleFormat(const AVCodec& encoder, SampleFormats wanted)
{
    const std::vector<SampleFormats> formats = SampleFormatsOf(encoder);
    if (formats.empty() || Contains(formats, wanted))
    {
        return wanted == Conf::SAMPLE_FMT_NONE ? Conf::SAMPLE_FMT_S16 : wanted;
    }
    const SampleFormats counterpart = SampleFmtRecord::Find(wanted)->counterpart;
    return Contains(formats, counterpart) ? counterpart : formats.front();
}

SampleFormats FinestSampleFormat(const AVCodec& encoder, SampleFormats wanted)
{
    const std::vector<SampleFormats> formats = SampleFormatsOf(encoder);
    const SampleFormats nearest = NearestSampleFormat(encoder, wanted);
    const auto bytes = [](SampleFormats format) { return av_get_bytes_per_sample(ToFFmpeg(format)); };
    const auto isFloat = [](SampleFormats format) {
        const AVSampleFormat packed = av_get_packed_sample_fmt(ToFFmpeg(format));
        return packed == AV_SAMPLE_FMT_FLT || packed == AV_SAMPLE_FMT_DBL;
    };
    if (!isFloat(wanted) || isFloat(nearest) || formats.empty())
    {
        return nearest;
    }
    return *std::max_element(
        formats.begin(), formats.end(),
        [&bytes](SampleFormats one, SampleFormats other) { return bytes(one) < bytes(other); });
}

ChannelLayout NearestLayout(const AVCodec& encoder, ChannelLayout wanted)
{
    const std::vector<ChannelLayout> layouts = LayoutsOf(encoder);
    if (layouts.empty() || Contains(layouts, wanted))
    {
        return wanted == Conf::CH_LAYOUT_UNKNOWN ? Conf::CH_LAYOUT_STEREO : wanted;
    }
    const int channels = ChannelsOf(wanted);
    ChannelLayout best = Conf::CH_LAYOUT_UNKNOWN;
    for (const ChannelLayout layout : layouts)
    {
        if (ChannelsOf(layout) <= channels && ChannelsOf(layout) > ChannelsOf(best))
        {
            best = layout;
        }
    }
    return best == Conf::CH_LAYOUT_UNKNOWN ? layouts.front() : best;
}

int NearestRate(const AVCodec& encoder, int wanted)
{
    int higher = 0;
    int highest = 0;
    for (const int* rate = encoder.supported_samplerates; rate != nullptr && *rate != 0; ++rate)
    {
        highest = std::max(highest, *rate);
        higher = *rate >= wanted && (higher == 0 || *rate < higher) ? *rate : higher;
    }
    return higher != 0 ? higher : highest != 0 ? highest : wanted;
}

AVRational NearestFrameRate(const AVCodec& encoder, AVRational wanted)
{
    if (encoder.supported_framerates == nullptr)
    {
        return wanted;
    }
    return encoder.supported_framerates[av_find_nearest_q_idx(wanted, encoder.supported_framerates)];
}

bool IsWithoutBitrate(AVCodecID codec)
{
    const AVCodecDescriptor* const description = avcodec_descriptor_get(codec);
    const bool lossy = description != nullptr && (description->props & AV_CODEC_PROP_LOSSY) != 0;
    return !lossy || codec == AV_CODEC_ID_GIF;
}

bool HasTwoPasses(const AVCodec& encoder)
{
    // Not libtheora: it says that it can, and FFmpeg fails at the end of its first pass.
    constexpr std::array<std::string_view, 8> kEncoders = {"libx264",    "libvpx",     "libvpx-vp9", "mpeg4",
                                                           "mpeg2video", "mpeg1video", "libxvid",    "flv"};
    return std::find(kEncoders.begin(), kEncoders.end(), encoder.name) != kEncoders.end();
}

} // namespace Zelnor::Media
