#include "Media/Planning/EncoderChoice.h"

#include "Tests/Support/JobFixtures.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Conf::IFormatCodec;

TEST(IsCopied, WhereTheRecordSaysSoByItsFlagOrItsEncoder)
{
    EXPECT_FALSE(IsCopied(VideoRecord("")));
    EXPECT_FALSE(IsCopied(VideoRecord(R"("lossless":0)")));
    EXPECT_FALSE(IsCopied(VideoRecord(R"("lossless":"1")")));
    EXPECT_TRUE(IsCopied(VideoRecord(R"("lossless":1)")));
    for (const std::string& word :
         {Conf::IFormatCodecVideo::ENCODER_LOSSLESS, Conf::IFormatCodecAudio::ENCODER_LOSSLESS})
    {
        Core::Property record = VideoRecord("");
        record.SetChildT(IFormatCodec::TAG_PREFERREDIMPL, word);
        EXPECT_TRUE(IsCopied(record)) << word;
    }
}

TEST(ChooseEncoder, TakesTheUsualOneForARecordThatIsCopied)
{
    Core::Property record = VideoRecord(R"("codec_id":"CODEC_ID_MPEG4")");
    record.SetChildT(IFormatCodec::TAG_PREFERREDIMPL, Conf::IFormatCodecVideo::ENCODER_LOSSLESS);
    const EncoderChoice choice = ChooseEncoder(record);
    ASSERT_NE(choice.encoder, nullptr);
    EXPECT_STREQ(choice.encoder->name, "mpeg4");
}

} // namespace
