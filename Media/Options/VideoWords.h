#pragma once

// Private to the library, not installed.

#include <string>
#include <string_view>

namespace Zelnor::Media
{

/// Whether `text` is that of one of the video vocabulary's constants whose names begin with `prefix`:
/// "TAG_X264_PRESET_" and "fast".
bool IsVideoWord(std::string_view prefix, const std::string& text);

} // namespace Zelnor::Media
