#include "Media/Presets/PresetFolders.h"

#include "Media/Folder.h"
#include "Media/MediaException.h"
#include "Media/NearestNames.h"

#include <dlfcn.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <new>
#include <system_error>

namespace Zelnor::Media
{

namespace
{

namespace fs = std::filesystem;

constexpr const char* kUnit = "Media/Presets/PresetFolders";

constexpr const char* kExtension = ".json";

fs::path ProgramFolder()
{
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path();
}

/// The folder of the library that this code is in, or of the program that it was linked into.
fs::path LibraryFolder()
{
    Dl_info info = {};
    // Any object of the library will do.
    if (::dladdr(&kExtension, &info) == 0 || info.dli_fname == nullptr)
    {
        return {};
    }
    std::error_code error;
    const fs::path library = fs::canonical(info.dli_fname, error);
    if (error == std::errc::not_enough_memory)
    {
        throw std::bad_alloc();
    }
    // A program is named as it was started, which may be relative to another working folder.
    return error ? ProgramFolder() : library.parent_path();
}

std::string KnownText(const std::vector<ioPath>& folders)
{
    std::string text;
    for (const std::string& name : ListPresets(folders))
    {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text.empty() ? "none is known" : "known: " + text;
}

bool IsFile(const fs::path& path)
{
    std::error_code error;
    return fs::exists(path, error) && !fs::is_directory(path, error);
}

/// Nothing when it cannot be opened.
Folder OpenFolder(const fs::path& path)
{
    errno = 0;
    Folder folder(::opendir(path.c_str()));
    if (folder == nullptr && errno == ENOMEM)
    {
        throw std::bad_alloc();
    }
    return folder;
}

} // namespace

std::vector<ioPath> DefaultPresetFolders()
{
    const fs::path program = ProgramFolder();
    const fs::path library = LibraryFolder();
    std::vector<fs::path> candidates;
    if (!program.empty())
    {
        candidates.push_back(program / "../share/zelnor/Presets");
    }
    if (!library.empty())
    {
        candidates.push_back(library / "../share/zelnor/Presets");
        // Libraries may stand in a folder for their architecture.
        candidates.push_back(library / "../../share/zelnor/Presets");
        if (IsFile(library / "../CMakeCache.txt"))
        {
            candidates.push_back(library / "../../../Presets");
        }
    }
    std::vector<ioPath> folders;
    for (const fs::path& candidate : candidates)
    {
        std::error_code error;
        const fs::path path = candidate.lexically_normal();
        const bool isKnown = std::any_of(folders.begin(), folders.end(),
                                         [&path](const ioPath& folder) { return folder.native() == path; });
        if (!isKnown && fs::is_directory(path, error))
        {
            folders.emplace_back(path);
        }
    }
    return folders;
}

std::vector<std::string> ListPresets(const std::vector<ioPath>& folders)
{
    std::vector<std::string> names;
    for (const ioPath& folder : folders)
    {
        for (const fs::path name : NamesIn(OpenFolder(folder.native())))
        {
            if (name.extension() == kExtension && IsFile(folder.native() / name))
            {
                names.push_back(name.stem().string());
            }
        }
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

std::string FindPreset(const std::string& name, const std::vector<ioPath>& folders)
{
    // The system would end a name at a NUL byte, and find another file.
    if (!name.empty() && name.find('\0') == std::string::npos)
    {
        if (name.find('/') != std::string::npos || IsFile(name))
        {
            return name;
        }
        for (const ioPath& folder : folders)
        {
            for (const std::string& file : {name, name + kExtension})
            {
                if (IsFile(folder.native() / file))
                {
                    return ioPath(folder.native() / file).utf8string();
                }
            }
        }
    }
    ZELNOR_THROW(kUnit,
                 MakeError<PresetFileException>(Place{name.empty() ? "''" : name},
                                                "neither a file nor a known preset (" + KnownText(folders) +
                                                    ")" + DidYouMean(name, ListPresets(folders))));
}

} // namespace Zelnor::Media
