#pragma once

// Private to the library, not installed.

#include "Media/Place.h"

#include "Core/Interfaces/Property.h"

#include <cstdint>
#include <optional>

namespace Zelnor::Media
{

class FaultList;

/// The part of its sources that a target is made from, in microseconds from their beginning.
struct MediaSpan
{
    std::int64_t start = 0;
    std::optional<std::int64_t> end = {}; ///< at the sources' end without it

    bool IsWhole() const { return start == 0 && !end; }
    /// How long the target will be; nothing when the source's duration is not known and matters.
    std::optional<std::int64_t> DurationOf(std::optional<std::int64_t> source) const;
};

/// What a target's record says of it. A value that cannot be one is a fault, and left out.
/// \param place  the target's
MediaSpan ReadSpan(const Core::Property& target, const Place& place, FaultList& faults);

} // namespace Zelnor::Media
