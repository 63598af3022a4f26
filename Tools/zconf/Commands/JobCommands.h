#pragma once

#include <CLI/CLI.hpp>

namespace Zelnor::Tool
{

/// The commands below `job`, each in a source of its own.
void AddJobNew(CLI::App& job);
void AddJobShow(CLI::App& job);
void AddJobCheck(CLI::App& job);
void AddJobDraw(CLI::App& job);
void AddJobRun(CLI::App& job);
void AddJobDiff(CLI::App& job);

} // namespace Zelnor::Tool
