#include "Media/Running/VerificationProgress.h"

#include <algorithm>
#include <utility>

namespace Zelnor::Media
{

VerificationProgress::VerificationProgress(RunProgress progress,
                                           std::function<void(const RunProgress&)> report)
    : m_progress(std::move(progress)), m_report(std::move(report))
{
    m_progress.isVerifying = true;
    m_progress.speed = 0;
    Send(0);
}

void VerificationProgress::Report(std::int64_t done)
{
    constexpr std::chrono::milliseconds kPause(500);
    if (std::chrono::steady_clock::now() >= m_last + kPause)
    {
        Send(done);
    }
}

void VerificationProgress::Send(std::int64_t done)
{
    m_last = std::chrono::steady_clock::now();
    m_progress.done = std::max<std::int64_t>(done, 0);
    if (m_progress.duration && *m_progress.duration > 0)
    {
        m_progress.part =
            std::min(static_cast<double>(m_progress.done) / static_cast<double>(*m_progress.duration), 1.0);
    }
    if (m_report)
    {
        m_report(m_progress);
    }
}

} // namespace Zelnor::Media
