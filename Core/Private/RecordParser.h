#pragma once

// Private to the libraries, not installed: reads a record from a document.

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/PropertyReader.h"
#include "Core/Private/JsonCursor.h"

namespace Zelnor::Core
{

/// Sends the events of the value that comes next to `record`. The same as a RapidJSON reader that is given
/// `record` as its handler, but what a load does for every value is in one piece of code.
/// The text must stay until the record has been taken, unless it is read piece by piece.
/// \returns whether it is JSON
/// \throw what the input throws, and `std::bad_alloc`; the reader can only be destroyed then
ZELNOR_API bool ParseRecord(JsonCursor& cursor, PropertyReader& record);

} // namespace Zelnor::Core
