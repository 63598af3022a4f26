#pragma once

// Private to the library, not installed.

#include "Media/Validating/FaultCollector.h"

#include "Core/Interfaces/Property.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// How deep the JSON of a record that can be read nests at most, with some room.
constexpr std::size_t kRecordLevels = 1100;

/// A record that was read from a part of a document.
struct ReadRecord
{
    /// Nothing when none of it can be read.
    std::optional<Core::Property> record;
    /// The values that were taken for 0, since they cannot be read.
    std::vector<JsonIndex::Id> replaced;
};

/// Reads the record that the part is. What is not of the form of a record is a fault.
/// \param place  of the record
ReadRecord ReadRecordPart(const JsonPart& part, const Place& place, FaultCollector& faults);

/// The value of a property inside the record that the part is.
/// \param path  positions of children, from the record on
JsonIndex::Id ValueAt(const JsonPart& part, const std::vector<std::size_t>& path);

/// The positions of children that lead to a property which the record contains.
std::vector<std::size_t> PathTo(const Core::Property& record, const Core::Property& inner);

} // namespace Zelnor::Media
