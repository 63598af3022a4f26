#pragma once

#include "Tools/zconf/Console/CommandUsage.h"

#include <functional>
#include <string>
#include <vector>

namespace Zelnor::Tool
{

/// A word that can stand where the cursor is.
struct Candidate
{
    std::string text;
    std::string help = {};
};

/// The values of an option or argument that a shell can complete.
struct KnownValues
{
    bool files = false; ///< whether files can be named
    std::vector<std::string> names = {};
};

/// What can stand where the cursor is.
struct Completion
{
    bool files = false; ///< whether a file can, which the shell completes itself
    std::vector<Candidate> candidates = {};
};

/// What is known of the values of `option` of `command`, where `given` are the arguments before it, and
/// `typed` is the beginning of the value.
using ValuesOf = std::function<KnownValues(const CommandUsage& command, const OptionUsage& option,
                                           const std::vector<std::string>& given, const std::string& typed)>;

/// Completes a command line.
/// \param words  what follows the program's name up to the cursor, the last of which is completed; of
/// "--option=value" the candidates are those of the value alone
Completion CompleteWord(const CommandUsage& program, const std::vector<std::string>& words,
                        const ValuesOf& valuesOf);

} // namespace Zelnor::Tool
