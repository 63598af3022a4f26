#include "Media/Planning/TargetCodec.h"

#include "Media/Jobs/JobKeys.h"
#include "Media/MediaException.h"
#include "Media/Planning/DvdSettings.h"
#include "Media/Planning/VideoSettings.h"
#include "Media/Probe/FFmpegNames.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/MediaFixtures.h"

#include "Conf/Interfaces/ServiceRecords.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Core::Property;
using testing::IsEmpty;

/// What one stream becomes, without a job around it.
class TargetCodecChoices : public testing::Test
{
protected:
    Property Make(const MediaStream& source, const std::string& container = "matroska")
    {
        m_notes.clear();
        return MakeTargetCodec({source, m_settings, container, Place{"in.mkv"}, m_notes});
    }
    void Ask(const std::string& codecId) { m_settings.SetChildT(IFormatCodec::TAG_CODEC_ID, codecId); }

    AVPixelFormat PixelsOf(const std::string& pixelFormat, const std::string& container)
    {
        MediaStream source = MakeVideoStream();
        RemoveValue(source, Conf::TAG_PIX_FMT);
        source.pixelFormat = pixelFormat;
        return PixelFormatIn(Make(source, container));
    }

    Property m_settings;
    std::vector<std::string> m_notes;
};

TEST_F(TargetCodecChoices, TransparencyStaysWhereTheContainerHasAPlaceForIt)
{
    for (const char* const codecId : {"CODEC_ID_VP8", "CODEC_ID_VP9"})
    {
        Ask(codecId);
        EXPECT_EQ(PixelsOf("yuva420p", "webm"), AV_PIX_FMT_YUVA420P) << codecId;
        EXPECT_EQ(PixelsOf("yuva420p", "matroska"), AV_PIX_FMT_YUVA420P) << codecId;
        EXPECT_EQ(PixelsOf("yuva420p", "avi"), AV_PIX_FMT_YUV420P) << codecId;
        EXPECT_EQ(PixelsOf("yuv420p", "avi"), AV_PIX_FMT_YUV420P) << codecId;
    }
}

TEST_F(TargetCodecChoices, PixelsWithoutANumberAreNamed)
{
    Ask("CODEC_ID_PNG");
    EXPECT_EQ(PixelsOf("gray10le", "matroska"), AV_PIX_FMT_GRAY16BE);
    Ask("CODEC_ID_GIF");
    EXPECT_NE(PixelsOf("gbrap12le", "gif"), AV_PIX_FMT_NONE);
    Ask("CODEC_ID_MPEG4");
    EXPECT_EQ(PixelsOf("gbrp12le", "avi"), AV_PIX_FMT_YUV420P);
}

TEST_F(TargetCodecChoices, ADvdKeepsItsFieldsAtTheSourcesRateAlone)
{
    MediaStream source = MakeVideoStream(720, 576, "CODEC_ID_MPEG2VIDEO");
    source.isInterlaced = true;
    Ask("CODEC_ID_MPEG2VIDEO");
    const auto deinterlacing = [&](const std::string& container) {
        return Make(source, container)[JobKeys::kDeinterlace].GetString();
    };
    EXPECT_EQ(deinterlacing("dvd"), JobKeys::kDeinterlaceKeep);
    EXPECT_THAT(m_notes, IsEmpty());
    EXPECT_EQ(deinterlacing("mpegts"), JobKeys::kDeinterlaceEveryFrame);
    m_settings.SetChildT(IFormatCodecVideo::TAG_FPS, Property::Ratio(30000, 1001));
    EXPECT_EQ(deinterlacing("dvd"), JobKeys::kDeinterlaceEveryFrame);
}

TEST_F(TargetCodecChoices, OfAnInterlacedVideoOfUnknownRateIsAFrameOfEachFrame)
{
    MediaStream source = MakeVideoStream();
    source.isInterlaced = true;
    RemoveValue(source, IFormatCodecVideo::TAG_FPS);
    Ask("CODEC_ID_H264");
    EXPECT_EQ(Make(source)[JobKeys::kDeinterlace].GetString(), JobKeys::kDeinterlaceEveryFrame);
}

TEST_F(TargetCodecChoices, WhatHasNoBitrateIsNotRaised)
{
    Ask("CODEC_ID_FFV1");
    m_settings.SetChildT(IFormatCodec::TAG_BITRATE, 1000LL);
    EXPECT_EQ(Make(MakeVideoStream())[IFormatCodec::TAG_BITRATE].GetInt64(), 1000);
    m_settings.RemoveChild(IFormatCodec::TAG_BITRATE);
    const Property record = Make(MakeVideoStream());
    EXPECT_FALSE(record.ChildExists(IFormatCodec::TAG_BITRATE));
    EXPECT_FALSE(record.ChildExists(IFormatCodec::TAG_BITRATE_MODE));
}

TEST_F(TargetCodecChoices, ABitrateIsNotRaisedWhereEitherLengthIsAskedFor)
{
    Ask("CODEC_ID_MPEG4");
    m_settings.SetChildT(IFormatCodec::TAG_BITRATE, 1000LL);
    for (const std::string& key : {IFormatCodecVideo::TAG_WIDTH, IFormatCodecVideo::TAG_HEIGHT})
    {
        m_settings.SetChildT(key, 720LL);
        EXPECT_EQ(Make(MakeVideoStream())[IFormatCodec::TAG_BITRATE].GetInt64(), 1000) << key;
        m_settings.RemoveChild(key);
    }
    EXPECT_GT(Make(MakeVideoStream())[IFormatCodec::TAG_BITRATE].GetInt64(), 1000);
}

TEST_F(TargetCodecChoices, AVideoOfLessThanAFrameInTenSecondsHasKeyFramesAlone)
{
    const MediaStream source = MakeVideoStream();
    SetValue(source, IFormatCodecVideo::TAG_FPS, Property::Ratio(1, 100));
    Ask("CODEC_ID_H264");
    EXPECT_EQ(Make(source)[IFormatCodecVideo::TAG_MAX_I_FRAME_INTERVAL].GetInt64(), 1);
}

TEST_F(TargetCodecChoices, OptionsOfADecoderThatThereIsNotAreLeftToFFmpeg)
{
    m_settings.SetChild(IFormatCodec::TAG_CODEC_OPTIONS_ANALYZE).SetChildT("none_of_its", 1LL);
    Ask("CODEC_ID_MP2");
    EXPECT_EQ(ExpectThrow<PlanException>([&] { Make(MakeAudioStream()); }).description,
              "in.mkv: codec.options.analyze.none_of_its: decoder aac does not have an option 'none_of_its'");
    MediaStream source = MakeAudioStream();
    source.codec = "none of FFmpeg's";
    EXPECT_EQ(Make(source)[IFormatCodec::TAG_NAME].GetString(), "mp2");
}

TEST_F(TargetCodecChoices, ChannelsWithoutALayoutStayWhereTheEncoderTakesAny)
{
    MediaStream source = MakeAudioStream();
    RemoveValue(source, IFormatCodecAudio::TAG_LAYOUT);
    const auto layout = [&](const char* codecId, unsigned int channels) {
        source.channels = channels;
        Ask(codecId);
        const Property record = Make(source);
        return record.ChildExists(IFormatCodecAudio::TAG_LAYOUT)
                   ? record[IFormatCodecAudio::TAG_LAYOUT].GetString()
                   : "";
    };
    EXPECT_EQ(layout("CODEC_ID_PCM_S16LE", 3), "");
    EXPECT_EQ(layout("CODEC_ID_PCM_S16LE", 2), "STEREO");
    EXPECT_EQ(layout("CODEC_ID_MP2", 3), "MONO");
}

TEST_F(TargetCodecChoices, TellOfABitrateThatTheCalculatorDoesNotKnow)
{
    Ask("CODEC_ID_MPEG4");
    Make(MakeVideoStream());
    EXPECT_THAT(m_notes, testing::IsEmpty());
    Ask("CODEC_ID_FLV1");
    const Property made = Make(MakeVideoStream());
    EXPECT_THAT(m_notes, testing::ElementsAre("Stream 0 gets " + std::to_string(made["bitrate"].GetInt64()) +
                                              " bit/s, as for CODEC_ID_H264, since the bitrate calculator "
                                              "does not know CODEC_ID_FLV1"));
}

TEST_F(TargetCodecChoices, ThatFFmpegCannotMakeAreRefused)
{
    Ask("CODEC_ID_QDM2");
    EXPECT_EQ(ExpectThrow<PlanException>([&] { Make(MakeAudioStream()); }).description,
              "in.mkv: codec_id: the installed FFmpeg does not have an encoder for CODEC_ID_QDM2; for "
              "matroska it can "
              "encode CODEC_ID_VORBIS, CODEC_ID_PCM_S16LE or CODEC_ID_PCM_S16BE");
    for (const StreamKind kind : {StreamKind::Data, StreamKind::Attachment, StreamKind::Unknown})
    {
        const MediaStream stream = MakeStream(kind, Conf::IFormatCodec::Create());
        EXPECT_EQ(ExpectThrow<PlanException>([&] { Make(stream); }).description,
                  "in.mkv: streams of this kind cannot be converted");
    }
}

TEST(DvdSettings, AreThoseOfAmericaUnlessTheSourceIsEuropean)
{
    const auto height = [](const MediaStream& source) {
        return DvdSettings(source)[IFormatCodecVideo::TAG_HEIGHT].GetInt64();
    };
    const MediaStream source = MakeVideoStream();
    EXPECT_EQ(height(source), 576);
    SetValue(source, IFormatCodecVideo::TAG_FPS, Property::Ratio(50));
    EXPECT_EQ(height(source), 576);
    SetValue(source, IFormatCodecVideo::TAG_FPS, Property::Ratio(25, 2));
    EXPECT_EQ(height(source), 480);
    SetValue(source, IFormatCodecVideo::TAG_FPS, Property::Ratio(24));
    EXPECT_EQ(height(source), 480);
    RemoveValue(source, IFormatCodecVideo::TAG_FPS);
    EXPECT_EQ(height(source), 480);
}

TEST(DvdSettings, TakeOverWhatADvdLeavesOpen)
{
    Property wanted;
    wanted.SetChildT(IFormatCodec::TAG_CODEC_ID, IFormatCodecVideo::CODEC_ID_MPEG2VIDEO);
    wanted.SetChildT(IFormatCodec::TAG_BITRATE, 4000000LL);
    wanted.SetChildT(IFormatCodecVideo::TAG_WIDTH, 1280LL);
    wanted.SetChildT(JobKeys::kPixelFormat, std::string("yuv422p"));
    const Property settings = DvdSettings(MakeVideoStream(), &wanted);
    EXPECT_EQ(settings[IFormatCodec::TAG_BITRATE].GetInt64(), 4000000);
    EXPECT_EQ(settings[IFormatCodecVideo::TAG_WIDTH].GetInt64(), 720);
    EXPECT_FALSE(settings.ChildExists(JobKeys::kPixelFormat));
    wanted.SetChildT(IFormatCodec::TAG_CODEC_ID, IFormatCodecVideo::CODEC_ID_H264);
    EXPECT_EQ(DvdSettings(MakeVideoStream(), &wanted), DvdSettings(MakeVideoStream()));
}

TEST(DvdSettings, SayNothingOfSubtitles)
{
    Property wanted;
    wanted.SetChildT(IFormatCodec::TAG_CODEC_ID, std::string("CODEC_ID_DVD_SUBTITLE"));
    EXPECT_EQ(DvdSettings(MakeBitmapSubtitle(), &wanted).Count(), 0U);
}

TEST(CopiedCodec, IsTheSourcesAndMarkedUnlessItIsASubtitle)
{
    const auto word = [](const MediaStream& source) {
        const Property record = MakeCopiedCodec(source);
        EXPECT_EQ(record[IFormatCodec::TAG_LOSSLESS].GetInt64(), 1);
        return record.ChildExists(IFormatCodec::TAG_PREFERREDIMPL)
                   ? record[IFormatCodec::TAG_PREFERREDIMPL].GetString()
                   : "";
    };
    EXPECT_EQ(word(MakeVideoStream()), IFormatCodecVideo::ENCODER_LOSSLESS);
    EXPECT_EQ(word(MakeAudioStream()), IFormatCodecAudio::ENCODER_LOSSLESS);
    EXPECT_EQ(word(MakeSubtitleStream()), "");
}

} // namespace
