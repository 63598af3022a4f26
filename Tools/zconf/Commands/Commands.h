#pragma once

#include <CLI/CLI.hpp>

/// \file
/// One function for each group of commands. A new group is a source of its own, a line here, and a line in
/// `AddAllCommands`.

namespace Zelnor::Tool
{

void AddAllCommands(CLI::App& app);

/// job new, job show, job check, job draw
void AddJobCommands(CLI::App& app);
/// probe
void AddProbeCommand(CLI::App& app);
/// list codecs, list formats and so on
void AddListCommands(CLI::App& app);
/// explain
void AddExplainCommand(CLI::App& app);
/// bitrate
void AddBitrateCommand(CLI::App& app);
/// extensions
void AddExtensionsCommand(CLI::App& app);

} // namespace Zelnor::Tool
