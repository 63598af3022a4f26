#include "Media/Probe/StreamDescription.h"

#include "Media/Probe/FFmpegNames.h"
#include "Tests/Support/FormatContext.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using Notes = std::vector<std::string>;

/// A stream of a file that there is not.
class StreamDescription : public testing::Test
{
protected:
    MediaStream Describe() { return DescribeStream(*m_context, *m_stream); }
    AVCodecParameters& Codec() { return *m_stream->codecpar; }

    void MakeVideo()
    {
        Codec().codec_type = AVMEDIA_TYPE_VIDEO;
        Codec().codec_id = AV_CODEC_ID_H264;
        Codec().width = 640;
        Codec().height = 360;
        Codec().format = AV_PIX_FMT_YUV420P;
    }
    void MakeAudio()
    {
        Codec().codec_type = AVMEDIA_TYPE_AUDIO;
        Codec().codec_id = AV_CODEC_ID_AAC;
        Codec().sample_rate = 48000;
        Codec().format = AV_SAMPLE_FMT_FLTP;
        av_channel_layout_default(&Codec().ch_layout, 2);
    }
    std::int32_t* Matrix()
    {
        return reinterpret_cast<std::int32_t*>(
            av_stream_new_side_data(m_stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t)));
    }

    Zelnor::Testing::FormatContext m_context = Zelnor::Testing::MakeFormatContext();
    AVStream* m_stream = avformat_new_stream(m_context.get(), nullptr);
};

TEST_F(StreamDescription, OfAnOrdinaryStreamNotesNothing)
{
    MakeVideo();
    EXPECT_EQ(Describe().notes, Notes());
    EXPECT_EQ(Describe().rotation, 0U);
    MakeAudio();
    EXPECT_EQ(Describe().notes, Notes());
}

TEST_F(StreamDescription, CountsARotationClockwiseInQuarters)
{
    MakeVideo();
    std::int32_t* const matrix = Matrix();
    for (const auto& [angle, expected] :
         std::vector<std::pair<double, unsigned int>>{{90, 90}, {-90, 270}, {180, 180}, {100, 90}, {10, 0}})
    {
        av_display_rotation_set(matrix, angle);
        EXPECT_EQ(Describe().rotation, expected) << angle;
    }
}

TEST_F(StreamDescription, DoesNotTakeAMatrixOfNothingForARotation)
{
    MakeVideo();
    std::fill_n(Matrix(), 9, 0);
    EXPECT_EQ(Describe().rotation, 0U);
}

TEST_F(StreamDescription, NotesWhatIsNotKnownOfAVideo)
{
    MakeVideo();
    Codec().width = 0;
    EXPECT_EQ(Describe().notes, Notes{"its size is not known"});
}

TEST_F(StreamDescription, NotesAPixelFormatThatTheVocabularyLacks)
{
    MakeVideo();
    const AVPixFmtDescriptor* format = nullptr;
    do
    {
        format = av_pix_fmt_desc_next(format);
        ASSERT_NE(format, nullptr);
    } while (FromFFmpeg(av_pix_fmt_desc_get_id(format)));
    Codec().format = av_pix_fmt_desc_get_id(format);
    EXPECT_EQ(Describe().notes, Notes{std::string("the vocabulary has no pixel format for ") + format->name});
}

TEST_F(StreamDescription, NotesWhatIsNotKnownOfASound)
{
    MakeAudio();
    Codec().sample_rate = 0;
    Codec().format = AV_SAMPLE_FMT_S64;
    ASSERT_EQ(av_channel_layout_from_string(&Codec().ch_layout, "FL+TC"), 0);
    EXPECT_EQ(Describe().notes,
              (Notes{"its sample rate is not known", "the vocabulary has no sample format for s64",
                     "the vocabulary has no channel layout for 2 channels (FL+TC)"}));
}

TEST_F(StreamDescription, NotesACodecThatTheVocabularyLacks)
{
    const AVCodecDescriptor* codec = nullptr;
    do
    {
        codec = avcodec_descriptor_next(codec);
        ASSERT_NE(codec, nullptr);
    } while (codec->type != AVMEDIA_TYPE_DATA || CodecTextOf(codec->id));
    Codec().codec_type = codec->type;
    Codec().codec_id = codec->id;
    EXPECT_EQ(Describe().notes,
              Notes{std::string("the vocabulary has no identifier for the codec ") + codec->name});
}

TEST_F(StreamDescription, NotesAStreamWithoutACodec)
{
    MakeVideo();
    Codec().codec_id = AV_CODEC_ID_NONE;
    EXPECT_EQ(Describe().notes, Notes{"FFmpeg knows no codec for it"});
}

TEST_F(StreamDescription, DoesNotBelieveAFrameRateOfATimeBase)
{
    MakeVideo();
    m_stream->r_frame_rate = {90000, 1};
    m_stream->avg_frame_rate = {25, 1};
    const Core::Property record = Describe().descriptor->GetProperty();
    EXPECT_EQ(record["frameRateRatio"].GetRatio(), Core::Property::Ratio(25, 1));
}

TEST(StreamTime, IsOnlyWhatIsKnown)
{
    EXPECT_EQ(Microseconds(3, {1, 2}), 1500000);
    EXPECT_EQ(Microseconds(AV_NOPTS_VALUE, {1, 2}), std::nullopt);
    EXPECT_EQ(Microseconds(0, {1, 2}), std::nullopt);
    EXPECT_EQ(Microseconds(3, {0, 2}), std::nullopt);
    EXPECT_EQ(Microseconds(3, {1, 0}), std::nullopt);
}

TEST_F(StreamDescription, OfAVideoWithoutAnAspectRatioHasSquarePixels)
{
    MakeVideo();
    for (const AVRational aspect : {AVRational{0, 1}, AVRational{0, 0}})
    {
        Codec().sample_aspect_ratio = aspect;
        const MediaStream described = Describe();
        const auto frame =
            boost::dynamic_pointer_cast<Conf::IFormatCodecVideo>(described.descriptor)->GetFrameInfo();
        EXPECT_EQ(frame.ax, 1U);
        EXPECT_EQ(frame.ay, 1U);
    }
}

TEST_F(StreamDescription, OfATimeWithoutAClockHasNoStart)
{
    MakeVideo();
    m_stream->start_time = 500;
    m_stream->time_base = {1, 1000};
    EXPECT_EQ(Describe().start, 500000);
    m_stream->time_base = {0, 1000};
    EXPECT_EQ(Describe().start, std::nullopt);
    m_stream->time_base = {1, 0};
    EXPECT_EQ(Describe().start, std::nullopt);
}

TEST_F(StreamDescription, TakesTheBitsThatTheCodecTells)
{
    MakeVideo();
    EXPECT_EQ(Describe().bitsPerSample, 8U);
    for (const int bits : {1, 6, 10})
    {
        Codec().bits_per_raw_sample = bits;
        EXPECT_EQ(Describe().bitsPerSample, static_cast<unsigned int>(bits));
    }
}

} // namespace
