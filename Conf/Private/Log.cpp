#include "Conf/Private/Log.h"

#include "Conf/Private/GlogWriter.h"
#include "Core/Private/LibraryFolder.h"

#include <dlfcn.h>

#include <atomic>

namespace Zelnor::Conf
{

namespace
{

std::atomic<LogWriter> g_writer = nullptr;

#ifdef ZELNOR_LOG_LIBRARY

/// Closes glog's library when ours is closed; after that, nothing is logged.
class GlogLibrary
{
public:
    constexpr GlogLibrary() = default;
    ~GlogLibrary()
    {
        m_isOver = true;
        if (void* const library = m_library.exchange(nullptr))
        {
            (void)::dlclose(library);
        }
    }
    GlogLibrary(const GlogLibrary&) = delete;
    GlogLibrary& operator=(const GlogLibrary&) = delete;

    /// \returns null when it cannot be loaded: a log that cannot be written keeps nobody from working
    LogWriter Writer()
    {
        if (m_library == nullptr && !m_isOver)
        {
            Open();
        }
        void* const library = m_library;
        return library == nullptr ? nullptr
                                  : reinterpret_cast<LogWriter>(::dlsym(library, "ZelnorWriteToGlog"));
    }

private:
    /// Without a lock: whoever logs while a library of theirs is loaded holds the dynamic linker's already.
    void Open()
    {
        const std::string path = Core::LibraryFolder(this) + "/" ZELNOR_LOG_LIBRARY;
        void* const opened = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
        void* present = nullptr;
        if (opened != nullptr && !m_library.compare_exchange_strong(present, opened))
        {
            (void)::dlclose(opened);
        }
    }

    std::atomic<void*> m_library = nullptr;
    std::atomic<bool> m_isOver = false;
};

GlogLibrary g_glog;

#endif

LogWriter Writer()
{
#if defined ZELNOR_WITHOUT_LOG
    return nullptr;
#else
    if (const LogWriter writer = g_writer)
    {
        return writer;
    }
#ifdef ZELNOR_LOG_LIBRARY
    return g_glog.Writer();
#else
    return &ZelnorWriteToGlog;
#endif
#endif
}

} // namespace

void SetLogWriter(LogWriter writer) { g_writer = writer; }

void LogInfo(const char* file, int line, const char* message)
{
    if (const LogWriter writer = Writer())
    {
        writer(file, line, message);
    }
}

} // namespace Zelnor::Conf
