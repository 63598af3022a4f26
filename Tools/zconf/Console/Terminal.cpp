#include "Tools/zconf/Console/Terminal.h"

#include "Tools/zconf/Console/StandardStreams.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace Zelnor::Tool
{

namespace
{

std::string_view Variable(const char* name)
{
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

bool ColourIsWanted(int descriptor)
{
    return ::isatty(descriptor) != 0 && Variable("NO_COLOR").empty() && !Variable("TERM").empty() &&
           Variable("TERM") != "dumb";
}

const char* SequenceOf(Style style)
{
    switch (style)
    {
    case Style::Plain:
        break;
    case Style::Heading:
        return "\x1b[1m";
    case Style::Id:
        return "\x1b[1;33m";
    case Style::Key:
        return "\x1b[36m";
    case Style::Good:
        return "\x1b[32m";
    case Style::Bad:
        return "\x1b[1;31m";
    }
    return "";
}

} // namespace

std::size_t TerminalColumns()
{
    constexpr std::size_t kUsual = 80;
    struct winsize size = {};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 ? size.ws_col : kUsual;
}

Painter Painter::ForStandardOutput()
{
    return Painter(!IsStandardOutputReplaced() && ColourIsWanted(STDOUT_FILENO));
}

Painter Painter::ForStandardError() { return Painter(ColourIsWanted(STDERR_FILENO)); }

std::string Painter::operator()(Style style, const std::string& text) const
{
    return !m_coloured || style == Style::Plain ? text : SequenceOf(style) + text + "\x1b[0m";
}

} // namespace Zelnor::Tool
