#pragma once

#include "Media/Running/JobRun.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace Zelnor::Tool
{

/// Shows on standard error how far a job is: a bar that stays in its line on a terminal, else a line
/// for every tenth.
class ProgressDisplay
{
public:
    ProgressDisplay();
    /// Ends the bar's line.
    ~ProgressDisplay();
    ProgressDisplay(const ProgressDisplay&) = delete;
    ProgressDisplay& operator=(const ProgressDisplay&) = delete;

    void Show(const Media::RunProgress& progress);
    void ShowDone(const Media::TargetResult& target);
    /// Ends the bar's line, so that something else can be written.
    void Clear();

private:
    bool m_isTerminal;
    bool m_barIsShown = false;
    std::size_t m_target = 0;
    bool m_isVerifying = false;
    int m_tenths = 0;
};

/// "42%  3.1x  0:00:05 left", or "verifying  42%"; what is unknown is left out.
std::string ProgressText(const Media::RunProgress& progress);

/// "[####----] 42%  3.1x  0:00:05 left  out.mp4" in fewer than `columns` columns, so that the line stays one:
/// the bar gets shorter first, then the name, then the text is cut.
std::string BarText(const Media::RunProgress& progress, std::size_t columns);

/// "out.mp4: done in 0:00:05, 1.2 MB"
std::string DoneText(const Media::TargetResult& target);

} // namespace Zelnor::Tool
