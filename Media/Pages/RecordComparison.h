#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Property.h"

#include <string>

namespace Zelnor::Media
{

/// Rows of a table for a source's record beside what the job makes of it: the key, both values, and what
/// becomes of it in a word. The target's keys come first, in its order. Linear in the size of both, but for
/// sorting names.
/// \param source  null when it is not known
/// \param isKept  whether what the target does not say stays as it is in the source
std::string ComparisonRows(const Core::Property* source, const Core::Property& target, bool isKept);

} // namespace Zelnor::Media
