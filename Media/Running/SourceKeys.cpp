#include "Media/Running/SourceKeys.h"

#include "Media/Jobs/FaultList.h"
#include "Media/Jobs/JobKeys.h"
#include "Media/Planning/StreamsLeftOut.h"
#include "Media/ValueText.h"

#include <algorithm>
#include <limits>
#include <string>

namespace Zelnor::Media
{

namespace
{

/// Empty when the entry is a stream that can be left out, and not one of `known`.
/// \param file  null when it does not matter
std::string FindFault(const Core::Property& entry, const MediaFile* file,
                      const std::vector<unsigned int>& known)
{
    constexpr long long kMost = std::numeric_limits<int>::max();
    const bool isNumber = entry.GetType() == PROPERTY_TYPE_INT64;
    const long long index = isNumber ? entry.GetInt64() : -1;
    if (!isNumber || (file == nullptr && (index < 0 || index > kMost)))
    {
        return "expected the index of a stream, found " + ValueText(entry);
    }
    if (file != nullptr && (index < 0 || static_cast<unsigned long long>(index) >= file->streams.size()))
    {
        return "'" + file->name + "' does not have a stream " + std::to_string(index);
    }
    const auto number = static_cast<unsigned int>(index);
    if (file != nullptr && !CanBeLeftOut(file->streams[number]))
    {
        return "stream " + std::to_string(number) + " is a cover or an attachment, which '" +
               JobKeys::kAttachments + "' of a target leaves out";
    }
    return std::find(known.begin(), known.end(), number) == known.end()
               ? ""
               : "stream " + std::to_string(number) + " is listed twice";
}

std::vector<unsigned int> ReadList(const Core::Property& source, const MediaFile* file, const Place& place,
                                   FaultList& faults)
{
    std::vector<unsigned int> leftOut;
    const auto list = source.FindChild(JobKeys::kLeftOut);
    if (list == source.end())
    {
        return leftOut;
    }
    if (list->GetType() != PROPERTY_TYPE_GROUP)
    {
        faults.Add(JobFault::Setting, place.At(list->GetName()),
                   "expected a group, found " + ValueText(*list));
        return leftOut;
    }
    for (const Core::Property& entry : *list)
    {
        const std::string fault = FindFault(entry, file, leftOut);
        if (!fault.empty())
        {
            faults.Add(JobFault::Setting, place.At(list->GetName()), fault);
            return {};
        }
        leftOut.push_back(static_cast<unsigned int>(entry.GetInt64()));
    }
    return leftOut;
}

} // namespace

std::vector<unsigned int> ReadLeftOut(const Core::Property& source, const MediaFile& file, const Place& place,
                                      FaultList& faults)
{
    return ReadList(source, &file, place, faults);
}

std::vector<unsigned int> ReadLeftOut(const Core::Property& source, const Place& place, FaultList& faults)
{
    return ReadList(source, nullptr, place, faults);
}

} // namespace Zelnor::Media
