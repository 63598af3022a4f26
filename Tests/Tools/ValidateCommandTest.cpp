#include "Tests/Support/DocumentFaults.h"
#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>
#include <rapidjson/document.h>

namespace
{

using namespace Zelnor::Testing;
using testing::HasSubstr;
using testing::Not;

class ValidateCommand : public ZconfTest
{};

TEST_F(ValidateCommand, IsQuietAboutGoodDocuments)
{
    Write("job.json", kGoodJob);
    Write("p.json", kGoodPreset);
    const ProcessResult result = Zconf({"validate", "job.json", "p.json"});
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "job.json: valid job\np.json: valid preset\n");
}

TEST_F(ValidateCommand, ShowsTheLineOfEachFault)
{
    Write("p.json", With(With(kGoodPreset, "CODEC_ID_H264", "CODEC_ID_H246"), "96000", "\"fast\""));
    const ProcessResult result = Zconf({"validate", "p.json"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.messages, "");
    EXPECT_EQ(
        result.output,
        "p.json:6:29: small.$$STREAMS$$.video.codec_id: expected a video codec, as \"CODEC_ID_H264\", found "
        "'CODEC_ID_H246'; did you mean 'CODEC_ID_H264' or 'CODEC_ID_H261' or 'CODEC_ID_H263'?\n"
        "    |       \"video\": {\"codec_id\": \"CODEC_ID_H246\", \"width\": 640},\n"
        "    |                             ^~~~~~~~~~~~~~~\n"
        "p.json:7:56: small.$$STREAMS$$.audio.bitrate: expected a positive integer, found 'fast'\n"
        "    |       \"audio\": {\"codec_id\": \"CODEC_ID_AAC\", \"bitrate\": \"fast\"}\n"
        "    |                                                        ^~~~~~\n"
        "p.json: not valid, 2 faults\n");
}

TEST_F(ValidateCommand, WritesPlacesOfJobsAsJson)
{
    Write("job.json", With(kGoodJob, "\"STEREO\"", "\"\\u001b[31m\xff\""));
    const ProcessResult result = Zconf({"validate", "job.json", "--json"});
    EXPECT_EQ(result.exitCode, 1);
    rapidjson::Document json;
    json.Parse<rapidjson::kParseValidateEncodingFlag>(result.output.data(), result.output.size());
    ASSERT_FALSE(json.HasParseError());
    const auto& fault = json[0]["faults"][0];
    EXPECT_EQ(fault["link"][0].GetInt(), 4);
    EXPECT_EQ(fault["key"], "layout");
    EXPECT_EQ(fault["pointer"], "/edges/3/data/data/format_codec_audio/layout");
    EXPECT_EQ(fault["found"], "\"\\u001b[31m\\xff\"");
}

TEST_F(ValidateCommand, ReadsStandardInput)
{
    ProcessOptions options;
    options.input = "{\"a\":\x1b}";
    const ProcessResult result = Zconf({"validate", "-"}, options);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "standard input:1:6: Invalid value.\n    | {\"a\":\\x1b}\n    |      ^~~~\n"
                             "standard input: not valid, 1 fault\n");
}

TEST_F(ValidateCommand, SaysAllOfSeveralFiles)
{
    Write("a.json", "[]");
    Write("b.json", kGoodPreset);
    const ProcessResult result = Zconf({"validate", "a.json", "b.json"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.output, HasSubstr("a.json: not valid, 1 fault\nb.json: valid preset\n"));
}

TEST_F(ValidateCommand, FailsWhereAFileCannotBeRead)
{
    Write("b.json", kGoodPreset);
    ExpectFailure(Zconf({"validate", "b.json", "none.json"}),
                  "Cannot open 'none.json': No such file or directory");
    EXPECT_EQ(Zconf({"validate"}).exitCode, 2);
}

TEST_F(ValidateCommand, NeverWritesWhatATerminalObeys)
{
    const std::string name = Write("a\x1b.json", With(kGoodPreset, "\"width\"", "\"\xc2\x9bm\\u001b\""));
    const ProcessResult result = Zconf({"validate", name});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.output, Not(HasSubstr("\x1b")));
    EXPECT_THAT(result.output, Not(HasSubstr("\xc2\x9b")));
}

TEST_F(ValidateCommand, TakesWhatTheReadersTake)
{
    Write("job.json", R"({"$schema": "x", "vertices": [], "edges": []})");
    EXPECT_EQ(Zconf({"job", "show", "job.json"}).exitCode, 0);
}

} // namespace
