#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// \file
/// How the commands are used, as plain values: what the manual pages show and the shells complete.

namespace Zelnor::Tool
{

/// An option, or an argument without a name of its own.
struct OptionUsage
{
    std::vector<std::string> names = {};   ///< "-o", "--document"; of an argument: "JOB"
    std::string value = {};                ///< what the value is: "FILE", "TEXT"; empty for a flag
    std::vector<std::string> choices = {}; ///< all values, when there are few
    std::string help = {};
    bool isRequired = false;
    bool isRepeatable = false;
    char delimiter = '\0'; ///< between several values in one word
};

struct CommandUsage
{
    std::string path = {}; ///< "zconf job run"
    std::string help = {};
    std::vector<OptionUsage> options = {};
    std::vector<OptionUsage> arguments = {};
    std::vector<CommandUsage> commands = {};

    /// The last word of the path.
    std::string Name() const;
};

/// \param path  what is written for `app`: "zconf"
CommandUsage UsageOf(const CLI::App& app, const std::string& path);

} // namespace Zelnor::Tool
