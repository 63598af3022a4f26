#include "Tools/zconf/Console/ProgressDisplay.h"

#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/Terminal.h"
#include "Tools/zconf/Console/Text.h"
#include "Tools/zconf/Console/TimeText.h"

#include "Core/Interfaces/Utf8.h"

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

constexpr const char* kEraseLine = "\r\x1b[K";

std::string Fixed(double value)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(1);
    text << std::fixed << value;
    return text.str();
}

/// The beginning of a printable text in at most so many columns; what is left out is shown by a "~".
std::string Shortened(const std::string& text, std::size_t columns)
{
    if (Columns(text) <= columns)
    {
        return text;
    }
    std::string shortened;
    std::size_t taken = 0;
    for (const char c : text)
    {
        taken += Core::IsUtf8Continuation(c) ? 0U : 1U;
        if (taken >= columns)
        {
            break;
        }
        shortened += c;
    }
    return columns == 0 ? "" : shortened + "~";
}

} // namespace

std::string ProgressText(const Media::RunProgress& progress)
{
    std::string text;
    const auto add = [&text](const std::string& field) { text += (text.empty() ? "" : "  ") + field; };
    if (progress.isVerifying)
    {
        add("verifying");
    }
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
            add(ClockText(std::max(left, 0.0) / kSecond / progress.speed) + " left");
        }
    }
    return text;
}

std::string BarText(const Media::RunProgress& progress, std::size_t columns)
{
    constexpr std::size_t kLongestBar = 30;
    constexpr std::size_t kShortestBar = 8;
    constexpr std::size_t kBrackets = 3;
    constexpr std::size_t kGap = 2;
    // The last column is left free: some terminals break the line there.
    const std::size_t room = columns > 1 ? columns - 1 : 0;
    const std::string text = ProgressText(progress);
    const std::string file = Printable(progress.file);
    const std::size_t fixed = kBrackets + Columns(text) + kGap;
    const std::size_t wanted = fixed + Columns(file);
    const std::size_t length = std::clamp(room > wanted ? room - wanted : 0, kShortestBar, kLongestBar);
    const auto filled = static_cast<std::size_t>(progress.part.value_or(0) * static_cast<double>(length));
    const std::string bar =
        "[" + std::string(filled, '#') + std::string(length - filled, '-') + "] " + text + "  ";
    const std::size_t taken = length + fixed;
    return Shortened(bar + (room > taken ? Shortened(file, room - taken) : ""), room);
}

std::string DoneText(const Media::TargetResult& target)
{
    return Printable(target.file) + ": done in " + ClockText(target.seconds) + ", " + SizeText(target.size);
}

ProgressDisplay::ProgressDisplay() : m_isTerminal(::isatty(STDERR_FILENO) != 0) {}

ProgressDisplay::~ProgressDisplay() { Clear(); }

void ProgressDisplay::Show(const Media::RunProgress& progress)
{
    if (m_isTerminal)
    {
        // Asked each time, since people change the size of a terminal meanwhile.
        m_barIsShown = true;
        WriteMessage(kEraseLine + BarText(progress, TerminalColumns()));
        return;
    }
    const bool isOther = std::exchange(m_target, progress.target) != progress.target;
    if (std::exchange(m_isVerifying, progress.isVerifying) != progress.isVerifying || isOther)
    {
        m_tenths = 0;
    }
    const int tenths = static_cast<int>(progress.part.value_or(0) * 10);
    if (tenths > m_tenths && tenths < 10)
    {
        m_tenths = tenths;
        WriteMessage("zconf: " + Printable(progress.file) + ": " + ProgressText(progress) + "\n");
    }
}

void ProgressDisplay::ShowDone(const Media::TargetResult& target)
{
    Clear();
    WriteMessage("zconf: " + DoneText(target) + "\n");
}

void ProgressDisplay::Clear()
{
    if (std::exchange(m_barIsShown, false))
    {
        WriteMessage(kEraseLine);
    }
}

} // namespace Zelnor::Tool
