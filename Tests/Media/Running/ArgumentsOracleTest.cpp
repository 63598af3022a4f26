#include "Tests/Support/ArgumentsOracle.h"

#include "Media/MediaException.h"
#include "Media/Planning/JobPlan.h"
#include "Tests/Support/Campaign.h"
#include "Tests/Support/FakePreset.h"
#include "Tests/Support/HostileRecords.h"
#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/JobTranscodes.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Conf::ITranscodingMetaGraph;
using Core::Property;

const char* const kRecords[] = {"format_codec_video", "format_codec_audio", "format_codec_subtitle"};
constexpr std::size_t kStreams[] = {0, 1, 3};

std::string SourceName(HostileRecords& records)
{
    static const char* const kNames[] = {
        "in.mkv", "it's a film.mkv", "a:b,[c];d\\e.mkv", "-i", "%d.png", "a\nb", "/x/y"};
    return records.Any(kNames);
}

/// A job of one target and some streams.
boost::intrusive_ptr<ITranscodingMetaGraph> AnyJob(HostileRecords& records)
{
    static const char* const kContainers[] = {"matroska", "matroska", "matroska", "mp4", "mov",
                                              "gif",      "png",      "mp3",      "dvd"};
    const auto job = ITranscodingMetaGraph::Create();
    const auto source = job->AddNode(ITranscodingMetaGraph::MakeInFileDescription(SourceName(records)));
    Property target("target");
    target.SetChildT("filePath", std::string("out.mkv"));
    target.SetChildT("container", records.OneIn(40) ? records.Text() : records.Any(kContainers));
    if (records.OneIn(3))
    {
        target.SetChild("metadata", records.Metadata());
    }
    const auto to = job->AddNode(target);
    for (std::size_t count = records.Below(2) + 1; count != 0; --count)
    {
        const std::size_t kind = records.OneIn(8) ? 2 : records.Below(2);
        Property raw =
            ITranscodingMetaGraph::MakeRawStreamDescription(static_cast<unsigned int>(kStreams[kind]));
        if (records.OneIn(6))
        {
            ITranscodingMetaGraph::AddSlaveStreamIndex(raw, Property(),
                                                       static_cast<unsigned int>(records.Below(5)));
        }
        const auto from = job->AddNode(raw);
        job->AddLink(source, from, Property());
        job->AddLink(from, to, records.Codec(kRecords[kind], kind));
    }
    return job;
}

/// The job of a preset; null when it is refused.
boost::intrusive_ptr<ITranscodingMetaGraph> JobOfAnyPreset(HostileRecords& records)
{
    Property preset("p");
    preset.SetChildT("container", std::string("matroska"));
    if (records.OneIn(3))
    {
        preset.SetChild("metadata", records.Metadata());
    }
    Property& streams = preset.SetChild("$$STREAMS$$");
    streams.Add(records.Codec("video", 0));
    streams.Add(records.Codec("audio", 1));
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeAudioStream()}, SourceName(records));
    JobRequest request;
    request.output = "out.mkv";
    try
    {
        return PlanJob(source, FakePreset::Create(preset), request).graph;
    }
    catch (const MediaException&)
    {
        return nullptr;
    }
}

std::string TextOf(const ITranscodingMetaGraph& job)
{
    const auto output = Core::MemoryDataOutput::Create();
    job.Save(output);
    return output->GetData();
}

/// Tries jobs, and counts how many of them could be run.
void RunCampaign(const char* what, std::size_t quick, std::size_t leastShare,
                 boost::intrusive_ptr<ITranscodingMetaGraph> (*make)(HostileRecords&))
{
    const std::size_t runs = CampaignRuns(quick);
    const std::uint64_t seed = CampaignSeed(1);
    std::size_t accepted = 0;
    for (std::size_t i = 0; i < runs; ++i)
    {
        HostileRecords records(seed + i);
        const auto job = make(records);
        if (job == nullptr)
        {
            continue;
        }
        for (const Transcode& transcode : TranscodesOf(*job))
        {
            bool isAccepted = false;
            const std::string fault = FindArgumentsFault(transcode, isAccepted);
            accepted += isAccepted ? 1 : 0;
            ASSERT_EQ(fault, "") << "ZELNOR_CAMPAIGN_SEED=" << seed + i << " ZELNOR_CAMPAIGN_RUNS=1\n"
                                 << TextOf(*job);
        }
    }
    std::printf("campaign: %zu %s, %zu of them could be run, 0 findings\n", runs, what, accepted);
    // Jobs that are all refused would show nothing.
    EXPECT_TRUE(runs < quick || accepted * leastShare >= runs) << accepted;
}

TEST(ArgumentsOracle, FindsNothingInTheArgumentsOfAnyJob)
{
    RunCampaign("jobs", QuickRuns(10000), 8, AnyJob);
}

TEST(ArgumentsOracle, FindsNothingInTheArgumentsOfAnyPreset)
{
    RunCampaign("presets", QuickRuns(2000), 8, JobOfAnyPreset);
}

/// The oracle's opinion of other arguments than those of the transcode.
std::string OpinionOf(const std::vector<std::string>& options)
{
    const Transcode transcode = MakeTranscode(
        MakeMediaFile({MakeVideoStream()}),
        VideoRecord(
            R"("codec_id":"CODEC_ID_H264","bitrate":1,"codec.options.encode":{"crf":20},"metadata":{"a":"b"})"));
    std::vector<std::string> arguments = {"-hide_banner", "-nostdin",    "-v",
                                          "error",        "-nostats",    "-progress",
                                          "pipe:1",       "-n",          "-protocol_whitelist",
                                          "file",         "-f",          "matroska",
                                          "-i",           "file:in.mkv", "-map",
                                          "0:0",          "-c:0",        "libx264",
                                          "-crf:0",       "20"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.insert(arguments.end(), {"-f", "mp4", "file:out"});
    return ArgumentsOracle(transcode, "out", "log").FindFault(arguments);
}

TEST(ArgumentsOracle, IsContentWithWhatTheRecordAsksFor)
{
    EXPECT_EQ(OpinionOf({}), "");
    EXPECT_EQ(OpinionOf({"-b:0", "1", "-metadata:s:0", "a=b"}), "");
}

TEST(ArgumentsOracle, SeesWhatNoRecordAsksFor)
{
    const std::vector<std::vector<std::string>> kBad = {
        {"-y"},
        {"-vstats_file", "x"},
        {"-vstats_file:0", "x"},
        {"-dump_attachment:t", "x"},
        {"-stats:0", "x"},
        {"-x264-params:0", "dump-yuv=x"},
        {"-g:0", "12"},
        {"-crf:0", "21"},
        {"-crf:0", "20"},
        {"-bf:0", "while(1,1)"},
        {"-metadata:s:0", "a=c"},
        {"-metadata", "a=b"},
        {"-filter:0", "movie=/x"},
        {"-filter_complex", "[0:0]subtitles=filename=file\\\\:x:si=0[merged0]"},
        {"-flags:0", "+pass1"},
        {"-tag:0", "x"},
        {"file:other"},
        {"-i", "file:other"},
        {"-pass:0"}};
    for (const std::vector<std::string>& options : kBad)
    {
        EXPECT_NE(OpinionOf(options), "") << options.front();
    }
}

} // namespace
