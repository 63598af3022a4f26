// What a stream's record says of its codec.

#include "Media/Probe/StreamDescription.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Tests/Support/FormatContext.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using Conf::IFormatCodec;

/// A sound of a file that there is not.
class StreamRecord : public testing::Test
{
protected:
    StreamRecord()
    {
        Codec().codec_type = AVMEDIA_TYPE_AUDIO;
        Codec().codec_id = AV_CODEC_ID_AAC;
    }

    AVCodecParameters& Codec() { return *m_stream->codecpar; }
    /// What stands under the key; "nothing" where nothing does.
    std::string ValueOf(const std::string& key)
    {
        const MediaStream stream = DescribeStream(*m_context, *m_stream);
        const Core::Property& record = stream.descriptor->GetProperty();
        const auto value = record.FindChild(key);
        return value == record.end()                      ? "nothing"
               : value->GetType() == PROPERTY_TYPE_STRING ? value->GetString()
                                                          : std::to_string(value->GetInt64());
    }

    Zelnor::Testing::FormatContext m_context = Zelnor::Testing::MakeFormatContext();
    AVStream* m_stream = avformat_new_stream(m_context.get(), nullptr);
};

TEST_F(StreamRecord, HasFFmpegsNameAndTheVocabularysOfItsCodec)
{
    EXPECT_EQ(ValueOf(IFormatCodec::TAG_NAME), "aac");
    EXPECT_EQ(ValueOf(IFormatCodec::TAG_CODEC_ID), "CODEC_ID_AAC");
}

TEST_F(StreamRecord, HasFourCharactersWhereTheFileHasThem)
{
    EXPECT_EQ(ValueOf(IFormatCodec::TAG_FOURCC), "nothing");
    Codec().codec_tag = MKTAG('m', 'p', '4', 'a');
    EXPECT_EQ(ValueOf(IFormatCodec::TAG_FOURCC), "mp4a");
    Codec().codec_tag = 1;
    EXPECT_EQ(ValueOf(IFormatCodec::TAG_FOURCC), "[1][0][0][0]");
}

TEST_F(StreamRecord, HasTheBitrateThatIsKnown)
{
    EXPECT_EQ(ValueOf(IFormatCodec::TAG_BITRATE), "nothing");
    Codec().bit_rate = 1;
    EXPECT_EQ(ValueOf(IFormatCodec::TAG_BITRATE), "1");
}

TEST_F(StreamRecord, OfASoundHasItsSamples)
{
    EXPECT_EQ(ValueOf(Conf::IFormatCodecAudio::TAG_SAMPLE_RATE), "nothing");
    Codec().sample_rate = 44100;
    EXPECT_EQ(ValueOf(Conf::IFormatCodecAudio::TAG_SAMPLE_RATE), "44100");
    Codec().format = AV_SAMPLE_FMT_S16;
    EXPECT_EQ(ValueOf(Conf::IFormatCodecAudio::TAG_SAMPLE_FORMAT), "SAMPLE_FMT_S16");
}

TEST_F(StreamRecord, SaysWhatThePlayerIsToDoWithTheStream)
{
    const auto described = [this](int disposition) {
        m_stream->disposition = disposition;
        return DescribeStream(*m_context, *m_stream);
    };
    EXPECT_FALSE(described(0).isDefault);
    EXPECT_FALSE(described(0).isForced);
    EXPECT_TRUE(described(AV_DISPOSITION_DEFAULT).isDefault);
    EXPECT_FALSE(described(AV_DISPOSITION_DEFAULT).isForced);
    EXPECT_TRUE(described(AV_DISPOSITION_FORCED).isForced);
    Codec().codec_type = AVMEDIA_TYPE_VIDEO;
    EXPECT_FALSE(described(0).isAttachedPicture);
    EXPECT_TRUE(described(AV_DISPOSITION_ATTACHED_PIC).isAttachedPicture);
}

TEST_F(StreamRecord, OfAVideoSaysWhetherItsFieldsAreApart)
{
    Codec().codec_type = AVMEDIA_TYPE_VIDEO;
    const auto isInterlaced = [this](AVFieldOrder order) {
        Codec().field_order = order;
        return DescribeStream(*m_context, *m_stream).isInterlaced;
    };
    EXPECT_FALSE(isInterlaced(AV_FIELD_UNKNOWN));
    EXPECT_FALSE(isInterlaced(AV_FIELD_PROGRESSIVE));
    EXPECT_TRUE(isInterlaced(AV_FIELD_TT));
    EXPECT_TRUE(isInterlaced(AV_FIELD_BB));
}

TEST_F(StreamRecord, OfAVideoHasASizeOfTwoLengths)
{
    Codec().codec_type = AVMEDIA_TYPE_VIDEO;
    const auto size = [this](int width, int height) {
        Codec().width = width;
        Codec().height = height;
        return ValueOf("width") + "x" + ValueOf("height");
    };
    EXPECT_EQ(size(640, 360), "640x360");
    EXPECT_EQ(size(640, 0), size(0, 0));
    EXPECT_EQ(size(0, 360), size(0, 0));
}

TEST_F(StreamRecord, OfTagsWithOneNameHasTheFirst)
{
    av_dict_set(&m_stream->metadata, "title", "one", 0);
    av_dict_set(&m_stream->metadata, "title", "two", AV_DICT_MULTIKEY);
    const MediaStream stream = DescribeStream(*m_context, *m_stream);
    EXPECT_EQ(stream.descriptor->GetMetadata()["title"].GetString(), "one");
    EXPECT_EQ(stream.descriptor->GetMetadata().Count(), 1U);
}

TEST_F(StreamRecord, OfASubtitleSaysWhetherItIsABitmap)
{
    Codec().codec_type = AVMEDIA_TYPE_SUBTITLE;
    Codec().codec_id = AV_CODEC_ID_SUBRIP;
    EXPECT_FALSE(DescribeStream(*m_context, *m_stream).isBitmap);
    Codec().codec_id = AV_CODEC_ID_DVD_SUBTITLE;
    EXPECT_TRUE(DescribeStream(*m_context, *m_stream).isBitmap);
}

} // namespace
