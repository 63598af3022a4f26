#include "Bindings/Python/Source/Arguments.h"
#include "Bindings/Python/Source/Classes.h"
#include "Bindings/Python/Source/Records.h"

#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <pybind11/stl.h>

#include <array>

namespace Zelnor::Python
{

namespace
{

using Int = Integer<int>;
using Int64 = Integer<long long>;
using Term = Integer<std::uint32_t>;

using DefaultBitrate = long long (*)(const std::string&, long long, long long, double, int);

void BindDefaultBitrate(py::module_& module, const char* name, DefaultBitrate calculate,
                        const char* documentation)
{
    module.def(
        name,
        [calculate](const Text& codecId, Int64 width, Int64 height, Number fps, Int quality) {
            return calculate(codecId.bytes, width.value, height.value, fps.value, quality.value);
        },
        py::arg("codec_id"), py::arg("width"), py::arg("height"), py::arg("fps"),
        py::arg("quality") = Int{-1}, documentation);
}

void BindBitrates(py::module_& module)
{
    BindDefaultBitrate(module, "default_video_bitrate", &Conf::GetDefaultVideoBitrate,
                       "Return a bitrate in bits per second; a quality from 0 to 32 scales it.");
    BindDefaultBitrate(module, "min_video_bitrate", &Conf::GetMinVideoBitrate,
                       "Return half of the default bitrate.");
    BindDefaultBitrate(module, "max_video_bitrate", &Conf::GetMaxVideoBitrate,
                       "Return the double of the default bitrate.");
    module.def(
        "calculate_bitrate",
        [](Number width, Number height, Number fps, const std::array<Number, 4>& coefficients) {
            const double values[] = {coefficients[0].value, coefficients[1].value, coefficients[2].value,
                                     coefficients[3].value};
            return Conf::calculateBitrate(width.value, height.value, fps.value, values);
        },
        py::arg("width"), py::arg("height"), py::arg("fps"), py::arg("coefficients"),
        "Return the bitrate of a cubic curve with the four coefficients, in bits per second.");
    module.def(
        "norm_bitrate",
        [](Int64 bitrate, Int quality) { return Conf::NormBitrate(bitrate.value, quality.value); },
        py::arg("bitrate"), py::arg("quality"),
        "Scale a bitrate by a factor that falls from 1 at quality 1 to 1/3 at quality 32.");
    module.def(
        "has_video_bitrate_curve",
        [](const Text& codecId) { return Conf::HasVideoBitrateCurve(codecId.bytes); }, py::arg("codec_id"),
        "Whether default_video_bitrate has a curve of the codec's own; without, that of H.264 counts.");
    module.def(
        "min_bitrate", [](const Core::Property& codec) { return Conf::GetMinBitrate(codec); },
        py::arg("codec"),
        "Return the lower bound of the bitrate in an audio or video codec's record.\n\n"
        "Raise ValueError for another record or mode, PropertyException when a value is missing.");
    module.def(
        "max_bitrate", [](const Core::Property& codec) { return Conf::GetMaxBitrate(codec); },
        py::arg("codec"),
        "Return the upper bound of the bitrate in an audio or video codec's record.\n\n"
        "Raise ValueError for another record or mode, PropertyException when a value is missing.");
}

using Convert = void (*)(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t&,
                         std::uint32_t&);

void BindAspect(py::module_& module, const char* name, Convert convert, const char* documentation)
{
    module.def(
        name,
        [convert](Term width, Term height, Term x, Term y) {
            std::uint32_t resultX = 0;
            std::uint32_t resultY = 0;
            convert(width.value, height.value, x.value, y.value, resultX, resultY);
            return py::make_tuple(resultX, resultY);
        },
        py::arg("width"), py::arg("height"), py::arg("x"), py::arg("y"), documentation);
}

} // namespace

void BindCalculators(py::module_& module)
{
    BindBitrates(module);
    BindAspect(module, "frame_to_pixel_aspect", &Conf::IFormatCodecVideo::FrameToPixelAspect,
               "Return the reduced sample aspect ratio of a frame with the display aspect ratio x:y.");
    BindAspect(module, "pixel_to_frame_aspect", &Conf::IFormatCodecVideo::PixelToFrameAspect,
               "Return the reduced display aspect ratio of a frame with the sample aspect ratio x:y.");
}

} // namespace Zelnor::Python
