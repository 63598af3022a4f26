#pragma once

#include "Media/Presets/PresetFolders.h"

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/Property.h"
#include "Core/Interfaces/ioPath.h"

#include <string>
#include <vector>

/// \file
/// What presets there are, for a menu or a list:
///
///     for (const StoredPreset& preset : ListStoredPresets())
///     {
///         std::cout << preset.name << ": " << preset.title << " (" << preset.makes << ")\n";
///     }

namespace Zelnor::Media
{

/// A preset that is found by its name.
struct StoredPreset
{
    std::string name;           ///< its file's, without the extension
    std::string file;           ///< where it is, for `PresetFile::Open`
    std::string title = {};     ///< what the preset calls itself for people; may be empty
    std::string container = {}; ///< a `FORMAT_` text
    /// What it makes, in one line: "mp4; video H264 1280x720, 4000 kbit/s; audio AAC STEREO, 160 kbit/s"
    std::string makes = {};
    /// Why it is not a preset, with its place; empty when it is. The texts above are empty then.
    std::string fault = {};
};

/// The presets in the folders, in the order of their names. Of several with one name there is the one that
/// `FindPreset` finds. A file that does not hold a preset is among them, with its fault.
ZELNOR_API std::vector<StoredPreset>
ListStoredPresets(const std::vector<ioPath>& folders = DefaultPresetFolders());

/// What a preset makes, in one line, as `StoredPreset::makes` says it.
/// \param preset  the record of a preset that was read
ZELNOR_API std::string DescribePreset(const Core::Property& preset);

} // namespace Zelnor::Media
