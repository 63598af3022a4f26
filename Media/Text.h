#pragma once

// Private to the library and to the tool, not installed.

#include <algorithm>
#include <cstddef>
#include <string>

namespace Zelnor::Media
{

/// Of ASCII letters only, whatever the locale.
inline std::string LowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

/// "1 node", "4 nodes"
inline std::string Count(std::size_t number, const std::string& noun)
{
    return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

} // namespace Zelnor::Media
