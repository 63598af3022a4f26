#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Zelnor::Tool
{

/// How far a run of the engine is.
struct EngineProgress
{
    std::int64_t done = 0; ///< microseconds of the output
    double speed = 0;      ///< 2.0: twice as fast as it plays; 0: not known yet
};

/// What became of a run.
struct EngineResult
{
    int exitCode = 0;                  ///< 128 + the signal's number when a signal ended it
    std::vector<std::string> messages; ///< its last lines
};

/// While there is one, SIGINT, SIGTERM and SIGHUP do not end this process but are kept, so that it can stop
/// the engine and tidy up.
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

/// Runs the program, found through PATH and without a shell, and reports its progress. When a signal is
/// caught, the program is stopped.
/// \throw ToolError when there is no such program, or it may not be run
EngineResult RunEngine(const std::vector<std::string>& command,
                       const std::function<void(const EngineProgress&)>& report);

} // namespace Zelnor::Tool
