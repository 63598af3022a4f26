#include "Tools/zconf/Console/StatusLine.h"

#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/Terminal.h"

#include <unistd.h>

#include <utility>

namespace Zelnor::Tool
{

namespace
{

constexpr const char* kRemoveLine = "\r\x1b[K";

} // namespace

StatusLine::StatusLine() : m_isTerminal(::isatty(STDERR_FILENO) != 0) {}

StatusLine::~StatusLine() { Clear(); }

void StatusLine::Show(const std::string& text)
{
    if (m_isTerminal)
    {
        m_isShown = true;
        // The last column is left free: some terminals break the line there.
        WriteMessage(kRemoveLine + text.substr(0, TerminalColumns() - 1));
    }
}

void StatusLine::Clear()
{
    if (std::exchange(m_isShown, false))
    {
        WriteMessage(kRemoveLine);
    }
}

} // namespace Zelnor::Tool
