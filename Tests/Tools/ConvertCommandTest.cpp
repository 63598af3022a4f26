#include "Tests/Support/MediaTest.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

/// On a clip of 0.4 s (96x64, 25 fps) with two languages and a subtitle.
class Convert : public MediaTest
{
protected:
    static void SetUpTestSuite()
    {
        // Each process has its own, since several run at once.
        s_clip = std::make_unique<TemporaryFolder>();
        s_folder = s_clip->Path();
        std::ofstream(s_folder + "/s.srt") << "1\n00:00:00,000 --> 00:00:00,300\nHello\n";
        MakeClip({"-f",
                  "lavfi",
                  "-i",
                  "testsrc2=s=96x64:r=25:d=0.4",
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
                  "libx264",
                  "-c:a",
                  "aac",
                  "-c:s",
                  "srt",
                  "-metadata:s:a:0",
                  "language=eng",
                  "-metadata:s:a:1",
                  "language=deu",
                  "clip.mkv"},
                 s_folder);
    }
    static void TearDownTestSuite() { s_clip.reset(); }
    Convert() { std::filesystem::copy_file(s_folder + "/clip.mkv", Folder() / "in.mkv"); }

    ProcessResult Run(std::vector<std::string> words) const
    {
        words.insert(words.begin(), "convert");
        return Zconf(words);
    }
    /// The output "out.mkv" of a conversion that must succeed.
    MediaInfo Made(std::vector<std::string> words) const
    {
        words.insert(words.begin(), {"in.mkv", "out.mkv", "-p", "mkv-h264-ac3", "--overwrite"});
        const ProcessResult result = Run(words);
        EXPECT_EQ(result.exitCode, 0) << result.messages;
        return Info("out.mkv");
    }
    std::string Refusal(std::vector<std::string> words) const
    {
        words.insert(words.begin(), {"in.mkv", "out.mkv", "-p", "mkv-h264-ac3"});
        const ProcessResult result = Run(words);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_FALSE(Exists("out.mkv"));
        return result.messages;
    }

    /// The command failed with that sentence. What it noted before, other tests compare.
    static void ExpectRefused(const ProcessResult& result, const std::string& sentence)
    {
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.output, "");
        const std::size_t last = result.messages.rfind("zconf: ");
        EXPECT_EQ(result.messages.substr(std::min(last, result.messages.size())),
                  "zconf: " + sentence + "\n");
    }

private:
    static inline std::unique_ptr<TemporaryFolder> s_clip;
    static inline std::string s_folder;
};

TEST_F(Convert, MakesAFileInOneCommand)
{
    const ProcessResult result = Run({"in.mkv", "out.mp4"});
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.messages, HasSubstr("zconf: note: the preset 'mp4-h264-aac' makes such a file\n"));
    EXPECT_THAT(result.messages, HasSubstr("zconf: out.mp4: done in 0:00:0")); // The time and the size vary.
    EXPECT_EQ(Info("out.mp4").Video().codec, "h264");
    EXPECT_EQ(Info("out.mp4").Audio().codec, "aac");
    EXPECT_THAT(Files(), ElementsAre("in.mkv", "out.mp4"));
}

TEST_F(Convert, SavesTheJobThatItRuns)
{
    EXPECT_EQ(Run({"in.mkv", "out.mp3", "--preset", "mp3", "--save-job", "job.json"}).exitCode, 0);
    EXPECT_EQ(Zconf({"job", "check", "job.json"}).exitCode, 0);
    std::filesystem::remove(Folder() / "out.mp3");
    EXPECT_EQ(RunJob().exitCode, 0);
    EXPECT_EQ(Info("out.mp3").Audio().codec, "mp3");
}

TEST_F(Convert, KeepsAFileThatIsThereUnlessAskedOtherwise)
{
    Write("out.mp3", "old");
    ExpectRefused(Run({"in.mkv", "out.mp3", "-p", "mp3"}),
                  "node 2, filePath: 'out.mp3' exists already; the option 'overwrite' replaces it");
    EXPECT_EQ(Read("out.mp3"), "old");
    EXPECT_EQ(Run({"in.mkv", "out.mp3", "-p", "mp3", "--overwrite"}).exitCode, 0);
}

TEST_F(Convert, PutsAFileIntoAFolder)
{
    std::filesystem::create_directory(Folder() / "films");
    EXPECT_EQ(Run({"in.mkv", "films", "-p", "mp3"}).exitCode, 0);
    EXPECT_EQ(Run({"in.mkv", "films/", "-p", "flac"}).exitCode, 0);
    EXPECT_TRUE(Exists("films/in.mp3"));
    EXPECT_TRUE(Exists("films/in.flac"));
}

TEST_F(Convert, RefusesTargetsThatAreNot)
{
    ExpectRefused(Run({"in.mkv", "-", "-p", "mp3"}),
                  "The output of a job must be a named file, not standard output");
    ExpectRefused(Run({"-", "out.mp3"}), "The input of a job must be a named file, not standard input");
    ExpectRefused(
        Run({"in.mkv", "out.mkv", "-p", "mp4-h264-aac"}),
        "'out.mkv' is named like a file of the container matroska, and the container to make is mp4; "
        "another preset makes the one, another extension fits the other");
    ExpectRefused(Run({"in.mkv", "out.xyz"}),
                  "No preset makes a file with the extension of 'out.xyz'; --preset "
                  "names one (see zconf list presets)");
    ExpectRefused(Run({"in.mkv", "./in.mkv", "-p", "mkv-h264-ac3", "--overwrite"}),
                  "The output and the input are the same file: './in.mkv'");
    ExpectRefused(Run({"in.mkv", "out.mp3", "--save-job", "-"}),
                  "--save-job needs a named file; the command 'job new' writes to standard output");
    ExpectRefused(Run({"in.mkv", "gone/", "-p", "mp3"}),
                  "The job cannot be run: node 2, filePath: cannot write "
                  "'gone/in.mp3': No such file or directory");
    EXPECT_THAT(Files(), ElementsAre("in.mkv"));
}

TEST_F(Convert, SetsSettingsInPlaceOfThePresets)
{
    const MediaInfo made =
        Made({"--set", "video.width=64", "--set", "video.height=48", "--set", "video.tune=animation", "--fps",
              "12.5", "--codec", "mp3", "--set", "metadata.title=A=B"});
    EXPECT_EQ(made.Video().width, 64);
    EXPECT_EQ(made.Video().height, 48);
    EXPECT_NEAR(made.Video().rate, 12.5, 0.01);
    EXPECT_EQ(made.Audio().codec, "mp3");
    EXPECT_EQ(made.tags.at("title"), "A=B");
}

TEST_F(Convert, RefusesSettingsAsPresetsAreRefused)
{
    EXPECT_EQ(Refusal({"--set", "video.bitrate=fast"}),
              "zconf: video.bitrate: expected a positive integer, found 'fast'\n");
    EXPECT_EQ(Refusal({"--set", "video.bitrat=1"}), "zconf: video.bitrat: unknown setting 'bitrat'; did you "
                                                    "mean 'bitrate' or 'bitrate_mode' or 'peakBitrate'?\n");
    EXPECT_EQ(Refusal({"--codec", "h246"}),
              "zconf: 'h246' is not a known codec; did you mean 'CODEC_ID_H264' or 'CODEC_ID_H261' or "
              "'CODEC_ID_H263'?\n");
    EXPECT_EQ(Refusal({"--max-size", "640"}),
              "zconf: '640' is not a frame size: expected WIDTHxHEIGHT, such as 1920x1080\n");
    EXPECT_EQ(Refusal({"--fps", "0"}),
              "zconf: '0' is not a frame rate: expected a number such as 25, 29.97 or 30000/1001\n");
    EXPECT_EQ(Refusal({"--upscale"}), "zconf: --upscale needs --max-size\n");
    EXPECT_EQ(Refusal({"--start", "soon"}),
              "zconf: 'soon' is not a time: expected seconds or H:MM:SS, such as 90.5 or 1:02:03.5\n");
    EXPECT_EQ(Refusal({"--copy", "vidio"}),
              "zconf: 'vidio' is not a known kind of stream to copy (video, audio, "
              "subtitles); did you mean 'video' or 'audio'?\n");
    EXPECT_EQ(Refusal({"--start", "5"}), "zconf: in.mkv: start: lies behind the end of the file\n");
    EXPECT_EQ(
        Refusal({"--set", "video.codec.options.encode.stats=x"}),
        "zconf: mkv-h264-ac3.$$STREAMS$$.video.codec.options.encode.stats: the option 'stats' of encoder "
        "libx264 cannot be set by a job or a preset\n");
}

TEST_F(Convert, LimitsTheSize)
{
    const StreamInfo video = Made({"--max-size", "48x48"}).Video();
    EXPECT_EQ(video.width, 48);
    EXPECT_EQ(video.height, 32);
    EXPECT_EQ(Made({"--max-size", "960x640"}).Video().width, 96);
    EXPECT_EQ(Made({"--max-size", "192x192", "--upscale"}).Video().width, 192);
}

TEST_F(Convert, TakesTheLanguagesThatAreAskedFor)
{
    const auto languages = [this](const std::vector<std::string>& words) {
        std::vector<std::string> found;
        for (const StreamInfo& audio : Made(words).Of(AVMEDIA_TYPE_AUDIO))
        {
            found.push_back(audio.language);
        }
        return found;
    };
    EXPECT_THAT(languages({"--audio-language", "ger"}), ElementsAre("deu"));
    EXPECT_THAT(languages({"--audio-language", "deu,eng"}), ElementsAre("deu", "eng"));
    EXPECT_THAT(languages({"--all-audio"}), ElementsAre("eng", "deu"));
    std::filesystem::remove(Folder() / "out.mkv");
    EXPECT_EQ(Refusal({"--audio-language", "fra"}),
              "zconf: in.mkv: there is no audio in 'fra'; the file has eng, deu\n");
}

TEST_F(Convert, CopiesStreamsAsTheyAre)
{
    const MediaInfo made = Made({"--copy", "video,audio", "--copy", "subtitles", "--all-audio"});
    EXPECT_EQ(made.Video().codec, "h264");
    EXPECT_EQ(made.Of(AVMEDIA_TYPE_AUDIO).size(), 2U);
    EXPECT_EQ(made.Audio().codec, "aac");
    EXPECT_EQ(made.Of(AVMEDIA_TYPE_SUBTITLE).at(0).codec, "subrip");
    const ProcessResult sums =
        Shell("for f in in.mkv out.mkv; do ffmpeg -v error -i $f -map 0:v -map 0:a -c copy "
              "-f streamhash -; done | sort | uniq -c | awk '{print $1}' | sort -u");
    EXPECT_EQ(sums.output, "2\n");
    ExpectRefused(
        Run({"in.mkv", "out.webm", "--copy", "video"}),
        "in.mkv: video stream 0: cannot be copied, since the container webm cannot hold CODEC_ID_H264; it "
        "holds CODEC_ID_VP9 or CODEC_ID_VP8; CODEC_ID_H264 goes into matroska, mov or mp4");
}

TEST_F(Convert, ConvertsAPartOfTheInput)
{
    const MediaInfo made = Made({"--start", "0.12", "--end", "0:00:00.32"});
    EXPECT_NEAR(made.Video().seconds, 0.2, 0.001);
    EXPECT_NEAR(made.Audio().seconds, 0.2, 0.04);
}

TEST_F(Convert, UsesADisabledEncoderWhenAsked)
{
    EXPECT_THAT(Refusal({"--codec", "h265"}),
                HasSubstr("encoding CODEC_ID_H265 is disabled unless its encoder is named "
                          "('libx265'"));
    const ProcessResult result = Run({"in.mkv", "out.mkv", "-p", "mkv-h264-ac3", "--codec", "h265",
                                      "--allow-disabled", "--progress", "json"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.messages,
                HasSubstr("zconf: note: The preset's profile, preset, tune, PIXELFORMAT for video belong to "
                          "CODEC_ID_H264, and are not used for CODEC_ID_H265\n"));
    // x265 warns about the small clip; what it tells besides is not a warning.
    EXPECT_EQ(result.output.find("x265 [info]"), std::string::npos) << result.output;
    EXPECT_EQ(Info("out.mkv").Video().codec, "hevc");
    EXPECT_EQ(Made({"--codec", "h265", "--set", "video.preferred_encoder=libx265"}).Video().codec, "hevc");
}

TEST_F(Convert, TellsProgramsHowFarItIs)
{
    const ProcessResult result = Run({"in.mkv", "out.mp3", "-p", "mp3", "--progress", "json"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.messages.find("out.mp3: "), std::string::npos) << result.messages;
    EXPECT_THAT(result.output, StartsWith(R"({"event":"progress","target":0,"targets":1,"file":"out.mp3",)"));
    EXPECT_THAT(result.output, HasSubstr("\n{\"event\":\"done\",\"file\":\"out.mp3\",\"seconds\":"));
    EXPECT_EQ(result.output.back(), '\n');
}

TEST_F(Convert, ShowsWhatItWouldRun)
{
    const ProcessResult result = Run({"in.mkv", "out.mp3", "-p", "mp3", "-n"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, StartsWith("ffmpeg "));
    // 192 kbit/s of about 0.4 s.
    EXPECT_THAT(result.messages, HasSubstr("zconf: note: 'out.mp3' will have about "));
    EXPECT_FALSE(Exists("out.mp3"));
}

TEST_F(Convert, ShowsABarThatFitsTheTerminal)
{
    ProcessOptions options;
    options.terminal = true;
    const std::string erase = "\r\x1b[K";
    std::string output = Shell("stty -F /dev/stdout cols 40; \"$ZCONF\" convert in.mkv "
                               "a-name-that-is-quite-long.mp3 -p mp3",
                               options)
                             .output;
    EXPECT_THAT(output, HasSubstr("[--------] 0%"));
    std::size_t bars = 0;
    for (std::size_t next = 0; (next = output.find(erase)) != std::string::npos; ++bars)
    {
        output.erase(0, next + erase.size());
        EXPECT_TRUE(output.front() != '[' || output.find('\r') <= 39U) << output;
    }
    EXPECT_GE(bars, 2U);
}

} // namespace
