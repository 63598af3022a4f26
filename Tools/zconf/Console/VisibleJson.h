#pragma once

#include "Core/Interfaces/Utf8.h"

#include <rapidjson/encodings.h>

#include <string>
#include <string_view>

namespace Zelnor::Tool
{

/// A character as JSON escapes it: "\u202E", and "\uDB40\uDC01" beyond 16 bits.
std::string JsonEscape(char32_t point);

/// A JSON document that means the same and in which all invisible controls (`Core::IsInvisibleControl`) of
/// its texts are escaped: JSON does not ask for those beyond ASCII, but a terminal obeys them. What is not
/// UTF-8 stays as it is.
std::string VisibleJson(std::string_view json);

/// The same for RapidJSON's writers, as the encoding that they write.
struct VisibleUtf8 : rapidjson::UTF8<>
{
    template <class Stream>
    static void Encode(Stream& out, unsigned point)
    {
        constexpr unsigned kDelete = 0x7F;
        if (point < kDelete || !Core::IsInvisibleControl(point))
        {
            rapidjson::UTF8<>::Encode(out, point);
            return;
        }
        for (const char c : JsonEscape(point))
        {
            out.Put(c);
        }
    }
    template <class Stream>
    static void EncodeUnsafe(Stream& out, unsigned point)
    {
        Encode(out, point);
    }
};

} // namespace Zelnor::Tool
