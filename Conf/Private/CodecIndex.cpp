#include "Conf/Private/CodecIndex.h"

#include "Conf/Private/TextIndex.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace Zelnor::Conf
{

namespace
{

enum Family : std::uint8_t
{
    VIDEO,
    AUDIO,
    SUBTITLE,
    UNKNOWN,
    NONE, ///< CODEC_ID_NONE, the last row of each table but the subtitles'
};

/// The maps have the numbers of their families, and this is all of them together.
constexpr std::size_t kAllCodecs = 4;
constexpr std::size_t kOwnMaps = 5;

struct Row
{
    std::string_view text;
    AVCodecID id = AV_CODEC_ID_NONE;
    Family family = NONE;
    bool hasId = false;
    /// The maps that it is an entry of, as bits.
    std::uint8_t maps = 0;
};

// ZELNOR_INDEX_ROW(has, ...) is a row with the identifier when `has` expands to 1, and without when to 0.
#define ZELNOR_INDEX_ROW(has, name, family, id) ZELNOR_INDEX_ROW_IF(has, name, family, id)
#define ZELNOR_INDEX_ROW_IF(has, name, family, id) ZELNOR_INDEX_ROW_##has(name, family, id)
#define ZELNOR_INDEX_ROW_1(name, family, id) {name, id, family, true},
#define ZELNOR_INDEX_ROW_0(name, family, id) {name, AV_CODEC_ID_NONE, family},

// clang-format off
constexpr Row kListedRows[] = {
#define ZELNOR_SELF(name) {#name, AV_CODEC_ID_NONE, VIDEO},
#define ZELNOR_CODEC(name) ZELNOR_INDEX_ROW(ZELNOR_HAS_AV_##name, #name, VIDEO, AV_##name)
#define ZELNOR_CODEC_AS(name, enumerator) ZELNOR_INDEX_ROW(ZELNOR_HAS_##enumerator, #name, VIDEO, enumerator)
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
#define ZELNOR_SELF(name) {#name, AV_CODEC_ID_NONE, AUDIO},
#define ZELNOR_CODEC(name) ZELNOR_INDEX_ROW(ZELNOR_HAS_AV_##name, #name, AUDIO, AV_##name)
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
#define ZELNOR_CODEC(name) ZELNOR_INDEX_ROW(ZELNOR_HAS_AV_##name, #name, SUBTITLE, AV_##name)
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
#define ZELNOR_CODEC(name) ZELNOR_INDEX_ROW(ZELNOR_HAS_AV_##name, #name, UNKNOWN, AV_##name)
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
    {"CODEC_ID_NONE", AV_CODEC_ID_NONE, NONE, true},
};
// clang-format on

constexpr std::size_t kRowCount = std::size(kListedRows);

constexpr bool AreAllCodecs()
{
    constexpr std::string_view kPrefix = "CODEC_ID_";
    for (const Row& row : kListedRows)
    {
        if (row.text.substr(0, kPrefix.size()) != kPrefix)
        {
            return false;
        }
    }
    return true;
}
static_assert(AreAllCodecs(), "what is not a codec is a text in the lists");

/// The maps whose tables have the row, as bits.
constexpr unsigned GetTables(const Row& row)
{
    if (!row.hasId)
    {
        return 0;
    }
    return 1U << kAllCodecs |
           (row.family == NONE ? 1U << VIDEO | 1U << AUDIO | 1U << UNKNOWN : 1U << row.family);
}

/// If several rows of a map have the same codec ID, the first is its entry.
constexpr std::array<Row, kRowCount> FindEntries()
{
    std::array<Row, kRowCount> rows = {};
    for (std::size_t row = 0; row < kRowCount; ++row)
    {
        unsigned maps = GetTables(kListedRows[row]);
        for (std::size_t before = 0; before < row; ++before)
        {
            if (kListedRows[before].id == kListedRows[row].id)
            {
                maps &= ~GetTables(kListedRows[before]);
            }
        }
        rows[row] = kListedRows[row];
        rows[row].maps = static_cast<std::uint8_t>(maps);
    }
    return rows;
}

constexpr std::array<Row, kRowCount> kRows = FindEntries();

struct Rows
{
    static constexpr std::string_view GetText(std::size_t row) { return kRows[row].text; }
};

/// Enough, so that most are in the slot that is looked into first.
constexpr std::size_t kSlots = 1024;
static_assert(kRowCount * 2 <= kSlots);

constexpr TextIndex<Rows, kSlots> kTexts(kRowCount);

// FFmpeg numbers the codecs of a family one after another, and families begin at round numbers. So the IDs
// are cut into pages, and each page has a place for every ID from its first to the last that is used: no
// search, no guess of a branch.

constexpr std::uint32_t kPageBits = 11;
constexpr std::uint32_t kPageSize = 1U << kPageBits;
/// Old FFmpegs have a few IDs that are made of four letters. Those are looked for in the map.
constexpr std::uint32_t kMostPages = 128;

struct Page
{
    /// In `g_texts`.
    std::uint16_t begin = 0;
    std::uint16_t count = 0;
};

constexpr std::uint32_t PageOf(AVCodecID id) { return static_cast<std::uint32_t>(id) >> kPageBits; }
constexpr std::uint32_t PlaceInPage(AVCodecID id) { return static_cast<std::uint32_t>(id) % kPageSize; }
constexpr bool HasPlace(const Row& row)
{
    return (row.maps >> kAllCodecs & 1U) != 0 && PageOf(row.id) < kMostPages;
}

constexpr std::size_t CountPages()
{
    std::size_t count = 0;
    for (const Row& row : kRows)
    {
        count = HasPlace(row) ? std::max<std::size_t>(count, PageOf(row.id) + 1) : count;
    }
    return count;
}

constexpr std::array<Page, CountPages()> MakePages()
{
    std::array<Page, CountPages()> pages = {};
    for (const Row& row : kRows)
    {
        if (HasPlace(row))
        {
            Page& page = pages[PageOf(row.id)];
            page.count = std::max(page.count, static_cast<std::uint16_t>(PlaceInPage(row.id) + 1));
        }
    }
    std::uint16_t begin = 0;
    for (Page& page : pages)
    {
        page.begin = begin;
        begin = static_cast<std::uint16_t>(begin + page.count);
    }
    return pages;
}

constexpr std::array<Page, CountPages()> kPages = MakePages();
constexpr std::size_t kPlaceCount = kPages.back().begin + std::size_t{kPages.back().count};
static_assert(kPlaceCount < 8192, "the pages are of another size than the families");

/// The texts of the entries of `mapCodecs`; null where there is no entry, and before they are remembered.
std::array<const std::string*, kPlaceCount> g_texts;

/// The number of one of our own maps, and `kOwnMaps` for any other.
std::size_t NumberOf(const MapCodecs& map)
{
    if (&map == &mapCodecs)
    {
        return kAllCodecs;
    }
    const MapCodecs* const families[] = {&mapVideoCodecs, &mapAudioCodecs, &mapSubtitleCodecs,
                                         &mapUnknownCodecs};
    const auto found = std::find(std::begin(families), std::end(families), &map);
    return found == std::end(families) ? kOwnMaps : static_cast<std::size_t>(found - families);
}

} // namespace

CodecFacts GetCodecFacts(const std::string& textId)
{
    constexpr std::optional<MediaType> kKinds[] = {MEDIA_TYPE_VIDEO, MEDIA_TYPE_AUDIO, MEDIA_TYPE_SUBTITLE,
                                                   std::nullopt, std::nullopt};
    const std::size_t row = kTexts.Find(textId);
    return row >= kRowCount
               ? CodecFacts()
               : CodecFacts{kKinds[kRows[row].family], (GetTables(kRows[row]) >> AUDIO & 1U) != 0};
}

std::optional<AVCodecID> FindCodecID(const std::string& textId, const MapCodecs& map)
{
    const std::size_t number = NumberOf(map);
    if (number == kOwnMaps)
    {
        const auto found =
            std::find_if(map.begin(), map.end(), [&](const auto& entry) { return entry.second == textId; });
        return found == map.end() ? std::nullopt : std::optional(found->first);
    }
    const std::size_t row = kTexts.Find(textId);
    return row < kRowCount && (kRows[row].maps >> number & 1U) != 0 ? std::optional(kRows[row].id)
                                                                    : std::nullopt;
}

// Beside its table: a call more would be a fifth of what it takes.
const std::string& CodecIDToTextID(AVCodecID id)
{
    const std::uint32_t page = PageOf(id);
    if (page < kPages.size() && PlaceInPage(id) < kPages[page].count)
    {
        const std::string* const text = g_texts[kPages[page].begin + PlaceInPage(id)];
        if (text != nullptr)
        {
            return *text;
        }
    }
    return AVCodecIDToTextID(id, mapCodecs);
}

void RememberCodecTexts()
{
    for (const auto& [id, text] : mapCodecs)
    {
        if (PageOf(id) < kMostPages)
        {
            g_texts[kPages[PageOf(id)].begin + PlaceInPage(id)] = &text;
        }
    }
}

} // namespace Zelnor::Conf
