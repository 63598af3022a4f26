#pragma once

#include "Media/Text.h"

#include <string>
#include <vector>

namespace Zelnor::Tool
{

using Media::LowerCase;

/// Up to three of `known` that `name` was probably meant to be, the likeliest first: those that are reached
/// by the fewest changes of a letter, or that contain it. Letter case and the prefixes of the vocabulary,
/// such as "CODEC_ID_", do not count.
std::vector<std::string> NearestNames(const std::string& name, const std::vector<std::string>& known);

/// \throw ToolError "'h246' is no known codec; did you mean 'CODEC_ID_H264'?"
[[noreturn]] void ThrowUnknownName(const std::string& noun, const std::string& name,
                                   const std::vector<std::string>& known);

/// The name without the vocabulary's prefix, in lower case: "h264" for "CODEC_ID_H264".
std::string BareName(const std::string& name);

} // namespace Zelnor::Tool
