#pragma once

#include "Media/Running/FFmpegProcess.h"

#include <optional>
#include <string>

namespace Zelnor::Tool
{

/// Tells on standard error how far a transcode is: a bar that stays in its line on a terminal, else a line
/// for every tenth.
class ProgressDisplay
{
public:
    /// \param name      what is made
    /// \param duration  microseconds of the output, if known
    /// \param runs      how many runs of the engine there will be
    ProgressDisplay(std::string name, std::optional<std::int64_t> duration, std::size_t runs);
    /// Ends the bar's line.
    ~ProgressDisplay();
    ProgressDisplay(const ProgressDisplay&) = delete;
    ProgressDisplay& operator=(const ProgressDisplay&) = delete;

    void BeginRun(std::size_t run) { m_run = run; }
    void Show(const Media::EngineProgress& progress);
    void ShowDone();

private:
    void ShowBar(const std::string& facts, double part);
    void Clear();

    std::string m_name;
    std::optional<std::int64_t> m_duration;
    std::size_t m_runs;
    std::size_t m_run = 0;
    bool m_isTerminal;
    bool m_barIsShown = false;
    int m_tenths = 0;
};

/// "42%  3.1x  0:00:05 left"; what is not known is left out.
/// \param part  0 to 1, of all runs
/// \param left  microseconds of output that are still to be made
std::string ProgressText(std::optional<double> part, double speed, std::optional<std::int64_t> left);

} // namespace Zelnor::Tool
