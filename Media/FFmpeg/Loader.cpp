#include "Media/FFmpeg/Calls.h"

#include "Media/MediaException.h"

extern "C" {
#include <libavutil/avutil.h>
#include <libavutil/macros.h>
}

#include <dlfcn.h>
#include <link.h>

#include <atomic>
#include <climits>
#include <mutex>
#include <string>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/FFmpeg/Loader";

using LogCallback = void (*)(void*, int, const char*, std::va_list);

/// Null until it is loaded.
std::atomic<const FunctionTable*> g_functions = nullptr;
/// Of what follows, and of loading.
std::mutex g_mutex;
LogCallback g_callback = nullptr;

[[noreturn]] void ThrowUnusable(const std::string& reason)
{
    ZELNOR_THROW(kUnit, MakeError<MediaException>("FFmpeg's libraries cannot be used: " + reason));
}

/// In the folder that this library was loaded from, and nowhere else.
std::string TablePath()
{
    Dl_info info = {};
    void* library = nullptr;
    char folder[PATH_MAX] = "";
    // Any object of the library will do. The dynamic linker knows the folder as it was then: a relative name
    // would by now mean another one when the working folder has changed.
    if (::dladdr1(&g_functions, &info, &library, RTLD_DL_LINKMAP) == 0 ||
        ::dlinfo(library, RTLD_DI_ORIGIN, folder) != 0)
    {
        ThrowUnusable("the folder of this library is not known");
    }
    return std::string(folder) + "/" ZELNOR_FFMPEG_TABLE;
}

/// FFmpeg's libraries bring many others, and each name that one of them imports is looked for in all of them
/// in turn. A family that was loaded by itself looks only in its own. One that is not there is not missed.
void LoadFamilies()
{
    for (const char* const name : {ZELNOR_FFMPEG_FAMILIES static_cast<const char*>(nullptr)})
    {
        if (name != nullptr)
        {
            (void)::dlopen(name, RTLD_LAZY | RTLD_LOCAL);
        }
    }
}

const FunctionTable& Load()
{
    const std::string path = TablePath();
    LoadFamilies();
    void* const library = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    const void* const table = library == nullptr ? nullptr : ::dlsym(library, "ZelnorFFmpegFunctions");
    if (table == nullptr)
    {
        ThrowUnusable(::dlerror());
    }
    const auto& functions = *static_cast<const FunctionTable*>(table);
    if (functions.rows != FunctionRows())
    {
        ThrowUnusable(path + " belongs to another build of this library");
    }
    if (g_callback != nullptr)
    {
        functions.av_log_set_callback(g_callback);
    }
    g_functions.store(&functions, std::memory_order_release);
    return functions;
}

/// Whether somebody else in the process uses FFmpeg.
bool IsPresent()
{
    void* const library =
        ::dlopen("libavutil.so." AV_STRINGIFY(LIBAVUTIL_VERSION_MAJOR), RTLD_LAZY | RTLD_NOLOAD);
    if (library != nullptr)
    {
        (void)::dlclose(library);
    }
    return library != nullptr;
}

} // namespace

const FunctionTable& FFmpeg()
{
    if (const FunctionTable* const functions = g_functions.load(std::memory_order_acquire))
    {
        return *functions;
    }
    const std::lock_guard<std::mutex> lock(g_mutex);
    const FunctionTable* const functions = g_functions.load(std::memory_order_relaxed);
    return functions != nullptr ? *functions : Load();
}

void SetLogCallback(LogCallback callback)
{
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_callback = callback;
    if (const FunctionTable* const functions = g_functions.load(std::memory_order_relaxed))
    {
        functions->av_log_set_callback(callback);
    }
    else if (IsPresent())
    {
        (void)Load();
    }
}

} // namespace Zelnor::Media
