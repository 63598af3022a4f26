#pragma once

/// \file
/// Keys of a job's records that the vocabulary does not have. A record without them means what it always
/// meant.

namespace Zelnor::Media::JobKeys
{

// Of a target's record.

/// Where in its sources the target begins: microseconds from their beginning, an integer; 0 without it.
constexpr const char* kStart = "start";
/// Where in its sources the target ends, counted in the same way; at their end without it.
constexpr const char* kEnd = "end";

} // namespace Zelnor::Media::JobKeys
