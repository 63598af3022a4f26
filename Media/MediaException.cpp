#include "Media/MediaException.h"

#include "Core/Private/AttachTag.h"

namespace Zelnor::Media
{

MediaException::~MediaException() noexcept = default;
ProbeException::~ProbeException() noexcept = default;
PresetFileException::~PresetFileException() noexcept = default;
PlanException::~PlanException() noexcept = default;
JobException::~JobException() noexcept = default;
RunException::~RunException() noexcept = default;
TranscodeFailed::~TranscodeFailed() noexcept = default;

namespace details
{

ZELNOR_ATTACH_TAG(MediaException::TagFile)
ZELNOR_ATTACH_TAG(MediaException::TagNode)
ZELNOR_ATTACH_TAG(MediaException::TagLink)
ZELNOR_ATTACH_TAG(MediaException::TagStream)
ZELNOR_ATTACH_TAG(MediaException::TagKey)
ZELNOR_ATTACH_TAG(TranscodeFailed::TagExitCode)
ZELNOR_ATTACH_TAG(TranscodeFailed::TagMessages)

} // namespace details

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
