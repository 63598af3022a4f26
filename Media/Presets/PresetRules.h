#pragma once

// Private to the library, not installed.

#include "Media/Jobs/JobFault.h"
#include "Media/Place.h"

#include "Core/Interfaces/Property.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

/// The keys that a preset may have beside its streams' settings.
std::vector<std::string> KnownPresetKeys();

/// What a value must be, as messages say it, for keys of a preset and of its streams that have rules of their
/// own.
using ExpectedValues = std::vector<std::pair<std::string, std::string>>;
ExpectedValues ExpectedInPreset();
ExpectedValues ExpectedInStream();

/// One reason why a record is not a preset.
struct PresetFault
{
    Place place;
    std::string reason;
    /// In the preset: what the fault is about, or the group that lacks `missing`.
    const Core::Property* value;
    std::string missing; ///< a key; empty: nothing is missing
    JobFault::Kind kind;
};

/// Checks that an output can be planned from a preset's record: it has a known container and at least one
/// stream, every stream is of a known type and names a codec of that type, and what it sets is of the right
/// type and in the range that the planner calculates with. Unknown keys are refused. What is found is in the
/// order in which it is looked for.
///
/// \param most  after so many, it is not looked for more
/// \param file  how messages call the preset's file; empty: it is not from a file
std::vector<PresetFault> FindPresetFaults(const Core::Property& preset, const std::string& file,
                                          std::size_t most);
/// The same for the first of them.
/// \throw PresetFileException "mp3.json: mp3.$$STREAMS$$.audio.bitrate: expected a positive integer, found
///        'fast'"
void CheckPreset(const Core::Property& preset, const std::string& file = "");

/// Why a setting cannot stand in a stream of a preset, or beside the streams; empty when it can. Names of
/// pixel formats count as their numbers.
std::string FindStreamSettingFault(const Core::Property& setting);
std::string FindFileSettingFault(const Core::Property& setting);

} // namespace Zelnor::Media
