#pragma once

#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/RefCountImpl.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace Zelnor::Testing
{

inline constexpr const char* kTestStreamsUnit = "Tests/Support/TestStreams";

/// Counts for a stream that lives on the stack of a test; it is never deleted through a pointer.
template <class Stream>
class OnStack : public Stream
{
public:
    ~OnStack() override = default;
    int AddRef() const override { return m_references.AddRefImpl(); }
    int GetRefCount() const override { return m_references.GetRefCountImpl(); }
    int Release() const override { return m_references.ReleaseImpl(); }

private:
    RefCountImpl m_references;
};

inline Core::CoreException StreamFailure()
{
    Core::CoreException exception;
    exception << TagDescription("test stream: no more");
    return exception;
}

/// Gives `bytes` out in pieces of at most `piece`, and throws from the call number `failAt` on.
class TestInput final : public OnStack<Core::IDataInput>
{
public:
    explicit TestInput(std::string bytes, std::size_t piece = std::string::npos,
                       std::size_t failAt = std::string::npos)
        : m_bytes(std::move(bytes)), m_piece(piece), m_failAt(failAt)
    {}

    std::size_t Read(void* buffer, std::size_t size) override
    {
        if (++m_calls >= m_failAt)
        {
            ZELNOR_THROW(kTestStreamsUnit, StreamFailure());
        }
        const std::size_t count = std::min({size, m_piece, m_bytes.size() - m_position});
        std::copy_n(m_bytes.data() + m_position, count, static_cast<char*>(buffer));
        m_position += count;
        return count;
    }

    std::size_t GetCalls() const { return m_calls; }

private:
    std::string m_bytes;
    std::size_t m_piece;
    std::size_t m_failAt;
    std::size_t m_position = 0;
    std::size_t m_calls = 0;
};

/// Fills every buffer with `letter`, and claims from the call number `lieAt` on to have read `beyond` bytes
/// more than that.
class LyingInput final : public OnStack<Core::IDataInput>
{
public:
    explicit LyingInput(char letter, std::size_t beyond = 1, std::size_t lieAt = 1)
        : m_letter(letter), m_beyond(beyond), m_lieAt(lieAt)
    {}

    std::size_t Read(void* buffer, std::size_t size) override
    {
        std::fill_n(static_cast<char*>(buffer), size, m_letter);
        return ++m_calls >= m_lieAt ? size + m_beyond : size;
    }

private:
    char m_letter;
    std::size_t m_beyond;
    std::size_t m_lieAt;
    std::size_t m_calls = 0;
};

/// Collects bytes and throws from the call number `failAt` on.
class TestOutput final : public OnStack<Core::IDataOutput>
{
public:
    explicit TestOutput(std::size_t failAt = std::string::npos) : m_failAt(failAt) {}

    void Write(const void* data, std::size_t size) override
    {
        if (++m_calls >= m_failAt)
        {
            ZELNOR_THROW(kTestStreamsUnit, StreamFailure());
        }
        m_bytes.append(static_cast<const char*>(data), size);
    }

    std::size_t GetCalls() const { return m_calls; }
    const std::string& GetBytes() const { return m_bytes; }

private:
    std::size_t m_failAt;
    std::size_t m_calls = 0;
    std::string m_bytes;
};

} // namespace Zelnor::Testing
