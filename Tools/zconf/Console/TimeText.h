#pragma once

#include "Media/AmountText.h"

#include <cstdint>
#include <string>

namespace Zelnor::Tool
{

inline constexpr std::int64_t kSecond = 1'000'000; ///< in microseconds

/// Parses a time as "90", "1.5", "2:30" or "1:02:03.5", in microseconds. It is not negative.
/// \throw ToolError "'soon' is not a time: expected seconds or H:MM:SS, such as 90.5 or 1:02:03.5"
std::int64_t ParseTime(const std::string& text);

using Media::ClockText;
using Media::SizeText;

} // namespace Zelnor::Tool
