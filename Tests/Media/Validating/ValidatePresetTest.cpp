#include "Media/Presets/PresetFile.h"
#include "Media/Validating/DocumentFault.h"

#include "Tests/Support/DocumentFaults.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> ChangedPreset(const std::string& from, const std::string& to)
{
    return FaultLines(With(kGoodPreset, from, to));
}

TEST(ValidatingAPreset, FindsNothingInAGoodOne)
{
    const DocumentFaults result = ValidateDocument(kGoodPreset);
    EXPECT_EQ(result.kind, DocumentFaults::Preset);
    EXPECT_THAT(FaultLines(kGoodPreset), IsEmpty());
}

TEST(ValidatingAPreset, FindsNothingInThoseThatCome)
{
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(ZELNOR_SOURCE_DIR "/Presets"))
    {
        EXPECT_TRUE(ValidateFile(entry.path()).faults.empty()) << entry.path();
        ++count;
    }
    EXPECT_GT(count, 5U);
}

TEST(ValidatingAPreset, TellsAllFaultsInTheOrderOfTheText)
{
    std::string text = With(kGoodPreset, "\"name\": \"Small\"", "\"naem\": 5");
    text = With(text, "\"mp4\"", "\"mp5\"");
    text = With(text, "CODEC_ID_H264", "CODEC_ID_H246");
    text = With(text, "\"bitrate\": 96000", "\"bitrate\": \"fast\", \"layout\": \"Stereo\"");
    EXPECT_THAT(
        FaultLines(text),
        ElementsAre(
            "3:5 /small/naem setting: small: unknown key 'naem'; did you mean 'name'?",
            "4:18 /small/container setting: small.container: expected the name of a container, as "
            "\"mp4\", found 'mp5'; did you mean 'md5' or 'mp2' or 'mp3'?",
            "6:29 /small/$$STREAMS$$/video/codec_id setting: small.$$STREAMS$$.video.codec_id: expected "
            "a video codec, as \"CODEC_ID_H264\", found 'CODEC_ID_H246'; did you mean 'CODEC_ID_H264' or "
            "'CODEC_ID_H261' or 'CODEC_ID_H263'?",
            "7:56 /small/$$STREAMS$$/audio/bitrate setting: small.$$STREAMS$$.audio.bitrate: expected a "
            "positive integer, found 'fast'",
            "7:74 /small/$$STREAMS$$/audio/layout setting: small.$$STREAMS$$.audio.layout: expected a "
            "channel layout, as \"STEREO\", found 'Stereo'; did you mean 'STEREO' or "
            "'STEREO_DOWNMIX'?"));
}

TEST(ValidatingAPreset, TellsStreamsOfOneTypeApart)
{
    EXPECT_THAT(
        FaultLines(R"({"p":{"container":"mp4","$$STREAMS$$":[
{"audio":{"codec_id":"CODEC_ID_AAC"}},
{"audio":{"codec_id":"CODEC_ID_AAC","bitrate":0}}]}})"),
        ElementsAre("3:47 /p/$$STREAMS$$/1/audio/bitrate setting: p.$$STREAMS$$.audio.bitrate: expected a "
                    "positive integer, found 0"));
}

TEST(ValidatingAPreset, FindsWhatIsMissing)
{
    EXPECT_THAT(
        FaultLines(R"({"p":{"$$STREAMS$$":{"audio":{}}}})"),
        ElementsAre(
            "1:6 /p setting: p.container: expected the name of a container, as \"mp4\", found "
            "nothing",
            "1:30 /p/$$STREAMS$$/audio setting: p.$$STREAMS$$.audio.codec_id: expected an audio codec, "
            "as \"CODEC_ID_AAC\", found nothing"));
    EXPECT_THAT(FaultLines(R"({"p":{"container":"mp4"}})"),
                ElementsAre("1:6 /p setting: p.$$STREAMS$$: expected a group of at least one stream, found "
                            "nothing"));
    EXPECT_THAT(FaultLines(R"({"p":{"container":"mp4","$$STREAMS$$":5}})"),
                ElementsAre("1:39 /p/$$STREAMS$$ setting: p.$$STREAMS$$: expected a group of at least one "
                            "stream, found 5"));
    EXPECT_THAT(FaultLines("{}"),
                ElementsAre("1:1  form: expected a record (an object with one member), found "
                            "an object with 0 members"));
}

TEST(ValidatingAPreset, FindsWhatIsNotAGroup)
{
    EXPECT_THAT(ChangedPreset("\"name\": \"Small\"", "\"metadata\": 5"),
                ElementsAre("3:17 /small/metadata setting: small.metadata: expected a group, found 5"));
    EXPECT_THAT(ChangedPreset("\"width\": 640", "\"codec.options.analyze\": 5"),
                ElementsAre("6:71 /small/$$STREAMS$$/video/codec.options.analyze setting: "
                            "small.$$STREAMS$$.video.codec.options.analyze: expected a group, found 5"));
    EXPECT_THAT(
        FaultLines(R"({"p":{}})"),
        ElementsAre(
            "1:6 /p setting: p.container: expected the name of a container, as \"mp4\", found nothing",
            "1:6 /p setting: p.$$STREAMS$$: expected a group of at least one stream, found nothing"));
}

TEST(ValidatingAPreset, AsksTheEncoderOfACodecWhereFFmpegsIsPreferred)
{
    EXPECT_THAT(
        ChangedPreset("\"width\": 640",
                      R"("preferred_encoder": "ENCODER_FFMPEG", "codec.options.encode": {"crff": 3})"),
        ElementsAre("6:118 /small/$$STREAMS$$/video/codec.options.encode/crff encoder: "
                    "small.$$STREAMS$$.video.codec.options.encode.crff: encoder libx264 does not have an "
                    "option 'crff'"));
}

TEST(ValidatingAPreset, FindsKeysThatStandInItTwice)
{
    EXPECT_THAT(ChangedPreset("\"width\": 640", "\"width\": 640, \"width\": 320"),
                ElementsAre("6:60 /small/$$STREAMS$$/video/width ignored: small.$$STREAMS$$.video.width: "
                            "appears more than once; only the first one counts"));
}

TEST(ValidatingAPreset, FindsEveryValueThatIsNotOne)
{
    EXPECT_THAT(ChangedPreset("\"width\": 640", "\"width\": 640.5, \"height\": [1, 0]"),
                ElementsAre("6:55 /small/$$STREAMS$$/video/width form: small.$$STREAMS$$.video.width: "
                            "expected an integer, a string, a rational, null or a group, found a number that "
                            "is not a 64-bit integer",
                            "6:72 /small/$$STREAMS$$/video/height form: small.$$STREAMS$$.video.height: a "
                            "rational with the denominator 0"));
}

TEST(ValidatingAPreset, SaysThatThereMayBeMoreWhereTooManyValuesAreNone)
{
    std::string values;
    for (int i = 0; i < 110; ++i)
    {
        values += ",\"k" + std::to_string(i) + "\":0.5";
    }
    const DocumentFaults result =
        ValidateDocument(With(kGoodPreset, "\"width\": 640", "\"width\": 640" + values));
    EXPECT_EQ(result.faults.size(), 100U);
    EXPECT_FALSE(result.isComplete);
}

TEST(ValidatingAPreset, TellsThatAnOptionIsNotTheEncoders)
{
    const DocumentFaults found =
        ValidateDocument(With(kGoodPreset, "\"width\": 640", R"("codec.options.encode": {"crff": 3})"));
    ASSERT_EQ(found.faults.size(), 1U);
    EXPECT_EQ(found.faults.front().kind, DocumentFault::Encoder);
    EXPECT_EQ(found.faults.front().pointer, "/small/$$STREAMS$$/video/codec.options.encode/crff");
    EXPECT_EQ(found.faults.front().reason, "encoder libx264 does not have an option 'crff'");
}

TEST(ValidatingAPreset, MayBeCalledLikeAListOfAJob)
{
    const DocumentFaults found = ValidateDocument(With(kGoodPreset, "small", "vertices"));
    EXPECT_EQ(found.kind, DocumentFaults::Preset);
    EXPECT_THAT(found.faults, IsEmpty());
}

TEST(ValidatingAPreset, PassesOverTheNameOfItsSchemaAsItsReaderDoes)
{
    const std::string text = With(kGoodPreset, "{", R"({"$schema": "../schemas/preset.schema.json",)");
    EXPECT_THAT(FaultLines(text), IsEmpty());
    const auto read = [](const std::string& document) {
        return PresetFile::Read(*Core::MemoryDataInput::Create(document), "p.json")->GetProperty();
    };
    EXPECT_EQ(read(text), read(kGoodPreset));
    // Only at the beginning, where editors look for it.
    EXPECT_THAT(
        FaultLines(R"({"p":{},"$schema":""})"),
        ElementsAre("1:9 /$schema form: expected a record (an object with one member), found an object "
                    "with 2 members"));
}

TEST(ValidatingText, TellsWhereItStopsBeingJson)
{
    const DocumentFaults result = ValidateDocument("{\"a\":\n  \"\xc3\xa4\xe6\x97\xa5\", x}", "p.json");
    EXPECT_EQ(result.kind, DocumentFaults::Unknown);
    ASSERT_EQ(result.faults.size(), 1U);
    const DocumentFault& fault = result.faults.front();
    EXPECT_EQ(fault.kind, DocumentFault::Syntax);
    EXPECT_EQ(fault.line, 2U);
    EXPECT_EQ(fault.column, 9U);
    EXPECT_EQ(fault.found, "x");
    EXPECT_EQ(fault.reason, "Missing a name for object member.");
}

TEST(ValidatingText, TellsThatItEndsTooEarly)
{
    for (const std::string text : {"", "{\"a\":"})
    {
        const DocumentFaults result = ValidateDocument(text);
        ASSERT_EQ(result.faults.size(), 1U) << text;
        EXPECT_EQ(result.faults.front().Name(), "syntax");
        EXPECT_EQ(result.faults.front().found, "nothing");
        EXPECT_EQ(result.faults.front().column, text.size() + 1);
    }
}

TEST(ValidatingText, ShowsOfLongValuesTheWholeCharactersThatFit)
{
    std::string letters;
    for (int i = 0; i < 60; ++i)
    {
        letters += "\xc3\xa4";
    }
    const DocumentFaults result = ValidateDocument(With(kGoodPreset, "640", "\"" + letters + "\""));
    ASSERT_EQ(result.faults.size(), 1U);
    EXPECT_EQ(result.faults.front().found, "\"" + letters.substr(0, 78) + "...");
    EXPECT_EQ(result.faults.front().length, letters.size() + 2);
}

TEST(ValidatingText, WantsAnObject)
{
    for (const char* const text : {"[]", "5", "null", "\"x\""})
    {
        const DocumentFaults result = ValidateDocument(text);
        EXPECT_EQ(result.kind, DocumentFaults::Unknown);
        ASSERT_EQ(result.faults.size(), 1U) << text;
        EXPECT_EQ(result.faults.front().kind, DocumentFault::Form);
    }
}

TEST(ValidatingText, StopsAfterAThousandFaults)
{
    std::string keys;
    for (int i = 0; i < 1100; ++i)
    {
        keys += ",\"" + std::to_string(i) + "\":1";
    }
    const DocumentFaults result =
        ValidateDocument(With(kGoodPreset, "\"name\": \"Small\"", "\"name\":\"\"" + keys));
    EXPECT_EQ(result.faults.size(), 1000U);
    EXPECT_FALSE(result.isComplete);
}

TEST(ValidatingAPreset, NamesThePlaceOfAValueThatCannotBeRead)
{
    const DocumentFaults found = ValidateDocument(
        R"({"p":{"container":"mp4","$$STREAMS$$":{"video":{"codec_id":"CODEC_ID_H264","frameRateRatio":[25,0]}}}})",
        "p.json");
    ASSERT_EQ(found.faults.size(), 1U);
    EXPECT_EQ(found.faults.front().place.Text(), "p.json: p.$$STREAMS$$.video.frameRateRatio");
    EXPECT_EQ(found.faults.front().Sentence(),
              "p.$$STREAMS$$.video.frameRateRatio: a rational with the denominator 0");
}

TEST(ValidatingAPreset, NamesCodecsThatTheContainerHoldsInstead)
{
    const std::string text =
        R"({"p":{"container":"mp4","$$STREAMS$$":{"video":{"codec_id":"CODEC_ID_VP8"}}}})";
    const DocumentFaults found = ValidateDocument(text);
    ASSERT_EQ(found.faults.size(), 1U);
    const DocumentFault& fault = found.faults.front();
    EXPECT_EQ(fault.kind, DocumentFault::Container);
    EXPECT_EQ(
        fault.Sentence(),
        "p.$$STREAMS$$.video.codec_id: the container mp4 cannot hold CODEC_ID_VP8; it holds CODEC_ID_H264, "
        "CODEC_ID_VP9 or CODEC_ID_MPEG1VIDEO; CODEC_ID_VP8 goes into avi, matroska or mov");
    EXPECT_EQ(fault.pointer, "/p/$$STREAMS$$/video/codec_id");
    EXPECT_EQ(fault.found, "\"CODEC_ID_VP8\"");
    EXPECT_THAT(fault.nearest, ElementsAre("CODEC_ID_H264", "CODEC_ID_VP9", "CODEC_ID_MPEG1VIDEO"));
}

TEST(ValidatingAPreset, NamesCodecsThatAreEncodedInstead)
{
    const DocumentFaults found =
        ValidateDocument(R"({"p":{"container":"mp4","$$STREAMS$$":{"video":{"codec_id":"CODEC_ID_MPEG4"},)"
                         R"("audio":{"codec_id":"CODEC_ID_QCELP"}}}})");
    ASSERT_EQ(found.faults.size(), 1U);
    const DocumentFault& fault = found.faults.front();
    EXPECT_EQ(fault.kind, DocumentFault::Encoder);
    EXPECT_EQ(fault.Sentence(),
              "p.$$STREAMS$$.audio.codec_id: the installed FFmpeg does not have an encoder for "
              "CODEC_ID_QCELP; for mp4 it can encode CODEC_ID_AAC, CODEC_ID_MP2 or CODEC_ID_MP3");
    EXPECT_EQ(fault.pointer, "/p/$$STREAMS$$/audio/codec_id");
    EXPECT_THAT(fault.nearest, ElementsAre("CODEC_ID_AAC", "CODEC_ID_MP2", "CODEC_ID_MP3"));
}

TEST(ValidatingAPreset, NamesTheEncoderThatACodecHas)
{
    const DocumentFaults found =
        ValidateDocument(R"({"p":{"container":"mp4","$$STREAMS$$":{"video":{"codec_id":"CODEC_ID_MPEG4",)"
                         R"("preferred_encoder":"libx264"}}}})");
    ASSERT_EQ(found.faults.size(), 1U);
    EXPECT_EQ(
        found.faults.front().Sentence(),
        "p.$$STREAMS$$.video.preferred_encoder: the installed FFmpeg does not have an encoder 'libx264' "
        "for CODEC_ID_MPEG4; it has 'mpeg4'");
    EXPECT_EQ(found.faults.front().pointer, "/p/$$STREAMS$$/video/preferred_encoder");
}

TEST(ValidatingAPreset, LeavesADisabledEncoderToTheRequest)
{
    const std::string text =
        R"({"p":{"container":"mp4","$$STREAMS$$":{"video":{"codec_id":"CODEC_ID_H265"}}}})";
    EXPECT_TRUE(ValidateDocument(text).faults.empty());
}

TEST(ValidatingAPreset, RefusesContainersThatAreNotOneFile)
{
    const DocumentFaults found =
        ValidateDocument(R"({"p":{"container":"rtp","$$STREAMS$$":{"video":{"codec_id":"CODEC_ID_H264"}}}})");
    ASSERT_EQ(found.faults.size(), 1U);
    EXPECT_EQ(found.faults.front().Sentence(), "p.container: the container 'rtp' is not written as one file");
    EXPECT_EQ(found.faults.front().kind, DocumentFault::Container);
}

TEST(ValidatingAPreset, SurvivesCodecsThatTheInstalledFFmpegDoesNotKnow)
{
    const std::string text =
        R"({"p":{"container":"mp4","$$STREAMS$$":{"video":{"codec_id":"CODEC_ID_MPEG2VIDEO_XVMC"}}}})";
    EXPECT_NO_THROW(ValidateDocument(text));
}

TEST(ValidatingText, SurvivesWhatEnemiesWrite)
{
    const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
    const std::string text = "\"" + std::string(100'000, '\xff') + "\"";
    for (const std::string& value :
         {deep, text, std::string("1e999"), std::string(100'000, '9'), std::string("\"\\u0000\"")})
    {
        for (const std::string& document :
             {value, "{\"p\":" + value + "}", "{\"vertices\":" + value + ",\"edges\":[]}",
              "{\"vertices\":[{\"id\":" + value + ",\"data\":" + value + "}],\"edges\":[]}",
              "{\"p\":{\"container\":" + value + ",\"$$STREAMS$$\":{\"audio\":" + value + "}}}"})
        {
            EXPECT_FALSE(ValidateDocument(document).faults.empty()) << document.substr(0, 80);
        }
    }
}

} // namespace
