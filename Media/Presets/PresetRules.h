#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Property.h"

#include <string>

namespace Zelnor::Media
{

/// Checks that an output can be planned from a preset's record: it has a known container and at least one
/// stream, every stream is of a known type and names a codec of that type, and what it sets is of the right
/// type and in the range that the planner calculates with. Unknown keys are refused.
///
/// \param file  how messages call the preset's file; empty: it is not from a file
/// \throw PresetFileException "mp3.json: mp3.$$STREAMS$$.audio.bitrate: expected a positive integer, found
///        'fast'"
void CheckPreset(const Core::Property& preset, const std::string& file = "");

/// Why a setting cannot stand in a stream of a preset, or beside the streams; empty when it can. Names of
/// pixel formats count as their numbers.
std::string FindStreamSettingFault(const Core::Property& setting);
std::string FindFileSettingFault(const Core::Property& setting);

} // namespace Zelnor::Media
