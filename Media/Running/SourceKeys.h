#pragma once

// Private to the library, not installed.

#include "Media/Place.h"
#include "Media/Probe/MediaProbe.h"

#include "Core/Interfaces/Property.h"

#include <vector>

namespace Zelnor::Media
{

class FaultList;

/// Reads which streams of a source its record says that somebody chose to leave out. What is not a list of
/// such streams is a fault, and none is left out.
/// \param place  the source's node
std::vector<unsigned int> ReadLeftOut(const Core::Property& source, const MediaFile& file, const Place& place,
                                      FaultList& faults);
/// The same without the source's file: what cannot be a stream of any is a fault.
std::vector<unsigned int> ReadLeftOut(const Core::Property& source, const Place& place, FaultList& faults);

} // namespace Zelnor::Media
