#include "Tests/Support/MediaTest.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor::Testing;

/// A change to a job that can be run, and what is wrong then.
struct Break
{
    const char* name;
    const char* from;
    const char* to;
    std::vector<std::string> sentences; ///< none: the job can still be run
};

void PrintTo(const Break& entry, std::ostream* os) { *os << entry.name; }

const std::string kVideo = "link 3 -> 2, video stream 0";
const std::string kAudio = "link 4 -> 2, audio stream 1";

/// `job check` promises what `job run` does: both are asked about every job.
class JobCheckAndRun : public MediaTest, public testing::WithParamInterface<Break>
{
protected:
    JobCheckAndRun()
    {
        Write("in.mkv", TinyClip());
        ExpectQuietSuccess(New("mp4-h264-aac", "in.mkv", "out.mp4"));
    }
};

TEST_P(JobCheckAndRun, Agree)
{
    const Break& entry = GetParam();
    Edit(entry.from, entry.to);
    std::string lines;
    for (const std::string& sentence : entry.sentences)
    {
        lines += "  " + sentence + "\n";
    }
    const bool valid = entry.sentences.empty();
    const ProcessResult check = Zconf({"job", "check", "job.json"});
    EXPECT_EQ(check.exitCode, valid ? 0 : 1);
    EXPECT_EQ(check.messages, "");
    EXPECT_EQ(check.output, std::string("job.json: ") + (valid ? "valid" : "not valid") +
                                ", 4 nodes and 4 links\n" + lines);
    const ProcessResult run = Zconf({"job", "run", "--dry-run", "job.json"});
    EXPECT_EQ(run.exitCode, valid ? 0 : 2);
    // The notes tell the size of the files.
    const std::string messages =
        valid ? "zconf: note: '" : "zconf: job.json: " + entry.sentences.front() + "\n";
    EXPECT_EQ(valid ? run.messages.substr(0, messages.size()) : run.messages, messages);
    EXPECT_EQ(run.output.empty(), !valid);
}

const Break kBreaks[] = {
    {"Nothing", "in.mkv", "in.mkv", {}},
    {"UnknownSetting", R"("preset":"medium")", R"("odd":1)", {kVideo + ": unknown setting 'odd'"}},
    {"TextForANumber",
     R"("bitrate_mode":"VBR")",
     R"("quality":"good")",
     {kVideo + ", quality: expected an integer from 0 to 32, found 'good'"}},
    {"GroupForAText",
     R"("preset":"medium")",
     R"("preset":{"a":1})",
     {kVideo + ", preset: expected a string, found a group"}},
    {"NumberForAGroup",
     R"("codec.options.encode":{})",
     R"("codec.options.encode":1)",
     {kVideo + ", codec.options.encode: expected a group, found 1"}},
    {"NegativeWidth",
     R"("width":64)",
     R"("width":-640)",
     {kVideo + ", width: expected an integer from 1 to 65535, found -640"}},
    {"WidthBeyond32Bits",
     R"("width":64)",
     R"("width":4294967456)",
     {kVideo + ", width: expected an integer from 1 to 65535, found 4294967456"}},
    {"RateOfZero",
     R"("frameRateRatio":[25,1])",
     R"("frameRateRatio":[0,1])",
     {kVideo + ", frameRateRatio: expected a positive rational as 30000/1001, found 0/1"}},
    {"NegativeRate",
     R"("frameRateRatio":[25,1])",
     R"("frameRateRatio":[-25,1])",
     {kVideo + ", frameRateRatio: expected a positive rational as 30000/1001, found -25/1"}},
    {"UnknownProfile",
     R"("profile":"high")",
     R"("profile":"highest")",
     {kVideo + ", profile: encoder libx264 does not have a profile 'highest'"}},
    {"UnknownPreset",
     R"("preset":"medium")",
     R"("preset":"glacial")",
     {kVideo + ", preset: encoder libx264 does not have a preset 'glacial'"}},
    {"UnknownTune",
     R"("preset":"medium")",
     R"("tune":"psychic")",
     {kVideo + ", tune: encoder libx264 does not have a tune 'psychic'"}},
    {"UnknownBitrateMode",
     R"("bitrate_mode":"VBR")",
     R"("bitrate_mode":"ABR")",
     {kVideo + ", bitrate_mode: expected CBR, CBR_AUTO or VBR, found 'ABR'; did you mean 'CBR' or 'VBR'?"}},
    {"NegativeBitrate",
     R"("preset":"medium")",
     R"("peakBitrate":-1)",
     {kVideo + ", peakBitrate: expected an integer from 1 to 2147483647, found -1"}},
    {"UnknownPixelFormat",
     R"("PIXELFORMAT":0)",
     R"("PIXELFORMAT":1)",
     {kVideo + ", PIXELFORMAT: expected the number of a pixel format, found 1"}},
    {"PixelFormatBeyond32Bits",
     R"("PIXELFORMAT":0)",
     R"("PIXELFORMAT":4294967296)",
     {kVideo + ", PIXELFORMAT: expected the number of a pixel format, found 4294967296"}},
    {"UnsupportedPixelFormat",
     R"("PIXELFORMAT":0)",
     R"("PIXELFORMAT":28)",
     {kVideo + ", PIXELFORMAT: encoder libx264 does not support pixel format RGBA"}},
    {"NegativeAspect",
     R"("aspect_x":1)",
     R"("aspect_x":-1)",
     {kVideo + ", aspect_x: expected an integer from 0 to 4294967295, found -1"}},
    {"MissingStream",
     R"("streamRaw":{"id":0})",
     R"("streamRaw":{"id":7})",
     {"node 3, id: 'in.mkv' does not have a stream 7"}},
    {"NoStreamId",
     R"("streamRaw":{"id":0})",
     R"("streamRaw":{"id":"0"})",
     {"node 3, id: expected an integer, found '0'"}},
    {"MissingInput",
     R"("filePath":"in.mkv")",
     R"("filePath":"gone")",
     {"node 1, filePath: gone: cannot be read: No such file or directory"}},
    {"InputWithoutAName",
     R"("filePath":"in.mkv")",
     R"("path":"in.mkv")",
     {"node 1, filePath: expected a string, found nothing"}},
    {"InputWithANulByte",
     R"("filePath":"in.mkv")",
     R"("filePath":"in.mkv\u0000")",
     {"node 1, filePath: a name cannot hold a NUL byte"}},
    {"SourceOfAnotherType",
     R"("sourceFile")",
     R"("camera")",
     {"node 1, $$TYPE_ID$$: expected 'sourceFile', found 'camera'"}},
    {"RecordWithoutSource",
     R"("source":{)",
     R"("origin":{)",
     {"node 1: expected a 'source', found 'origin'"}},
    {"MissingFolder",
     R"("filePath":"out.mp4")",
     R"("filePath":"gone/out.mp4")",
     {"node 2, filePath: cannot write 'gone/out.mp4': No such file or directory"}},
    {"FolderThatIsAFile",
     R"("filePath":"out.mp4")",
     R"("filePath":"job.json/out.mp4")",
     {"node 2, filePath: cannot write 'job.json/out.mp4': Not a directory"}},
    {"FolderForATarget",
     R"("filePath":"out.mp4")",
     R"("filePath":".")",
     {"node 2, filePath: cannot write '.': Is a directory"}},
    {"SourceForATarget",
     R"("filePath":"out.mp4")",
     R"("filePath":"./in.mkv")",
     {"node 2, filePath: the source and the target are the same file: './in.mkv'"}},
    {"TargetWithoutAName",
     R"("filePath":"out.mp4")",
     R"("filePath":"")",
     {"node 2, filePath: expected the name of a file, found ''"}},
    {"TargetWithANulByte",
     R"("filePath":"out.mp4")",
     R"("filePath":"out\u0000.mp4")",
     {"node 2, filePath: a name cannot hold a NUL byte"}},
    {"UnknownContainer",
     R"("container":"mp4")",
     R"("container":"a64x")",
     {"node 2, container: the installed FFmpeg cannot write the container 'a64x'; did you mean 'a64' or "
      "'adx'?"}},
    {"CodecThatTheContainerCannotHold",
     R"("codec_id":"CODEC_ID_AAC")",
     R"("codec_id":"CODEC_ID_WAVPACK")",
     {kAudio + ": the container mp4 cannot hold CODEC_ID_WAVPACK; it holds CODEC_ID_AAC, CODEC_ID_MP2 or "
               "CODEC_ID_MP3; CODEC_ID_WAVPACK goes into matroska, wv or nut",
      kAudio + ", profile: encoder wavpack does not have a profile 'aac_low'"}},
    {"NoEncoder",
     "CODEC_ID_H264",
     "CODEC_ID_RV40",
     {kVideo + ", codec_id: the installed FFmpeg does not have an encoder for CODEC_ID_RV40; for mp4 it can "
               "encode CODEC_ID_H264, CODEC_ID_MPEG1VIDEO or CODEC_ID_MPEG2VIDEO"}},
    {"DisabledEncoder",
     "CODEC_ID_H264",
     "CODEC_ID_H265",
     {kVideo + ", codec_id: encoding CODEC_ID_H265 is disabled unless its encoder is named ('libx265', under "
               "preferred_encoder)"}},
    {"CodecOfAnotherKind",
     "CODEC_ID_H264",
     "CODEC_ID_AAC",
     {kVideo + ", codec_id: expected a codec for video, found 'CODEC_ID_AAC'"}},
    {"UnknownEncoder",
     R"("preset":"medium")",
     R"("preferred_encoder":"x")",
     {kVideo + ", preferred_encoder: the installed FFmpeg does not have an encoder 'x' for CODEC_ID_H264; it "
               "has 'libx264'"}},
    {"UnknownOption",
     R"("codec.options.encode":{})",
     R"("codec.options.encode":{"no_such":1})",
     {kVideo + ", codec.options.encode.no_such: encoder libx264 does not have an option 'no_such'"}},
    {"TwoPassesOfAac",
     R"("codec_id":"CODEC_ID_AAC")",
     R"("two_pass_encoding":1,"codec_id":"CODEC_ID_AAC")",
     {kAudio + ", two_pass_encoding: encoder aac does not support two passes"}},
    {"MergedSoundInVideo",
     R"("streamRaw":{"id":0})",
     R"("streamRaw":{"id":0,"$$MERGE_WITH$$":[{"":{"$$MERGE_WITH$$":1}}]})",
     {kVideo + ": audio stream 1 cannot be merged into it"}},
    {"MergedWithNothing",
     R"("streamRaw":{"id":0})",
     R"("streamRaw":{"id":0,"$$MERGE_WITH$$":[{"":{"a":1}}]})",
     {"node 3, $$MERGE_WITH$$: expected the number of a stream, found nothing"}},
    {"MergedWithAStreamThatIsNotThere",
     R"("streamRaw":{"id":0})",
     R"("streamRaw":{"id":0,"$$MERGE_WITH$$":[{"":{"$$MERGE_WITH$$":9}}]})",
     {"node 3, $$MERGE_WITH$$: 'in.mkv' does not have a stream 9"}},
    {"UnknownDecoder",
     R"("streamRaw":{"id":0})",
     R"("streamRaw":{"id":0,"decoder":"x"})",
     {"node 3, decoder: there is no decoder 'x' here"}},
    {"AnotherRecordOfTheStream",
     R"("streamRaw":{"id":0})",
     R"("streamRaw":{"id":1})",
     {"link 3 -> 2, audio stream 1: expected the record 'format_codec_audio', found 'format_codec_video'"}},
    {"TextWithANulByte",
     R"("preset":"medium")",
     R"("language":"a\u0000b")",
     {kVideo + ", language: a text with a NUL byte cannot be given to ffmpeg"}},
    {"SeveralThings",
     R"("preset":"medium")",
     R"("preset":1,"odd":2)",
     {kVideo + ", preset: expected a string, found 1", kVideo + ": unknown setting 'odd'"}},
};

INSTANTIATE_TEST_SUITE_P(Breaks, JobCheckAndRun, testing::ValuesIn(kBreaks),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

class JobCheckFiles : public MediaTest
{
protected:
    JobCheckFiles() { Write("in.mkv", TinySound()); }
};

TEST_F(JobCheckFiles, AllFaultsAreListedTopologyFirst)
{
    Write("job.json", R"({"vertices":[
        {"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":"gone"}}}},
        {"id":2,"data":{"data":{"target":{"container":"mp4","filePath":"gone/out.mp4"}}}},
        {"id":3,"data":{"data":{"streamRaw":{"id":0}}}},{"id":9}],
        "edges":[{"from":1,"to":3},{"from":3,"to":2,"data":{"data":{"format_codec_video":{"odd":1}}}}]})");
    const ProcessResult result = Zconf({"job", "check", "job.json"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output,
              "job.json: not valid, 4 nodes and 2 links\n"
              "  1 node without links: 9\n"
              "  node 1, filePath: gone: cannot be read: No such file or directory\n"
              "  link 3 -> 2, video stream 0: unknown setting 'odd'\n"
              "  link 3 -> 2, video stream 0, codec_id: expected the name of a codec, found nothing\n"
              "  node 2, filePath: cannot write 'gone/out.mp4': No such file or directory\n");
}

TEST_F(JobCheckFiles, NodesThatAreNoSourceRawStreamAndTargetAreFaults)
{
    Write("job.json", kValid);
    EXPECT_EQ(Zconf({"job", "check", "job.json"}).output,
              "job.json: not valid, 2 nodes and 1 link\n"
              "  node 2, filePath: expected a string, found nothing\n"
              "  node 2, container: expected a string, found nothing\n"
              "  node 1: expected a 'streamRaw' with one source, found 'data' with 0\n"
              "  link 1 -> 2: expected the record of a codec, found 'data'\n"
              "  link 1 -> 2, codec_id: expected the name of a codec, found nothing\n");
    EXPECT_EQ(Zconf({"job", "check", "--topology", "job.json"}).output,
              "job.json: valid, 2 nodes and 1 link\n");
}

TEST_F(JobCheckFiles, ATargetThatIsThereIsNotAFault)
{
    ExpectQuietSuccess(New("mp3", "in.mkv", "out.mp3"));
    Write("out.mp3", "old");
    EXPECT_EQ(Zconf({"job", "check", "job.json"}).exitCode, 0);
    EXPECT_EQ(Read("out.mp3"), "old");
    ExpectFailure(RunJob(),
                  "job.json: node 2, filePath: 'out.mp3' exists already; the option 'overwrite' replaces it");
}

TEST_F(JobCheckFiles, AnswersScriptsInJson)
{
    ExpectQuietSuccess(New("mp3", "in.mkv", "gone/out.mp3"));
    Edit(R"("bitrate":192000)", R"("bitrate":"\u001b")");
    const ProcessResult result = Zconf({"job", "check", "--json", "job.json"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, R"({
  "valid": false,
  "faults": [{
      "fault": "setting",
      "link": [3, 2],
      "stream_kind": "audio",
      "stream": 0,
      "key": "bitrate",
      "text": "expected an integer from 1 to 2147483647, found '\u001B'"
    }, {
      "fault": "output",
      "node": 2,
      "key": "filePath",
      "text": "cannot write 'gone/out.mp3': No such file or directory"
    }],
  "losses": []
}
)");
    EXPECT_THAT(Zconf({"job", "check", "job.json"}).output, testing::HasSubstr("found '\\x1b'\n"));
}

TEST_F(JobCheckFiles, TwoTargetsAreNotOneFile)
{
    ExpectQuietSuccess(New("mp3", "in.mkv", "out.mp3"));
    Edit(R"({"id":2,)",
         R"({"id":9,"data":{"data":{"t":{"container":"mp3","filePath":"./out.mp3"}}}},{"id":2,)");
    Edit(R"("edges":[)",
         R"("edges":[{"from":3,"to":9,"data":{"data":{"format_codec_audio":{"lossless":1}}}},)");
    const ProcessResult result = Zconf({"job", "check", "job.json"});
    EXPECT_THAT(result.output,
                testing::HasSubstr("node 2, filePath: node 9 has the same target: 'out.mp3'\n"));
    EXPECT_EQ(Zconf({"job", "run", "-n", "job.json"}).exitCode, 2);
}

TEST_F(JobCheckFiles, NothingIsWritten)
{
    ExpectQuietSuccess(New("mp3", "in.mkv", "out.mp3"));
    EXPECT_EQ(Zconf({"job", "check", "job.json"}).exitCode, 0);
    EXPECT_THAT(Files(), testing::ElementsAre("in.mkv", "job.json"));
}

} // namespace
