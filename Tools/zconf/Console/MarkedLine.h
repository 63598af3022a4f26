#pragma once

#include "Tools/zconf/Console/Terminal.h"

#include <cstddef>
#include <string>

namespace Zelnor::Tool
{

/// The line of a text that holds the byte at `offset`, and a line below it with marks under what begins
/// there:
///
///       | "codec_id": "CODEC_ID_H246",
///       |             ^~~~~~~~~~~~~~~
///
/// Tabs become blanks and everything that a terminal would obey is escaped. Of a long line, what is around
/// the place. Characters that are two columns wide, and those that have no width, are counted as that.
/// \param length  bytes that are marked, at least one column; what is on later lines is not
std::string MarkedLine(const std::string& text, std::size_t offset, std::size_t length, const Painter& paint);

/// The columns that a terminal gives a character: 0, 1 or 2.
std::size_t ColumnsOf(char32_t point);

} // namespace Zelnor::Tool
