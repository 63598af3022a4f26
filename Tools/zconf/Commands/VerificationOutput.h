#pragma once

#include "Media/Verifying/Verification.h"

#include <CLI/CLI.hpp>

#include <map>
#include <optional>
#include <string>
#include <vector>

/// \file
/// What the commands that verify output files share.

namespace Zelnor::Tool
{

/// What became of one output file of a run.
struct RunTarget
{
    std::string file;
    std::string outcome; ///< "done", "different", "failed"
    std::vector<std::string> warnings = {};
    std::vector<std::string> notes = {};
    std::vector<Media::TargetDifference> differences = {};
    std::string kept = {};                      ///< where a file that is different was put; empty: nowhere
    std::optional<int> exitCode = std::nullopt; ///< ffmpeg's, when it failed
    std::vector<std::string> messages = {};     ///< its last lines then
};

/// The words of `--verify`.
const std::map<std::string, Media::VerificationDepth>& VerificationDepths();

/// Adds the option `--verify`, whose value is kept in `word`.
void AddVerifyOption(CLI::App& command, std::string& word);

void WriteRunJson(const std::vector<RunTarget>& targets);
void WriteVerificationJson(const std::vector<Media::TargetVerification>& targets);

} // namespace Zelnor::Tool
