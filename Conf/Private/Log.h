#pragma once

// Private to the library, not installed: the one way of logging, which a build may be without.

#ifndef ZELNOR_WITHOUT_LOG
#include <glog/logging.h>
#endif

namespace Zelnor::Conf
{

inline void LogInfo([[maybe_unused]] const char* file, [[maybe_unused]] int line,
                    [[maybe_unused]] const char* message)
{
#ifndef ZELNOR_WITHOUT_LOG
    google::LogMessage(file, line).stream() << message;
#endif
}

} // namespace Zelnor::Conf
