#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Export.h"

#include <string>

namespace Zelnor::Media
{

/// What a name of a file means, whatever way it is spelled: names with equal identities mean the same file,
/// be it there or not.
std::string FileIdentity(const std::string& name);

/// Whether both names mean the same file, be it there or not.
ZELNOR_API bool IsSameFile(const std::string& one, const std::string& other);

} // namespace Zelnor::Media
