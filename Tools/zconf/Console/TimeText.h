#pragma once

#include <cstdint>
#include <string>

namespace Zelnor::Tool
{

inline constexpr std::int64_t kSecond = 1'000'000; ///< in microseconds

/// Parses a time as "90", "1.5", "2:30" or "1:02:03.5", in microseconds. It is not negative.
/// \throw ToolError "'soon' is not a time: expected seconds or H:MM:SS, such as 90.5 or 1:02:03.5"
std::int64_t ParseTime(const std::string& text);

/// "1:02:03" for seconds; fractions are rounded up.
std::string ClockText(double seconds);

/// "12.3 MB", in powers of a thousand as disks are sold.
std::string SizeText(std::uintmax_t bytes);

} // namespace Zelnor::Tool
