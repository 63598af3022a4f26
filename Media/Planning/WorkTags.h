#pragma once

// Private to the library, not installed.

#include "Media/Planning/MuxerTrial.h"

/// \file
/// Which tags of a source stay true in another file: those about the work, whatever their names, but not
/// those about the file that they stand in.

namespace Zelnor::Media
{

/// Of the file, in the vocabulary's spelling where it has the name. What an Ogg file says of its one stream
/// is about the work as well.
TagList WorkTagsOf(const MediaFile& source);
/// Of a stream, but for its language and timecode. Empty where they are taken for those of the file.
TagList WorkTagsOf(const MediaFile& source, const MediaStream& stream);

/// Whether the tag tells how loud the sound is, so that it is true only of sound with the same channels.
bool IsAboutLoudness(const std::string& name);

/// Why a tag of somebody's file cannot be passed on: "its name is not a visible text without '='". Empty when
/// it can.
std::string FindTagFault(const std::string& name, const std::string& text);

} // namespace Zelnor::Media
