#include "Media/Presets/PresetFile.h"

#include "Media/MediaException.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TestStreams.h"

#include "Conf/Interfaces/PixelFormatDescription.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;

boost::intrusive_ptr<PresetFile> Read(const std::string& text)
{
    return PresetFile::Read(*Core::MemoryDataInput::Create(text), "p.json");
}

Thrown ExpectRefused(const std::string& text)
{
    return ExpectThrow<PresetFileException>([&] { Read(text); });
}

/// A preset with one stream of the type, with the settings beside its codec.
std::string WithSettings(const std::string& type, const std::string& codec, const std::string& settings)
{
    return R"({"p":{"container":"mp4","$$STREAMS$$":{")" + type + R"(":{"codec_id":")" + codec + R"(",)" +
           settings + "}}}}";
}

TEST(PresetFile, TellsItsStreamsByTypeAndPosition)
{
    const auto preset = Read(R"({"p":{"container":"mp4","$$STREAMS$$":[
        {"audio":{"codec_id":"CODEC_ID_AAC"}},
        {"video":{"codec_id":"CODEC_ID_H264"}},
        {"audio":{"codec_id":"CODEC_ID_AC3"}}]}})");
    EXPECT_EQ(preset->GetProperty().GetName(), "p");
    EXPECT_EQ(preset->GetStreamCount(), 3U);
    std::vector<int> indexes;
    preset->GetStreamIndexes("audio", indexes);
    EXPECT_THAT(indexes, ElementsAre(0, 2));
}

TEST(PresetFile, RefusesAValueWithItsPlaceInTextAndTags)
{
    const Thrown thrown = ExpectRefused(WithSettings("audio", "CODEC_ID_AAC", R"("bitrate":"fast")"));
    EXPECT_EQ(thrown.description,
              "p.json: p.$$STREAMS$$.audio.bitrate: expected a positive integer, found 'fast'");
    EXPECT_EQ(thrown.Get<MediaException::TagFile>(), "p.json");
    EXPECT_EQ(thrown.Get<MediaException::TagKey>(), "p.$$STREAMS$$.audio.bitrate");
    EXPECT_EQ(thrown.file, "Media/Presets/PresetRules");
}

TEST(PresetFile, RefusesNumbersThatNoVideoHas)
{
    const std::string side = "expected an integer from 1 to 65535, found ";
    const std::string format = "expected the name or the number of a pixel format, as YUV420P or 0, found ";
    const std::pair<std::string, std::string> kCases[] = {
        {R"("width":4294967456)", "width: " + side + "4294967456"},
        {R"("width":0)", "width: " + side + "0"},
        {R"("height":65536)", "height: " + side + "65536"},
        {R"("height":"720")", "height: " + side + "'720'"},
        {R"("aspect_x":-1)", "aspect_x: " + side + "-1"},
        {R"("aspect_y":4294967297)", "aspect_y: " + side + "4294967297"},
        {R"("frame_aspect_x":0)", "frame_aspect_x: " + side + "0"},
        {R"("frame_aspect_y":[16,9])", "frame_aspect_y: " + side + "16/9"},
        {R"("PIXELFORMAT":4294967296)", "PIXELFORMAT: " + format + "4294967296"},
        {R"("PIXELFORMAT":1)", "PIXELFORMAT: " + format + "1"},
        {R"("PIXELFORMAT":-2)", "PIXELFORMAT: " + format + "-2"},
        {R"("PIXELFORMAT":"YUV20P")",
         "PIXELFORMAT: " + format + "'YUV20P'; did you mean 'YUV420P' or 'YUV422P' or 'YUV410P'?"},
        {R"("PIXELFORMAT":"")", "PIXELFORMAT: " + format + "''"},
        {R"("frameRateRatio":[0,1])", "frameRateRatio: expected a rate as [30000, 1001], found 0/1"},
        {R"("metadata":3)", "metadata: expected a group, found 3"},
        {R"("language":7)", "language: expected a string, found 7"},
        {R"("codec.options.encode":"x")", "codec.options.encode: expected a group, found 'x'"},
    };
    for (const auto& [settings, sentence] : kCases)
    {
        SCOPED_TRACE(settings);
        EXPECT_EQ(ExpectRefused(WithSettings("video", "CODEC_ID_H264", settings)).description,
                  "p.json: p.$$STREAMS$$.video." + sentence);
    }
}

TEST(PresetFile, TakesPixelFormatsByName)
{
    for (const std::string name : {"YUV422P", "yuv422p", "PIX_FMT_YUV422P"})
    {
        const auto preset = Read(WithSettings("video", "CODEC_ID_H264", R"("PIXELFORMAT":")" + name + "\""));
        EXPECT_EQ(preset->GetProperty()["$$STREAMS$$"]["video"]["PIXELFORMAT"].GetInt64(), PIX_FMT_YUV422P);
    }
}

TEST(PresetFile, RefusesWhatAnEncoderWouldOverlookInSilence)
{
    const std::pair<std::string, std::string> kCases[] = {
        {R"("quality":99)", ".quality: expected an integer from 0 to 32, found 99"},
        {R"("two_pass_encoding":"yes")",
         ".two_pass_encoding: expected an integer, one_pass or two_pass, found 'yes'"},
        {R"("two_pass":"yes")", ": unknown setting 'two_pass'; did you mean 'two_pass_encoding'?"},
        {R"("maxIFrameInterval":-3)", ".maxIFrameInterval: expected a number from -1 on, found -3"},
        {R"("maxIFrameInterval":"-3")", ".maxIFrameInterval: expected a number from -1 on, found '-3'"},
        {R"("maxBFrameSequence":[-3,1])", ".maxBFrameSequence: expected a number from -1 on, found -3/1"},
        {R"("dpi":{})", ".dpi: expected a number from -1 on, found a group"},
        {R"("odd":1)", ": unknown setting 'odd'"},
    };
    for (const auto& [settings, sentence] : kCases)
    {
        EXPECT_EQ(ExpectRefused(WithSettings("video", "CODEC_ID_H264", settings)).description,
                  "p.json: p.$$STREAMS$$.video" + sentence);
    }
    EXPECT_NO_THROW(Read(WithSettings("video", "CODEC_ID_H264", R"("maxIFrameInterval":-1)")));
    EXPECT_NO_THROW(Read(WithSettings("video", "CODEC_ID_H264", R"("quality":0)")));
}

TEST(PresetFile, RefusesKeysThatNobodyReads)
{
    const std::string streams = R"("$$STREAMS$$":{"video":{"codec_id":"CODEC_ID_H264"}}}})";
    EXPECT_EQ(ExpectRefused(R"({"p":{"container":"mp4","contaner":"mp4",)" + streams).description,
              "p.json: p: unknown key 'contaner'; did you mean 'container'?");
    for (const std::string key : {"name", "id", "base_id", "$$FILTERS$$"})
    {
        const std::string value = key == "$$FILTERS$$" ? "{}" : "\"x\"";
        EXPECT_NO_THROW(Read(R"({"p":{"container":"mp4",")" + key + "\":" + value + "," + streams)) << key;
    }
}

TEST(PresetFile, SuggestsTheNameThatWasMeant)
{
    const std::pair<std::string, std::string> kCases[] = {
        {R"("layout":"Stereo")",
         "layout: expected a channel layout, as \"STEREO\", found 'Stereo'; did you mean "
         "'STEREO' or 'STEREO_DOWNMIX'?"},
        {R"("bitrate_mode":"cbr")", "bitrate_mode: expected CBR, CBR_AUTO or VBR, found 'cbr'; did you mean "
                                    "'CBR' or 'CBR_AUTO' or 'VBR'?"},
        {R"("sample_format":"fltp")", "sample_format: expected a sample format, as \"SAMPLE_FMT_S16\", found "
                                      "'fltp'; did you mean 'SAMPLE_FMT_FLTP' or 'SAMPLE_FMT_FLT'?"},
    };
    for (const auto& [settings, sentence] : kCases)
    {
        EXPECT_EQ(ExpectRefused(WithSettings("audio", "CODEC_ID_AAC", settings)).description,
                  "p.json: p.$$STREAMS$$.audio." + sentence);
    }
}

TEST(PresetFile, TakesTheLargestAndTheSmallestOfWhatVideosHave)
{
    EXPECT_NO_THROW(Read(WithSettings("video", "CODEC_ID_H264", R"("width":65535,"height":1)")));
    EXPECT_NO_THROW(Read(WithSettings("video", "CODEC_ID_H264", R"("PIXELFORMAT":-1)")));
    EXPECT_NO_THROW(Read(WithSettings("video", "CODEC_ID_H264", R"("PIXELFORMAT":320)")));
}

TEST(PresetFile, RefusesWhatIsNotARecord)
{
    EXPECT_EQ(ExpectRefused("").description, "p.json: line 1, column 1: The document is empty.");
    EXPECT_EQ(ExpectRefused("[]").description, "p.json: a preset is a record (an object with one member)");
    EXPECT_EQ(ExpectRefused(R"({"p":1})").description, "p.json: p: expected a group, found 1");
    const Thrown thrown = ExpectRefused(R"({"a":{},"b":{}})");
    EXPECT_EQ(thrown.description, "p.json: record: expected a record (an object with one member), found an "
                                  "object with 2 members");
    EXPECT_EQ(thrown.Get<MediaException::TagFile>(), "p.json");
}

TEST(PresetFile, ThatIsMissingIsNamedWithTheReason)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "gone.json").string();
    const Thrown thrown = ExpectThrow<PresetFileException>([&] { PresetFile::Open(name); });
    EXPECT_EQ(thrown.description, "Cannot open '" + name + "': No such file or directory");
    EXPECT_EQ(thrown.Get<MediaException::TagFile>(), name);
    EXPECT_EQ(ExpectThrow<PresetFileException>([&] { PresetFile::Open(folder.Path()); }).description,
              "Cannot read '" + folder.Path().string() + "': Is a directory");
    EXPECT_EQ(ExpectThrow<PresetFileException>([] { PresetFile::Open(""); }).description,
              "Cannot open '': No such file or directory");
}

TEST(PresetFile, LetsTheFailureOfAStreamPass)
{
    TestInput input(R"({"p":)", std::string::npos, 2);
    EXPECT_EQ(ExpectThrow<Core::CoreException>([&] { PresetFile::Read(input, "p.json"); }).description,
              "test stream: no more");
}

TEST(PresetFile, OfAnyDepthEndsInAnError)
{
    ExpectRefused(std::string(1000000, '['));
    std::string deep;
    for (int i = 0; i < 600; ++i)
    {
        deep += R"({"p":)";
    }
    ExpectRefused(deep + "1" + std::string(600, '}'));
}

TEST(PresetFile, RefusesOptionsThatAJobRefuses)
{
    const std::pair<std::string, std::string> kCases[] = {
        {R"("codec.options.encode":{"stats":"x"})", "codec.options.encode.stats: the option 'stats' of "
                                                    "encoder libx264 cannot be set by a job or a preset"},
        {R"("codec.options.encode":{"x264-params":"dump-yuv=x"})",
         "codec.options.encode.x264-params: x264's parameter 'dump-yuv' cannot be set by a job or a preset"},
        {R"("codec.options.encode":{"crf":{}})",
         "codec.options.encode.crf: expected an integer, a string or a rational, found a group"},
        {R"("codec.options.encode":[{"crf":1},{"crf":2}])",
         "codec.options.encode.crf: appears more than once"},
        {R"("codec.options.analyze":{"vstats_file":"x"})",
         "codec.options.analyze.vstats_file: the option 'vstats_file' of decoders cannot be set by a job or "
         "a preset"},
        {R"("metadata":{"a=b":"c"})", "metadata.a=b: the name of a tag is a visible text without '='"},
    };
    for (const auto& [settings, sentence] : kCases)
    {
        SCOPED_TRACE(settings);
        EXPECT_EQ(ExpectRefused(WithSettings("video", "CODEC_ID_H264", settings)).description,
                  "p.json: p.$$STREAMS$$.video." + sentence);
    }
    EXPECT_NO_THROW(Read(WithSettings("video", "CODEC_ID_H264", R"("codec.options.encode":{"crf":20})")));
    EXPECT_NO_THROW(Read(WithSettings("video", "CODEC_ID_H264", R"("codec.options.analyze":{"lowres":1})")));
}

TEST(PresetFile, RefusesNumbersThatAJobRefuses)
{
    const std::string positive = "expected an integer from 1 to 2147483647, found ";
    const std::pair<std::string, std::string> kCases[] = {
        {R"("bitrate":4294967296)", "bitrate: " + positive + "4294967296"},
        {R"("peakBuffer":0)", "peakBuffer: " + positive + "0"},
        {R"("number_of_threads":-1)",
         "number_of_threads: expected an integer from 0 to 2147483647, or auto, found -1"},
        {R"("frameRateRatio":[4294967296,1])",
         "frameRateRatio: expected a positive rational as 30000/1001, found 4294967296/1"},
        {R"("keyOnly":"1")", "keyOnly: expected an integer, found '1'"},
        {R"("codec_fourcc":4294967296)", "codec_fourcc: expected four printable characters or an integer "
                                         "from 0 to 4294967295, found 4294967296"},
    };
    for (const auto& [settings, sentence] : kCases)
    {
        SCOPED_TRACE(settings);
        EXPECT_EQ(ExpectRefused(WithSettings("video", "CODEC_ID_H264", settings)).description,
                  "p.json: p.$$STREAMS$$.video." + sentence);
    }
}

TEST(PresetFile, RefusesStreamsThatAreNotOfItsForm)
{
    const auto refusal = [](const std::string& streams) {
        return ExpectRefused(R"({"p":{"container":"mp4","$$STREAMS$$":)" + streams + "}}")
            .description.value_or("");
    };
    const std::string begin = "p.json: p.$$STREAMS$$";
    EXPECT_EQ(refusal("{}"), begin + ": expected a group of at least one stream, found an empty one");
    EXPECT_EQ(refusal("3"), begin + ": expected a group of at least one stream, found 3");
    EXPECT_EQ(refusal(R"({"film":{}})"),
              begin +
                  ": expected a stream type (audio, video, subtitles_video, subtitles_text), found 'film'");
    EXPECT_EQ(refusal(R"({"video":1})"), begin + ".video: expected a group of settings, found 1");
    EXPECT_EQ(refusal(R"({"video":{}})"),
              begin + ".video.codec_id: expected a video codec, as \"CODEC_ID_H264\", found nothing");
    EXPECT_EQ(refusal(R"({"audio":{"codec_id":5}})"),
              begin + ".audio.codec_id: expected an audio codec, as \"CODEC_ID_AAC\", found 5");
    EXPECT_EQ(refusal(R"({"subtitles_text":{"codec_id":"CODEC_ID_H264"}})"),
              begin + ".subtitles_text.codec_id: expected a subtitle codec, as \"CODEC_ID_SRT\", found "
                      "'CODEC_ID_H264'");
    EXPECT_EQ(refusal(R"({"video":{"codec_id":"none of them"}})"),
              begin + ".video.codec_id: expected a video codec, as \"CODEC_ID_H264\", found 'none of them'");
}

TEST(PresetFile, SuggestsNothingWhereNoNameIsNear)
{
    EXPECT_EQ(ExpectRefused(WithSettings("audio", "CODEC_ID_AAC", R"("bitrate_mode":"VBR_ALWAYS_ON_TIME")"))
                  .description.value_or("")
                  .find("did you mean"),
              std::string::npos);
}

} // namespace
