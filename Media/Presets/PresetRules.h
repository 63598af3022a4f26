#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Property.h"

namespace Zelnor::Media
{

/// Checks that an output can be made from a preset's record: it has a known container and at least one
/// stream, every stream is of a known type and names a codec of that type, and what it sets is of the right
/// kind. Keys that are not known here are left to the engine. \throw PresetFileException
/// "mp3.$$STREAMS$$.audio.bitrate: expected a positive integer, found 'fast'"
void CheckPreset(const Core::Property& preset);

} // namespace Zelnor::Media
