#include "Tools/zconf/Commands/Catalogue.h"

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/PixelFormatDescription.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Tool;
using testing::ElementsAre;
using testing::IsEmpty;
using Strings = std::vector<std::string>;

TEST(Catalogue, HoldsEachCodecOnceWithItsKind)
{
    std::set<std::string> ids;
    for (const CodecEntry& codec : AllCodecs())
    {
        EXPECT_TRUE(ids.insert(codec.id).second) << codec.id;
        EXPECT_THAT(codec.kind, testing::AnyOf("video", "audio", "subtitle", "other"));
    }
    EXPECT_EQ(CodecNames().size(), AllCodecs().size());
}

TEST(Catalogue, HoldsEveryCodecOfTheRegistry)
{
    for (const auto& [id, text] : Conf::GetFFCodecsMap())
    {
        ASSERT_NE(FindCodec(text), nullptr) << text;
        EXPECT_EQ(FindCodec(text)->id, text);
        EXPECT_NE(FindCodec(text)->ffmpegName, "") << text;
    }
}

TEST(FindCodec, IgnoresCaseAndPrefix)
{
    for (const char* const name : {"CODEC_ID_H264", "h264", "H264", "av_codec_id_h264"})
    {
        ASSERT_NE(FindCodec(name), nullptr) << name;
        EXPECT_EQ(FindCodec(name)->id, "CODEC_ID_H264");
        EXPECT_EQ(FindCodec(name)->kind, "video");
    }
}

TEST(FindCodec, KnowsWhichCodecsFFmpegNamesOtherwiseOrNotAtAll)
{
    EXPECT_EQ(FindCodec("h265")->ffmpegName, "AV_CODEC_ID_HEVC");
    EXPECT_EQ(FindCodec("jpeg")->ffmpegName, "");
    EXPECT_EQ(FindCodec("none")->ffmpegName, "AV_CODEC_ID_NONE");
}

TEST(FindCodec, IsNullForAnythingElse)
{
    for (const char* const name : {"", "h26", "CODEC_ID_", "ENCODER_NVENC_H264", "matroska"})
    {
        EXPECT_EQ(FindCodec(name), nullptr) << name;
    }
}

TEST(ContainerNames, HoldsEveryListOnce)
{
    const Strings names = ContainerNames();
    const std::set<std::string> unique(names.begin(), names.end());
    EXPECT_EQ(unique.size(), names.size());
    for (const auto* const list :
         {&Conf::GetFormatList(), &Conf::GetImageContainerList(), &Conf::GetAudioContainerList()})
    {
        for (const std::string& name : *list)
        {
            EXPECT_EQ(unique.count(name), 1U) << name;
        }
    }
}

TEST(ContainerKind, FollowsTheRegistrysLists)
{
    EXPECT_EQ(ContainerKind("png"), "image");
    EXPECT_EQ(ContainerKind("flac"), "audio");
    EXPECT_EQ(ContainerKind("matroska"), "other");
}

TEST(DefaultExtension, IsEmptyWhereThereIsNone)
{
    EXPECT_EQ(DefaultExtension("MATROSKA"), "mkv");
    EXPECT_EQ(DefaultExtension("nut"), "");
    EXPECT_EQ(DefaultExtension("no such container"), "");
}

TEST(PixelFormatFlags, NamesTheFlagsThatAreSet)
{
    EXPECT_THAT(PixelFormatFlags(0), IsEmpty());
    EXPECT_THAT(PixelFormatFlags(PixFmtDescription::Find(PIX_FMT_YUVA420P)->flags),
                ElementsAre("yuv", "alpha", "planar"));
    EXPECT_THAT(PixelFormatFlags(PixFmtDescription::Find(PIX_FMT_RGBA)->flags), ElementsAre("rgb", "alpha"));
}

TEST(ColorRangeName, NamesEveryRange)
{
    EXPECT_EQ(ColorRangeName(PixFmtDescription::COLOR_RANGE_FULL), "full");
    EXPECT_EQ(ColorRangeName(PixFmtDescription::COLOR_RANGE_LIMITED), "limited");
    EXPECT_EQ(ColorRangeName(PixFmtDescription::COLOR_RANGE_UNSPECIFIED), "unspecified");
    EXPECT_EQ(ColorRangeName(1000), "unspecified");
}

TEST(Accelerators, AreListedForACodec)
{
    EXPECT_THAT(AcceleratedEncodersOf("CODEC_ID_H264"),
                ElementsAre("nvenc ENCODER_NVENC_H264", "cuda ENCODER_CUDA_H264", "im-hw ENCODER_IM_HW_H264",
                            "im-sw ENCODER_IM_SW_H264"));
    EXPECT_THAT(AcceleratedDecodersOf("CODEC_ID_VC1"), ElementsAre("cuda DECODER_CUDA_VC-1"));
    EXPECT_THAT(AcceleratedDecodersOf("CODEC_ID_AAC"), IsEmpty());
}

TEST(ListDecoders, NamesNoCodecForAnImplementationOfMany)
{
    const std::vector<Description> decoders = ListDecoders();
    EXPECT_EQ(FieldText(decoders[0][0].value), "DECODER_FFMPEG");
    EXPECT_EQ(FieldText(decoders[0][1].value), "");
    EXPECT_EQ(FieldText(decoders[0][2].value), "");
}

TEST(EveryList, DescribesEachEntryWithTheSameFieldsAndItsNameFirst)
{
    for (const auto list : {ListCodecs, ListContainers, ListMuxers, ListDecoders, ListEncoders,
                            ListAccelerators, ListPixelFormats, ListSampleFormats, ListLayouts})
    {
        const std::vector<Description> entries = list();
        ASSERT_FALSE(entries.empty());
        for (const Description& entry : entries)
        {
            EXPECT_EQ(entry.front().name, "name");
            EXPECT_NE(FieldText(entry.front().value), "");
            for (std::size_t i = 0; i < std::min(entry.size(), entries.front().size()); ++i)
            {
                EXPECT_EQ(entry[i].name, entries.front()[i].name);
            }
        }
    }
}

} // namespace
