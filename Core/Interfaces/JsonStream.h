#pragma once

#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/Export.h"

#include <array>
#include <cstddef>

namespace Zelnor::Core
{

/// RapidJSON's input-stream concept over an `IDataInput`, through a buffer of fixed size. The input must
/// outlive the stream. Failures of the input pass through.
///
/// RapidJSON takes a NUL byte for the end of the text: after parsing, ask `AtEnd()` whether it was.
class ZELNOR_API JsonZelnorStreamIn
{
public:
    using Ch = char;

    explicit JsonZelnorStreamIn(IDataInput& input);
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
    /// Whether the input has no byte left.
    bool AtEnd() const { return m_next == m_end; }

    // The concept asks for these; RapidJSON calls them only when it parses in place.
    Ch* PutBegin();
    void Put(Ch);
    void Flush();
    std::size_t PutEnd(Ch*);

private:
    void Fill();

    IDataInput& m_input;
    std::size_t m_taken = 0;
    /// One byte more than is read at a time: a NUL stands behind the last one read.
    std::array<Ch, 16384 + 1> m_buffer;
    const Ch* m_next;
    const Ch* m_end;
};

/// RapidJSON's output-stream concept over an `IDataOutput`, through a buffer of fixed size. The output must
/// outlive the stream. Failures of the output pass through. A RapidJSON writer flushes when its document is
/// complete; bytes put without a flush after them are lost.
class ZELNOR_API JsonZelnorStreamOut
{
public:
    using Ch = char;

    explicit JsonZelnorStreamOut(IDataOutput& output);
    JsonZelnorStreamOut(const JsonZelnorStreamOut&) = delete;
    JsonZelnorStreamOut& operator=(const JsonZelnorStreamOut&) = delete;

    void Put(Ch c)
    {
        if (m_used == m_buffer.size())
        {
            Flush();
        }
        m_buffer[m_used++] = c;
    }
    void Flush();

    // The concept asks for these; RapidJSON calls them only on input streams.
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
