#pragma once

#include <string>

namespace Zelnor::Tool
{

/// What a piece of text is; the colour follows from that.
enum class Style
{
    Plain,
    Heading,
    Id,
    Key,
    Good,
    Bad,
};

/// Colours text for a terminal, or leaves it as it is. Colour is used on a terminal only, and not when
/// NO_COLOR is set to anything or TERM is "dumb" or not set.
class Painter
{
public:
    static Painter ForStandardOutput();
    static Painter ForStandardError();

    std::string operator()(Style style, const std::string& text) const;

private:
    explicit Painter(bool coloured) : m_coloured(coloured) {}

    bool m_coloured;
};

} // namespace Zelnor::Tool
