#pragma once

#include "Tools/zconf/Console/CommandUsage.h"

namespace Zelnor::Tool
{

/// The first argument by which the scripts in Tools/zconf/Completion ask what can follow; not a command.
constexpr const char* kCompleteArgument = "__complete";

/// How the whole program is used.
CommandUsage ProgramUsage();

/// Writes what can stand for the last argument: a line "files" or "words", which says whether the shell
/// completes files too, then a line for each word, with a tab before its description.
/// \returns the exit code
int RunShellCompletion(int argc, char** argv);

} // namespace Zelnor::Tool
