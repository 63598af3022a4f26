#pragma once

// Private to the library, not installed.

#include <sys/types.h>

#include <array>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A program to start, found through PATH and without a shell.
struct ChildCommand
{
    const std::vector<std::string>& words; ///< the program first
    std::array<int, 3> streams;            ///< its standard streams, none of which is 0, 1 or 2 here
    bool inOwnGroup = false;               ///< signals from the terminal do not reach it
    /// It does not see variables of the environment whose "NAME=value" begins with one of these.
    std::vector<std::string> hidden = {};
};

/// Starts a program. Its signals are as a program expects to find them, whatever this process does with its
/// own. It is killed when the thread that started it ends, so that it does not outlive a process that is
/// killed.
/// \returns 0, or the system's reason why it cannot be started
int StartChild(const ChildCommand& command, pid_t& process);

} // namespace Zelnor::Media
