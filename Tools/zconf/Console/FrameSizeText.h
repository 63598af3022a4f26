#pragma once

#include "Tools/zconf/Console/Description.h"

#include <string>

namespace Zelnor::Tool
{

/// The size that "1920x1080" says. \throw ToolError "'1920' is no size: expected WIDTHxHEIGHT, such as
/// 1920x1080"
FrameSize ParseFrameSize(const std::string& text);

/// The rate that "25", "29.97" or "30000/1001" says. \throw ToolError
double ParseFrameRate(const std::string& text);

} // namespace Zelnor::Tool
