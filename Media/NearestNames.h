#pragma once

// Private to the library and to the tool, not installed.

#include "Core/Interfaces/Export.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// Up to three of `known` that `name` probably stands for, the likeliest first: those that differ in the
/// fewest letters, or that contain it. Case and the prefixes of the vocabulary, such as "CODEC_ID_", are
/// ignored.
ZELNOR_API std::vector<std::string> NearestNames(const std::string& name,
                                                 const std::vector<std::string>& known);

/// "; did you mean 'mp3' or 'mp4'?", to end a sentence with; empty when nothing known is like the name.
ZELNOR_API std::string DidYouMean(const std::string& name, const std::vector<std::string>& known);

/// The same for names that are near already.
std::string DidYouMean(const std::vector<std::string>& names);

/// The name without the vocabulary's prefix, in lower case: "h264" for "CODEC_ID_H264".
ZELNOR_API std::string BareName(const std::string& name);

} // namespace Zelnor::Media
