#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

/// Names and texts, in order.
using TagList = std::vector<std::pair<std::string, std::string>>;

/// The text under the name, whatever its case; null when there is none.
const std::string* FindTag(const TagList& tags, const std::string& name);
// It would be of a list that is gone.
const std::string* FindTag(TagList&& tags, const std::string& name) = delete;

/// What a file holds beside its images and sounds.
struct FileContents
{
    TagList tags;
    std::vector<TagList> streamTags; ///< of the streams, in their order
    std::vector<MediaChapter> chapters;
    bool hasCover = false;
    bool hasAttachment = false;
};

/// Asks FFmpeg what a container holds. FFmpeg does not tell, and most muxers drop in silence what they cannot
/// write, so a file of one blank frame a stream is muxed in memory and read again.
class MuxerTrial
{
public:
    /// \param codecs  `CODEC_ID_` texts of the output's video and audio streams, whose encoders make the
    ///                blank frames
    MuxerTrial(const std::string& container, const std::vector<std::string>& codecs);
    ~MuxerTrial();
    MuxerTrial(const MuxerTrial&) = delete;
    MuxerTrial& operator=(const MuxerTrial&) = delete;

    /// What is read from a file into which all of `wanted` was written; nothing when the muxer refuses it.
    std::optional<FileContents> Ask(const FileContents& wanted) const;

private:
    struct Streams;

    std::string m_container;
    std::unique_ptr<Streams> m_streams;
};

/// The muxer's own options with which the container holds the most: ID3v2 in AIFF and ADTS. None for most.
TagList MuxerOptionsFor(const std::string& container);

} // namespace Zelnor::Media
