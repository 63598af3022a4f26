#pragma once

#include <exception>
#include <stdexcept>
#include <string>

/// \file
/// What the user is told when something fails. Commands let exceptions pass; the main program turns whatever
/// arrives there into one line on standard error.

namespace Zelnor::Tool
{

constexpr int kExitSuccess = 0;
constexpr int kExitNo = 1;      ///< the command worked, and its answer is no
constexpr int kExitFailure = 2; ///< the command failed, or was used wrongly
constexpr int kExitFFmpeg = 3;  ///< ffmpeg failed

/// A failure that the tool itself found; `what()` is the sentence for the user.
class ToolError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// What a failure has to say: the details of the libraries' exceptions as a sentence, the message of others
/// without the call stack that may follow it.
std::string Describe(const std::exception_ptr& failure);

/// Writes "zconf: " and the sentence as one line to standard error.
void ReportFailure(const std::string& sentence);

} // namespace Zelnor::Tool
