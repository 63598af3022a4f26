#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <rapidjson/fwd.h>

namespace Zelnor::Core
{

/// An allocator for RapidJSON, which writes to whatever its allocators return, null included: here, running
/// out of memory is `std::bad_alloc`. Give it to documents, readers and writers:
///
///     JsonDocument document;
///     document.ParseStream<rapidjson::kParseIterativeFlag>(stream);
///     PropertySerializer::Load(record, document);
///
///     rapidjson::Writer<JsonZelnorStreamOut, rapidjson::UTF8<>, rapidjson::UTF8<>, JsonMemory>
///     writer(stream);
class JsonMemory
{
public:
    static constexpr bool kNeedFree = true; ///< RapidJSON frees what it does not need
    /// What RapidJSON asks of an allocator.
    void* Malloc(std::size_t size) { return Realloc(nullptr, 0, size); }
    void* Realloc(void* memory, std::size_t, std::size_t size)
    {
        if (size == 0)
        {
            Free(memory);
            return nullptr;
        }
        void* const resized = std::realloc(memory, size);
        if (resized == nullptr)
        {
            throw std::bad_alloc();
        }
        return resized;
    }
    static void Free(void* memory) noexcept { std::free(memory); }
};
/// What RapidJSON makes with it.
using JsonDocument =
    rapidjson::GenericDocument<rapidjson::UTF8<char>, rapidjson::MemoryPoolAllocator<JsonMemory>, JsonMemory>;
using JsonValue = rapidjson::GenericValue<rapidjson::UTF8<char>, rapidjson::MemoryPoolAllocator<JsonMemory>>;

} // namespace Zelnor::Core
