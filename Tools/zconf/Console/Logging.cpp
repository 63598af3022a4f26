#include "Tools/zconf/Console/Logging.h"

#include "Conf/Private/Log.h"
#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/Text.h"

#include <string>

namespace Zelnor::Tool
{

Logging::Logging()
{
    Conf::SetLogWriter(
        [](const char*, int, const char* message) { WriteMessage("zconf: " + Printable(message) + "\n"); });
}

Logging::~Logging() { Conf::SetLogWriter(nullptr); }

} // namespace Zelnor::Tool
