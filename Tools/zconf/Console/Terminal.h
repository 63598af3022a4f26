#pragma once

#include <cstddef>
#include <string>

namespace Zelnor::Tool
{

/// The role of a piece of text, which decides its colour.
enum class Style
{
    Plain,
    Heading,
    Id,
    Key,
    Good,
    Bad,
};

/// Colours text for a terminal, or leaves it as it is.
class Painter
{
public:
    explicit Painter(bool coloured) : m_coloured(coloured) {}
    /// These colour text if the stream is a terminal, NO_COLOR is empty or unset, and TERM is set but not
    /// "dumb".
    static Painter ForStandardOutput();
    static Painter ForStandardError();

    std::string operator()(Style style, const std::string& text) const;

private:
    bool m_coloured;
};

/// The width of the terminal that standard error is, at this moment; 80 when it does not tell.
std::size_t TerminalColumns();

} // namespace Zelnor::Tool
