#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace Zelnor::Tool
{

/// Parses the arguments and runs the command that they name.
/// \returns the exit code; a failure of the command itself is thrown
int RunCommandLine(int argc, char** argv);

/// A command below `parent`, with `--help` and `--version`. It runs nothing yet: see `OnRun`.
CLI::App* AddCommand(CLI::App& parent, const std::string& name, const std::string& description);

/// A command that only holds other commands, one of which must be given.
CLI::App* AddCommandGroup(CLI::App& parent, const std::string& name, const std::string& description);

/// What `command` does once all arguments are understood; the result is the exit code.
void OnRun(CLI::App& command, std::function<int()> run);

} // namespace Zelnor::Tool
