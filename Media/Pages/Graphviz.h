#pragma once

#include "Media/MediaException.h"

#include "Core/Interfaces/Export.h"

#include <string>

/// \file
/// Drawing by Graphviz, whose program `dot` is found through PATH and run without a shell.

namespace Zelnor::Media
{

/// A drawing cannot be made: Graphviz is missing or fails.
class ZELNOR_API DrawingException : public virtual MediaException
{
public:
    ~DrawingException() noexcept override;
};

/// Draws a graph in Graphviz's language, as `ITranscodingMetaGraph::SaveInToDot` writes one.
/// \param format  of the drawing, by Graphviz's name: "svg", "png", "pdf"
/// \throw DrawingException "Drawing as svg needs Graphviz, whose program 'dot' is not in PATH; the format dot
///        does not need it", "Graphviz failed with exit code 1: ..."
ZELNOR_API std::string DrawWithGraphviz(const std::string& dot, const std::string& format);

} // namespace Zelnor::Media
