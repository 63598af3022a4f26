#pragma once

// Private to the library, not installed.

#include <string>

namespace Zelnor::Media
{

/// While it lives, FFmpeg's messages in its thread belong to it. Scopes nest: a stream that is probed may
/// itself probe another file.
class MessageScope
{
public:
    MessageScope();
    ~MessageScope();
    MessageScope(const MessageScope&) = delete;
    MessageScope& operator=(const MessageScope&) = delete;

    void Keep(std::string message) { m_last = std::move(message); }
    /// FFmpeg's last error; empty when there was none, or when nobody passes its messages on.
    const std::string& Last() const { return m_last; }

    /// The innermost one of this thread; null when there is none.
    static MessageScope* Current();

private:
    MessageScope* m_outer;
    std::string m_last;
};

} // namespace Zelnor::Media
