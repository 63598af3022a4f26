#include "Media/Probe/FFmpegLog.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Probe/MessageScope.h"

extern "C" {
#include <libavutil/log.h>
}

#include <cstdio>
#include <mutex>
#include <new>
#include <utility>

namespace Zelnor::Media
{

namespace
{

thread_local MessageScope* t_scope = nullptr;

/// Set before FFmpeg can call back, and never changed again. Null for FFmpeg's own.
FFmpegLogCallback g_others = nullptr;

void OnMessage(void* context, int level, const char* format, std::va_list arguments)
{
    if (KeepFFmpegMessage(level, format, arguments))
    {
        return;
    }
    const FFmpegLogCallback others = g_others != nullptr ? g_others : FFmpeg().av_log_default_callback;
    others(context, level, format, arguments);
}

} // namespace

MessageScope::MessageScope() : m_outer(t_scope) { t_scope = this; }

MessageScope::~MessageScope() { t_scope = m_outer; }

MessageScope* MessageScope::Current() { return t_scope; }

void KeepFFmpegMessages(FFmpegLogCallback others)
{
    static std::once_flag s_once;
    std::call_once(s_once, [others] {
        g_others = others;
        SetLogCallback(OnMessage);
    });
}

bool KeepFFmpegMessage(int level, const char* format, std::va_list arguments) noexcept
{
    MessageScope* const scope = MessageScope::Current();
    if (scope == nullptr || level > AV_LOG_ERROR)
    {
        return scope != nullptr;
    }
    char line[512] = "";
    std::vsnprintf(line, sizeof line, format, arguments);
    try
    {
        std::string text = line;
        text.erase(text.find_last_not_of(".\r\n ") + 1);
        if (!text.empty())
        {
            scope->Keep(std::move(text));
        }
    }
    catch (const std::bad_alloc&)
    {
        // FFmpeg's own error is told without its message then.
    }
    return true;
}

} // namespace Zelnor::Media
