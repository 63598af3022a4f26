#include "Media/Probe/VideoColors.h"

#include "Media/FFmpeg/Calls.h"

extern "C" {
#include <libavutil/dovi_meta.h>
#include <libavutil/mastering_display_metadata.h>
#include <libavutil/pixdesc.h>
}

#include <cmath>

namespace Zelnor::Media
{

namespace
{

/// FFmpeg has names for what is not known, too.
std::string Known(const char* name)
{
    const std::string text = name == nullptr ? "" : name;
    return text == "unknown" || text.compare(0, 8, "reserved") == 0 ? "" : text;
}

/// `value` in units of 1/`scale`.
std::string Scaled(AVRational value, double scale)
{
    return std::to_string(value.den == 0 ? 0 : std::llround(av_q2d(value) * scale));
}

std::string MasteringDisplayText(const AVMasteringDisplayMetadata& display)
{
    if (display.has_primaries == 0 || display.has_luminance == 0)
    {
        return "";
    }
    constexpr double kChromaticity = 50000;
    constexpr double kLuminance = 10000;
    const auto point = [](const char* name, const AVRational(&xy)[2]) {
        return std::string(name) + "(" + Scaled(xy[0], kChromaticity) + "," + Scaled(xy[1], kChromaticity) +
               ")";
    };
    // FFmpeg's order is red, green, blue.
    return point("G", display.display_primaries[1]) + point("B", display.display_primaries[2]) +
           point("R", display.display_primaries[0]) + point("WP", display.white_point) + "L(" +
           Scaled(display.max_luminance, kLuminance) + "," + Scaled(display.min_luminance, kLuminance) + ")";
}

/// Null when the stream lacks it, or has less of it than that.
template <class Data>
const Data* SideData(const AVStream& stream, AVPacketSideDataType type)
{
    std::size_t size = 0;
    const std::uint8_t* const data = av_stream_get_side_data(&stream, type, &size);
    return size < sizeof(Data) ? nullptr : reinterpret_cast<const Data*>(data);
}

template <class Data>
const Data* SideData(const AVFrame& frame, AVFrameSideDataType type)
{
    const AVFrameSideData* const data = av_frame_get_side_data(&frame, type);
    return data == nullptr || data->size < sizeof(Data) ? nullptr : reinterpret_cast<const Data*>(data->data);
}

/// What is null is not known.
VideoHdr HdrOf(const AVMasteringDisplayMetadata* display, const AVContentLightMetadata* light)
{
    VideoHdr hdr;
    if (display != nullptr)
    {
        hdr.masteringDisplay = MasteringDisplayText(*display);
    }
    if (light != nullptr)
    {
        hdr.contentLight = std::to_string(light->MaxCLL) + "," + std::to_string(light->MaxFALL);
    }
    return hdr;
}

} // namespace

VideoColor ColorOf(const AVCodecParameters& codec)
{
    return {Known(av_color_range_name(codec.color_range)), Known(av_color_space_name(codec.color_space)),
            Known(av_color_primaries_name(codec.color_primaries)),
            Known(av_color_transfer_name(codec.color_trc))};
}

VideoColor ColorOf(const AVFrame& frame)
{
    return {Known(av_color_range_name(frame.color_range)), Known(av_color_space_name(frame.colorspace)),
            Known(av_color_primaries_name(frame.color_primaries)),
            Known(av_color_transfer_name(frame.color_trc))};
}

VideoHdr HdrOf(const AVStream& stream)
{
    VideoHdr hdr = HdrOf(SideData<AVMasteringDisplayMetadata>(stream, AV_PKT_DATA_MASTERING_DISPLAY_METADATA),
                         SideData<AVContentLightMetadata>(stream, AV_PKT_DATA_CONTENT_LIGHT_LEVEL));
    if (const auto* const dovi = SideData<AVDOVIDecoderConfigurationRecord>(stream, AV_PKT_DATA_DOVI_CONF))
    {
        hdr.dolbyVision =
            std::to_string(dovi->dv_profile) + "." + std::to_string(dovi->dv_bl_signal_compatibility_id);
    }
    return hdr;
}

VideoHdr HdrOf(const AVFrame& frame)
{
    return HdrOf(SideData<AVMasteringDisplayMetadata>(frame, AV_FRAME_DATA_MASTERING_DISPLAY_METADATA),
                 SideData<AVContentLightMetadata>(frame, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL));
}

std::string FieldOrderName(AVFieldOrder order)
{
    switch (order)
    {
    case AV_FIELD_PROGRESSIVE:
        return "progressive";
    case AV_FIELD_TT:
        return "tt";
    case AV_FIELD_BB:
        return "bb";
    case AV_FIELD_TB:
        return "tb";
    case AV_FIELD_BT:
        return "bt";
    case AV_FIELD_UNKNOWN:
        break;
    }
    return "";
}

} // namespace Zelnor::Media
