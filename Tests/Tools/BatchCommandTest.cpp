#include "Tests/Support/MediaTest.h"
#include "Tests/Support/RunFixtures.h"

#include <gmock/gmock.h>

#include <rapidjson/document.h>

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

/// `zconf batch`, from sounds to WAV files.
class BatchCommand : public MediaTest
{
protected:
    BatchCommand()
    {
        Write("wav.json", kWavPreset);
        fs::create_directory(Folder() / "in");
        for (const char* const name : {"in/a.wav", "in/b.wav", "in/c.wav"})
        {
            Write(name, SilentWav());
        }
    }

    ProcessResult NewBatch(std::vector<std::string> more = {"in"}, const ProcessOptions& options = {}) const
    {
        std::vector<std::string> words = {"batch", "new", "-p", "wav.json", "--output-dir", "out", "-o", "b"};
        words.insert(words.end(), more.begin(), more.end());
        return Zconf(words, options);
    }
    ProcessResult Run(std::vector<std::string> more = {}, const ProcessOptions& options = {}) const
    {
        std::vector<std::string> words = {"batch", "run", "b"};
        words.insert(words.end(), more.begin(), more.end());
        return Zconf(words, options);
    }
    /// A program to be taken for ffmpeg.
    void Script(const std::string& lines) const
    {
        Write("engine", "#!/bin/bash\ntarget=${!#}; target=${target#file:}\n" + lines + "\n");
        ::chmod((Folder() / "engine").c_str(), 0755);
    }
};

TEST_F(BatchCommand, PlansRunsAndTells)
{
    const ProcessResult made = NewBatch();
    EXPECT_EQ(made.exitCode, 0);
    EXPECT_EQ(made.output, "");
    EXPECT_EQ(made.messages, "zconf: b: 3 jobs planned\n");
    const ProcessResult waiting = Zconf({"batch", "status", "b"});
    EXPECT_EQ(waiting.exitCode, 1);
    EXPECT_EQ(waiting.output, "b: 3 jobs: 3 waiting\n0:00:00 of media made, 0:00:01 left\n");
    ExpectQuietSuccess(Run({"--jobs", "2"}));
    const ProcessResult done = Zconf({"batch", "status", "b"});
    ExpectQuietSuccess(done);
    EXPECT_EQ(done.output, "b: 3 jobs: 3 done\n0:00:01 of media made, 0:00:00 left\n");
    EXPECT_EQ(Info("out/b.wav").Audio().codec, "pcm_s16le");
    EXPECT_THAT(Files(), ElementsAre("b", "in", "out", "wav.json"));
}

TEST_F(BatchCommand, TakesListsOfInputs)
{
    Write("list", "in/a.wav\n\nin/c.wav");
    EXPECT_EQ(NewBatch({"--files-from", "list"}).messages, "zconf: b: 2 jobs planned\n");
    fs::remove_all(Folder() / "b");
    Write("in/new\nline.wav", SilentWav());
    ProcessOptions options;
    options.input = std::string("in/new\nline.wav\0in/a.wav\0", 24);
    EXPECT_EQ(NewBatch({"--files-from", "-", "-0", "in/b.wav"}, options).messages,
              "zconf: b: 3 jobs planned\n");
    fs::remove_all(Folder() / "b");
    ExpectFailure(NewBatch({"--files-from", "-"}, options),
                  "standard input: a NUL byte stands in a line; --null reads a list of those");
}

TEST_F(BatchCommand, ListsWhatCannotBePlannedAndGoesOn)
{
    Write("in/b.wav", "not media");
    const ProcessResult made = NewBatch();
    EXPECT_EQ(made.exitCode, 0);
    EXPECT_THAT(made.messages, HasSubstr("zconf: note: job 2 ('../in/b.wav', preset 'wav'): in/b.wav: cannot "
                                         "be read: Invalid data found"));
    EXPECT_THAT(made.messages, HasSubstr("zconf: b: 2 jobs planned\n"));
    ExpectQuietSuccess(Run());
    EXPECT_EQ(Zconf({"batch", "status", "b"}).exitCode, 0);
}

TEST_F(BatchCommand, RefusesTwoInputsWithOneOutput)
{
    fs::create_directory(Folder() / "in/x");
    Write("in/x/a.wav", SilentWav());
    const ProcessResult made = NewBatch();
    EXPECT_EQ(made.exitCode, 2);
    EXPECT_THAT(made.messages, HasSubstr("would both make"));
    EXPECT_THAT(Files(), ElementsAre("in", "wav.json"));
}

TEST_F(BatchCommand, RefusesUnknownPlaceholders)
{
    ExpectFailure(NewBatch({"--name", "{stam}.{ext}", "in"}),
                  "the name pattern '{stam}.{ext}': unknown placeholder '{stam}' (known: {stem}, {ext}, "
                  "{preset}, {number}, {parent}); did you mean 'stem'?");
}

TEST_F(BatchCommand, NotesOutputsThatExist)
{
    fs::create_directory(Folder() / "out");
    Write("out/a.wav", "old");
    const ProcessResult made = NewBatch();
    EXPECT_EQ(made.exitCode, 0);
    EXPECT_THAT(made.messages, HasSubstr("zconf: note: 1 output exists already, such as '"));
    const ProcessResult run = Run();
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.messages, HasSubstr("zconf: job 1 ('../in/a.wav', preset 'wav'): "));
    EXPECT_EQ(Read("out/a.wav"), "old");
    ExpectQuietSuccess(Run({"--overwrite"}));
}

TEST_F(BatchCommand, TellsFailuresByTheirExitCodes)
{
    ASSERT_EQ(NewBatch().exitCode, 0);
    Script("echo 'disk on fire' >&2; exit 5");
    const ProcessResult failed = Run({"--ffmpeg", "./engine", "--fail-fast"});
    EXPECT_EQ(failed.exitCode, 3);
    EXPECT_EQ(failed.messages, "zconf: job 1 ('../in/a.wav', preset 'wav'): ffmpeg failed to make '" +
                                   (fs::canonical(Folder()) / "out/a.wav").string() +
                                   "' (exit code 5): disk on fire\n");
    Script("echo 'not media' > \"$target\"");
    EXPECT_EQ(Run({"--ffmpeg", "./engine", "--only", "2"}).exitCode, 4);
    const ProcessResult status = Zconf({"batch", "status", "b"});
    EXPECT_EQ(status.exitCode, 1);
    EXPECT_THAT(status.output, HasSubstr("b: 3 jobs: 2 failed, 1 waiting\n"));
    EXPECT_THAT(status.output, HasSubstr("failed"));
}

TEST_F(BatchCommand, EndsWithTheExitCodeOfTheFailureThatMattersMost)
{
    ASSERT_EQ(NewBatch().exitCode, 0);
    const std::string fail = "[[ $* != */a.wav* ]] || exit 5; ";
    const std::string differ = "[[ $* != */b.wav* ]] || { echo 'not media' > \"$target\"; exit 0; }; ";
    const std::string copy = "cp in/c.wav \"$target\"";
    fs::rename(Folder() / "in/c.wav", Folder() / "c.wav");
    Script(fail + differ + copy);
    EXPECT_EQ(Run({"--ffmpeg", "./engine"}).exitCode, 2);
    fs::rename(Folder() / "c.wav", Folder() / "in/c.wav");
    EXPECT_EQ(Run({"--ffmpeg", "./engine", "--retry", "1"}).exitCode, 3);
    Script(differ + copy);
    EXPECT_EQ(Run({"--ffmpeg", "./engine"}).exitCode, 4);
    Script(copy);
    ExpectQuietSuccess(Run({"--ffmpeg", "./engine"}));
}

TEST_F(BatchCommand, TellsTheCommandsOfFailuresAsJson)
{
    ASSERT_EQ(NewBatch().exitCode, 0);
    Script("exit 5");
    EXPECT_EQ(Run({"--ffmpeg", "./engine", "--fail-fast"}).exitCode, 3);
    const ProcessResult status = Zconf({"batch", "status", "b", "--json"});
    rapidjson::Document json;
    json.Parse(status.output.c_str());
    ASSERT_TRUE(json.IsObject()) << status.output;
    const auto& commands = json["jobs"][0]["commands"];
    ASSERT_EQ(commands.Size(), 1U);
    EXPECT_STREQ(commands[0][0].GetString(), "./engine");
    EXPECT_EQ(commands[0][commands[0].Size() - 1].GetString(),
              "file:" + (fs::canonical(Folder()) / "out/a.wav").string());
    EXPECT_FALSE(json["jobs"][1].HasMember("commands"));
}

TEST_F(BatchCommand, WritesTheStatusAsJson)
{
    ASSERT_EQ(NewBatch().exitCode, 0);
    ExpectQuietSuccess(Run({"--only", "2"}));
    const ProcessResult status = Zconf({"batch", "status", "b", "--json"});
    rapidjson::Document json;
    json.Parse(status.output.c_str());
    ASSERT_TRUE(json.IsObject()) << status.output;
    EXPECT_FALSE(json["done"].GetBool());
    EXPECT_EQ(json["counts"]["done"].GetInt(), 1);
    EXPECT_EQ(json["counts"]["waiting"].GetInt(), 2);
    EXPECT_DOUBLE_EQ(json["media_left"].GetDouble(), 0.4);
    ASSERT_EQ(json["jobs"].Size(), 3U);
    EXPECT_STREQ(json["jobs"][0]["state"].GetString(), "waiting");
    EXPECT_STREQ(json["jobs"][1]["state"].GetString(), "done");
    EXPECT_EQ(json["jobs"][1]["output"].GetString(), (fs::canonical(Folder()) / "out/b.wav").string());
    EXPECT_EQ(json["jobs"][1]["attempts"].GetInt(), 1);
    EXPECT_GT(json["jobs"][1]["size_after"].GetInt(), 0);
}

TEST_F(BatchCommand, StopsOnASignalAndGoesOnLater)
{
    ASSERT_EQ(NewBatch().exitCode, 0);
    Script("echo half > \"$target\"; touch running; exec sleep 60");
    const ProcessResult result =
        Shell("\"$ZCONF\" batch run b --ffmpeg ./engine & run=$!; "
              "while [[ ! -e running ]]; do sleep 0.01; done; kill -TERM $run; wait $run; echo $?");
    EXPECT_EQ(result.output, "143\n");
    EXPECT_TRUE(fs::is_empty(Folder() / "out"));
    EXPECT_THAT(Zconf({"batch", "status", "b"}).output, HasSubstr("b: 3 jobs: 1 cancelled, 2 waiting\n"));
    ExpectQuietSuccess(Run());
}

TEST_F(BatchCommand, DoesNotRunABatchTwiceAtOnce)
{
    ASSERT_EQ(NewBatch().exitCode, 0);
    Script("touch running; while [[ ! -e go ]]; do sleep 0.01; done; cp in/a.wav \"$target\"");
    const ProcessResult result =
        Shell("\"$ZCONF\" batch run b --ffmpeg ./engine & run=$!; "
              "while [[ ! -e running ]]; do sleep 0.01; done; \"$ZCONF\" batch run b; echo $?; "
              "\"$ZCONF\" batch status b | sed -n 1p; touch go; wait $run; echo $?");
    EXPECT_EQ(result.output, "2\nb: 3 jobs: 1 running, 2 waiting\n0\n");
    EXPECT_EQ(result.messages, "zconf: b is being run by another process\n");
}

TEST_F(BatchCommand, WaitsForTheEndWhenItWatches)
{
    ASSERT_EQ(NewBatch().exitCode, 0);
    const ProcessResult result = Shell("\"$ZCONF\" batch run b & \"$ZCONF\" batch status b --watch; wait");
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "b: 3 jobs: 3 done\n0:00:01 of media made, 0:00:00 left\n");
}

TEST_F(BatchCommand, DoesNotWatchABatchThatNobodyRuns)
{
    ASSERT_EQ(NewBatch().exitCode, 0);
    const ProcessResult result = Shell("timeout 60 \"$ZCONF\" batch status b --watch");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "b: 3 jobs: 3 waiting\n0:00:00 of media made, 0:00:01 left\n");
}

TEST_F(BatchCommand, WritesJsonThatIsUtf8WhateverNamesAre)
{
    Write("in/x\xff\\.wav", SilentWav());
    ASSERT_EQ(NewBatch({"in/x\xff\\.wav"}).exitCode, 0);
    const ProcessResult status = Zconf({"batch", "status", "b", "--json"});
    rapidjson::Document json;
    json.Parse<rapidjson::kParseValidateEncodingFlag>(status.output.data(), status.output.size());
    ASSERT_FALSE(json.HasParseError()) << status.output;
    EXPECT_EQ(json["jobs"][0]["input"].GetString(), (fs::canonical(Folder()) / "in/x\\xff\\.wav").string());
}

TEST_F(BatchCommand, ShowsALineOnATerminal)
{
    ProcessOptions options;
    options.terminal = true;
    const ProcessResult made = NewBatch({"in"}, options);
    EXPECT_EQ(made.exitCode, 0);
    EXPECT_THAT(made.output, HasSubstr("[######--------------] planning 1 of 3 inputs"));
    EXPECT_THAT(made.output, testing::EndsWith("zconf: b: 3 jobs planned\r\n"));
    const ProcessResult result = Run({}, options);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, HasSubstr("] 2 of 3 done, 1 running  "));
    EXPECT_THAT(result.output, HasSubstr("zconf: b: 3 jobs: 3 done\r\n"));
}

TEST_F(BatchCommand, RefusesNumbersThatCannotBe)
{
    for (const char* const words : {"--jobs=0", "--jobs=257", "--retry=-1", "--only=0", "--engine=cloud"})
    {
        EXPECT_EQ(Run({words}).exitCode, 2) << words;
    }
    EXPECT_EQ(Run({"--keep-going", "--fail-fast"}).exitCode, 2);
}

} // namespace
