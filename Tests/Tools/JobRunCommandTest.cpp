#include "Tests/Support/MediaTest.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/// What runs. Tests of arguments ask for the part that matters to them: the tests of Media/Running compare
/// whole argument vectors.
class JobRun : public MediaTest
{
protected:
    JobRun() { Write("in.mkv", TinyClip()); }

    /// A job whose source has nothing but the sound that it takes.
    void Mp3(const std::string& output = "out.mp3") const
    {
        Write("in.mkv", TinySound());
        ExpectQuietSuccess(New("mp3", "in.mkv", output));
    }

    /// A program to be taken for ffmpeg.
    std::string Script(const std::string& lines) const
    {
        Write("engine", "#!/bin/bash\n" + lines + "\n");
        ::chmod((Folder() / "engine").c_str(), 0755);
        return "./engine";
    }
};

TEST_F(JobRun, MakesTheTargetAndNothingElse)
{
    Mp3();
    const ProcessResult result = RunJob();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "");
    // How many lines of progress stand before depends on the speed.
    EXPECT_THAT(result.messages, HasSubstr("zconf: out.mp3: done in 0:00:0"));
    EXPECT_EQ(Info("out.mp3").Audio().codec, "mp3");
    EXPECT_THAT(Files(), ElementsAre("in.mkv", "job.json", "out.mp3"));
    struct stat status = {};
    ASSERT_EQ(::stat((Folder() / "out.mp3").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0644U);
}

TEST_F(JobRun, ADryRunPrintsTheCommandAndRunsNothing)
{
    Mp3();
    const ProcessResult result = RunJob({"--dry-run"});
    EXPECT_EQ(result.exitCode, 0);
    // 192 kbit/s of 0.2 s; the clip's duration is not exact.
    EXPECT_THAT(result.messages, HasSubstr("zconf: note: 'out.mp3' will have about "));
    EXPECT_EQ(
        result.output,
        "ffmpeg -hide_banner -nostdin -v error -nostats -progress pipe:1 -n -protocol_whitelist file "
        "-f matroska -i file:in.mkv -map 0:0 "
        "-filter:0 aformat=sample_fmts=s16p:sample_rates=44100:channel_layouts=stereo -c:0 libmp3lame "
        "-b:0 192000 -map_metadata -1 -map_metadata:s -1 -map_chapters -1 -max_muxing_queue_size 4096 -f mp3 "
        "file:out.mp3\n");
    EXPECT_FALSE(Exists("out.mp3"));
}

TEST_F(JobRun, ThePrintedCommandWorksInAShell)
{
    Mp3("it's $HOME \"x\".mp3");
    EXPECT_EQ(Shell("eval \"$(\"$ZCONF\" job run -n job.json)\"").exitCode, 0);
    EXPECT_EQ(Info("it's $HOME \"x\".mp3").Audio().codec, "mp3");
}

TEST_F(JobRun, AnExistingFileIsKeptUnlessAskedOtherwise)
{
    Mp3();
    Write("out.mp3", "old");
    ExpectFailure(RunJob(),
                  "job.json: node 2, filePath: 'out.mp3' exists already; the option 'overwrite' replaces it");
    EXPECT_EQ(Read("out.mp3"), "old");
    EXPECT_EQ(RunJob({"--overwrite"}).exitCode, 0);
    EXPECT_EQ(Info("out.mp3").Audio().codec, "mp3");
}

TEST_F(JobRun, AFileThatAppearsMeanwhileIsKept)
{
    Mp3();
    const ProcessResult result = RunJob({"--verify=off", "--ffmpeg", Script("echo old > out.mp3")});
    ExpectFailure(result, "Cannot write 'out.mp3': File exists");
    EXPECT_EQ(Read("out.mp3"), "old\n");
}

TEST_F(JobRun, AFailureOfFFmpegGivesItsLastLinesAndLeavesNothing)
{
    Mp3();
    const ProcessResult result =
        RunJob({"--ffmpeg", Script("for i in $(seq 30); do echo line $i >&2; done; exit 7")});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.messages, "zconf: ffmpeg failed to make 'out.mp3':\n"
                               "  line 21\n  line 22\n  line 23\n  line 24\n  line 25\n"
                               "  line 26\n  line 27\n  line 28\n  line 29\n  line 30\n"
                               "  (exit code 7)\n");
    EXPECT_THAT(Files(), ElementsAre("engine", "in.mkv", "job.json"));
}

TEST_F(JobRun, AFailureKeepsTheFileThatWasToBeReplaced)
{
    Mp3();
    Write("out.mp3", "old");
    EXPECT_EQ(RunJob({"--overwrite", "--ffmpeg", Script("echo half > \"${!#}\"; exit 1")}).exitCode, 3);
    EXPECT_EQ(Read("out.mp3"), "old");
}

TEST_F(JobRun, WithoutFFmpegThereIsOneSentence)
{
    Mp3();
    ExpectFailure(RunJob({"--ffmpeg", "./none"}), "Cannot run './none': No such file or directory");
    EXPECT_THAT(Files(), ElementsAre("in.mkv", "job.json"));
}

TEST_F(JobRun, ASignalStopsFFmpegAndLeavesNoHalfFile)
{
    Mp3();
    Script("target=${!#}; echo half > \"${target#file:}\"; echo $$ > running; exec sleep 50");
    for (const auto& [name, number] : {std::pair("INT", SIGINT), std::pair("TERM", SIGTERM)})
    {
        const ProcessResult result = Shell(std::string("exec timeout --preserve-status -s ") + name +
                                           " 1 \"$ZCONF\" job run job.json --ffmpeg ./engine");
        EXPECT_EQ(result.exitCode, 128 + number);
        EXPECT_FALSE(result.timedOut);
        ASSERT_TRUE(Exists("running"));
        EXPECT_EQ(::kill(static_cast<pid_t>(std::stol(Read("running"))), 0), -1);
        EXPECT_THAT(Files(), ElementsAre("engine", "in.mkv", "job.json", "running"));
    }
}

TEST_F(JobRun, AFailureIsSeenEvenIfTheParentIgnoresItsChildren)
{
    Mp3();
    Script("exit 7");
    const ProcessResult result =
        Shell("exec env --ignore-signal=CHLD \"$ZCONF\" job run job.json --ffmpeg ./engine");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.messages, "zconf: ffmpeg failed to make 'out.mp3':\n  (exit code 7)\n");
    EXPECT_THAT(Files(), ElementsAre("engine", "in.mkv", "job.json"));
}

TEST_F(JobRun, ShowsABarOnATerminal)
{
    Mp3();
    ProcessOptions options;
    options.terminal = true;
    const std::string engine = Script("echo out_time_us=100000; echo speed=2.0x; echo progress=continue");
    const ProcessResult result = RunJob({"--verify=off", "--ffmpeg", engine}, options);
    // The part depends on the clip's duration; the text itself is compared in ProgressDisplayTest.
    EXPECT_THAT(result.output, HasSubstr("] "));
    EXPECT_THAT(result.output, HasSubstr("%  2.0x  0:00:01 left  out.mp3"));
    EXPECT_THAT(result.output, HasSubstr("\x1b[K"));
}

TEST_F(JobRun, ShowsTenthsInPlainLinesElsewhere)
{
    Mp3();
    const std::string engine =
        Script("for t in 60000 61000 150000; do echo out_time_us=$t; echo progress=continue; done");
    const ProcessResult result = RunJob({"--verify=off", "--ffmpeg", engine});
    EXPECT_EQ(std::count(result.messages.begin(), result.messages.end(), '%'), 2) << result.messages;
    EXPECT_THAT(result.messages, Not(HasSubstr("\r")));
}

TEST_F(JobRun, TwoPassesLeaveNothingBehind)
{
    std::filesystem::create_directory(Folder() / "tmp");
    ExpectQuietSuccess(New("webm-vp9-opus", "in.mkv", "out.webm"));
    ProcessOptions options;
    options.environment = {"TMPDIR=" + (Folder() / "tmp").string()};
    EXPECT_EQ(RunJob({}, options).exitCode, 0);
    EXPECT_TRUE(std::filesystem::is_empty(Folder() / "tmp"));
    EXPECT_THAT(Files(), ElementsAre("in.mkv", "job.json", "out.webm", "tmp"));
    const std::string printed = RunJob({"-n"}).output;
    EXPECT_THAT(printed, HasSubstr("-pass:0 1 -passlogfile:0 ffmpeg2pass-0-0 -f null file:/dev/null\n"));
    EXPECT_THAT(printed, HasSubstr("-pass:0 2 -passlogfile:0 ffmpeg2pass-0-0 "));
}

TEST_F(JobRun, EveryNameIsAPlainFile)
{
    for (const std::string& name :
         {std::string("-y"), std::string("50%d 'n' \"q\".mp3"), std::string("two\nlines.mp3"),
          std::string("http:x.mp3"), std::string("pipe:1.mp3"), std::string("a|b;c.mp3")})
    {
        SCOPED_TRACE(name);
        const std::string input = name + ".in";
        const std::string output = name + ".out";
        Write(input, TinySound());
        ExpectQuietSuccess(New("mp3", input, output));
        EXPECT_EQ(RunJob().exitCode, 0);
        EXPECT_EQ(Info(output).Audio().codec, "mp3");
    }
}

TEST_F(JobRun, ImagesWhoseNamesLookLikePatternsArePlainFiles)
{
    Make({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.04", "-frames:v", "1", "-update", "1", "p.png"});
    std::filesystem::rename(Folder() / "p.png", Folder() / "in%03d*.png");
    ExpectQuietSuccess(New("png", "in%03d*.png", "out%03d*.png"));
    const ProcessResult result = RunJob();
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_TRUE(Exists("out%03d*.png"));
    EXPECT_EQ(Info("out%03d*.png").Video().width, 64);
}

TEST_F(JobRun, CarriesTagsAndLanguages)
{
    Make({"-i", "in.mkv", "-c", "copy", "-metadata", "title=T=\"1\"", "-metadata", "my_own_key=x",
          "-metadata:s:a", "language=deu", "tagged.mkv"});
    ExpectQuietSuccess(New("mkv-h264-ac3", "tagged.mkv", "out.mkv"));
    EXPECT_EQ(RunJob().exitCode, 0);
    const MediaInfo info = Info("out.mkv");
    EXPECT_EQ(info.tags.at("title"), "T=\"1\"");
    EXPECT_EQ(info.tags.at("MY_OWN_KEY"), "x");
    EXPECT_EQ(info.Audio().language, "deu");
}

TEST_F(JobRun, NamesWhatIsLostBeforeItRunsAndRefusesItWhenStrict)
{
    Make({"-i", "in.mkv", "-map", "0", "-map", "0:1", "-c", "copy", "-metadata", "my_own_key=x",
          "-metadata:s:a:1", "language=eng", "-disposition:a:1", "0", "two.mkv"});
    const std::string stream = "audio stream 2: (ac3, eng) is left out; the output file has 1 audio stream";
    const std::string tag = "container mp4 cannot hold the tags 'MY_OWN_KEY'";
    const ProcessResult made = New("mp4-h264-aac", "two.mkv", "out.mp4");
    EXPECT_EQ(made.exitCode, 0);
    EXPECT_EQ(made.messages, "zconf: note: two.mkv: " + stream + "\nzconf: note: two.mkv: " + tag + "\n");
    const ProcessResult check = Zconf({"job", "check", "job.json"});
    EXPECT_EQ(check.exitCode, 0);
    EXPECT_EQ(check.output, "job.json: valid, 4 nodes and 4 links\n  note: node 2, " + stream +
                                "\n  note: node 2: " + tag + "\n");
    const ProcessResult strict = Zconf({"job", "check", "--strict", "job.json"});
    EXPECT_EQ(strict.exitCode, 1);
    EXPECT_EQ(strict.output,
              "job.json: not valid, 4 nodes and 4 links\n  node 2, " + stream + "\n  node 2: " + tag + "\n");
    // The size of the file that will be made follows.
    EXPECT_THAT(RunJob({"--dry-run"}).messages,
                testing::StartsWith("zconf: note: job.json: node 2, " + stream +
                                    "\nzconf: note: job.json: node 2: " + tag + "\n"));
    ExpectFailure(RunJob({"--strict"}), "job.json: node 2, " + stream);
    EXPECT_FALSE(Exists("out.mp4"));
    ExpectFailure(New("mp4-h264-aac", "two.mkv", "out.mp4", {"--strict"}), "two.mkv: " + stream);
}

TEST_F(JobRun, RotatesARotatedVideoUpright)
{
    Make({"-f", "lavfi", "-i", "testsrc=s=160x96:d=0.2", "-c:v", "mpeg4", "plain.mp4"});
    Make({"-i", "plain.mp4", "-c", "copy", "-metadata:s:v:0", "rotate=90", "rotated.mp4"});
    EXPECT_EQ(New("mp4-h264-aac", "rotated.mp4", "out.mp4").exitCode, 0);
    EXPECT_EQ(RunJob().exitCode, 0);
    EXPECT_EQ(Info("out.mp4").Video().width, 96);
    EXPECT_EQ(Info("out.mp4").Video().height, 160);
}

TEST_F(JobRun, VideoOfAnotherAspectRatioIsLetterboxedOnADvd)
{
    Make({"-f", "lavfi", "-i", "color=red:s=480x200:d=0.2", "-c:v", "ffv1", "scope.mkv"});
    EXPECT_EQ(New("dvd-pal", "scope.mkv", "out.vob").exitCode, 0);
    EXPECT_THAT(RunJob({"-n"}).output, HasSubstr("pad=720:576"));
    EXPECT_EQ(RunJob().exitCode, 0);
    EXPECT_NEAR(Info("out.vob").Video().aspect, 16.0 / 9, 0.01);
}

TEST_F(JobRun, LosslessDvdKeepsWhatADvdCanHold)
{
    Make({"-f", "lavfi", "-i", "testsrc=s=720x576:r=25:d=0.4", "-f", "lavfi", "-i", "sine=r=48000:d=0.4",
          "-c:v", "mpeg2video", "-c:a", "mp2", "in.vob"});
    EXPECT_EQ(New("mp4-h264-aac", "in.vob", "out", {"--lossless-dvd"}).exitCode, 0);
    const std::string command = RunJob({"-n"}).output;
    EXPECT_THAT(command, HasSubstr("-c:0 copy"));
    EXPECT_THAT(command, HasSubstr("-c:1 copy"));
    EXPECT_EQ(RunJob().exitCode, 0);
    EXPECT_EQ(Info("out.vob").Video().codec, "mpeg2video");
    EXPECT_EQ(Info("out.vob").Audio().codec, "mp2");
}

TEST_F(JobRun, MixesAudioAndOverlaysSubtitles)
{
    Write("s.srt", "1\n00:00:00,000 --> 00:00:01,000\nHello\n");
    Make({"-f",
          "lavfi",
          "-i",
          "color=black:s=320x240:d=0.4",
          "-f",
          "lavfi",
          "-i",
          "sine=d=0.4",
          "-f",
          "lavfi",
          "-i",
          "sine=f=880:d=0.4",
          "-i",
          "s.srt",
          "-map",
          "0",
          "-map",
          "1",
          "-map",
          "2",
          "-map",
          "3",
          "-c:v",
          "ffv1",
          "-c:a",
          "flac",
          "it's [a], 'b'; c:d.mkv"});
    ExpectQuietSuccess(New("mp4-h264-aac", "it's [a], 'b'; c:d.mkv", "out.mp4",
                           {"--stream", "0", "--stream", "1", "--merge", "1+2", "--merge", "0+3"}));
    EXPECT_THAT(RunJob({"-n"}).output, HasSubstr("[0:1][0:2]amix=inputs=2:normalize=0,aformat="));
    const ProcessResult result = RunJob();
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_EQ(Info("out.mp4").streams.size(), 2U);
    ExpectFailure(New("mp4-h264-aac", "it's [a], 'b'; c:d.mkv", "x.mp4", {"-s", "0", "--merge", "0+1"}),
                  "it's [a], 'b'; c:d.mkv: audio stream 1: cannot be merged into video stream 0, expected a "
                  "subtitle");
}

TEST_F(JobRun, TheBitrateModesBecomeBounds)
{
    Write("in.mkv", TinyVideo());
    const auto command = [this](const std::string& settings) {
        Preset("matroska", R"({"video":{"codec_id":"CODEC_ID_MPEG4",)" + settings + "}}");
        ExpectQuietSuccess(New("./preset.json", "in.mkv", "o.mkv"));
        return RunJob({"-n"}).output;
    };
    EXPECT_THAT(command(R"("bitrate_mode":"CBR","bitrate":4000000)"),
                HasSubstr("-b:0 4000000 -minrate:0 4000000 -maxrate:0 4000000 -bufsize:0 4000000 "));
    EXPECT_THAT(command(R"("bitrate_mode":"VBR","bitrate":4000000)"),
                HasSubstr("-b:0 4000000 -minrate:0 2000000 -maxrate:0 8000000 -bufsize:0 8000000 "));
    EXPECT_THAT(command(R"("bitrate_mode":"VBR","bitrate":4000000,"quality":32)"),
                HasSubstr("-b:0 1333333 -minrate:0 666666 -maxrate:0 2666666 -bufsize:0 2666666 "));
    EXPECT_THAT(command(R"("bitrate_mode":"CBR_AUTO","bitrate":4000000)"), HasSubstr("-b:0 4000000 -map_m"));
    // The calculator's proposal for 64x48 at 25 frames a second.
    EXPECT_THAT(command(R"("bitrate_mode":"CBR_AUTO")"), HasSubstr("-b:0 126"));
}

TEST_F(JobRun, WhatCannotBeHonouredIsRefusedBeforeAnythingRuns)
{
    struct Case
    {
        const char* from;
        const char* to;
        const char* sentence;
    };
    const Case kCases[] = {
        {"CODEC_ID_H264", "CODEC_ID_H265",
         "job.json: link 3 -> 2, video stream 0, codec_id: encoding CODEC_ID_H265 is disabled unless its "
         "encoder is named ('libx265', under preferred_encoder)"},
        {"CODEC_ID_H264", "CODEC_ID_RV40",
         "job.json: link 3 -> 2, video stream 0, codec_id: the installed FFmpeg does not have an encoder for "
         "CODEC_ID_RV40; for mp4 it can encode CODEC_ID_H264, CODEC_ID_MPEG1VIDEO or CODEC_ID_MPEG2VIDEO"},
        {"CODEC_ID_H264", "CODEC_ID_AUTO",
         "job.json: link 3 -> 2, video stream 0, codec_id: the installed FFmpeg does not have an encoder for "
         "CODEC_ID_AUTO"},
        {R"("container":"mp4")", R"("container":"a64x")",
         "job.json: node 2, container: the installed FFmpeg cannot write the container 'a64x'; did you mean "
         "'a64' or 'adx'?"},
        {R"("container":"mp4")", R"("container":"webm")",
         "job.json: link 3 -> 2, video stream 0: the container webm cannot hold CODEC_ID_H264; it holds "
         "CODEC_ID_VP9 "
         "or CODEC_ID_VP8; CODEC_ID_H264 goes into matroska, mov or mp4"},
        {R"("profile":"high")", R"("profile":"highest")",
         "job.json: link 3 -> 2, video stream 0, profile: encoder libx264 does not have a profile "
         "'highest'"},
        {R"("preset":"medium")", R"("preset":"glacial")",
         "job.json: link 3 -> 2, video stream 0, preset: encoder libx264 does not have a preset "
         "'glacial'"},
        {R"("preset":"medium")", R"("tune":"psychic")",
         "job.json: link 3 -> 2, video stream 0, tune: encoder libx264 does not have a tune 'psychic'"},
        {R"("preset":"medium")", R"("odd":1)",
         "job.json: link 3 -> 2, video stream 0: unknown setting 'odd'"},
        {R"("bitrate_mode":"VBR")", R"("bitrate_mode":"ABR")",
         "job.json: link 3 -> 2, video stream 0, bitrate_mode: expected CBR, CBR_AUTO or VBR, found 'ABR'; "
         "did you mean 'CBR' or 'VBR'?"},
        {R"("preset":"medium")", R"("preferred_encoder":"ENCODER_NVENC_H264")",
         "job.json: link 3 -> 2, video stream 0, preferred_encoder: the installed FFmpeg does not have an "
         "encoder 'ENCODER_NVENC_H264' for CODEC_ID_H264; it has 'libx264'"},
        {R"("codec.options.encode":{})", R"("codec.options.encode":{"no_such":1})",
         "job.json: link 3 -> 2, video stream 0, codec.options.encode.no_such: encoder libx264 does not "
         "have an option 'no_such'"},
        {R"("PIXELFORMAT":0)", R"("PIXELFORMAT":28)",
         "job.json: link 3 -> 2, video stream 0, PIXELFORMAT: encoder libx264 does not support pixel "
         "format RGBA"},
        {R"("streamRaw":{"id":0})", R"("streamRaw":{"id":7})",
         "job.json: node 3, id: 'in.mkv' does not have a stream 7"},
        {R"("streamRaw":{"id":0})", R"("streamRaw":{"id":1})",
         "job.json: link 3 -> 2, audio stream 1: expected the record 'format_codec_audio', found "
         "'format_codec_video'"},
        {R"("sourceFile")", R"("camera")",
         "job.json: node 1, $$TYPE_ID$$: expected 'sourceFile', found 'camera'"},
        {R"("filePath":"in.mkv")", R"("filePath":"gone")",
         "job.json: node 1, filePath: gone: cannot be read: No such file or directory"},
        {R"("filePath":"out.mp4")", R"("filePath":"in.mkv")",
         "job.json: node 2, filePath: the source and the target are the same file: 'in.mkv'"},
    };
    for (const Case& entry : kCases)
    {
        SCOPED_TRACE(entry.to);
        ExpectQuietSuccess(New("mp4-h264-aac", "in.mkv", "out.mp4"));
        Edit(entry.from, entry.to);
        ExpectFailure(RunJob({"--ffmpeg", "/bin/false"}), entry.sentence);
        EXPECT_FALSE(Exists("out.mp4"));
    }
}

TEST_F(JobRun, EncodersOfManyKindsAreServed)
{
    Make({"-f", "lavfi", "-i", "testsrc=s=352x288:d=0.2", "-f", "lavfi", "-i", "anullsrc=cl=5.1:d=0.2",
          "-c:v", "mpeg4", "-c:a", "flac", "-t", "0.2", "six.mkv"});
    struct Case
    {
        const char* container;
        const char* streams;
        const char* layout; ///< empty: no sound
        std::string loss;   ///< what is named
    };
    const std::string note = "zconf: note: six.mkv: ";
    const std::string stereo = note + "audio stream 1: its 6 channels become 2\n";
    const std::string noVideo = note + "video stream 0: (mpeg4) is left out; the output file has no video\n";
    const Case kCases[] = {
        {"ogg",
         R"({"video":{"codec_id":"CODEC_ID_THEORA"},"audio":{"codec_id":"CODEC_ID_VORBIS","bitrate":256000}})",
         "5.1", ""},
        {"wmv",
         R"({"video":{"codec_id":"CODEC_ID_WMV2"},"audio":{"codec_id":"CODEC_ID_WMAV2","bitrate":128000}})",
         "stereo", stereo},
        {"avi",
         R"({"video":{"codec_id":"CODEC_ID_MPEG4","two_pass_encoding":1},"audio":{"codec_id":"CODEC_ID_MP3"}})",
         "stereo", stereo},
        {"3gp",
         R"({"video":{"codec_id":"CODEC_ID_H263"},"audio":{"codec_id":"CODEC_ID_AAC","layout":"MONO"}})",
         "mono", note + "audio stream 1: its 6 channels become 1\n"},
        {"m4a", R"({"audio":{"codec_id":"CODEC_ID_ALAC"}})", "5.1", noVideo},
        {"wav", R"({"audio":{"codec_id":"CODEC_ID_PCM_S16LE"}})", "5.1", noVideo},
        {"mpegts", R"({"video":{"codec_id":"CODEC_ID_MPEG2VIDEO"},"audio":{"codec_id":"CODEC_ID_MP2"}})",
         "stereo", stereo},
        {"jpeg2000", R"({"video":{"codec_id":"CODEC_ID_MJPEG"}})", "",
         note + "audio stream 1: (flac) is left out; the output file has no audio\n"},
    };
    for (const Case& entry : kCases)
    {
        SCOPED_TRACE(entry.container);
        Preset(entry.container, entry.streams);
        const std::string name = std::string("out.") + entry.container;
        const ProcessResult made = New("./preset.json", "six.mkv", name);
        EXPECT_EQ(made.exitCode, 0);
        EXPECT_EQ(made.messages, entry.loss);
        const ProcessResult result = RunJob();
        ASSERT_EQ(result.exitCode, 0) << result.messages;
        const std::vector<StreamInfo> sounds = Info(name).Of(AVMEDIA_TYPE_AUDIO);
        ASSERT_EQ(sounds.size(), *entry.layout != 0 ? 1U : 0U);
        EXPECT_EQ(sounds.empty() ? "" : sounds.front().layout, entry.layout);
    }
}

TEST_F(JobRun, AnEncoderWithoutTwoPassesIsNotAskedForThem)
{
    Write("in.mkv", TinyVideo());
    Preset("ogg", R"({"video":{"codec_id":"CODEC_ID_THEORA","two_pass_encoding":"two_pass"}})");
    ExpectQuietSuccess(New("./preset.json", "in.mkv", "o.ogv"));
    ExpectFailure(RunJob(), "job.json: link 3 -> 2, video stream 0, two_pass_encoding: encoder libtheora "
                            "does not support two passes");
}

TEST_F(JobRun, AnInvalidJobIsRefused)
{
    Write("job.json", kUnlinked);
    ExpectFailure(RunJob(), "job.json: 2 nodes without links: 1, 2");
}

TEST_F(JobRun, SubtitlesGoWhereTheContainerCanHoldThem)
{
    Write("s.srt", "1\n00:00:00,000 --> 00:00:00,200\nHello\n");
    Make({"-i", "in.mkv", "-i", "s.srt", "-c", "copy", "-c:s", "srt", "-metadata:s:s", "language=fra",
          "sub.mkv"});
    for (const auto& [preset, codec] :
         {std::pair("mp4-h264-aac", "mov_text"), std::pair("mkv-h264-ac3", "subrip"),
          std::pair("webm-vp8-vorbis", "webvtt")})
    {
        SCOPED_TRACE(preset);
        ExpectQuietSuccess(New(preset, "sub.mkv", preset));
        EXPECT_EQ(RunJob().exitCode, 0);
        const std::string name = std::string(preset) + (preset[1] == 'p'   ? ".mp4"
                                                        : preset[1] == 'k' ? ".mkv"
                                                                           : ".webm");
        const auto subtitles = Info(name).Of(AVMEDIA_TYPE_SUBTITLE);
        ASSERT_EQ(subtitles.size(), 1U);
        EXPECT_EQ(subtitles[0].codec, codec);
        EXPECT_EQ(subtitles[0].language, "fra");
    }
    EXPECT_THAT(New("dvd-pal", "sub.mkv", "x", {"--stream", "2"}).messages,
                HasSubstr("sub.mkv: subtitle stream 2: container dvd cannot hold text subtitles"));
}

TEST_F(JobRun, ATruncatedSourceIsConvertedAsFarAsItGoes)
{
    Write("cut.mkv", TinyClip().substr(0, TinyClip().size() * 3 / 4));
    ExpectQuietSuccess(New("mkv-h264-ac3", "cut.mkv", "out.mkv"));
    EXPECT_EQ(RunJob().exitCode, 0);
    EXPECT_GT(Info("out.mkv").Video().seconds, 0.04);
    EXPECT_LT(Info("out.mkv").Video().seconds, 0.21);
}

} // namespace
