#pragma once

// Private to the library, not installed.

#include "Media/Planning/JobRequest.h"
#include "Media/Planning/TargetCodec.h"

#include <string>

namespace Zelnor::Media
{

/// The record of a stream that is converted, as `MakeTargetCodec` makes it, with what the request says of
/// sizes and encoders. Where it is not exactly what the settings ask for, it is the nearest that the encoder
/// supports, and the stream's notes get a sentence: "p.$$STREAMS$$.video.width: 321 becomes 320, ...".
/// \throw PlanException
Core::Property MakeNearestCodec(const TargetStream& stream, const StreamRequest& request);

/// The bitrate nearest to the wanted one that an audio codec has at the sample rate; the wanted one itself
/// for codecs that take any.
long long NearestAudioBitrate(const std::string& codecId, long long sampleRate, long long wanted);

} // namespace Zelnor::Media
