#pragma once

// Private to the library, not installed.

#include <functional>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A file to convert, or a folder that cannot be looked into.
struct InputFile
{
    std::string path;
    std::string reason = {}; ///< why a folder cannot be looked into
};

/// The named files, and the media files in the named folders and all that are in them, in order of their
/// names. Those are the files with an extension of the vocabulary's groups of video and audio. Links are
/// followed, each folder is looked into once, and names that begin with a dot are passed over.
/// \param outputs  a folder whose files are not taken, unless it is named itself
std::vector<InputFile> FindInputFiles(const std::vector<std::string>& names, const std::string& outputs,
                                      const std::function<bool()>& isCancelled);

} // namespace Zelnor::Media
