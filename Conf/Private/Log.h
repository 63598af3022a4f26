#pragma once

// Private to the library, not installed: the one way of logging, which a build may be without.

#include "Core/Interfaces/Export.h"

namespace Zelnor::Conf
{

using LogWriter = void (*)(const char* file, int line, const char* message);

/// Whoever writes lines otherwise does without glog, which is loaded when the first line is written to it.
/// \param writer  null for glog
ZELNOR_API void SetLogWriter(LogWriter writer);

void LogInfo(const char* file, int line, const char* message);

} // namespace Zelnor::Conf
