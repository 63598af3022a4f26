#pragma once

#include <string>
#include <vector>

namespace Zelnor::Tool
{

/// A command line that a POSIX shell splits into exactly these words.
std::string ShellLine(const std::vector<std::string>& words);

} // namespace Zelnor::Tool
