#include "Media/Verifying/BitrateComparison.h"

#include "Media/Verifying/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

std::optional<double> OptionOf(const ExpectedStream& stream, std::string_view name)
{
    for (const auto& [option, value] : stream.options)
    {
        long long number = 0;
        const char* const end = value.data() + value.size();
        if (option == name && std::from_chars(value.data(), end, number).ptr == end && number > 0)
        {
            return static_cast<double>(number);
        }
    }
    return std::nullopt;
}

/// Codecs whose every frame has the size that the bitrate says.
bool IsConstant(std::string_view codec)
{
    constexpr std::array<std::string_view, 3> kCodecs = {"ac3", "eac3", "mp2"};
    return std::find(kCodecs.begin(), kCodecs.end(), codec) != kCodecs.end();
}

/// The most that the bits of a stream of that length may be.
std::optional<double> MostBits(const ExpectedStream& stream, double seconds)
{
    constexpr double kTolerance = 1.1;
    const auto peak = OptionOf(stream, "maxrate");
    if (peak)
    {
        // What is in the buffer at the beginning comes on top.
        return kTolerance * (*peak * seconds + OptionOf(stream, "bufsize").value_or(*peak));
    }
    const auto average = OptionOf(stream, "b");
    if (!average)
    {
        return std::nullopt;
    }
    // Without a bound, an encoder comes to its average only after a while.
    constexpr double kWhile = 10;
    constexpr double kFreedom = 1.5;
    return seconds < kWhile ? std::nullopt : std::optional(kFreedom * *average * seconds);
}

} // namespace

std::vector<TargetDifference> CompareBitrate(const ExpectedStream& wanted, const StreamScan& found)
{
    constexpr double kBits = 8;
    constexpr double kSecond = 1e6;
    const double seconds = static_cast<double>(found.Length().value_or(0)) / kSecond;
    if (wanted.isCopied || found.packets == 0 || seconds <= 0)
    {
        return {};
    }
    const double bits = static_cast<double>(found.bytes) * kBits;
    const double bitrate = bits / seconds;
    const auto average = OptionOf(wanted, "b");
    // Where sound pauses, there are no frames.
    const double sounding = static_cast<double>(found.packets * found.frameLength) / kSecond;
    constexpr double kFraming = 0.05;
    if (IsConstant(wanted.codec) && average && sounding >= 1 && !IsNear(bits / sounding, *average, kFraming))
    {
        return {{wanted.place, "bitrate", BitrateText(*average), BitrateText(bits / sounding)}};
    }
    const std::optional<double> most = MostBits(wanted, seconds);
    if (most && bits > *most)
    {
        return {{wanted.place, "bitrate", "at most " + BitrateText(*most / seconds), BitrateText(bitrate)}};
    }
    return {};
}

} // namespace Zelnor::Media
