#pragma once

// Private to the libraries, not installed: a document that is being read.

#include "Core/Interfaces/DataStream.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <memory>
#include <utility>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace Zelnor::Core
{

/// The bytes of an input and how far they have been read: all of them if they are few, else piece by piece,
/// so that a document needs no memory of its size. `kPadding` bytes of 0 follow what is here, so that the end
/// need not be looked for, and so that short texts may be copied by a fixed number of bytes.
class JsonCursor
{
public:
    static constexpr std::size_t kPadding = 16;

    /// Reads ahead. A failure of the input is kept until the document needs what comes there, since it may
    /// have ended before, or be wrong.
    /// \param piece  what is asked of the input at a time
    /// \param most  how much is read ahead
    explicit JsonCursor(IDataInput& input, std::size_t piece = 16384, std::size_t most = 1 << 20)
        : m_input(input), m_piece(piece), m_capacity(piece), m_bytes(new char[piece + kPadding])
    {
        ReadUntil(most);
        m_isWhole = m_hasEnded;
        next = Begin();
    }
    JsonCursor(const JsonCursor&) = delete;
    JsonCursor& operator=(const JsonCursor&) = delete;

    /// Whether all was here from the beginning on, so that nothing moves.
    bool IsWhole() const { return m_isWhole; }
    /// The end of what is here.
    char* End() const { return Begin() + m_size; }
    /// Whether all that is here has been read.
    bool IsAtEnd() const { return next == End(); }

    /// Forgets what has been read, moves the rest to the beginning and reads on.
    /// \returns false, and nothing has moved, at the end of the input
    /// \throw what the input has thrown
    bool More()
    {
        if (m_failure != nullptr)
        {
            std::rethrow_exception(m_failure);
        }
        if (m_hasEnded)
        {
            return false;
        }
        const auto kept = static_cast<std::size_t>(End() - next);
        std::copy(next, End(), Begin());
        m_size = kept;
        // As much again, so that a long value is moved and looked through a few times only.
        ReadUntil(kept + std::max(kept, m_piece));
        next = Begin();
        return true;
    }

    /// \returns the byte that comes then; 0 at the end
    char SkipBlanks()
    {
        // Documents that programs have written have few.
        return static_cast<unsigned char>(*next) > ' ' ? *next : SkipSomeBlanks();
    }

    /// The first quote, backslash or control character. There is one, behind the end at the latest.
    static char* FindSpecial(char* at)
    {
#ifdef __SSE2__
        static_assert(kPadding >= sizeof(__m128i));
        for (;; at += sizeof(__m128i))
        {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
            const __m128i isControl = _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(' ' - 1)), bytes);
            const __m128i isMark = _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('"')),
                                                _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\')));
            if (const int found = _mm_movemask_epi8(_mm_or_si128(isControl, isMark)); found != 0)
            {
                return at + __builtin_ctz(static_cast<unsigned>(found));
            }
        }
#else
        while (static_cast<unsigned char>(*at) >= ' ' && *at != '"' && *at != '\\')
        {
            ++at;
        }
        return at;
#endif
    }

    /// What comes next.
    char* next = nullptr;

private:
    char* Begin() const { return m_bytes.get(); }

    [[gnu::noinline]] char SkipSomeBlanks()
    {
        for (;;)
        {
            while (*next == ' ' || *next == '\n' || *next == '\r' || *next == '\t')
            {
                ++next;
            }
            if (*next != '\0' || !IsAtEnd() || !More())
            {
                return *next;
            }
        }
    }

    /// Until so much is here, or the input has ended or failed.
    void ReadUntil(std::size_t size)
    {
        try
        {
            while (!m_hasEnded && m_size < size)
            {
                Read();
            }
        }
        catch (...)
        {
            m_failure = std::current_exception();
        }
        std::fill_n(End(), kPadding, '\0');
    }

    void Read()
    {
        if (m_size == m_capacity)
        {
            // From little to much at once, so that little is copied.
            const std::size_t capacity = (m_capacity < 8 * m_piece ? 8 : 2) * m_capacity;
            std::unique_ptr<char[]> larger(new char[capacity + kPadding]);
            std::copy(Begin(), End(), larger.get());
            m_bytes = std::move(larger);
            m_capacity = capacity;
        }
        const std::size_t count = ReadUpTo(m_input, End(), std::min(m_piece, m_capacity - m_size));
        m_size += count;
        m_hasEnded = count == 0;
    }

    IDataInput& m_input;
    std::size_t m_piece;
    /// Without the padding.
    std::size_t m_capacity;
    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size = 0;
    bool m_hasEnded = false;
    bool m_isWhole = false;
    std::exception_ptr m_failure;
};

} // namespace Zelnor::Core
