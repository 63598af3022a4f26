#pragma once

// Private to the library, not installed: what the sources of the graph have in common in their exceptions and
// their log.

#include "Conf/Interfaces/ConfException.h"

namespace Zelnor::Conf
{

/// What every exception of a graph records as its place, whichever source it comes from.
inline constexpr const char* kGraphUnit = "Conf/Interfaces/ITranscodingMetaGraph";

/// The same for a line in the log, which names a source.
inline constexpr const char* kGraphSource = "Conf/Interfaces/ITranscodingMetaGraph.cpp";

/// The exception for a null stream, ready to be thrown.
inline ProfileException NoStream()
{
    ProfileException exception;
    exception << TagDescription("No stream is given");
    return exception;
}

/// The exception for a change that a stream asks for while the graph calls it.
inline ProfileException ChangeWhileStreaming()
{
    ProfileException exception;
    exception << TagDescription("The graph cannot be changed while it is being loaded or saved");
    return exception;
}

} // namespace Zelnor::Conf
