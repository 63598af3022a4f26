#include "Media/Running/Files.h"

#include <sys/stat.h>

#include <filesystem>
#include <system_error>

namespace Zelnor::Media
{

std::string FileIdentity(const std::string& name)
{
    struct stat status = {};
    if (::stat(name.c_str(), &status) == 0)
    {
        // No path is like that.
        return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
    }
    std::error_code error;
    const auto path = std::filesystem::weakly_canonical(std::filesystem::absolute(name, error), error);
    return error ? name : path.string();
}

bool IsSameFile(const std::string& one, const std::string& other)
{
    return FileIdentity(one) == FileIdentity(other);
}

} // namespace Zelnor::Media
