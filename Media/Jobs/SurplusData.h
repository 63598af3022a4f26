#pragma once

// Private to the library, not installed.

#include <cstddef>
#include <string_view>
#include <vector>

namespace Zelnor::Media
{

/// Positions in the arrays "vertices" and "edges" of a job's document.
struct SurplusData
{
    std::vector<std::size_t> vertices;
    std::vector<std::size_t> edges;
};

/// The elements whose "data" hold more than one member, of which a graph takes the first. One pass over the
/// text, without a parser: the text is known to be a job's document, and keys written with escapes are not
/// recognised.
SurplusData FindSurplusData(std::string_view document);

} // namespace Zelnor::Media
