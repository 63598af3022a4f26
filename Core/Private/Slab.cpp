#include "Core/Private/Slab.h"

#include <algorithm>
#include <new>
#include <utility>

namespace Zelnor::Core
{

void Slab::Free(void* block, Slab* slab) noexcept
{
    if (slab == nullptr)
    {
        ::operator delete(block);
    }
    else
    {
        slab->Release();
    }
}

void Slab::Release() noexcept
{
    if (m_users.fetch_sub(1, std::memory_order_acq_rel) == 1)
    {
        this->~Slab();
        ::operator delete(this);
    }
}

Slabs::~Slabs()
{
    if (m_slab != nullptr)
    {
        m_slab->Release();
    }
}

Slabs::Block Slabs::Get(std::size_t size)
{
    constexpr std::size_t kAlignment = alignof(void*);
    const std::size_t rounded = (size + kAlignment - 1) / kAlignment * kAlignment;
    if (m_slab == nullptr || m_slab->m_left < rounded)
    {
        // What is left of the slab is lost, so that this must be little.
        if (rounded > m_size / 2)
        {
            return {::operator new(size), nullptr};
        }
        Renew();
    }
    m_slab->m_users.fetch_add(1, std::memory_order_relaxed);
    m_slab->m_left -= rounded;
    return {std::exchange(m_slab->m_next, m_slab->m_next + rounded), m_slab};
}

void Slabs::Renew()
{
    constexpr std::size_t kLargest = 32768;
    Slab* const renewed = ::new (::operator new(sizeof(Slab) + m_size)) Slab(m_size);
    if (m_slab != nullptr)
    {
        m_slab->Release();
    }
    m_slab = renewed;
    m_size = std::min(2 * m_size, kLargest);
}

} // namespace Zelnor::Core
