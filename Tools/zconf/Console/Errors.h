#pragma once

#include <exception>
#include <stdexcept>
#include <string>

/// \file
/// Exit codes and error messages. Commands let exceptions pass; the main program turns whatever arrives there
/// into one line on standard error.

namespace Zelnor::Tool
{

constexpr int kExitSuccess = 0;
constexpr int kExitNo = 1;        ///< the command worked, and its answer is no
constexpr int kExitFailure = 2;   ///< the command failed or was given wrong arguments
constexpr int kExitFFmpeg = 3;    ///< ffmpeg failed
constexpr int kExitDifferent = 4; ///< an output file is not what its job says

/// A failure found by the tool itself; `what()` is the sentence for the user.
class ToolError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The message for a failure: a sentence made from the details of the libraries' exceptions, or the message
/// of other exceptions without the call stack that may follow it.
std::string Describe(const std::exception_ptr& failure);

/// Writes "zconf: " and the sentence as one line to standard error.
void ReportFailure(const std::string& sentence);

/// Writes "zconf: note: " and the sentence as one line to standard error.
void ReportNote(const std::string& sentence);

} // namespace Zelnor::Tool
