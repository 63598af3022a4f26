#include "Media/Batch/BatchPlan.h"

#include "Media/Batch/BatchPaths.h"
#include "Media/MediaException.h"
#include "Tests/Support/BatchTest.h"
#include "Tests/Support/Expect.h"

#include <gmock/gmock.h>

#include <sys/file.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

class PlanningBatch : public BatchTest
{
protected:
    /// Expects that nothing is left of it.
    void ExpectRefused(const BatchRequest& request, const std::string& reason) const
    {
        const std::vector<std::string> before = Names();
        const auto thrown = ExpectThrow<PlanException>([&] { PlanBatch(request); });
        EXPECT_EQ(thrown.description, reason);
        EXPECT_EQ(Names(), before);
    }
    std::vector<std::string> Names() const
    {
        std::vector<std::string> names = Folder().Names();
        std::sort(names.begin(), names.end());
        return names;
    }
    static std::vector<std::string> Outputs(const Batch& batch)
    {
        std::vector<std::string> outputs;
        for (const BatchJob& job : batch.jobs)
        {
            outputs.push_back(job.output);
        }
        return outputs;
    }
    std::string JobText(int number, const std::string& file, const std::string& preset = "wav") const
    {
        return "job " + std::to_string(number) + " (input '" + Name("in/" + file) + "', preset '" + preset +
               "')";
    }
};

TEST_F(PlanningBatch, MakesTheFolderWithADocumentForEachJob)
{
    MakeInputs({"b.wav", "a.wav"});
    const PlannedBatch planned = Plan();
    EXPECT_FALSE(planned.isCancelled);
    EXPECT_THAT(planned.existing, IsEmpty());
    const Batch batch = ReadBatch(Name("b"));
    ASSERT_EQ(batch.jobs.size(), 2U);
    EXPECT_EQ(batch.jobs[0].input, Name("in/a.wav"));
    EXPECT_EQ(batch.jobs[0].output, "a.wav");
    EXPECT_EQ(batch.jobs[0].preset, "wav");
    EXPECT_EQ(batch.jobs[0].duration, 200000);
    EXPECT_EQ(batch.jobs[0].size, SilentWav().size());
    EXPECT_EQ(batch.outputFolder, Name("out"));
    EXPECT_TRUE(Exists("b/jobs/000001.json") && Exists("b/jobs/000002.json"));
    EXPECT_TRUE(fs::is_empty(Name("b/results")));
    EXPECT_FALSE(Exists("out"));
    EXPECT_THAT(Names(), ElementsAre("b", "in", "wav.json"));
}

TEST_F(PlanningBatch, GivesTheFolderThePermissionsOfNewFolders)
{
    MakeInputs({"a.wav"});
    Plan();
    struct stat batch = {};
    struct stat other = {};
    ASSERT_EQ(::stat(Name("b").c_str(), &batch), 0);
    ASSERT_EQ(::stat(Name("in").c_str(), &other), 0);
    EXPECT_EQ(batch.st_mode, other.st_mode);
}

TEST_F(PlanningBatch, PlansEachInputWithEachPresetInTheSameOrderEachTime)
{
    std::vector<std::string> names;
    for (int i = 10; i < 30; ++i)
    {
        names.push_back(std::to_string(i) + ".wav");
    }
    MakeInputs(names);
    WriteFile(Name("other.json"), kWavPreset);
    BatchRequest request = Request();
    request.presets.push_back(Name("other.json"));
    request.namePattern = "{number}-{stem}-{preset}-{parent}.{ext}";
    request.threads = 4;
    std::vector<std::size_t> progress;
    request.onProgress = [&progress](std::size_t done, std::size_t count) {
        progress.push_back(done);
        EXPECT_EQ(count, 20U);
    };
    const Batch batch = PlanBatch(request).batch;
    ASSERT_EQ(batch.jobs.size(), 40U);
    EXPECT_EQ(batch.jobs[2].output, "000003-11-wav-in.wav");
    EXPECT_EQ(batch.jobs[39].output, "000040-29-other-in.wav");
    ASSERT_EQ(progress.size(), 20U);
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
}

TEST_F(PlanningBatch, KeepsWhatCannotBePlannedWithItsReason)
{
    MakeInputs({"a.wav"});
    WriteFile(Name("in/b.wav"), "not media");
    BatchRequest request = Request();
    request.inputs.push_back(Name("missing.wav"));
    PlanBatch(request);
    const Batch batch = ReadBatch(Name("b"));
    ASSERT_EQ(batch.jobs.size(), 3U);
    EXPECT_TRUE(batch.jobs[0].IsPlanned());
    EXPECT_EQ(batch.jobs[1].refusal.find(Name("in/b.wav") + ": cannot be read: Invalid data found"), 0U)
        << batch.jobs[1].refusal;
    EXPECT_EQ(batch.jobs[2].refusal, Name("missing.wav") + ": cannot be read: No such file or directory");
    EXPECT_FALSE(Exists("b/jobs/000002.json"));
    EXPECT_THAT(States(), ElementsAre("waiting", "refused", "refused"));
}

TEST_F(PlanningBatch, RefusesWhenNothingCanBePlanned)
{
    BatchRequest request = Request();
    ExpectRefused(request, "No media file was found");
    request.inputs = {Name("x.wav"), Name("y.wav")};
    ExpectRefused(request, "No job can be planned: " + Name("x.wav") +
                               ": cannot be read: No such file or directory (and 1 more reason)");
    request.inputs.pop_back();
    ExpectRefused(request,
                  "No job can be planned: " + Name("x.wav") + ": cannot be read: No such file or directory");
    request.presets.clear();
    ExpectRefused(request, "A batch needs a preset");
}

TEST_F(PlanningBatch, RefusesTwoInputsWithOneOutput)
{
    fs::create_directory(Name("in/x"));
    MakeInputs({"a.wav", "x/a.wav"});
    ExpectRefused(Request(), JobText(1, "a.wav") + " and " + JobText(2, "x/a.wav") + " would both make '" +
                                 Name("out/a.wav") +
                                 "'; {parent}, {preset} or {number} in the name pattern tells them apart");
}

TEST_F(PlanningBatch, RefusesTwoOutputsThatAreLinksToOneFile)
{
    MakeInputs({"a.wav", "b.wav"});
    fs::create_directory(Name("out"));
    fs::create_symlink("b.wav", Name("out/a.wav"));
    ExpectRefused(Request(), JobText(1, "a.wav") + " and " + JobText(2, "b.wav") + " would both make '" +
                                 Name("out/b.wav") +
                                 "'; {parent}, {preset} or {number} in the name pattern tells them apart");
}

TEST_F(PlanningBatch, RefusesToReplaceAnInput)
{
    MakeInputs({"a.wav"});
    BatchRequest request = Request();
    request.outputFolder = Name("in");
    ExpectRefused(request,
                  JobText(1, "a.wav") + " would replace '" + Name("in/a.wav") + "', which the batch reads");
    fs::create_directory(Name("out"));
    fs::create_symlink(Name("in/a.wav"), Name("out/a.wav"));
    ExpectRefused(Request(),
                  JobText(1, "a.wav") + " would replace '" + Name("out/a.wav") + "', which the batch reads");
}

TEST_F(PlanningBatch, TellsOutputsThatAreThereAlready)
{
    MakeInputs({"a.wav", "b.wav"});
    fs::create_directory(Name("out"));
    WriteFile(Name("out/b.wav"), "old");
    EXPECT_THAT(Plan().existing, ElementsAre(Name("out/b.wav")));
}

TEST_F(PlanningBatch, DoesNotPutAnOutputIntoAFolderOfItsName)
{
    MakeInputs({"a.wav", "b.wav"});
    fs::create_directories(Name("out/a.wav"));
    const Batch batch = Plan().batch;
    EXPECT_EQ(batch.jobs[0].refusal, "'" + Name("out/a.wav") + "' is a folder");
    EXPECT_TRUE(batch.jobs[1].IsPlanned());
}

TEST_F(PlanningBatch, RefusesAnOutputFolderThatCannotBe)
{
    MakeInputs({"a.wav"});
    BatchRequest request = Request();
    request.outputFolder = Name("wav.json");
    ExpectRefused(request, "'" + Name("wav.json") + "' is not a folder");
    request.outputFolder = Name("x/y");
    ExpectRefused(request, "'" + Name("x/y") + "' cannot be made: there is no folder '" + Name("x") + "/'");
    request.outputFolder = Name("wav.json/y");
    ExpectRefused(request, "'" + Name("wav.json/y") + "' cannot be made: there is no folder '" +
                               Name("wav.json") + "/'");
    request.outputFolder = "";
    ExpectRefused(request, "A batch needs an output folder");
    request.outputFolder = Name("b/out");
    ExpectRefused(request, "'" + Name("b/out") + "' cannot be made: there is no folder '" + Name("b") + "/'");
    request.outputFolder = Name("b");
    ExpectRefused(request, "The output folder '" + Name("b") + "' is inside of the batch");
}

TEST_F(PlanningBatch, RefusesTwoPresetsOfOneName)
{
    MakeInputs({"a.wav"});
    BatchRequest request = Request();
    request.presets.push_back(Name("in/../wav.json"));
    ExpectRefused(request, "Two presets have the name 'wav'");
}

TEST_F(PlanningBatch, RefusesMoreJobsThanTheirNumbersHaveDigits)
{
    BatchRequest request = Request();
    request.presets.clear();
    request.inputs.clear();
    for (int i = 0; i < 300; ++i)
    {
        request.presets.push_back(Name("in/" + std::to_string(i) + ".json"));
        WriteFile(request.presets.back(), kWavPreset);
    }
    // 300 times 3333 would be the most.
    for (int i = 0; i < 3334; ++i)
    {
        request.inputs.push_back(Name("in/" + std::to_string(i) + ".wav"));
    }
    ExpectRefused(request, "A batch has at most 999999 jobs");
}

TEST_F(PlanningBatch, DoesNotReplaceWhatIsThere)
{
    MakeInputs({"a.wav"});
    fs::create_directory(Name("b"));
    const auto thrown = ExpectThrow<RunException>([this] { Plan(); });
    EXPECT_EQ(thrown.description, "'" + Name("b") + "' exists already");
    EXPECT_TRUE(fs::is_empty(Name("b")));
    BatchRequest request = Request();
    request.folder = Name("x/b");
    const auto none = ExpectThrow<RunException>([&] { PlanBatch(request); });
    EXPECT_EQ(none.description, "Cannot make '" + Name("x/b") + "': No such file or directory");
}

TEST_F(PlanningBatch, LeavesNothingWhenItIsCancelled)
{
    MakeInputs({"a.wav", "b.wav"});
    BatchRequest request = Request();
    request.threads = 1;
    request.onProgress = [&request](std::size_t, std::size_t) { request.cancel.Cancel(); };
    EXPECT_TRUE(PlanBatch(request).isCancelled);
    EXPECT_THAT(Names(), ElementsAre("in", "wav.json"));
}

TEST_F(PlanningBatch, IsCancelledBeforeItLooksForInputs)
{
    MakeInputs({"a.wav"});
    BatchRequest request = Request();
    request.cancel.Cancel();
    EXPECT_TRUE(PlanBatch(request).isCancelled);
    EXPECT_THAT(Names(), ElementsAre("in", "wav.json"));
}

TEST_F(PlanningBatch, RemovesWhatAKilledOneHasLeft)
{
    MakeInputs({"a.wav"});
    fs::create_directories(Name(".zelnor-batch-abc123/jobs"));
    WriteFile(Name(".zelnor-batch-abc123/jobs/000001.json"), "{}");
    fs::create_directories(Name(".zelnor-batch-abc124/films"));
    fs::create_directories(Name(".zelnor-batch-somebody/jobs"));
    Plan();
    EXPECT_THAT(Names(),
                ElementsAre(".zelnor-batch-abc124", ".zelnor-batch-somebody", "b", "in", "wav.json"));
}

TEST_F(PlanningBatch, UsesTheExtensionOfTheContainerThatIsAskedFor)
{
    MakeInputs({"a.wav"});
    BatchRequest request = Request();
    request.job.settings = {ParseSetting("container=matroska")};
    EXPECT_THAT(Outputs(PlanBatch(request).batch), ElementsAre("a.mkv"));
}

TEST_F(PlanningBatch, RefusesAContainerThatIsANumber)
{
    MakeInputs({"a.wav"});
    BatchRequest request = Request();
    SettingOverride setting;
    setting.path = "container";
    setting.value = Zelnor::Core::Property("container", 5LL);
    request.job.settings = {setting};
    ExpectRefused(request,
                  "No job can be planned: container: expected the name of a container, as \"mp4\", found 5");
}

TEST_F(PlanningBatch, UsesTheExtensionOfThePresetWhereAnotherSettingIsAskedFor)
{
    MakeInputs({"a.wav"});
    BatchRequest request = Request();
    request.job.settings = {ParseSetting("audio.sample_rate=44100")};
    EXPECT_THAT(Outputs(PlanBatch(request).batch), ElementsAre("a.wav"));
}

TEST_F(PlanningBatch, UsesTheExtensionOfTheDvdThatASourceIsCopiedTo)
{
    MakeInputs({"a.wav"});
    BatchRequest request = Request();
    request.job.streams.losslessDvd = true;
    EXPECT_THAT(Outputs(PlanBatch(request).batch), ElementsAre("a.vob"));
}

TEST_F(PlanningBatch, CountsTheDurationOfThePartThatIsTaken)
{
    MakeInputs({"a.wav"});
    BatchRequest request = Request();
    request.job.start = 50000;
    EXPECT_EQ(PlanBatch(request).batch.jobs[0].duration, 150000);
}

TEST_F(PlanningBatch, KeepsPathsAsTheWayFromItsFolder)
{
    const fs::path former = fs::current_path();
    fs::current_path(Folder().Path());
    fs::create_directory("out");
    const std::string base = fs::current_path().string() + "/b";
    EXPECT_EQ(KeptPath("", base), "");
    EXPECT_EQ(KeptPath("/media/a.wav", base), "/media/a.wav");
    EXPECT_EQ(KeptPath("a.wav", base), "../a.wav");
    EXPECT_EQ(KeptPath("out", base), "../out");
    EXPECT_EQ(KeptPath("out/", base), "../out");
    EXPECT_EQ(KeptPath("out/..", base), "..");
    EXPECT_EQ(KeptPath(".", base), "..");
    EXPECT_EQ(KeptPath("..", base), "../..");
    EXPECT_EQ(KeptPath("missing/a.wav", base), fs::current_path().string() + "/missing/a.wav");
    fs::current_path(former);
}

} // namespace
