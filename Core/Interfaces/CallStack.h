#pragma once

#include "Core/Interfaces/Export.h"

#include <string>

namespace Zelnor
{

/// The call stack of the calling thread as text, one frame a line, the caller's frame first. A frame is named
/// by its demangled function if the symbol is known, else by its library and the offset in it. May be called
/// from any thread. The names of addresses are remembered, so that a throw costs microseconds.
ZELNOR_API std::string GetCallStack();

} // namespace Zelnor
