#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

/// What libFuzzer calls with each input. Anything wrong ends the process; -1 stands for an input that is not
/// even well-formed and not worth keeping.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Zelnor::Fuzz
{

/// The oracle's word: ends the process when something that always holds does not.
inline void Require(bool holds, const char* what)
{
    if (!holds)
    {
        std::fprintf(stderr, "broken: %s\n", what);
        std::abort();
    }
}

inline std::string ToString(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

} // namespace Zelnor::Fuzz
