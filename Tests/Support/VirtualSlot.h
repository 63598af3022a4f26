#pragma once

#include <cstddef>
#include <cstring>

namespace Zelnor::Testing
{

/// The place of a virtual function in its class's table, in the Itanium C++ ABI, where the destructor takes
/// the two places from 0. Libraries of the product that are not rebuilt with this one call by these numbers.
template <class Member>
std::size_t VirtualSlot(Member member)
{
    std::ptrdiff_t offset = 0;
    static_assert(sizeof(member) == 2 * sizeof(offset));
    std::memcpy(&offset, &member, sizeof(offset));
    return static_cast<std::size_t>(offset & ~std::ptrdiff_t{1}) / sizeof(void*);
}

} // namespace Zelnor::Testing
