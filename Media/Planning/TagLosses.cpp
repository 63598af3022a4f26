#include "Media/Planning/TagLosses.h"

#include "Media/Planning/OutputTrial.h"
#include "Media/Planning/WorkTags.h"

#include "Conf/Interfaces/IFormat.h"

#include <algorithm>
#include <string>
#include <utility>

namespace Zelnor::Media
{

namespace
{

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

class TagNamer
{
public:
    TagNamer(const OutputFile& output, OutputTrial& trial) : m_output(output), m_trial(trial) {}

    std::vector<Loss> Name()
    {
        const std::vector<Expected> expected = ExpectedTags();
        if (std::all_of(expected.begin(), expected.end(),
                        [](const Expected& each) { return each.source.empty(); }))
        {
            return {};
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
        return std::move(m_losses);
    }

private:
    const MediaFile& InputAt(std::size_t input) const { return *m_output.inputs[input]; }
    const MediaStream& SourceOf(const OutputStream& stream) const
    {
        return InputAt(stream.input).streams[stream.stream];
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
                {i, std::nullopt, std::nullopt, WorkTagsOf(InputAt(i)), MetadataTags(*m_output.target)});
        }
        for (std::size_t i = 0; i < m_output.streams.size(); ++i)
        {
            const OutputStream& stream = m_output.streams[i];
            if (const auto position = m_trial.PositionOf(i))
            {
                expected.push_back({stream.input, stream.stream, position,
                                    WorkTagsOf(InputAt(stream.input), SourceOf(stream)),
                                    MetadataTags(*stream.codec)});
            }
        }
        return expected;
    }

    static TagList& At(std::vector<TagList>& lists, std::size_t position)
    {
        lists.resize(std::max(lists.size(), position + 1));
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
                m_losses.push_back(
                    {expected.input, expected.stream, "its tag '" + tag.first + "' is left out: " + fault});
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
        NameTags(expected, impossible, m_trial.Cannot("the tags "));
        NameTags(expected, untrue, "the channels change, so these are left out: ");
    }

    void NameTags(const Expected& expected, const std::vector<std::string>& names, const std::string& reason)
    {
        if (!names.empty())
        {
            m_losses.push_back({expected.input, expected.stream, reason + ListText(names)});
        }
    }

    const OutputFile& m_output;
    OutputTrial& m_trial;
    std::vector<Loss> m_losses;
};

} // namespace

TagList MetadataTags(const Core::Property& record)
{
    TagList tags;
    const auto metadata = record.FindChild(Conf::IFormat::TAG_METADATA);
    if (metadata == record.end() || metadata->GetType() != PROPERTY_TYPE_GROUP)
    {
        return tags;
    }
    for (const Core::Property& tag : *metadata)
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

std::vector<Loss> TagLosses(const OutputFile& output, OutputTrial& trial)
{
    return TagNamer(output, trial).Name();
}

} // namespace Zelnor::Media
