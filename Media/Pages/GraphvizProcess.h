#pragma once

// Private to the library, not installed.

#include <chrono>
#include <optional>
#include <string>

namespace Zelnor::Media
{

/// Runs Graphviz on a graph in its language, within a time.
/// \param name  of the format that the caller was asked for; `format` may be a step on the way to it
/// \throw DrawingException as `DrawWithGraphviz`, and "Graphviz took longer than 30 s"
std::string RunGraphviz(const std::string& dot, const std::string& format, const std::string& name,
                        std::optional<std::chrono::seconds> limit);

} // namespace Zelnor::Media
