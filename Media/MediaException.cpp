#include "Media/MediaException.h"

namespace Zelnor::Media
{

MediaException::~MediaException() noexcept = default;
ProbeException::~ProbeException() noexcept = default;
PresetFileException::~PresetFileException() noexcept = default;
PlanException::~PlanException() noexcept = default;
JobException::~JobException() noexcept = default;
RunException::~RunException() noexcept = default;

} // namespace Zelnor::Media
