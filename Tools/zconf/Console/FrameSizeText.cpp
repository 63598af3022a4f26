#include "Tools/zconf/Console/FrameSizeText.h"

#include "Tools/zconf/Console/Errors.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace Zelnor::Tool
{

namespace
{

/// The number that the whole text stands for, in the classic locale; empty when it is not a number.
template <class Number>
std::optional<Number> ParseNumber(std::string_view text)
{
    Number number{};
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() ? std::optional(number)
                                                                               : std::nullopt;
}

std::optional<long long> ParseLength(std::string_view text)
{
    const auto length = ParseNumber<std::int32_t>(text);
    return length && *length > 0 ? std::optional<long long>(*length) : std::nullopt;
}

std::optional<double> ParseRate(std::string_view text)
{
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos)
    {
        return ParseNumber<double>(text);
    }
    const auto numerator = ParseNumber<std::int64_t>(text.substr(0, slash));
    const auto denominator = ParseNumber<std::int64_t>(text.substr(slash + 1));
    if (!numerator || !denominator || *denominator <= 0)
    {
        return std::nullopt;
    }
    return static_cast<double>(*numerator) / static_cast<double>(*denominator);
}

[[noreturn]] void RefuseFrameRate(const std::string& text)
{
    throw ToolError("'" + text + "' is not a frame rate: expected a number such as 25, 29.97 or 30000/1001");
}

/// The rate of television that a number with a fraction stands for; nothing when it is another one.
std::optional<Core::Property::Ratio> FindNtscRate(double rate)
{
    constexpr long long kDivisor = 1001;
    constexpr double kClose = 0.005;
    for (const long long whole : {24000LL, 30000LL, 48000LL, 60000LL, 120000LL})
    {
        if (std::abs(static_cast<double>(whole) / kDivisor - rate) < kClose)
        {
            return Core::Property::Ratio(whole, kDivisor);
        }
    }
    return std::nullopt;
}

} // namespace

FrameSize ParseFrameSize(const std::string& text)
{
    const std::string_view view = text;
    const std::size_t cross = view.find('x');
    if (cross != std::string_view::npos)
    {
        const auto width = ParseLength(view.substr(0, cross));
        const auto height = ParseLength(view.substr(cross + 1));
        if (width && height)
        {
            return {*width, *height};
        }
    }
    throw ToolError("'" + text + "' is not a frame size: expected WIDTHxHEIGHT, such as 1920x1080");
}

double ParseFrameRate(const std::string& text)
{
    const std::optional<double> rate = ParseRate(text);
    if (!rate || !std::isfinite(*rate) || *rate <= 0)
    {
        RefuseFrameRate(text);
    }
    return *rate;
}

Core::Property::Ratio ParseExactFrameRate(const std::string& text)
{
    constexpr long long kThousandths = 1000;
    constexpr double kMost = 1e6;
    const double rate = ParseFrameRate(text);
    const std::size_t slash = text.find('/');
    if (slash != std::string::npos)
    {
        const auto numerator = ParseNumber<std::int32_t>(std::string_view(text).substr(0, slash));
        const auto denominator = ParseNumber<std::int32_t>(std::string_view(text).substr(slash + 1));
        if (!numerator || !denominator)
        {
            RefuseFrameRate(text);
        }
        return {*numerator, *denominator};
    }
    const bool isWhole = text.find_first_not_of("0123456789") == std::string::npos;
    const auto known = isWhole ? std::nullopt : FindNtscRate(rate);
    const long long thousandths = std::llround(std::min(rate, kMost) * kThousandths);
    if (rate > kMost || thousandths < 1)
    {
        RefuseFrameRate(text);
    }
    return known ? *known : Core::Property::Ratio(thousandths, kThousandths);
}

} // namespace Zelnor::Tool
