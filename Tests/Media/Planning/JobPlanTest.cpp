#include "Media/Planning/JobPlan.h"

#include "Media/MediaException.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/FakePreset.h"
#include "Tests/Support/MediaFixtures.h"

#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/CodecMaps.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Conf::ITranscodingMetaGraph;
using Core::Property;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kVideo = R"({"video":{"codec_id":"CODEC_ID_H264"}})";
constexpr const char* kAudio = R"({"audio":{"codec_id":"CODEC_ID_AAC"}})";
constexpr const char* kBoth = R"({"video":{"codec_id":"CODEC_ID_H264"},"audio":{"codec_id":"CODEC_ID_AAC"}})";

JobRequest Request(std::vector<unsigned int> chosen = {}, std::vector<StreamMerge> merges = {})
{
    JobRequest request;
    request.output = "out";
    request.streams.chosen = std::move(chosen);
    request.merges = std::move(merges);
    return request;
}

PlannedJob Plan(const MediaFile& source, const std::string& streams, const JobRequest& request = Request())
{
    return PlanJob(source, MakePreset("mp4", streams), request);
}

/// The source's streams that become streams of the output, in the output's order.
std::vector<long long> SourcesOf(const PlannedJob& job)
{
    std::vector<Conf::NodeId> raws;
    job.graph->Inputs(2, raws);
    std::vector<long long> sources;
    for (const Conf::NodeId raw : raws)
    {
        sources.push_back((*job.graph)[raw]["id"].GetInt64());
    }
    return sources;
}

/// The record of the output's first stream.
Property FirstCodec(const PlannedJob& job) { return job.graph->GetLink(3, 2); }

Thrown ExpectRefused(const MediaFile& source, const std::string& streams, const JobRequest& request)
{
    return ExpectThrow<PlanException>([&] { Plan(source, streams, request); });
}

TEST(PlanJob, LinksTheSourceThroughItsStreamsToTheOutput)
{
    const PlannedJob job = Plan(MakeMediaFile({MakeVideoStream(), MakeAudioStream()}), kBoth);
    EXPECT_TRUE(job.graph->TopologyIsValid());
    EXPECT_EQ((*job.graph)[1], ITranscodingMetaGraph::MakeInFileDescription("in.mkv"));
    EXPECT_EQ((*job.graph)[2]["filePath"].GetString(), "out.mp4");
    EXPECT_EQ((*job.graph)[2]["container"].GetString(), "mp4");
    EXPECT_THAT(SourcesOf(job), ElementsAre(0, 1));
    EXPECT_EQ(job.graph->GetLink(3, 2).GetName(), "format_codec_video");
    EXPECT_EQ(job.graph->GetLink(4, 2).GetName(), "format_codec_audio");
    EXPECT_THAT(job.notes, IsEmpty());
}

TEST(PlanJob, TellsTheFullNameOfTheOutput)
{
    JobRequest request = Request();
    const MediaFile source = MakeMediaFile({MakeVideoStream()});
    EXPECT_EQ(Plan(source, kVideo, request).output, "out.mp4");
    request.output = "a.folder/out";
    const PlannedJob job = Plan(source, kVideo, request);
    EXPECT_EQ(job.output, "a.folder/out.mp4");
    EXPECT_EQ((*job.graph)[2]["filePath"].GetString(), job.output);
    request.output = "out.bin";
    EXPECT_EQ(Plan(source, kVideo, request).output, "out.bin");
}

TEST(PlanJob, ChoosesTheBestStreamsAndUsesThemAgainWhenNoneIsLeft)
{
    const MediaFile source = MakeMediaFile({MakeAudioStream(), MakeAudioStream(Conf::CH_LAYOUT_5POINT1)});
    EXPECT_THAT(SourcesOf(Plan(source, kAudio)), ElementsAre(1));
    EXPECT_THAT(SourcesOf(Plan(source, R"([{"audio":{"codec_id":"CODEC_ID_AAC"}},
        {"audio":{"codec_id":"CODEC_ID_AC3"}},{"audio":{"codec_id":"CODEC_ID_MP3"}}])")),
                ElementsAre(1, 0, 1));
}

TEST(PlanJob, TellsWhatThePresetWantsAndTheSourceDoesNotHave)
{
    const PlannedJob job = Plan(MakeMediaFile({MakeVideoStream()}), kBoth);
    EXPECT_THAT(SourcesOf(job), ElementsAre(0));
    EXPECT_THAT(job.notes, ElementsAre("'in.mkv' has no audio, so the output will have none"));
}

TEST(PlanJob, TakesTheChosenStreamsVideoBeforeAudio)
{
    const MediaFile source =
        MakeMediaFile({MakeAudioStream(), MakeVideoStream(64, 48), MakeVideoStream(), MakeAudioStream()});
    EXPECT_THAT(SourcesOf(Plan(source, kBoth, Request({3, 1, 0}))), ElementsAre(1, 3, 0));
    EXPECT_THAT(SourcesOf(Plan(source, kBoth, Request({0, 0}))), ElementsAre(0, 0));
}

TEST(PlanJob, NamesAChosenStreamThatCannotBeConverted)
{
    const MediaFile source = MakeMediaFile(
        {MakeVideoStream(), MakeStream(StreamKind::Attachment, Conf::IFormatCodec::Create())}, "in.mkv");
    const Thrown thrown = ExpectRefused(source, kVideo, Request({1}));
    EXPECT_EQ(thrown.description, "in.mkv: attachment stream 1: streams of this kind cannot be converted");
    EXPECT_EQ(thrown.Get<MediaException::TagFile>(), "in.mkv");
    EXPECT_EQ(thrown.Get<MediaException::TagStream>(), 1U);
    const Thrown missing = ExpectRefused(source, kVideo, Request({7}));
    EXPECT_EQ(missing.description, "in.mkv: stream 7: there is no such stream, only 2 streams from 0 on");
    EXPECT_EQ(missing.Get<MediaException::TagStream>(), 7U);
    EXPECT_EQ(ExpectRefused(source, kAudio, Request({0})).description,
              "in.mkv: video stream 0: preset 'p' has no settings for video");
    EXPECT_EQ(ExpectRefused(source, kAudio, Request()).description,
              "in.mkv: the file has no stream that preset 'p' can convert");
}

TEST(PlanJob, NamesThePresetsKeyThatFFmpegCannotHonour)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeAudioStream()});
    const Thrown format =
        ExpectRefused(source, R"({"video":{"codec_id":"CODEC_ID_H264","PIXELFORMAT":28}})", Request());
    EXPECT_EQ(format.description, "in.mkv: video stream 0, p.$$STREAMS$$.video.PIXELFORMAT: encoder libx264 "
                                  "does not support pixel format RGBA");
    EXPECT_EQ(format.Get<MediaException::TagKey>(), "p.$$STREAMS$$.video.PIXELFORMAT");
    EXPECT_EQ(format.Get<MediaException::TagStream>(), 0U);
    EXPECT_EQ(ExpectRefused(source, R"({"audio":{"codec_id":"CODEC_ID_QCELP"}})", Request()).description,
              "in.mkv: audio stream 1, p.$$STREAMS$$.audio.codec_id: the installed FFmpeg does not have an "
              "encoder for CODEC_ID_QCELP; for mp4 it can encode CODEC_ID_AAC, CODEC_ID_MP2 or CODEC_ID_MP3");
    EXPECT_EQ(
        ExpectRefused(source, R"({"audio":{"codec_id":"CODEC_ID_MP3","sample_rate":44101}})", Request())
            .description,
        "in.mkv: audio stream 1, p.$$STREAMS$$.audio.sample_rate: encoder libmp3lame does not support sample "
        "rate 44101");
}

TEST(PlanJob, RefusesAVideoWithoutASize)
{
    const MediaStream video = MakeVideoStream();
    RemoveValue(video, IFormatCodecVideo::TAG_WIDTH);
    EXPECT_EQ(ExpectRefused(MakeMediaFile({video}), kVideo, Request()).description,
              "in.mkv: video stream 0: its size is not known");
}

TEST(PlanJob, TakesOverWhatThePresetLeavesOpen)
{
    const MediaStream video = MakeVideoStream(1921, 1081);
    SetValue(video, IFormatCodecVideo::TAG_FPS, Property::Ratio(30000, 1001));
    const Property codec = FirstCodec(Plan(MakeMediaFile({video}), kVideo));
    EXPECT_EQ(codec["width"].GetInt64(), 1920);
    EXPECT_EQ(codec["height"].GetInt64(), 1080);
    EXPECT_EQ(codec["frameRateRatio"].GetRatio(), Property::Ratio(30000, 1001));
    EXPECT_EQ(codec["PIXELFORMAT"].GetInt64(), PIX_FMT_YUV420P);
    EXPECT_EQ(codec["name"].GetString(), "h264");
    EXPECT_EQ(codec["bitrate_mode"].GetString(), "CBR_AUTO");
    EXPECT_GT(codec["bitrate"].GetInt64(), 0);
}

TEST(PlanJob, MakesAudioThatTheEncoderSupports)
{
    const MediaFile source = MakeMediaFile({MakeAudioStream(Conf::CH_LAYOUT_5POINT1, 96000)});
    const Property mp3 = FirstCodec(Plan(source, R"({"audio":{"codec_id":"CODEC_ID_MP3"}})"));
    EXPECT_EQ(mp3["sample_rate"].GetInt64(), 48000);
    EXPECT_EQ(mp3["layout"].GetString(), "STEREO");
    EXPECT_EQ(mp3["sample_format"].GetString(), "SAMPLE_FMT_FLTP");
    const Property flac = FirstCodec(
        PlanJob(source, MakePreset("flac", R"({"audio":{"codec_id":"CODEC_ID_FLAC"}})"), Request()));
    EXPECT_EQ(flac["sample_rate"].GetInt64(), 96000);
    EXPECT_EQ(flac["layout"].GetString(), "5POINT1");
    EXPECT_EQ(flac["sample_format"].GetString(), "SAMPLE_FMT_S16");
}

TEST(PlanJob, CarriesTheTagsThatStayTrue)
{
    const MediaStream audio = MakeAudioStream();
    SetTag(*audio.descriptor, "language", "deu");
    SetTag(*audio.descriptor, "encoder", "another one");
    const MediaFile source = MakeMediaFile({audio});
    SetTag(*source.descriptor, "TITLE", "A title");
    SetTag(*source.descriptor, "major_brand", "isom");
    const PlannedJob job = Plan(source, kAudio);
    Property tags("metadata");
    tags.SetChildT("language", std::string("deu"));
    EXPECT_EQ(FirstCodec(job)["metadata"], tags);
    Property fileTags("metadata");
    fileTags.SetChildT("title", std::string("A title"));
    EXPECT_EQ((*job.graph)[2]["metadata"], fileTags);
}

TEST(PlanJob, ChecksMergesWithTheirKinds)
{
    const MediaFile source =
        MakeMediaFile({MakeVideoStream(), MakeAudioStream(), MakeAudioStream(), MakeSubtitleStream()});
    const auto merged = [&](unsigned int base, unsigned int overlay) {
        return ExpectRefused(source, kBoth, Request({0, 1}, {{base, overlay}}));
    };
    const Thrown wrong = merged(0, 1);
    EXPECT_EQ(wrong.description,
              "in.mkv: audio stream 1: cannot be merged into video stream 0, expected a subtitle");
    EXPECT_EQ(wrong.Get<MediaException::TagStream>(), 1U);
    EXPECT_EQ(
        merged(1, 3).description,
        "in.mkv: subtitle stream 3: cannot be merged into audio stream 1, expected another audio stream");
    EXPECT_EQ(merged(1, 1).description,
              "in.mkv: audio stream 1: cannot be merged into audio stream 1, expected another audio stream");
    EXPECT_EQ(merged(2, 1).description,
              "in.mkv: audio stream 2: is not converted, so nothing can be merged into it");
    EXPECT_EQ(merged(1, 9).description,
              "in.mkv: stream 9: there is no such stream, only 4 streams from 0 on");
    EXPECT_EQ(merged(9, 1).description,
              "in.mkv: stream 9: there is no such stream, only 4 streams from 0 on");
}

TEST(PlanJob, WritesMergesIntoTheirBase)
{
    const MediaFile source =
        MakeMediaFile({MakeVideoStream(), MakeAudioStream(), MakeAudioStream(), MakeBitmapSubtitle()});
    const PlannedJob job = Plan(source, kBoth, Request({0, 1}, {{1, 2}, {0, 3}}));
    Property video = ITranscodingMetaGraph::MakeRawStreamDescription(0);
    ITranscodingMetaGraph::AddSlaveStreamIndex(video, Property(), 3);
    EXPECT_EQ((*job.graph)[3], video);
    Property audio = ITranscodingMetaGraph::MakeRawStreamDescription(1);
    ITranscodingMetaGraph::AddSlaveStreamIndex(audio, Property(), 2);
    EXPECT_EQ((*job.graph)[4], audio);
}

TEST(PlanJob, TakesTheSubtitlesThatTheContainerCanHold)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeBitmapSubtitle(), MakeSubtitleStream()});
    const PlannedJob mp4 = Plan(source, kVideo);
    EXPECT_EQ(mp4.graph->GetLink(4, 2)["codec_id"].GetString(), "CODEC_ID_DVD_SUBTITLE");
    EXPECT_EQ(mp4.graph->GetLink(5, 2)["codec_id"].GetString(), "CODEC_ID_MOV_TEXT");
    const PlannedJob dvd =
        PlanJob(source, MakePreset("dvd", R"({"video":{"codec_id":"CODEC_ID_MPEG2VIDEO"}})"), Request());
    EXPECT_THAT(SourcesOf(dvd), ElementsAre(0, 1));
    const Thrown thrown = ExpectThrow<PlanException>([&] {
        PlanJob(source, MakePreset("dvd", R"({"video":{"codec_id":"CODEC_ID_MPEG2VIDEO"}})"), Request({2}));
    });
    EXPECT_EQ(thrown.description, "in.mkv: subtitle stream 2: container dvd cannot hold text subtitles");
}

TEST(PlanJob, LosslessDvdCopiesWhatADvdCanHoldAndConvertsTheRest)
{
    JobRequest request = Request();
    request.output = "out";
    request.streams.losslessDvd = true;
    const MediaFile source =
        MakeMediaFile({MakeVideoStream(720, 576, "CODEC_ID_MPEG2VIDEO"), MakeAudioStream()});
    const PlannedJob job = Plan(source, kBoth, request);
    EXPECT_EQ(job.output, "out.vob");
    EXPECT_EQ((*job.graph)[2]["container"].GetString(), "dvd");
    EXPECT_EQ(FirstCodec(job)["lossless"].GetInt64(), 1);
    EXPECT_EQ(job.graph->GetLink(4, 2)["codec_id"].GetString(), "CODEC_ID_AC3");
    EXPECT_EQ(job.graph->GetLink(4, 2)["sample_rate"].GetInt64(), 48000);
    EXPECT_THAT(job.notes, ElementsAre("A DVD cannot hold stream 1 (aac) as it is, so it will be converted"));
    request.streams.chosen = {0, 1};
    request.merges = {{0, 0}};
    EXPECT_EQ(ExpectRefused(source, kBoth, request).description,
              "in.mkv: video stream 0: is not converted, so nothing can be merged into it");
}

TEST(PlanJob, ADvdHasTheSizeAndRateOfItsStandard)
{
    JobRequest request = Request();
    request.streams.losslessDvd = true;
    const Property pal = FirstCodec(Plan(MakeMediaFile({MakeVideoStream(1280, 720)}), kVideo, request));
    EXPECT_EQ(pal["height"].GetInt64(), 576);
    EXPECT_EQ(pal["frameRateRatio"].GetRatio(), Property::Ratio(25, 1));
    const MediaStream video = MakeVideoStream(1280, 720);
    SetValue(video, IFormatCodecVideo::TAG_FPS, Property::Ratio(60000, 1001));
    const Property ntsc = FirstCodec(Plan(MakeMediaFile({video}), kVideo, request));
    EXPECT_EQ(ntsc["width"].GetInt64(), 720);
    EXPECT_EQ(ntsc["height"].GetInt64(), 480);
    EXPECT_EQ(ntsc["frameRateRatio"].GetRatio(), Property::Ratio(30000, 1001));
}

TEST(PlanJob, ADvdKeepsWhatThePresetSaysOfItsCodecs)
{
    JobRequest request = Request();
    request.streams.losslessDvd = true;
    const PlannedJob job =
        Plan(MakeMediaFile({MakeVideoStream(1280, 720), MakeAudioStream()}),
             R"({"video":{"codec_id":"CODEC_ID_MPEG2VIDEO","bitrate":4000000,"peakBitrate":7000000,)"
             R"("maxIFrameInterval":12,"width":1280},"audio":{"codec_id":"CODEC_ID_AAC","bitrate":96000}})",
             request);
    const Property video = FirstCodec(job);
    EXPECT_EQ(video["bitrate"].GetInt64(), 4000000);
    EXPECT_EQ(video[Conf::IFormatCodec::TAG_PEAK_BITRATE].GetInt64(), 7000000);
    EXPECT_EQ(video["maxIFrameInterval"].GetInt64(), 12);
    EXPECT_EQ(video["width"].GetInt64(), 720);
    EXPECT_EQ(job.graph->GetLink(4, 2)["bitrate"].GetInt64(), 448000);
}

TEST(PlanJob, TakesSoundAndSubtitlesOfThePicturesProgramme)
{
    MediaStream first = MakeVideoStream(640, 360);
    first.programs = {1};
    MediaStream second = MakeVideoStream(1920, 1080);
    second.programs = {7, 2};
    MediaStream sound = MakeAudioStream(Conf::CH_LAYOUT_5POINT1);
    sound.programs = {1};
    MediaStream right = MakeAudioStream();
    right.programs = {2, 7};
    MediaStream subtitle = MakeBitmapSubtitle();
    subtitle.programs = {1};
    const MediaFile source = MakeMediaFile({first, second, sound, right, subtitle, MakeSubtitleStream()});
    const PlannedJob job = Plan(source, kBoth);
    EXPECT_THAT(SourcesOf(job), ElementsAre(1, 3, 5));
    EXPECT_THAT(job.notes,
                ElementsAre("'in.mkv' has several programmes, so only programme 7 is taken",
                            "in.mkv: video stream 0: (h264) is left out; the output file has 1 video stream",
                            "in.mkv: audio stream 2: (aac) is left out; the output file has 1 audio stream",
                            "in.mkv: subtitle stream 4: (dvd_subtitle) is left out; the output file has 1 "
                            "subtitle stream"));
    EXPECT_THAT(SourcesOf(Plan(source, kBoth, Request({0, 3}))), ElementsAre(0, 3));
    EXPECT_THAT(SourcesOf(Plan(source, kAudio)), ElementsAre(2, 4, 5));
}

TEST(PlanJob, DoesNotNameTheOnlyProgramme)
{
    MediaStream video = MakeVideoStream();
    video.programs = {1};
    EXPECT_THAT(Plan(MakeMediaFile({video}), kVideo).notes, IsEmpty());
}

TEST(PlanJob, TakesABitrateThatIsAskedForAndNotesThatItIsLittle)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream()});
    JobRequest request = Request();
    request.settings = {ParseSetting("video.bitrate=1000")};
    const PlannedJob job =
        Plan(source, R"({"video":{"codec_id":"CODEC_ID_H264","bitrate":4000000}})", request);
    EXPECT_EQ(FirstCodec(job)["bitrate"].GetInt64(), 1000);
    const long long least = Conf::GetMinVideoBitrate("CODEC_ID_H264", 1280, 720, 25, 0);
    EXPECT_THAT(job.notes,
                ElementsAre("Stream 0 gets 1000 bit/s as asked for, although " + std::to_string(least) +
                            " is the least for 1280x720 at 25 frames per second"));
    request.settings = {ParseSetting("video[0].bitrate=1000"), ParseSetting("video.preset=fast")};
    EXPECT_EQ(FirstCodec(Plan(source, kVideo, request))["bitrate"].GetInt64(), 1000);
}

TEST(PlanJob, RaisesABitrateThatNoSizeWasSetFor)
{
    const MediaStream large = MakeVideoStream(3840, 2160);
    SetValue(large, IFormatCodecVideo::TAG_FPS, Property::Ratio(60));
    const MediaFile source = MakeMediaFile({large});
    const std::string settings = R"("codec_id":"CODEC_ID_H264","bitrate":4000000)";
    const long long least = Conf::GetMinVideoBitrate("CODEC_ID_H264", 3840, 2160, 60, 0);
    ASSERT_GT(least, 4000000);
    const PlannedJob job = Plan(source, R"({"video":{)" + settings + "}}");
    EXPECT_EQ(FirstCodec(job)["bitrate"].GetInt64(), least);
    EXPECT_THAT(
        job.notes,
        ElementsAre("Stream 0 gets " + std::to_string(least) +
                    " bit/s instead of 4000000, which is too little for 3840x2160 at 60 frames per second"));
    const PlannedJob sized = Plan(source, R"({"video":{)" + settings + R"(,"width":3840,"height":2160}})");
    EXPECT_EQ(FirstCodec(sized)["bitrate"].GetInt64(), 4000000);
    EXPECT_THAT(sized.notes, IsEmpty());
    const PlannedJob small = Plan(MakeMediaFile({MakeVideoStream()}), R"({"video":{)" + settings + "}}");
    EXPECT_EQ(FirstCodec(small)["bitrate"].GetInt64(), 4000000);
}

TEST(PlanJob, HasAKeyFrameAtLeastEveryTenSeconds)
{
    const MediaStream slow = MakeVideoStream();
    SetValue(slow, IFormatCodecVideo::TAG_FPS, Property::Ratio(25, 2));
    const MediaFile source = MakeMediaFile({slow});
    const auto interval = [](const PlannedJob& job) {
        const Property codec = FirstCodec(job);
        const auto child = codec.FindChild(IFormatCodecVideo::TAG_MAX_I_FRAME_INTERVAL);
        return child == codec.end() ? 0 : child->GetInt64();
    };
    EXPECT_EQ(interval(Plan(source, kVideo)), 125);
    EXPECT_EQ(interval(Plan(source, R"({"video":{"codec_id":"CODEC_ID_H264","maxIFrameInterval":250}})")),
              250);
    EXPECT_EQ(interval(Plan(source, R"({"video":{"codec_id":"CODEC_ID_H264","keyOnly":0}})")), 125);
    EXPECT_EQ(interval(Plan(source, R"({"video":{"codec_id":"CODEC_ID_H264","keyOnly":1}})")), 0);
    EXPECT_EQ(interval(Plan(source, R"({"video":{"codec_id":"CODEC_ID_MPEG4"}})")), 0);
    EXPECT_EQ(interval(Plan(MakeMediaFile({MakeVideoStream()}), kVideo)), 0);
}

TEST(PlanJob, TakesTheFirstOfSettingsWithOneNameWhichIsTheOneThatWasChecked)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream()});
    const PlannedJob job = Plan(source, R"({"video":{"codec_id":"CODEC_ID_H264","bitrate":4000000,)"
                                        R"("bitrate":5000000,"codec_id":"CODEC_ID_DVD_SUBTITLE"}})");
    EXPECT_EQ(FirstCodec(job)["codec_id"].GetString(), "CODEC_ID_H264");
    EXPECT_EQ(FirstCodec(job)["bitrate"].GetInt64(), 4000000);
    EXPECT_THAT(job.notes, IsEmpty());
}

TEST(PlanJob, NeedsAnOutputAPresetAndAWholeSource)
{
    MediaFile source = MakeMediaFile({MakeVideoStream()});
    EXPECT_EQ(ExpectRefused(source, kVideo, JobRequest()).description, "The output has no name");
    EXPECT_EQ(ExpectThrow<PlanException>([&] { PlanJob(source, nullptr, Request()); }).description,
              "A job needs a preset");
    source.streams[0].index = 3;
    EXPECT_EQ(ExpectRefused(source, kVideo, Request()).description,
              "in.mkv: video stream 3: stands at position 0 of the file");
    source.streams[0].index = 0;
    source.streams[0].descriptor = IFormatCodecAudio::Create();
    EXPECT_EQ(ExpectRefused(source, kVideo, Request()).description,
              "in.mkv: video stream 0: expected a descriptor of video, found another one");
    source.streams[0].descriptor = nullptr;
    EXPECT_EQ(ExpectRefused(source, kVideo, Request()).description,
              "in.mkv: video stream 0: expected a descriptor of video, found nothing");
    source.descriptor = nullptr;
    EXPECT_EQ(ExpectRefused(source, kVideo, Request()).description, "in.mkv: the file has no descriptor");
    EXPECT_EQ(ExpectRefused(MakeMediaFile({}), kVideo, Request()).description,
              "in.mkv: the file has no stream that preset 'p' can convert");
}

TEST(PlanJob, ChecksAPresetThatIsNotAPresetFile)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream()});
    const Thrown thrown = ExpectThrow<PresetFileException>(
        [&] { PlanJob(source, FakePreset::Create(Property("mine")), Request()); });
    EXPECT_EQ(thrown.description,
              "mine.container: expected the name of a container, as \"mp4\", found nothing");
    EXPECT_EQ(thrown.Get<MediaException::TagKey>(), "mine.container");
}

TEST(PlanJob, EveryCodecIsPlannedOrRefusedWithItsPlace)
{
    const MediaFile source = MakeMediaFile({MakeVideoStream(), MakeAudioStream(), MakeSubtitleStream()});
    const std::pair<const char*, Conf::MapCodecs> kTypes[] = {
        {"video", Conf::GetFFVideoCodecsMap()},
        {"audio", Conf::GetFFAudioCodecsMap()},
        {"subtitles_text", Conf::GetFFSubtitleCodecsMap()}};
    for (const auto& [type, codecs] : kTypes)
    {
        std::size_t planned = 0;
        for (const auto& [id, text] : codecs)
        {
            SCOPED_TRACE(text);
            if (text == Conf::IFormatCodec::CODEC_ID_NONE)
            {
                continue; // no preset may ask for it
            }
            const std::string streams = std::string("{\"") + type + R"(":{"codec_id":")" + text + "\"}}";
            try
            {
                EXPECT_TRUE(
                    PlanJob(source, MakePreset("matroska", streams), Request()).graph->TopologyIsValid());
                ++planned;
            }
            catch (const PlanException& exception)
            {
                EXPECT_NE(boost::get_error_info<MediaException::TagStream>(exception), nullptr);
                EXPECT_NE(boost::get_error_info<MediaException::TagKey>(exception), nullptr);
            }
        }
        EXPECT_GT(planned, 5U) << type;
    }
}

TEST(JobPlan, AsksTheDecoderOfTheSourceAboutItsOptions)
{
    const std::string streams =
        R"({"video":{"codec_id":"CODEC_ID_H264","codec.options.analyze":{"skip_top":1,"keep_ass_markup":1}}})";
    const Thrown thrown =
        ExpectThrow<PlanException>([&] { Plan(MakeMediaFile({MakeVideoStream()}), streams); });
    EXPECT_EQ(thrown.description,
              "in.mkv: video stream 0, p.$$STREAMS$$.video.codec.options.analyze.keep_ass_markup: decoder "
              "h264 does not "
              "have an option 'keep_ass_markup'");
    EXPECT_EQ(thrown.Get<MediaException::TagKey>(),
              "p.$$STREAMS$$.video.codec.options.analyze.keep_ass_markup");
}

} // namespace
