#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Property.h"

/// \file
/// Names that people may write in presets for numbers.

namespace Zelnor::Media
{

/// Turns the names of pixel formats in a preset's streams ("YUV420P", "yuv420p") into their numbers. What is
/// not a name is left as it is.
void ResolveNames(Core::Property& preset);

/// The same for one setting of a stream.
Core::Property WithNumbers(Core::Property setting);

} // namespace Zelnor::Media
