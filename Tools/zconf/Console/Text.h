#pragma once

#include "Media/Text.h"

#include <cstddef>
#include <string>

namespace Zelnor::Tool
{

/// The text for one line of a terminal: invisible controls (`Core::IsInvisibleControl`) and bytes that are
/// not UTF-8 become C escapes of their bytes, so that no file name or record can break a line, steer the
/// terminal or look like another text.
std::string Printable(const std::string& text);

/// The text itself, or what `Printable` makes of one that is not UTF-8, for JSON, which is UTF-8 whatever
/// files and documents hold.
std::string Utf8Text(const std::string& text);

/// The width of a printable text, with one column for each character.
std::size_t Columns(const std::string& text);

using Media::Count;

} // namespace Zelnor::Tool
