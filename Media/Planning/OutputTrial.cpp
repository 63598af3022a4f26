#include "Media/Planning/OutputTrial.h"

#include "Media/Planning/Containers.h"
#include "Media/Planning/CoverTag.h"
#include "Media/Planning/LanguageCodes.h"
#include "Media/Planning/WorkTags.h"
#include "Media/RecordText.h"
#include "Media/Text.h"

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;

StreamKind KindOf(const OutputFile& output, const OutputStream& stream)
{
    return output.inputs[stream.input]->streams[stream.stream].kind;
}

bool IsAsked(StreamKind kind) { return kind == StreamKind::Video || kind == StreamKind::Audio; }

/// A place may be written with more or fewer digits.
bool IsSameText(const std::string& name, const std::string& one, const std::string& other)
{
    return one == other || LowerCase(name) == "location";
}

bool HasTag(const TagList& tags, const std::string& name, const std::string& text)
{
    const std::string* const found = FindTag(tags, name);
    return found != nullptr && IsSameText(name, *found, text);
}

} // namespace

std::string CodecIdOf(const OutputFile& output, const OutputStream& stream)
{
    const std::string own = TextUnder(*stream.codec, IFormatCodec::TAG_CODEC_ID);
    return own.empty() || stream.isCopied
               ? TextUnder(output.inputs[stream.input]->streams[stream.stream].descriptor->GetProperty(),
                           IFormatCodec::TAG_CODEC_ID)
               : own;
}

bool OutputTrial::IsKnown()
{
    if (m_trial == nullptr)
    {
        std::vector<std::string> codecs;
        for (const OutputStream& stream : m_output.streams)
        {
            if (IsAsked(KindOf(m_output, stream)))
            {
                codecs.push_back(CodecIdOf(m_output, stream));
            }
        }
        m_trial = std::make_unique<MuxerTrial>(m_output.container, codecs);
        m_isKnown = m_trial->Ask({}).has_value();
    }
    return m_isKnown;
}

std::string OutputTrial::Cannot(const std::string& hold)
{
    const bool isKnown = IsKnown() || IsPicture(m_output.container);
    return "container " + m_output.container + (isKnown ? " cannot hold " : " is not known to hold ") + hold;
}

std::optional<FileContents> OutputTrial::Ask(const FileContents& wanted)
{
    return IsKnown() ? m_trial->Ask(wanted) : std::nullopt;
}

std::optional<std::size_t> OutputTrial::PositionOf(std::size_t stream) const
{
    if (!IsAsked(KindOf(m_output, m_output.streams[stream])))
    {
        return std::nullopt;
    }
    return static_cast<std::size_t>(std::count_if(
        m_output.streams.begin(), m_output.streams.begin() + static_cast<std::ptrdiff_t>(stream),
        [this](const OutputStream& each) { return IsAsked(KindOf(m_output, each)); }));
}

bool OutputTrial::HoldsChapters(const std::vector<MediaChapter>& chapters)
{
    FileContents wanted;
    wanted.chapters = chapters;
    const auto found = Ask(wanted);
    return found && found->chapters.size() == chapters.size();
}

bool OutputTrial::HoldsTitlesOf(const std::vector<MediaChapter>& chapters)
{
    FileContents wanted;
    wanted.chapters = chapters;
    const auto found = Ask(wanted);
    return found && std::equal(chapters.begin(), chapters.end(), found->chapters.begin(),
                               found->chapters.end(), [](const MediaChapter& one, const MediaChapter& other) {
                                   return one.title == other.title;
                               });
}

bool OutputTrial::HoldsLanguage(std::size_t stream, const std::string& language)
{
    FileContents wanted;
    wanted.streamTags.assign(m_output.streams.size(), {{IFormatCodec::TAG_LANGUAGE, language}});
    const auto found = Ask(wanted);
    if (!found)
    {
        return false;
    }
    const auto isKept = [&language](const TagList& tags) {
        const std::string* const tag = FindTag(tags, IFormatCodec::TAG_LANGUAGE);
        return tag != nullptr && IsSameLanguage(*tag, language);
    };
    const auto position = PositionOf(stream);
    return position ? *position < found->streamTags.size() && isKept(found->streamTags[*position])
                    : std::any_of(found->streamTags.begin(), found->streamTags.end(), isKept);
}

bool OutputTrial::HoldsTimecode(const std::string& timecode)
{
    // One blank frame is too little for its muxer to write anything; a whole file was tried.
    if (m_output.container == Conf::IFormatFile::FORMAT_DV)
    {
        return true;
    }
    FileContents wanted;
    for (const OutputStream& stream : m_output.streams)
    {
        if (KindOf(m_output, stream) == StreamKind::Video)
        {
            wanted.streamTags.push_back({{"timecode", timecode}});
            break;
        }
        if (IsAsked(KindOf(m_output, stream)))
        {
            wanted.streamTags.emplace_back();
        }
    }
    const auto found = Ask(wanted);
    return found && (HasTag(found->tags, "timecode", timecode) ||
                     std::any_of(found->streamTags.begin(), found->streamTags.end(),
                                 [&](const TagList& tags) { return HasTag(tags, "timecode", timecode); }));
}

std::optional<CarriedStream::Form> OutputTrial::FormFor(const MediaStream& stream)
{
    FileContents wanted;
    if (!m_holdsAttachment)
    {
        wanted.hasAttachment = true;
        const auto found = Ask(wanted);
        m_holdsAttachment = found && found->hasAttachment;
    }
    if (!stream.isAttachedPicture)
    {
        return *m_holdsAttachment ? std::optional(CarriedStream::Attachment) : std::nullopt;
    }
    // What every player shows, and every muxer takes that takes covers.
    if (stream.codec != "png" && stream.codec != "mjpeg")
    {
        return std::nullopt;
    }
    if (!m_holdsCover)
    {
        wanted = {};
        wanted.hasCover = true;
        const auto found = Ask(wanted);
        m_holdsCover = found && found->hasCover;
    }
    return *m_holdsCover                                ? std::optional(CarriedStream::Cover)
           : *m_holdsAttachment                         ? std::optional(CarriedStream::CoverFile)
           : !stream.picture.empty() && HoldsCoverTag() ? std::optional(CarriedStream::CoverTag)
                                                        : std::nullopt;
}

bool OutputTrial::HoldsCoverTag()
{
    if (!m_holdsCoverTag)
    {
        // The signature of an image is all that libavformat looks at.
        MediaStream cover;
        cover.codec = "png";
        cover.descriptor = Conf::IFormatCodecVideo::Create();
        FileContents wanted;
        wanted.tags = {{kCoverTag, CoverTagText(cover, "\x89PNG\r\n\x1a\n")}};
        const auto found = Ask(wanted);
        m_holdsCoverTag = found && found->hasCover;
    }
    return *m_holdsCoverTag;
}

bool HasFileTag(const FileContents& contents, const std::string& name, const std::string& text)
{
    return HasTag(contents.tags, name, text) ||
           (contents.streamTags.size() == 1 && HasTag(contents.streamTags.front(), name, text));
}

bool HasStreamTag(const FileContents& contents, std::size_t position, const std::string& name,
                  const std::string& text)
{
    return position < contents.streamTags.size() && HasTag(contents.streamTags[position], name, text);
}

} // namespace Zelnor::Media
