#pragma once

#include "Media/Text.h"

#include <string>
#include <vector>

namespace Zelnor::Tool
{

using Media::LowerCase;

/// Up to three of `known` that `name` probably stands for, the likeliest first: those that differ in the
/// fewest letters, or that contain it. Case and the prefixes of the vocabulary, such as "CODEC_ID_", are
/// ignored.
std::vector<std::string> NearestNames(const std::string& name, const std::vector<std::string>& known);

/// \throw ToolError "'h246' is not a known codec; did you mean 'CODEC_ID_H264'?"
[[noreturn]] void ThrowUnknownName(const std::string& noun, const std::string& name,
                                   const std::vector<std::string>& known);

/// The name without the vocabulary's prefix, in lower case: "h264" for "CODEC_ID_H264".
std::string BareName(const std::string& name);

} // namespace Zelnor::Tool
