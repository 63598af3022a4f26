#pragma once

// Private to the library, not installed: files of a batch, each read and written as a whole, in folders that
// are open. A link in the place of a file is refused.

#include "Media/MediaException.h"
#include "Media/Running/Descriptor.h"

#include <cerrno>
#include <cstddef>
#include <new>
#include <optional>
#include <string>
#include <system_error>

namespace Zelnor::Media
{

/// \throw an E: "Cannot open 'films/jobs': No such file or directory"; std::bad_alloc when that is the reason
/// \param reason  an error number of the system
template <class E>
[[noreturn]] void ThrowSystem(const char* action, const std::string& name, int reason)
{
    if (reason == ENOMEM)
    {
        throw std::bad_alloc();
    }
    auto exception = MakeError<E>(std::string("Cannot ") + action + " '" + name +
                                  "': " + std::generic_category().message(reason));
    exception << MediaException::TagFile(name);
    ZELNOR_THROW("Media/Batch/BatchFiles", exception);
}

/// The most that documents and results of a batch may hold, in bytes. No batch that was made here comes near
/// them.
inline constexpr std::size_t kMostOfDocument = 1'000'000'000;
inline constexpr std::size_t kMostOfResult = 16'000'000;

/// Nothing when there is no such file.
/// \param name  what messages call it
/// \param most  bytes that the file may hold
/// \throw JobException "Cannot read 'films/batch.json': it is larger than 1.0 GB"
std::optional<std::string> ReadFileIn(const Descriptor& folder, const std::string& file,
                                      const std::string& name, std::size_t most = kMostOfDocument);

/// Replaces the file as a whole. One process at a time may do so.
/// \throw RunException
void WriteFileIn(const Descriptor& folder, const std::string& file, const std::string& name,
                 const std::string& text);

} // namespace Zelnor::Media
