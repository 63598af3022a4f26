#include "Media/Batch/BatchRun.h"

#include "Media/MediaException.h"
#include "Tests/Support/BatchTest.h"
#include "Tests/Support/Expect.h"

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;

using RefusedJobOfABatch = BatchTest;

TEST_F(RefusedJobOfABatch, IsNotRunAndSaysWhyItCouldNotBePlanned)
{
    MakeInputs({"a.wav"});
    WriteFile(Name("in/b.wav"), "not media");
    Plan();
    const std::string reason = ReadBatch(Name("b")).JobOf(2).refusal;
    const auto thrown = ExpectThrow<JobException>([this] { RunBatchJob(Name("b"), 2); });
    EXPECT_EQ(thrown.description, Name("b") + ": job 2 could not be planned: " + reason);
    EXPECT_FALSE(Exists("b/results/000002.json"));
}

TEST_F(RefusedJobOfABatch, HasNodesThatAPlanWouldNumberOtherwise)
{
    MakeInputs({"a.wav"});
    Plan();
    const std::string document = Name("b/jobs/000001.json");
    WriteFile(document,
              R"({"vertices":[{"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":")" +
                  Name("in/a.wav") +
                  R"("}}}},{"id":2,"data":{"data":{"streamRaw":{"id":0}}}},)"
                  R"({"id":7,"data":{"data":{"target":{"container":"wav","filePath":")" +
                  Name("out/a.wav") +
                  R"("}}}}],"edges":[{"from":1,"to":2},{"from":2,"to":7,"data":{"data":)"
                  R"({"format_codec_audio":{"codec_id":"CODEC_ID_PCM_S16LE"}}}}]})");
    const BatchResult result = RunBatchJob(Name("b"), 1, With("exit 1"));
    EXPECT_EQ(result.state, BatchResult::State::Failed);
    EXPECT_EQ(result.reason,
              document + ": node 7: expected nodes from 1 to 3 in order, as a plan numbers them");
    EXPECT_FALSE(Exists("out/a.wav"));
}

} // namespace
