#include "Media/Verifying/BitrateComparison.h"

#include "Media/Verifying/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string>
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

std::string_view TextOf(const ExpectedStream& stream, std::string_view name)
{
    for (const auto& [option, value] : stream.options)
    {
        if (option == name)
        {
            return value;
        }
    }
    return {};
}

template <std::size_t Count>
bool IsIn(const std::array<std::string_view, Count>& names, std::string_view name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// By how much a stream whose every frame has the size that the bitrate says may differ from it; nothing for
/// other streams.
std::optional<double> ToleranceOf(const ExpectedStream& stream)
{
    constexpr double kFraming = 0.05;
    // Of the bitrates of MP3, the encoder takes the nearest one.
    constexpr double kNearest = 0.125;
    constexpr std::array<std::string_view, 5> kConstant = {"ac3", "eac3", "mp2", "wmav1", "wmav2"};
    constexpr std::array<std::string_view, 4> kVarying = {"abr", "global_quality", "q", "flags"};
    const std::string_view encoder = TextOf(stream, "c");
    if (encoder == "libmp3lame")
    {
        // Those that all sample rates have.
        constexpr double kLeast = 32000;
        constexpr double kMost = 160000;
        const double bitrate = OptionOf(stream, "b").value_or(0);
        const bool varies = std::any_of(kVarying.begin(), kVarying.end(), [&stream](std::string_view name) {
            return !TextOf(stream, name).empty();
        });
        return varies || bitrate < kLeast || bitrate > kMost ? std::nullopt : std::optional(kNearest);
    }
    const bool isConstant =
        IsIn(kConstant, stream.codec) || (encoder == "libopus" && TextOf(stream, "vbr") == "off");
    return isConstant ? std::optional(kFraming) : std::nullopt;
}

/// Whether x264 fills its stream up to one constant bitrate. It does so only where the peak is the average.
bool IsFilledByX264(const ExpectedStream& stream)
{
    constexpr std::array<std::string_view, 2> kLists = {"x264-params", "x264opts"};
    const std::string wanted = ":nal-hrd=cbr:";
    const bool isAsked =
        TextOf(stream, "nal-hrd") == "cbr" ||
        std::any_of(kLists.begin(), kLists.end(), [&](std::string_view list) {
            return (":" + std::string(TextOf(stream, list)) + ":").find(wanted) != std::string::npos;
        });
    const auto average = OptionOf(stream, "b");
    return isAsked && TextOf(stream, "c") == "libx264" && average && average == OptionOf(stream, "maxrate");
}

/// The least that the bits of a stream of that length may be: FFmpeg's encoders of MPEG video fill up what
/// would run over the buffer.
double LeastBits(const ExpectedStream& stream, double seconds)
{
    constexpr double kTolerance = 0.95;
    constexpr std::array<std::string_view, 3> kFilling = {"mpeg1video", "mpeg2video", "mpeg4"};
    const bool isFilled = IsFilledByX264(stream);
    const auto least = OptionOf(stream, isFilled ? "maxrate" : "minrate");
    const auto buffer = OptionOf(stream, "bufsize");
    return least && buffer && (isFilled || IsIn(kFilling, TextOf(stream, "c")))
               ? kTolerance * (*least * seconds - *buffer)
               : 0;
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
    const std::optional<double> tolerance = ToleranceOf(wanted);
    if (tolerance && average && sounding >= 1 && !IsNear(bits / sounding, *average, *tolerance))
    {
        return {{wanted.place, "bitrate", BitrateText(*average), BitrateText(bits / sounding)}};
    }
    const double least = LeastBits(wanted, seconds);
    if (bits < least)
    {
        return {{wanted.place, "bitrate", "at least " + BitrateText(least / seconds), BitrateText(bitrate)}};
    }
    const std::optional<double> most = MostBits(wanted, seconds);
    if (most && bits > *most)
    {
        return {{wanted.place, "bitrate", "at most " + BitrateText(*most / seconds), BitrateText(bitrate)}};
    }
    return {};
}

} // namespace Zelnor::Media
