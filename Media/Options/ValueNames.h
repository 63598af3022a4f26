#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Property.h"

#include <string>
#include <vector>

/// \file
/// What the values of keys may be called, and what people may have meant by a wrong name.

namespace Zelnor::Media
{

/// The names that the vocabulary has for values of the key; none where they are not names.
std::vector<std::string> NamesOfValues(const std::string& key);

/// Those that are probably meant by a value that is not one of the names of its key; none otherwise.
/// \param setting  may be null
std::vector<std::string> NearestValues(const Core::Property* setting);

/// "; did you mean 'STEREO'?" for a value that is not one of the names of its key; empty when none is near,
/// or its values are not names.
std::string SuggestName(const std::string& key, const std::string& value);
std::string SuggestName(const Core::Property& setting);

} // namespace Zelnor::Media
