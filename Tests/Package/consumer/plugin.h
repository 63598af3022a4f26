#pragma once

#include "Conf/Interfaces/IFormatCodec.h"

#include <string>

extern "C" {
void ThrowOfLibrary();
void ThrowOfTemplate();
void ThrowOfPlugin();
/// Whether it catches a `BadJson` that `action` throws, and what that says.
bool CatchesWhatIsThrown(void (*action)(), std::string& description);
/// The caller owns one reference.
Zelnor::Conf::IFormatCodec* MakeCodec();
}
