#pragma once

// Private to the library, not installed: memory for the groups of a document.

#include "Core/Interfaces/Export.h"

#include <atomic>
#include <cstddef>

namespace Zelnor::Core
{

/// A piece of memory from which several blocks are taken, one behind the other. It is freed with the last of
/// them, on whichever thread that is.
class ZELNOR_LOCAL Slab
{
public:
    /// Gives back a block. \param slab  that it was taken from; null if it has memory of its own
    static void Free(void* block, Slab* slab) noexcept;

    Slab(const Slab&) = delete;
    Slab& operator=(const Slab&) = delete;

private:
    friend class Slabs;

    explicit Slab(std::size_t size) noexcept : m_left(size) {}
    ~Slab() = default;

    void Release() noexcept;

    /// Blocks, and the one who takes more.
    std::atomic<std::size_t> m_users{1};
    /// Bytes behind `m_next`, where the next block begins.
    std::size_t m_left;
    std::byte* m_next = reinterpret_cast<std::byte*>(this + 1);
};

/// Takes blocks that are likely to be freed together, as those of the groups of a document are. Getting and
/// freeing each of them by itself would take a tenth of the time of a load.
class ZELNOR_LOCAL Slabs
{
public:
    struct Block
    {
        void* memory;
        Slab* slab;
    };

    Slabs() = default;
    ~Slabs();
    Slabs(const Slabs&) = delete;
    Slabs& operator=(const Slabs&) = delete;

    /// Aligned as pointers are. Large blocks have memory of their own. \throw std::bad_alloc
    Block Get(std::size_t size);

private:
    void Renew(std::size_t size);

    Slab* m_slab = nullptr;
    /// Bytes of all slabs.
    std::size_t m_total = 0;
};

} // namespace Zelnor::Core
