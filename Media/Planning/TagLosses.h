#pragma once

// Private to the library, not installed.

#include "Media/Planning/OutputContents.h"

#include <vector>

namespace Zelnor::Media
{

class OutputTrial;

/// Names the tags of the sources, and of the streams that are converted, that the output file will not have:
/// those that the job leaves out, that the container cannot hold, or that would not be true any more.
std::vector<Loss> TagLosses(const OutputFile& output, OutputTrial& trial);

/// The texts and numbers of a record's metadata.
TagList MetadataTags(const Core::Property& record);

} // namespace Zelnor::Media
