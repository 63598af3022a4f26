#pragma once

#include "Core/Interfaces/Property.h"

#include <rapidcheck.h>

#include <limits>
#include <string>

namespace Zelnor::Testing
{

namespace details
{

/// A number of any size, often one at the border of what 64 bits hold.
inline rc::Gen<long long> Number()
{
    constexpr long long kLeast = std::numeric_limits<long long>::min();
    constexpr long long kMost = std::numeric_limits<long long>::max();
    return rc::gen::oneOf(rc::gen::arbitrary<long long>(),
                          rc::gen::element(kLeast, kLeast + 1, -1LL, 0LL, 1LL, kMost - 1, kMost));
}

/// Names repeat often; some are empty, some are any bytes.
inline std::string MakeName()
{
    return *rc::gen::oneOf(rc::gen::element<std::string>("", "a", "b", "codec.options.encode", "$$TYPE_ID$$"),
                           rc::gen::arbitrary<std::string>());
}

} // namespace details

/// A random record of at most `depth` nested groups, for use inside a property of RapidCheck.
inline Core::Property MakeRecord(int depth)
{
    const std::string name = details::MakeName();
    switch (*rc::gen::inRange(0, depth > 0 ? 7 : 4))
    {
    case 0:
        return Core::Property(name, *details::Number());
    case 1:
        return Core::Property(name, *rc::gen::arbitrary<std::string>());
    case 2:
        return Core::Property(name,
                              Core::Property::Ratio(*details::Number(), *rc::gen::positive<long long>()));
    case 3:
        return Core::Property::None(name);
    default:
        Core::Property group(name);
        const int count = *rc::gen::inRange(0, 5);
        for (int i = 0; i < count; ++i)
        {
            group.Add(MakeRecord(depth - 1));
        }
        return group;
    }
}

} // namespace Zelnor::Testing
