#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <string>

// Our own maps are not searched: what is found without that is compared with what the maps hold. A copy of a
// map is searched.

namespace Zelnor::Conf
{
namespace
{

const MapCodecs* const kMaps[] = {&mapVideoCodecs, &mapAudioCodecs, &mapSubtitleCodecs, &mapUnknownCodecs,
                                  &mapCodecs};

/// All texts of the vocabulary's codecs, also those that FFmpeg has no ID for.
std::set<std::string> AllTexts()
{
    return {
#define ZELNOR_SELF(name) #name,
#define ZELNOR_CODEC(name) #name,
#define ZELNOR_CODEC_AS(name, enumerator) #name,
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
#define ZELNOR_SELF(name) #name,
#define ZELNOR_CODEC(name) #name,
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
#define ZELNOR_CODEC(name) #name,
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
#define ZELNOR_SELF(name) #name,
#define ZELNOR_CODEC(name) #name,
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
    };
}

/// Those, and what differs from one of them in a byte: shorter, longer, another one anywhere.
std::set<std::string> TextsAndNearMisses()
{
    std::set<std::string> texts = AllTexts();
    for (const std::string& text : AllTexts())
    {
        texts.insert(text.substr(1));
        texts.insert(text.substr(0, text.size() - 1));
        texts.insert(text + '\0');
        texts.insert(text + "_");
        std::string other = text;
        const std::size_t position = texts.size() % text.size();
        other[position] = static_cast<char>(other[position] ^ 0x20);
        texts.insert(other);
    }
    texts.insert(
        {"", "C", "CODEC_I", "CODEC_ID", "CODEC_ID_", std::string(7, '\0'), std::string(100'000, 'C')});
    return texts;
}

/// How the library looks in a map of somebody else's.
std::optional<AVCodecID> Walk(const std::string& text, const MapCodecs& map)
{
    const auto found =
        std::find_if(map.begin(), map.end(), [&](const auto& entry) { return entry.second == text; });
    return found == map.end() ? std::nullopt : std::optional(found->first);
}

std::optional<AVCodecID> Ask(const std::string& text, const MapCodecs& map)
{
    try
    {
        return AVCodecIDFromTextID(text, map);
    }
    catch (const FormatException&)
    {
        return std::nullopt;
    }
}

const std::string* Ask(AVCodecID id, const MapCodecs& map)
{
    try
    {
        return &AVCodecIDToTextID(id, map);
    }
    catch (const FormatException&)
    {
        return nullptr;
    }
}

/// Each ID of ours with its neighbours. No others than the enumeration can hold: as many bits as its largest
/// enumerator has.
std::set<int> IdsAndNeighbours()
{
    // Some generations of FFmpeg make identifiers of four letters.
    long long end = 1;
    while (end <= static_cast<long long>(mapCodecs.rbegin()->first))
    {
        end *= 2;
    }
    std::set<int> ids = {0, 1024, 1025, static_cast<int>(end - 1)};
    for (const auto& entry : mapCodecs)
    {
        const int id = static_cast<int>(entry.first);
        for (const int other : {id - 1, id, id + 1, id ^ 0x10000, id ^ 0x400})
        {
            if (other >= 0 && other < end)
            {
                ids.insert(other);
            }
        }
    }
    return ids;
}

TEST(CodecLookup, FindsInEachOfOurMapsWhatAWalkFinds)
{
    for (const std::string& text : TextsAndNearMisses())
    {
        for (const MapCodecs* const map : kMaps)
        {
            EXPECT_EQ(Ask(text, *map), Walk(text, *map)) << text << " in map " << (map - kMaps[0]);
        }
    }
}

TEST(CodecLookup, GivesTheStringsOfTheMapThatIsAsked)
{
    for (const int number : IdsAndNeighbours())
    {
        const auto id = static_cast<AVCodecID>(number);
        for (const MapCodecs* const map : kMaps)
        {
            const auto found = map->find(id);
            EXPECT_EQ(Ask(id, *map), found == map->end() ? nullptr : &found->second) << number;
        }
    }
}

TEST(CodecLookup, LooksIntoACopyOfOneOfOurMaps)
{
    MapCodecs copy = mapCodecs;
    EXPECT_EQ(&AVCodecIDToTextID(AV_CODEC_ID_H264, copy), &copy.at(AV_CODEC_ID_H264));
    copy.at(AV_CODEC_ID_H264) = "mine";
    EXPECT_EQ(AVCodecIDToTextID(AV_CODEC_ID_H264, copy), "mine");
    EXPECT_EQ(AVCodecIDFromTextID("mine", copy), AV_CODEC_ID_H264);
    EXPECT_EQ(Ask("CODEC_ID_H264", copy), std::nullopt);
    copy.erase(AV_CODEC_ID_H264);
    EXPECT_EQ(Ask(AV_CODEC_ID_H264, copy), nullptr);
    EXPECT_EQ(CodecIDToTextID(AV_CODEC_ID_H264), "CODEC_ID_H264");
}

TEST(CodecLookup, KnowsTheKindsOfTextsAndOfNearMisses)
{
    const std::set<std::string> texts = AllTexts();
    for (const std::string& text : TextsAndNearMisses())
    {
        if (texts.count(text) == 0)
        {
            EXPECT_EQ(GetCodecMediaType(text), std::nullopt) << text;
        }
    }
}

TEST(CodecLookup, AsksForABitrateForTheRowsOfTheAudioTableOnly)
{
    for (const std::string& text : TextsAndNearMisses())
    {
        const bool isRow = std::any_of(std::begin(audioCodecs), std::end(audioCodecs),
                                       [&](const auto& row) { return row.second == text; });
        const bool needsNone =
            std::find(std::begin(PCMCodecs), std::end(PCMCodecs), text) != std::end(PCMCodecs) ||
            text == IFormatCodecAudio::CODEC_ID_FLAC || text == IFormatCodecAudio::CODEC_ID_ALAC;
        if (needsNone)
        {
            EXPECT_FALSE(IsAudioBitrateRequired(text)) << text;
        }
        else if (isRow)
        {
            EXPECT_TRUE(IsAudioBitrateRequired(text)) << text;
        }
        else
        {
            EXPECT_THROW(IsAudioBitrateRequired(text), FormatException) << text;
        }
    }
}

} // namespace
} // namespace Zelnor::Conf
