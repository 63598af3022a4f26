#pragma once

// Private to the library, not installed.

#include <cstdint>
#include <string>

namespace Zelnor::Media
{

/// "3.200 s" for microseconds, whatever the locale.
std::string SecondsText(std::int64_t microseconds);

/// "1.778", whatever the locale.
std::string DecimalText(double value);

/// "4000 kb/s"
std::string BitrateText(double bitsPerSecond);

/// Whether the two differ by no more than that part of the second one.
bool IsNear(double value, double wanted, double part);

} // namespace Zelnor::Media
