#pragma once

// Private to the library, not installed.

#include "Media/Batch/Batch.h"
#include "Media/Batch/BatchResult.h"

#include <string>

namespace Zelnor::Media
{

class BatchFolder;

/// The text of "batch.json".
std::string BatchText(const Batch& batch);
/// \throw JobException
Batch ReadBatch(const BatchFolder& folder);

/// The text of a result.
std::string ResultText(const BatchResult& result);
/// \param file  what messages call it
/// \throw JobException
BatchResult ParseResult(const std::string& text, const std::string& file);

/// Whether the text can be the name of a file in a folder, and nothing else.
bool IsFileName(const std::string& name);
/// Whether the text is a path as a batch keeps it: absolute, or relative with ".." only at its beginning.
bool IsKeptPath(const std::string& path);
/// Whether an absolute path is that of the folder, or of something in it; links are not followed.
bool IsInFolder(const std::string& path, const std::string& folder);

} // namespace Zelnor::Media
