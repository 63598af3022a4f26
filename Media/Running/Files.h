#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Export.h"

#include <string>

namespace Zelnor::Media
{

/// What a name of a file means, whatever way it is spelled: names with equal identities mean the same file,
/// be it there or not. Where the file system folds case, so do the names of files that are not there.
std::string FileIdentity(const std::string& name);

/// Whether both names mean the same file, be it there or not.
ZELNOR_API bool IsSameFile(const std::string& one, const std::string& other);

/// What the name leads to, as an absolute name, wherever this process goes meanwhile. Links are followed,
/// also to a file that is not there yet. The name itself when it leads nowhere, as links in a circle do.
std::string ResolveLinks(const std::string& name);

/// The name without the differences that a file system which folds case does not see.
std::string FoldCase(const std::string& name);

/// Whether names that differ in case alone mean the same file in the folder. The folder's own files are asked
/// first; a file system that may fold case and has none to ask is taken to do so.
bool FoldsCase(const std::string& folder);

} // namespace Zelnor::Media
