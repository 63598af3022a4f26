#include "Tests/Support/MediaTest.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class JobVerify : public MediaTest
{
protected:
    JobVerify()
    {
        Write("in.mkv", TinySound());
        ExpectQuietSuccess(New("mp3", "in.mkv", "out.mp3"));
    }

    ProcessResult Verify(std::vector<std::string> more = {}) const
    {
        std::vector<std::string> words = {"job", "verify", "job.json"};
        words.insert(words.end(), more.begin(), more.end());
        return Zconf(words);
    }
    /// A program to be taken for ffmpeg, which copies a file to the target and ends well.
    std::string Copying(const std::string& name) const
    {
        Write("engine", "#!/bin/bash\ntarget=${!#}; cp " + name + " \"${target#file:}\"\n");
        ::chmod((Folder() / "engine").c_str(), 0755);
        return "./engine";
    }
    /// Sound of the job's codec, but of another rate.
    void MakeOther() const
    {
        Make({"-f", "lavfi", "-i", "sine=r=48000:d=0.2", "-ac", "2", "-c:a", "libmp3lame", "other.mp3"});
    }
};

TEST_F(JobVerify, SaysThatAFileIsWhatItsJobSays)
{
    EXPECT_EQ(RunJob().exitCode, 0);
    const ProcessResult result = Verify();
    ExpectQuietSuccess(result);
    EXPECT_EQ(result.output, "out.mp3: verified\n");
    EXPECT_EQ(Verify({"--full"}).output, result.output);
}

TEST_F(JobVerify, ListsTheDifferencesWithAnExitCodeOfTheirOwn)
{
    MakeOther();
    std::filesystem::rename(Folder() / "other.mp3", Folder() / "out.mp3");
    const ProcessResult result = Verify();
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.messages, "");
    EXPECT_EQ(result.output, "out.mp3: 1 difference\n"
                             "  link 3 -> 2, audio stream 0: sample rate: wanted 44100 Hz, found 48000 Hz\n");
}

TEST_F(JobVerify, WritesJson)
{
    MakeOther();
    std::filesystem::rename(Folder() / "other.mp3", Folder() / "out.mp3");
    const ProcessResult result = Verify({"--json"});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.output, R"({
  "verified": false,
  "targets": [{
      "file": "out.mp3",
      "differences": [{
          "link": [3, 2],
          "stream_kind": "audio",
          "stream": 0,
          "what": "sample rate",
          "wanted": "44100 Hz",
          "found": "48000 Hz"
        }],
      "notes": [],
      "quality": []
    }]
}
)");
}

TEST_F(JobVerify, ARunRefusesADifferenceAndLeavesTheOldFile)
{
    MakeOther();
    Write("out.mp3", "old");
    const ProcessResult result = RunJob({"--overwrite", "--ffmpeg", Copying("other.mp3")});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.messages,
              "zconf: 'out.mp3' is not what the job says:\n"
              "  link 3 -> 2, audio stream 0: sample rate: wanted 44100 Hz, found 48000 Hz\n");
    EXPECT_EQ(Read("out.mp3"), "old");
}

TEST_F(JobVerify, ARunKeepsWhatItRefusedWhenAskedTo)
{
    MakeOther();
    const ProcessResult result = RunJob({"--keep-unverified", "--json", "--ffmpeg", Copying("other.mp3")});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_THAT(result.messages, HasSubstr("zconf: note: it is kept as 'out.unverified.mp3'\n"));
    EXPECT_THAT(result.output, HasSubstr("\"outcome\": \"different\""));
    EXPECT_THAT(result.output, HasSubstr("\"kept\": \"out.unverified.mp3\""));
    EXPECT_FALSE(Exists("out.mp3"));
    EXPECT_EQ(Read("out.unverified.mp3"), Read("other.mp3"));
}

TEST_F(JobVerify, ARunWritesWhatItMadeAsJson)
{
    const ProcessResult result = RunJob({"--json"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, R"({
  "targets": [{
      "file": "out.mp3",
      "outcome": "done",
      "warnings": [],
      "notes": [],
      "differences": []
    }]
}
)");
}

TEST_F(JobVerify, ARunWhoseFFmpegFailsIsToldAsJson)
{
    Write("engine", "#!/bin/bash\necho 'first line' >&2; echo 'last \"line\"' >&2; exit 7\n");
    ::chmod((Folder() / "engine").c_str(), 0755);
    const ProcessResult result = RunJob({"--json", "--ffmpeg", "./engine"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.output, R"({
  "targets": [{
      "file": "out.mp3",
      "outcome": "failed",
      "warnings": [],
      "notes": [],
      "differences": [],
      "exit_code": 7,
      "messages": ["first line", "last \"line\""]
    }]
}
)");
    EXPECT_EQ(result.messages,
              "zconf: ffmpeg failed to make 'out.mp3':\n  first line\n  last \"line\"\n  (exit code 7)\n");
}

TEST_F(JobVerify, AFullVerificationShowsItsProgress)
{
    const ProcessResult full = RunJob({"--verify=full", "--progress=json"});
    EXPECT_EQ(full.exitCode, 0);
    // How often depends on the machine's speed.
    EXPECT_THAT(full.output, HasSubstr("\"verifying\":true"));
    EXPECT_THAT(RunJob({"--progress=json", "--overwrite"}).output, testing::Not(HasSubstr("verifying")));
}

TEST_F(JobVerify, ShowsItsProgressWhereEverythingIsDecoded)
{
    EXPECT_EQ(RunJob().exitCode, 0);
    const ProcessResult full = Verify({"--full", "--progress=json"});
    EXPECT_EQ(full.exitCode, 0);
    EXPECT_EQ(full.messages, "");
    // The beginning is always told; how often after that depends on the machine's speed.
    EXPECT_THAT(full.output, StartsWith(R"({"event":"progress","target":0,"targets":1,"file":"out.mp3",)"
                                        R"("pass":0,"passes":1,"done":0.0,"duration":)"));
    EXPECT_THAT(full.output, HasSubstr("\"part\":0.0,\"verifying\":true}\n"));
    EXPECT_THAT(full.output, EndsWith("{\"event\":\"verified\",\"file\":\"out.mp3\",\"differences\":[],"
                                      "\"notes\":[],\"quality\":[]}\n"));
    EXPECT_EQ(
        Verify({"--progress=json"}).output,
        "{\"event\":\"verified\",\"file\":\"out.mp3\",\"differences\":[],\"notes\":[],\"quality\":[]}\n");
    ExpectFailure(Verify({"--full", "--progress=json", "--json"}),
                  "--json and --progress json both write to standard output");
}

TEST_F(JobVerify, ShowsABarOnATerminal)
{
    EXPECT_EQ(RunJob().exitCode, 0);
    ProcessOptions options;
    options.terminal = true;
    const ProcessResult result = Zconf({"job", "verify", "--full", "job.json"}, options);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, HasSubstr("] verifying  0%"));
}

TEST_F(JobVerify, TellsDifferencesAmongItsProgress)
{
    MakeOther();
    std::filesystem::rename(Folder() / "other.mp3", Folder() / "out.mp3");
    const ProcessResult result = Verify({"--progress=json"});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(
        result.output,
        "{\"event\":\"verified\",\"file\":\"out.mp3\",\"differences\":[\"link 3 -> 2, audio stream 0: sample "
        "rate: wanted 44100 Hz, found 48000 Hz\"],\"notes\":[],\"quality\":[]}\n");
}

TEST_F(JobVerify, MeasuresTheQualityOfAVideo)
{
    Write("in.mkv", TinyClip());
    ExpectQuietSuccess(New("mp4-h264-aac", "in.mkv", "out.mp4"));
    ASSERT_EQ(RunJob().exitCode, 0);
    const ProcessResult result = Verify({"--quality"});
    EXPECT_EQ(result.exitCode, 0) << result.messages;
    // The figures are the encoder's.
    EXPECT_THAT(
        result.output,
        testing::MatchesRegex("out.mp4: verified\n  link 3 -> 2, video stream 0: PSNR [2-9][0-9]\\.[0-9]+ "
                              "dB, SSIM 0\\.[89][0-9]+\n"));
    EXPECT_THAT(Verify({"--quality", "--json"}).output, HasSubstr("\"ssim\": 0."));
}

TEST_F(JobVerify, AnUnknownDepthIsRefused)
{
    EXPECT_THAT(RunJob({"--verify=deep"}).messages, HasSubstr("--verify"));
    EXPECT_FALSE(Exists("out.mp3"));
}

} // namespace
