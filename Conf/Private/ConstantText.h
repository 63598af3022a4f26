#pragma once

// Private to the library, not installed.

#include <cstddef>
#include <string>

namespace Zelnor::Conf
{

#if defined(__GLIBCXX__) && _GLIBCXX_USE_CXX11_ABI

/// A constant of the vocabulary. It lies in memory as libstdc++'s `std::string` does whose text has memory of
/// its own, and programs read it as the `const std::string` that headers declare. It is there before any code
/// runs, and in programs that have a copy of it, and is never destroyed. The tag is what `std::string` leaves
/// in the names of variables.
struct [[gnu::abi_tag("cxx11")]] ConstantText
{
    template <std::size_t Size>
    constexpr explicit ConstantText(const char(&text)[Size])
        : data(text), size(Size - 1), capacity(Size - 1), rest()
    {}

    const char* data;
    std::size_t size;
    /// With the rest, where a string keeps a short text of its own.
    std::size_t capacity;
    char rest[16 - sizeof(std::size_t)];
};

static_assert(sizeof(ConstantText) == sizeof(std::string));
static_assert(alignof(ConstantText) == alignof(std::string));

#define ZELNOR_CONSTANT constexpr ConstantText

#else

// How other libraries' strings lie in memory is not relied on: they are made before the tables that have
// copies of them.
using ConstantText = std::string;
#define ZELNOR_CONSTANT __attribute__((init_priority(999))) const ConstantText

#endif

} // namespace Zelnor::Conf
