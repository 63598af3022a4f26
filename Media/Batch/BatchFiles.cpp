#include "Media/Batch/BatchFiles.h"

#include "Media/AmountText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

[[noreturn]] void ThrowTooLarge(const std::string& name, std::size_t most)
{
    auto exception =
        MakeError<JobException>("Cannot read '" + name + "': it is larger than " + SizeText(most));
    exception << MediaException::TagFile(name);
    ZELNOR_THROW("Media/Batch/BatchFiles", exception);
}

} // namespace

std::optional<std::string> ReadFileIn(const Descriptor& folder, const std::string& file,
                                      const std::string& name, std::size_t most)
{
    const Descriptor opened(
        ::openat(folder.Get(), file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!opened.IsOpen() && errno == ENOENT)
    {
        return std::nullopt;
    }
    struct stat status = {};
    if (!opened.IsOpen() || ::fstat(opened.Get(), &status) != 0)
    {
        ThrowSystem<JobException>("open", name, errno);
    }
    if (!S_ISREG(status.st_mode))
    {
        ThrowSystem<JobException>("open", name, EINVAL);
    }
    if (static_cast<std::uintmax_t>(status.st_size) > most)
    {
        ThrowTooLarge(name, most);
    }
    std::string text;
    constexpr std::size_t kBlock = 65536;
    std::array<char, kBlock> block;
    for (;;)
    {
        const ssize_t count = ::read(opened.Get(), block.data(), block.size());
        if (count == 0)
        {
            return text;
        }
        if (count < 0 && errno != EINTR)
        {
            ThrowSystem<JobException>("read", name, errno);
        }
        text.append(block.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
        // It may grow meanwhile.
        if (text.size() > most)
        {
            ThrowTooLarge(name, most);
        }
    }
}

void WriteFileIn(const Descriptor& folder, const std::string& file, const std::string& name,
                 const std::string& text)
{
    const std::string temporary = "." + file + ".new";
    constexpr mode_t kMode = 0666;
    // What a killed run has left.
    ::unlinkat(folder.Get(), temporary.c_str(), 0);
    const Descriptor opened(::openat(folder.Get(), temporary.c_str(),
                                     O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kMode));
    bool isWritten = opened.IsOpen();
    for (std::string_view left = text; isWritten && !left.empty();)
    {
        const ssize_t count = ::write(opened.Get(), left.data(), left.size());
        isWritten = count >= 0 || errno == EINTR;
        left.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    if (!isWritten || ::fdatasync(opened.Get()) != 0 ||
        ::renameat(folder.Get(), temporary.c_str(), folder.Get(), file.c_str()) != 0)
    {
        const int reason = errno;
        ::unlinkat(folder.Get(), temporary.c_str(), 0);
        ThrowSystem<RunException>("write", name, reason);
    }
}

} // namespace Zelnor::Media
