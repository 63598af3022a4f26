#pragma once

#include "Media/Planning/JobPlan.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// \file
/// Shared by the commands that make a job from a media file and a preset.

namespace Zelnor::Tool
{

/// What the command line says of a job beside its files.
struct JobOptions
{
    std::vector<unsigned int> streams = {};
    std::vector<std::string> merges = {};
    bool losslessDvd = false;
    std::vector<std::string> settings = {};
    std::vector<std::string> codecs = {};
    std::string maxSize = {};
    bool upscale = false;
    std::string frameRate = {};
    std::vector<std::string> audioLanguages = {};
    bool allAudio = false;
    std::vector<std::string> copied = {};
    std::string start = {};
    std::string end = {};
    bool allowDisabled = false;
    bool strict = false;
};

/// The kinds of streams that `--copy` takes.
std::vector<std::string> CopiedKindNames();

void AddJobOptions(CLI::App& command, JobOptions& options);

/// \throw ToolError, Media::PlanException when an option's value is not what the option asks for
Media::JobRequest RequestOf(const JobOptions& options, const std::string& output);

/// A job that was planned, and where its preset came from.
struct NewJob
{
    Media::PlannedJob job;
    std::string presetFile;
};

/// Plans the job that makes `output` from `input`. Neither may be a standard stream.
/// \param preset  a file, a name, or "-" for standard input; empty: of the presets whose files have the
/// extension of `output`, one that is named like it, else the one with the shortest name; a note names it
NewJob PlanNewJob(const std::string& preset, const std::string& input, const Media::JobRequest& request);

/// Refuses a job by which its own files would be destroyed. \throw ToolError
/// \param document  the file to write the job to; "-" or empty: none
void CheckDistinct(const NewJob& made, const std::string& input, const std::string& document);

} // namespace Zelnor::Tool
