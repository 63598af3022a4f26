#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Property.h"

#include <string>

namespace Zelnor::Media
{

/// A value as messages show what was found: 3, 'fast', 30000/1001, null, a group.
inline std::string ValueText(const Core::Property& value)
{
    switch (value.GetType())
    {
    case PROPERTY_TYPE_NONE:
        return "null";
    case PROPERTY_TYPE_INT64:
        return std::to_string(value.GetInt64());
    case PROPERTY_TYPE_STRING:
        return "'" + value.GetString() + "'";
    case PROPERTY_TYPE_RATIO:
        return std::to_string(value.GetRatio().numerator()) + "/" +
               std::to_string(value.GetRatio().denominator());
    case PROPERTY_TYPE_GROUP:
        break;
    }
    return "a group";
}

/// A type as messages say what is expected.
inline const char* TypeText(PropertyTypes type)
{
    switch (type)
    {
    case PROPERTY_TYPE_NONE:
        return "null";
    case PROPERTY_TYPE_INT64:
        return "an integer";
    case PROPERTY_TYPE_STRING:
        return "a string";
    case PROPERTY_TYPE_RATIO:
        return "a rational";
    case PROPERTY_TYPE_GROUP:
        break;
    }
    return "a group";
}

} // namespace Zelnor::Media
