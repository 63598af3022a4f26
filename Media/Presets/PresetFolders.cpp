#include "Media/Presets/PresetFolders.h"

#include "Media/Folder.h"
#include "Media/MediaException.h"
#include "Media/NearestNames.h"

#include <dlfcn.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <string_view>
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

/// The names themselves as long as they can be taken in at a glance.
std::string KnownText(const std::vector<std::string>& names)
{
    constexpr std::size_t kMost = 12;
    std::string text;
    for (const std::string& name : names)
    {
        text += (text.empty() ? "" : ", ") + name;
    }
    return names.empty()           ? "none is known"
           : names.size() <= kMost ? "known: " + text
                                   : std::to_string(names.size()) + " are known";
}

bool IsFile(const fs::path& path)
{
    std::error_code error;
    return fs::is_regular_file(path, error);
}

bool EndsWithExtension(const std::string& name)
{
    const std::string_view extension = kExtension;
    return name.size() >= extension.size() &&
           name.compare(name.size() - extension.size(), extension.size(), extension) == 0;
}

/// Nothing that such a name is made of leads out of a folder, or ends it early.
bool IsPresetName(const std::string& name)
{
    constexpr std::string_view kSigns = " -_+.,()";
    const auto isAllowed = [kSigns](char c) {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        const bool isAscii = static_cast<unsigned char>(c) < 0x80;
        return !isAscii || isLetter || kSigns.find(c) != std::string_view::npos;
    };
    return !name.empty() && name.front() != '.' && name.front() != '-' &&
           std::all_of(name.begin(), name.end(), isAllowed);
}

/// The variable, or what it means when it is not set or empty.
std::string Variable(const char* name, const std::string& otherwise)
{
    const char* const value = std::getenv(name);
    return value == nullptr || *value == '\0' ? otherwise : value;
}

/// Where people and systems keep presets, there or not.
std::vector<fs::path> DataFolders()
{
    const std::string home = Variable("HOME", "");
    std::string list = Variable("XDG_DATA_HOME", home.empty() ? "" : home + "/.local/share") + ":" +
                       Variable("XDG_DATA_DIRS", "/usr/local/share:/usr/share") + ":";
    std::vector<fs::path> folders;
    for (std::size_t begin = 0; begin < list.size(); begin = list.find(':', begin) + 1)
    {
        const fs::path folder = list.substr(begin, list.find(':', begin) - begin);
        if (folder.is_absolute())
        {
            folders.push_back(folder / "zelnor/presets");
        }
    }
    return folders;
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
    std::vector<fs::path> candidates = DataFolders();
    if (!program.empty())
    {
        candidates.push_back(program / "../share/zelnor/Presets");
    }
    if (!library.empty())
    {
        candidates.push_back(library / "../share/zelnor/Presets");
        // Libraries may stand in a folder for their architecture.
        candidates.push_back(library / "../../share/zelnor/Presets");
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
            if (name.extension() == kExtension && IsPresetName(name.stem().string()) &&
                IsFile(folder.native() / name))
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
    const auto refuse = [&name](const std::string& reason) {
        ZELNOR_THROW(kUnit, MakeError<PresetFileException>(Place{name.empty() ? "''" : name}, reason));
    };
    std::error_code error;
    // The system would end a name at a NUL byte, and find another file.
    const bool isWhole = !name.empty() && name.find('\0') == std::string::npos;
    const bool isThere = isWhole && fs::exists(name, error) && !fs::is_directory(name, error);
    const bool isFileName = EndsWithExtension(name);
    if (isWhole && (name.find('/') != std::string::npos || isThere))
    {
        return name;
    }
    const std::string file = name + (isFileName ? "" : kExtension);
    for (const ioPath& folder : folders)
    {
        if (IsPresetName(name) && IsFile(folder.native() / file))
        {
            return ioPath(folder.native() / file).utf8string();
        }
    }
    const std::vector<std::string> known = ListPresets(folders);
    refuse("neither a file nor a known preset (" + KnownText(known) + ")" + DidYouMean(name, known));
    return {};
}

} // namespace Zelnor::Media
