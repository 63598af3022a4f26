#pragma once

// Private to the library, not installed.

#include "Media/Jobs/MediaSpan.h"
#include "Media/Place.h"
#include "Media/Planning/MuxerTrial.h"
#include "Media/Probe/MediaProbe.h"

#include "Core/Interfaces/Property.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

/// A stream that a finished file must have.
struct ExpectedStream
{
    Place place; ///< the link of the stream
    StreamKind kind = StreamKind::Unknown;
    std::string codec;     ///< FFmpeg's name
    Core::Property record; ///< what the job says of it
    bool isCopied = false;
    /// Where it comes from: positions in `ExpectedFile::sources`, and of the stream there. Those that are
    /// merged into it follow the stream itself.
    std::size_t source = 0;
    std::vector<unsigned int> streams = {};
    /// What its encoder was told: ffmpeg's options and their values.
    std::vector<std::pair<std::string, std::string>> options = {};
    TagList tags = {}; ///< those that the container brings back
};

/// What a finished file must be.
struct ExpectedFile
{
    Place place; ///< the target's node
    std::string container;
    bool isPicture = false;         ///< it holds one image
    TagList tags = {};              ///< those that the container brings back
    std::vector<MediaFile> sources; ///< what it is made from
    std::vector<ExpectedStream> streams;
    MediaSpan span = {}; ///< the part of the sources that it is made from
    /// As the container brings them back; nothing when it is not known what it does with them.
    std::optional<std::vector<MediaChapter>> chapters = std::nullopt;
    std::string timecode = {}; ///< of the first frame; empty: none is expected
    /// FFmpeg's names of their codecs; nothing when it is not known.
    std::optional<std::vector<std::string>> covers = std::nullopt;
    std::vector<std::string> pictures = {};    ///< the bytes of those covers whose bytes are known
    std::vector<std::string> attachments = {}; ///< their names

    const MediaStream& SourceOf(const ExpectedStream& stream) const
    {
        return sources[stream.source].streams[stream.streams.front()];
    }
};

} // namespace Zelnor::Media
