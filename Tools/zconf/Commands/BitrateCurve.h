#pragma once

#include "Tools/zconf/Console/Description.h"

#include <string>

namespace Zelnor::Tool
{

/// What a bitrate is proposed for.
struct BitrateQuestion
{
    std::string codecId;
    FrameSize size;
    double fps;
    int quality; ///< 1 to 32; negative for none
};

/// A gnuplot script that plots the default, minimum and maximum bitrates over the frame height as SVG, for
/// frames with the display aspect ratio of the given size, which is marked.
std::string BitrateCurveScript(const BitrateQuestion& question);

/// Runs that script with gnuplot. \throw ToolError when gnuplot is missing or fails
std::string DrawBitrateCurve(const BitrateQuestion& question);

} // namespace Zelnor::Tool
