#pragma once

#include <cstdint>

namespace Zelnor
{

/// What a property holds. The numbers are part of the contract with the other libraries.
enum PropertyTypes : std::int32_t
{
    PROPERTY_TYPE_NONE = 0,   ///< no value
    PROPERTY_TYPE_INT64 = 1,  ///< `long long`
    PROPERTY_TYPE_STRING = 2, ///< `std::string`, any bytes
    PROPERTY_TYPE_RATIO = 3,  ///< `boost::rational<long long>`
    PROPERTY_TYPE_GROUP = 6,  ///< children in order
};

} // namespace Zelnor
