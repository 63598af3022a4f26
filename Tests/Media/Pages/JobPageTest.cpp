#include "Media/Pages/JobPage.h"

#include "Tests/Support/Clip.h"
#include "Tests/Support/Graphs.h"
#include "Tests/Support/Html.h"
#include "Tests/Support/RunFixtures.h"

#include <gmock/gmock.h>

namespace Zelnor::Media
{
namespace
{

using namespace Testing;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

/// The page of what the document alone tells.
std::string PageOf(const std::string& json) { return MakeJobPage(*Loaded(json), {"job.json", false}); }

constexpr const char* kJob =
    R"({"vertices":[{"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":"/a/in.wav"}}}},)"
    R"({"id":2,"data":{"data":{"target":{"container":"mp3","filePath":"out.mp3"}}}},)"
    R"({"id":3,"data":{"data":{"streamRaw":{"id":0}}}}],"edges":[{"from":1,"to":3},{"from":3,"to":2,)"
    R"("data":{"data":{"format_codec_audio":{"codec_id":"CODEC_ID_MP3","bitrate":128000}}}}]})";

/// Names and details of the boxes in the drawing.
std::vector<std::string> Boxes(const std::string& html)
{
    return AllMatches(html, "class=\"(?:name|detail)\"[^>]*>([^<]*)<");
}

TEST(JobPage, HasABoxForEachNodeAndForEachLinkWithARecord)
{
    const std::string html = PageOf(kJob);
    ExpectGoodPage(html);
    EXPECT_THAT(Boxes(html), ElementsAre("format_codec_audio", "CODEC_ID_MP3", "source", "in.wav", "target",
                                         "out.mp3", "streamRaw", "stream 0"));
    EXPECT_THAT(AllMatches(html, "<a href=\"(#[^\"]*)\" class=\"(?:link|node)"),
                ElementsAre("#link-1-to-3", "#link-3-to-2", "#node-1", "#node-2", "#node-3"));
}

TEST(JobPage, HasTheRecordOfEachNodeAndLink)
{
    const std::string html = PageOf(kJob);
    EXPECT_THAT(AllMatches(html, "<h3>([^<]*)<"),
                ElementsAre("Node 1: source", "Node 2: target", "Node 3: streamRaw",
                            "Link 1 -&gt; 3: no record", "Link 3 -&gt; 2: format_codec_audio"));
    EXPECT_THAT(html, HasSubstr("<span class=\"key\">bitrate</span> <span class=\"value\">128000</span>"));
}

TEST(JobPage, OfADocumentWithoutFaultsSaysSo)
{
    EXPECT_THAT(PageOf(kJob), HasSubstr("<p class=\"verdict\">3 nodes and 2 links. Nothing is wrong with the "
                                        "document. The sources were not opened.</p>"));
    EXPECT_THAT(PageOf(kJob), Not(HasSubstr("<h2>Faults</h2>")));
}

TEST(JobPage, ListsEachFaultAndMarksItsPlace)
{
    std::string json = kJob;
    json.replace(json.find("128000"), 6, "\"fast\"");
    json.replace(json.find("\"id\":0"), 6, "\"id\":-1");
    const std::string html = PageOf(json);
    ExpectGoodPage(html);
    EXPECT_THAT(html, HasSubstr("It cannot be run: 2 faults."));
    EXPECT_THAT(
        html,
        HasSubstr("<li id=\"fault-1\"><a href=\"#node-3\">node 3, id</a>: expected the index of a stream, "
                  "found -1</li>\n<li id=\"fault-2\"><a href=\"#link-3-to-2\">link 3 -&gt; 2, bitrate</a>: "
                  "expected an integer from 1 to 2147483647, found &#39;fast&#39;</li>"));
    EXPECT_THAT(AllMatches(html, "<a href=\"([^\"]*)\" class=\"[a-z]+ faulty\""),
                ElementsAre("#link-3-to-2", "#node-3"));
    EXPECT_THAT(html,
                HasSubstr("<li><a href=\"#fault-1\">id: expected the index of a stream, found -1</a></li>"));
}

TEST(JobPage, MarksTheNodesOfACycleAndThoseWithoutLinks)
{
    const GraphPtr job = GraphWithNodes(4);
    Link(*job, {{1, 2}, {2, 1}, {2, 2}});
    const std::string html = MakeJobPage(*job, {"job.json", false});
    ExpectGoodPage(html);
    EXPECT_EQ(AllMatches(html, "\">(part of a cycle)</a>").size(), 2U);
    EXPECT_EQ(AllMatches(html, "\">(no links)</a>").size(), 2U);
}

TEST(JobPage, ShowsNodesThatOthersHide)
{
    const std::string html =
        PageOf(R"({"vertices":[{"id":1},{"id":1},{"id":2}],"edges":[{"from":1,"to":2}]})");
    ExpectGoodPage(html);
    EXPECT_THAT(AllMatches(html, "<h3>([^<]*)<"),
                ElementsAre("Node 1: no record", "Node 1: hidden node", "Node 2: no record",
                            "Link 1 -&gt; 2: no record"));
    EXPECT_THAT(html, HasSubstr("<p>An earlier node has this id, and hides this one.</p>"));
}

TEST(JobPage, MarksNodesThatShareAnId)
{
    const std::string html =
        PageOf(R"({"vertices":[{"id":1},{"id":1},{"id":2}],"edges":[{"from":1,"to":2}]})");
    EXPECT_EQ(AllMatches(html, "\">(more than one node has this id)</a>").size(), 1U);
}

TEST(JobPage, ShowsATargetThatHasNoName)
{
    std::string json = kJob;
    json.replace(json.find(",\"filePath\":\"out.mp3\""), 21, "");
    const std::string html = PageOf(json);
    ExpectGoodPage(html);
    EXPECT_THAT(html, HasSubstr("<caption>a target without a name</caption>"));
}

TEST(JobPage, ShowsTheSizeOfAVideoInItsBox)
{
    const auto boxesWith = [](const std::string& record) {
        std::string json = kJob;
        const std::string old = R"("format_codec_audio":{"codec_id":"CODEC_ID_MP3","bitrate":128000})";
        return Boxes(
            PageOf(json.replace(json.find(old), old.size(), "\"format_codec_video\":{" + record + "}")));
    };
    EXPECT_THAT(boxesWith(R"("codec_id":"CODEC_ID_H264","width":640,"height":360)"),
                Contains("CODEC_ID_H264 640x360"));
    EXPECT_THAT(boxesWith(R"("width":640,"height":360)"), Contains("640x360"));
    EXPECT_THAT(boxesWith(R"("codec_id":"CODEC_ID_H264","width":640)"), Contains("CODEC_ID_H264"));
    EXPECT_THAT(boxesWith(R"("codec_id":"CODEC_ID_H264","width":640,"height":"360")"),
                Contains("CODEC_ID_H264"));
}

TEST(JobPage, ShowsAStreamWithoutANumber)
{
    std::string json = kJob;
    json.replace(json.find(R"("id":0)"), 6, "");
    EXPECT_THAT(Boxes(PageOf(json)), testing::Not(Contains(HasSubstr("stream "))));
}

TEST(JobPage, ListsPartsThatAreNotLinkedWithoutMarkingANode)
{
    const std::string html = PageOf(R"({"vertices":[{"id":1},{"id":2},{"id":3},{"id":4}],)"
                                    R"("edges":[{"from":1,"to":2},{"from":3,"to":4}]})");
    ExpectGoodPage(html);
    EXPECT_THAT(html, HasSubstr("The nodes form 2 separate components: {1, 2}, {3, 4}"));
}

TEST(JobPage, OfADocumentWithoutANameIsAJob)
{
    EXPECT_THAT(MakeJobPage(*Loaded(kJob), {"", false}), HasSubstr("<h1>Job"));
}

TEST(JobPage, OfAnEmptyJobSaysThatThereIsNothing)
{
    const std::string html = PageOf(R"({"vertices":[],"edges":[]})");
    ExpectGoodPage(html);
    EXPECT_THAT(html, HasSubstr("<p>The job does not have a node.</p>"));
    EXPECT_THAT(html, HasSubstr("<p>No node of the job is a target.</p>"));
}

TEST(JobPage, ShowsNegativeIdsAndRecordsWithoutAName)
{
    const std::string html = PageOf(
        R"({"vertices":[{"id":-3,"data":{"data":{"":{"a":1}}}},{"id":2}],"edges":[{"from":-3,"to":2}]})");
    ExpectGoodPage(html);
    EXPECT_THAT(html, HasSubstr("<h3>Node -3: record without a name</h3>"));
    EXPECT_THAT(html, HasSubstr("id=\"link--3-to-2\""));
}

TEST(JobPage, IsTheSameEachTime) { EXPECT_EQ(PageOf(kJob), PageOf(kJob)); }

TEST(JobPage, ShowsTheSourceBesideTheTarget)
{
    const TemporaryFolder folder;
    const std::string source = (folder / "in.wav").string();
    WriteFile(source, SilentWav());
    const GraphPtr job = WavJob(source, {(folder / "out.wav").string()});
    const std::string html = MakeJobPage(*job, {"job.json", true});
    ExpectGoodPage(html);
    EXPECT_THAT(html, HasSubstr("It can be run."));
    EXPECT_THAT(html, HasSubstr("stream 0, audio pcm_s16le"));
    EXPECT_THAT(html, HasSubstr("codec_id</th><td>&quot;CODEC_ID_PCM_S16LE&quot;</td>"
                                "<td>&quot;CODEC_ID_PCM_S16LE&quot;</td><td>same</td>"));
    // Nothing of it tells when the file was read.
    EXPECT_EQ(html, MakeJobPage(*job, {"job.json", true}));
}

TEST(JobPage, ShowsThatAStreamIsCopied)
{
    const TemporaryFolder folder;
    const std::string source = (folder / "in.wav").string();
    WriteFile(source, SilentWav());
    std::string json = JsonOf(*WavJob(source, {(folder / "out.wav").string()}));
    json.replace(json.find("\"codec_id\""), 0, "\"lossless\":1,");
    const std::string html = MakeJobPage(*Loaded(json), {"job.json", true});
    ExpectGoodPage(html);
    EXPECT_THAT(html, HasSubstr("audio stream 0 of " + source + ", copied"));
}

TEST(JobPage, ListsWhatWouldBeLost)
{
    const TemporaryFolder folder;
    const std::string source = (folder / "in.mkv").string();
    WriteFile(source, TinyClip());
    const GraphPtr job = WavJob(source, {(folder / "out.wav").string()});
    const std::string json = JsonOf(*job);
    std::string audio = json;
    audio.replace(audio.find("\"id\":0"), 6, "\"id\":1");
    const std::string html = MakeJobPage(*Loaded(audio), {"job.json", true});
    ExpectGoodPage(html);
    EXPECT_THAT(html, HasSubstr("<h2>What the targets will not have of their sources</h2>"));
}

TEST(JobPage, NamesASourceThatCannotBeRead)
{
    const std::string html = MakeJobPage(*WavJob("/no folder/<b>.wav", {"out.wav"}), {"job.json", true});
    ExpectGoodPage(html);
    EXPECT_THAT(html,
                HasSubstr("<a href=\"#node-1\">node 1, filePath</a>: /no folder/&lt;b&gt;.wav: cannot be "
                          "read: No such file or directory"));
}

TEST(JobPage, OpensNoSourceWhereOnlyTheDocumentIsAsked)
{
    EXPECT_THAT(MakeJobPage(*WavJob("/no folder/in.wav", {"out.wav"}), {"job.json", false}),
                HasSubstr("Nothing is wrong with the document."));
}

// Attacks: whatever the texts of a job hold, they are shown, and nothing else happens.

class HostileTexts : public testing::TestWithParam<const char*>
{};

TEST_P(HostileTexts, AreShownWhereverTheyStand)
{
    const GraphPtr job = Conf::ITranscodingMetaGraph::Create();
    const std::string text = GetParam();
    Core::Property record(text);
    record.CreateChildT(text, text);
    record.CreateChildT("filePath", text);
    record.CreateChildT("codec_id", text);
    record.SetChild("group").SetChild(text).CreateChildT("inner", text);
    const auto from = job->AddNode(record);
    const auto to = job->AddNode(record);
    job->AddLink(from, to, record);
    ExpectGoodPage(MakeJobPage(*job, {text, true}));
}

INSTANTIATE_TEST_SUITE_P(JobPage, HostileTexts,
                         testing::Values("</script><script>alert(1)</script>", "<!--", "--><script>", "]]>",
                                         "<![CDATA[", "&lt;", "&#0;", "\"><svg onload=alert(1)>",
                                         "' onclick='x", "javascript:alert(1)", "</style><style>*{}",
                                         "</title>", "</svg></figure>", "#node-2", "\\\" label=x; 1->0 [",
                                         "\xE2\x80\xAE"
                                         "gpj.exe",
                                         "\x1B[31m\x07", "\xFF\xFE", "\xEF\xBF\xBF", "\xC2\x80", "a\r\nb",
                                         "\xF0\x9F\x8E\xAC\xE4\xB8\xAD"));

TEST(JobPage, OfTenThousandNodesIsMadeWithoutADrawing)
{
    std::string nodes;
    std::string links;
    for (int i = 1; i <= 10'000; ++i)
    {
        nodes += (i == 1 ? "" : ",") + ("{\"id\":" + std::to_string(i) + "}");
        links += i == 1 ? "" : (i == 2 ? "" : ",") + ("{\"from\":1,\"to\":" + std::to_string(i) + "}");
    }
    const std::string html = PageOf("{\"vertices\":[" + nodes + "],\"edges\":[" + links + "]}");
    // Each link has a fault, and so a box.
    EXPECT_NE(html.find("<p>The job is not drawn: it has 19999 boxes and 19998 lines, and a drawing has at "
                        "most 1000 of both.</p>"),
              std::string::npos);
    EXPECT_NE(html.find("<section class=\"record\" id=\"node-10000\">"), std::string::npos);
    EXPECT_LT(html.size(), 20'000'000U);
    ExpectWellFormed(html);
}

} // namespace
} // namespace Zelnor::Media
