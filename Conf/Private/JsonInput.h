#pragma once

// Private to the library, not installed: lets RapidJSON read a document from an input at its full speed.

#include "Core/Interfaces/DataStream.h"

#include <rapidjson/reader.h>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <memory>
#include <utility>

namespace Zelnor::Conf
{

/// The bytes of an input: all of them if they are few, else piece by piece, so that a document needs no
/// memory of its size. A NUL follows what was read last.
class JsonInput
{
public:
    /// Reads ahead. A failure of the input is kept until the document needs what comes there, since it may
    /// have ended before, or be wrong.
    explicit JsonInput(Core::IDataInput& input) : m_input(input)
    {
        try
        {
            while (!m_isWhole && m_size < kMost)
            {
                Read();
            }
        }
        catch (...)
        {
            m_failure = std::current_exception();
        }
        m_bytes[m_size] = '\0';
    }
    JsonInput(const JsonInput&) = delete;
    JsonInput& operator=(const JsonInput&) = delete;

    /// Whether all is here.
    bool IsWhole() const { return m_isWhole; }
    char* Begin() { return m_bytes.get(); }
    const char* End() const { return m_bytes.get() + m_size; }

    /// Replaces what is here by the next piece, if there is one.
    void Next()
    {
        if (m_failure != nullptr)
        {
            std::rethrow_exception(m_failure);
        }
        m_size = 0;
        if (!m_isWhole)
        {
            Read();
        }
        m_bytes[m_size] = '\0';
    }

private:
    /// Of a read.
    static constexpr std::size_t kPiece = 16384;
    /// Of what is kept at a time.
    static constexpr std::size_t kMost = 64 * kPiece;

    void Read()
    {
        if (m_capacity - m_size < kPiece)
        {
            std::unique_ptr<char[]> larger(new char[2 * m_capacity + 1]);
            std::copy_n(m_bytes.get(), m_size, larger.get());
            m_bytes = std::move(larger);
            m_capacity *= 2;
        }
        const std::size_t count = Core::ReadUpTo(m_input, m_bytes.get() + m_size, kPiece);
        m_size += count;
        m_isWhole = count == 0;
    }

    Core::IDataInput& m_input;
    /// Without the NUL.
    std::size_t m_capacity = kPiece;
    std::unique_ptr<char[]> m_bytes{new char[kPiece + 1]};
    std::size_t m_size = 0;
    bool m_isWhole = false;
    std::exception_ptr m_failure;
};

/// RapidJSON's input-stream concept over the pieces. Unlike `Core::JsonZelnorStreamIn` it may be copied, so
/// that RapidJSON's loops work with a copy in registers, and looks for the end only where there is a NUL.
class JsonCursor
{
public:
    using Ch = char;

    explicit JsonCursor(JsonInput& input) : m_input(&input), m_next(input.Begin()), m_end(input.End()) {}

    /// The next byte, or NUL at the end.
    Ch Peek()
    {
        if (*m_next == '\0')
        {
            Fill();
        }
        return *m_next;
    }
    Ch Take()
    {
        const Ch taken = Peek();
        if (taken != '\0' || m_next != m_end)
        {
            ++m_next;
        }
        return taken;
    }
    /// Where an error is does not matter.
    std::size_t Tell() const { return 0; }
    /// Whether all bytes of the input have been taken.
    bool AtEnd()
    {
        Fill();
        return m_next == m_end;
    }

    // Required by the concept; RapidJSON calls them only when it parses in place.
    Ch* PutBegin() { return nullptr; }
    void Put(Ch) {}
    void Flush() {}
    std::size_t PutEnd(Ch*) { return 0; }

private:
    void Fill()
    {
        if (m_next == m_end)
        {
            m_input->Next();
            m_next = m_input->Begin();
            m_end = m_input->End();
        }
    }

    JsonInput* m_input;
    const Ch* m_next;
    const Ch* m_end;
};

} // namespace Zelnor::Conf

namespace rapidjson
{

template <>
struct StreamTraits<Zelnor::Conf::JsonCursor>
{
    enum
    {
        copyOptimization = 1
    };
};

} // namespace rapidjson
