#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// \file
/// Bitmap subtitles as Blu-ray discs have them. FFmpeg reads them and cannot write them.

namespace Zelnor::Testing
{

namespace details
{

inline std::string BigEndian(std::uint64_t value, int bytes)
{
    std::string text;
    for (int i = bytes - 1; i >= 0; --i)
    {
        text += static_cast<char>(value >> (8 * i) & 0xFFU);
    }
    return text;
}

inline std::string PgsSegment(std::uint64_t time, unsigned int type, const std::string& data)
{
    return "PG" + BigEndian(time, 4) + BigEndian(0, 4) + BigEndian(type, 1) + BigEndian(data.size(), 2) +
           data;
}

} // namespace details

/// The bytes of a file of white boxes, 60x20, at the place (100, 180) of the canvas.
/// \param spans  when each one is shown, in units of 1/90000 s
inline std::string BluRaySubtitles(unsigned int width, unsigned int height,
                                   const std::vector<std::pair<unsigned int, unsigned int>>& spans)
{
    using details::BigEndian;
    using details::PgsSegment;
    constexpr unsigned int kBoxWidth = 60;
    constexpr unsigned int kBoxHeight = 20;
    const std::string window = BigEndian(0x0100, 2) + BigEndian(100, 2) + BigEndian(180, 2) +
                               BigEndian(kBoxWidth, 2) + BigEndian(kBoxHeight, 2);
    const std::string palette = BigEndian(0, 2) + BigEndian(1, 1) + BigEndian(235, 1) + BigEndian(128, 1) +
                                BigEndian(128, 1) + BigEndian(255, 1);
    std::string lines;
    for (unsigned int i = 0; i < kBoxHeight; ++i)
    {
        lines += BigEndian(0, 1) + BigEndian(0x80U | kBoxWidth, 1) + BigEndian(1, 1) + BigEndian(0, 2);
    }
    const std::string bitmap = BigEndian(0, 3) + BigEndian(0xC0, 1) + BigEndian(lines.size() + 4, 3) +
                               BigEndian(kBoxWidth, 2) + BigEndian(kBoxHeight, 2) + lines;
    unsigned int number = 0;
    const auto composition = [&](bool isShown) {
        const std::string object =
            isShown ? BigEndian(0, 4) + BigEndian(100, 2) + BigEndian(180, 2) : std::string();
        return BigEndian(width, 2) + BigEndian(height, 2) + BigEndian(0x10, 1) + BigEndian(number++, 2) +
               BigEndian(isShown ? 0x80 : 0, 1) + BigEndian(0, 2) + BigEndian(isShown ? 1 : 0, 1) + object;
    };
    std::string bytes;
    for (const auto& [begin, end] : spans)
    {
        bytes += PgsSegment(begin, 0x16, composition(true)) + PgsSegment(begin, 0x17, window) +
                 PgsSegment(begin, 0x14, palette) + PgsSegment(begin, 0x15, bitmap) +
                 PgsSegment(begin, 0x80, "");
        bytes += PgsSegment(end, 0x16, composition(false)) + PgsSegment(end, 0x17, window) +
                 PgsSegment(end, 0x80, "");
    }
    return bytes;
}

} // namespace Zelnor::Testing
