#include "Core/Interfaces/ioPath.h"

namespace Zelnor
{

ioPath::ioPath(const std::string& utf8) : m_path(std::filesystem::u8path(utf8)) {}

ioPath::ioPath(const char* utf8) : m_path(std::filesystem::u8path(utf8)) {}

ioPath::ioPath(const std::filesystem::path& path) : m_path(path) {}

std::string ioPath::utf8string() const { return m_path.u8string(); }

} // namespace Zelnor
