#pragma once

#include "Core/Interfaces/Export.h"

#include <cstddef>
#include <string_view>

namespace Zelnor::Core
{

/// How many bytes the well-formed UTF-8 character at the beginning of `text` has, 1 to 4; 0 when there is
/// none. Overlong forms, surrogates and what lies beyond U+10FFFF are not well-formed.
ZELNOR_API std::size_t Utf8Length(std::string_view text);

/// The code point of a well-formed character, of which `Utf8Length` says how many bytes it has.
ZELNOR_API char32_t Utf8CodePoint(std::string_view character);

/// Whether a reader does not see the character itself, but what it does to the text around it: controls of a
/// terminal (C0, DEL, C1), line and paragraph separators, controls of the direction of a text, and other
/// invisible characters with which two texts look the same. Whatever is printed for people escapes them. The
/// zero-width joiners are not among them: words of several scripts, and emoji, are spelled with them.
ZELNOR_API bool IsInvisibleControl(char32_t point);

/// Whether `c` is a byte of a UTF-8 character other than its first.
constexpr bool IsUtf8Continuation(char c) { return (static_cast<unsigned char>(c) & 0xC0u) == 0x80u; }

} // namespace Zelnor::Core
