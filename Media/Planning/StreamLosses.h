#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

#include "Core/Interfaces/Property.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// What a stream loses when it is converted: fields, colours, bits, chroma, transparency, channels, and the
/// data of high dynamic range. Nothing is said of a record whose encoder is not known.
/// \param record     what the stream becomes
/// \param container  the output's, a `FORMAT_` text
std::vector<std::string> StreamLosses(const MediaStream& source, const Core::Property& record,
                                      const std::string& container);

} // namespace Zelnor::Media
