#pragma once

// Private to the library and to the tool, not installed.

#include "Media/Jobs/JobFault.h"
#include "Media/Place.h"

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/Property.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A setting of a preset with which no job can be made.
struct UnsupportedSetting
{
    JobFault::Kind kind; ///< `Container` or `Encoder`
    Place place;
    /// "the container mp4 cannot hold CODEC_ID_VP8; it holds CODEC_ID_H264, ...; CODEC_ID_VP8 goes into ..."
    std::string reason;
    const Core::Property* value;      ///< in the preset
    std::vector<std::string> nearest; ///< codecs in its place, the best first; may be empty
};

/// The container that the installed FFmpeg does not write as one file, and the streams that the container
/// cannot hold, as far as FFmpeg knows that before a file is written, or that have no encoder here. A
/// disabled encoder is not among them, since a request may allow it. \param preset  what of it does not keep
/// to the rules of presets is passed over
ZELNOR_API std::vector<UnsupportedSetting> FindUnsupportedSettings(const Core::Property& preset,
                                                                   const std::string& file = "");

} // namespace Zelnor::Media
