#pragma once

// Private to the library, not installed.

#include <dirent.h>

#include <memory>
#include <string>
#include <vector>

namespace Zelnor::Media
{

struct CloseFolder
{
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// A folder that is open to be listed. The standard library's iterator ends the process when it runs out of
/// memory.
using Folder = std::unique_ptr<DIR, CloseFolder>;

/// The names of everything in the folder.
inline std::vector<std::string> NamesIn(const Folder& folder)
{
    std::vector<std::string> names;
    while (const dirent* const entry = folder == nullptr ? nullptr : ::readdir(folder.get()))
    {
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
        {
            names.push_back(name);
        }
    }
    return names;
}

} // namespace Zelnor::Media
