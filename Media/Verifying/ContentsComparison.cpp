#include "Media/Verifying/ContentsComparison.h"

#include "Media/Verifying/Numbers.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <utility>

namespace Zelnor::Media
{

namespace
{

/// "'One' at 0.400 s"
std::string ChapterText(const MediaChapter& chapter)
{
    return (chapter.title.empty() ? "" : "'" + chapter.title + "' ") + "at " + SecondsText(chapter.start);
}

bool IsSame(const MediaChapter& one, const MediaChapter& other)
{
    // The clock of no container is coarser, and a file's end is where its last chapter ends.
    constexpr std::int64_t kRounding = 1000;
    return one.title == other.title && std::abs(one.start - other.start) <= kRounding;
}

void CompareChapters(const ExpectedFile& wanted, const std::vector<MediaChapter>& found,
                     std::vector<TargetDifference>& differences)
{
    const std::vector<MediaChapter>& chapters = *wanted.chapters;
    if (chapters.size() != found.size())
    {
        differences.push_back(
            {wanted.place, "chapters", std::to_string(chapters.size()), std::to_string(found.size())});
        return;
    }
    for (std::size_t i = 0; i < chapters.size(); ++i)
    {
        if (!IsSame(chapters[i], found[i]))
        {
            differences.push_back({wanted.place, "chapter " + std::to_string(i + 1), ChapterText(chapters[i]),
                                   ChapterText(found[i])});
        }
    }
}

/// Covers go into a file as they are. Where one is missing, that is said already.
void ComparePictures(const ExpectedFile& wanted, std::vector<std::string> found,
                     std::vector<TargetDifference>& differences)
{
    if (found.size() < wanted.pictures.size())
    {
        return;
    }
    for (const std::string& picture : wanted.pictures)
    {
        const auto same = std::find(found.begin(), found.end(), picture);
        if (same == found.end())
        {
            differences.push_back({wanted.place, "covers",
                                   "the source's image of " + std::to_string(picture.size()) + " bytes",
                                   "another one"});
            continue;
        }
        found.erase(same);
    }
}

std::string Listed(std::vector<std::string> names)
{
    std::sort(names.begin(), names.end());
    std::string text;
    for (const std::string& name : names)
    {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text.empty() ? "none" : text;
}

} // namespace

std::vector<TargetDifference> CompareContents(const ExpectedFile& wanted, const MediaFile& found,
                                              const std::vector<bool>& isTaken)
{
    std::vector<TargetDifference> differences;
    if (wanted.chapters)
    {
        CompareChapters(wanted, found.chapters, differences);
    }
    std::vector<std::string> covers;
    std::vector<std::string> pictures;
    std::vector<std::string> attachments;
    for (std::size_t i = 0; i < found.streams.size(); ++i)
    {
        const MediaStream& stream = found.streams[i];
        if (stream.isAttachedPicture && !isTaken[i])
        {
            covers.push_back(stream.codec);
            pictures.push_back(stream.picture);
        }
        else if (stream.kind == StreamKind::Attachment)
        {
            attachments.push_back("'" + stream.fileName + "'");
        }
    }
    std::vector<std::string> names;
    for (const std::string& name : wanted.attachments)
    {
        names.push_back("'" + name + "'");
    }
    const auto compare = [&](const char* what, const std::string& one, const std::string& other) {
        if (one != other)
        {
            differences.push_back({wanted.place, what, one, other});
        }
    };
    if (wanted.covers)
    {
        compare("covers", Listed(*wanted.covers), Listed(covers));
        ComparePictures(wanted, std::move(pictures), differences);
    }
    compare("attachments", Listed(names), Listed(attachments));
    if (!wanted.timecode.empty())
    {
        compare("timecode", wanted.timecode, found.timecode.empty() ? "none" : found.timecode);
    }
    return differences;
}

} // namespace Zelnor::Media
