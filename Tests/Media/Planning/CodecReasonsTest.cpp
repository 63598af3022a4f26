#include "Media/Planning/CodecReasons.h"

#include "Media/Planning/CodecSupport.h"

#include "Tests/Support/JobFixtures.h"

#include <gmock/gmock.h>

#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;

const std::string kVp8InMp4 = "the container mp4 cannot hold CODEC_ID_VP8; it holds CODEC_ID_H264, "
                              "CODEC_ID_VP9 or CODEC_ID_MPEG1VIDEO; CODEC_ID_VP8 goes into avi, matroska or "
                              "mov";

EncoderChoice Choose(const std::string& settings, const std::string& container = "mp4")
{
    return ChooseEncoderFor(VideoRecord(settings), container);
}

TEST(CodecReasons, TellWhatTheContainerHoldsAndWhatHoldsTheCodec)
{
    EXPECT_EQ(CannotHoldText("mp4", "CODEC_ID_VP8"), kVp8InMp4);
    EXPECT_EQ(CannotHoldText("mp4", AV_CODEC_ID_VP8), kVp8InMp4);
}

TEST(CodecReasons, AreThoseOfTheExplanationAsSentences)
{
    EXPECT_EQ(AsSentences("a; b goes into c"), "A. B goes into c.");
    EXPECT_THAT(ExplainCodecSupport("mp4", "CODEC_ID_VP8").reasons, ElementsAre(AsSentences(kVp8InMp4)));
}

TEST(CodecReasons, NameACodecThatTheVocabularyDoesNotHaveAsFFmpegDoes)
{
    EXPECT_EQ(CannotHoldText("mp4", AV_CODEC_ID_QOI), "the container mp4 cannot hold qoi");
}

TEST(CodecReasons, OfferNothingWhereNothingFits)
{
    EXPECT_EQ(CannotHoldText("none of that name", AV_CODEC_ID_QOI),
              "the container none of that name cannot hold qoi");
    EXPECT_EQ(NoEncoderText("wav", "CODEC_ID_RV40"),
              "the installed FFmpeg does not have an encoder for CODEC_ID_RV40");
}

TEST(CodecReasons, TellContainersThatAreNotWritten)
{
    EXPECT_EQ(CannotWriteText("mp4"), "");
    EXPECT_EQ(CannotWriteText("hls"), "the container 'hls' is not written as one file");
    EXPECT_EQ(CannotWriteText("a64x"), "the installed FFmpeg cannot write the container 'a64x'");
    const std::string hidden = std::string("mp4\0x", 5);
    EXPECT_EQ(CannotWriteText(hidden), "the installed FFmpeg cannot write the container '" + hidden + "'");
}

TEST(CodecReasons, TellWhatCanBeEncodedInstead)
{
    const EncoderChoice choice = Choose(R"("codec_id":"CODEC_ID_RV40")");
    EXPECT_EQ(choice.encoder, nullptr);
    EXPECT_EQ(choice.key, "codec_id");
    EXPECT_EQ(choice.fault, "the installed FFmpeg does not have an encoder for CODEC_ID_RV40; for mp4 it can "
                            "encode CODEC_ID_H264, CODEC_ID_MPEG1VIDEO or CODEC_ID_MPEG2VIDEO");
}

TEST(CodecReasons, TellTheEncoderThatACodecHas)
{
    const EncoderChoice choice = Choose(R"("codec_id":"CODEC_ID_MPEG4","preferred_encoder":"mpeg5")");
    EXPECT_EQ(choice.encoder, nullptr);
    EXPECT_EQ(choice.key, "preferred_encoder");
    EXPECT_EQ(choice.fault,
              "the installed FFmpeg does not have an encoder 'mpeg5' for CODEC_ID_MPEG4; it has 'mpeg4'");
}

TEST(CodecReasons, LeaveNamesThatAreNotKnownToTheirOwnFaults)
{
    EXPECT_EQ(Choose("").fault, "expected the name of a codec, found nothing");
    EXPECT_EQ(Choose(R"("codec_id":"CODEC_ID_H246")").fault,
              "the installed FFmpeg does not have an encoder for CODEC_ID_H246; did you mean 'CODEC_ID_H264' "
              "or 'CODEC_ID_H261' or 'CODEC_ID_H263'?");
}

TEST(CodecReasons, LeaveAChoiceAsItIs)
{
    const EncoderChoice choice = Choose(R"("codec_id":"CODEC_ID_MPEG4")");
    ASSERT_NE(choice.encoder, nullptr);
    EXPECT_STREQ(choice.encoder->name, "mpeg4");
    EXPECT_EQ(choice.fault, "");
}

} // namespace
