#include "Conf/Interfaces/PixelFormatDescription.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/Tsv.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

extern "C" {
#include <libavutil/common.h>
#include <libavutil/pixdesc.h>
}

namespace Zelnor
{
namespace
{

using Testing::ExpectThrow;
using Testing::ReadTsv;
using Testing::Thrown;

using Row = std::vector<std::string>;

static_assert(std::is_same_v<std::underlying_type_t<PixFmt>, std::int32_t>);
static_assert(std::is_same_v<std::underlying_type_t<PixFmtDescription::PixFmtColorRange>, std::int32_t>);
static_assert(std::is_same_v<Color, std::uint32_t>);
static_assert(PIX_FMT_NONE == -1 && PIX_FMT_YUV420P == 0 && PIX_FMT_NV12 == 25 && PIX_FMT_0RGB == 295 &&
              PIX_FMT_YUVJ411P == 320);
static_assert(!std::is_default_constructible_v<PixFmtDescription>);
static_assert(PIX_FMT_FLAG_YUV == 2 && PIX_FMT_FLAG_RGB == 4 && PIX_FMT_FLAG_ALPHA == 8 &&
              PIX_FMT_FLAG_PLANAR == 16);
static_assert(std::is_same_v<std::underlying_type_t<PixFmtFlags>, std::int32_t>);

const PixFmtDescription& Get(const std::string& name) { return *PixFmtDescription::Find(name); }

TEST(PixFmtDescription, TheTableIsTheListedOne)
{
    std::vector<Row> rows;
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        rows.push_back({std::to_string(record.pixFmt), record.name, std::to_string(record.components),
                        std::to_string(record.log2ChromaW), std::to_string(record.log2ChromaH),
                        std::to_string(record.flags), std::to_string(record.colorRange)});
    }
    EXPECT_EQ(rows, ReadTsv("Tests/Conf/Data/pixelFormats.tsv"));
}

TEST(PixFmtDescription, EveryEnumeratorIsNamedAfterItsRecord)
{
#define ZELNOR_PIXEL_FORMAT(enumerator, value, text, components, log2ChromaW, log2ChromaH, flags,            \
                            colorRange)                                                                      \
    EXPECT_EQ(#enumerator, "PIX_FMT_" + PixFmtDescription::Find(enumerator)->name);
#include "Conf/Interfaces/Vocabulary/PixelFormats.def"
}

/// How a walk through the records would find it.
template <class Matches>
const PixFmtDescription* Walk(Matches&& matches)
{
    const auto& records = PixFmtDescription::s_pixelFormatRecords;
    const auto found = std::find_if(records.begin(), records.end(), matches);
    return found == records.end() ? nullptr : &*found;
}

template <class Key>
const PixFmtDescription* Ask(const Key& key)
{
    try
    {
        return PixFmtDescription::Find(key);
    }
    catch (const std::logic_error&)
    {
        return nullptr;
    }
}

TEST(PixFmtDescription, EveryValueFindsWhatAWalkFinds)
{
    std::vector<int> values = {std::numeric_limits<int>::min(), std::numeric_limits<int>::min() + 1,
                               std::numeric_limits<int>::max() - 1, std::numeric_limits<int>::max()};
    for (int value = -300; value < 700; ++value)
    {
        values.push_back(value);
    }
    for (const int value : values)
    {
        const auto pixFmt = static_cast<PixFmt>(value);
        EXPECT_EQ(Ask(pixFmt), Walk([&](const auto& record) { return record.pixFmt == pixFmt; })) << value;
    }
}

TEST(PixFmtDescription, NamesAndNearMissesFindWhatAWalkFinds)
{
    std::vector<std::string> names = {"", "Y", std::string(100'000, 'Y'), std::string(7, '\0'),
                                      "PIX_FMT_YUV420P"};
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        names.push_back(record.name);
        names.push_back(record.name.substr(1));
        names.push_back(record.name.substr(0, record.name.size() - 1));
        names.push_back(record.name + '\0');
        for (std::size_t i = 0; i < record.name.size(); ++i)
        {
            std::string other = record.name;
            other[i] = static_cast<char>(other[i] ^ 0x20);
            names.push_back(other);
        }
    }
    for (const std::string& name : names)
    {
        EXPECT_EQ(Ask(name), Walk([&](const auto& record) { return record.name == name; })) << name;
    }
}

TEST(PixFmtDescription, ValueAndNameFindTheRecordItself)
{
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        EXPECT_EQ(PixFmtDescription::Find(record.pixFmt), &record);
        EXPECT_EQ(PixFmtDescription::Find(record.name), &record);
    }
}

TEST(PixFmtDescription, NoFormatIsARecordAndNoMiss)
{
    EXPECT_EQ(PixFmtDescription::Find(static_cast<PixFmt>(-1))->name, "NONE");
    EXPECT_EQ(Get("NV12").pixFmt, 25);
}

void ExpectMiss(const Thrown& thrown, int line, const std::string& parameter)
{
    ASSERT_FALSE(thrown.what.empty());
    EXPECT_EQ(thrown.what.front(), '\n') << "nothing but the call stack";
    EXPECT_GT(thrown.what.size(), 1u);
    EXPECT_EQ(thrown.file, "Conf/Interfaces/PixelFormatDescription");
    EXPECT_EQ(thrown.line, line);
    EXPECT_NE(thrown.function.value_or("").find("Zelnor::PixFmtDescription::Find(" + parameter),
              std::string::npos)
        << thrown.function.value_or("");
}

TEST(PixFmtDescription, AValueWithoutARecordIsALogicError)
{
    for (const int value : {1, -2, 321, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()})
    {
        ExpectMiss(
            ExpectThrow<std::logic_error>([value] { PixFmtDescription::Find(static_cast<PixFmt>(value)); }),
            60, "Zelnor::PixFmt)");
    }
}

TEST(PixFmtDescription, NamesAreComparedByteForByte)
{
    for (const std::string name : {"nv12", "NV1", "NV12 ", "", "PIX_FMT_NV12"})
    {
        ExpectMiss(ExpectThrow<std::logic_error>([&name] { PixFmtDescription::Find(name); }), 68,
                   "const std::string");
    }
}

TEST(PixFmtDescription, ARecordHoldsWhatItWasMadeOf)
{
    const PixFmtDescription record(PIX_FMT_PAL8, "own", 9, 8, 7, 6, PixFmtDescription::COLOR_RANGE_FULL);
    EXPECT_EQ(record.pixFmt, PIX_FMT_PAL8);
    EXPECT_EQ(record.name, "own");
    EXPECT_EQ(record.components, 9);
    EXPECT_EQ(record.log2ChromaW, 8);
    EXPECT_EQ(record.log2ChromaH, 7);
    EXPECT_EQ(record.flags, 6);
    EXPECT_EQ(record.colorRange, 2);
}

TEST(PixFmtDescription, ChromaPlanesAreSubsampledAndRoundedUp)
{
    EXPECT_EQ(Get("YUV420P").GetPlanWidth(641, 1), 321);
    EXPECT_EQ(Get("YUV410P").GetPlanHeight(10, 2), 3);
    EXPECT_EQ(Get("YUV420P").GetPlanHeight(1081, 1), 541);
}

TEST(PixFmtDescription, PlanesOfPackedFormatsHaveTheFullSize)
{
    EXPECT_EQ(Get("RGB24").GetPlanWidth(641, 2), 641);
    EXPECT_EQ(Get("RGB24").GetPlanHeight(481, 2), 481);
}

TEST(PixFmtDescription, TheAlphaPlaneHasTheFullSize)
{
    EXPECT_EQ(Get("YUVA420P").GetPlanWidth(1920, 3), 1920);
    EXPECT_EQ(Get("YUVA420P").GetPlanHeight(1081, 3), 1081);
}

TEST(PixFmtDescription, ASemiPlanarFormatHasAPlaneForEachComponent)
{
    EXPECT_EQ(Get("NV12").GetPlanWidth(1920, 2), 960);
    EXPECT_EQ(Get("NV12").GetPlanHeight(1080, 2), 540);
}

TEST(PixFmtDescription, APlaneThatIsNotThereIsRefused)
{
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        for (const int plane : {-1, int{record.components}, std::numeric_limits<int>::min()})
        {
            const Thrown width = ExpectThrow<std::invalid_argument>([&] { record.GetPlanWidth(16, plane); });
            EXPECT_EQ(width.what.rfind("Unexpected plan\n", 0), 0u);
            EXPECT_EQ(width.line, 75);
            EXPECT_NE(width.function.value_or("").find("GetPlanWidth("), std::string::npos);
            const Thrown height =
                ExpectThrow<std::invalid_argument>([&] { record.GetPlanHeight(16, plane); });
            EXPECT_EQ(height.what.rfind("Unexpected plan\n", 0), 0u);
            EXPECT_EQ(height.line, 90);
            EXPECT_NE(height.function.value_or("").find("GetPlanHeight("), std::string::npos);
            EXPECT_EQ(height.file, "Conf/Interfaces/PixelFormatDescription");
        }
    }
}

void ExpectFFmpegsPlaneSizes(std::int64_t size)
{
    const auto ours = static_cast<std::int32_t>(size);
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        for (int plane = 0; plane < record.components; ++plane)
        {
            const bool chroma = plane == 1 || plane == 2;
            const int log2W = chroma ? record.log2ChromaW : 0;
            const int log2H = chroma ? record.log2ChromaH : 0;
            ASSERT_EQ(record.GetPlanWidth(ours, plane), AV_CEIL_RSHIFT(size, log2W))
                << record.name << " " << size;
            ASSERT_EQ(record.GetPlanHeight(ours, plane), AV_CEIL_RSHIFT(size, log2H))
                << record.name << " " << size;
        }
    }
}

TEST(PixFmtDescription, PlaneSizesAreFFmpegsAtTheEndsOfTheRange)
{
    using Limits = std::numeric_limits<std::int32_t>;
    for (std::int64_t i = 0; i < 20; ++i)
    {
        ExpectFFmpegsPlaneSizes(i);
        ExpectFFmpegsPlaneSizes(-i);
        ExpectFFmpegsPlaneSizes(Limits::max() - i);
        ExpectFFmpegsPlaneSizes(Limits::min() + i);
    }
}

RC_GTEST_PROP(PixFmtDescription, PlaneSizesAreFFmpegs, ())
{
    ExpectFFmpegsPlaneSizes(*rc::gen::arbitrary<std::int32_t>());
}

/// The pixel of a format by the letters of its name, with the formulas worked out in exact arithmetic.
class ReferencePacker
{
public:
    explicit ReferencePacker(const PixFmtDescription& record)
        : m_full(record.colorRange == PixFmtDescription::COLOR_RANGE_FULL), m_letters(GetLetters(record.name))
    {}

    Color operator()(Color rgba) const
    {
        Color pixel = 0;
        for (int byte = 3; byte >= 0; --byte)
        {
            const int value = GetValue(m_letters[static_cast<std::size_t>(byte)], rgba);
            pixel = pixel * 256 + static_cast<Color>((value % 256 + 256) % 256);
        }
        return pixel;
    }

private:
    int GetValue(char letter, Color rgba) const
    {
        const int r = static_cast<int>(rgba % 256);
        const int g = static_cast<int>(rgba / 256 % 256);
        const int b = static_cast<int>(rgba / 65536 % 256);
        switch (letter)
        {
        case 'R':
            return r;
        case 'G':
            return g;
        case 'B':
            return b;
        case 'A':
            return static_cast<int>(rgba / 16777216);
        case 'Y':
            return ToRange(1192, 16, Floor(263 * r + 516 * g + 100 * b + 16896));
        case 'U':
            return ToRange(1161, 128, Floor(-152 * r - 298 * g + 450 * b + 511) + 128);
        case 'V':
            return ToRange(1161, 128, Floor(450 * r - 377 * g - 73 * b + 511) + 128);
        default:
            return 0;
        }
    }

    /// Full range is stretched about black (16) or no colour (128), and rounded.
    int ToRange(int factor, int centre, int value) const
    {
        const int offset = centre == 16 ? 0 : centre;
        return m_full ? Floor(factor * (value - centre) + 512) + offset : value;
    }

    static int Floor(int value) { return static_cast<int>(std::floor(value / 1024.0)); }

    static std::string GetLetters(const std::string& name)
    {
        const auto startsWith = [&name](const char* prefix) { return name.rfind(prefix, 0) == 0; };
        if (name == "NONE" || name == "PAL8")
        {
            return "0000";
        }
        if (startsWith("NV"))
        {
            return name == "NV12" ? "YUV0" : "YVU0";
        }
        if (startsWith("YUV") || name == "GRAY8")
        {
            return startsWith("YUV") ? "YUVA" : "Y000";
        }
        if (name.substr(3) == "24")
        {
            return name.substr(0, 3) + '0';
        }
        std::string letters = name;
        std::replace(letters.begin(), letters.end(), '0', 'A'); // kept: the alpha byte in the place of the 0
        return letters;
    }

    bool m_full;
    std::string m_letters;
};

TEST(PixFmtDescription, AMillionColoursArePackedAsTheReferenceDoes)
{
    std::mt19937 random(20131);
    std::vector<Color> colours(1000000);
    std::generate(colours.begin(), colours.end(), [&random] { return static_cast<Color>(random()); });
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        const ReferencePacker reference(record);
        for (const Color colour : colours)
        {
            ASSERT_EQ(record.MakeColor(colour), reference(colour)) << record.name << " " << colour;
        }
    }
}

TEST(PixFmtDescription, TheCornersOfTheColourCubeArePackedAsTheReferenceDoes)
{
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        const ReferencePacker reference(record);
        for (unsigned corner = 0; corner < 16; ++corner)
        {
            Color colour = 0;
            for (unsigned byte = 0; byte < 4; ++byte)
            {
                colour |= (corner >> byte & 1) * (0xFFu << 8 * byte);
            }
            EXPECT_EQ(record.MakeColor(colour), reference(colour)) << record.name << " " << colour;
        }
    }
}

TEST(PixFmtDescription, WhiteAndBlackAreThatOfTheRange)
{
    EXPECT_EQ(Get("YUV420P").MakeColor(0xFFFFFFFF), 0xFF8080EBu);
    EXPECT_EQ(Get("YUVJ420P").MakeColor(0xFFFFFFFF), 0xFF8080FFu);
    EXPECT_EQ(Get("YUV420P").MakeColor(0xFF000000), 0xFF808010u);
    EXPECT_EQ(Get("YUVJ420P").MakeColor(0xFF000000), 0xFF808000u);
}

TEST(PixFmtDescription, RedIsPackedInTheOrderOfTheLetters)
{
    EXPECT_EQ(Get("RGBA").MakeColor(0xFF0000FF), 0xFF0000FFu);
    EXPECT_EQ(Get("BGRA").MakeColor(0xFF0000FF), 0xFFFF0000u);
    EXPECT_EQ(Get("ARGB").MakeColor(0xFF0000FF), 0x0000FFFFu);
    EXPECT_EQ(Get("ABGR").MakeColor(0xFF0000FF), 0xFF0000FFu);
    EXPECT_EQ(Get("RGB24").MakeColor(0xFF0000FF), 0x000000FFu);
    EXPECT_EQ(Get("BGR24").MakeColor(0xFF0000FF), 0x00FF0000u);
}

TEST(PixFmtDescription, FormatsWithAZeroInTheirNamesKeepTheAlphaByte)
{
    for (const char* const pair : {"0RGB", "RGB0", "0BGR", "BGR0"})
    {
        std::string alpha = pair;
        std::replace(alpha.begin(), alpha.end(), '0', 'A');
        EXPECT_EQ(Get(pair).MakeColor(0x7A123456), Get(alpha).MakeColor(0x7A123456)) << pair;
    }
}

TEST(PixFmtDescription, GrayIsFullRangeLumaAlone)
{
    EXPECT_EQ(Get("GRAY8").MakeColor(0xFFFFFFFF), 255u);
    EXPECT_EQ(Get("GRAY8").MakeColor(0xFF000000), 0u);
}

TEST(PixFmtDescription, FormatsWithoutPixelsOfTheirOwnColourGiveZero)
{
    EXPECT_EQ(Get("PAL8").MakeColor(0xFFFFFFFF), 0u);
    EXPECT_EQ(Get("NONE").MakeColor(0xFFFFFFFF), 0u);
    const PixFmtDescription unknown(static_cast<PixFmt>(1), "", 4, 0, 0, 0,
                                    PixFmtDescription::COLOR_RANGE_FULL);
    EXPECT_EQ(unknown.MakeColor(0xFFFFFFFF), 0u);
}

std::string ToLower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// Our flags as FFmpeg's description gives them.
int GetFlags(const AVPixFmtDescriptor& theirs)
{
    const bool rgb = (theirs.flags & AV_PIX_FMT_FLAG_RGB) != 0;
    const bool gray = theirs.nb_components < 3;
    return (rgb || gray ? 0 : PIX_FMT_FLAG_YUV) | (rgb ? PIX_FMT_FLAG_RGB : 0) |
           ((theirs.flags & AV_PIX_FMT_FLAG_ALPHA) != 0 ? PIX_FMT_FLAG_ALPHA : 0) |
           ((theirs.flags & AV_PIX_FMT_FLAG_PLANAR) != 0 ? PIX_FMT_FLAG_PLANAR : 0);
}

TEST(PixFmtDescription, FFmpegSaysTheSameOfEveryFormat)
{
    int known = 0;
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        const AVPixelFormat format = av_get_pix_fmt(ToLower(record.name).c_str());
        if (format == AV_PIX_FMT_NONE)
        {
            EXPECT_EQ(record.name, "NONE");
            continue;
        }
        ++known;
        const AVPixFmtDescriptor& theirs = *av_pix_fmt_desc_get(format);
        EXPECT_EQ(record.components, theirs.nb_components) << record.name;
        EXPECT_EQ(record.log2ChromaW, theirs.log2_chroma_w) << record.name;
        EXPECT_EQ(record.log2ChromaH, theirs.log2_chroma_h) << record.name;
        // FFmpeg counts the alpha in the palette; kept: here PAL8 has no flags at all.
        EXPECT_EQ(record.flags, record.name == "PAL8" ? 0 : GetFlags(theirs)) << record.name;
    }
    EXPECT_EQ(known, 28);
}

// The reason why formats pass between the two by name only.
TEST(PixFmtDescription, SomeNumbersAreNotFFmpegs)
{
    EXPECT_EQ(static_cast<int>(PIX_FMT_YUV420P), static_cast<int>(AV_PIX_FMT_YUV420P));
    EXPECT_NE(static_cast<int>(PIX_FMT_NV12), static_cast<int>(AV_PIX_FMT_NV12));
    EXPECT_NE(static_cast<int>(PIX_FMT_0RGB), static_cast<int>(AV_PIX_FMT_0RGB));
}

} // namespace
} // namespace Zelnor
