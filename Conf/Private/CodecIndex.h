#pragma once

// Private to the library, not installed: what the codec tables say, found without walking them.

#include "Conf/Interfaces/CodecMaps.h"
#include "Core/Interfaces/MediaType.h"

#include <optional>
#include <string>

namespace Zelnor::Conf
{

/// What the vocabulary says of a codec.
struct CodecFacts
{
    /// Absent for those of no kind of stream.
    std::optional<MediaType> mediaType;
    /// Whether it is a row of `audioCodecs`.
    bool isAudioRow = false;
};

/// Nothing at all of what is not a codec.
CodecFacts GetCodecFacts(const std::string& textId);

/// The codec ID under which the text is in `map`.
std::optional<AVCodecID> FindCodecID(const std::string& textId, const MapCodecs& map);
/// Remembers where the texts of `mapCodecs` are. Called once, when it has been made.
void RememberCodecTexts();

} // namespace Zelnor::Conf
