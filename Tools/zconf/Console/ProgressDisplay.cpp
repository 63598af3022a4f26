#include "Tools/zconf/Console/ProgressDisplay.h"

#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/Text.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>
#include <utility>

namespace Zelnor::Tool
{

namespace
{

constexpr double kSecond = 1e6;
constexpr const char* kEraseLine = "\r\x1b[K";

std::string Fixed(double value)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(1);
    text << std::fixed << value;
    return text.str();
}

std::string TimeLeft(double seconds)
{
    // A speed near zero would leave more than an integer can hold.
    constexpr double kLongest = 1e9;
    const long whole = std::lround(std::ceil(std::min(seconds, kLongest)));
    const auto twoDigits = [](long number) { return (number < 10 ? "0" : "") + std::to_string(number); };
    return std::to_string(whole / 3600) + ":" + twoDigits(whole / 60 % 60) + ":" + twoDigits(whole % 60);
}

} // namespace

std::string ProgressText(const Media::RunProgress& progress)
{
    std::string text;
    const auto add = [&text](const std::string& field) { text += (text.empty() ? "" : "  ") + field; };
    if (progress.part)
    {
        add(std::to_string(static_cast<int>(*progress.part * 100)) + "%");
    }
    if (progress.speed > 0)
    {
        add(Fixed(progress.speed) + "x");
        if (progress.duration)
        {
            const auto passes = static_cast<double>(progress.passCount - progress.pass);
            const double left =
                static_cast<double>(*progress.duration) * passes - static_cast<double>(progress.done);
            add(TimeLeft(std::max(left, 0.0) / kSecond / progress.speed) + " left");
        }
    }
    return text;
}

ProgressDisplay::ProgressDisplay() : m_isTerminal(::isatty(STDERR_FILENO) != 0) {}

ProgressDisplay::~ProgressDisplay() { Clear(); }

void ProgressDisplay::Show(const Media::RunProgress& progress)
{
    const std::string text = ProgressText(progress);
    if (m_isTerminal)
    {
        ShowBar(text, progress);
        return;
    }
    if (std::exchange(m_target, progress.target) != progress.target)
    {
        m_tenths = 0;
    }
    const int tenths = static_cast<int>(progress.part.value_or(0) * 10);
    if (tenths > m_tenths && tenths < 10)
    {
        m_tenths = tenths;
        WriteMessage("zconf: " + Printable(progress.file) + ": " + text + "\n");
    }
}

void ProgressDisplay::ShowBar(const std::string& text, const Media::RunProgress& progress)
{
    constexpr std::size_t kWidth = 30;
    const auto filled = static_cast<std::size_t>(progress.part.value_or(0) * kWidth);
    m_barIsShown = true;
    WriteMessage(kEraseLine + ("[" + std::string(filled, '#')) + std::string(kWidth - filled, '-') + "] " +
                 text + "  " + Printable(progress.file));
}

void ProgressDisplay::ShowDone(const std::string& file)
{
    Clear();
    WriteMessage("zconf: " + Printable(file) + ": done\n");
}

void ProgressDisplay::Clear()
{
    if (std::exchange(m_barIsShown, false))
    {
        WriteMessage(kEraseLine);
    }
}

} // namespace Zelnor::Tool
