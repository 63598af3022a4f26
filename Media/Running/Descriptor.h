#pragma once

// Private to the library, not installed.

#include <unistd.h>

#include <utility>

namespace Zelnor::Media
{

/// Owns an open file of this process.
class Descriptor
{
public:
    Descriptor() = default;
    /// \param descriptor  what a call of the system returned; negative when it failed
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor() { Close(); }
    Descriptor(Descriptor&& other) noexcept : m_descriptor(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }

    int Get() const { return m_descriptor; }
    bool IsOpen() const { return m_descriptor >= 0; }
    /// Leaves it to the caller.
    int Release() { return std::exchange(m_descriptor, -1); }
    void Close()
    {
        if (IsOpen())
        {
            ::close(Release());
        }
    }

private:
    int m_descriptor = -1;
};

} // namespace Zelnor::Media
