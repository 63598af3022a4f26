#include "Core/Interfaces/CallStack.h"

#include <boost/core/demangle.hpp>

#include <dlfcn.h>
#include <execinfo.h>
#include <link.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string_view>
#include <unordered_map>

namespace Zelnor
{

namespace
{

std::string Hexadecimal(std::uintptr_t number)
{
    std::array<char, 2 * sizeof number> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr;
    return "0x" + std::string(digits.data(), end);
}

/// "function + 0x1f (library)", or as much of that as is known.
std::string Describe(const void* returnAddress)
{
    const auto number = reinterpret_cast<std::uintptr_t>(returnAddress);
    // A call that does not return, such as a throw, may be the last instruction of a function. The address
    // after it then belongs to the next function.
    const void* const call = static_cast<const char*>(returnAddress) - 1;
    Dl_info info{};
    if (dladdr(call, &info) == 0 || info.dli_fname == nullptr)
    {
        return Hexadecimal(number);
    }
    const std::string_view path(info.dli_fname);
    const std::string library(path.substr(path.rfind('/') + 1));
    if (info.dli_sname == nullptr)
    {
        return library + " + " + Hexadecimal(number - reinterpret_cast<std::uintptr_t>(info.dli_fbase));
    }
    return boost::core::demangle(info.dli_sname) + " + " +
           Hexadecimal(number - reinterpret_cast<std::uintptr_t>(info.dli_saddr)) + " (" + library + ")";
}

/// How many libraries have been unloaded since the process started.
unsigned long long CountUnloads()
{
    unsigned long long unloads = 0;
    dl_iterate_phdr(
        [](dl_phdr_info* info, std::size_t, void* result) {
            *static_cast<unsigned long long*>(result) = info->dlpi_subs;
            return 1;
        },
        &unloads);
    return unloads;
}

/// Remembers the names of return addresses. Finding a name takes a hundred times as long as unwinding to it.
/// Names are forgotten when a library is unloaded, since another one may then be loaded at its addresses.
///
/// The lock is never held while the loader's lock is requested: a static initialiser, which runs under the
/// loader's lock, may throw as well.
class Symbols
{
public:
    std::string NamesOf(void* const* addresses, int count)
    {
        const unsigned long long unloads = CountUnloads();
        std::string text;
        for (int i = 0; i < count; ++i)
        {
            if (!AppendKnown(addresses[i], unloads, text))
            {
                const std::string name = Describe(addresses[i]);
                Remember(addresses[i], name, unloads);
                text += name;
            }
            text += '\n';
        }
        return text;
    }

private:
    bool AppendKnown(const void* address, unsigned long long unloads, std::string& text)
    {
        const std::lock_guard lock(m_mutex);
        if (unloads > m_unloads)
        {
            m_names.clear();
            m_unloads = unloads;
        }
        const auto found = m_names.find(address);
        if (found == m_names.end())
        {
            return false;
        }
        text += found->second;
        return true;
    }

    void Remember(const void* address, const std::string& name, unsigned long long unloads)
    {
        const std::lock_guard lock(m_mutex);
        if (unloads == m_unloads)
        {
            m_names.emplace(address, name);
        }
    }

    std::mutex m_mutex;
    std::unordered_map<const void*, std::string> m_names;
    unsigned long long m_unloads = 0;
};

// Not local to a function: it is constructed when this library is loaded, and so outlives the static objects
// of every library that uses it. Their destructors may still throw and catch.
Symbols g_symbols;

} // namespace

std::string GetCallStack()
{
    constexpr std::ptrdiff_t kMostFrames = 63;
    // The number of frames above the caller's varies: a sanitizer adds one of its own.
    constexpr int kRoom = kMostFrames + 4;
    std::array<void*, kRoom> addresses;
    const auto end = addresses.begin() + backtrace(addresses.data(), kRoom);
    const auto caller = std::find(addresses.begin(), end, __builtin_return_address(0));
    const auto begin = caller != end ? caller : addresses.begin();
    return g_symbols.NamesOf(begin, static_cast<int>(std::min(end - begin, kMostFrames)));
}

} // namespace Zelnor
