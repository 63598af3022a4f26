#pragma once

#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/Export.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace Zelnor::Core
{

/// Lets RapidJSON read from an `IDataInput`: its input-stream concept, with a buffer of fixed size. The input
/// must outlive the stream. Exceptions of the input pass through; one that returns too large a count is
/// refused as by `ReadUpTo`.
///
/// RapidJSON mistakes a NUL byte for the end of the text. After parsing, check that `AtEnd()` is true.
class ZELNOR_API JsonZelnorStreamIn
{
public:
    using Ch = char; ///< a byte of UTF-8

    explicit JsonZelnorStreamIn(IDataInput& input); ///< reads the first bytes at once
    JsonZelnorStreamIn(const JsonZelnorStreamIn&) = delete;
    JsonZelnorStreamIn& operator=(const JsonZelnorStreamIn&) = delete;

    /// The next byte, or NUL at the end.
    Ch Peek() const { return *m_next; }
    Ch Take()
    {
        const Ch taken = *m_next;
        if (m_next != m_end && ++m_next == m_end)
        {
            Fill();
        }
        return taken;
    }
    /// Number of bytes taken so far.
    std::size_t Tell() const { return m_taken + static_cast<std::size_t>(m_next - m_buffer.data()); }
    /// Whether all bytes of the input have been taken.
    bool AtEnd() const { return m_next == m_end; }

    /// Required by the concept; RapidJSON calls them only when it parses in place.
    Ch* PutBegin();
    void Put(Ch);
    void Flush();
    std::size_t PutEnd(Ch*);

private:
    void Fill();

    IDataInput& m_input;
    std::size_t m_taken = 0;
    /// One byte longer than what is read at a time: a NUL follows the last byte read.
    std::array<Ch, 16384 + 1> m_buffer;
    const Ch* m_next;
    const Ch* m_end;
};

/// Lets RapidJSON write to an `IDataOutput`: its output-stream concept, with a buffer of fixed size. The
/// output must outlive the stream. Exceptions of the output pass through. A RapidJSON writer flushes when its
/// document is complete; bytes that are put without a later flush are lost.
class ZELNOR_API JsonZelnorStreamOut
{
public:
    using Ch = char; ///< a byte of UTF-8

    explicit JsonZelnorStreamOut(IDataOutput& output); ///< writes nothing yet
    JsonZelnorStreamOut(const JsonZelnorStreamOut&) = delete;
    JsonZelnorStreamOut& operator=(const JsonZelnorStreamOut&) = delete;
    /// Writes one byte.
    void Put(Ch c)
    {
        if (m_used == m_buffer.size())
        {
            Flush();
        }
        m_buffer[m_used++] = c;
    }
    /// The same for `count` bytes.
    void Put(const Ch* bytes, std::size_t count)
    {
        while (count > m_buffer.size() - m_used)
        {
            const std::size_t fitting = m_buffer.size() - m_used;
            std::copy_n(bytes, fitting, m_buffer.data() + m_used);
            m_used = m_buffer.size();
            Flush();
            bytes += fitting;
            count -= fitting;
        }
        std::copy_n(bytes, count, m_buffer.data() + m_used);
        m_used += count;
    }
    void Flush(); ///< hands all bytes on to the output

    /// Required by the concept; RapidJSON calls them only on input streams.
    Ch Peek() const;
    Ch Take();
    std::size_t Tell() const;
    Ch* PutBegin();
    std::size_t PutEnd(Ch*);

private:
    IDataOutput& m_output;
    std::size_t m_used = 0;
    std::array<Ch, 16384> m_buffer;
};

} // namespace Zelnor::Core
