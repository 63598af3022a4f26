#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

#include "Core/Interfaces/Property.h"

namespace Zelnor::Media
{

/// The settings of a stream that every DVD player plays, for a source that a DVD cannot hold as it is.
/// \param wanted  a preset's settings for it, or null; where they are for the same codec, all of them
///                that a DVD leaves open are taken over
Core::Property DvdSettings(const MediaStream& source, const Core::Property* wanted = nullptr);

} // namespace Zelnor::Media
