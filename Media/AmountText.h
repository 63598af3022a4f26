#pragma once

// Private to the library and to the tool, not installed: amounts for people, the same in every locale.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <locale>
#include <sstream>
#include <string>

namespace Zelnor::Media
{

/// "12.3": with that many digits after the point.
inline std::string FixedText(double value, int digits = 1)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(digits);
    text << std::fixed << value;
    return text.str();
}

/// "1:02:03" for seconds; fractions are rounded up.
inline std::string ClockText(double seconds)
{
    // A speed near zero would leave more than an integer can hold.
    constexpr double kLongest = 1e9;
    const long whole = std::lround(std::ceil(std::min(seconds, kLongest)));
    const auto twoDigits = [](long number) { return (number < 10 ? "0" : "") + std::to_string(number); };
    return std::to_string(whole / 3600) + ":" + twoDigits(whole / 60 % 60) + ":" + twoDigits(whole % 60);
}

/// "12.3 MB", in powers of a thousand as disks are sold.
inline std::string SizeText(std::uintmax_t bytes)
{
    constexpr double kThousand = 1000;
    constexpr std::array<const char*, 5> kUnits = {"kB", "MB", "GB", "TB", "PB"};
    if (bytes < static_cast<std::uintmax_t>(kThousand))
    {
        return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    }
    double size = static_cast<double>(bytes) / kThousand;
    std::size_t unit = 0;
    // 999,950 bytes would round to "1000.0 kB".
    constexpr double kRoundsUp = 999.95;
    while (size >= kRoundsUp && unit + 1 < kUnits.size())
    {
        size /= kThousand;
        ++unit;
    }
    return FixedText(size) + ' ' + kUnits[unit];
}

/// "2.5x": media made in the time it plays.
inline std::string SpeedText(double speed) { return FixedText(speed) + "x"; }

} // namespace Zelnor::Media
