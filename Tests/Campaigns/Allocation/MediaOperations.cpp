#include "Tests/Campaigns/Allocation/Operations.h"

#include "Media/Batch/BatchStatus.h"
#include "Media/ErrorText.h"
#include "Media/Jobs/JobDifferences.h"
#include "Media/Jobs/JobFault.h"
#include "Media/Jobs/JobFile.h"
#include "Media/MediaException.h"
#include "Media/NearestNames.h"
#include "Media/Planning/CodecSupport.h"
#include "Media/Planning/JobPlan.h"
#include "Media/Planning/NewPreset.h"
#include "Media/Planning/PresetSupport.h"
#include "Media/Planning/SettingPaths.h"
#include "Media/Presets/PresetFolders.h"
#include "Media/Presets/PresetStore.h"
#include "Media/Probe/FFmpegInfo.h"
#include "Media/Running/Files.h"
#include "Media/Running/JobCheck.h"
#include "Media/Running/JobPreparation.h"
#include "Media/Running/JobRun.h"
#include "Media/Running/JobVerification.h"
#include "Media/Running/ShellWords.h"
#include "Media/Running/SizeEstimate.h"

#include "Tests/Support/Campaign.h"
#include "Tests/Support/Clip.h"
#include "Tests/Support/DocumentFaults.h"
#include "Tests/Support/Graphs.h"
#include "Tests/Support/MediaFixtures.h"
#include "Tests/Support/RunFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

namespace Zelnor::Testing
{

namespace
{

using namespace Media;
using Conf::IPreset;
using Core::Property;
using PresetPtr = boost::intrusive_ptr<const IPreset>;

/// What the operations read, made before memory runs out.
struct Files
{
    Files()
    {
        WriteFile(folder / "in.mkv", TinyClip());
        WriteFile(folder / "in.wav", SilentWav());
        WriteFile(folder / "not media", "a text");
        WriteFile(folder / "job.json", jobText);
        WriteFile(folder / "preset.json", presetText);
        std::filesystem::create_directories(folder / "batch/jobs");
        std::filesystem::create_directories(folder / "batch/results");
        WriteFile(folder / "batch/batch.json", batchText);
        WriteFile(folder / "batch/results/000001.json", resultText);
    }
    std::string Name(const std::string& name) const { return (folder / name).string(); }

    TemporaryFolder folder;
    const std::string presetText =
        R"({"p":{"container":"mp4","$$STREAMS$$":{"video":{"codec_id":"CODEC_ID_H264"},)"
        R"("audio":{"codec_id":"CODEC_ID_AAC","bitrate":128000}}}})";
    const std::string batchText =
        R"({"batch":{"version":1,"presets":{"p":{"file":"p.json"}},"outputFolder":"../out","namePattern":"{stem}",)"
        R"("jobs":{"000001":{"input":"../in/a.wav","preset":"p","output":"a name that is not so short.wav",)"
        R"("size":1,"notes":{"1":"a note that is not so short"}},)"
        R"("000002":{"input":"../in/b.wav","preset":"p","refusal":"a reason that is not so short"}}}})";
    const std::string resultText =
        R"({"result":{"version":1,"state":"failed","failure":"ffmpeg","reason":"a reason that is not so short",)"
        R"("exitCode":1,"messages":{"1":"a message that is not so short"},"verification":"quick","attempts":1,)"
        R"("host":"h","process":1,"started":"2026-11-22T11:03:07Z","ended":"2026-11-22T11:03:07Z","elapsed":1,)"
        R"("sizeBefore":1,"sizeAfter":1}})";
    const std::string jobText = JsonOf(*WavJob(Name("in.wav"), {Name("a.wav"), Name("b.wav")}));
};

Files& TheFiles()
{
    static Files s_files;
    return s_files;
}

std::string StreamsText(const MediaFile& file)
{
    std::string text = file.name + file.demuxer + Text(file.descriptor->GetProperty()) + Text(file.notes) +
                       Text(file.duration);
    for (const MediaStream& stream : file.streams)
    {
        text += stream.codec + Text(stream.descriptor->GetProperty()) + Text(stream.notes) +
                Text(stream.duration) + Text(stream.isDefault) + Text(stream.isBitmap);
    }
    return text;
}

std::vector<std::string> Sentences(const std::vector<JobFault>& faults)
{
    std::vector<std::string> sentences;
    for (const JobFault& fault : faults)
    {
        sentences.push_back(fault.Name() + " " + fault.Sentence());
    }
    return sentences;
}

std::vector<std::string> Sentences(const DocumentFaults& found)
{
    std::vector<std::string> sentences;
    for (const DocumentFault& fault : found.faults)
    {
        sentences.push_back(fault.Name() + " " + fault.Sentence() + fault.pointer + fault.found +
                            Text(fault.nearest));
    }
    return sentences;
}

std::vector<std::string> Names(const std::vector<ioPath>& paths)
{
    std::vector<std::string> names;
    for (const ioPath& path : paths)
    {
        names.push_back(path.utf8string());
    }
    return names;
}

void AddReading(Operations& rows)
{
    const Files& files = TheFiles();
    const auto read = [](const JobFile& job) { return job.name + JsonOf(*job.graph) + Text(job.notes); };
    rows.push_back(Described(Call(
        "Media::ReadJob", [read, path = ioPath(files.Name("job.json"))] { return read(ReadJob(path)); })));
    const std::string surplus = R"({"vertices":[{"id":1,"data":{"data":{"a":1,"b":2}}}],"edges":[]})";
    rows.push_back(Described(Variant("with a note", Call("Media::ReadJob", [read, surplus] {
                                         return read(
                                             ReadJob(*Core::MemoryDataInput::Create(surplus), "job.json"));
                                     }))));
    const auto refuse = [&rows](const std::string& json) {
        rows.push_back(Described(Variant("refused", Call("Media::ReadJob", Refused<JobException>([json] {
                                                             ReadJob(*Core::MemoryDataInput::Create(json),
                                                                     "job.json");
                                                         })))));
    };
    refuse("[");
    refuse(R"({"vertices":[{"id":1,"data":{"data":{"r":[1,0]}}}],"edges":[]})");
    refuse(R"({"vertices":[{"id":1}],"edges":[{"from":1,"to":9}]})");
    rows.push_back(Described(Call("Media::PresetFile::Open", [path = ioPath(files.Name("preset.json"))] {
        const auto preset = PresetFile::Open(path);
        std::vector<int> indexes;
        preset->GetStreamIndexes("audio", indexes);
        return Text(preset->GetProperty()) + Text(indexes) + Text(preset->GetStreamCount());
    })));
    rows.push_back(
        Variant("refused", Described(Call("Media::PresetFile::Open", Refused<PresetFileException>([] {
                                              PresetFile::Open(ioPath("/no folder of that name/p.json"));
                                          })))));
    rows.push_back(Described(Call("Media::PresetFile::Read", Refused<PresetFileException>([] {
                                      PresetFile::Read(*Core::MemoryDataInput::Create(
                                                           R"({"p":{"container":"none of that name"}})"),
                                                       "preset.json");
                                  }))));
}

void AddProbing(Operations& rows)
{
    const Files& files = TheFiles();
    for (const char* const name : {"in.mkv", "in.wav"})
    {
        rows.push_back(UsingFFmpeg(Call("Media::ProbeMedia", [path = ioPath(files.Name(name))] {
            return StreamsText(ProbeMedia(path));
        })));
    }
    rows.push_back(UsingFFmpeg(Variant("stream", Call("Media::ProbeMedia", [bytes = SilentWav()] {
                                           return StreamsText(
                                               ProbeMedia(*Core::MemoryDataInput::Create(bytes), "in.wav"));
                                       }))));
    rows.push_back(
        UsingFFmpeg(Variant("refused", Call("Media::ProbeMedia", [path = ioPath(files.Name("not media"))] {
                                return Refused<ProbeException>([path] { ProbeMedia(path); })();
                            }))));
    rows.push_back(Call("Media::FFmpegNameOf", [] {
        return FFmpegNameOf(PIX_FMT_YUV420P) + FFmpegNameOf(Conf::SAMPLE_FMT_S16) +
               FFmpegNameOf(Conf::CH_LAYOUT_5POINT1);
    }));
    rows.push_back(Call("Media::CodecNumberOf", [] { return CodecNumberOf("CODEC_ID_H264"); }));
    rows.push_back(
        Call("Media::CodecNumberOf", [] { return CodecNumberOf("none of that name, which is long"); }));
    rows.push_back(Call("Media::MuxerDescription", [] { return MuxerDescription("matroska"); }));
    rows.push_back(Call("Media::DemuxerDescription", [] { return DemuxerDescription("mov"); }));
    rows.push_back(
        Call("Media::MakeDescriptor", [] { return Text(MakeDescriptor(StreamKind::Audio)->GetProperty()); }));
    rows.push_back(
        Call("Media::DescribeKind", [] { return std::string(DescribeKind(StreamKind::Audio).name); }));
    rows.push_back(Call("Media::NameOf", [] { return std::string(NameOf(StreamKind::Audio)); }));
    rows.push_back(Call("Media::IsConvertible", [] { return IsConvertible(StreamKind::Audio); }));
    rows.push_back(Call("Media::KindOfCodecType", [] { return KindOfCodecType(1); }));
    rows.push_back(Call("Media::KindOfMediaType", [] { return KindOfMediaType(MEDIA_TYPE_AUDIO); }));
    rows.push_back(Call("Media::KindOfRecord", [] { return KindOfRecord("format_codec_audio"); }));
}

void AddPlanning(Operations& rows)
{
    const auto plan = [](const PlannedJob& job) { return JsonOf(*job.graph) + job.output + Text(job.notes); };
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeAudioStream(), MakeSubtitleStream()});
    const PresetPtr preset =
        PresetFile::Read(*Core::MemoryDataInput::Create(TheFiles().presetText), "preset.json");
    JobRequest request;
    request.output = "out";
    // FFmpeg is asked what the container holds.
    rows.push_back(
        UsingFFmpeg(Call("Media::PlanJob", [=] { return plan(PlanJob(source, preset, request)); })));
    JobRequest merging = request;
    merging.streams.chosen = {0, 1};
    merging.merges = {{0, 2}};
    rows.push_back(
        UsingFFmpeg(Call("Media::PlanJob", [=] { return plan(PlanJob(source, preset, merging)); })));
    JobRequest wrong = request;
    wrong.streams.chosen = {9};
    rows.push_back(Variant(
        "refused", Call("Media::PlanJob", Refused<PlanException>([=] { PlanJob(source, preset, wrong); }))));
    const PresetPtr dvd = MakePreset("dvd", R"({"video":{"codec_id":"CODEC_ID_MPEG2VIDEO"}})");
    rows.push_back(UsingFFmpeg(Call("Media::PlanJob", [=] { return plan(PlanJob(source, dvd, request)); })));
    rows.push_back(Call("Media::ParseSetting", [] {
        const SettingOverride setting = ParseSetting("video.codec.options.encode.crf=20");
        return setting.path + Text(setting.value);
    }));
    rows.push_back(Variant("refused", Call("Media::ParseSetting", Refused<PlanException>([] {
                                               ParseSetting("video.bitrate=a text that is not a number");
                                           }))));
}

void AddJobs(Operations& rows)
{
    const Files& files = TheFiles();
    const GraphPtr job = WavJob(files.Name("in.wav"), {files.Name("a.wav"), files.Name("b.wav")});
    const GraphPtr faulty =
        WavJob(files.Name("none"), {files.Name("a.wav"), "/no folder of that name/b.wav"});
    const GraphPtr cyclic = GraphWithNodes(6);
    Link(*cyclic, {{1, 2}, {2, 1}, {3, 4}});
    for (const GraphPtr& graph : {job, faulty, cyclic})
    {
        rows.push_back(UsingFFmpeg(
            Call("Media::CheckJob", [graph] { return Sentences(CheckJob(*graph, "job.json")); })));
        rows.push_back(Call("Media::FindTopologyFaults",
                            [graph] { return Sentences(FindTopologyFaults(*graph, "job.json")); }));
    }
    rows.push_back(UsingFFmpeg(Call("Media::ExplainCodecSupport", [] {
        const CodecSupport support = ExplainCodecSupport("webm", "CODEC_ID_H264");
        return Text(support.codecs) + Text(support.containers) + Text(support.reasons);
    })));
    rows.push_back(UsingFFmpeg(Call(
        "Media::FindUnsupportedSettings",
        [preset = MakePreset(
             "mp4", R"({"video":{"codec_id":"CODEC_ID_VP8"},"audio":{"codec_id":"CODEC_ID_QCELP"}})")] {
            std::string text;
            for (const UnsupportedSetting& setting : FindUnsupportedSettings(preset->GetProperty(), "p.json"))
            {
                text += setting.place.Text() + setting.reason + Text(setting.nearest);
            }
            return text;
        })));
    rows.push_back(UsingFFmpeg(Call("Media::ValidateFile", [path = ioPath(files.Name("job.json"))] {
        return Sentences(ValidateFile(path));
    })));
    for (const std::string& text :
         {With(With(kGoodJob, "H264", "MPEG4"), "\"bitrate\": 400000",
               "\"bitrat\": 400000, \"dpi\": 1.5, \"layout\": \"STERO\""),
          With(With(kGoodPreset, "H264", "MPEG4"), "96000", "\"fast\", \"bitrate\": 5"), std::string("[x")})
    {
        rows.push_back(UsingFFmpeg(
            Call("Media::ValidateDocument", [text] { return Sentences(ValidateDocument(text, "a.json")); })));
    }
    rows.push_back(UsingFFmpeg(Call("Media::PrepareJob", [job] {
        std::string text;
        for (const PreparedTranscode& prepared : PrepareJob(*job))
        {
            for (const std::vector<std::string>& command : CommandsOf(prepared, "ffmpeg", true))
            {
                text += Text(command);
            }
        }
        return text;
    })));
    rows.push_back(Call("Media::ShellLine", [] { return ShellLine({"a b", "it's \xff", "-y"}); }));
    rows.push_back(UsingFFmpeg(Call("Media::EstimateSize", [job] {
        return EstimateSize(PrepareJob(*job).front().transcode).value_or(-1);
    })));
    rows.push_back(UsingFFmpeg(Call("Media::ReportJob", [job] {
        const JobReport report = ReportJob(*job, "job.json");
        return Text(Sentences(report.faults)) + Text(Sentences(report.losses));
    })));
    rows.push_back(UsingFFmpeg(Call("Media::VerifyJob", [job] {
        std::string text;
        for (const TargetVerification& target : VerifyJob(*job))
        {
            for (const TargetDifference& difference : target.differences)
            {
                text += difference.Sentence() + "\n";
            }
        }
        return text;
    })));
    rows.push_back(UsingFFmpeg(Variant(
        "refused", Call("Media::PrepareJob", Refused<JobException>([faulty] { PrepareJob(*faulty); })))));
    rows.push_back(Call("Media::DiffJobs", [job, faulty] {
        std::string text;
        for (const JobDifference& difference : DiffJobs(*job, *faulty))
        {
            text += difference.place + difference.key + difference.one + difference.other;
        }
        return text;
    }));
    rows.push_back(
        Call("Media::IsSameFile", [name = files.Name("in.wav")] { return IsSameFile(name, name); }));
    rows.push_back(Call("Media::Place::Text", [] {
        Place place;
        place.file = "a file whose name is not so short";
        place.node = 7;
        return place.At("key").Under("inner").Text() + place.TextInDocument();
    }));
}

void AddBatches(Operations& rows)
{
    const std::string name = TheFiles().Name("batch");
    rows.push_back(Described(Call("Media::ReadBatch", [name] {
        std::string text;
        const Batch batch = ReadBatch(name);
        for (const BatchJob& job : batch.jobs)
        {
            text += batch.PathOf(job.input) + job.output + job.refusal + Text(job.notes);
        }
        return text;
    })));
    rows.push_back(Described(Variant(
        "refused", Call("Media::ReadBatch", Refused<JobException>([name] { ReadBatch(name + "/jobs"); })))));
    const Batch batch = ReadBatch(name);
    rows.push_back(Described(Call("Media::ReadBatchStatus", [batch] {
        std::string text;
        for (const BatchJobStatus& job : ReadBatchStatus(batch).jobs)
        {
            text += NameOf(job.state) + (job.result ? job.result->reason + Text(job.result->messages) : "");
        }
        return text;
    })));
    rows.push_back(Call("Media::ChooseJobs", [] {
        return Text(ChooseJobs({BatchJobState::Waiting, BatchJobState::Done, BatchJobState::Failed}));
    }));
}

void AddNewPresets(Operations& rows)
{
    const auto text = [](const NewPreset& made) { return Text(made.record) + Text(made.notes); };
    // An encoder that is opened in no time: it is tried with each allocation that fails.
    const MediaFile source = MakeMediaFile({MakeVideoStream(64, 48, "CODEC_ID_MPEG4"), MakeAudioStream()});
    const Core::Property preset =
        MakePreset("mp4", R"({"video":{"codec_id":"CODEC_ID_MPEG4"}})")->GetProperty();
    rows.push_back(UsingFFmpeg(Call(
        "Media::MakePresetLike", [=] { return text(MakePresetLike(source, "a preset of some length")); })));
    rows.push_back(UsingFFmpeg(Call("Media::ChangePreset", [=] {
        return text(ChangePreset(preset, "a preset of some length", {ParseSetting("video.bitrate=5000000")}));
    })));
    rows.push_back(Call("Media::DescribePreset", [preset] { return DescribePreset(preset); }));
    rows.push_back(UsingFFmpeg(Call("Media::ListStoredPresets", [] {
        std::string found;
        for (const StoredPreset& stored : ListStoredPresets({ioPath("/no folder of that name")}))
        {
            found += stored.name + stored.file + stored.title + stored.makes + stored.fault;
        }
        return found;
    })));
}

void AddPresetFolders(Operations& rows)
{
    const std::vector<ioPath> folders = {ioPath(ZELNOR_SOURCE_DIR "/Presets"),
                                         ioPath("/no folder of that name")};
    rows.push_back(Call("Media::DefaultPresetFolders", [] { return Names(DefaultPresetFolders()); }));
    rows.push_back(Call("Media::ListPresets", [folders] { return ListPresets(folders); }));
    rows.push_back(Call("Media::FindPreset", [folders] { return FindPreset("mp3", folders); }));
    rows.push_back(Variant("refused", Call("Media::FindPreset", Refused<PresetFileException>([folders] {
                                               FindPreset("no preset of that name", folders);
                                           }))));
    const std::vector<std::string> known = {"CODEC_ID_H264", "CODEC_ID_MPEG2VIDEO", "CODEC_ID_MPEG4"};
    rows.push_back(Call("Media::NearestNames", [known] { return Text(NearestNames("mpeg2vidoe", known)); }));
    rows.push_back(Call("Media::CompleteSetting", [] {
        return Text(CompleteSetting("video.c")) + Text(CompleteSetting("audio[1].layout="));
    }));
    rows.push_back(Call("Media::DidYouMean", [known] { return DidYouMean("mpeg2vidoe", known); }));
    rows.push_back(Call("Media::BareName", [] { return BareName("CODEC_ID_MPEG2VIDEO_OF_SOME_LENGTH"); }));
    const auto failure = std::make_exception_ptr(
        MakeError<JobException>(Place{"a file whose name is not so short"}, "expected something else"));
    rows.push_back(Call("Media::ErrorText", [failure] { return ErrorText(failure); }));
    const auto other =
        std::make_exception_ptr(std::runtime_error("a message\nand a call stack that follows it"));
    rows.push_back(Call("Media::ErrorText", [other] { return ErrorText(other); }));
}

} // namespace

Operations MediaOperations()
{
    // FFmpeg is loaded here, or each process of the campaign would do so anew.
    static_cast<void>(MuxerDescription("mp4"));
    Operations rows;
    AddReading(rows);
    AddProbing(rows);
    AddPlanning(rows);
    AddJobs(rows);
    AddBatches(rows);
    AddPresetFolders(rows);
    AddNewPresets(rows);
    return rows;
}

/// The operations are dealt out to parts, which run beside each other. Those that take long stand together,
/// so that every part gets some.
class AllocationOfMedia : public ::testing::TestWithParam<std::size_t>
{
public:
    static constexpr std::size_t kParts = 6;
};

TEST_P(AllocationOfMedia, Part)
{
    const Operations all = MediaOperations();
    Operations part;
    for (std::size_t i = GetParam(); i < all.size(); i += kParts)
    {
        part.push_back(all[i]);
    }
    ReportFigures(RunCampaign(part));
}

INSTANTIATE_TEST_SUITE_P(Running, AllocationOfMedia,
                         ::testing::Range<std::size_t>(0, AllocationOfMedia::kParts));

} // namespace Zelnor::Testing
