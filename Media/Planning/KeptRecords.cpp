#include "Media/Jobs/JobKeys.h"
#include "Media/Planning/LanguageCodes.h"
#include "Media/Planning/OutputContents.h"
#include "Media/Planning/OutputTrial.h"
#include "Media/Planning/WorkTags.h"

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormat;
using Conf::IFormatCodec;
using Conf::IFormatCodecVideo;
using Core::Property;

/// The metadata of a record, made when it is missing.
Property& MetadataOf(Property& record)
{
    return record.ChildExists(IFormat::TAG_METADATA) ? record[IFormat::TAG_METADATA]
                                                     : record.SetChild(IFormat::TAG_METADATA);
}

TagList TextsOf(const Property& record)
{
    TagList tags;
    const auto metadata = record.FindChild(IFormat::TAG_METADATA);
    for (auto tag = metadata == record.end() ? record.end() : metadata->begin();
         metadata != record.end() && tag != metadata->end(); ++tag)
    {
        if (tag->GetType() == PROPERTY_TYPE_STRING)
        {
            tags.emplace_back(tag->GetName(), tag->GetString());
        }
    }
    return tags;
}

class Filler
{
public:
    Filler(const OutputFile& output, Property& target, const std::vector<Property*>& codecs)
        : m_output(output), m_target(target), m_codecs(codecs), m_trial(output)
    {}

    void Fill()
    {
        MetadataOf(m_target);
        FillTags();
        for (std::size_t i = 0; i < m_codecs.size(); ++i)
        {
            FillLanguage(i);
        }
        FillTimecode();
        FillChapters();
        FillAttachments();
    }

private:
    /// A tag of the source that the job may get.
    struct Candidate
    {
        std::optional<std::size_t> stream; ///< of the output; nothing: of the file
        std::string name;
        std::string text;
    };

    const MediaFile& Source() const { return *m_output.inputs.front(); }

    Property& RecordOf(const Candidate& candidate)
    {
        return candidate.stream ? *m_codecs[*candidate.stream] : m_target;
    }

    /// Those that the records do not have yet, the file's before the streams'.
    std::vector<Candidate> Candidates()
    {
        std::vector<Candidate> candidates;
        const auto add = [this, &candidates](std::optional<std::size_t> stream, const TagList& tags) {
            const TagList known = TextsOf(stream ? *m_codecs[*stream] : m_target);
            for (const auto& [name, text] : tags)
            {
                if (FindTag(known, name) == nullptr && FindTagFault(name, text).empty() &&
                    !(IsAboutLoudness(name) && IsSoundChanged(m_output)))
                {
                    candidates.push_back({stream, name, text});
                }
            }
        };
        add(std::nullopt, WorkTagsOf(Source()));
        for (std::size_t i = 0; i < m_codecs.size(); ++i)
        {
            add(i, WorkTagsOf(Source(), Source().streams[m_output.streams[i].stream]));
        }
        return candidates;
    }

    /// What the records have, and the candidates.
    FileContents Contents(const std::vector<Candidate>& candidates)
    {
        FileContents contents;
        contents.tags = TextsOf(m_target);
        for (std::size_t i = 0; i < m_codecs.size(); ++i)
        {
            if (m_trial.PositionOf(i))
            {
                contents.streamTags.push_back(TextsOf(*m_codecs[i]));
            }
        }
        for (const Candidate& candidate : candidates)
        {
            const auto position = candidate.stream ? m_trial.PositionOf(*candidate.stream) : std::nullopt;
            if (!candidate.stream)
            {
                contents.tags.emplace_back(candidate.name, candidate.text);
            }
            else if (position)
            {
                contents.streamTags[*position].emplace_back(candidate.name, candidate.text);
            }
        }
        return contents;
    }

    /// Those of the candidates that come back from a file that gets all of them.
    std::vector<Candidate> Returned(const std::vector<Candidate>& candidates)
    {
        std::vector<Candidate> returned;
        const auto contents = m_trial.Ask(Contents(candidates));
        if (!contents)
        {
            return returned;
        }
        std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(returned),
                     [&](const Candidate& each) { return IsIn(*contents, each); });
        return returned;
    }

    bool IsIn(const FileContents& contents, const Candidate& candidate) const
    {
        if (!candidate.stream)
        {
            return HasFileTag(contents, candidate.name, candidate.text);
        }
        const auto position = m_trial.PositionOf(*candidate.stream);
        return position && HasStreamTag(contents, *position, candidate.name, candidate.text);
    }

    /// In some containers two tags share one place, and the later one wins. So what came back is asked
    /// again by itself, and then what did not is tried one by one.
    void FillTags()
    {
        const std::vector<Candidate> candidates = Candidates();
        if (candidates.empty())
        {
            return;
        }
        std::vector<Candidate> kept = candidates;
        if (m_trial.IsKnown())
        {
            kept = Returned(candidates);
            for (std::vector<Candidate> again = Returned(kept); again.size() != kept.size();
                 again = Returned(kept))
            {
                kept = again;
            }
            kept = WithOthers(std::move(kept), candidates);
        }
        for (const Candidate& each : kept)
        {
            MetadataOf(RecordOf(each)).SetChildT(each.name, each.text);
        }
    }

    std::vector<Candidate> WithOthers(std::vector<Candidate> kept, const std::vector<Candidate>& candidates)
    {
        // A file of a stranger may have any number of tags.
        constexpr std::size_t kMostTrials = 64;
        std::size_t trials = 0;
        for (const Candidate& candidate : candidates)
        {
            const bool isKept = std::any_of(kept.begin(), kept.end(), [&candidate](const Candidate& each) {
                return each.stream == candidate.stream && each.name == candidate.name;
            });
            if (isKept || trials++ >= kMostTrials)
            {
                continue;
            }
            std::vector<Candidate> more = kept;
            more.push_back(candidate);
            if (Returned(more).size() == more.size())
            {
                kept = std::move(more);
            }
        }
        return kept;
    }

    /// In the code that the container knows: QuickTime's list has "ger", not "deu".
    void FillLanguage(std::size_t stream)
    {
        Property& metadata = MetadataOf(*m_codecs[stream]);
        const auto tag = metadata.FindChild(IFormatCodec::TAG_LANGUAGE);
        if (tag == metadata.end() || tag->GetType() != PROPERTY_TYPE_STRING)
        {
            return;
        }
        const std::string other = OtherLanguageCode(tag->GetString());
        if (!other.empty() && !m_trial.HoldsLanguage(stream, tag->GetString()) &&
            m_trial.HoldsLanguage(stream, other))
        {
            metadata.SetChildT(IFormatCodec::TAG_LANGUAGE, other);
        }
    }

    /// A timecode counts frames, so it does not survive another frame rate.
    void FillTimecode()
    {
        for (std::size_t i = 0; i < m_codecs.size() && !Source().timecode.empty(); ++i)
        {
            const MediaStream& stream = Source().streams[m_output.streams[i].stream];
            if (stream.kind != StreamKind::Video || stream.isAttachedPicture)
            {
                continue;
            }
            const Property& source = stream.descriptor->GetProperty();
            const auto rate = source.FindChild(IFormatCodecVideo::TAG_FPS);
            const auto own = m_codecs[i]->FindChild(IFormatCodecVideo::TAG_FPS);
            const bool isSameRate = m_output.streams[i].isCopied ||
                                    (rate != source.end() && own != m_codecs[i]->end() && *rate == *own);
            if (isSameRate && !m_target.ChildExists(JobKeys::kStart) &&
                FindTagFault("timecode", Source().timecode).empty() &&
                m_trial.HoldsTimecode(Source().timecode))
            {
                MetadataOf(*m_codecs[i]).SetChildT("timecode", Source().timecode);
            }
            return;
        }
    }

    void FillChapters()
    {
        if (Source().chapters.empty() || AreTooLong(Source().chapters) ||
            !m_trial.HoldsChapters(Source().chapters))
        {
            return;
        }
        Property& list = m_target.SetChild(JobKeys::kChapters);
        for (const MediaChapter& chapter : Source().chapters)
        {
            Property entry("");
            entry.SetChildT(JobKeys::kStart, static_cast<long long>(chapter.start));
            entry.SetChildT(JobKeys::kEnd, static_cast<long long>(chapter.end));
            entry.SetChildT(JobKeys::kTitle, chapter.title);
            list.Add(entry);
        }
    }

    void FillAttachments()
    {
        Property list(JobKeys::kAttachments);
        for (const MediaStream& stream : Source().streams)
        {
            const bool isUsed =
                std::any_of(m_output.streams.begin(), m_output.streams.end(),
                            [&stream](const OutputStream& each) { return each.stream == stream.index; });
            if ((stream.isAttachedPicture || stream.kind == StreamKind::Attachment) && !isUsed &&
                m_trial.FormFor(stream))
            {
                Property entry("");
                entry = static_cast<long long>(stream.index);
                list.Add(entry);
            }
        }
        if (list.Count() != 0)
        {
            m_target.SetChild(list.GetName(), list);
        }
    }

    const OutputFile& m_output;
    Property& m_target;
    const std::vector<Property*>& m_codecs;
    OutputTrial m_trial;
};

} // namespace

void FillRecords(const OutputFile& output, Property& target, const std::vector<Property*>& codecs)
{
    Filler(output, target, codecs).Fill();
}

} // namespace Zelnor::Media
