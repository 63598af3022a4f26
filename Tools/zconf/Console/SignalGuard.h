#pragma once

#include "Media/Running/JobRun.h"

namespace Zelnor::Tool
{

/// While there is one, SIGINT, SIGTERM and SIGHUP do not end this process but cancel what it runs, so that it
/// can stop ffmpeg and tidy up.
class SignalGuard
{
public:
    /// \param cancel  is cancelled when a signal comes; must outlive this object
    explicit SignalGuard(const Media::CancelToken& cancel);
    /// Restores what the signals did before.
    ~SignalGuard();
    SignalGuard(const SignalGuard&) = delete;
    SignalGuard& operator=(const SignalGuard&) = delete;

    /// The signal that came, or 0.
    static int Caught();
};

/// Ends this process by the signal that stopped its work, as the shell expects.
[[noreturn]] void EndBy(int signal);

} // namespace Zelnor::Tool
