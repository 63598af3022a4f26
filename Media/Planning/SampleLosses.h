#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

#include "Core/Interfaces/Property.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// What the samples of an output's stream lack of its source's: "its 10 bits a sample become 8". A record
/// that leaves their format open gets the one that FFmpeg takes, which loses the least. \param record  what
/// the stream becomes, a video's
std::vector<std::string> PixelLosses(const MediaStream& source, const Core::Property& record,
                                     const AVCodec& encoder, const std::string& container);

/// The same of sound. The bits of lossy codecs are not counted.
std::vector<std::string> SoundLosses(const MediaStream& source, const Core::Property& record,
                                     const AVCodec& encoder);

/// Whether the container has a place for the transparency of the encoder's videos. That of VP8 and VP9 stands
/// beside the stream.
bool HoldsAlpha(const AVCodec& encoder, const std::string& container);

/// How many channels the record asks for; 0 where it does not, or names an unknown layout.
int ChannelsIn(const Core::Property& record);

} // namespace Zelnor::Media
