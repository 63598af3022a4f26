#pragma once

#include "Media/Probe/MediaProbe.h"

#include "Core/Interfaces/Property.h"

namespace Zelnor::Media
{

/// The record of a stream to make: a full codec descriptor with what `settings`, a preset's stream, asks for,
/// and for the rest what the source is, as near as the encoder and the container can do.
///
/// \param container  a `FORMAT_` text
/// \throw PlanException when FFmpeg cannot make such a stream: "the encoder libmp3lame does not take ..."
Core::Property MakeTargetCodec(const MediaStream& source, const Core::Property& settings,
                               const std::string& container);

/// The record of a stream that goes into the target unchanged.
Core::Property MakeCopiedCodec(const MediaStream& source);

/// The settings of a stream that every DVD player plays, for a source that a DVD cannot hold as it is.
Core::Property DvdSettings(const MediaStream& source);

} // namespace Zelnor::Media
