#include "Media/MediaException.h"

namespace Zelnor::Media
{

MediaException::~MediaException() noexcept = default;
ProbeException::~ProbeException() noexcept = default;
PresetFileException::~PresetFileException() noexcept = default;
PlanException::~PlanException() noexcept = default;
JobException::~JobException() noexcept = default;
RunException::~RunException() noexcept = default;
TranscodeFailed::~TranscodeFailed() noexcept = default;

void details::TagPlace(const Place& place, const MediaException& exception)
{
    if (!place.file.empty())
    {
        exception << MediaException::TagFile(place.file);
    }
    if (place.node)
    {
        exception << MediaException::TagNode(*place.node);
    }
    if (place.link)
    {
        exception << MediaException::TagLink(*place.link);
    }
    if (place.stream)
    {
        exception << MediaException::TagStream(*place.stream);
    }
    if (!place.key.empty())
    {
        exception << MediaException::TagKey(place.key);
    }
}

} // namespace Zelnor::Media
