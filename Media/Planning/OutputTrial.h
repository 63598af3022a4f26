#pragma once

// Private to the library, not installed.

#include "Media/Planning/OutputContents.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// What the container of an output file holds with its streams, asked when it is first needed.
class OutputTrial
{
public:
    explicit OutputTrial(const OutputFile& output) : m_output(output) {}

    /// Whether anything can be asked. Else FFmpeg is given the tags, and does with them what it does.
    bool IsKnown();
    /// "container mp4 cannot hold attachments", or is not known to.
    std::string Cannot(const std::string& hold);
    /// Nothing when the muxer refuses it.
    std::optional<FileContents> Ask(const FileContents& wanted);
    /// The position among the asked streams, which are the video and audio streams; nothing for others.
    std::optional<std::size_t> PositionOf(std::size_t stream) const;

    bool HoldsChapters(const std::vector<MediaChapter>& chapters);
    /// \param chapters  those that it holds
    bool HoldsTitlesOf(const std::vector<MediaChapter>& chapters);
    /// MPEG-TS has none for a video. Streams that are not asked get the answer that any of the others gets.
    bool HoldsLanguage(std::size_t stream, const std::string& language);
    /// Of the first video stream.
    bool HoldsTimecode(const std::string& timecode);
    /// Whether it holds one cover, as a tag.
    bool HoldsCoverTag();
    /// Nothing when it cannot hold the attachment or attached picture.
    std::optional<CarriedStream::Form> FormFor(const MediaStream& stream);

private:
    const OutputFile& m_output;
    std::unique_ptr<MuxerTrial> m_trial;
    bool m_isKnown = false;
    std::optional<bool> m_holdsCover;
    std::optional<bool> m_holdsAttachment;
    std::optional<bool> m_holdsCoverTag;
};

/// Whether the text came back as the file's tag of that name, or as its one stream's.
bool HasFileTag(const FileContents& contents, const std::string& name, const std::string& text);
bool HasStreamTag(const FileContents& contents, std::size_t position, const std::string& name,
                  const std::string& text);

/// "CODEC_ID_AAC"; empty when it is not known.
std::string CodecIdOf(const OutputFile& output, const OutputStream& stream);

} // namespace Zelnor::Media
