#pragma once

// Private to the library, not installed.

#include "Media/Place.h"

#include "Core/Interfaces/Property.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A stream of a preset that no job can make.
struct UnsupportedStream
{
    Place place; ///< of its codec
    /// "the container mp4 cannot hold CODEC_ID_VP8; it holds CODEC_ID_H264, ...; CODEC_ID_VP8 goes into ..."
    std::string reason;
    const Core::Property* codec;      ///< in the preset
    std::vector<std::string> nearest; ///< codecs in its place, the best first; may be empty
};

/// The streams whose codec the preset's container cannot hold, as far as FFmpeg knows that before a file is
/// written.
/// \param preset  what of it does not keep to the rules of presets is passed over
std::vector<UnsupportedStream> FindUnsupportedStreams(const Core::Property& preset,
                                                      const std::string& file = "");

} // namespace Zelnor::Media
