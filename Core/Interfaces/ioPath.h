#pragma once

#include "Core/Interfaces/Export.h"

#include <filesystem>
#include <string>

namespace Zelnor
{

/// A path in the file system. The product's records hold it as UTF-8, whatever the system's own form is.
class ZELNOR_API ioPath
{
public:
    /// From UTF-8 text. On systems whose paths are bytes, bytes that are not UTF-8 are kept as they are.
    ioPath(const std::string& utf8);
    ioPath(const char* utf8);
    ioPath(const std::filesystem::path& path);

    std::string utf8string() const;                                ///< as records hold it
    const std::filesystem::path& native() const { return m_path; } ///< as the system takes it

private:
    std::filesystem::path m_path;
};

} // namespace Zelnor
