#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Property.h"

#include <string>

namespace Zelnor::Media
{

/// The text under the key; empty when the record does not have the key, or another kind of value there.
inline std::string TextUnder(const Core::Property& record, const std::string& key)
{
    const auto child = record.FindChild(key);
    return child != record.end() && child->GetType() == PROPERTY_TYPE_STRING ? child->GetString() : "";
}

} // namespace Zelnor::Media
