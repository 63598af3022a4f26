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
        // An eighth of what there is, so that little is left over.
        constexpr std::size_t kLeast = 4096, kMost = 65536;
        const std::size_t renewed = std::clamp(m_total / 8, kLeast, kMost);
        // What is left of the slab is lost, so that this must be little.
        if (rounded > renewed / 2)
        {
            return {::operator new(size), nullptr};
        }
        Renew(renewed);
    }
    m_slab->m_users.fetch_add(1, std::memory_order_relaxed);
    m_slab->m_left -= rounded;
    return {std::exchange(m_slab->m_next, m_slab->m_next + rounded), m_slab};
}

void Slabs::Renew(std::size_t size)
{
    Slab* const renewed = ::new (::operator new(sizeof(Slab) + size)) Slab(size);
    if (m_slab != nullptr)
    {
        m_slab->Release();
    }
    m_slab = renewed;
    m_total += size;
}

} // namespace Zelnor::Core
