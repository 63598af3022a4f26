#include "Media/Planning/StreamsLeftOut.h"

#include "Media/Jobs/JobKeys.h"
#include "Media/Planning/Containers.h"
#include "Media/Planning/OutputTrial.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/RecordText.h"
#include "Media/Text.h"

#include "Conf/Interfaces/IFormatCodec.h"

#include <algorithm>
#include <string>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;

class LeftOutNamer
{
public:
    LeftOutNamer(const OutputFile& output, const std::vector<CarriedStream>& carried, OutputTrial& trial)
        : m_output(output), m_carried(carried), m_trial(trial)
    {}

    std::vector<Loss> Name()
    {
        for (std::size_t i = 0; i < m_output.inputs.size(); ++i)
        {
            for (const MediaStream& stream : InputAt(i).streams)
            {
                if (!m_output.Uses(i, stream.index) && !IsCarried(i, stream.index) &&
                    !IsOfTheFile(InputAt(i), stream))
                {
                    Name(i, stream);
                }
            }
        }
        return std::move(m_losses);
    }

private:
    const MediaFile& InputAt(std::size_t input) const { return *m_output.inputs[input]; }
    const MediaStream& SourceOf(const OutputStream& stream) const
    {
        return InputAt(stream.input).streams[stream.stream];
    }

    void Name(std::size_t input, const MediaStream& stream)
    {
        const bool isAsked = m_output.LeavesOut(input, stream.index);
        if (!IsOfAbsentKind(stream))
        {
            m_losses.push_back({input, stream.index,
                                "(" + DescriptionOf(stream) + ") is left out; " + WhyLeftOut(stream),
                                isAsked});
        }
        else if (!isAsked && CountOfKind(input, stream.kind, stream.index) == 0)
        {
            const std::size_t others = CountOfKind(input, stream.kind, InputAt(input).streams.size()) - 1;
            m_losses.push_back({input, stream.index,
                                "(" + DescriptionOf(stream) + ")" +
                                    (others == 0 ? " is" : " and " + std::to_string(others) + " more are") +
                                    " left out; " + WhyLeftOut(stream)});
        }
    }

    /// Whether the output file does not have any picture, or any sound.
    bool IsOfAbsentKind(const MediaStream& stream) const
    {
        return (stream.kind == StreamKind::Video || stream.kind == StreamKind::Audio) &&
               !stream.isAttachedPicture && CountOf(stream.kind) == 0;
    }

    /// How many of the input's streams before that one are of the kind, and nobody chose to leave them out.
    std::size_t CountOfKind(std::size_t input, StreamKind kind, std::size_t end) const
    {
        const std::vector<MediaStream>& streams = InputAt(input).streams;
        return static_cast<std::size_t>(std::count_if(
            streams.begin(), streams.begin() + static_cast<std::ptrdiff_t>(end),
            [&](const MediaStream& each) {
                return each.kind == kind && !each.isAttachedPicture && !m_output.LeavesOut(input, each.index);
            }));
    }

    bool IsCarried(std::size_t input, unsigned int index) const
    {
        return std::any_of(m_carried.begin(), m_carried.end(), [=](const CarriedStream& each) {
            return each.input == input && each.stream == index;
        });
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
                return m_trial.Cannot("covers of more than " + std::to_string(kLargestPicture) + " bytes");
            }
            if (stream.isAttachedPicture && m_trial.FormFor(stream) == CarriedStream::CoverTag &&
                HasCoverTag(m_carried))
            {
                return m_trial.Cannot("more than one cover");
            }
            return m_output.target->ChildExists(JobKeys::kAttachments)
                       ? "the job does not have it, or " + m_trial.Cannot("it")
                       : m_trial.Cannot(stream.isAttachedPicture ? "such a cover" : "attachments");
        }
        if (!IsConvertible(stream.kind))
        {
            return std::string(NameOf(stream.kind)) + " streams are not converted";
        }
        if (stream.kind == StreamKind::Subtitle && !HoldsSubtitle(stream))
        {
            return m_trial.Cannot(HasEncoder(stream)
                                      ? (stream.isBitmap ? "bitmap subtitles" : "text subtitles")
                                      : stream.codec);
        }
        const std::size_t count = CountOf(stream.kind);
        return "the output file has " + (count == 0
                                             ? std::string("no ") + NameOf(stream.kind)
                                             : Count(count, NameOf(stream.kind) + std::string(" stream")));
    }

    std::size_t CountOf(StreamKind kind) const
    {
        return static_cast<std::size_t>(
            std::count_if(m_output.streams.begin(), m_output.streams.end(),
                          [&](const OutputStream& each) { return SourceOf(each).kind == kind; }));
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

    const OutputFile& m_output;
    const std::vector<CarriedStream>& m_carried;
    OutputTrial& m_trial;
    std::vector<Loss> m_losses;
};

} // namespace

bool CanBeLeftOut(const MediaStream& stream)
{
    return !stream.isAttachedPicture && stream.kind != StreamKind::Attachment;
}

bool HasCoverTag(const std::vector<CarriedStream>& carried)
{
    return std::any_of(carried.begin(), carried.end(),
                       [](const CarriedStream& each) { return each.form == CarriedStream::CoverTag; });
}

std::vector<Loss> StreamsLeftOut(const OutputFile& output, const std::vector<CarriedStream>& carried,
                                 OutputTrial& trial)
{
    return LeftOutNamer(output, carried, trial).Name();
}

} // namespace Zelnor::Media
