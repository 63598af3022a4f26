#include "Media/Validating/DocumentFault.h"

#include "Tests/Support/DocumentFaults.h"
#include "Tests/Support/TemporaryFolder.h"

#include "Core/Interfaces/Exception.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <utility>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// The faults of the good job after one change.
std::vector<std::string> ChangedJob(const std::string& from, const std::string& to)
{
    return FaultLines(With(kGoodJob, from, to));
}

TEST(ValidatingAJob, FindsNothingInAGoodOne)
{
    const DocumentFaults result = ValidateDocument(kGoodJob);
    EXPECT_EQ(result.kind, DocumentFaults::Job);
    EXPECT_TRUE(result.isComplete);
    EXPECT_THAT(FaultLines(kGoodJob), IsEmpty());
}

TEST(ValidatingAJob, TakesMomentsWhateverTheIdentifiersAre)
{
    // Of a hash table of libstdc++ for so many, these are all in one bucket.
    constexpr long long kNodes = 100'000;
    constexpr long long kBuckets = 172'933;
    std::string nodes;
    std::string links;
    for (long long i = 1; i <= kNodes; ++i)
    {
        const std::string id = std::to_string(i * kBuckets);
        nodes += (i == 1 ? "" : ",") + (R"({"id":)" + id + "}");
        links += (i == 1 ? "" : ",") + (R"({"from":)" + id) + R"(,"to":)" +
                 std::to_string(i % kNodes * kBuckets + kBuckets) + "}";
    }
    const DocumentFaults result =
        ValidateDocument(R"({"vertices":[)" + nodes + R"(],"edges":[)" + links + "]}");
    EXPECT_EQ(result.kind, DocumentFaults::Job);
}

TEST(ValidatingAJob, LooksIntoALargeRecordOnceForAllItsFaults)
{
    constexpr int kOptions = 50'000;
    std::string options;
    for (int i = 0; i < kOptions; ++i)
    {
        options += (i == 0 ? "\"" : ",\"") + std::to_string(i) + std::string(200, 'x') + "\":1";
    }
    const DocumentFaults result = ValidateDocument(
        R"({"vertices":[{"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":"in.mkv"}}}},)"
        R"({"id":2,"data":{"data":{"streamRaw":{"id":0}}}},)"
        R"({"id":3,"data":{"data":{"target":{"container":"matroska","filePath":"out.mkv"}}}}],)"
        R"("edges":[{"from":1,"to":2},{"from":2,"to":3,"data":{"data":{"format_codec_video":{)"
        R"("codec_id":"CODEC_ID_MPEG4","bitrate":200000,"codec.options.encode":{)" +
        options + "}}}}}]}");
    EXPECT_FALSE(result.isComplete);
    EXPECT_EQ(result.faults.back().place.link, std::pair(2LL, 3LL));
}

TEST(ValidatingAJob, SuggestsTheNearestCodec)
{
    const DocumentFaults result =
        ValidateDocument(With(kGoodJob, "CODEC_ID_H264", "CODEC_ID_H246"), "job.json");
    ASSERT_EQ(result.faults.size(), 1U);
    const DocumentFault& fault = result.faults.front();
    EXPECT_EQ(fault.kind, DocumentFault::Encoder);
    EXPECT_EQ(fault.place.Text(), "job.json: link 3 -> 2, video stream 0, codec_id");
    EXPECT_EQ(fault.pointer, "/edges/1/data/data/format_codec_video/codec_id");
    EXPECT_EQ(fault.line, 11U);
    EXPECT_EQ(fault.column, 19U);
    EXPECT_EQ(fault.found, "\"CODEC_ID_H246\"");
    EXPECT_EQ(fault.length, 15U);
    ASSERT_FALSE(fault.nearest.empty());
    EXPECT_EQ(fault.nearest.front(), "CODEC_ID_H264");
}

TEST(ValidatingAJob, TellsAllFaultsInTheOrderOfTheText)
{
    std::string text = With(kGoodJob, "\"mp4\"", "\"mp5\"");
    text = With(text, "\"bitrate\": 400000", "\"bitrat\": 400000");
    text = With(text, "\"layout\": \"STEREO\"", "\"layout\": \"STERO\"");
    text = With(text, "[25, 1]", "[25, 0]");
    EXPECT_THAT(
        FaultLines(text),
        ElementsAre(
            "4:57 /vertices/1/data/data/target/container container: node 2, container: the installed FFmpeg "
            "cannot write the container 'mp5'; did you mean 'md5' or 'mp2' or 'mp3'?",
            "11:36 /edges/1/data/data/format_codec_video/bitrat setting: link 3 -> 2, video stream 0: "
            "unknown "
            "setting 'bitrat'; did you mean 'bitrate' or 'bitrate_mode' or 'peakBitrate'?",
            "11:72 /edges/1/data/data/format_codec_video/frameRateRatio form: link 3 -> 2, data: a rational "
            "with the denominator 0",
            "14:67 /edges/3/data/data/format_codec_audio/layout setting: link 4 -> 2, audio stream 1, "
            "layout: "
            "expected a channel layout as STEREO, found 'STERO'; did you mean 'STEREO'?"));
}

TEST(ValidatingAJob, FindsEveryValueThatIsNotOne)
{
    EXPECT_THAT(ChangedJob(R"("bitrate": 400000)", R"("bitrate": 1.5, "profile": true, "tune": [1, 2, 3])"),
                ElementsAre("11:47 /edges/1/data/data/format_codec_video/bitrate form: link 3 -> 2, data: "
                            "expected an integer, a string, a rational, null or a group, found a number that "
                            "is not a 64-bit integer",
                            "11:63 /edges/1/data/data/format_codec_video/profile form: link 3 -> 2, data: "
                            "expected an integer, a string, a rational, null or a group, found true",
                            "11:78 /edges/1/data/data/format_codec_video/tune/0 form: link 3 -> 2, data: "
                            "expected a record (an object with one member), found an integer"));
}

TEST(ValidatingAJob, FindsWhatHasNoPlaceInARecord)
{
    EXPECT_THAT(ChangedJob(R"({"streamRaw": {"id": 0}})", R"({"streamRaw": {"id": 0}, "more": {}})"),
                ElementsAre("5:57 /vertices/2/data/data/more ignored: node 3, data: more than one member; "
                            "only the first one is the record"));
    EXPECT_THAT(ChangedJob(R"("streamRaw": {"id": 0})", R"("streamRaw": {"id": 0, "id": 1})"),
                ElementsAre("5:56 /vertices/2/data/data/streamRaw/id ignored: node 3, id: appears more than "
                            "once; only the first one counts"));
    EXPECT_THAT(ChangedJob(R"("bitrate": 400000)", R"("bitrate": 400000, "bitrate": 5)"),
                ElementsAre("11:55 /edges/1/data/data/format_codec_video/bitrate setting: link 3 -> 2, video "
                            "stream 0, bitrate: appears more than once"));
    EXPECT_THAT(
        ChangedJob(R"({"data": {"streamRaw": {"id": 0}}})", R"({"data": {"streamRaw": {"id": 0}}, "x": 1})"),
        ElementsAre("5:23 /vertices/2/data form: node 3, data: expected a record (an object with one "
                    "member), found an object with 2 members"));
}

TEST(ValidatingAJob, FindsKeysThatNobodyReads)
{
    EXPECT_THAT(ChangedJob("\"vertices\"", "\"comment\": 1, \"vertices\""),
                ElementsAre("2:3 /comment ignored: unknown key 'comment'"));
    EXPECT_THAT(ChangedJob(R"("from": 1, "to": 3)", R"("form": 7, "from": 1, "to": 3, "to": 4)"),
                ElementsAre("9:15 /edges/0/form ignored: link 1 -> 3: unknown key 'form'; did you mean "
                            "'from'?",
                            "9:46 /edges/0/to ignored: link 1 -> 3, to: appears more than once; only the "
                            "first one counts"));
    EXPECT_THAT(FaultLines(With(kGoodJob, "{", R"({"$schema": "job.schema.json",)")), IsEmpty());
}

TEST(ValidatingAJob, FindsNumbersThatAreNone)
{
    // What follows from links that lead nowhere is not told.
    EXPECT_THAT(
        ChangedJob(R"({"id": 3, "data")", R"({"id": "3", "data")"),
        ElementsAre("5:12 /vertices/2/id ignored: id: expected a 64-bit integer, found a string, which "
                    "counts as 0",
                    "9:32 /edges/0/to structure: link 1 -> 3: There is no node 3",
                    "10:23 /edges/1/from structure: link 3 -> 2: There is no node 3"));
    EXPECT_THAT(
        ChangedJob(R"("id": 1, "from": 1, "to": 3)", R"("id": 99999999999999999999, "from": 1.0, "to": 3)"),
        ElementsAre(
            "9:12 /edges/0/id ignored: link 0 -> 3, id: expected a 64-bit integer, found a number, which "
            "counts as 0",
            "9:42 /edges/0/from ignored: from: expected a 64-bit integer, found a number, which counts as "
            "0",
            "9:42 /edges/0/from structure: link 0 -> 3: There is no node 0"));
}

TEST(ValidatingAJob, FindsRecordsOfLinksThatHaveNone)
{
    EXPECT_THAT(
        ChangedJob(R"("from": 1, "to": 3)", R"("from": 1, "to": 3, "data": {"data": {"a": 1}})"),
        ElementsAre("9:43 /edges/0/data ignored: link 1 -> 3, data: a link to a raw stream does not have a "
                    "record"));
}

TEST(ValidatingAJob, FindsLinksThatAGraphRefuses)
{
    EXPECT_THAT(
        ChangedJob(R"({"id": 3, "from": 1, "to": 4})", R"({"id": 3, "from": 1, "to": 3},{"from":1,"to":4})"),
        ElementsAre("12:5 /edges/2 structure: link 1 -> 3: There is already a link from node 1 to "
                    "node 3"));
}

TEST(ValidatingAJob, FindsWhatIsWrongWithNodesAndLinks)
{
    EXPECT_THAT(ChangedJob(R"({"id": 1, "data")", R"({"id": 7}, {"id": 8}, {"id": 1, "data")"),
                ElementsAre("3:12 /vertices/0/id topology: 1 node without links: 7",
                            "3:23 /vertices/1/id topology: 1 node without links: 8"));
    EXPECT_THAT(FaultLines(R"({"vertices":[{"id":1}],"edges":[]})"),
                ElementsAre("1:13 /vertices topology: There is 1 node; a job has at least 2."));
    EXPECT_THAT(
        FaultLines(R"({"vertices":[{"id":1},{"id":2}],"edges":[{"from":1,"to":2},{"from":2,"to":1}]})"),
        ElementsAre("1:20 /vertices/0/id topology: There is a cycle: 1 -> 2 -> 1"));
}

TEST(ValidatingAJob, FindsIdsThatAreRepeatedAndPartsThatAreNotLinked)
{
    // The nodes have no records either, which is told as well.
    EXPECT_THAT(FaultLines(R"({"vertices":[{"id":1},{"id":1},{"id":2}],"edges":[{"from":1,"to":2}]})"),
                Contains("1:29 /vertices/1/id topology: More than one node has the id 1; links reach the "
                         "first one only."));
    EXPECT_THAT(
        FaultLines(R"({"vertices":[{"id":1},{"id":2},{"id":3},{"id":4}],)"
                   R"("edges":[{"from":1,"to":2},{"from":3,"to":4}]})"),
        Contains("1:38 /vertices/2/id topology: The nodes form 2 separate components: {1, 2}, {3, 4}"));
}

TEST(ValidatingAJob, FindsWhatIsNotAList)
{
    for (const std::string value : {"true", "false", "null"})
    {
        EXPECT_THAT(FaultLines(R"({"vertices":[],"edges":)" + value + "}"),
                    ElementsAre("1:24 /edges form: edges: expected an array, found " + value));
    }
}

TEST(ValidatingAJob, FindsRecordsThatAreEmptyOrMissing)
{
    const std::string record = R"({"streamRaw": {"id": 1}})";
    const std::string reason =
        "structure: node 4: expected a 'streamRaw' with one source, found 'data' with 1";
    EXPECT_THAT(ChangedJob(record, "{}"), ElementsAre("6:32 /vertices/3/data/data " + reason));
    EXPECT_THAT(ChangedJob(record, "5"), ElementsAre("6:32 /vertices/3/data/data " + reason));
    EXPECT_THAT(ChangedJob(R"(, "data": {"data": )" + record + "}", ""),
                ElementsAre("6:5 /vertices/3 " + reason));
}

/// A thousand and a hundred of them.
std::string Many(const std::function<std::string(int)>& element)
{
    std::string all;
    for (int i = 0; i < 1100; ++i)
    {
        all += (i == 0 ? "" : ",") + element(i);
    }
    return all;
}

TEST(ValidatingAJob, StopsAfterAThousandFaultsWhereverTheyAre)
{
    const auto id = [](int i) { return "{\"id\":" + std::to_string(i) + "}"; };
    const auto key = [](int i) { return "\"k" + std::to_string(i) + "\":1"; };
    for (const std::string& text :
         {R"({"vertices":[)" + Many(id) + R"(],"edges":[]})",
          R"({"vertices":[)" + Many([](int) { return "1"; }) + "]}", R"({"vertices":[],)" + Many(key) + "}",
          R"({"vertices":[)" + Many([](int) { return "1"; }) + R"(],"edges":[]})",
          With(kGoodJob, R"("metadata": {"title": "One"})", Many([](int) { return R"("odd":1)"; })),
          With(kGoodJob, R"("bitrate": 400000)", Many(key))})
    {
        const DocumentFaults result = ValidateDocument(text);
        EXPECT_EQ(result.faults.size(), 1000U) << text.substr(0, 200);
        EXPECT_FALSE(result.isComplete);
    }
}

TEST(ValidatingAJob, SaysThatThereMayBeMoreWhereARecordHasTooManyValuesThatAreNone)
{
    const DocumentFaults result = ValidateDocument(With(
        kGoodJob, R"("bitrate": 400000)", Many([](int i) { return "\"k" + std::to_string(i) + "\":0.5"; })));
    EXPECT_EQ(result.faults.size(), 100U);
    EXPECT_FALSE(result.isComplete);
}

/// Where each fault of the document is, and what is there.
std::vector<std::string> Places(const std::string& document)
{
    std::vector<std::string> places;
    for (const DocumentFault& fault : ValidateDocument(document).faults)
    {
        places.push_back(fault.pointer + " " + fault.found);
    }
    return places;
}

TEST(ValidatingAJob, FindsValuesByNamesThatAreEmptyOrLikeAPath)
{
    const std::string target = "/vertices/1/data/data/target/";
    const auto places = [](const std::string& members) {
        return Places(With(kGoodJob, R"("metadata": {"title": "One"})", members));
    };
    EXPECT_THAT(places(R"("": 0.5, "a": {"": 1.5})"), ElementsAre(target + " 0.5", target + "a/ 1.5"));
    EXPECT_THAT(
        places(R"("a: b": 0.5, "a": {"b.c": 1.5}, "a.b": {"c": 2.5}, "[0]": 3.5)"),
        ElementsAre(target + "a: b 0.5", target + "a/b.c 1.5", target + "a.b/c 2.5", target + "[0] 3.5"));
    EXPECT_THAT(places(R"("a": {"x": 1}, "a[0": 0.5)"), ElementsAre(target + "a[0 0.5"));
    EXPECT_THAT(places(R"("a": 0.5, "a": 1.5, "ab": 2.5)"),
                ElementsAre(target + "a 0.5", target + "a 1.5", target + "ab 2.5"));
}

TEST(ValidatingAJob, TellsOfANameThatIsTooLongForAPathInWhichRecordItIs)
{
    const DocumentFaults found = ValidateDocument(
        With(kGoodJob, R"("metadata": {"title": "One"})", "\"" + std::string(300, 'x') + "\": 0.5"));
    ASSERT_EQ(found.faults.size(), 1U);
    EXPECT_EQ(found.faults[0].pointer, "/vertices/1/data");
    EXPECT_EQ(found.faults[0].reason,
              "data.target." + std::string(256, 'x') +
                  "...: expected an integer, a string, a rational, null or a group, found a "
                  "number that is not a 64-bit integer");
}

TEST(ValidatingAJob, FindsValuesInsideLists)
{
    const auto places = [](const std::string& chapters) {
        return Places(With(kGoodJob, R"("metadata": {"title": "One"})", "\"chapters\": " + chapters));
    };
    const std::string chapters = "/vertices/1/data/data/target/chapters/";
    EXPECT_THAT(
        places(R"([{"": {"start": 0, "end": 2.5}}, {"": 3.5}, {"": {"list": [{"a": 1}, {"b": 4.5}]}}])"),
        ElementsAre(chapters + "0//end 2.5", chapters + "1/ 3.5", chapters + "2//list/1/b 4.5"));
    EXPECT_THAT(places(R"([{"": {"start": 1, "end": 2}}, [[1]]])"), ElementsAre(chapters + "1 [[1]]"));
}

TEST(ValidatingAJob, TellsSettingsApartThatHaveTheBeginningOfAPath)
{
    EXPECT_THAT(Places(With(kGoodJob, R"("bitrate": 400000)",
                            R"("bitrate": 9000, "codec": 5, "codec.options.encode": {"crf": "odd"})")),
                ElementsAre("/edges/1/data/data/format_codec_video/codec \"codec\"",
                            "/edges/1/data/data/format_codec_video/codec.options.encode/crf \"odd\""));
}

TEST(ValidatingAJob, TellsAValueThatIsWrongFromItsRepetition)
{
    EXPECT_THAT(ChangedJob(R"("bitrate": 400000)", R"("bitrate": "fast", "bitrate": 5)"),
                ElementsAre("11:47 /edges/1/data/data/format_codec_video/bitrate setting: link 3 -> 2, video "
                            "stream 0, bitrate: expected an integer from 1 to 2147483647, found 'fast'",
                            "11:55 /edges/1/data/data/format_codec_video/bitrate setting: link 3 -> 2, video "
                            "stream 0, bitrate: appears more than once"));
}

TEST(ValidatingAJob, TellsUnknownSettingsApartThatNameOthers)
{
    EXPECT_THAT(
        Places(With(kGoodJob, R"("bitrate": 400000)", R"("bitrate": 9000, "bitrat": 5, "a": 1, "x'a'": 2)")),
        ElementsAre("/edges/1/data/data/format_codec_video/bitrat \"bitrat\"",
                    "/edges/1/data/data/format_codec_video/a \"a\"",
                    "/edges/1/data/data/format_codec_video/x'a' \"x'a'\""));
}

TEST(ValidatingAJob, FindsNumbersBeyond32Bits)
{
    EXPECT_THAT(
        ChangedJob(R"("sample_rate": 48000)", R"("sample_rate": 5000000000)"),
        ElementsAre(
            "14:50 /edges/3/data/data/format_codec_audio/sample_rate setting: link 4 -> 2, audio stream 1, "
            "sample_rate: expected an integer from 1 to 2147483647, found 5000000000"));
}

TEST(ValidatingAJob, FindsARecordThatIsANumber)
{
    EXPECT_THAT(
        ChangedJob(R"({"streamRaw": {"id": 1}})", R"({"streamRaw": 5})"),
        ElementsAre("6:46 /vertices/3/data/data/streamRaw structure: node 4, id: expected an integer, "
                    "found nothing"));
}

TEST(ValidatingAJob, SaysMoreThanThatALinkIsWrong)
{
    const std::string text = With(kGoodJob, R"("to": 4})", R"("to": 9})");
    EXPECT_THAT(Places(With(text, R"("layout": "STEREO")", R"("layout": "STERO")")),
                ElementsAre("/edges/2/to 9", R"(/edges/3/data/data/format_codec_audio/layout "STERO")"));
}

TEST(ValidatingAJob, CountsTheSoundOfAContainerUnlessACopyMayBeAnything)
{
    const std::string two = With(
        With(With(kGoodJob, "\"mp4\"", "\"wav\""),
             R"("codec_id": "CODEC_ID_H264", "bitrate": 400000, "frameRateRatio": [25, 1], "PIXELFORMAT": 0)",
             R"("codec_id": "CODEC_ID_PCM_S16LE")"),
        "format_codec_video", "format_codec_audio");
    const std::string text = With(two, "CODEC_ID_AAC", "CODEC_ID_PCM_S16LE");
    EXPECT_THAT(FaultLines(text), ElementsAre("4:43 /vertices/1/data/data/target container: node 2: the "
                                              "container wav cannot hold 2 audio streams"));
    EXPECT_THAT(FaultLines(With(text, R"("layout": "STEREO")", R"("lossless": 1)")), IsEmpty());
}

TEST(ValidatingAJob, FindsNothingInOneWithASubtitle)
{
    EXPECT_THAT(FaultLines(With(
                    With(kGoodJob, R"("codec_id": "CODEC_ID_AAC", "sample_rate": 48000, "layout": "STEREO")",
                         R"("codec_id": "CODEC_ID_MOV_TEXT")"),
                    "format_codec_audio", "format_codec_subtitle")),
                IsEmpty());
}

TEST(ValidatingAJob, FindsARawStreamThatNothingIsMadeOf)
{
    // What else is wrong with such a job does not matter here.
    EXPECT_THAT(ChangedJob(R"("from": 3, "to": 2)", R"("from": 1, "to": 2)"),
                Contains("5:46 /vertices/2/data/data/streamRaw structure: node 3: expected a link from this "
                         "'streamRaw' to a target, found none"));
}

TEST(ValidatingAJob, FindsASourceInThePlaceOfATarget)
{
    const std::string source = R"({"id": 5, "data": {"data": {"source": {"filePath": "b.mkv"}}}})";
    // What else is wrong with such a job does not matter here.
    EXPECT_THAT(Places(With(With(kGoodJob, R"({"id": 1, "data")", source + R"(, {"id": 1, "data")"),
                            R"("from": 4, "to": 2)", R"("from": 4, "to": 5)")),
                Contains("/vertices/0/data/data/source {\"filePath\": \"b.mkv\"}"));
}

TEST(ValidatingAJob, FindsWhatIsMissing)
{
    const DocumentFaults result = ValidateDocument(With(kGoodJob, R"("container": "mp4", )", ""));
    ASSERT_EQ(result.faults.size(), 1U);
    EXPECT_EQ(result.faults.front().Sentence(), "node 2, container: expected a string, found nothing");
    EXPECT_EQ(result.faults.front().pointer, "/vertices/1/data/data/target");
    EXPECT_EQ(result.faults.front().found, "nothing");
    EXPECT_EQ(result.faults.front().expected, "a string");
    EXPECT_THAT(FaultLines(R"({"edges":[],"edgse":[]})"),
                ElementsAre("1:1  form: vertices: expected an array, found nothing",
                            "1:13 /edgse ignored: unknown key 'edgse'; did you mean 'edges'?"));
    EXPECT_THAT(FaultLines(R"({"vertices":{},"edges":[1,{}]})"),
                ElementsAre("1:13 /vertices form: vertices: expected an array, found an object",
                            "1:25 /edges/0 form: expected an object, found a number",
                            "1:27 /edges/1 ignored: from: expected a 64-bit integer, found "
                            "nothing, which counts as 0",
                            "1:27 /edges/1 ignored: to: expected a 64-bit integer, found "
                            "nothing, which counts as 0"));
}

TEST(ValidatingAJob, LooksAtListsOfATargetAndASource)
{
    EXPECT_THAT(
        ChangedJob(R"("filePath": "out.mp4")",
                   R"("filePath": "", "chapters": [{"": {"start": 5, "end": 4}}])"),
        ElementsAre("4:76 /vertices/1/data/data/target/filePath setting: node 2, filePath: expected "
                    "the name of a file, found ''",
                    "4:98 /vertices/1/data/data/target/chapters/0/ setting: node 2, chapters: a chapter "
                    "has 'start' and 'end' in microseconds, of which 'end' is not the earlier one, "
                    "and may have 'title', a text"));
    EXPECT_THAT(
        ChangedJob(R"("filePath": "in.mkv")", R"("filePath": "in.mkv", "leftOut": [{"": 1}])"),
        ElementsAre("6:53 /vertices/3/data/data/streamRaw/id setting: node 4, id: 'leftOut' of node 1 "
                    "says that stream 1 is left out"));
    const DocumentFaults twice =
        ValidateDocument(With(kGoodJob, R"("filePath": "in.mkv")",
                              R"("filePath": "in.mkv", "leftOut": [{"": 5}, {"": 6}, {"": 5}])"));
    ASSERT_EQ(twice.faults.size(), 1U);
    EXPECT_EQ(twice.faults[0].pointer, "/vertices/0/data/data/source/leftOut/2/");
    EXPECT_THAT(Places(With(kGoodJob, R"("filePath": "in.mkv")",
                            R"("filePath": "in.mkv", "leftOut": [{"": 5}, {"": -1}])")),
                ElementsAre("/vertices/0/data/data/source/leftOut/1/ -1"));
    EXPECT_THAT(Places(With(kGoodJob, R"("filePath": "out.mp4")",
                            R"("filePath": "out.mp4", "attachments": [{"": 5}, {"": -1}],)"
                            R"( "chapters": [{"": {"start": 1, "end": 4}}, {"": {"start": 5, "end": 4}}])")),
                ElementsAre("/vertices/1/data/data/target/attachments/1/ -1",
                            "/vertices/1/data/data/target/chapters/1/ {\"start\": 5, \"end\": 4}"));
    EXPECT_THAT(Places(With(kGoodJob, R"("filePath": "out.mp4")",
                            R"("filePath": "out.mp4", "chapters": [{"": {"start": 1, "end": 4, "title": ")" +
                                std::string(90000, 'a') + R"("}}])")),
                ElementsAre(testing::StartsWith("/vertices/1/data/data/target/chapters [{")));
    EXPECT_THAT(ChangedJob(R"({"streamRaw": {"id": 0}})", R"({"streamRaw": {"id": -1}})"),
                ElementsAre("5:53 /vertices/2/data/data/streamRaw/id setting: node 3, id: expected the index "
                            "of a stream, found -1"));
}

TEST(ValidatingAJob, LooksAtOptionsOfTheInstalledEncoder)
{
    EXPECT_THAT(
        ChangedJob(R"("PIXELFORMAT": 0)", R"("codec.options.encode": {"crf": 23, "crff": 1})"),
        ElementsAre("11:126 /edges/1/data/data/format_codec_video/codec.options.encode/crff encoder: link "
                    "3 -> 2, video stream 0, codec.options.encode.crff: encoder libx264 does not have an "
                    "option 'crff'"));
}

TEST(ValidatingAJob, NamesCodecsThatAContainerHolds)
{
    const DocumentFaults result = ValidateDocument(With(kGoodJob, "\"mp4\"", "\"webm\""));
    ASSERT_FALSE(result.faults.empty());
    const DocumentFault& fault = result.faults.front();
    EXPECT_EQ(fault.kind, DocumentFault::Container);
    EXPECT_EQ(fault.pointer, "/edges/1/data/data/format_codec_video");
    EXPECT_THAT(fault.Sentence(),
                testing::StartsWith("link 3 -> 2, video stream 0: the container webm cannot hold "
                                    "CODEC_ID_H264; it holds CODEC_ID_VP9"));
    EXPECT_THAT(fault.nearest, testing::Contains("CODEC_ID_VP8"));
}

TEST(ValidatingAJob, OpensNoFile)
{
    // A source that is there is not looked at either: it is not a media file.
    TemporaryFolder folder;
    const std::string name = (folder / "in.mkv").string();
    WriteFile(name, "no media");
    EXPECT_THAT(ChangedJob("in.mkv", name), IsEmpty());
}

TEST(ValidatingAFile, NamesItInItsFaults)
{
    TemporaryFolder folder;
    const std::string name = (folder / "job.json").string();
    WriteFile(name, With(kGoodJob, "mp4\",", "\","));
    const DocumentFaults result = ValidateFile(name);
    ASSERT_EQ(result.faults.size(), 1U);
    EXPECT_EQ(result.faults.front().place.file, name);
    EXPECT_THROW(ValidateFile((folder / "none.json").string()), Core::CoreException);
}

} // namespace
