#pragma once

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/Property.h"

#include <ostream>

namespace Zelnor::Core
{

/// Writes a dump of the tree for people: one property a line, two blanks of indent a level, `name: value`, a
/// group as `name:` with its children below, a rational as `30000/1001`, a property without a value as
/// `name: null`.
///
/// Quotes, backslashes, control characters (C1 and bidirectional ones, too) and bytes that are not UTF-8 are
/// written as C escapes, so that the text may stand inside a quoted DOT label and looks like what it is. The
/// stream's locale and format flags have no influence.
///
/// \param indent  levels to begin with; less than 0 counts as 0
/// \param printName  whether the outermost property's own line is printed; without it its children begin at
///   `indent`
/// \param printChildren  whether the children are printed
ZELNOR_API void PrintPropertyValue(const Property& property, int indent, std::ostream& os, bool printName,
                                   bool printChildren);

} // namespace Zelnor::Core
