#pragma once

#include <cstddef>

namespace Zelnor::Benchmarks
{

/// How often this program and its libraries have asked for memory.
std::size_t CountAllocations();
/// The bytes that they have and have not given back, with what the allocator adds to each piece.
std::size_t BytesInUse();

} // namespace Zelnor::Benchmarks
