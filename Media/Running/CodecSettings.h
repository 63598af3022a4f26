#pragma once

// Private to the library, not installed.

#include "Media/Jobs/FaultList.h"

#include "Core/Interfaces/Property.h"

namespace Zelnor::Media
{

/// The settings of a codec's record that are what their keys ask for, so that whoever reads them need not
/// ask for kinds and ranges again. Each other one is a fault: unknown, repeated, of another kind, out of
/// range, a text that no argument can hold. Of a stream that is copied, only the settings that are used
/// count.
Core::Property CheckSettings(const Core::Property& codec, bool isCopied, const Place& place,
                             FaultList& faults);

/// The metadata of `record` that are texts or numbers and can be given to a program.
Core::Property CheckMetadata(const Core::Property& record, const Place& place, FaultList& faults);

} // namespace Zelnor::Media
