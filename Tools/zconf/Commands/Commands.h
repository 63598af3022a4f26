#pragma once

#include <CLI/CLI.hpp>

/// \file
/// One function for each command, which stands in a source of its name. A new command is such a source, a
/// line here, and a row in Commands.cpp.

namespace Zelnor::Tool
{

void AddAllCommands(CLI::App& app);
/// Adds the one command that the arguments begin with. Where they begin otherwise, or with the command that
/// tells of the others, it adds all. A command costs most of what a short run of another one takes.
void AddNamedCommand(CLI::App& app, int argc, const char* const* argv);

// Commands below "zconf job".
void AddJobNewCommand(CLI::App& job);
void AddJobShowCommand(CLI::App& job);
void AddJobCheckCommand(CLI::App& job);
void AddJobDrawCommand(CLI::App& job);
void AddJobRunCommand(CLI::App& job);
void AddJobVerifyCommand(CLI::App& job);
void AddJobDiffCommand(CLI::App& job);

// Commands below "zconf batch".
void AddBatchNewCommand(CLI::App& batch);
void AddBatchRunCommand(CLI::App& batch);
void AddBatchStatusCommand(CLI::App& batch);
void AddBatchReportCommand(CLI::App& batch);

// Commands below "zconf preset".
void AddPresetListCommand(CLI::App& preset);
void AddPresetShowCommand(CLI::App& preset);
void AddPresetNewCommand(CLI::App& preset);

// Commands below "zconf".
void AddValidateCommand(CLI::App& app);
void AddProbeCommand(CLI::App& app);
void AddListCommand(CLI::App& app);
void AddExplainCommand(CLI::App& app);
void AddBitrateCommand(CLI::App& app);
void AddExtensionsCommand(CLI::App& app);
void AddConvertCommand(CLI::App& app);
void AddHelpCommand(CLI::App& app);

} // namespace Zelnor::Tool
