#pragma once

#include "Core/Interfaces/Export.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Zelnor
{

/// Pixel formats. The values are stored in records. They are not those of current FFmpeg headers: translate
/// by name.
enum PixFmt : std::int32_t
{
// PIX_FMT_NONE = -1, PIX_FMT_YUV420P = 0, PIX_FMT_RGB24 = 2, PIX_FMT_0RGB = 295, ...
#define ZELNOR_PIXEL_FORMAT(enumerator, value, name, components, log2ChromaW, log2ChromaH, flags,            \
                            colorRange)                                                                      \
    enumerator = (value),
#include "Conf/Interfaces/Vocabulary/PixelFormats.def"
};

/// What kind of pixel format it is, as bits of `PixFmtDescription::flags`.
enum PixFmtFlags : std::int32_t
{
    PIX_FMT_FLAG_YUV = 2,     ///< luma and chroma
    PIX_FMT_FLAG_RGB = 4,     ///< red, green and blue
    PIX_FMT_FLAG_ALPHA = 8,   ///< with an alpha component
    PIX_FMT_FLAG_PLANAR = 16, ///< components in planes of their own, or chroma alone in one
};

/// A colour in four bytes: red in the lowest, then green, blue, and alpha in the highest.
using Color = std::uint32_t;

/// Describes a pixel format: its name, components and planes.
struct ZELNOR_API PixFmtDescription
{
    enum PixFmtColorRange : std::int32_t
    {
        COLOR_RANGE_UNSPECIFIED = 0,
        COLOR_RANGE_LIMITED = 1, ///< luma 16 to 235, chroma 16 to 240
        COLOR_RANGE_FULL = 2,    ///< 0 to 255
    };                           ///< Which values the components have.
    /// Makes a row of the table.
    PixFmtDescription(PixFmt pixFmt, const char* name, unsigned char components, unsigned char log2ChromaW,
                      unsigned char log2ChromaH, int flags, PixFmtColorRange colorRange);

    PixFmt pixFmt;               ///< its value; not that of FFmpeg
    std::string name;            ///< as persisted: "YUV420P"
    unsigned char components;    ///< number of components, and of planes that have a size
    unsigned char log2ChromaW;   ///< a chroma plane has 1/2^this of the width
    unsigned char log2ChromaH;   ///< a chroma plane has 1/2^this of the height
    int flags;                   ///< of `PixFmtFlags`
    PixFmtColorRange colorRange; ///< the range that its name implies

    /// The description of a format.
    ///
    /// \throw std::logic_error when there is none; its message is only the call stack
    static const PixFmtDescription* Find(PixFmt pixFmt);
    /// The same by name; names are case-sensitive.
    static const PixFmtDescription* Find(const std::string& name);

    /// The width of a plane of a frame with that width. Planes 1 and 2 are chroma; their size is rounded up.
    /// Planes 0 (luma or packed pixels) and 3 (alpha) have the full size. \throw std::invalid_argument
    /// "Unexpected plan" for a plane that is not in 0 to `components` - 1
    std::int32_t GetPlanWidth(std::int32_t width, int plane) const;
    /// The same for the height.
    std::int32_t GetPlanHeight(std::int32_t height, int plane) const;

    /// A pixel of this format with the colour `rgba`, for filling areas. Starting with the lowest, its bytes
    /// are those of the pixel, or one for each plane of a planar format. YUV is converted according to
    /// BT.601. 0 for formats whose pixels do not hold a colour. Formats with a 0 in their name get the alpha
    /// value there.
    Color MakeColor(Color rgba) const;

    /// All descriptions, in the order in which `Find` searches them.
    static const std::vector<PixFmtDescription> s_pixelFormatRecords;

private:
    static std::vector<PixFmtDescription> RecordsMaker();
};

} // namespace Zelnor
