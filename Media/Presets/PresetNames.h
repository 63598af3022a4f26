#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Property.h"

#include <string>

/// \file
/// Names in presets: those that people may write for numbers, and what they may have meant by a wrong one.

namespace Zelnor::Media
{

/// Turns the names of pixel formats in a preset's streams ("YUV420P", "yuv420p") into their numbers. What is
/// not a name is left as it is.
void ResolveNames(Core::Property& preset);

/// The same for one setting of a stream.
Core::Property WithNumbers(Core::Property setting);

/// "; did you mean 'STEREO'?" for a setting whose value is a wrong name; empty when none is near, or its
/// values are not names.
std::string SuggestName(const Core::Property& setting);

} // namespace Zelnor::Media
