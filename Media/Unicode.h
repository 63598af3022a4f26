#pragma once

// Private to the library, not installed.

namespace Zelnor::Media
{

/// Whether Unicode never assigns it. Documents of HTML and XML may not hold it.
inline bool IsNonCharacter(char32_t point)
{
    return (point >= 0xFDD0 && point <= 0xFDEF) || (point & 0xFFFEU) == 0xFFFEU;
}

} // namespace Zelnor::Media
