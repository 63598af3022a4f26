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
    const long whole = std::lround(std::ceil(seconds));
    const auto twoDigits = [](long number) { return (number < 10 ? "0" : "") + std::to_string(number); };
    return std::to_string(whole / 3600) + ":" + twoDigits(whole / 60 % 60) + ":" + twoDigits(whole % 60);
}

} // namespace

std::string ProgressText(std::optional<double> part, double speed, std::optional<std::int64_t> left)
{
    std::string text;
    const auto add = [&text](const std::string& fact) { text += (text.empty() ? "" : "  ") + fact; };
    if (part)
    {
        add(std::to_string(static_cast<int>(*part * 100)) + "%");
    }
    if (speed > 0)
    {
        add(Fixed(speed) + "x");
        if (left)
        {
            add(TimeLeft(static_cast<double>(*left) / kSecond / speed) + " left");
        }
    }
    return text;
}

ProgressDisplay::ProgressDisplay(std::string name, std::optional<std::int64_t> duration, std::size_t runs)
    : m_name(Printable(name)), m_duration(duration), m_runs(runs), m_isTerminal(::isatty(STDERR_FILENO) != 0)
{}

ProgressDisplay::~ProgressDisplay() { Clear(); }

void ProgressDisplay::Show(const Media::EngineProgress& progress)
{
    std::optional<double> part;
    std::optional<std::int64_t> left;
    if (m_duration)
    {
        const std::int64_t done = std::clamp<std::int64_t>(progress.done, 0, *m_duration);
        part = (static_cast<double>(m_run) + static_cast<double>(done) / static_cast<double>(*m_duration)) /
               static_cast<double>(m_runs);
        left = *m_duration * static_cast<std::int64_t>(m_runs - m_run) - done;
    }
    const std::string facts = ProgressText(part, progress.speed, left);
    if (m_isTerminal)
    {
        ShowBar(facts, part.value_or(0));
        return;
    }
    const int tenths = static_cast<int>(part.value_or(0) * 10);
    if (tenths > m_tenths && tenths < 10)
    {
        m_tenths = tenths;
        WriteMessage("zconf: " + m_name + ": " + facts + "\n");
    }
}

void ProgressDisplay::ShowBar(const std::string& facts, double part)
{
    constexpr std::size_t kWidth = 30;
    const auto filled = static_cast<std::size_t>(part * kWidth);
    m_barIsShown = true;
    WriteMessage(kEraseLine + ("[" + std::string(filled, '#')) + std::string(kWidth - filled, '-') + "] " +
                 facts + "  " + m_name);
}

void ProgressDisplay::ShowDone()
{
    Clear();
    WriteMessage("zconf: " + m_name + ": done\n");
}

void ProgressDisplay::Clear()
{
    if (std::exchange(m_barIsShown, false))
    {
        WriteMessage(kEraseLine);
    }
}

} // namespace Zelnor::Tool
