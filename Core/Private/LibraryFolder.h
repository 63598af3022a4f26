#pragma once

// Private to the libraries, not installed.

#include <climits>
#include <string>

#include <dlfcn.h>
#include <link.h>

namespace Zelnor::Core
{

/// The folder that the library with this object was loaded from; empty when it is not known. The dynamic
/// linker knows the folder as it was then: a relative name would by now mean another one when the working
/// folder has changed.
inline std::string LibraryFolder(const void* object)
{
    Dl_info info = {};
    void* library = nullptr;
    char folder[PATH_MAX] = "";
    const bool isKnown = ::dladdr1(object, &info, &library, RTLD_DL_LINKMAP) != 0 &&
                         ::dlinfo(library, RTLD_DI_ORIGIN, folder) == 0;
    return isKnown ? folder : std::string();
}

} // namespace Zelnor::Core
