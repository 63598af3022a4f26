#include "Media/Planning/NewPreset.h"

#include "Media/MediaException.h"
#include "Media/Planning/Containers.h"

#include "Conf/Interfaces/FormatLists.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/MediaFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Conf::IFormatCodec;
using Conf::IFormatCodecVideo;
using Core::Property;
using testing::ElementsAre;
using testing::IsEmpty;

MediaFile InContainer(std::vector<MediaStream> streams, const std::string& container)
{
    MediaFile file = MakeMediaFile(std::move(streams));
    Property record = file.descriptor->GetProperty();
    record.SetChildT(Conf::IFormatFile::TAG_CONTAINER, container);
    file.descriptor->SetProperty(record);
    return file;
}

const Property& StreamOf(const NewPreset& preset, const std::string& type)
{
    return preset.record[Conf::IPreset::KEY_STREAMS][type];
}

TEST(NewPreset, OfAFileHasWhatIsKnownOfItsStreams)
{
    MediaStream video = MakeVideoStream(1920, 1080);
    SetValue(video, IFormatCodec::TAG_PROFILE, std::string("high"));
    video.pixelFormat = "yuv420p";
    SetValue(video, IFormatCodec::TAG_BITRATE, 5000000LL);
    MediaStream audio = MakeAudioStream();
    SetValue(audio, IFormatCodec::TAG_PROFILE, std::string("aac_low"));
    const NewPreset made = MakePresetLike(InContainer({video, audio}, "mp4"), "like");
    EXPECT_THAT(made.notes, IsEmpty());
    EXPECT_EQ(made.record.GetName(), "like");
    EXPECT_EQ(made.record["container"].GetString(), "mp4");
    const Property& picture = StreamOf(made, "video");
    EXPECT_EQ(picture["codec_id"].GetString(), "CODEC_ID_H264");
    EXPECT_EQ(picture["profile"].GetString(), "high");
    EXPECT_EQ(picture["bitrate"].GetInt64(), 5000000);
    EXPECT_EQ(picture["width"].GetInt64(), 1920);
    EXPECT_EQ(picture["frameRateRatio"].GetRatio(), Property::Ratio(25));
    EXPECT_EQ(picture["pixelFormat"].GetString(), "yuv420p");
    const Property& sound = StreamOf(made, "audio");
    EXPECT_EQ(sound["profile"].GetString(), "aac_low");
    EXPECT_EQ(sound["sample_rate"].GetInt64(), 48000);
    EXPECT_EQ(sound["layout"].GetString(), "STEREO");
    EXPECT_FALSE(sound.ChildExists("bitrate")) << "it is not known";
}

TEST(NewPreset, OfARotatedVideoHasTheSizeOnTheDisplay)
{
    MediaStream video = MakeVideoStream(1920, 1080);
    video.rotation = 90;
    const NewPreset made = MakePresetLike(InContainer({video}, "mp4"), "like");
    EXPECT_EQ(StreamOf(made, "video")["width"].GetInt64(), 1080);
    EXPECT_EQ(StreamOf(made, "video")["height"].GetInt64(), 1920);
}

TEST(NewPreset, OfAProResFileHasItsProfileAndAnEncoderOfIt)
{
    MediaStream video = MakeVideoStream(1920, 1080, "CODEC_ID_PRORES");
    video.profile = "HQ";
    const NewPreset made = MakePresetLike(InContainer({video}, "mov"), "like");
    EXPECT_EQ(StreamOf(made, "video")["preferred_encoder"].GetString(), "prores_ks");
    EXPECT_EQ(StreamOf(made, "video")["codec.options.encode"]["profile"].GetString(), "hq");
    EXPECT_NO_THROW(ChangePreset(made.record, "like", {}));
}

TEST(NewPreset, ReplacesWhatCannotBeMade)
{
    const MediaStream unknown = MakeStream(StreamKind::Video, IFormatCodecVideo::Create());
    const NewPreset made = MakePresetLike(
        InContainer({unknown, MakeAudioStream(Conf::CH_LAYOUT_STEREO, 48000, "CODEC_ID_COOK")}, "rm"),
        "like");
    EXPECT_EQ(StreamOf(made, "video")["codec_id"].GetString().substr(0, 9), "CODEC_ID_");
    ASSERT_GE(made.notes.size(), 2U);
    EXPECT_NO_THROW(ChangePreset(made.record, "like", {}));
}

TEST(NewPreset, OfADisabledCodecNamesItsEncoder)
{
    const NewPreset made =
        MakePresetLike(InContainer({MakeVideoStream(640, 360, "CODEC_ID_H265")}, "matroska"), "like");
    EXPECT_EQ(StreamOf(made, "video")["preferred_encoder"].GetString(), "libx265");
}

TEST(NewPreset, SaysWhichStreamsItDoesNotDescribe)
{
    MediaStream second = MakeAudioStream();
    const NewPreset made = MakePresetLike(
        InContainer({MakeVideoStream(), MakeAudioStream(), second, MakeAttachedPicture()}, "matroska"),
        "like");
    ASSERT_EQ(made.notes.size(), 1U);
    EXPECT_THAT(
        made.notes[0],
        testing::EndsWith("audio stream 2: is not described; the preset has one stream of each type"));
}

TEST(NewPreset, NeedsVideoOrAudio)
{
    const MediaFile file = InContainer({MakeAttachedPicture()}, "mp3");
    EXPECT_EQ(ExpectThrow<PlanException>([&] { MakePresetLike(file, "like"); }).description,
              file.name + ": there is no video and no audio to make a preset of");
}

TEST(NewPreset, OfAPresetHasItsSettingsUnderAnotherName)
{
    const auto preset = MakePreset("mp4", R"({"video":{"codec_id":"CODEC_ID_H264","PIXELFORMAT":0}})");
    const NewPreset made =
        ChangePreset(preset->GetProperty(), "mine", {ParseSetting("video.bitrate=5000000")});
    EXPECT_EQ(made.record.GetName(), "mine");
    EXPECT_EQ(made.record["id"].GetString(), "mine");
    EXPECT_EQ(StreamOf(made, "video")["bitrate"].GetInt64(), 5000000);
    EXPECT_EQ(StreamOf(made, "video")["PIXELFORMAT"].GetString(), "YUV420P");
}

TEST(NewPreset, IsOfTheFormatOfItsContainer)
{
    const auto preset = MakePreset("mp4", R"({"video":{"codec_id":"CODEC_ID_H264"}})");
    const NewPreset made = ChangePreset(preset->GetProperty(), "p", {ParseSetting("container=matroska")});
    EXPECT_EQ(made.record["$$TYPE_ID$$"].GetString(), "format_matroska");
}

TEST(NewPreset, IsRefusedWhereItsContainerCannotHoldACodec)
{
    const auto preset = MakePreset("mp4", R"({"video":{"codec_id":"CODEC_ID_H264"}})");
    const Thrown thrown = ExpectThrow<PlanException>(
        [&] { ChangePreset(preset->GetProperty(), "p", {ParseSetting("video.codec_id=CODEC_ID_VP8")}); });
    EXPECT_EQ(
        thrown.description,
        "p.$$STREAMS$$.video.codec_id: the container mp4 cannot hold CODEC_ID_VP8; it holds CODEC_ID_H264, "
        "CODEC_ID_VP9 or CODEC_ID_MPEG1VIDEO; CODEC_ID_VP8 goes into avi, matroska or mov");
}

MediaStream WithDefault(MediaStream stream)
{
    stream.isDefault = true;
    return stream;
}

TEST(NewPreset, OfSeveralStreamsIsLikeTheOneThatPlayersChoose)
{
    const auto rateOf = [](std::vector<MediaStream> streams) {
        return StreamOf(MakePresetLike(InContainer(std::move(streams), "matroska"), "like"),
                        "audio")["sample_rate"]
            .GetInt64();
    };
    const MediaStream first = MakeAudioStream(Conf::CH_LAYOUT_STEREO, 44100);
    const MediaStream second = MakeAudioStream(Conf::CH_LAYOUT_STEREO, 48000);
    EXPECT_EQ(rateOf({first, second}), 44100);
    EXPECT_EQ(rateOf({first, WithDefault(second)}), 48000);
    EXPECT_EQ(rateOf({WithDefault(first), WithDefault(second)}), 44100);
}

TEST(NewPreset, PassesOverStreamsOfWhichNothingIsKnown)
{
    MediaStream unknown = MakeVideoStream();
    unknown.descriptor = nullptr;
    const NewPreset made = MakePresetLike(InContainer({unknown, MakeAudioStream()}, "matroska"), "like");
    EXPECT_FALSE(made.record[Conf::IPreset::KEY_STREAMS].ChildExists("video"));
}

TEST(NewPreset, OfAPictureIsInTheFormatThatOnePictureHas)
{
    const auto containerOf = [](const std::string& own, const std::string& codec) {
        const NewPreset made = MakePresetLike(InContainer({MakeVideoStream(64, 48, codec)}, own), "like");
        EXPECT_FALSE(StreamOf(made, "video").ChildExists("frameRateRatio")) << own;
        return made.record["container"].GetString();
    };
    EXPECT_EQ(containerOf("png_pipe", "CODEC_ID_PNG"), "png");
    EXPECT_EQ(containerOf("webp_pipe", "CODEC_ID_PNG"), "image2");
}

TEST(NewPreset, OfAFileThatCannotBeWrittenIsInAContainerThatCan)
{
    const NewPreset sound = MakePresetLike(
        InContainer({MakeAudioStream(Conf::CH_LAYOUT_STEREO, 48000, "CODEC_ID_MP3")}, "nuv"), "like");
    EXPECT_EQ(sound.record["container"].GetString(), "avi");
    EXPECT_THAT(sound.notes,
                ElementsAre("in.mkv: files like it (matroska,webm) cannot be written; the preset makes avi"));
    MediaFile nameless = MakeMediaFile({MakeVideoStream()});
    nameless.descriptor = nullptr;
    EXPECT_EQ(MakePresetLike(nameless, "like").record["container"].GetString(), "matroska");
    const MediaStream unknown = MakeStream(StreamKind::Video, IFormatCodecVideo::Create());
    EXPECT_EQ(MakePresetLike(InContainer({unknown}, "nuv"), "like").record["container"].GetString(),
              "matroska");
}

TEST(NewPreset, RoundsTheBitrateOfDnxhdToANominalOne)
{
    const auto bitrateOf = [](long long own) {
        MediaStream video = MakeVideoStream(1920, 1080, "CODEC_ID_DNXHD");
        if (own != 0)
        {
            SetValue(video, IFormatCodec::TAG_BITRATE, own);
        }
        const NewPreset made = MakePresetLike(InContainer({video}, "mov"), "like");
        const Property& stream = StreamOf(made, "video");
        return stream.ChildExists("bitrate") ? stream["bitrate"].GetInt64() : 0;
    };
    EXPECT_EQ(bitrateOf(36'200'000), 36'000'000);
    EXPECT_EQ(bitrateOf(121'400'000), 120'000'000);
    EXPECT_EQ(bitrateOf(0), 0);
}

TEST(NewPreset, OfADnxhrFileHasItsProfile)
{
    MediaStream video = MakeVideoStream(1920, 1080, "CODEC_ID_DNXHD");
    video.profile = "DNXHR SQ";
    const NewPreset made = MakePresetLike(InContainer({video}, "mov"), "like");
    EXPECT_FALSE(StreamOf(made, "video").ChildExists("preferred_encoder"));
    EXPECT_EQ(StreamOf(made, "video")["codec.options.encode"]["profile"].GetString(), "dnxhr_sq");
}

TEST(NewPreset, OfARotatedVideoWithoutASizeHasNone)
{
    MediaStream video = MakeVideoStream(1920, 1080);
    video.rotation = 90;
    RemoveValue(video, IFormatCodecVideo::TAG_HEIGHT);
    const NewPreset made = MakePresetLike(InContainer({video}, "mp4"), "like");
    EXPECT_EQ(StreamOf(made, "video")["width"].GetInt64(), 1920);
}

TEST(NewPreset, LeavesOutWhatAPresetCannotHave)
{
    MediaStream video = MakeVideoStream(1920, 1080);
    SetValue(video, IFormatCodec::TAG_BITRATE, -1LL);
    video.pixelFormat = "gray16be";
    const NewPreset made = MakePresetLike(InContainer({video}, "mp4"), "like");
    EXPECT_FALSE(StreamOf(made, "video").ChildExists("bitrate"));
    EXPECT_FALSE(StreamOf(made, "video").ChildExists("pixelFormat"));
}

TEST(NewPreset, NamesNoPixelFormatThatHasNoName)
{
    const auto preset =
        MakePreset("mp4", R"({"video":{"codec_id":"CODEC_ID_H264","PIXELFORMAT":"YUV420P"}})");
    const NewPreset made = ChangePreset(preset->GetProperty(), "mine", {});
    EXPECT_EQ(StreamOf(made, "video")["PIXELFORMAT"].GetString(), "YUV420P");
}

TEST(NewPreset, SaysNothingOfSubtitles)
{
    const NewPreset made =
        MakePresetLike(InContainer({MakeVideoStream(), MakeSubtitleStream()}, "mp4"), "like");
    EXPECT_THAT(made.notes, IsEmpty());
    EXPECT_FALSE(made.record[Conf::IPreset::KEY_STREAMS].ChildExists("subtitle"));
}

TEST(NewPreset, OfAFileThatIsWrittenAsSeveralIsInAnotherContainer)
{
    const NewPreset made = MakePresetLike(InContainer({MakeVideoStream()}, "rtp"), "like");
    EXPECT_EQ(made.record["container"].GetString(), "matroska");
    EXPECT_THAT(
        made.notes,
        ElementsAre("in.mkv: files like it (matroska,webm) cannot be written; the preset makes matroska"));
}

TEST(NewPreset, OfAFileThatFFmpegOnlyReadsIsInAnotherContainer)
{
    std::size_t count = 0;
    for (const std::string& container : Conf::GetContainerList())
    {
        if (FindMuxer(container) == nullptr)
        {
            const NewPreset made = MakePresetLike(InContainer({MakeVideoStream()}, container), "like");
            EXPECT_EQ(made.record["container"].GetString(), "matroska") << container;
            ++count;
        }
    }
    EXPECT_GT(count, 0U);
}

TEST(NewPreset, OfARotatedVideoWithoutAWidthHasItsHeight)
{
    MediaStream video = MakeVideoStream(1920, 1080);
    video.rotation = 90;
    RemoveValue(video, IFormatCodecVideo::TAG_WIDTH);
    const NewPreset made = MakePresetLike(InContainer({video}, "mp4"), "like");
    EXPECT_EQ(StreamOf(made, "video")["height"].GetInt64(), 1080);
}

TEST(NewPreset, OfARecordMadeByHandKeepsItsPixelFormat)
{
    const auto pixelsOf = [](const auto& pixels) {
        Property record = MakePreset("mp4", R"({"video":{"codec_id":"CODEC_ID_H264"}})")->GetProperty();
        record[Conf::IPreset::KEY_STREAMS]["video"].SetChildT(Conf::TAG_PIX_FMT, pixels);
        return StreamOf(ChangePreset(record, "mine", {}), "video")[Conf::TAG_PIX_FMT].GetString();
    };
    EXPECT_EQ(pixelsOf(std::string("YUV420P")), "YUV420P");
    EXPECT_EQ(pixelsOf(0LL), "YUV420P");
}

} // namespace
