#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Export.h"

/// \file
/// Loading glog, with what it needs itself, takes as long as loading all that is ours, and hardly any program
/// logs anything. So it is not this library that needs glog, but a small one beside it, `libZelnorLog`, which
/// holds nothing but this function (Log.cpp). A program that uses glog itself shares it.
///
/// Where all is linked into one program, the function is as well.

extern "C" {
ZELNOR_API void ZelnorWriteToGlog(const char* file, int line, const char* message);
}
