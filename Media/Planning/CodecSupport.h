#pragma once

#include "Core/Interfaces/Export.h"

#include <optional>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// Whether streams of a codec can be made in files of a container, and what is like it if not.
struct CodecSupport
{
    enum Answer
    {
        No,
        Yes,
        Unknown, ///< FFmpeg does not know it of this container; writing a file would tell
    };           ///< What FFmpeg knows of it.

    std::string container;    ///< a `FORMAT_` text
    std::string codec;        ///< a `CODEC_ID_` text
    Answer isHeld = No;       ///< whether the container can hold streams of the codec
    std::string muxer = {};   ///< the installed FFmpeg's, for the container; empty when it has none
    std::string encoder = {}; ///< the installed FFmpeg's, for the codec; empty when it has none
    bool isEncodingDisabled =
        false; ///< such streams are made only by an encoder that is asked for by its name
    /// Whether a bitrate is calculated by a curve of the codec's own; nothing for codecs that are not of
    /// video.
    std::optional<bool> hasBitrateCurve = {};
    /// Codecs of the same kind that the container holds and the installed FFmpeg encodes, the best first.
    std::vector<std::string> codecs = {};
    /// Containers that hold the codec, the best first.
    std::vector<std::string> containers = {};
    /// Why no such stream can be made, as sentences; empty when it can.
    std::vector<std::string> reasons = {};
};

/// \param container  a `FORMAT_` text
/// \param codec      a `CODEC_ID_` text
/// \throw PlanException "'mp5' is not a known container; did you mean 'mp2' or 'mp3'?"
ZELNOR_API CodecSupport ExplainCodecSupport(const std::string& container, const std::string& codec);

} // namespace Zelnor::Media
