#include "Media/FFmpeg/Calls.h"

namespace Zelnor::Media
{

const FunctionTable& FFmpeg() { return ZelnorFFmpegFunctions; }

void SetLogCallback(void (*callback)(void*, int, const char*, std::va_list))
{
    av_log_set_callback(callback);
}

} // namespace Zelnor::Media
