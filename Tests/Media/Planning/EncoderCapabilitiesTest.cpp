#include "Media/Planning/EncoderCapabilities.h"

#include "Conf/Interfaces/CodecMaps.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;

/// The installed FFmpeg's default encoder of each codec that the vocabulary has an identifier for.
std::vector<const AVCodec*> Encoders(AVMediaType type)
{
    std::vector<const AVCodec*> encoders;
    for (const auto& [id, text] : Conf::GetFFCodecsMap())
    {
        const AVCodec* const encoder = id == AV_CODEC_ID_NONE ? nullptr : FindEncoder(text);
        if (encoder != nullptr && encoder->type == type)
        {
            encoders.push_back(encoder);
        }
    }
    EXPECT_GT(encoders.size(), 10U);
    return encoders;
}

const AVCodec& Encoder(const std::string& codecId) { return *FindEncoder(codecId); }

std::vector<PixFmt> KnownFormats()
{
    std::vector<PixFmt> formats;
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        if (record.pixFmt != PIX_FMT_NONE)
        {
            formats.push_back(record.pixFmt);
        }
    }
    return formats;
}

TEST(EncoderCapabilities, ASupportedPixelFormatIsInFFmpegsListOfTheEncoder)
{
    for (const AVCodec* const encoder : Encoders(AVMEDIA_TYPE_VIDEO))
    {
        for (const PixFmt format : KnownFormats())
        {
            if (encoder->pix_fmts == nullptr || !Supports(*encoder, format))
            {
                continue;
            }
            const AVPixelFormat* listed = encoder->pix_fmts;
            while (*listed != AV_PIX_FMT_NONE && *listed != ToFFmpeg(format))
            {
                ++listed;
            }
            EXPECT_EQ(*listed, ToFFmpeg(format)) << encoder->name;
        }
    }
}

TEST(EncoderCapabilities, TheNearestPixelFormatIsSupportedAndASupportedOneStays)
{
    for (const AVCodec* const encoder : Encoders(AVMEDIA_TYPE_VIDEO))
    {
        for (const PixFmt format : KnownFormats())
        {
            const PixFmt nearest = NearestPixelFormat(*encoder, format);
            if (nearest == PIX_FMT_NONE)
            {
                EXPECT_FALSE(Supports(*encoder, format)) << encoder->name;
                continue;
            }
            EXPECT_TRUE(Supports(*encoder, nearest)) << encoder->name;
            if (Supports(*encoder, format))
            {
                EXPECT_EQ(nearest, format) << encoder->name;
            }
        }
    }
}

TEST(EncoderCapabilities, TheNearestPixelFormatLosesNoMoreThanAnyOtherThatIsSupported)
{
    for (const AVCodec* const encoder : Encoders(AVMEDIA_TYPE_VIDEO))
    {
        for (const PixFmt wanted : {PIX_FMT_YUV444P, PIX_FMT_RGB24, PIX_FMT_GRAY8})
        {
            const PixFmt nearest = NearestPixelFormat(*encoder, wanted);
            for (const PixFmt other : KnownFormats())
            {
                if (nearest == PIX_FMT_NONE || ToFFmpeg(other) == AV_PIX_FMT_NONE ||
                    !Supports(*encoder, other))
                {
                    continue;
                }
                const AVPixelFormat better = ::av_find_best_pix_fmt_of_2(ToFFmpeg(nearest), ToFFmpeg(other),
                                                                         ToFFmpeg(wanted), 0, nullptr);
                EXPECT_EQ(better, ToFFmpeg(nearest)) << encoder->name;
            }
        }
    }
}

TEST(EncoderCapabilities, MotionJpegHasFullRangeOnly)
{
    const AVCodec& mjpeg = Encoder("CODEC_ID_MJPEG");
    EXPECT_FALSE(Supports(mjpeg, PIX_FMT_YUV420P));
    EXPECT_TRUE(Supports(mjpeg, PIX_FMT_YUVJ420P));
    EXPECT_EQ(NearestPixelFormat(mjpeg, PIX_FMT_YUV420P), PIX_FMT_YUVJ420P);
}

TEST(EncoderCapabilities, TheNearestOfEverythingAudioIsSupported)
{
    for (const AVCodec* const encoder : Encoders(AVMEDIA_TYPE_AUDIO))
    {
        SCOPED_TRACE(encoder->name);
        for (int i = Conf::SAMPLE_FMT_NONE; i <= Conf::SAMPLE_FMT_DBLP; ++i)
        {
            EXPECT_TRUE(
                Supports(*encoder, NearestSampleFormat(*encoder, static_cast<Conf::SampleFormats>(i))));
        }
        for (int i = Conf::CH_LAYOUT_UNKNOWN; i <= Conf::CH_LAYOUT_STEREO_DOWNMIX; ++i)
        {
            EXPECT_TRUE(Supports(*encoder, NearestLayout(*encoder, static_cast<Conf::ChannelLayout>(i))));
        }
        for (const int rate : {1, 8000, 11025, 44100, 44101, 48000, 96000, 2147483647})
        {
            EXPECT_TRUE(SupportsSampleRate(*encoder, NearestRate(*encoder, rate)));
        }
        EXPECT_FALSE(SupportsSampleRate(*encoder, 0));
        EXPECT_FALSE(SupportsSampleRate(*encoder, -44100));
    }
}

TEST(EncoderCapabilities, TheOtherArrangementOfSamplesIsNearerThanOtherSamples)
{
    EXPECT_EQ(NearestSampleFormat(Encoder("CODEC_ID_MP3"), Conf::SAMPLE_FMT_S16), Conf::SAMPLE_FMT_S16P);
    EXPECT_EQ(NearestSampleFormat(Encoder("CODEC_ID_FLAC"), Conf::SAMPLE_FMT_S32P), Conf::SAMPLE_FMT_S32);
}

TEST(EncoderCapabilities, FewerChannelsAreNearerThanMore)
{
    EXPECT_EQ(NearestLayout(Encoder("CODEC_ID_MP3"), Conf::CH_LAYOUT_5POINT1), Conf::CH_LAYOUT_STEREO);
    EXPECT_EQ(NearestLayout(Encoder("CODEC_ID_AAC"), Conf::CH_LAYOUT_6POINT1), Conf::CH_LAYOUT_5POINT1_BACK);
    EXPECT_EQ(NearestLayout(Encoder("CODEC_ID_AC3"), Conf::CH_LAYOUT_MONO), Conf::CH_LAYOUT_MONO);
}

TEST(EncoderCapabilities, TheNextHigherRateIsNearerThanALowerOne)
{
    const AVCodec& mp3 = Encoder("CODEC_ID_MP3");
    EXPECT_EQ(NearestRate(mp3, 44101), 48000);
    EXPECT_EQ(NearestRate(mp3, 96000), 48000);
    EXPECT_EQ(NearestRate(mp3, 44100), 44100);
    EXPECT_EQ(NearestRate(Encoder("CODEC_ID_FLAC"), 44101), 44101);
}

TEST(EncoderCapabilities, FrameRatesAreThoseOfTheStandardWhereItHasAList)
{
    const AVRational near = NearestFrameRate(Encoder("CODEC_ID_MPEG2VIDEO"), AVRational{26, 1});
    EXPECT_EQ(av_cmp_q(near, AVRational{25, 1}), 0);
    const AVRational any = NearestFrameRate(Encoder("CODEC_ID_H264"), AVRational{26, 1});
    EXPECT_EQ(av_cmp_q(any, AVRational{26, 1}), 0);
}

TEST(EncoderCapabilities, LosslessCodecsHaveNoBitrate)
{
    EXPECT_TRUE(IsWithoutBitrate(AV_CODEC_ID_FLAC));
    EXPECT_TRUE(IsWithoutBitrate(AV_CODEC_ID_PNG));
    EXPECT_TRUE(IsWithoutBitrate(AV_CODEC_ID_GIF));
    EXPECT_FALSE(IsWithoutBitrate(AV_CODEC_ID_H264));
    EXPECT_FALSE(IsWithoutBitrate(AV_CODEC_ID_MP3));
}

TEST(EncoderCapabilities, SomeEncodersHaveTwoPasses)
{
    EXPECT_TRUE(HasTwoPasses(Encoder("CODEC_ID_H264")));
    EXPECT_FALSE(HasTwoPasses(Encoder("CODEC_ID_MJPEG")));
}

TEST(EncoderCapabilities, OfAllOfFFmpegsPixelFormatsTheNearestLosesTheLeast)
{
    const AVCodec& x264 = Encoder("CODEC_ID_H264");
    EXPECT_EQ(NearestPixelFormat(x264, AV_PIX_FMT_YUV420P), AV_PIX_FMT_YUV420P);
    EXPECT_EQ(NearestPixelFormat(x264, AV_PIX_FMT_NONE), AV_PIX_FMT_NONE);
    EXPECT_EQ(NearestPixelFormat(x264, AV_PIX_FMT_YUV420P12LE), AV_PIX_FMT_YUV420P10LE);
    EXPECT_EQ(NearestPixelFormat(x264, AV_PIX_FMT_YUVA444P), AV_PIX_FMT_YUV444P);
    EXPECT_EQ(NearestPixelFormat(Encoder("CODEC_ID_PNG"), AV_PIX_FMT_YUVA420P), AV_PIX_FMT_RGBA);
    EXPECT_EQ(NearestPixelFormat(Encoder("CODEC_ID_MPEG2VIDEO"), AV_PIX_FMT_YUV422P10LE), AV_PIX_FMT_YUV422P);
}

TEST(EncoderCapabilities, AnEncoderThatListsNoPixelFormatsSupportsAll)
{
    const AVCodec& raw = Encoder("CODEC_ID_RAWVIDEO");
    EXPECT_TRUE(Supports(raw, AV_PIX_FMT_YUV420P));
    EXPECT_TRUE(Supports(raw, PIX_FMT_YUV422P));
    EXPECT_EQ(NearestPixelFormat(raw, AV_PIX_FMT_GBRP14LE), AV_PIX_FMT_GBRP14LE);
    EXPECT_EQ(NearestPixelFormat(raw, PIX_FMT_YUV422P), PIX_FMT_YUV422P);
}

TEST(EncoderCapabilities, OfNoWishThereIsAUsualSampleFormat)
{
    EXPECT_EQ(NearestSampleFormat(Encoder("CODEC_ID_AAC"), Conf::SAMPLE_FMT_NONE), Conf::SAMPLE_FMT_FLTP);
    EXPECT_EQ(FinestSampleFormat(Encoder("CODEC_ID_FLAC"), Conf::SAMPLE_FMT_FLTP), Conf::SAMPLE_FMT_S32);
    EXPECT_EQ(FinestSampleFormat(Encoder("CODEC_ID_FLAC"), Conf::SAMPLE_FMT_DBL), Conf::SAMPLE_FMT_S32);
    EXPECT_EQ(FinestSampleFormat(Encoder("CODEC_ID_FLAC"), Conf::SAMPLE_FMT_S16), Conf::SAMPLE_FMT_S16);
    EXPECT_EQ(FinestSampleFormat(Encoder("CODEC_ID_AAC"), Conf::SAMPLE_FMT_FLTP), Conf::SAMPLE_FMT_FLTP);
}

TEST(EncoderCapabilities, LossyCodecsHaveABitrateButGif)
{
    EXPECT_TRUE(IsWithoutBitrate(AV_CODEC_ID_GIF));
    EXPECT_TRUE(IsWithoutBitrate(AV_CODEC_ID_FLAC));
    EXPECT_TRUE(IsWithoutBitrate(AV_CODEC_ID_NONE));
    EXPECT_FALSE(IsWithoutBitrate(AV_CODEC_ID_MP3));
}

/// An encoder that lists what a test says, and nothing else.
AVCodec MadeUpEncoder()
{
    AVCodec encoder = {};
    encoder.name = "made up";
    encoder.id = AV_CODEC_ID_H264;
    return encoder;
}

TEST(EncoderCapabilities, OfFormatsOfOtherHardwareNoneIsNearest)
{
    const AVPixelFormat formats[] = {AV_PIX_FMT_VAAPI, AV_PIX_FMT_NONE};
    AVCodec encoder = MadeUpEncoder();
    encoder.pix_fmts = formats;
    EXPECT_FALSE(Supports(encoder, AV_PIX_FMT_VAAPI));
    EXPECT_EQ(NearestPixelFormat(encoder, AV_PIX_FMT_YUV420P), AV_PIX_FMT_NONE);
    EXPECT_EQ(NearestPixelFormat(encoder, PIX_FMT_YUV420P), PIX_FMT_NONE);
}

TEST(EncoderCapabilities, OfNoPixelFormatTheFirstIsNearest)
{
    const AVPixelFormat formats[] = {AV_PIX_FMT_YUV422P, AV_PIX_FMT_NONE};
    AVCodec encoder = MadeUpEncoder();
    encoder.pix_fmts = formats;
    EXPECT_EQ(NearestPixelFormat(encoder, PIX_FMT_NONE), PIX_FMT_YUV422P);
    EXPECT_FALSE(Supports(encoder, AV_PIX_FMT_NONE));
    EXPECT_EQ(NearestPixelFormat(encoder, static_cast<AVPixelFormat>(AV_PIX_FMT_NB)), AV_PIX_FMT_YUV422P);
}

TEST(EncoderCapabilities, AnEncoderWithoutAListSupportsAllSamplesLayoutsAndRates)
{
    const AVCodec encoder = MadeUpEncoder();
    EXPECT_TRUE(Supports(encoder, Conf::SAMPLE_FMT_DBLP));
    EXPECT_EQ(NearestSampleFormat(encoder, Conf::SAMPLE_FMT_DBLP), Conf::SAMPLE_FMT_DBLP);
    EXPECT_EQ(NearestSampleFormat(encoder, Conf::SAMPLE_FMT_NONE), Conf::SAMPLE_FMT_S16);
    EXPECT_EQ(FinestSampleFormat(encoder, Conf::SAMPLE_FMT_FLT), Conf::SAMPLE_FMT_FLT);
    EXPECT_TRUE(Supports(encoder, Conf::CH_LAYOUT_7POINT1));
    EXPECT_EQ(NearestLayout(encoder, Conf::CH_LAYOUT_7POINT1), Conf::CH_LAYOUT_7POINT1);
    EXPECT_EQ(NearestLayout(encoder, Conf::CH_LAYOUT_UNKNOWN), Conf::CH_LAYOUT_STEREO);
    EXPECT_EQ(NearestRate(encoder, 12345), 12345);
}

TEST(EncoderCapabilities, SamplesAndLayoutsThatTheVocabularyLacksDoNotCount)
{
    const AVSampleFormat samples[] = {AV_SAMPLE_FMT_S64, AV_SAMPLE_FMT_S32P, AV_SAMPLE_FMT_NONE};
    AVChannelLayout layouts[3] = {};
    ASSERT_EQ(av_channel_layout_from_mask(&layouts[0], AV_CH_LAYOUT_22POINT2), 0);
    ASSERT_EQ(av_channel_layout_from_mask(&layouts[1], AV_CH_LAYOUT_MONO), 0);
    AVCodec encoder = MadeUpEncoder();
    encoder.sample_fmts = samples;
    encoder.ch_layouts = layouts;
    EXPECT_EQ(NearestSampleFormat(encoder, Conf::SAMPLE_FMT_S32), Conf::SAMPLE_FMT_S32P);
    EXPECT_EQ(NearestSampleFormat(encoder, Conf::SAMPLE_FMT_U8), Conf::SAMPLE_FMT_S32P);
    EXPECT_EQ(NearestLayout(encoder, Conf::CH_LAYOUT_STEREO), Conf::CH_LAYOUT_MONO);
    EXPECT_EQ(NearestLayout(encoder, Conf::CH_LAYOUT_UNKNOWN), Conf::CH_LAYOUT_MONO);
}

TEST(EncoderCapabilities, RatesMayStandInAnyOrder)
{
    const int rates[] = {32000, 48000, 8000, 44100, 0};
    AVCodec encoder = MadeUpEncoder();
    encoder.supported_samplerates = rates;
    EXPECT_EQ(NearestRate(encoder, 1), 8000);
    EXPECT_EQ(NearestRate(encoder, 8001), 32000);
    EXPECT_EQ(NearestRate(encoder, 32001), 44100);
    EXPECT_EQ(NearestRate(encoder, 48001), 48000);
}

TEST(EncoderCapabilities, WindowsMediaAudioHasTwoChannelsAtMost)
{
    EXPECT_EQ(NearestLayout(Encoder("CODEC_ID_WMAV1"), Conf::CH_LAYOUT_5POINT1), Conf::CH_LAYOUT_STEREO);
    EXPECT_EQ(NearestLayout(Encoder("CODEC_ID_WMAV2"), Conf::CH_LAYOUT_5POINT1), Conf::CH_LAYOUT_STEREO);
}

} // namespace
