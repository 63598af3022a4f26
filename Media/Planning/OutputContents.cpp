#include "Media/Planning/OutputContents.h"

#include "Media/Jobs/JobKeys.h"
#include "Media/Planning/Containers.h"
#include "Media/Planning/OutputTrial.h"
#include "Media/Planning/TargetKeys.h"
#include "Media/Planning/WorkTags.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/RecordText.h"
#include "Media/Text.h"

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/ServiceRecords.h"

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormat;
using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Core::Property;

/// As an argument of a program, in base 64, they must be shorter than 128 KiB.
constexpr std::size_t kLongestChaptersText = 90000;

/// The texts and numbers of a record's metadata.
TagList TagsOf(const Property& record)
{
    TagList tags;
    const auto metadata = record.FindChild(IFormat::TAG_METADATA);
    if (metadata == record.end() || metadata->GetType() != PROPERTY_TYPE_GROUP)
    {
        return tags;
    }
    for (const Property& tag : *metadata)
    {
        if (tag.GetType() == PROPERTY_TYPE_STRING)
        {
            tags.emplace_back(tag.GetName(), tag.GetString());
        }
        else if (tag.GetType() == PROPERTY_TYPE_INT64)
        {
            tags.emplace_back(tag.GetName(), std::to_string(tag.GetInt64()));
        }
    }
    return tags;
}

/// "'A', 'B' and 3 more"
std::string ListText(const std::vector<std::string>& names)
{
    constexpr std::size_t kMost = 32;
    std::string text;
    for (std::size_t i = 0; i < std::min(names.size(), kMost); ++i)
    {
        text += (i == 0 ? "'" : ", '") + names[i] + "'";
    }
    return text + (names.size() > kMost ? " and " + std::to_string(names.size() - kMost) + " more" : "");
}

int ChannelsIn(const Property& codec)
{
    const std::string layout = TextUnder(codec, IFormatCodecAudio::TAG_LAYOUT);
    try
    {
        return layout.empty() ? 0 : Conf::LayoutRecord::Find(layout)->channels;
    }
    catch (const Exception&)
    {
        return 0;
    }
}

class Planner
{
public:
    explicit Planner(const OutputFile& output) : m_output(output), m_trial(output) {}

    OutputContents Make()
    {
        TargetReader reader(m_output, m_contents.faults);
        PlanChapters(reader.Chapters());
        PlanCarried(reader.Attachments());
        for (std::size_t i = 0; i < m_output.inputs.size(); ++i)
        {
            NameStreams(i);
        }
        for (std::size_t i = 0; i < m_output.streams.size(); ++i)
        {
            NameLanguage(i);
            NameChannels(i);
            NameTimecode(i);
        }
        NameTags();
        return std::move(m_contents);
    }

private:
    const MediaFile& InputAt(std::size_t input) const { return *m_output.inputs[input]; }
    const MediaStream& SourceOf(const OutputStream& stream) const
    {
        return InputAt(stream.input).streams[stream.stream];
    }
    std::string Cannot(const std::string& hold)
    {
        const bool isKnown = m_trial.IsKnown() || IsPicture(m_output.container);
        return "container " + m_output.container + (isKnown ? " cannot hold " : " is not known to hold ") +
               hold;
    }
    void Name(std::size_t input, std::optional<unsigned int> stream, const std::string& reason)
    {
        m_contents.losses.push_back({input, stream, reason});
    }

    void PlanChapters(const std::optional<std::vector<MediaChapter>>& asked)
    {
        const auto first = std::find_if(m_output.inputs.begin(), m_output.inputs.end(),
                                        [](const MediaFile* file) { return !file->chapters.empty(); });
        const bool hasSource = first != m_output.inputs.end();
        std::vector<MediaChapter> chapters = asked       ? *asked
                                             : hasSource ? (*first)->chapters
                                                         : std::vector<MediaChapter>();
        const auto input = static_cast<std::size_t>(first - m_output.inputs.begin());
        const std::string what = hasSource ? "its " + Count((*first)->chapters.size(), "chapter") : "";
        if (chapters.empty())
        {
            if (hasSource)
            {
                Name(input, std::nullopt, "the job leaves out " + what);
            }
            return;
        }
        if (!asked && AreTooLong(chapters))
        {
            Name(input, std::nullopt, what + " are left out; their titles are too long");
            return;
        }
        if (!m_trial.HoldsChapters(chapters))
        {
            Name(hasSource ? input : 0, std::nullopt, Cannot("chapters"));
            return;
        }
        if (!m_trial.HoldsTitlesOf(chapters))
        {
            Name(hasSource ? input : 0, std::nullopt, Cannot("the titles of chapters"));
        }
        m_contents.chapters = std::move(chapters);
    }

    void PlanCarried(const std::optional<std::vector<unsigned int>>& asked)
    {
        for (std::size_t i = 0; i < m_output.inputs.size(); ++i)
        {
            for (const MediaStream& stream : InputAt(i).streams)
            {
                const bool isAsked = !asked || (i == 0 && std::find(asked->begin(), asked->end(),
                                                                    stream.index) != asked->end());
                if ((stream.isAttachedPicture || stream.kind == StreamKind::Attachment) && isAsked &&
                    !IsUsed(i, stream.index))
                {
                    PlanCarried(i, stream);
                }
            }
        }
    }

    void PlanCarried(std::size_t input, const MediaStream& stream)
    {
        const auto form = m_trial.FormFor(stream);
        // ffmpeg writes one tag of a name.
        if (form && !(form == CarriedStream::CoverTag && HasCoverTag()))
        {
            m_contents.carried.push_back({input, stream.index, *form});
        }
    }

    bool IsUsed(std::size_t input, unsigned int index) const
    {
        return std::any_of(m_output.streams.begin(), m_output.streams.end(), [=](const OutputStream& stream) {
            return stream.input == input &&
                   (stream.stream == index ||
                    std::find(stream.merged.begin(), stream.merged.end(), index) != stream.merged.end());
        });
    }

    bool IsCarried(std::size_t input, unsigned int index) const
    {
        return std::any_of(
            m_contents.carried.begin(), m_contents.carried.end(),
            [=](const CarriedStream& each) { return each.input == input && each.stream == index; });
    }

    void NameStreams(std::size_t input)
    {
        for (const MediaStream& stream : InputAt(input).streams)
        {
            if (!IsUsed(input, stream.index) && !IsCarried(input, stream.index) &&
                !IsOfTheFile(InputAt(input), stream) && !IsOfAnotherKind(stream))
            {
                Name(input, stream.index,
                     "(" + DescriptionOf(stream) + ") is left out; " + WhyLeftOut(stream));
                m_contents.losses.back().isAsked = IsAskedToLeaveOut(stream);
            }
        }
    }

    /// Whether the stream is how a container keeps its chapters or its timecode, which are looked at by
    /// themselves.
    static bool IsOfTheFile(const MediaFile& file, const MediaStream& stream)
    {
        const bool isText = stream.codec == "bin_data" && !file.chapters.empty();
        return stream.kind == StreamKind::Data && (isText || !stream.timecode.empty());
    }

    static std::string DescriptionOf(const MediaStream& stream)
    {
        const std::string language = TextUnder(stream.descriptor->GetMetadata(), IFormatCodec::TAG_LANGUAGE);
        const std::string name = stream.fileName.empty() ? language : "'" + stream.fileName + "'";
        return (stream.isAttachedPicture ? "cover, " : "") + stream.codec +
               (name.empty() || name == "und" ? "" : ", " + name);
    }

    std::string WhyLeftOut(const MediaStream& stream)
    {
        if (stream.isAttachedPicture || stream.kind == StreamKind::Attachment)
        {
            const bool isTooLarge = stream.isAttachedPicture && stream.picture.empty();
            if (isTooLarge && m_trial.HoldsCoverTag())
            {
                return Cannot("covers of more than " + std::to_string(kLargestPicture) + " bytes");
            }
            if (stream.isAttachedPicture && m_trial.FormFor(stream) == CarriedStream::CoverTag &&
                HasCoverTag())
            {
                return Cannot("more than one cover");
            }
            return m_output.target->ChildExists(JobKeys::kAttachments)
                       ? "the job does not have it, or " + Cannot("it")
                       : Cannot(stream.isAttachedPicture ? "such a cover" : "attachments");
        }
        if (!IsConvertible(stream.kind))
        {
            return std::string(NameOf(stream.kind)) + " streams are not converted";
        }
        if (stream.kind == StreamKind::Subtitle && !HoldsSubtitle(stream))
        {
            return Cannot(HasEncoder(stream) ? (stream.isBitmap ? "bitmap subtitles" : "text subtitles")
                                             : stream.codec);
        }
        const std::size_t count = CountOf(stream.kind);
        return "the output file has " + (count == 0
                                             ? std::string("no ") + NameOf(stream.kind)
                                             : Count(count, NameOf(stream.kind) + std::string(" stream")));
    }

    bool HasCoverTag() const
    {
        return std::any_of(m_contents.carried.begin(), m_contents.carried.end(),
                           [](const CarriedStream& each) { return each.form == CarriedStream::CoverTag; });
    }

    std::size_t CountOf(StreamKind kind) const
    {
        return static_cast<std::size_t>(
            std::count_if(m_output.streams.begin(), m_output.streams.end(),
                          [&](const OutputStream& each) { return SourceOf(each).kind == kind; }));
    }

    /// A file of sound alone, or of images alone, is what somebody asked for by its preset.
    bool IsOfAnotherKind(const MediaStream& stream) const
    {
        return (stream.kind == StreamKind::Video || stream.kind == StreamKind::Audio) &&
               !stream.isAttachedPicture && CountOf(stream.kind) == 0;
    }

    bool IsAskedToLeaveOut(const MediaStream& stream) const
    {
        return m_output.areStreamsChosen && IsConvertible(stream.kind) && !stream.isAttachedPicture;
    }

    static std::string IdentifierOf(const MediaStream& stream)
    {
        return TextUnder(stream.descriptor->GetProperty(), IFormatCodec::TAG_CODEC_ID);
    }

    static bool HasEncoder(const MediaStream& stream)
    {
        return !stream.isBitmap || FindEncoder(IdentifierOf(stream)) != nullptr;
    }

    /// A bitmap subtitle without an encoder is copied or left out, as the planner of streams does it.
    bool HoldsSubtitle(const MediaStream& stream) const
    {
        const std::string codec = IdentifierOf(stream);
        return HasEncoder(stream) ? !SubtitleCodecsFor(m_output.container, codec, stream.isBitmap).empty()
                                  : CertainlyHolds(m_output.container, CodecNumberOf(codec));
    }

    void NameLanguage(std::size_t position)
    {
        const OutputStream& stream = m_output.streams[position];
        const std::string known =
            TextUnder(SourceOf(stream).descriptor->GetMetadata(), IFormatCodec::TAG_LANGUAGE);
        if (known.empty() || known == "und")
        {
            return;
        }
        const std::string own = TextUnder(*stream.codec, IFormatCodec::TAG_LANGUAGE);
        const TagList tags = TagsOfStream(position);
        const std::string* const tag = FindTag(tags, IFormatCodec::TAG_LANGUAGE);
        const std::string language = !own.empty() ? own : tag != nullptr ? *tag : "";
        if (language.empty())
        {
            Name(stream.input, stream.stream, "the job leaves out its language, " + known);
        }
        else if (!m_trial.HoldsLanguage(position, language))
        {
            Name(stream.input, stream.stream, Cannot("its language, " + language));
        }
    }

    TagList TagsOfStream(std::size_t position) const { return TagsOf(*m_output.streams[position].codec); }

    void NameChannels(std::size_t position)
    {
        const OutputStream& stream = m_output.streams[position];
        const auto channels = static_cast<int>(SourceOf(stream).channels);
        const int left = ChannelsIn(*stream.codec);
        if (SourceOf(stream).kind == StreamKind::Audio && !stream.isCopied && left != 0 && left < channels)
        {
            Name(stream.input, stream.stream,
                 "its " + std::to_string(channels) + " channels become " + std::to_string(left));
        }
    }

    void NameTimecode(std::size_t position)
    {
        const OutputStream& stream = m_output.streams[position];
        const std::string& timecode = InputAt(stream.input).timecode;
        if (timecode.empty() || SourceOf(stream).kind != StreamKind::Video ||
            SourceOf(stream).isAttachedPicture)
        {
            return;
        }
        const TagList tags = TagsOfStream(position);
        const std::string* const tag = FindTag(tags, "timecode");
        if (!m_trial.HoldsTimecode(tag == nullptr ? timecode : *tag))
        {
            Name(stream.input, stream.stream, Cannot("its timecode, " + timecode));
        }
        else if (tag == nullptr)
        {
            Name(stream.input, stream.stream,
                 "its timecode, " + timecode +
                     ", is left out; the job does not have it, the frame rate changes, or it begins later");
        }
    }

    /// Tags of a source that are compared with what comes back from a trial.
    struct Expected
    {
        std::size_t input;
        std::optional<unsigned int> stream;
        std::optional<std::size_t> position; ///< among the asked streams; nothing: of the file
        TagList source;                      ///< what the source has
        TagList job;                         ///< what the job has
    };

    std::vector<Expected> ExpectedTags() const
    {
        std::vector<Expected> expected;
        for (std::size_t i = 0; i < m_output.inputs.size(); ++i)
        {
            expected.push_back(
                {i, std::nullopt, std::nullopt, WorkTagsOf(InputAt(i)), TagsOf(*m_output.target)});
        }
        for (std::size_t i = 0; i < m_output.streams.size(); ++i)
        {
            const OutputStream& stream = m_output.streams[i];
            if (const auto position = m_trial.PositionOf(i))
            {
                expected.push_back({stream.input, stream.stream, position,
                                    WorkTagsOf(InputAt(stream.input), SourceOf(stream)), TagsOfStream(i)});
            }
        }
        return expected;
    }

    void NameTags()
    {
        const std::vector<Expected> expected = ExpectedTags();
        if (std::all_of(expected.begin(), expected.end(),
                        [](const Expected& each) { return each.source.empty(); }))
        {
            return;
        }
        FileContents ofJob;
        FileContents ofAll;
        for (const Expected& each : expected)
        {
            TagList& job = each.position ? At(ofJob.streamTags, *each.position) : ofJob.tags;
            TagList& all = each.position ? At(ofAll.streamTags, *each.position) : ofAll.tags;
            job = each.job;
            all = each.job;
            for (const auto& tag : each.source)
            {
                if (FindTag(all, tag.first) == nullptr && FindTagFault(tag.first, tag.second).empty())
                {
                    all.push_back(tag);
                }
            }
        }
        const auto written = m_trial.Ask(ofJob);
        const auto possible = m_trial.Ask(ofAll);
        for (const Expected& each : expected)
        {
            NameTags(each, written, possible);
        }
    }

    static TagList& At(std::vector<TagList>& lists, std::size_t position)
    {
        if (lists.size() <= position)
        {
            lists.resize(position + 1);
        }
        return lists[position];
    }

    void NameTags(const Expected& expected, const std::optional<FileContents>& written,
                  const std::optional<FileContents>& possible)
    {
        std::vector<std::string> left;
        std::vector<std::string> impossible;
        std::vector<std::string> untrue;
        const auto isIn = [&expected](const std::optional<FileContents>& found, const auto& tag) {
            return found &&
                   (expected.position ? HasStreamTag(*found, *expected.position, tag.first, tag.second)
                                      : HasFileTag(*found, tag.first, tag.second));
        };
        for (const auto& tag : expected.source)
        {
            const std::string fault = FindTagFault(tag.first, tag.second);
            const std::string* const own = FindTag(expected.job, tag.first);
            if (!fault.empty())
            {
                Name(expected.input, expected.stream, "its tag '" + tag.first + "' is left out: " + fault);
            }
            else if (own != nullptr)
            {
                // A text that the job changes is the job's.
                if (!isIn(written, std::pair(tag.first, *own)))
                {
                    impossible.push_back(tag.first);
                }
            }
            else if (IsAboutLoudness(tag.first) && IsSoundChanged(m_output))
            {
                untrue.push_back(tag.first);
            }
            else
            {
                (isIn(possible, tag) ? left : impossible).push_back(tag.first);
            }
        }
        NameTags(expected, left, "the job leaves out the tags ");
        NameTags(expected, impossible, Cannot("the tags "));
        NameTags(expected, untrue, "the channels change, so these are left out: ");
    }

    void NameTags(const Expected& expected, const std::vector<std::string>& names, const std::string& reason)
    {
        if (!names.empty())
        {
            Name(expected.input, expected.stream, reason + ListText(names));
        }
    }

    const OutputFile& m_output;
    OutputTrial m_trial;
    OutputContents m_contents;
};

} // namespace

bool AreTooLong(const std::vector<MediaChapter>& chapters)
{
    return ChaptersText(chapters).size() > kLongestChaptersText;
}

bool IsSoundChanged(const OutputFile& output)
{
    return std::any_of(output.streams.begin(), output.streams.end(), [&output](const OutputStream& stream) {
        const MediaStream& source = output.inputs[stream.input]->streams[stream.stream];
        const auto channels = static_cast<int>(source.channels);
        const int left = ChannelsIn(*stream.codec);
        return source.kind == StreamKind::Audio && !stream.isCopied &&
               (!stream.merged.empty() || (left != 0 && channels != 0 && left != channels));
    });
}

OutputContents PlanContents(const OutputFile& output) { return Planner(output).Make(); }

std::string ChaptersText(const std::vector<MediaChapter>& chapters)
{
    std::string text = ";FFMETADATA1\n";
    for (const MediaChapter& chapter : chapters)
    {
        text += "[CHAPTER]\nTIMEBASE=1/1000000\nSTART=" + std::to_string(chapter.start) +
                "\nEND=" + std::to_string(chapter.end) + "\n";
        if (chapter.title.empty())
        {
            continue;
        }
        text += "title=";
        for (const char c : chapter.title)
        {
            text += std::string("=;#\\\n\r").find(c) == std::string::npos ? "" : "\\";
            text += c;
        }
        // FFmpeg's reader takes a backslash before the end of a line for one that escapes it, even where it
        // is escaped itself. A NUL ends the text before.
        text += chapter.title.back() == '\\' ? std::string("\0\n", 2) : "\n";
    }
    return text;
}

} // namespace Zelnor::Media
