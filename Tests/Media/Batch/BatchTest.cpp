#include "Media/Batch/Batch.h"

#include "Media/Batch/BatchRecord.h"
#include "Media/MediaException.h"
#include "Tests/Support/BatchTest.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;
namespace fs = std::filesystem;

/// Batches that somebody wrote by hand.
class ReadingBatch : public testing::Test
{
protected:
    ReadingBatch()
    {
        fs::create_directories(m_folder / "b/jobs");
        fs::create_directories(m_folder / "b/results");
    }

    std::string Name() const { return (m_folder / "b").string(); }
    static std::string Text(const std::string& jobs, const std::string& version = "1")
    {
        return R"({"batch": {"version": )" + version +
               R"(, "presets": {"p": {"file": "p.json"}}, "outputFolder": "../out",)"
               R"( "namePattern": "{stem}.{ext}", "jobs": )" +
               jobs + "}}";
    }
    static std::string Job(const std::string& members) { return Text(R"({"000001": {)" + members + "}}"); }
    void Write(const std::string& text) const { WriteFile(m_folder / "b/batch.json", text); }
    void ExpectRefused(const std::string& text, const std::string& reason) const
    {
        Write(text);
        const auto thrown = ExpectThrow<JobException>([this] { ReadBatch(Name()); });
        EXPECT_EQ(thrown.description, Name() + "/batch.json: " + reason) << text;
    }
    const TemporaryFolder& Folder() const { return m_folder; }

private:
    TemporaryFolder m_folder;
};

constexpr const char* kGoodJob = R"("input": "../in/a.wav", "preset": "p", "output": "a.wav", "size": 7)";

TEST_F(ReadingBatch, ReadsWhatWasWritten)
{
    Batch batch;
    batch.presets = {{"p", "/presets/p.json"}, {"q", "q.json"}};
    batch.outputFolder = "../out";
    batch.namePattern = "{stem}.{ext}";
    batch.jobs = {{1, "../in/a.wav", "p", "a.wav", "", {"a note", "another"}, 1500, 42},
                  {2, "/in/b \xFF\".wav", "q", "", "x: cannot be read"}};
    Write(BatchText(batch));
    const Batch read = ReadBatch(Name());
    EXPECT_EQ(BatchText(read), BatchText(batch));
    EXPECT_EQ(read.folder, Name());
    ASSERT_EQ(read.jobs.size(), 2U);
    EXPECT_EQ(read.jobs[0].notes, batch.jobs[0].notes);
    EXPECT_EQ(read.jobs[0].duration, 1500);
    EXPECT_EQ(read.jobs[0].size, 42U);
    EXPECT_EQ(read.jobs[1].input, batch.jobs[1].input);
    EXPECT_FALSE(read.jobs[1].IsPlanned());
}

// Moments where every step is linear, and not within a test's patience where a job looks at every preset.
TEST_F(ReadingBatch, TakesAsManyPresetsAsJobs)
{
    constexpr unsigned int kCount = 200'000;
    Batch batch;
    batch.outputFolder = "../out";
    batch.namePattern = "{stem}.{ext}";
    for (unsigned int number = 1; number <= kCount; ++number)
    {
        const std::string preset = "preset " + std::to_string(number);
        batch.presets.push_back({preset, "p.json"});
        batch.jobs.push_back({number, "../in/a.wav", preset, "a.wav", "", {}, {}, 0});
    }
    Write(BatchText(batch));
    const Batch read = ReadBatch(Name());
    EXPECT_EQ(read.presets.size(), kCount);
    EXPECT_EQ(read.jobs.size(), kCount);
}

TEST_F(ReadingBatch, FindsPathsFromTheFolderOfTheBatch)
{
    Write(Job(kGoodJob));
    const Batch batch = ReadBatch(Name() + "//");
    const std::string base = fs::canonical(Folder().Path()).string();
    EXPECT_EQ(batch.folder, Name());
    EXPECT_EQ(batch.PathOf(batch.jobs[0].input), base + "/in/a.wav");
    EXPECT_EQ(batch.PathOf(batch.OutputOf(batch.jobs[0])), base + "/out/a.wav");
    EXPECT_EQ(batch.PathOf("/in/a.wav"), "/in/a.wav");
    EXPECT_EQ(batch.DocumentOf(1), Name() + "/jobs/000001.json");
}

TEST_F(ReadingBatch, KnowsOnlyItsJobs)
{
    Write(Job(kGoodJob));
    const Batch batch = ReadBatch(Name());
    EXPECT_EQ(batch.JobOf(1).output, "a.wav");
    for (const unsigned int number : {0U, 2U})
    {
        const auto thrown = ExpectThrow<JobException>([&] { batch.JobOf(number); });
        EXPECT_EQ(thrown.description,
                  Name() + ": there is no job " + std::to_string(number) + "; the batch has 1");
    }
}

TEST_F(ReadingBatch, RefusesAnotherVersion)
{
    ExpectRefused(Text("{}", "2"), "version: expected 1, found 2");
    ExpectRefused(Text("{}", "\"1\""), "version: expected an integer, found '1'");
}

TEST_F(ReadingBatch, RefusesUnknownMembers)
{
    ExpectRefused(R"({"batch": {"version": 1, "job": {}}})", "job: unknown member; did you mean 'jobs'?");
    ExpectRefused(Job(std::string(kGoodJob) + R"(, "command": "rm")"), "jobs.000001.command: unknown member");
    ExpectRefused(R"({"batch": {"version": 1}, "more": 1})", "expected an object with one member, 'batch'");
    ExpectRefused(R"({"bitch": {"version": 1}})", "expected an object with one member, 'batch'");
}

TEST_F(ReadingBatch, RefusesMembersThatStandThereTwice)
{
    ExpectRefused(Job(std::string(kGoodJob) + R"(, "output": "b.wav")"),
                  "jobs.000001.output: stands there twice");
    ExpectRefused(Text(R"([{"000001": {)" + std::string(kGoodJob) + R"(}}, {"000001": {)" + kGoodJob + "}}]"),
                  "jobs.000001: expected '000002' here");
}

TEST_F(ReadingBatch, RefusesNumbersThatAreNotThePositions)
{
    for (const std::string number : {"000000", "000002", "1", "-00001", "../../x", ""})
    {
        ExpectRefused(Text(R"({")" + number + R"(": {)" + kGoodJob + "}}"),
                      "jobs." + number + ": expected '000001' here");
    }
}

TEST_F(ReadingBatch, RefusesOutputsThatAreNotNamesInTheOutputFolder)
{
    for (const std::string output : {"../a.wav", "/etc/passwd", "", ".", "..", "a/b.wav"})
    {
        ExpectRefused(Job(R"("input": "a", "preset": "p", "size": 1, "output": ")" + output + "\""),
                      "jobs.000001.output: expected the name of a file, found '" + output + "'");
    }
    ExpectRefused(Job(R"("input": "a", "preset": "p", "size": 1, "output": "a\u0000b")"),
                  "jobs.000001.output: a text here cannot hold a NUL byte");
}

TEST_F(ReadingBatch, RefusesPathsThatComeBackOutOfAFolder)
{
    for (const std::string input : {"", "a/../../b", "../a/.."})
    {
        ExpectRefused(
            Job(R"("preset": "p", "size": 1, "output": "o", "input": ")" + input + "\""),
            "jobs.000001.input: expected a path that is absolute, or relative with '..' only at its "
            "beginning, found '" +
                input + "'");
    }
}

TEST_F(ReadingBatch, RefusesWhatIsMissingOrOfAnotherType)
{
    ExpectRefused(Job(R"("input": "a", "preset": "p", "size": 1)"),
                  "jobs.000001.output: expected a string, found nothing");
    ExpectRefused(Job(R"("input": 3, "preset": "p")"), "jobs.000001.input: expected a string, found 3");
    ExpectRefused(Job(R"("input": "a", "preset": "q", "output": "o", "size": 1)"),
                  "jobs.000001.preset: the batch does not have a preset of the name 'q'");
    ExpectRefused(Job(R"("input": "a", "preset": "p", "output": "o", "size": -1)"),
                  "jobs.000001.size: expected an integer from 0 to 9223372036854775807, found -1");
    ExpectRefused(Text("7"), "jobs: expected a group, found 7");
    ExpectRefused(Text(R"({"000001": "a"})"), "jobs.000001: expected a group, found 'a'");
    ExpectRefused(Job(R"("input": "a", "preset": "p", "refusal": "no", "output": "o")"),
                  "jobs.000001.refusal: expected a reason, and no output beside it");
    ExpectRefused(Job(R"("input": "a", "preset": "p", "output": "o", "size": 1, "notes": {"1": 2})"),
                  "jobs.000001.notes.1: expected a string, found 2");
    ExpectRefused(Job(R"("input": "a", "preset": "p", "output": "o", "size": 1, "notes": {"2": "b"})"),
                  "jobs.000001.notes.2: expected '1' here");
}

TEST_F(ReadingBatch, RefusesWhatIsNotJson)
{
    ExpectRefused("", "line 1, column 1: The document is empty.");
    ExpectRefused("[]", "expected an object with one member, 'batch'");
    Write(R"({"batch": {"version": true}})");
    const auto thrown = ExpectThrow<JobException>([this] { ReadBatch(Name()); });
    EXPECT_EQ(thrown.description->find(Name() + "/batch.json: "), 0U) << *thrown.description;
}

TEST_F(ReadingBatch, DoesNotFollowLinksOutOfTheFolder)
{
    Write(Text("{}"));
    fs::create_directories(Folder() / "elsewhere");
    for (const std::string name : {"jobs", "results"})
    {
        fs::remove(Folder() / ("b/" + name));
        fs::create_directory_symlink(Folder() / "elsewhere", Folder() / ("b/" + name));
        const auto thrown = ExpectThrow<JobException>([this] { ReadBatch(Name()); });
        EXPECT_EQ(thrown.description, "Cannot open '" + Name() + "/" + name + "': Not a directory");
        fs::remove(Folder() / ("b/" + name));
        fs::create_directory(Folder() / ("b/" + name));
    }
    fs::rename(Folder() / "b/batch.json", Folder() / "elsewhere/batch.json");
    fs::create_symlink(Folder() / "elsewhere/batch.json", Folder() / "b/batch.json");
    const auto thrown = ExpectThrow<JobException>([this] { ReadBatch(Name()); });
    EXPECT_EQ(thrown.description,
              "Cannot open '" + Name() + "/batch.json': Too many levels of symbolic links");
}

TEST_F(ReadingBatch, SaysWhichFolderIsNotThere)
{
    const auto thrown = ExpectThrow<JobException>([this] { ReadBatch(Name() + "c"); });
    EXPECT_EQ(thrown.description, "Cannot open '" + Name() + "c': No such file or directory");
    EXPECT_EQ(thrown.Get<MediaException::TagFile>(), Name() + "c");
    const auto empty = ExpectThrow<JobException>([] { ReadBatch(""); });
    EXPECT_EQ(empty.description, "Cannot open '': No such file or directory");
}

TEST_F(ReadingBatch, RefusesAnOutputFolderInsideOfTheBatch)
{
    const std::string inside = fs::canonical(Name()).string();
    for (const std::string& folder : {std::string("out"), std::string("results"), std::string("."),
                                      "../" + fs::path(Name()).filename().string(), inside, inside + "/jobs"})
    {
        std::string text = Job(kGoodJob);
        text.replace(text.find("../out"), 6, folder);
        ExpectRefused(text, "outputFolder: expected a folder outside of the batch, found '" + folder + "'");
    }
}

TEST_F(ReadingBatch, NeedsADocument)
{
    EXPECT_EQ(ExpectThrow<JobException>([this] { ReadBatch(Name()); }).description,
              "Cannot open '" + Name() + "/batch.json': No such file or directory");
}

TEST_F(ReadingBatch, NeedsANameThatAFolderCanHave)
{
    EXPECT_EQ(ExpectThrow<JobException>([] { ReadBatch(""); }).description,
              "Cannot open '': No such file or directory");
    const std::string cut = Name() + std::string(1, '\0');
    EXPECT_EQ(ExpectThrow<JobException>([&cut] { ReadBatch(cut); }).description,
              "Cannot open '" + cut + "': Invalid argument");
}

TEST_F(ReadingBatch, RefusesMoreJobsThanTheirNumbersHaveDigits)
{
    std::string jobs = "{\"\":0";
    for (int i = 0; i < 999'999; ++i)
    {
        jobs += ",\"\":0";
    }
    ExpectRefused(Text(jobs + "}"), "jobs: expected at most 999999 jobs, found 1000000");
}

TEST_F(ReadingBatch, RefusesAPresetThatStandsThereTwice)
{
    std::string text = Text("{}");
    const std::string preset = R"("p": {"file": "p.json"})";
    text.insert(text.find(preset), preset + ",");
    ExpectRefused(text, "presets.p: stands there twice");
}

TEST_F(ReadingBatch, RefusesTextsWithANulByte)
{
    ExpectRefused(Job(R"("input": "../in/a.wav", "preset": "p", "output": "a\u0000.wav", "size": 7)"),
                  "jobs.000001.output: a text here cannot hold a NUL byte");
}

TEST_F(ReadingBatch, KnowsNoDurationWhereThePlanHadNone)
{
    Batch batch;
    batch.presets = {{"p", "p.json"}};
    batch.outputFolder = "../out";
    batch.namePattern = "{stem}.{ext}";
    batch.jobs = {{1, "../in/a.wav", "p", "a.wav", ""}};
    Write(BatchText(batch));
    EXPECT_EQ(ReadBatch(Name()).jobs.at(0).duration, std::nullopt);
}

} // namespace
