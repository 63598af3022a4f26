#pragma once

// Private to the library, not installed.

#include "Media/Running/JobRun.h"

#include <chrono>
#include <cstdint>
#include <functional>

namespace Zelnor::Media
{

/// Tells how much of a target is decoded to verify it, as often as ffmpeg tells its progress.
class VerificationProgress
{
public:
    /// \param progress  of the target
    /// \param report    called at once, and may be empty
    VerificationProgress(RunProgress progress, std::function<void(const RunProgress&)> report);

    /// \param done  microseconds of the target
    void Report(std::int64_t done);

private:
    void Send(std::int64_t done);

    RunProgress m_progress;
    std::function<void(const RunProgress&)> m_report;
    std::chrono::steady_clock::time_point m_last;
};

} // namespace Zelnor::Media
