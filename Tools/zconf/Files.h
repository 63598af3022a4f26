#pragma once

#include <string>

namespace Zelnor::Tool
{

/// Whether both names mean the same file, be it there or not.
bool IsSameFile(const std::string& one, const std::string& other);

} // namespace Zelnor::Tool
