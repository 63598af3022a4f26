#pragma once

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

/// \file
/// What the user is told when something fails. Commands let exceptions pass; the main program turns whatever
/// arrives there into one line on standard error.

namespace Zelnor::Tool
{

constexpr int kExitSuccess = 0;
constexpr int kExitNo = 1;      ///< the command worked, and its answer is no
constexpr int kExitFailure = 2; ///< the command failed, or was used wrongly
constexpr int kExitEngine = 3;  ///< ffmpeg failed

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

/// Throws the exception that is being handled again, as a `ToolError` that begins with `place` unless the
/// exception names its file itself.
[[noreturn]] void RethrowAbout(const std::string& place);

/// Runs `action`; what it throws is said to be about `place`, a file.
template <class Action>
auto About(const std::string& place, Action&& action) -> decltype(action())
{
    try
    {
        return std::forward<Action>(action)();
    }
    catch (...)
    {
        RethrowAbout(place);
    }
}

} // namespace Zelnor::Tool
