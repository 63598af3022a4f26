#pragma once

// Private to the library, not installed.

#include "Media/Planning/OutputContents.h"

#include <vector>

namespace Zelnor::Media
{

class OutputTrial;

/// Names the streams of the sources that the output file neither converts nor carries, each by itself; of a
/// kind of which it has none, pictures or sound, one line for all.
std::vector<Loss> StreamsLeftOut(const OutputFile& output, const std::vector<CarriedStream>& carried,
                                 OutputTrial& trial);

/// Whether somebody can choose to leave the stream out by choosing others. Covers and attachments stand in a
/// list of their own.
bool CanBeLeftOut(const MediaStream& stream);

/// Whether one of them is a cover that is written as a tag, of which a file has one.
bool HasCoverTag(const std::vector<CarriedStream>& carried);

} // namespace Zelnor::Media
