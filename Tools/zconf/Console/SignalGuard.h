#pragma once

namespace Zelnor::Tool
{

/// While there is one, SIGINT, SIGTERM and SIGHUP do not end this process but are kept, so that it can stop
/// ffmpeg and tidy up.
class SignalGuard
{
public:
    SignalGuard();
    /// Restores what the signals did before.
    ~SignalGuard();
    SignalGuard(const SignalGuard&) = delete;
    SignalGuard& operator=(const SignalGuard&) = delete;

    /// The signal that came, or 0.
    static int Caught();
};

} // namespace Zelnor::Tool
