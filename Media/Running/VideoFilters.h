#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

#include "Core/Interfaces/Property.h"

#include <string>

/// \file
/// The filters of videos, in two parts: what comes before subtitles are drawn, and what comes after it.

namespace Zelnor::Media
{

/// Makes the frames that there will be: deinterlacing and the frame rate. Empty: they stay.
/// \param codec   the record of checked settings of what the source becomes
/// \param isPart  the first frame may come a part of a frame's time after the beginning
std::string TimeFilters(const MediaStream& source, const Core::Property& codec, bool isPart = false);

/// Makes of each frame what the record says: size, aspect, colours and samples, GIF's palette.
std::string FrameFilters(const MediaStream& source, const Core::Property& codec);

/// Fits the bitmaps of a subtitle to the frames of a video.
std::string BitmapFilters(const MediaStream& subtitle, const MediaStream& video);

/// Why the record asks for other colours than filters can make of the source's; empty when they can.
/// \param key  gets the key of the record that says so
std::string FindColorFault(const MediaStream& source, const Core::Property& codec, std::string& key);

} // namespace Zelnor::Media
