#pragma once

#include "Media/Jobs/JobFile.h"

#include <CLI/CLI.hpp>

#include <string>

/// \file
/// Shared by all commands that read a job.

namespace Zelnor::Tool
{

/// Adds the argument JOB, whose value is kept in `name`.
void AddJobArgument(CLI::App& command, std::string& name);

/// Reads the job's document `name`, or standard input for "-". Notes about it go to standard error.
/// \throw Media::JobException, Core::CoreException
Media::JobFile OpenJob(const std::string& name);

} // namespace Zelnor::Tool
