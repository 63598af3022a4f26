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
/// Quotes, backslashes, invisible controls (`IsInvisibleControl`) and bytes that are not UTF-8 are written as
/// C escapes, so that the text can be used in a quoted DOT label and no text looks like another.
/// The stream's locale and format flags have no effect.
///
/// \param indent  the level of the first line; less than 0 counts as 0
/// \param printName  whether to print the line of `property` itself; if not, its children start at `indent`
/// \param printChildren  whether to print the children
ZELNOR_API void PrintPropertyValue(const Property& property, int indent, std::ostream& os, bool printName,
                                   bool printChildren);

} // namespace Zelnor::Core
