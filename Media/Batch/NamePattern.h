#pragma once

// Private to the library, not installed.

#include <string>

namespace Zelnor::Media
{

/// What stands for the placeholders of a name pattern.
struct NameFields
{
    std::string stem;
    std::string ext;
    std::string preset;
    std::string number;
    std::string parent;
};

/// \throw PlanException "the name pattern '{stm}': unknown placeholder '{stm}'; did you mean 'stem'?"
void CheckNamePattern(const std::string& pattern);

/// The name for these fields. A dot at its end, which comes of a container without an extension, is left out.
/// \throw PlanException also when that is not the name of a file
std::string ApplyNamePattern(const std::string& pattern, const NameFields& fields);

} // namespace Zelnor::Media
