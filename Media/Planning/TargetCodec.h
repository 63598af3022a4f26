#pragma once

// Private to the library, not installed.

#include "Media/Place.h"
#include "Media/Probe/MediaProbe.h"

#include "Core/Interfaces/Property.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A stream of the output that is to be made.
struct TargetStream
{
    const MediaStream& source;
    const Core::Property& settings; ///< a preset's stream
    const std::string& container;   ///< the output's, a `FORMAT_` text
    /// Of the stream, with the key of `settings` if they are a preset's: errors name it.
    Place place;
    std::vector<std::string>& notes; ///< what the user should know about it is appended
    bool isBitrateAsked = false;     ///< the bitrate is the request's, not the preset's: it stays
};

/// The record of the stream: a full codec descriptor with what the settings ask for, and for the rest what
/// the source is, as near as the encoder and the container can do.
/// \throw PlanException when FFmpeg cannot make such a stream
Core::Property MakeTargetCodec(const TargetStream& stream);

/// The record of a stream that goes into the output unchanged.
Core::Property MakeCopiedCodec(const MediaStream& source);

} // namespace Zelnor::Media
