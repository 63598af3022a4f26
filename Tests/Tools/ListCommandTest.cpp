#include "Tests/Support/Tsv.h"
#include "Tests/Support/ZconfTest.h"

#include <gtest/gtest.h>

#include <rapidjson/document.h>

#include <set>

namespace
{

using namespace Zelnor::Testing;

class ListCommand : public ZconfTest
{
protected:
    /// The things in the command's answer for scripts.
    rapidjson::Document Json(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), "list");
        arguments.emplace_back("--json");
        const ProcessResult result = Zconf(arguments);
        rapidjson::Document document;
        document.Parse(result.output.data(), result.output.size());
        EXPECT_TRUE(document.IsArray()) << result.output;
        EXPECT_EQ(result.messages, "");
        return document;
    }
    std::vector<std::string> Names(const std::vector<std::string>& arguments) const
    {
        std::vector<std::string> names;
        const rapidjson::Document document = Json(arguments);
        for (const auto& thing : document.GetArray())
        {
            names.emplace_back(thing["name"].GetString());
        }
        return names;
    }
};

TEST_F(ListCommand, AlignsItsColumns)
{
    const ProcessResult result = Zconf({"list", "decoders", "cuda"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "DECODER_CUDA_H264   cuda  CODEC_ID_H264\n"
                             "DECODER_CUDA_MPEG1  cuda  CODEC_ID_MPEG1VIDEO\n"
                             "DECODER_CUDA_VC-1   cuda  CODEC_ID_VC1\n"
                             "DECODER_CUDA_WMV3   cuda  CODEC_ID_WMV3\n");
}

TEST_F(ListCommand, FindsNamesByAPartIgnoringCase)
{
    ExpectQuietSuccess(Zconf({"list", "codecs", "h26"}));
    const std::vector<std::string> expected = {"CODEC_ID_H261",  "CODEC_ID_H263", "CODEC_ID_H263P",
                                               "CODEC_ID_H263I", "CODEC_ID_H264", "CODEC_ID_H265"};
    EXPECT_EQ(Names({"codecs", "h26"}), expected);
    EXPECT_EQ(Names({"codecs", "H26"}), expected);
}

TEST_F(ListCommand, AnswersNoWhenNoNameIsFound)
{
    const ProcessResult text = Zconf({"list", "layouts", "nothing like it"});
    EXPECT_EQ(text.exitCode, 1);
    EXPECT_EQ(text.output + text.messages, "");
    const ProcessResult json = Zconf({"list", "layouts", "nothing like it", "--json"});
    EXPECT_EQ(json.exitCode, 1);
    EXPECT_EQ(json.output, "[]\n");
}

TEST_F(ListCommand, ListsEveryCodecOfTheVocabulary)
{
    std::set<std::string> expected = {"CODEC_ID_JPEG", "CODEC_ID_8SVX_RAW", "CODEC_ID_AUTO"};
    for (const auto& row : ReadTsv("Tests/Conf/Data/codecs.tsv"))
    {
        expected.insert(row[1]);
    }
    const std::vector<std::string> names = Names({"codecs"});
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()), expected);
    EXPECT_EQ(names.size(), 352U);
}

TEST_F(ListCommand, ListsCodecsOfOneKind)
{
    for (const auto& [kind, count] : {std::pair("video", 187), std::pair("audio", 134),
                                      std::pair("subtitle", 21), std::pair("other", 10)})
    {
        const rapidjson::Document document = Json({"codecs", "--kind", kind});
        EXPECT_EQ(document.Size(), static_cast<unsigned>(count)) << kind;
        for (const auto& codec : document.GetArray())
        {
            EXPECT_STREQ(codec["kind"].GetString(), kind);
        }
    }
}

TEST_F(ListCommand, NamesFFmpegsCounterpartOfACodec)
{
    const rapidjson::Document document = Json({"codecs", "h265"});
    ASSERT_EQ(document.Size(), 1U);
    EXPECT_STREQ(document[0]["ffmpeg"].GetString(), "AV_CODEC_ID_HEVC");
    EXPECT_TRUE(document[0]["number"].IsInt64());
    const rapidjson::Document without = Json({"codecs", "id_jpeg", "--kind", "video"});
    ASSERT_GE(without.Size(), 1U);
    EXPECT_STREQ(without[0]["name"].GetString(), "CODEC_ID_JPEG");
    EXPECT_FALSE(without[0].HasMember("ffmpeg"));
    EXPECT_FALSE(without[0].HasMember("number"));
}

TEST_F(ListCommand, ListsEveryContainerOnceWithItsExtension)
{
    std::set<std::string> expected;
    for (const auto& row : ReadTsv("Tests/Conf/Data/formats.tsv"))
    {
        expected.insert(row[1]);
    }
    expected.insert("tty"); // it can be read, and stands in none of the lists
    const std::vector<std::string> names = Names({"formats"});
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()), expected);
    EXPECT_EQ(names.size(), expected.size());
    EXPECT_STREQ(Json({"formats", "matroska"})[0]["extension"].GetString(), "mkv");
    EXPECT_EQ(Names({"formats", "--kind", "image"}).size(), 31U);
    EXPECT_EQ(Names({"formats", "--kind", "audio"}).size(), 16U);
}

TEST_F(ListCommand, ListsTheImplementations)
{
    EXPECT_EQ(Zconf({"list", "muxers"}).output, "MUXER_FFMPEG_IMPL  muxer\nMUXER_FFMPEG_IMPL  parser\n");
    EXPECT_EQ(Names({"decoders"}).size(), 10U);
    EXPECT_EQ(Names({"encoders"}).size(), 7U);
    EXPECT_EQ(Zconf({"list", "accelerators"}).output,
              "nvenc  CODEC_ID_H264\n"
              "cuda   CODEC_ID_H264                       CODEC_ID_H264, CODEC_ID_MPEG1VIDEO, "
              "CODEC_ID_MPEG2VIDEO, CODEC_ID_VC1, CODEC_ID_WMV3\n"
              "im-hw  CODEC_ID_H264, CODEC_ID_MPEG2VIDEO  CODEC_ID_H264, CODEC_ID_MPEG2VIDEO\n"
              "im-sw  CODEC_ID_H264, CODEC_ID_MPEG2VIDEO  CODEC_ID_H264, CODEC_ID_MPEG1VIDEO, "
              "CODEC_ID_MPEG2VIDEO\n");
}

TEST_F(ListCommand, MarksTheEncodersThatAJobCanPrefer)
{
    const rapidjson::Document document = Json({"encoders"});
    for (const auto& encoder : document.GetArray())
    {
        EXPECT_EQ(encoder["usable"].GetBool(), std::string(encoder["name"].GetString()) == "ENCODER_FFMPEG");
    }
}

TEST_F(ListCommand, ListsThePresets)
{
    const rapidjson::Document document = Json({"presets", "webm-vp8"});
    ASSERT_EQ(document.Size(), 1U);
    EXPECT_STREQ(document[0]["container"].GetString(), "webm");
    EXPECT_STREQ(document[0]["title"].GetString(), "WebM with VP8 video and Vorbis audio");
    EXPECT_GE(Names({"presets"}).size(), 11U);
}

TEST_F(ListCommand, ListsTheMediaRecords)
{
    EXPECT_EQ(Names({"sample-formats"}).size(), 11U);
    EXPECT_EQ(Names({"layouts"}).size(), 28U);
    EXPECT_EQ(Names({"pixel-formats"}).size(), 29U);
    EXPECT_EQ(Zconf({"list", "pixel-formats", "yuva420"}).output,
              "YUVA420P  35  4  limited  yuv, alpha, planar\n");
    EXPECT_EQ(Zconf({"list", "sample-formats", "fltp"}).output, "SAMPLE_FMT_FLTP  8  32  planar\n");
}

TEST_F(ListCommand, RefusesWhatItDoesNotKnow)
{
    EXPECT_EQ(Zconf({"list", "codecs", "--kind", "smell"}).exitCode, 2);
    EXPECT_EQ(Zconf({"list", "layouts", "--kind", "video"}).exitCode, 2);
    EXPECT_EQ(Zconf({"list"}).exitCode, 2);
    const ProcessResult unknown = Zconf({"list", "smells"});
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_EQ(unknown.output, "");
    EXPECT_EQ(unknown.messages, "zconf: Unexpected argument 'smells' (see zconf list --help)\n");
}

} // namespace
