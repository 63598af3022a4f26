#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Export.h"

#include <functional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace Zelnor::Media
{

/// What a program is given, and who hears of what it writes. All functions are called on the calling thread.
struct SubprocessOptions
{
    std::string input = {}; ///< its standard input
    /// Called with each block of bytes that the program writes to its standard output or error.
    std::function<void(std::string_view)> onOutput = {};
    std::function<void(std::string_view)> onMessages = {};
    /// Asked several times a second. Once it says so, the program is asked to end (SIGTERM), and ended three
    /// seconds later (SIGKILL).
    std::function<bool()> isCancelled = {};
    /// Signals from the terminal do not reach the program, and what it has started ends with it when it is
    /// cancelled.
    bool inOwnGroup = false;
    /// The program does not see variables of the environment whose "NAME=value" begins with one of these.
    std::vector<std::string> hidden = {};
};

/// A program cannot be started, or the system does not tell how it ended (`no_child_process`) because this
/// process ignores SIGCHLD or waits for all of its children.
class SubprocessError : public std::system_error
{
public:
    using std::system_error::system_error;
};

/// Runs a program, found through PATH and without a shell, and waits for its end. What it has started and
/// left behind is not waited for. Its signals are as a program expects to find them, whatever this process
/// does with its own. What a function throws ends the program, and passes through.
/// \returns its exit code; 128 + the signal's number when a signal ended it
/// \throw SubprocessError
int RunSubprocess(const std::vector<std::string>& command, const SubprocessOptions& options);

/// What became of a program that was run.
struct FilterResult
{
    bool started = false; ///< false when there is no such program, or it may not be run
    int exitCode = 0;     ///< 128 + the signal's number when a signal ended it
    std::string output;
    std::string messages; ///< the beginning of what it wrote to standard error
};

/// Runs a program with `input` as its standard input and collects what it writes.
/// \throw SubprocessError for other reasons than that there is no such program
ZELNOR_API FilterResult RunFilter(const std::vector<std::string>& command, const std::string& input);
/// The same with all options but `onOutput` and `onMessages`.
FilterResult RunFilter(const std::vector<std::string>& command, SubprocessOptions options);

} // namespace Zelnor::Media
