#include "Media/Running/ContentsExpectation.h"

#include "Media/Planning/LanguageCodes.h"
#include "Media/Planning/OutputTrial.h"
#include "Media/Running/TranscodeContents.h"
#include "Media/Text.h"

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatFile.h"

#include <algorithm>
#include <cstddef>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kTimecode = "timecode";

/// What becomes of ffmpeg's arguments "name=text": the last one of a name counts, and an empty text is none.
/// Muxers write the name of the encoder themselves, but not in a trial.
TagList TagsIn(const std::vector<std::string>& arguments)
{
    TagList tags;
    for (const std::string& argument : arguments)
    {
        const std::size_t equals = std::min(argument.find('='), argument.size());
        const std::string name = argument.substr(0, equals);
        tags.erase(
            std::remove_if(tags.begin(), tags.end(),
                           [&name](const auto& tag) { return LowerCase(tag.first) == LowerCase(name); }),
            tags.end());
        if (equals + 1 < argument.size() && LowerCase(name) != Conf::IFormatFile::TAG_ENCODER)
        {
            tags.emplace_back(name, argument.substr(equals + 1));
        }
    }
    return tags;
}

/// ffmpeg counts from the beginning of the part.
std::vector<MediaChapter> ChaptersOf(const TranscodeCommand& command)
{
    std::vector<MediaChapter> chapters = command.chapters;
    const std::int64_t shift = command.seeksInInputs ? 0 : command.span.start;
    for (MediaChapter& chapter : chapters)
    {
        chapter.start -= shift;
        chapter.end -= shift;
    }
    return chapters;
}

/// Asks what of a finished file's contents comes back.
class Expectation
{
public:
    Expectation(const Transcode& transcode, const TranscodeCommand& command, ExpectedFile& expected)
        : m_transcode(transcode), m_command(command), m_expected(expected), m_output(OutputOf(transcode)),
          m_trial(m_output)
    {}

    void Add()
    {
        Collect();
        const bool isNothing =
            m_wanted.tags.empty() && m_wanted.chapters.empty() &&
            std::all_of(m_tags.begin(), m_tags.end(), [](const TagList& tags) { return tags.empty(); });
        if (isNothing)
        {
            m_expected.chapters.emplace();
        }
        else if (const auto found = m_trial.Ask(m_wanted))
        {
            m_expected.chapters = found->chapters;
            AddTags(*found);
            AddTimecode(*found);
            m_makesCover = found->hasCover;
        }
        AddCarried();
    }

private:
    void Collect()
    {
        m_wanted.tags = TagsIn(m_command.metadata);
        m_wanted.chapters = ChaptersOf(m_command);
        for (std::size_t i = 0; i < m_command.streams.size(); ++i)
        {
            m_tags.push_back(TagsIn(m_command.streams[i].metadata));
            if (m_trial.PositionOf(i))
            {
                m_wanted.streamTags.push_back(m_tags.back());
            }
        }
    }

    void AddTags(const FileContents& found)
    {
        for (const auto& [name, text] : m_wanted.tags)
        {
            if (LowerCase(name) != kTimecode && HasFileTag(found, name, text))
            {
                const std::string* const own = FindTag(found.tags, name);
                m_expected.tags.emplace_back(name, own == nullptr ? *FindTag(found.streamTags.front(), name)
                                                                  : *own);
            }
        }
        for (std::size_t i = 0; i < m_tags.size(); ++i)
        {
            const auto position = m_trial.PositionOf(i);
            m_expected.streams[i].tags = position ? TagsOf(found, *position, m_tags[i]) : OtherTags(i);
        }
    }

    /// Those that came back as tags of the stream at that position.
    static TagList TagsOf(const FileContents& found, std::size_t position, const TagList& wanted)
    {
        TagList tags;
        for (const auto& [name, text] : wanted)
        {
            const std::string* const own =
                position < found.streamTags.size() ? FindTag(found.streamTags[position], name) : nullptr;
            const bool isLanguage = LowerCase(name) == Conf::IFormatCodec::TAG_LANGUAGE;
            const bool isThere =
                own != nullptr && LowerCase(name) != kTimecode &&
                (isLanguage ? IsSameLanguage(*own, text) : HasStreamTag(found, position, name, text));
            if (isThere)
            {
                tags.emplace_back(name, *own);
            }
        }
        return tags;
    }

    /// A trial has no subtitles, so these are the tags that come back from every other stream.
    TagList OtherTags(std::size_t stream)
    {
        FileContents wanted;
        wanted.streamTags.assign(m_wanted.streamTags.size(), m_tags[stream]);
        const auto found = m_tags[stream].empty() ? std::nullopt : m_trial.Ask(wanted);
        TagList tags = found ? m_tags[stream] : TagList();
        for (std::size_t i = 0; i < wanted.streamTags.size() && found; ++i)
        {
            tags = TagsOf(*found, i, tags);
        }
        return tags;
    }

    void AddTimecode(const FileContents& found)
    {
        const std::string* wanted = FindTag(m_wanted.tags, kTimecode);
        bool isThere = wanted != nullptr && HasFileTag(found, kTimecode, *wanted);
        for (std::size_t i = 0; i < m_wanted.streamTags.size() && !isThere; ++i)
        {
            wanted = FindTag(m_wanted.streamTags[i], kTimecode);
            isThere = wanted != nullptr &&
                      (HasFileTag(found, kTimecode, *wanted) || HasStreamTag(found, i, kTimecode, *wanted));
        }
        m_expected.timecode = isThere ? *wanted : "";
    }

    /// Nothing is carried that the container was not asked for.
    void AddCarried()
    {
        std::vector<std::string> covers;
        for (const CarriedCommand& carried : m_command.carried)
        {
            const MediaStream& stream = m_transcode.inputs[carried.input].streams[carried.stream];
            if (carried.form != CarriedStream::Attachment)
            {
                AddCover(stream, covers);
                continue;
            }
            const TagList tags = TagsIn(carried.metadata);
            const std::string* const name = FindTag(tags, "filename");
            m_expected.attachments.push_back(name == nullptr ? "" : *name);
        }
        for (const CarriedStream& carried : m_transcode.contents.carried)
        {
            if (carried.form == CarriedStream::CoverTag)
            {
                AddCover(m_transcode.inputs[carried.input].streams[carried.stream], covers);
            }
        }
        m_expected.covers = m_makesCover ? std::nullopt : std::optional(std::move(covers));
    }

    void AddCover(const MediaStream& cover, std::vector<std::string>& codecs)
    {
        codecs.push_back(cover.codec);
        if (!cover.picture.empty())
        {
            m_expected.pictures.push_back(cover.picture);
        }
    }

    const Transcode& m_transcode;
    const TranscodeCommand& m_command;
    ExpectedFile& m_expected;
    OutputFile m_output;
    OutputTrial m_trial;
    FileContents m_wanted;
    std::vector<TagList> m_tags; ///< of all streams
    bool m_makesCover = false;   ///< whether a tag comes back as a cover
};

} // namespace

void ExpectContents(const Transcode& transcode, const TranscodeCommand& command, ExpectedFile& expected)
{
    Expectation(transcode, command, expected).Add();
}

} // namespace Zelnor::Media
