#include "Conf/Interfaces/FormatLists.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/Tsv.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <sstream>

namespace Zelnor::Conf
{
namespace
{

using Accelerator = IFormatCodecVideo::AcceleratorType;
using ::testing::Contains;
using ::testing::ElementsAre;
using Testing::ExpectThrow;
using ::testing::HasSubstr;
using ::testing::Not;
using Testing::ReadTsv;
using Testing::Thrown;

using List = std::vector<std::string>;

List ExpectedList(const std::string& name)
{
    List list;
    for (const auto& row : ReadTsv("Tests/Conf/Data/formats.tsv"))
    {
        if (row[0] == name)
        {
            list.push_back(row[1]);
        }
    }
    return list;
}

std::ptrdiff_t Count(const List& list, const std::string& text)
{
    return std::count(list.begin(), list.end(), text);
}

/// The message is that text alone: no call stack is added to it.
void ExpectKeyNotFound(const std::function<void()>& action, const std::string& function)
{
    const Thrown thrown = ExpectThrow<std::out_of_range>(action);
    EXPECT_EQ(thrown.what, "key not found");
    EXPECT_EQ(thrown.file, "Conf/Interfaces/Stub");
    EXPECT_THAT(thrown.function.value_or(""), HasSubstr("IFormatCodecVideo::" + function + "("));
    EXPECT_GT(thrown.line.value_or(0), 0);
    EXPECT_FALSE(thrown.callStack.has_value());
}

template <class Query>
List Ask(Query query, Accelerator accelerator)
{
    List out = {"what was there"};
    query(accelerator, out);
    return out;
}

TEST(FormatLists, HoldTheListedContainersInTheirOrder)
{
    EXPECT_EQ(GetFormatList(), ExpectedList("format"));
    EXPECT_EQ(GetImageContainerList(), ExpectedList("image"));
    EXPECT_EQ(GetAudioContainerList(), ExpectedList("audio"));
    EXPECT_EQ(GetImageContainerList().size(), 31U);
}

TEST(FormatLists, Have146ContainersAndAdtsTwice)
{
    const List& list = GetFormatList();
    EXPECT_EQ(list.size(), 146U);
    EXPECT_EQ(Count(list, "adts"), 2);
    EXPECT_EQ(list[3], "adts");
    EXPECT_EQ(list[5], "adts");
    EXPECT_THAT(list, Not(Contains("tty")));
    EXPECT_THAT(list, Not(Contains("png_pipe")));
    EXPECT_THAT(list, Contains("image2pipe"));
}

TEST(FormatLists, Have19ContainersOfSoundAndThreeOfThemTwice)
{
    const List& list = GetAudioContainerList();
    EXPECT_EQ(list.size(), 19U);
    for (const char* const twice : {"mp3", "aiff", "adx"})
    {
        EXPECT_EQ(Count(list, twice), 2) << twice;
    }
}

TEST(FormatLists, NameEveryContainerOfTheVocabularyOnce)
{
    List texts = {
#define ZELNOR_CONTAINER(name, text) IFormatFile::name,
#include "Conf/Interfaces/Vocabulary/IFormatFile.def"
    };
    EXPECT_EQ(texts.size(), 159U);
    texts.erase(std::find(texts.begin(), texts.end(), "adts")); // of FORMAT_AAC and FORMAT_ADTS the first
    List sorted = GetContainerList();
    std::sort(sorted.begin(), sorted.end());
    std::sort(texts.begin(), texts.end());
    EXPECT_EQ(sorted, texts);
    EXPECT_EQ(std::adjacent_find(sorted.begin(), sorted.end()), sorted.end());
    EXPECT_EQ(GetContainerList().front(), "3g2");
    EXPECT_EQ(GetContainerList().back(), "tty");
}

TEST(FormatLists, HoldNothingButContainers)
{
    for (const List* const list : {&GetFormatList(), &GetImageContainerList(), &GetAudioContainerList(),
                                   &GetDisabledFormatParserList(), &GetDisabledFormatMuxerList()})
    {
        EXPECT_TRUE(std::all_of(list->begin(), list->end(), IsContainer));
    }
    EXPECT_TRUE(IsContainer("tty")) << "it can be read, though not written";
}

TEST(FormatLists, DoNotTakeExtensionsOtherNamesOrOtherLettersForContainers)
{
    for (const char* const text : {"", "MP4", "mp4 ", "mkv", "jpg", "FORMAT_MP4", "format_file", "All Video"})
    {
        EXPECT_FALSE(IsContainer(text)) << text;
    }
}

TEST(FormatLists, DisableTheNullContainerAndAFewCodecs)
{
    EXPECT_THAT(GetDisabledFormatParserList(), ElementsAre("null"));
    EXPECT_THAT(GetDisabledFormatMuxerList(), ElementsAre("null"));
    EXPECT_THAT(GetDisabledDecoderList(), ElementsAre("CODEC_ID_H265"));
    EXPECT_THAT(GetDisabledEncoderList(), ElementsAre("CODEC_ID_H265", "CODEC_ID_AMR_NB", "CODEC_ID_AMR_WB"));
}

TEST(FormatLists, NameTheMuxerAmongTheParsers)
{
    EXPECT_THAT(GetMuxerImplList(), ElementsAre("MUXER_FFMPEG_IMPL"));
    EXPECT_THAT(GetParserImplList(), ElementsAre("MUXER_FFMPEG_IMPL"));
}

TEST(FormatLists, NameTheDecodersWithoutTheMpeg2DecoderOfCuda)
{
    EXPECT_THAT(GetDecoderImplList(),
                ElementsAre("DECODER_FFMPEG", "DECODER_CUDA_H264", "DECODER_CUDA_MPEG1", "DECODER_CUDA_VC-1",
                            "DECODER_CUDA_WMV3", "DECODER_IM_HW_H264", "DECODER_IM_HW_MPEG2",
                            "DECODER_IM_SW_H264", "DECODER_IM_SW_MPEG1", "DECODER_IM_SW_MPEG2"));
}

TEST(FormatLists, NameTheEncoders)
{
    EXPECT_THAT(GetEncoderImplList(),
                ElementsAre("ENCODER_FFMPEG", "ENCODER_NVENC_H264", "ENCODER_CUDA_H264", "ENCODER_IM_HW_H264",
                            "ENCODER_IM_HW_MPEG2", "ENCODER_IM_SW_H264", "ENCODER_IM_SW_MPEG2"));
}

TEST(FormatLists, ShareOneListOfExternalCodecs)
{
    EXPECT_EQ(&GetExternalEncoderList(), &GetExternalDecoderList());
    EXPECT_THAT(GetExternalEncoderList(), ElementsAre("CODEC_ID_MP3", "CODEC_ID_H264"));
    EXPECT_TRUE(IsExternalEncoder("CODEC_ID_MP3"));
    EXPECT_TRUE(IsExternalDecoder("CODEC_ID_MP3"));
    EXPECT_TRUE(IsExternalDecoder("CODEC_ID_H264"));
    EXPECT_FALSE(IsExternalDecoder("CODEC_ID_AAC"));
    EXPECT_FALSE(IsExternalEncoder("codec_id_mp3"));
    EXPECT_FALSE(IsExternalEncoder(""));
}

TEST(FormatLists, TellContainersOfImagesAndOfSound)
{
    EXPECT_FALSE(IsImageContainer("tif"));
    EXPECT_TRUE(IsImageContainer("png_pipe"));
    EXPECT_TRUE(IsAudioContainer("adts"));
    EXPECT_FALSE(IsAudioContainer("ADTS"));
    EXPECT_TRUE(IsAudioContainer("asf"));
    EXPECT_TRUE(IsAudioContainer("asf_stream"));
    EXPECT_FALSE(IsAudioContainer("png"));
    EXPECT_FALSE(IsImageContainer(""));
}

TEST(Encryption, OfDvdsCanBeReadButNotCopied)
{
    EXPECT_TRUE(CanReadWithEncryption(""));
    EXPECT_TRUE(CanReadWithEncryption("DVD CSS Protection"));
    EXPECT_FALSE(CanReadWithEncryption("Apple DRM Protection"));
    EXPECT_FALSE(CanReadWithEncryption("dvd css protection"));
    EXPECT_TRUE(CanCopyWithEncryption(""));
    EXPECT_FALSE(CanCopyWithEncryption("DVD CSS Protection"));
    EXPECT_FALSE(CanCopyWithEncryption("Apple DRM Protection"));
}

TEST(ListOutput, PutsACommaBehindEveryElement)
{
    std::ostringstream os;
    os << List{"mp3", "adts"};
    EXPECT_EQ(os.str(), "mp3, adts, ");
    os << List{};
    EXPECT_EQ(os.str(), "mp3, adts, ");
}

TEST(AcceleratedEncoders, AreTheListedOnes)
{
    const auto encoders = [](int accelerator) {
        return Ask(IFormatCodecVideo::GetAcceleratedEncoders, static_cast<Accelerator>(accelerator));
    };
    EXPECT_THAT(encoders(0), ElementsAre("ENCODER_NVENC_H264"));
    EXPECT_THAT(encoders(1), ElementsAre("ENCODER_CUDA_H264"));
    EXPECT_THAT(encoders(2), ElementsAre("ENCODER_IM_HW_H264", "ENCODER_IM_HW_MPEG2"));
    EXPECT_THAT(encoders(3), ElementsAre("ENCODER_IM_SW_H264", "ENCODER_IM_SW_MPEG2"));
}

TEST(AcceleratedEncoders, ServeTheListedCodecs)
{
    const auto codecs = [](int accelerator) {
        return Ask(IFormatCodecVideo::GetAcceleratedEncoderCodecs, static_cast<Accelerator>(accelerator));
    };
    EXPECT_THAT(codecs(0), ElementsAre("CODEC_ID_H264"));
    EXPECT_THAT(codecs(1), ElementsAre("CODEC_ID_H264"));
    EXPECT_THAT(codecs(2), ElementsAre("CODEC_ID_H264", "CODEC_ID_MPEG2VIDEO"));
    EXPECT_THAT(codecs(3), ElementsAre("CODEC_ID_H264", "CODEC_ID_MPEG2VIDEO"));
}

TEST(AcceleratedDecoders, AreTheListedOnes)
{
    const auto decoders = [](int accelerator) {
        return Ask(IFormatCodecVideo::GetAcceleratedDecoders, static_cast<Accelerator>(accelerator));
    };
    EXPECT_THAT(decoders(1), ElementsAre("DECODER_CUDA_H264", "DECODER_CUDA_MPEG1", "DECODER_CUDA_MPEG2",
                                         "DECODER_CUDA_VC-1", "DECODER_CUDA_WMV3"));
    EXPECT_THAT(decoders(2), ElementsAre("DECODER_IM_HW_H264", "DECODER_IM_HW_MPEG2"));
    EXPECT_THAT(decoders(3), ElementsAre("DECODER_IM_SW_H264", "DECODER_IM_SW_MPEG1", "DECODER_IM_SW_MPEG2"));
}

TEST(AcceleratedDecoders, ServeTheListedCodecs)
{
    const auto codecs = [](int accelerator) {
        return Ask(IFormatCodecVideo::GetAcceleratedDecoderCodecs, static_cast<Accelerator>(accelerator));
    };
    EXPECT_THAT(codecs(1), ElementsAre("CODEC_ID_H264", "CODEC_ID_MPEG1VIDEO", "CODEC_ID_MPEG2VIDEO",
                                       "CODEC_ID_VC1", "CODEC_ID_WMV3"));
    EXPECT_THAT(codecs(2), ElementsAre("CODEC_ID_H264", "CODEC_ID_MPEG2VIDEO"));
    EXPECT_THAT(codecs(3), ElementsAre("CODEC_ID_H264", "CODEC_ID_MPEG1VIDEO", "CODEC_ID_MPEG2VIDEO"));
}

TEST(AcceleratedDecoders, OfNvencLeaveTheListAsItWas)
{
    EXPECT_THAT(Ask(IFormatCodecVideo::GetAcceleratedDecoderCodecs, IFormatCodecVideo::ACCELERATOR_NVENC),
                ElementsAre("what was there"));
}

TEST(AcceleratedDecoders, OfNvencAreNotFoundByName)
{
    List out = {"what was there"};
    ExpectKeyNotFound(
        [&] { IFormatCodecVideo::GetAcceleratedDecoders(IFormatCodecVideo::ACCELERATOR_NVENC, out); },
        "GetAcceleratedDecoders");
    EXPECT_THAT(out, ElementsAre("what was there"));
    ExpectKeyNotFound(
        [] {
            IFormatCodecVideo::GetAcceleratedDecoder(IFormatCodecVideo::ACCELERATOR_NVENC, "CODEC_ID_H264");
        },
        "GetAcceleratedDecoder");
}

TEST(AcceleratedCodec, OfEveryRowIsFoundByItsCodec)
{
    for (int i = 0; i <= 3; ++i)
    {
        const auto accelerator = static_cast<Accelerator>(i);
        List found;
        for (const std::string& codec : Ask(IFormatCodecVideo::GetAcceleratedEncoderCodecs, accelerator))
        {
            found.push_back(IFormatCodecVideo::GetAcceleratedEncoder(accelerator, codec));
        }
        EXPECT_EQ(found, Ask(IFormatCodecVideo::GetAcceleratedEncoders, accelerator));
        if (accelerator == IFormatCodecVideo::ACCELERATOR_NVENC)
        {
            continue;
        }
        found.clear();
        for (const std::string& codec : Ask(IFormatCodecVideo::GetAcceleratedDecoderCodecs, accelerator))
        {
            found.push_back(IFormatCodecVideo::GetAcceleratedDecoder(accelerator, codec));
        }
        EXPECT_EQ(found, Ask(IFormatCodecVideo::GetAcceleratedDecoders, accelerator));
    }
    EXPECT_EQ(IFormatCodecVideo::GetAcceleratedEncoder(IFormatCodecVideo::ACCELERATOR_NVENC, "CODEC_ID_H264"),
              "ENCODER_NVENC_H264");
    EXPECT_EQ(IFormatCodecVideo::GetAcceleratedDecoder(IFormatCodecVideo::ACCELERATOR_CUDA, "CODEC_ID_VC1"),
              "DECODER_CUDA_VC-1");
}

TEST(AcceleratedCodec, ThatTheAcceleratorHasNotIsNotFound)
{
    ExpectKeyNotFound(
        [] {
            IFormatCodecVideo::GetAcceleratedEncoder(IFormatCodecVideo::ACCELERATOR_NVENC,
                                                     "CODEC_ID_MPEG2VIDEO");
        },
        "GetAcceleratedEncoder");
    ExpectKeyNotFound(
        [] {
            IFormatCodecVideo::GetAcceleratedDecoder(IFormatCodecVideo::ACCELERATOR_IM_HW,
                                                     "CODEC_ID_MPEG1VIDEO");
        },
        "GetAcceleratedDecoder");
}

TEST(Accelerator, OutsideTheEnumerationIsNotFoundByAnyQuery)
{
    for (const int number : {-1, 4, 1 << 30})
    {
        const auto accelerator = static_cast<Accelerator>(number);
        List out = {"what was there"};
        ExpectKeyNotFound([&] { IFormatCodecVideo::GetAcceleratedEncoders(accelerator, out); },
                          "GetAcceleratedEncoders");
        ExpectKeyNotFound([&] { IFormatCodecVideo::GetAcceleratedDecoders(accelerator, out); },
                          "GetAcceleratedDecoders");
        ExpectKeyNotFound([&] { IFormatCodecVideo::GetAcceleratedEncoderCodecs(accelerator, out); },
                          "GetAcceleratedEncoderCodecs");
        ExpectKeyNotFound([&] { IFormatCodecVideo::GetAcceleratedDecoderCodecs(accelerator, out); },
                          "GetAcceleratedDecoderCodecs");
        ExpectKeyNotFound([&] { IFormatCodecVideo::GetAcceleratedEncoder(accelerator, "CODEC_ID_H264"); },
                          "GetAcceleratedEncoder");
        ExpectKeyNotFound([&] { IFormatCodecVideo::GetAcceleratedDecoder(accelerator, "CODEC_ID_H264"); },
                          "GetAcceleratedDecoder");
        EXPECT_THAT(out, ElementsAre("what was there"));
    }
}

} // namespace
} // namespace Zelnor::Conf
