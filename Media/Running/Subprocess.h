#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Export.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// What became of a program that was run.
struct ProcessResult
{
    bool started = false; ///< false when there is no such program, or it may not be run
    int exitCode = 0;     ///< 128 + the signal's number when a signal ended it
    std::string output;
    std::string messages;
};

/// Runs a program, found through PATH and without a shell, with `input` as its standard input, and waits for
/// its end.
/// \throw std::system_error when the system has no room for it
ZELNOR_API ProcessResult RunFilter(const std::vector<std::string>& arguments, const std::string& input);

} // namespace Zelnor::Media
