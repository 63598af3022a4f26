#pragma once

#include <string>

namespace Zelnor::Tool
{

/// One line on standard error that changes while work goes on, where that is a terminal; nothing elsewhere.
class StatusLine
{
public:
    StatusLine();
    /// Removes the line.
    ~StatusLine();
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;

    bool IsTerminal() const { return m_isTerminal; }
    /// \param text  printable; what does not fit is cut
    void Show(const std::string& text);
    /// Removes the line, so that something else can be written.
    void Clear();

private:
    bool m_isTerminal;
    bool m_isShown = false;
};

} // namespace Zelnor::Tool
