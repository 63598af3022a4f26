#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include "Conf/Interfaces/IFormatFile.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/FakePreset.h"
#include "Tests/Support/Graphs.h"

#ifndef ZELNOR_WITHOUT_LOG
#include <glog/logging.h>
#endif
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zelnor::Conf
{

namespace
{

using namespace Zelnor::Testing;
using Core::MethodIsNotApplicable;
using Core::Property;
using Core::PropertyException;

using Graph = ITranscodingMetaGraph;

#ifdef ZELNOR_WITHOUT_LOG
struct LogCapture
{
    std::vector<std::string> lines;
};
const std::vector<std::string> kLogged;
#else
/// Collects what is logged as long as it lives.
class LogCapture : public google::LogSink
{
public:
    LogCapture() { google::AddLogSink(this); }
    ~LogCapture() override { google::RemoveLogSink(this); }
    void send(google::LogSeverity severity, const char*, const char* file, int, const struct ::tm*,
              const char* message, size_t length) override
    {
        lines.push_back(std::string(google::GetLogSeverityName(severity)) + " " + file + " " +
                        std::string(message, length));
    }

    std::vector<std::string> lines;
};
const std::vector<std::string> kLogged = {
    "INFO ITranscodingMetaGraph.cpp Replacing output format for lossless conversion to DVD"};
#endif

Property PresetRecord()
{
    Property record("preset");
    record.SetChildT(IPreset::KEY_NAME, std::string("Mine"));
    record.SetChildT(IFormatFile::TAG_CONTAINER, std::string("mp4"));
    record.SetChild(IPreset::KEY_STREAMS).SetChildT("codec", std::string("CODEC_ID_H264"));
    record.SetChildT("bitrate", 5LL);
    return record;
}

TEST(GraphVocabulary, HasItsTexts)
{
    EXPECT_EQ(Graph::CONTROLLED_BY, "$$CONTROLLED_BY$$");
    EXPECT_EQ(Graph::KEY_SOURCE, "source");
    EXPECT_EQ(Graph::KEY_SOURCE_TYPE_FILE, "sourceFile");
    EXPECT_EQ(Graph::KEY_FILEPATH, "filePath");
    EXPECT_EQ(Graph::KEY_STREAM_RAW, "streamRaw");
    EXPECT_EQ(Graph::KEY_STREAM_RAW_ID, "id");
    EXPECT_EQ(Graph::KEY_DECODER, "decoder");
    EXPECT_EQ(Graph::MERGE_WITH, "$$MERGE_WITH$$");
    EXPECT_EQ(Graph::MERGE_SETTINGS, "$$MERGE_SETTINGS$$");
    EXPECT_EQ(Graph::MERGE_WITH_INDEX, "$$MERGE_WITH_INDEX$$");
}

TEST(GetControlledBy, NamesTheRecordAndItsOneChildAlike)
{
    Property expected("$$CONTROLLED_BY$$");
    expected.CreateChildT("$$CONTROLLED_BY$$", 0LL);
    EXPECT_EQ(Graph::GetControlledBy(0), expected);
}

TEST(GetControlledBy, KeepsTheLargestIndexPositive)
{
    const Property record = Graph::GetControlledBy(std::numeric_limits<unsigned int>::max());
    EXPECT_EQ(record["$$CONTROLLED_BY$$"].GetInt64(), 4294967295);
}

TEST(MakeInFileDescription, HoldsTypeAndPathInThisOrder)
{
    Property expected("source");
    expected.CreateChildT("$$TYPE_ID$$", std::string("sourceFile"));
    expected.CreateChildT("filePath", std::string("/media/in.mp4"));
    EXPECT_EQ(Graph::MakeInFileDescription("/media/in.mp4"), expected);
}

TEST(MakeInFileDescription, KeepsAPathThatIsNotAsciiAsUtf8)
{
    const std::string path = "/media/\xC3\x9C"
                             "bersicht \xE6\x98\xA0\xE7\x94\xBB \xF0\x9F\x8E\xAC.mkv";
    EXPECT_EQ(Graph::MakeInFileDescription(path)["filePath"].GetString(), path);
}

TEST(MakeRawStreamDescription, HoldsTheIndex)
{
    Property expected("streamRaw");
    expected.CreateChildT("id", 4294967295LL);
    EXPECT_EQ(Graph::MakeRawStreamDescription(std::numeric_limits<unsigned int>::max()), expected);
}

TEST(MakeOutFileDescription, IsThePresetWithoutItsStreamsAndWithThePath)
{
    const auto preset = FakePreset::Create(PresetRecord());
    Property expected("preset");
    expected.CreateChildT("name", std::string("Mine"));
    expected.CreateChildT("container", std::string("mp4"));
    expected.CreateChildT("bitrate", 5LL);
    expected.CreateChildT("filePath", std::string("out.mp4"));
    EXPECT_EQ(Graph::MakeOutFileDescription(preset, "out.mp4", false), expected);
    EXPECT_EQ(preset->GetProperty(), PresetRecord());
    EXPECT_EQ(preset->GetRefCount(), 1);
}

TEST(MakeOutFileDescription, LeavesOutEveryListOfStreams)
{
    Property record("preset");
    record.CreateChildT("$$STREAMS$$", 1LL);
    record.CreateChildT("name", std::string("Mine"));
    record.Add(Property("$$STREAMS$$"));
    record.CreateChildT("name", std::string("Again"));
    record.CreateChildT("$$STREAMS$$", std::string("last"));
    Property expected("preset");
    expected.CreateChildT("name", std::string("Mine"));
    expected.CreateChildT("name", std::string("Again"));
    expected.CreateChildT("filePath", std::string("x"));
    EXPECT_EQ(Graph::MakeOutFileDescription(FakePreset::Create(record), "x", false), expected);
}

TEST(MakeOutFileDescription, NeedsTimeInProportionToThePreset)
{
    constexpr int kChildren = 200'000;
    Property record("preset");
    for (int i = 0; i < kChildren; ++i)
    {
        record.CreateChildT("name", 1LL);
    }
    for (int i = 0; i < kChildren; ++i)
    {
        record.CreateChildT("$$STREAMS$$", 1LL);
    }
    EXPECT_EQ(Graph::MakeOutFileDescription(FakePreset::Create(record), "x", false).Count(), kChildren + 1u);
}

TEST(MakeOutFileDescription, TakesAPresetWithoutStreamsAsItIs)
{
    Property expected("preset");
    const auto preset = FakePreset::Create(expected);
    expected.CreateChildT("filePath", std::string("out.mp4"));
    EXPECT_EQ(Graph::MakeOutFileDescription(preset, "out.mp4", false), expected);
}

TEST(MakeOutFileDescription, ReplacesThePresetsOwnPathInItsPlace)
{
    Property record("preset");
    record.CreateChildT("filePath", 1LL);
    record.CreateChildT("after", 2LL);
    const Property out = Graph::MakeOutFileDescription(FakePreset::Create(record), "x", false);
    EXPECT_EQ(out[0ul].GetString(), "x");
    EXPECT_EQ(out.Count(), 2u);
}

TEST(MakeOutFileDescription, LeavesTheContainerAndTheLogAloneWhenNotForDvd)
{
    const LogCapture log;
    const Property out = Graph::MakeOutFileDescription(FakePreset::Create(PresetRecord()), "x", false);
    EXPECT_EQ(out["container"].GetString(), "mp4");
    EXPECT_TRUE(log.lines.empty());
}

TEST(MakeOutFileDescription, MakesTheContainerDvdAndLogsItOnce)
{
    const auto preset = FakePreset::Create(PresetRecord());
    const LogCapture log;
    const Property out = Graph::MakeOutFileDescription(preset, "x", true);
    EXPECT_EQ(out["container"].GetString(), "dvd");
    EXPECT_EQ(out[1ul].GetName(), "container");
    EXPECT_EQ(log.lines, kLogged);
    EXPECT_EQ(preset->GetProperty(), PresetRecord());
}

TEST(MakeOutFileDescription, AddsTheContainerWhenThePresetHasNone)
{
    const Property out = Graph::MakeOutFileDescription(FakePreset::Create(Property("p")), "x", true);
    EXPECT_EQ(out["container"].GetString(), "dvd");
}

TEST(MakeOutFileDescription, RefusesAPresetThatIsNoGroup)
{
    const auto preset = FakePreset::Create(Property("p", 1LL));
    const Thrown thrown =
        ExpectThrow<MethodIsNotApplicable>([&] { Graph::MakeOutFileDescription(preset, "x", false); });
    EXPECT_EQ(thrown.Get<PropertyException::TagPropertyName>(), "p");
    EXPECT_EQ(thrown.Get<PropertyException::TagPropertyType>(), PROPERTY_TYPE_INT64);
    EXPECT_EQ(thrown.Get<PropertyException::TagMethodName>(), "SetChildT");
    EXPECT_EQ(thrown.line, 260);
}

TEST(MakeOutFileDescription, RefusesANullPreset)
{
    const Thrown thrown =
        ExpectThrow<std::invalid_argument>([] { Graph::MakeOutFileDescription(nullptr, "x", true); });
    EXPECT_EQ(thrown.what.rfind("preset is NULL\n", 0), 0u) << thrown.what;
    EXPECT_EQ(thrown.file, "Conf/Interfaces/ITranscodingMetaGraph");
    EXPECT_NE(thrown.function.value_or("").find("MakeOutFileDescription("), std::string::npos);
}

TEST(AddSlaveStreamIndex, AddsEntriesInTheOrderOfTheCalls)
{
    Property settings("any name");
    settings.SetChildT("volume", 3LL);
    Property target("stream");
    Graph::AddSlaveStreamIndex(target, settings, 2);
    Graph::AddSlaveStreamIndex(target, Property("none"), 5);
    Graph::AddSlaveStreamIndex(target, Property("none"), 5);

    Property list;
    for (const long long index : {2, 5, 5})
    {
        Property entry;
        // kept: the key of the index is that of the list
        entry.CreateChildT("$$MERGE_WITH$$", index);
        entry.SetChild("$$MERGE_SETTINGS$$", index == 2 ? settings : Property());
        list.Add(entry);
    }
    Property expected("stream");
    expected.SetChild("$$MERGE_WITH$$", list);
    EXPECT_EQ(target, expected);
}

TEST(AddSlaveStreamIndex, KeepsTheLargestIndexPositive)
{
    Property target;
    Graph::AddSlaveStreamIndex(target, Property(), std::numeric_limits<unsigned int>::max());
    EXPECT_EQ(target["$$MERGE_WITH$$"][0ul]["$$MERGE_WITH$$"].GetInt64(), 4294967295);
}

TEST(AddSlaveStreamIndex, TakesTheTargetItselfAsSettings)
{
    Property target("stream");
    Graph::AddSlaveStreamIndex(target, Property("x"), 1);
    const Property before = target;
    Graph::AddSlaveStreamIndex(target, target, 2);
    const Property& settings = target["$$MERGE_WITH$$"][1ul]["$$MERGE_SETTINGS$$"];
    EXPECT_EQ(settings["$$MERGE_WITH$$"], before["$$MERGE_WITH$$"]);
    EXPECT_EQ(target["$$MERGE_WITH$$"][0ul], before["$$MERGE_WITH$$"][0ul]);
}

TEST(AddSlaveStreamIndex, LeavesATargetAloneThatIsNoGroup)
{
    Property target("stream", std::string("plain"));
    const Thrown thrown =
        ExpectThrow<MethodIsNotApplicable>([&] { Graph::AddSlaveStreamIndex(target, Property(), 1); });
    EXPECT_EQ(thrown.Get<PropertyException::TagPropertyName>(), "stream");
    EXPECT_EQ(thrown.Get<PropertyException::TagPropertyType>(), PROPERTY_TYPE_STRING);
    EXPECT_EQ(thrown.Get<PropertyException::TagMethodName>(), "SetChild");
    EXPECT_EQ(target, Property("stream", std::string("plain")));
}

TEST(AddSlaveStreamIndex, LeavesATargetAloneWhoseListIsNoGroup)
{
    Property target("stream");
    target.SetChildT("$$MERGE_WITH$$", 1LL);
    const Property before = target;
    const Thrown thrown =
        ExpectThrow<MethodIsNotApplicable>([&] { Graph::AddSlaveStreamIndex(target, Property(), 1); });
    EXPECT_EQ(thrown.Get<PropertyException::TagMethodName>(), "Add");
    EXPECT_EQ(target, before);
}

TEST(AddSlaveStreamIndex, SurvivesSavingAndLoading)
{
    Property target("stream");
    Graph::AddSlaveStreamIndex(target, Property("x"), 2);
    Graph::AddSlaveStreamIndex(target, Property("x"), 5);
    const GraphPtr graph = Graph::Create();
    graph->AddNode(target);
    EXPECT_EQ((*Loaded(JsonOf(*graph)))[1], target);
}

} // namespace

} // namespace Zelnor::Conf
