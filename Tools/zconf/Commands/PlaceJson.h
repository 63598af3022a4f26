#pragma once

#include "Media/Place.h"
#include "Tools/zconf/Console/JsonOutput.h"

namespace Zelnor::Tool
{

/// Writes what is known of the place, but for the document, as members of the object that is being written.
void WritePlace(const Media::Place& place, JsonOutput& output);

} // namespace Zelnor::Tool
