#pragma once

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/ioPath.h"

#include <string>
#include <vector>

/// \file
/// Where presets are found by name. A preset's name is its file's without the extension ".json": letters,
/// digits, blanks and any of "-_+.,()", of which a dot or a hyphen is not the first.
///
///     const auto preset = PresetFile::Open(FindPreset("mp3", DefaultPresetFolders()));

namespace Zelnor::Media
{

/// The folders that exist of those in which presets are found, best first. Those of people and systems are
/// the XDG base directories: "zelnor/presets" in $XDG_DATA_HOME ("~/.local/share") and in each
/// of $XDG_DATA_DIRS ("/usr/local/share:/usr/share"), where names that are not absolute count for nothing.
/// Then those that are installed with the libraries: "../share/zelnor/Presets" seen from the program's
/// folder, the same seen from this library's folder, and, for a library that stands where it was built, the
/// "Presets" of its sources. They are found anew in each call and are relative to the loaded files, so an
/// installation can be moved as a whole. May be empty.
ZELNOR_API std::vector<ioPath> DefaultPresetFolders();

/// The names of the presets in the folders, in order, each one once. Folders that cannot be read hold none,
/// and what is not a regular file is not a preset.
ZELNOR_API std::vector<std::string> ListPresets(const std::vector<ioPath>& folders);

/// The path of the file that `name` means: `name` itself if it holds a slash or there is such a file, else
/// the first preset of that name in the folders.
/// \throw PresetFileException "mp5: neither a file nor a known preset (known: flac, mp3); did you mean
///        'mp3'?"
ZELNOR_API std::string FindPreset(const std::string& name,
                                  const std::vector<ioPath>& folders = DefaultPresetFolders());

} // namespace Zelnor::Media
