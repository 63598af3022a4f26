#pragma once

// Private to the library and to the tool, not installed.

#include "Media/Running/Transcode.h"

#include "Core/Interfaces/Export.h"

#include <cstdint>
#include <optional>

namespace Zelnor::Media
{

/// How large the target will be, in bytes: from its duration and the bitrates that its encoders are asked
/// for. Nothing where that cannot be told, as of lossless codecs.
ZELNOR_API std::optional<std::int64_t> EstimateSize(const Transcode& transcode);

} // namespace Zelnor::Media
