#pragma once

#include "Media/Text.h"

#include <cstddef>
#include <string>

namespace Zelnor::Tool
{

/// The text for one line of a terminal: control characters and bytes that are no UTF-8 become C escapes, so
/// that no file name or record can break a line or steer the terminal.
std::string Printable(const std::string& text);

/// How many columns a printable text takes, a character counting as one.
std::size_t Columns(const std::string& text);

using Media::Count;

} // namespace Zelnor::Tool
