#include "Tests/Support/Html.h"
#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

namespace
{

using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class JobDrawPage : public ZconfTest
{
protected:
    JobDrawPage() { Write("job.json", kValid); }

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
    ProcessResult Draw(std::vector<std::string> more = {}, const ProcessOptions& options = {}) const
    {
        std::vector<std::string> words = {"job", "draw", "job.json", "-o", "job.html"};
        words.insert(words.end(), more.begin(), more.end());
        return Zconf(words, options);
    }
};

TEST_F(JobDrawPage, IsMadeForTheExtensionAndForTheFormat)
{
    ExpectQuietSuccess(Draw());
    ExpectGoodPage(Read("job.html"));
    const ProcessResult standard = Zconf({"job", "draw", "job.json", "--format", "html"});
    ExpectQuietSuccess(standard);
    EXPECT_EQ(standard.output, Read("job.html"));
    EXPECT_THAT(standard.output, StartsWith("<!DOCTYPE html>\n"));
    EXPECT_THAT(standard.output, HasSubstr("<title>job.json</title>"));
}

TEST_F(JobDrawPage, OfAJobThatCannotBeRunIsMadeAndSaysWhy)
{
    Write("job.json", kUnlinked);
    ExpectQuietSuccess(Draw());
    EXPECT_THAT(Read("job.html"), HasSubstr("<li id=\"fault-1\">2 nodes without links: 1, 2</li>"));
}

TEST_F(JobDrawPage, OpensTheSourcesUnlessItIsToldNotTo)
{
    Write(
        "job.json",
        R"({"vertices":[{"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":"in.wav"}}}},)"
        R"({"id":2,"data":{"data":{"target":{"container":"wav","filePath":"out.wav"}}}},)"
        R"({"id":3,"data":{"data":{"streamRaw":{"id":0}}}}],"edges":[{"from":1,"to":3},{"from":3,"to":2,)"
        R"("data":{"data":{"format_codec_audio":{"codec_id":"CODEC_ID_PCM_S16LE"}}}}]})");
    ExpectQuietSuccess(Draw());
    EXPECT_THAT(Read("job.html"), HasSubstr("in.wav: cannot be read: No such file or directory"));
    ExpectQuietSuccess(Draw({"--document-only"}));
    EXPECT_THAT(Read("job.html"),
                HasSubstr("Nothing is wrong with the document. The sources were not opened."));
}

TEST_F(JobDrawPage, OnlyAPageKnowsADocumentOnly)
{
    ExpectFailure(Zconf({"job", "draw", "job.json", "-o", "job.svg", "--document-only"}),
                  "--document-only is for the format html; a drawing as svg opens no file but the job");
    EXPECT_FALSE(Exists("job.svg"));
}

TEST_F(JobDrawPage, NeedsGraphvizAndLeavesThePreviousPage)
{
    Write("job.html", "previous");
    ProcessOptions options;
    options.environment = {"PATH=" + Folder().string()};
    ExpectFailure(Draw({}, options),
                  "Drawing as html needs Graphviz, whose program 'dot' is not in PATH; the format dot does "
                  "not need it");
    ExpectFailure(Draw({}, WithDot("echo 'no such font' >&2; exit 3")),
                  "Graphviz failed with exit code 3: no such font");
    EXPECT_EQ(Read("job.html"), "previous");
    EXPECT_THAT(Files(), ElementsAre("bin", "job.html", "job.json"));
}

TEST_F(JobDrawPage, TakesOnlyNumbersFromGraphviz)
{
    Write("job.json", kUnlinked);
    for (const char* const answer :
         {"<svg><script>alert(1)</script></svg>", "node 0 1 1", "node 0 <b> 1\\nnode 1 1 1",
          "graph 1 9 9\\nnode 0 1 1\\nnode 0 1 1", "graph 1 9 9\\nnode 0 1 1\\nnode 2 1 1",
          "graph 1 9 9\\nnode 0 1 1\\nnode 1 nan 1", "graph 1 9 9\\nnode 0 1 1\\nnode 1 1e300 1"})
    {
        ExpectFailure(Draw({}, WithDot(std::string("cat >/dev/null; printf '") + answer + "\\n'")),
                      "Graphviz answers something else than a layout");
    }
    ExpectQuietSuccess(Draw(
        {}, WithDot("cat >/dev/null; printf 'graph 1 9 1\\nnode 0 1 1 <b>\\nnode 1 5 1\\nedge <i>\\n'")));
    ExpectGoodPage(Read("job.html"));
}

TEST_F(JobDrawPage, TellsGraphvizNothingOfTheJobButNumbers)
{
    Write("job.json", R"({"vertices":[{"id":71,"data":{"data":{"secret":{"filePath":"name"}}}},{"id":72}],)"
                      R"("edges":[{"from":71,"to":72}]})");
    ExpectFailure(Draw({}, WithDot("cat > seen.dot; exit 1")), "Graphviz failed with exit code 1");
    EXPECT_THAT(Read("seen.dot"), HasSubstr("\n0;\n1;\n2;\n0->2;\n2->1;\n}\n"));
    EXPECT_EQ(Read("seen.dot").find("secret"), std::string::npos);
    EXPECT_EQ(Read("seen.dot").find("71"), std::string::npos);
}

} // namespace
