#pragma once

#include "Media/Jobs/JobFile.h"

#include <CLI/CLI.hpp>

#include <string>

/// \file
/// Running a job and telling how it goes; shared by the commands that do so.

namespace Zelnor::Tool
{

/// What the command line says of a run.
struct RunSettings
{
    std::string ffmpeg = "ffmpeg";
    bool overwrite = false;
    bool strict = false;     ///< whether a job is refused by which something of an input would be lost
    bool tellsLosses = true; ///< whether that is told otherwise
    std::string verify = "quick";
    bool keepUnverified = false;
    std::string scratch = {};
    bool json = false;         ///< what became of the files, when all is done
    std::string progress = {}; ///< "json": progress for programs on standard output
};

/// Adds the option for the folder in which ffmpeg writes.
void AddScratchOption(CLI::App& command, std::string& folder);

void AddRunOptions(CLI::App& command, RunSettings& settings);

/// Runs the job; notes and progress go to standard error, what a program asks for to standard output.
/// \returns the exit code
int RunTargets(const Media::JobFile& job, const RunSettings& settings);

/// Writes the commands of ffmpeg that would be run to standard output, and how large the files will be to
/// standard error.
void PrintCommands(const Media::JobFile& job, const RunSettings& settings);

} // namespace Zelnor::Tool
