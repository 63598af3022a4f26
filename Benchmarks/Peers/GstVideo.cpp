// GStreamer's names and numbers of pixel formats.

#include "Benchmarks/Support/Sizes.h"

#include <gst/video/video.h>

#include <vector>

namespace Zelnor::Benchmarks
{
namespace
{

/// As many as are in our table.
std::vector<GstVideoFormat> PixelFormats()
{
    std::vector<GstVideoFormat> formats;
    for (int format = GST_VIDEO_FORMAT_I420; formats.size() < 30; ++format)
    {
        formats.push_back(static_cast<GstVideoFormat>(format));
    }
    return formats;
}

void PixelFormatByName(benchmark::State& state)
{
    std::vector<const char*> names;
    for (const GstVideoFormat format : PixelFormats())
    {
        names.push_back(gst_video_format_to_string(format));
    }
    MeasureEach(state, names, [](const char* name) { return gst_video_format_from_string(name); });
}
BENCHMARK(PixelFormatByName)->Name("PixelFormatByName/GStreamer");

void PixelFormatByValue(benchmark::State& state)
{
    const std::vector<GstVideoFormat> formats = PixelFormats();
    MeasureEach(state, formats, [](GstVideoFormat format) { return gst_video_format_get_info(format); });
}
BENCHMARK(PixelFormatByValue)->Name("PixelFormatByValue/GStreamer");

} // namespace
} // namespace Zelnor::Benchmarks
