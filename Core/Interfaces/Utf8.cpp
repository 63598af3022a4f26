#include "Core/Interfaces/Utf8.h"

namespace Zelnor::Core
{

std::size_t Utf8Length(std::string_view text)
{
    const auto byte = [text](std::size_t i) -> unsigned {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
    };
    const auto continues = [text](std::size_t i) { return i < text.size() && IsUtf8Continuation(text[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80)
    {
        return text.empty() ? 0 : 1;
    }
    if (lead >= 0xC2 && lead <= 0xDF)
    {
        return continues(1) ? 2 : 0;
    }
    if (lead >= 0xE0 && lead <= 0xEF)
    {
        const bool overlong = lead == 0xE0 && byte(1) < 0xA0;
        const bool surrogate = lead == 0xED && byte(1) > 0x9F;
        return continues(1) && continues(2) && !overlong && !surrogate ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4)
    {
        const bool overlong = lead == 0xF0 && byte(1) < 0x90;
        const bool beyond = lead == 0xF4 && byte(1) > 0x8F;
        return continues(1) && continues(2) && continues(3) && !overlong && !beyond ? 4 : 0;
    }
    return 0;
}

} // namespace Zelnor::Core
