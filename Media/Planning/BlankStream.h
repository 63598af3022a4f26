#pragma once

// Private to the library, not installed.

#include "Media/FFmpeg/Calls.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <memory>
#include <optional>
#include <vector>

namespace Zelnor::Media
{

struct FreePacket
{
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct FreeParameters
{
    void operator()(AVCodecParameters* parameters) const { avcodec_parameters_free(&parameters); }
};

/// How long a blank image is shown.
constexpr AVRational kFrameTime = {1, 25};

/// A stream of one blank frame.
struct BlankStream
{
    std::unique_ptr<AVCodecParameters, FreeParameters> parameters;
    std::vector<std::unique_ptr<AVPacket, FreePacket>> packets;
    AVRational timeBase = kFrameTime;
};

/// Encodes a blank frame of a size, or of a sound, that the encoder supports.
/// \param flags  of the encoder's context
/// \return nothing when the encoder does not encode it
std::optional<BlankStream> MakeBlankStream(const AVCodec& encoder, int flags);

} // namespace Zelnor::Media
