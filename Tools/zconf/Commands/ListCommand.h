#pragma once

#include <string>
#include <vector>

namespace Zelnor::Tool
{

/// The names that `zconf list <kind>` shows; none when there is no such list.
std::vector<std::string> NamesInList(const std::string& kind);

} // namespace Zelnor::Tool
