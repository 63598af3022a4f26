#include "Media/Jobs/MediaSpan.h"

#include "Media/Jobs/FaultList.h"
#include "Media/Jobs/JobKeys.h"
#include "Media/ValueText.h"

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

using Core::Property;

std::optional<std::int64_t> ReadTime(const Property& target, const char* key, const Place& place,
                                     FaultList& faults)
{
    const auto value = target.FindChild(key);
    if (value == target.end())
    {
        return std::nullopt;
    }
    // Thirty years; ffmpeg adds such times to others.
    constexpr std::int64_t kMost = 1000000000000000;
    if (value->GetType() != PROPERTY_TYPE_INT64 || value->GetInt64() < 0 || value->GetInt64() > kMost)
    {
        faults.Add(JobFault::Setting, place.At(key),
                   "expected a time in microseconds, as 1500000, found " + ValueText(*value));
        return std::nullopt;
    }
    return value->GetInt64();
}

} // namespace

std::optional<std::int64_t> MediaSpan::DurationOf(std::optional<std::int64_t> source) const
{
    if (!source)
    {
        return end ? std::optional(*end - start) : std::nullopt;
    }
    return std::max<std::int64_t>(std::min(end.value_or(*source), *source) - start, 0);
}

MediaSpan ReadSpan(const Property& target, const Place& place, FaultList& faults)
{
    MediaSpan span;
    span.start = ReadTime(target, JobKeys::kStart, place, faults).value_or(0);
    span.end = ReadTime(target, JobKeys::kEnd, place, faults);
    if (span.end && *span.end <= span.start)
    {
        faults.Add(JobFault::Setting, place.At(JobKeys::kEnd),
                   "expected a time after " + std::to_string(span.start) +
                       ", where the target begins, found " + std::to_string(*span.end));
        span.end.reset();
    }
    return span;
}

} // namespace Zelnor::Media
