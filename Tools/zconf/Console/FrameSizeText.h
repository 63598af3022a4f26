#pragma once

#include "Tools/zconf/Console/Description.h"

#include "Core/Interfaces/Property.h"

#include <string>

namespace Zelnor::Tool
{

/// Parses a size such as "1920x1080". Both lengths are positive 32-bit integers.
/// \throw ToolError "'1920' is not a frame size: expected WIDTHxHEIGHT, such as 1920x1080"
FrameSize ParseFrameSize(const std::string& text);

/// Parses a rate such as "25", "29.97" or "30000/1001", in frames per second. It is positive and finite.
/// \throw ToolError "'fast' is not a frame rate: expected a number such as 25, 29.97 or 30000/1001"
double ParseFrameRate(const std::string& text);

/// The same as the rational that it stands for: 30000/1001 for "29.97", 25/2 for "12.5".
Core::Property::Ratio ParseExactFrameRate(const std::string& text);

} // namespace Zelnor::Tool
