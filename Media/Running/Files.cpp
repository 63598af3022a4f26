#include "Media/Running/Files.h"

#include <filesystem>
#include <system_error>

namespace Zelnor::Media
{

bool IsSameFile(const std::string& one, const std::string& other)
{
    std::error_code error;
    if (std::filesystem::equivalent(one, other, error))
    {
        return true;
    }
    const auto resolved = [](const std::string& name) {
        std::error_code failure;
        const auto path =
            std::filesystem::weakly_canonical(std::filesystem::absolute(name, failure), failure);
        return failure ? std::filesystem::path(name) : path;
    };
    return resolved(one) == resolved(other);
}

} // namespace Zelnor::Media
