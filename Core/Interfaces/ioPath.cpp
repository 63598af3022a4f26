#include "Core/Interfaces/ioPath.h"

namespace Zelnor
{

// The bytes of a path are its text: Linux has no other form.

ioPath::ioPath(const std::string& utf8) : m_path(utf8) {}

ioPath::ioPath(const char* utf8) : m_path(utf8) {}

ioPath::ioPath(const std::filesystem::path& path) : m_path(path) {}

std::string ioPath::utf8string() const { return m_path.native(); }

} // namespace Zelnor
