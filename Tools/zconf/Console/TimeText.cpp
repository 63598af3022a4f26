#include "Tools/zconf/Console/TimeText.h"

#include "Tools/zconf/Console/Errors.h"

#include <charconv>
#include <optional>
#include <string_view>

namespace Zelnor::Tool
{

namespace
{

constexpr std::int64_t kSixty = 60;

/// The number that the digits stand for; nothing when they are not some digits.
std::optional<std::int64_t> ParseDigits(std::string_view text)
{
    // Enough for any time, and far from overflow.
    constexpr std::size_t kMost = 9;
    std::int64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = !text.empty() && text.size() <= kMost && text.front() != '-' &&
                          result.ec == std::errc() && result.ptr == text.data() + text.size();
    return isNumber ? std::optional(number) : std::nullopt;
}

/// "3.5": microseconds. What is finer is refused, not rounded.
std::optional<std::int64_t> ParseSeconds(std::string_view text)
{
    constexpr std::size_t kDigits = 6;
    const std::size_t point = text.find('.');
    const auto whole = ParseDigits(text.substr(0, point));
    if (!whole || point == std::string_view::npos)
    {
        return whole ? std::optional(*whole * kSecond) : std::nullopt;
    }
    std::string fraction(text.substr(point + 1));
    if (fraction.empty() || fraction.size() > kDigits)
    {
        return std::nullopt;
    }
    fraction.resize(kDigits, '0');
    const auto part = ParseDigits(fraction);
    return part ? std::optional(*whole * kSecond + *part) : std::nullopt;
}

std::optional<std::int64_t> ParseClock(std::string_view text)
{
    const std::size_t last = text.rfind(':');
    const auto seconds = ParseSeconds(text.substr(last + 1));
    if (!seconds || last == std::string_view::npos)
    {
        return seconds;
    }
    const std::string_view rest = text.substr(0, last);
    const std::size_t first = rest.find(':');
    const auto minutes = ParseDigits(first == std::string_view::npos ? rest : rest.substr(first + 1));
    const auto hours =
        first == std::string_view::npos ? std::optional<std::int64_t>(0) : ParseDigits(rest.substr(0, first));
    const bool isClock = minutes && hours && *seconds < kSixty * kSecond &&
                         (first == std::string_view::npos || *minutes < kSixty);
    return isClock ? std::optional((*hours * kSixty + *minutes) * kSixty * kSecond + *seconds) : std::nullopt;
}

} // namespace

std::int64_t ParseTime(const std::string& text)
{
    const auto time = ParseClock(text);
    if (!time)
    {
        throw ToolError("'" + text +
                        "' is not a time: expected seconds or H:MM:SS, such as 90.5 or 1:02:03.5");
    }
    return *time;
}

} // namespace Zelnor::Tool
