#pragma once

#include "Media/NearestNames.h"
#include "Media/Text.h"

#include <string>
#include <vector>

namespace Zelnor::Tool
{

using Media::BareName;
using Media::DidYouMean;
using Media::LowerCase;
using Media::NearestNames;

/// \throw ToolError "'h246' is not a known codec; did you mean 'CODEC_ID_H264'?"
[[noreturn]] void ThrowUnknownName(const std::string& noun, const std::string& name,
                                   const std::vector<std::string>& known);

} // namespace Zelnor::Tool
