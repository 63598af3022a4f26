#pragma once

// Private to the library and to the tool, not installed.

#include "Core/Interfaces/Export.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A command line that a POSIX shell splits into exactly these words. What a reader would not see in it is
/// written as a command that makes it; ends of lines and tabs stay.
ZELNOR_API std::string ShellLine(const std::vector<std::string>& words);

} // namespace Zelnor::Media
