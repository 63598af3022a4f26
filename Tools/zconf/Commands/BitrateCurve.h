#pragma once

#include "Tools/zconf/Console/Description.h"

#include <string>

namespace Zelnor::Tool
{

/// What a bitrate is asked for.
struct BitrateQuestion
{
    std::string codecId;
    FrameSize size;
    double fps;
    int quality; ///< below 0: none
};

/// What gnuplot is told to draw as SVG: the default, minimum and maximum bitrates over the frame's height,
/// for frames of the asked shape, with a mark at the asked size.
std::string BitrateCurveScript(const BitrateQuestion& question);

/// Draws that. \throw ToolError when gnuplot is not there or fails
std::string DrawBitrateCurve(const BitrateQuestion& question);

} // namespace Zelnor::Tool
