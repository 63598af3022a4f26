#pragma once

#include "Core/Interfaces/Export.h"

#include <string>

namespace Zelnor::Conf
{

/// A rule for the value of a property. The preset manager implements rules; the library defines the
/// identifiers of their descriptions.
class ZELNOR_API IPropertyConstraint
{
public:
    // DESCRIPTION_ID_EVEN_SIZE: the value must be even
#define ZELNOR_TEXT(name, text) static const std::string name;
#include "Conf/Interfaces/Vocabulary/IPropertyConstraint.def"
};

} // namespace Zelnor::Conf
