#pragma once

#include "Core/Interfaces/Export.h"

#include <cstddef>
#include <string_view>

namespace Zelnor::Core
{

/// How many bytes the well-formed UTF-8 character at the beginning of `text` has, 1 to 4; 0 when there is
/// none. Overlong forms, surrogates and what lies beyond U+10FFFF are not well-formed.
ZELNOR_API std::size_t Utf8Length(std::string_view text);

/// Whether `c` is a byte of a UTF-8 character other than its first.
constexpr bool IsUtf8Continuation(char c) { return (static_cast<unsigned char>(c) & 0xC0u) == 0x80u; }

} // namespace Zelnor::Core
