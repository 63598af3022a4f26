#include "Tests/Docs/Document.h"
#include "Tests/Docs/VocabularyKeys.h"
#include "Tests/Support/MediaTest.h"

#include "Core/Interfaces/DataStream.h"
#include "Media/Jobs/JobFile.h"
#include "Media/MediaException.h"
#include "Media/Running/JobRun.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;
using Conf::ITranscodingMetaGraph;
using Conf::NodeId;
using Core::Property;
using testing::HasSubstr;

/// The example of the document, with the clip that it names.
class JobDocument : public MediaTest
{
protected:
    static constexpr NodeId kSource = 1;
    static constexpr NodeId kTarget = 2;
    static constexpr NodeId kVideo = 3;

    JobDocument()
    {
        Make({"-f", "lavfi", "-i", "testsrc2=s=320x240:r=25:d=0.4", "-f", "lavfi", "-i", "sine=f=440:d=0.4",
              "-c:v", "mpeg4", "-c:a", "aac", "holiday.mkv"});
        m_text = m_document.Block("json");
    }

    /// The example, with files that are found from the test's folder.
    boost::intrusive_ptr<ITranscodingMetaGraph> Example() const
    {
        const auto job = Media::ReadJob(*Core::MemoryDataInput::Create(m_text), "job.json").graph;
        Property source = (*job)[kSource];
        source.SetChildT(ITranscodingMetaGraph::KEY_FILEPATH, (Folder() / "holiday.mkv").string());
        Property target = (*job)[kTarget];
        target.SetChildT(ITranscodingMetaGraph::KEY_FILEPATH, (Folder() / "holiday.mp4").string());
        return With(*With(*job, kSource, source), kTarget, target);
    }

    /// The job with another record of a node, whose number it keeps.
    static boost::intrusive_ptr<ITranscodingMetaGraph> With(const ITranscodingMetaGraph& job, NodeId changed,
                                                            const Property& record)
    {
        auto copy = ITranscodingMetaGraph::Create();
        std::vector<NodeId> nodes;
        job.Nodes(nodes);
        for (const NodeId node : nodes)
        {
            copy->AddNode(node == changed ? record : job[node]);
        }
        std::vector<std::pair<NodeId, NodeId>> links;
        job.Links(links);
        for (const auto& [from, to] : links)
        {
            copy->AddLink(from, to, job.GetLink(from, to));
        }
        return copy;
    }

    /// The example with a setting of its video, in place of the one that is there.
    boost::intrusive_ptr<ITranscodingMetaGraph> WithSetting(const Property& setting) const
    {
        auto job = Example();
        Property codec = job->GetLink(kVideo, kTarget);
        codec.SetChild(setting.GetName(), setting);
        job->RemoveLink(kVideo, kTarget);
        job->AddLink(kVideo, kTarget, codec);
        return job;
    }

    /// Why the job is refused before anything starts; empty when it is not.
    static std::string Refusal(const ITranscodingMetaGraph& job)
    {
        Media::RunOptions options;
        options.ffmpeg = "false"; // Nothing that is started succeeds.
        try
        {
            Media::RunJob(job, options);
            return "";
        }
        catch (const Media::JobException& refused)
        {
            return *boost::get_error_info<TagDescription>(refused);
        }
        catch (const Media::RunException&)
        {
            return "";
        }
    }

    Document m_document{"job-document.md"};
    std::string m_text;
};

TEST_F(JobDocument, ShowsAJobThatIsValidAndRuns)
{
    Write("job.json", m_text);
    const ProcessResult check = Zconf({"job", "check", "job.json"});
    EXPECT_EQ(check.exitCode, 0) << check.messages;
    const ProcessResult run = RunJob();
    ASSERT_EQ(run.exitCode, 0) << run.messages;
    const MediaInfo made = Info("holiday.mp4");
    ASSERT_EQ(made.streams.size(), 2U);
    EXPECT_EQ(made.tags.at("title"), "Holiday");
    EXPECT_EQ(made.streams[0].codec, "h264");
    EXPECT_EQ(made.streams[0].width, 320);
    EXPECT_EQ(made.streams[1].codec, "aac");
    EXPECT_EQ(made.streams[1].layout, "stereo");
    EXPECT_EQ(made.streams[1].language, "eng");
}

TEST_F(JobDocument, ListsTheKeysThatNodesNeed)
{
    for (const auto& row : m_document.Table("Record | Key | Expected"))
    {
        const auto job = Example();
        std::vector<NodeId> nodes;
        job->Nodes(nodes);
        const auto node = std::find_if(nodes.begin(), nodes.end(),
                                       [&](NodeId id) { return (*job)[id].GetName() == row[0]; });
        ASSERT_NE(node, nodes.end()) << row[0];
        Property record = (*job)[*node];
        ASSERT_TRUE(record.ChildExists(row[1])) << row[1];
        record.SetChild(row[1], Property::None(row[1]));
        EXPECT_THAT(Refusal(*With(*job, *node, record)),
                    HasSubstr(row[1] + ": expected " + row[2] + ", found null")); // The place may grow.
        record.RemoveChild(row[1]);
        EXPECT_THAT(Refusal(*With(*job, *node, record)),
                    HasSubstr(row[1] + ": expected " + row[2] + ", found nothing"));
    }
}

TEST_F(JobDocument, ListsWhatIsExpectedOfEachSetting)
{
    for (const auto& row : m_document.Table("Key | Expected"))
    {
        const std::string refusal = Refusal(*WithSetting(Property::None(row[0])));
        if (row[1] == "anything")
        {
            EXPECT_EQ(refusal, "") << row[0];
        }
        else
        {
            EXPECT_THAT(refusal, HasSubstr(row[0] + ": expected " + row[1] + ", found null"));
        }
    }
}

TEST_F(JobDocument, ListsEverySettingThatIsKnown)
{
    std::vector<std::string> listed;
    for (const auto& row : m_document.Table("Key | Expected"))
    {
        listed.push_back(row[0]);
    }
    for (const std::string& key : VocabularyKeys())
    {
        const bool isUnknown =
            Refusal(*WithSetting(Property::None(key))).find("unknown setting '" + key + "'") !=
            std::string::npos;
        const bool isListed = std::find(listed.begin(), listed.end(), key) != listed.end();
        EXPECT_NE(isListed, isUnknown) << key;
    }
}

TEST_F(JobDocument, ShowsHowStreamsAreMerged)
{
    Property record = ITranscodingMetaGraph::MakeRawStreamDescription(1);
    ITranscodingMetaGraph::AddSlaveStreamIndex(record, Property(), 2);
    ITranscodingMetaGraph::AddSlaveStreamIndex(record, Property(), 5);
    const auto graph = ITranscodingMetaGraph::Create();
    graph->AddNode(record);
    const auto saved = Core::MemoryDataOutput::Create();
    graph->Save(saved);
    const std::string list = R"("$$MERGE_WITH$$":[{"":{"$$MERGE_WITH$$":2,"$$MERGE_SETTINGS$$":{}}},)"
                             R"({"":{"$$MERGE_WITH$$":5,"$$MERGE_SETTINGS$$":{}}}])";
    EXPECT_THAT(saved->GetData(), HasSubstr(list)); // What stands around it is not what is shown.
    EXPECT_THAT(m_document.WithoutBlanks(), HasSubstr(list));
}

} // namespace
