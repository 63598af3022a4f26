#include "Media/Planning/TargetKeys.h"

#include "Media/Jobs/JobKeys.h"
#include "Media/Options/SettingRules.h"
#include "Media/ValueText.h"

#include <limits>

namespace Zelnor::Media
{

namespace
{

using Core::Property;

long long NumberUnder(const Property& record, const char* key)
{
    const auto child = record.FindChild(key);
    return child != record.end() && child->GetType() == PROPERTY_TYPE_INT64 ? child->GetInt64() : -1;
}

std::optional<MediaChapter> ReadChapter(const Property& entry)
{
    MediaChapter chapter = {NumberUnder(entry, JobKeys::kStart), NumberUnder(entry, JobKeys::kEnd), ""};
    const auto title = entry.FindChild(JobKeys::kTitle);
    if (title != entry.end())
    {
        if (title->GetType() != PROPERTY_TYPE_STRING || HasNul(title->GetString()))
        {
            return std::nullopt;
        }
        chapter.title = title->GetString();
    }
    return chapter.start >= 0 && chapter.end >= chapter.start ? std::optional(chapter) : std::nullopt;
}

} // namespace

bool IsChapter(const Property& entry) { return ReadChapter(entry).has_value(); }

std::optional<std::vector<MediaChapter>> TargetReader::Chapters()
{
    const Property* const list = List(JobKeys::kChapters);
    if (list == nullptr)
    {
        return std::nullopt;
    }
    std::vector<MediaChapter> chapters;
    for (const Property& entry : *list)
    {
        const auto chapter = ReadChapter(entry);
        if (!chapter)
        {
            AddFault(list->GetName(),
                     "a chapter has 'start' and 'end' in microseconds, of which 'end' is not "
                     "the earlier one, and may have 'title', a text");
            return std::vector<MediaChapter>();
        }
        chapters.push_back(*chapter);
    }
    if (AreTooLong(chapters))
    {
        AddFault(list->GetName(), "their texts are too long to be given to ffmpeg");
        chapters.clear();
    }
    return chapters;
}

std::optional<std::vector<unsigned int>> TargetReader::Attachments()
{
    const Property* const list = List(JobKeys::kAttachments);
    if (list == nullptr)
    {
        return std::nullopt;
    }
    std::vector<unsigned int> streams;
    for (const Property& entry : *list)
    {
        if (!IsAttachment(entry))
        {
            AddFault(list->GetName(),
                     "expected the index of a cover or attachment of the first source, found " +
                         ValueText(entry));
            return std::vector<unsigned int>();
        }
        streams.push_back(static_cast<unsigned int>(entry.GetInt64()));
    }
    return streams;
}

const Property* TargetReader::List(const std::string& key)
{
    const auto list = m_output.target->FindChild(key);
    if (list == m_output.target->end())
    {
        return nullptr;
    }
    if (list->GetType() != PROPERTY_TYPE_GROUP)
    {
        AddFault(key, "expected a group, found " + ValueText(*list));
        return nullptr;
    }
    return &*list;
}

bool TargetReader::IsAttachment(const Property& entry) const
{
    constexpr long long kMost = std::numeric_limits<int>::max();
    if (entry.GetType() != PROPERTY_TYPE_INT64 || entry.GetInt64() < 0 || entry.GetInt64() > kMost)
    {
        return false;
    }
    if (!m_hasSources || m_output.inputs.empty())
    {
        return !m_hasSources;
    }
    const auto index = static_cast<std::size_t>(entry.GetInt64());
    const std::vector<MediaStream>& streams = m_output.inputs.front()->streams;
    return index < streams.size() &&
           (streams[index].isAttachedPicture || streams[index].kind == StreamKind::Attachment);
}

} // namespace Zelnor::Media
