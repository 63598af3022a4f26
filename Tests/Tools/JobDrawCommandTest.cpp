#include "Tests/Support/ZconfTest.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class JobDraw : public ZconfTest
{
protected:
    JobDraw() { Write("job.json", kValid); }

    /// A program "dot" that comes before Graphviz's in PATH.
    ProcessOptions WithDot(const std::string& script) const
    {
        std::filesystem::create_directory(Folder() / "bin");
        Write("bin/dot", "#!/bin/sh\n" + script);
        ::chmod((Folder() / "bin/dot").c_str(), 0755);
        ProcessOptions options;
        options.environment = {"PATH=" + (Folder() / "bin").string() + ":/usr/bin:/bin"};
        return options;
    }
};

TEST_F(JobDraw, DotIsWhatTheLibraryDraws)
{
    const auto graph = Conf::ITranscodingMetaGraph::Create();
    graph->Load(Core::MemoryDataInput::Create(kValid));
    const auto dot = Core::MemoryDataOutput::Create();
    graph->SaveInToDot(dot);
    const ProcessResult standard = Zconf({"job", "draw", "job.json", "-o", "-"});
    ExpectQuietSuccess(standard);
    EXPECT_EQ(standard.output, dot->GetData());
    EXPECT_EQ(Zconf({"job", "draw", "job.json"}).output, dot->GetData());
    ExpectQuietSuccess(Zconf({"job", "draw", "job.json", "-o", "job.dot"}));
    EXPECT_EQ(Read("job.dot"), dot->GetData());
}

TEST_F(JobDraw, TheExtensionChoosesTheFormat)
{
    for (const char* const name : {"a.svg", "a.png", "a.pdf", "B.SVG"})
    {
        const ProcessResult result = Zconf({"job", "draw", "job.json", "-o", name});
        ExpectQuietSuccess(result);
        EXPECT_EQ(result.output, "");
    }
    // How Graphviz draws is its own; the format shows in a few bytes.
    EXPECT_THAT(Read("a.svg"), HasSubstr("<svg"));
    EXPECT_THAT(Read("a.png"), StartsWith("\x89PNG\r\n"));
    EXPECT_THAT(Read("a.pdf"), StartsWith("%PDF-"));
    EXPECT_THAT(Read("B.SVG"), HasSubstr("<svg"));
}

TEST_F(JobDraw, TheFormatMayBeGiven)
{
    const ProcessResult result = Zconf({"job", "draw", "job.json", "--format", "svg"});
    ExpectQuietSuccess(result);
    EXPECT_THAT(result.output, HasSubstr("<svg"));
    ExpectQuietSuccess(Zconf({"job", "draw", "job.json", "-f", "dot", "-o", "drawing"}));
    EXPECT_THAT(Read("drawing"), StartsWith("digraph G {\n"));
    EXPECT_EQ(Zconf({"job", "draw", "job.json", "--format", "bmp"}).exitCode, 2);
}

TEST_F(JobDraw, AnUnknownExtensionIsRefused)
{
    for (const char* const name : {"a.bmp", "svg", ".svg", "a.svg.txt"})
    {
        ExpectFailure(Zconf({"job", "draw", "job.json", "-o", name}),
                      std::string(name) + ": the extension is not that of a drawing: expected .dot, .svg, "
                                          ".png, .pdf or .html, or --format");
    }
}

TEST_F(JobDraw, HostileRecordsAreDrawn)
{
    Write("job.json", R"({"vertices":[{"id":1,"data":{"data":{"\"]; x [label=\"":)"
                      R"("trailing \\"}}},{"id":2,"data":{"data":{"\\N\\G\\l":"\u0000&#0;<b>\n"}}}],)"
                      R"("edges":[{"from":1,"to":2}]})");
    ExpectQuietSuccess(Zconf({"job", "draw", "job.json", "-o", "a.svg"}));
    // Graphviz was content with the whole label if it drew the text behind the hostile name.
    EXPECT_THAT(Read("a.svg"), HasSubstr("trailing"));
}

TEST_F(JobDraw, AMissingGraphvizIsReported)
{
    ProcessOptions options;
    options.environment = {"PATH=" + Folder().string()};
    Write("a.svg", "previous");
    ExpectFailure(
        Zconf({"job", "draw", "job.json", "-o", "a.svg"}, options),
        "Drawing as svg needs Graphviz, whose program 'dot' is not in PATH; the format dot does not "
        "need it");
    EXPECT_EQ(Read("a.svg"), "previous");
    ExpectQuietSuccess(Zconf({"job", "draw", "job.json", "-o", "a.dot"}, options));
}

TEST_F(JobDraw, AFailureOfGraphvizIsReportedAndLeavesThePreviousDrawing)
{
    Write("a.png", "previous");
    ExpectFailure(Zconf({"job", "draw", "job.json", "-o", "a.png"},
                        WithDot("echo half; echo 'no such font' >&2; echo more >&2; exit 3")),
                  "Graphviz failed with exit code 3: no such font");
    ExpectFailure(Zconf({"job", "draw", "job.json", "-o", "a.png"}, WithDot("kill -TERM $$")),
                  "Graphviz failed with exit code 143");
    ExpectFailure(Zconf({"job", "draw", "job.json", "-o", "a.png"}, WithDot("exit 0")),
                  "Graphviz failed with exit code 0");
    EXPECT_EQ(Read("a.png"), "previous");
    EXPECT_THAT(Files(), ElementsAre("a.png", "bin", "job.json"));
}

TEST_F(JobDraw, GraphvizGetsTheDrawingWithoutAShell)
{
    ExpectQuietSuccess(
        Zconf({"job", "draw", "job.json", "-o", "$(touch x); 'y'.svg"}, WithDot("echo \"$# $1\"; cat")));
    EXPECT_THAT(Read("$(touch x); 'y'.svg"), StartsWith("1 -Tsvg\ndigraph G {\n"));
    EXPECT_FALSE(Exists("x"));
}

TEST_F(JobDraw, AGraphvizThatReadsAndWritesALotDoesNotHang)
{
    std::string nodes;
    for (int i = 1; i <= 20000; ++i)
    {
        nodes += (i == 1 ? "" : ",") + ("{\"id\":" + std::to_string(i) + "}");
    }
    Write("job.json", "{\"vertices\":[" + nodes + "],\"edges\":[]}");
    ExpectQuietSuccess(
        Zconf({"job", "draw", "job.json", "-o", "a.svg"}, WithDot("head -c 300000 /dev/zero; cat; cat >&2")));
    EXPECT_GT(Read("a.svg").size(), 700000U);
}

} // namespace
