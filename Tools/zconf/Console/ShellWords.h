#pragma once

#include <string>
#include <vector>

namespace Zelnor::Tool
{

/// A command as a line that a POSIX shell takes for exactly these words.
std::string ShellLine(const std::vector<std::string>& words);

} // namespace Zelnor::Tool
