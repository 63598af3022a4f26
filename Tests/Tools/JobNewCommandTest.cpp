#include "Tests/Support/Clip.h"
#include "Tests/Support/CompactJson.h"
#include "Tests/Support/ZconfTest.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;
using Conf::ITranscodingMetaGraph;
using Core::Property;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class JobNew : public ZconfTest
{
protected:
    JobNew() { Write("in.mp4", TinySound()); }

    static std::vector<std::string> Command(std::vector<std::string> more = {})
    {
        std::vector<std::string> words = {"job", "new", "-p", "mp3", "-i", "in.mp4", "-t", "out.mp3"};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }

    static boost::intrusive_ptr<ITranscodingMetaGraph> Load(const std::string& text)
    {
        auto graph = ITranscodingMetaGraph::Create();
        graph->Load(Core::MemoryDataInput::Create(text));
        return graph;
    }

    /// Runs a copy of the program with a preset that is in `usr` here, and nowhere else, as its name says.
    void ExpectToFindAPresetInUsr(const std::string& program, const std::string& libraries)
    {
        namespace fs = std::filesystem;
        fs::create_directories((Folder() / program).parent_path());
        fs::copy_file(ZCONF_PROGRAM, Folder() / program);
        fs::create_directories(Folder() / "usr/share/zelnor/Presets");
        fs::copy_file(ZELNOR_SOURCE_DIR "/Presets/mp4-h264-aac.json",
                      Folder() / "usr/share/zelnor/Presets/only-there.json");
        Write("in.mp4", TinyClip());
        ProcessOptions options;
        options.environment = {"LD_LIBRARY_PATH=" + libraries};
        options.folder = Folder().string();
        const ProcessResult result =
            RunProcess({program, "job", "new", "-p", "only-there", "-i", "in.mp4", "-t", "o"}, options);
        ExpectQuietSuccess(result);
        EXPECT_EQ((*Load(result.output))[2].GetName(), "mp4-h264-aac");
    }

    /// A preset file whose streams are `streams`.
    std::string Preset(const std::string& streams) const
    {
        return Write("preset.json", R"({"p":{"container":"mp4","$$STREAMS$$":)" + streams + "}}");
    }
    ProcessResult NewFrom(const std::string& preset) const
    {
        return Zconf({"job", "new", "-p", preset, "-i", "in.mp4", "-t", "o.mp4"});
    }
};

TEST_F(JobNew, WritesTheDocumentToStandardOutputAndNothingElse)
{
    const ProcessResult result = Zconf(Command());
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, CompactJson(R"({
        "vertices": [
            {"id": 1, "data": {"data": {"source": {
                "$$TYPE_ID$$": "sourceFile",
                "filePath": "in.mp4"
            }}}},
            {"id": 2, "data": {"data": {"mp3": {
                "$$TYPE_ID$$": "format_mp3",
                "name": "MP3",
                "id": "mp3",
                "container": "mp3",
                "filePath": "out.mp3",
                "metadata": {}
            }}}},
            {"id": 3, "data": {"data": {"streamRaw": {"id": 0}}}}
        ],
        "edges": [
            {"id": 1, "from": 1, "to": 3},
            {"id": 2, "from": 3, "to": 2, "data": {"data": {"format_codec_audio": {
                "metadata": {},
                "codec.options.encode": {},
                "codec.options.analyze": {},
                "name": "mp3",
                "codec_id": "CODEC_ID_MP3",
                "bitrate_mode": "CBR",
                "bitrate": 192000,
                "sample_format": "SAMPLE_FMT_S16P",
                "sample_rate": 44100,
                "layout": "STEREO"
            }}}}
        ]
    })"));
}

TEST_F(JobNew, EveryStreamOfThePresetGetsARawStreamBetweenSourceAndTarget)
{
    Write("in.mp4", TinyClip());
    ExpectQuietSuccess(
        Zconf({"job", "new", "-p", "mp4-h264-aac", "-i", "in.mp4", "-t", "o.mp4", "-o", "job.json"}));
    const auto graph = Load(Read("job.json"));
    EXPECT_TRUE(graph->TopologyIsValid());
    EXPECT_EQ(graph->GetNodesCount(), 4);
    std::vector<Conf::NodeId> outputs;
    graph->Outputs(1, outputs);
    EXPECT_THAT(outputs, ElementsAre(3, 4));
    std::vector<Conf::NodeId> inputs;
    graph->Inputs(2, inputs);
    EXPECT_THAT(inputs, ElementsAre(3, 4));
    EXPECT_EQ((*graph)[1], ITranscodingMetaGraph::MakeInFileDescription("in.mp4"));
    EXPECT_EQ((*graph)[3], ITranscodingMetaGraph::MakeRawStreamDescription(0));
    EXPECT_EQ((*graph)[4], ITranscodingMetaGraph::MakeRawStreamDescription(1));
    EXPECT_EQ(graph->GetLink(3, 2).GetName(), "format_codec_video");
    EXPECT_EQ(graph->GetLink(3, 2)["codec_id"].GetString(), "CODEC_ID_H264");
    EXPECT_EQ(graph->GetLink(4, 2)["codec_id"].GetString(), "CODEC_ID_AAC");
}

TEST_F(JobNew, ARealClipMakesAValidJobWithPresetsThatShip)
{
    const ProcessResult clip = RunProcess(
        {"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc=s=64x48:d=0.2", "-f", "lavfi", "-i",
         "sine=d=0.2", "-ac", "2", "-pix_fmt", "yuv420p", "-y", (Folder() / "clip.mkv").string()});
    ASSERT_EQ(clip.exitCode, 0) << clip.messages;
    // A preset of one kind of stream leaves out the other, and says so.
    const auto left = [](const std::string& stream, const std::string& kind) {
        return "zconf: note: clip.mkv: " + stream + " is left out; the output file has no " + kind + "\n";
    };
    // All of them are run in the tests of the library.
    for (const std::string name : {"mp4-h264-aac", "webm-vp9-opus", "dvd-pal", "mp3", "gif"})
    {
        SCOPED_TRACE(name);
        const ProcessResult made =
            Zconf({"job", "new", "-p", name, "-i", "clip.mkv", "-t", "o", "-o", name + ".json"});
        EXPECT_EQ(made.exitCode, 0);
        EXPECT_THAT(made.messages, testing::AnyOf("", left("video stream 0: (h264)", "video"),
                                                  left("audio stream 1: (vorbis)", "audio")));
        const ProcessResult check = Zconf({"job", "check", name + ".json"});
        ExpectQuietSuccess(check);
        EXPECT_THAT(check.output, HasSubstr("valid"));
    }
}

TEST_F(JobNew, LosslessDvdReplacesTheContainerAndSaysSo)
{
    const ProcessResult result =
        Zconf({"job", "new", "-p", "mp3", "-i", "in.mp4", "-t", "out", "--lossless-dvd"});
    EXPECT_EQ(result.exitCode, 0);
#ifdef ZELNOR_WITHOUT_LOG
    EXPECT_EQ(result.messages, "");
#else
    EXPECT_EQ(result.messages, "zconf: Replacing output format for lossless conversion to DVD\n");
#endif
    EXPECT_EQ((*Load(result.output))[2]["container"].GetString(), "dvd");
}

TEST_F(JobNew, RefusesAnInputThatCannotBeRead)
{
    ExpectFailure(Zconf({"job", "new", "-p", "mp3", "-i", "gone.mp4", "-t", "o"}),
                  "gone.mp4: cannot be read: No such file or directory");
    ExpectFailure(Zconf({"job", "new", "-p", "mp3", "-i", ".", "-t", "o"}),
                  ".: cannot be read: Is a directory");
    ExpectFailure(Zconf({"job", "new", "-p", "mp3", "-i", "", "-t", "o"}),
                  "'': cannot be read: No such file or directory");
    ExpectFailure(Zconf({"job", "new", "-p", "mp3", "-i", "in.mp4/x", "-t", "o"}),
                  "in.mp4/x: cannot be read: Not a directory");
    ASSERT_EQ(::chmod((Folder() / "in.mp4").c_str(), 0), 0);
    if (::geteuid() != 0)
    {
        ExpectFailure(Zconf(Command()), "in.mp4: cannot be read: Permission denied");
    }
}

TEST_F(JobNew, NothingMayOverwriteWhatGoesIn)
{
    ExpectFailure(Zconf({"job", "new", "-p", "mp4-h264-aac", "-i", "in.mp4", "-t", "./in.mp4"}),
                  "The output and the input are the same file: './in.mp4'");
    ExpectFailure(Zconf(Command({"-o", "in.mp4"})), "The job and the input are the same file: 'in.mp4'");
    ExpectFailure(Zconf(Command({"-o", "out.mp3"})), "The job and the output are the same file: 'out.mp3'");
    Preset(R"({"audio":{"codec_id":"CODEC_ID_MP3"}})");
    std::filesystem::create_hard_link(Folder() / "preset.json", Folder() / "other.json");
    ExpectFailure(Zconf({"job", "new", "-p", "preset.json", "-i", "in.mp4", "-t", "o", "-o", "other.json"}),
                  "The job and the preset are the same file: 'other.json'");
    EXPECT_EQ(Read("in.mp4"), TinySound());
}

TEST_F(JobNew, TheOldNamesOfOptionsStillWork)
{
    ExpectQuietSuccess(
        Zconf({"job", "new", "--preset", "mp3", "--input", "in.mp4", "--output", "o", "--job", "a"}));
    ExpectQuietSuccess(
        Zconf({"job", "new", "--preset", "mp3", "--input", "in.mp4", "--target", "o", "--document", "b"}));
    EXPECT_EQ(Read("a"), Read("b"));
}

TEST_F(JobNew, TellsWhatItChangesOfThePreset)
{
    Preset(R"({"audio":{"codec_id":"CODEC_ID_AC3","bitrate":200000}})");
    const ProcessResult result = NewFrom("preset.json");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.messages,
              "zconf: note: in.mp4: audio stream 0, p.$$STREAMS$$.audio.bitrate: 200000 becomes "
              "192000, the nearest that the encoder supports\n");
}

TEST_F(JobNew, TheOutputNeedsAName)
{
    ExpectFailure(Zconf({"job", "new", "-p", "mp3", "-i", "in.mp4", "-t", ""}), "The output has no name");
}

TEST_F(JobNew, StrangeNamesComeBackByteForByte)
{
    for (const std::string& name :
         {std::string("with blank 'and' \"quotes\".mp4"), std::string("two\nlines"), std::string("-dash.mp4"),
          std::string("[a,b]"), std::string("{}"), std::string("\"q\""), std::string("$HOME;`ls`*?"),
          std::string("\xc3\xa4\xe6\x97\xa5"), std::string("invalid\xff\xfe")})
    {
        Write(name, TinySound());
        const ProcessResult result =
            Zconf({"job", "new", "-p", "mp3", "--input=" + name, "--output=" + name + ".out", "-o", "j"});
        ExpectQuietSuccess(result);
        const auto graph = Load(Read("j"));
        EXPECT_EQ((*graph)[1]["filePath"].GetString(), name);
        EXPECT_EQ((*graph)[2]["filePath"].GetString(), name + ".out");
    }
}

TEST_F(JobNew, AStrangeNameForTheJobIsUsedAsItIs)
{
    ExpectQuietSuccess(Zconf(Command({"--job=- \"x\"\n"})));
    EXPECT_TRUE(Load(Read("- \"x\"\n"))->TopologyIsValid());
    EXPECT_EQ(Zconf({"job", "check", "--topology", "--", "- \"x\"\n"}).output,
              "- \"x\"\\n: valid, 3 nodes and 2 links\n");
}

TEST_F(JobNew, TheJobKeepsAPermissionAndASymbolicLink)
{
    Write("real.json", "old");
    ASSERT_EQ(::chmod((Folder() / "real.json").c_str(), 0640), 0);
    std::filesystem::create_symlink("real.json", Folder() / "link.json");
    ExpectQuietSuccess(Zconf(Command({"-o", "link.json"})));
    EXPECT_TRUE(std::filesystem::is_symlink(Folder() / "link.json"));
    EXPECT_TRUE(Load(Read("real.json"))->TopologyIsValid());
    EXPECT_EQ(std::filesystem::status(Folder() / "real.json").permissions(), std::filesystem::perms(0640));
    EXPECT_THAT(Files(), ElementsAre("in.mp4", "link.json", "real.json"));
}

TEST_F(JobNew, AFailedSaveLeavesThePreviousJobAndNothingElse)
{
    Write("job.json", "previous");
    const ProcessResult result =
        Shell("(ulimit -f 0; exec \"$ZCONF\" job new -p mp3 -i in.mp4 -t o -o job.json) 2>&1 | cat");
    EXPECT_EQ(result.output, "zconf: Cannot write 'job.json': File too large\n");
    EXPECT_EQ(Read("job.json"), "previous");
    EXPECT_THAT(Files(), ElementsAre("in.mp4", "job.json"));
}

TEST_F(JobNew, AFailureBeforeSavingLeavesThePreviousJob)
{
    Write("job.json", "previous");
    EXPECT_EQ(Zconf({"job", "new", "-p", "nope", "-i", "in.mp4", "-t", "o", "-o", "job.json"}).exitCode, 2);
    EXPECT_EQ(Read("job.json"), "previous");
    EXPECT_THAT(Files(), ElementsAre("in.mp4", "job.json"));
}

TEST_F(JobNew, AJobThatCannotBeWrittenIsAFailure)
{
    ExpectFailure(Zconf(Command({"-o", "no/such/folder.json"})),
                  "Cannot write 'no/such/folder.json': No such file or directory");
    ExpectFailure(Zconf(Command({"-o", "."})), "Cannot write '.': Is a directory");
    ExpectFailure(Zconf(Command({"-o", "/dev/full"})), "Cannot write '/dev/full': No space left on device");
}

TEST_F(JobNew, APresetMayComeFromStandardInput)
{
    ProcessOptions options;
    options.input = R"({"p":{"container":"ogg","$$STREAMS$$":{"audio":{"codec_id":"CODEC_ID_VORBIS"}}}})";
    const ProcessResult result = Zconf({"job", "new", "-p", "-", "-i", "in.mp4", "-t", "o.ogg"}, options);
    ExpectQuietSuccess(result);
    EXPECT_EQ((*Load(result.output))[2].GetName(), "p");
}

TEST_F(JobNew, AFileHidesAShippedPresetOfItsName)
{
    Write("mp3", R"({"mine":{"container":"mp3","$$STREAMS$$":{"audio":{"codec_id":"CODEC_ID_MP3"}}}})");
    EXPECT_EQ((*Load(Zconf(Command()).output))[2].GetName(), "mine");
}

TEST_F(JobNew, AFolderDoesNotHideAShippedPreset)
{
    std::filesystem::create_directory(Folder() / "mp3");
    EXPECT_EQ((*Load(Zconf(Command()).output))[2].GetName(), "mp3");
}

TEST_F(JobNew, ShippedPresetsAreFoundWhereverTheProgramIsInstalled)
{
    ExpectToFindAPresetInUsr("usr/bin/zconf", ZELNOR_LIBRARY_FOLDER);
}

TEST_F(JobNew, ShippedPresetsAreFoundFromALibraryInAFolderForItsArchitecture)
{
    namespace fs = std::filesystem;
    const fs::path libraries = Folder() / "usr/lib/architecture";
    fs::create_directories(libraries);
    for (const fs::directory_entry& entry : fs::directory_iterator(ZELNOR_LIBRARY_FOLDER))
    {
        const std::string name = entry.path().filename().string();
        if (name.rfind("libZelnorMedia.so.", 0) == 0 || name.rfind("libZelnorFFmpeg.so.", 0) == 0)
        {
            fs::copy_file(entry.path(), libraries / name);
        }
    }
    ExpectToFindAPresetInUsr("opt/zconf", libraries.string() + ":" ZELNOR_LIBRARY_FOLDER);
}

TEST_F(JobNew, AnUnknownPresetIsToldWithTheNearestOnes)
{
    const ProcessResult result = NewFrom("mp5");
    EXPECT_EQ(result.exitCode, 2);
    // How many there are depends on the installation.
    EXPECT_THAT(result.messages, StartsWith("zconf: mp5: neither a file nor a known preset ("));
    EXPECT_THAT(result.messages, EndsWith(" are known); did you mean 'mp3'?\n"));
    ExpectFailure(NewFrom("./mp3"), "Cannot open './mp3': No such file or directory");
}

TEST_F(JobNew, APresetMayAskForSeveralStreamsOfOneType)
{
    Write("in.mp4", TinyClip());
    Preset(R"([{"video":{"codec_id":"CODEC_ID_H264"}},{"audio":{"codec_id":"CODEC_ID_AAC"}},)"
           R"({"audio":{"codec_id":"CODEC_ID_AC3"}}])");
    const auto graph = Load(NewFrom("preset.json").output);
    EXPECT_TRUE(graph->TopologyIsValid());
    EXPECT_EQ(graph->GetNodesCount(), 5);
    EXPECT_EQ(graph->GetLink(5, 2)["codec_id"].GetString(), "CODEC_ID_AC3");
}

TEST_F(JobNew, APresetIsRefusedWithItsPlace)
{
    const std::string codec = R"("codec_id":"CODEC_ID_AAC")";
    const std::vector<std::pair<std::string, std::string>> kCases = {
        {"{}", "p.$$STREAMS$$: expected a group of at least one stream, found an empty one"},
        {"3", "p.$$STREAMS$$: expected a group of at least one stream, found 3"},
        {R"({"sound":{}})", "p.$$STREAMS$$: expected a stream type (audio, video, subtitles_video, "
                            "subtitles_text), found 'sound'"},
        {R"({"audio":7})", "p.$$STREAMS$$.audio: expected a group of settings, found 7"},
        {R"({"audio":{}})",
         "p.$$STREAMS$$.audio.codec_id: expected an audio codec, as \"CODEC_ID_AAC\", found nothing"},
        {R"({"audio":{"codec_id":"CODEC_ID_H264"}})",
         "p.$$STREAMS$$.audio.codec_id: expected an audio codec, as \"CODEC_ID_AAC\", found 'CODEC_ID_H264'"},
        {R"({"video":{"codec_id":1}})",
         "p.$$STREAMS$$.video.codec_id: expected a video codec, as \"CODEC_ID_H264\", found 1"},
        {R"({"subtitles_text":{"codec_id":null}})",
         "p.$$STREAMS$$.subtitles_text.codec_id: expected a subtitle codec, as \"CODEC_ID_SRT\", found null"},
        {R"({"audio":{)" + codec + R"(,"bitrate":"fast"}})",
         "p.$$STREAMS$$.audio.bitrate: expected a positive integer, found 'fast'"},
        {R"({"audio":{)" + codec + R"(,"bitrate":-1}})",
         "p.$$STREAMS$$.audio.bitrate: expected a positive integer, found -1"},
        {R"({"audio":{)" + codec + R"(,"bitrate":1.5}})",
         "p.$$STREAMS$$.audio.bitrate: expected an integer, a string, a rational, null or a group, found a "
         "number that is not a 64-bit integer"},
        {R"({"audio":{)" + codec + R"(,"bitrate_mode":"cbr"}})",
         "p.$$STREAMS$$.audio.bitrate_mode: expected CBR, CBR_AUTO or VBR, found 'cbr'; did you mean 'CBR' "
         "or "
         "'CBR_AUTO' or 'VBR'?"},
        {R"({"audio":{)" + codec + R"(,"layout":"Stereo"}})",
         "p.$$STREAMS$$.audio.layout: expected a channel layout, as \"STEREO\", found 'Stereo'; did you "
         "mean 'STEREO' or 'STEREO_DOWNMIX'?"},
        {R"({"audio":{)" + codec + R"(,"sample_format":"s16"}})",
         "p.$$STREAMS$$.audio.sample_format: expected a sample format, as \"SAMPLE_FMT_S16\", found 's16'; "
         "did you mean 'SAMPLE_FMT_S16' or 'SAMPLE_FMT_S16P'?"},
        {R"({"video":{"codec_id":"CODEC_ID_H265","frameRateRatio":25}})",
         "p.$$STREAMS$$.video.frameRateRatio: expected a rate as [30000, 1001], found 25"},
        {R"({"video":{"codec_id":"CODEC_ID_H265","frameRateRatio":[-25,1]}})",
         "p.$$STREAMS$$.video.frameRateRatio: expected a rate as [30000, 1001], found -25/1"},
    };
    for (const auto& [streams, sentence] : kCases)
    {
        SCOPED_TRACE(streams);
        ExpectFailure(NewFrom(Preset(streams)), "preset.json: " + sentence);
    }
}

TEST_F(JobNew, APresetNeedsAKnownContainer)
{
    const std::string streams = R"("$$STREAMS$$":{"audio":{"codec_id":"CODEC_ID_AAC"}}}})";
    const std::string expected = "p.container: expected the name of a container, as \"mp4\", found ";
    ExpectFailure(NewFrom(Write("a", R"({"p":{)" + streams)), "a: " + expected + "nothing");
    ExpectFailure(NewFrom(Write("b", R"({"p":{"container":"mp99",)" + streams)),
                  "b: " + expected + "'mp99'; did you mean 'mp2' or 'mp3' or 'mp4'?");
    ExpectFailure(NewFrom(Write("c", R"({"p":{"container":"All Files",)" + streams)),
                  "c: " + expected + "'All Files'");
    ExpectFailure(NewFrom(Write("d", R"({"p":{"container":["mp4"],)" + streams)),
                  "d: p.container[0]: expected a record (an object with one member), found a string");
}

TEST_F(JobNew, APresetThatIsNotARecordIsRefused)
{
    const std::string noRecord = "a preset is a record (an object with one member)";
    ExpectFailure(NewFrom(Write("p", "")), "p: line 1, column 1: The document is empty.");
    ExpectFailure(NewFrom(Write("p", "null")), "p: " + noRecord);
    ExpectFailure(NewFrom(Write("p", "[]")), "p: " + noRecord);
    ExpectFailure(NewFrom(Write("p", "{}")),
                  "p: record: expected a record (an object with one member), found an object with 0 members");
    ExpectFailure(NewFrom(Write("p", R"({"p":1})")), "p: p: expected a group, found 1");
    ExpectFailure(NewFrom(Write("p", "{\n  \"a\" 1\n}")),
                  "p: line 2, column 7: Missing a colon after a name of object member.");
    ExpectFailure(NewFrom(Write("p", "{\"a\":{}}" + std::string(1, '\0') + "rest")),
                  "p: line 1, column 9: A NUL byte follows the document.");
    EXPECT_EQ(NewFrom(Write("p", std::string(1000000, '['))).exitCode, 2);
    EXPECT_EQ(NewFrom(Write("p", std::string(200000, '{'))).exitCode, 2);
    ExpectFailure(NewFrom("./"), "Cannot read './': Is a directory");
}

} // namespace
