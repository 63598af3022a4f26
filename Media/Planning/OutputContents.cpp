#include "Media/Planning/OutputContents.h"

#include "Media/Jobs/JobKeys.h"
#include "Media/Planning/OutputTrial.h"
#include "Media/Planning/SampleLosses.h"
#include "Media/Planning/StreamLosses.h"
#include "Media/Planning/StreamsLeftOut.h"
#include "Media/Planning/TagLosses.h"
#include "Media/Planning/TargetKeys.h"
#include "Media/RecordText.h"
#include "Media/Text.h"

#include "Conf/Interfaces/IFormatCodec.h"

#include <algorithm>
#include <iterator>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;

/// As an argument of a program, in base 64, they must be shorter than 128 KiB.
constexpr std::size_t kLongestChaptersText = 90000;

class ContentsPlanner
{
public:
    explicit ContentsPlanner(const OutputFile& output) : m_output(output), m_trial(output) {}

    OutputContents Make()
    {
        TargetReader reader(m_output, m_contents.faults);
        PlanChapters(reader.Chapters());
        PlanCarried(reader.Attachments());
        Add(StreamsLeftOut(m_output, m_contents.carried, m_trial));
        for (std::size_t i = 0; i < m_output.streams.size(); ++i)
        {
            NameLanguage(i);
            NameConversion(i);
            NameTimecode(i);
        }
        Add(TagLosses(m_output, m_trial));
        return std::move(m_contents);
    }

private:
    const MediaFile& InputAt(std::size_t input) const { return *m_output.inputs[input]; }
    const MediaStream& SourceOf(const OutputStream& stream) const
    {
        return InputAt(stream.input).streams[stream.stream];
    }
    void Add(std::vector<Loss> losses)
    {
        std::move(losses.begin(), losses.end(), std::back_inserter(m_contents.losses));
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
            Name(hasSource ? input : 0, std::nullopt, m_trial.Cannot("chapters"));
            return;
        }
        if (!m_trial.HoldsTitlesOf(chapters))
        {
            Name(hasSource ? input : 0, std::nullopt, m_trial.Cannot("the titles of chapters"));
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
                    !m_output.Uses(i, stream.index))
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
        if (form && !(form == CarriedStream::CoverTag && HasCoverTag(m_contents.carried)))
        {
            m_contents.carried.push_back({input, stream.index, *form});
        }
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
        const TagList tags = MetadataTags(*stream.codec);
        const std::string* const tag = FindTag(tags, IFormatCodec::TAG_LANGUAGE);
        const std::string language = !own.empty() ? own : tag != nullptr ? *tag : "";
        if (language.empty())
        {
            Name(stream.input, stream.stream, "the job leaves out its language, " + known);
        }
        else if (!m_trial.HoldsLanguage(position, language))
        {
            Name(stream.input, stream.stream, m_trial.Cannot("its language, " + language));
        }
    }

    void NameConversion(std::size_t position)
    {
        const OutputStream& stream = m_output.streams[position];
        if (!stream.isCopied)
        {
            for (const std::string& loss : StreamLosses(SourceOf(stream), *stream.codec, m_output.container))
            {
                Name(stream.input, stream.stream, loss);
            }
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
        const TagList tags = MetadataTags(*stream.codec);
        const std::string* const tag = FindTag(tags, "timecode");
        if (!m_trial.HoldsTimecode(tag == nullptr ? timecode : *tag))
        {
            Name(stream.input, stream.stream, m_trial.Cannot("its timecode, " + timecode));
        }
        else if (tag == nullptr)
        {
            Name(stream.input, stream.stream,
                 "its timecode, " + timecode +
                     ", is left out; the job does not have it, the frame rate changes, or it begins later");
        }
    }

    const OutputFile& m_output;
    OutputTrial m_trial;
    OutputContents m_contents;
};

} // namespace

bool OutputFile::Uses(std::size_t input, unsigned int index) const
{
    return std::any_of(streams.begin(), streams.end(), [=](const OutputStream& stream) {
        return stream.input == input &&
               (stream.stream == index ||
                std::find(stream.merged.begin(), stream.merged.end(), index) != stream.merged.end());
    });
}

bool OutputFile::LeavesOut(std::size_t input, unsigned int index) const
{
    return input < leftOut.size() &&
           std::find(leftOut[input].begin(), leftOut[input].end(), index) != leftOut[input].end();
}

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

OutputContents PlanContents(const OutputFile& output) { return ContentsPlanner(output).Make(); }

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
