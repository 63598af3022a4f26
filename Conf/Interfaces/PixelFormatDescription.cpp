#include "Conf/Interfaces/PixelFormatDescription.h"

#include "Conf/Private/TextIndex.h"
#include "Core/Interfaces/Exception.h"
#include "Core/Private/Early.h"

#include <array>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace Zelnor
{

namespace
{

constexpr const char* kUnit = "Conf/Interfaces/PixelFormatDescription";

/// The BT.601 components of a colour; only the low byte of each is used.
struct YCbCr
{
    Color y;
    Color cb;
    Color cr;
};

/// In limited range. Negative sums wrap, which does not affect the low bytes.
YCbCr ToLimitedRange(Color r, Color g, Color b)
{
    return {(263 * r + 516 * g + 100 * b + 16896) >> 10, ((450 * b - 152 * r - 298 * g + 511) >> 10) + 128,
            ((450 * r - 377 * g - 73 * b + 511) >> 10) + 128};
}

/// From limited to full range. The constants combine the offset, the rounding and 256 * 1024, which keeps the
/// sums positive and does not affect the low byte.
YCbCr ToFullRange(const YCbCr& limited)
{
    return {(1192 * (limited.y & 0xFF) + 243584) >> 10, (1161 * (limited.cb & 0xFF) + 245120) >> 10,
            (1161 * (limited.cr & 0xFF) + 245120) >> 10};
}

Color Pack(Color byte0, Color byte1, Color byte2, Color byte3)
{
    return (byte0 & 0xFF) | (byte1 & 0xFF) << 8 | (byte2 & 0xFF) << 16 | (byte3 & 0xFF) << 24;
}

/// The size of a chroma plane, rounded up. Uses 64 bits because the smallest 32-bit number cannot be negated.
std::int32_t ChromaSize(std::int32_t size, unsigned char log2Chroma)
{
    return static_cast<std::int32_t>(-(-std::int64_t{size} >> log2Chroma));
}

bool IsChroma(int plane) { return plane == 1 || plane == 2; }

/// The names and the values of the records, in their order.
constexpr std::string_view kNames[] = {
#define ZELNOR_PIXEL_FORMAT(enumerator, value, name, components, log2ChromaW, log2ChromaH, flags,            \
                            colorRange)                                                                      \
    name,
#include "Conf/Interfaces/Vocabulary/PixelFormats.def"
};
constexpr PixFmt kValues[] = {
#define ZELNOR_PIXEL_FORMAT(enumerator, value, name, components, log2ChromaW, log2ChromaH, flags,            \
                            colorRange)                                                                      \
    enumerator,
#include "Conf/Interfaces/Vocabulary/PixelFormats.def"
};

struct Rows
{
    static constexpr std::string_view GetText(std::size_t row) { return kNames[row]; }
};

constexpr Conf::TextIndex<Rows, 128> kRowsByName(std::size(kNames));

/// Values from `PIX_FMT_NONE` to this one have a place in the table below.
constexpr PixFmt kLastValue = PIX_FMT_YUVJ411P;
constexpr std::size_t kFreePlace = std::size(kValues);

/// A value that is less than `PIX_FMT_NONE` is as far beyond the table as one that is too large.
constexpr std::size_t PlaceOf(PixFmt pixFmt)
{
    return static_cast<std::uint32_t>(pixFmt) - static_cast<std::uint32_t>(PIX_FMT_NONE);
}

constexpr auto IndexValues()
{
    std::array<std::uint8_t, PlaceOf(kLastValue) + 1> rows = {};
    for (std::uint8_t& row : rows)
    {
        row = kFreePlace;
    }
    for (std::size_t row = std::size(kValues); row > 0; --row)
    {
        rows[PlaceOf(kValues[row - 1])] = static_cast<std::uint8_t>(row - 1);
    }
    return rows;
}

constexpr auto kRowsByValue = IndexValues();

std::size_t FindRow(PixFmt pixFmt)
{
    const std::size_t place = PlaceOf(pixFmt);
    return place < std::size(kRowsByValue) ? kRowsByValue[place] : kFreePlace;
}

} // namespace

ZELNOR_EARLY const std::vector<PixFmtDescription> PixFmtDescription::s_pixelFormatRecords = RecordsMaker();

std::vector<PixFmtDescription> PixFmtDescription::RecordsMaker()
{
    return {
#define ZELNOR_PIXEL_FORMAT(enumerator, value, name, components, log2ChromaW, log2ChromaH, flags,            \
                            colorRange)                                                                      \
    PixFmtDescription(enumerator, name, components, log2ChromaW, log2ChromaH, flags, colorRange),
#include "Conf/Interfaces/Vocabulary/PixelFormats.def"
    };
}

PixFmtDescription::PixFmtDescription(PixFmt pixFmt_, const char* name_, unsigned char components_,
                                     unsigned char log2ChromaW_, unsigned char log2ChromaH_, int flags_,
                                     PixFmtColorRange colorRange_)
    : pixFmt(pixFmt_), name(name_), components(components_), log2ChromaW(log2ChromaW_),
      log2ChromaH(log2ChromaH_), flags(flags_), colorRange(colorRange_)
{}

// The lines of the throws below are part of the contract with the product's error reports.

// Rows are compared with the number of records: before those are made, there are none.

const PixFmtDescription* PixFmtDescription::Find(PixFmt pixFmt)
{
    const std::size_t row = FindRow(pixFmt);
    if (row >= s_pixelFormatRecords.size())
    {
        ZELNOR_THROW_AT_LINE(kUnit, 60, std::logic_error(""));
    }
    return &s_pixelFormatRecords[row];
}

const PixFmtDescription* PixFmtDescription::Find(const std::string& name)
{
    const std::size_t row = kRowsByName.Find(name);
    if (row >= s_pixelFormatRecords.size())
    {
        ZELNOR_THROW_AT_LINE(kUnit, 68, std::logic_error(""));
    }
    return &s_pixelFormatRecords[row];
}

std::int32_t PixFmtDescription::GetPlanWidth(std::int32_t width, int plane) const
{
    if (plane < 0 || plane >= components)
    {
        ZELNOR_THROW_AT_LINE(kUnit, 75, std::invalid_argument("Unexpected plan"));
    }
    return IsChroma(plane) ? ChromaSize(width, log2ChromaW) : width;
}

std::int32_t PixFmtDescription::GetPlanHeight(std::int32_t height, int plane) const
{
    if (plane < 0 || plane >= components)
    {
        ZELNOR_THROW_AT_LINE(kUnit, 90, std::invalid_argument("Unexpected plan"));
    }
    return IsChroma(plane) ? ChromaSize(height, log2ChromaH) : height;
}

Color PixFmtDescription::MakeColor(Color rgba) const
{
    const Color r = rgba & 0xFF;
    const Color g = rgba >> 8 & 0xFF;
    const Color b = rgba >> 16 & 0xFF;
    const Color a = rgba >> 24;
    const YCbCr limited = ToLimitedRange(r, g, b);
    const auto [y, cb, cr] = colorRange == COLOR_RANGE_FULL ? ToFullRange(limited) : limited;
    switch (pixFmt)
    {
    case PIX_FMT_YUV420P:
    case PIX_FMT_YUV422P:
    case PIX_FMT_YUV444P:
    case PIX_FMT_YUV410P:
    case PIX_FMT_YUV411P:
    case PIX_FMT_YUVJ420P:
    case PIX_FMT_YUVJ422P:
    case PIX_FMT_YUVJ444P:
    case PIX_FMT_YUV440P:
    case PIX_FMT_YUVJ440P:
    case PIX_FMT_YUVA420P:
    case PIX_FMT_YUVA444P:
    case PIX_FMT_YUVA422P:
    case PIX_FMT_YUVJ411P:
        return Pack(y, cb, cr, a);
    case PIX_FMT_NV12:
        return Pack(y, cb, cr, 0);
    case PIX_FMT_NV21:
        return Pack(y, cr, cb, 0);
    case PIX_FMT_GRAY8:
        return Pack(y, 0, 0, 0);
    case PIX_FMT_RGB24:
        return Pack(r, g, b, 0);
    case PIX_FMT_BGR24:
        return Pack(b, g, r, 0);
    case PIX_FMT_ARGB:
    case PIX_FMT_0RGB: // kept: here and below, the alpha byte in the place of the 0
        return Pack(a, r, g, b);
    case PIX_FMT_RGBA:
    case PIX_FMT_RGB0:
        return Pack(r, g, b, a);
    case PIX_FMT_ABGR:
    case PIX_FMT_0BGR:
        return Pack(a, b, g, r);
    case PIX_FMT_BGRA:
    case PIX_FMT_BGR0:
        return Pack(b, g, r, a);
    case PIX_FMT_NONE:
    case PIX_FMT_PAL8:
        break;
    }
    return 0;
}

} // namespace Zelnor
