#pragma once

// Private to the library, not installed.

extern "C" {
#include <libavformat/avformat.h>
}

#include <optional>
#include <vector>

namespace Zelnor::Media
{

/// How far a frame rate may be from the true one: the container rounds times to ticks of `timeBase`, and the
/// rate was found over `seconds`. A share of the rate, from the rounding of rates themselves to less than
/// what lies between neighbouring standard rates.
double RateTolerance(AVRational timeBase, double seconds);

/// The standard rate that is nearest to `rate` within `tolerance`, a share of the rate; else `rate` itself.
AVRational SnapToStandardRate(AVRational rate, double tolerance);

/// The stream's frame rate. 0/1 when what the container says cannot be true (it took the ticks of its clock
/// for frames) and for an attached picture.
AVRational FrameRateOf(AVFormatContext& context, AVStream& stream);

/// Counts frames at the beginning of the file to find the frame rates of the streams for which the container
/// has none. One for each stream, by index; nothing for those that need none and those that stay unknown.
/// Packets are read, so nothing else can be read from the context afterwards.
std::vector<std::optional<AVRational>> MeasureFrameRates(AVFormatContext& context);

} // namespace Zelnor::Media
