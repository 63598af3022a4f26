#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Zelnor::Tool
{

/// The program with all its commands.
/// \param addCommands  adds them
std::unique_ptr<CLI::App> MakeProgram(const std::function<void(CLI::App&)>& addCommands);

/// Parses the arguments and runs the command that they name.
/// \param addCommands  adds all commands to the program
/// \returns the exit code; a failure of the command itself is thrown
int RunCommandLine(int argc, char** argv, const std::function<void(CLI::App&)>& addCommands);

/// Adds a command below `parent`, with `--help` and `--version`. It runs nothing until `OnRun` is called.
CLI::App* AddCommand(CLI::App& parent, const std::string& name, const std::string& description);

/// Adds a command that only holds other commands, one of which must be given.
CLI::App* AddCommandGroup(CLI::App& parent, const std::string& name, const std::string& description);

/// Adds the flag `--json` to a command that can also write its answer as JSON.
void AddJsonFlag(CLI::App& command, bool& json);

/// Adds the option `-o`, which in every command is the document that the command itself writes: a file, or
/// "-" for standard output.
/// \param what     "The job's document"
/// \param oldName  another name under which the option is known, "--job"
void AddDocumentOption(CLI::App& command, std::string& name, const std::string& what,
                       const std::string& oldName);

/// The commands right below `app`.
std::vector<std::string> CommandNames(const CLI::App& app);

/// How far the work is, for programs: `format` is "json" then.
void AddProgressOption(CLI::App& command, std::string& format);
/// Whether a program is told the progress. \throw ToolError when the result is to be JSON, too
bool IsProgressJson(const std::string& format, bool isResultJson);
/// Adds the flag `--strict` to a command that makes, checks or runs a job.
void AddStrictFlag(CLI::App& command, bool& strict);

/// Sets what `command` does once all arguments are parsed; the result is the exit code. A command without the
/// option `-o` gets it, for what it writes to standard output.
void OnRun(CLI::App& command, std::function<int()> run);

} // namespace Zelnor::Tool
