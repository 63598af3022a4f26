#include "Media/Planning/CodecSupport.h"

#include "Media/MediaException.h"
#include "Media/Planning/CodecsInstead.h"
#include "Media/Planning/Containers.h"
#include "Media/Probe/FFmpegNames.h"

#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/FormatLists.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(CodecSupport, HasNoReasonsAgainstWhatCanBeMade)
{
    const CodecSupport support = ExplainCodecSupport("mp4", "CODEC_ID_AAC");
    EXPECT_EQ(support.isHeld, CodecSupport::Yes);
    EXPECT_EQ(support.muxer, "mp4");
    EXPECT_EQ(support.encoder, FindEncoder("CODEC_ID_AAC")->name);
    EXPECT_FALSE(support.hasBitrateCurve);
    EXPECT_THAT(support.reasons, IsEmpty());
}

TEST(CodecSupport, NamesCodecsAndContainersThatFit)
{
    const CodecSupport support = ExplainCodecSupport("webm", "CODEC_ID_H264");
    EXPECT_EQ(support.isHeld, CodecSupport::No);
    EXPECT_EQ(support.hasBitrateCurve, true);
    ASSERT_THAT(support.codecs, Contains("CODEC_ID_VP8"));
    for (const std::string& codec : support.codecs)
    {
        EXPECT_TRUE(CertainlyHolds("webm", CodecNumberOf(codec))) << codec;
        EXPECT_NE(FindEncoder(codec), nullptr) << codec;
    }
    ASSERT_THAT(support.containers, Contains("mp4"));
    for (const std::string& container : support.containers)
    {
        EXPECT_TRUE(CertainlyHolds(container, AV_CODEC_ID_H264)) << container;
        EXPECT_TRUE(IsOneFile(container)) << container;
    }
    ASSERT_EQ(support.reasons.size(), 1U);
    EXPECT_THAT(support.reasons.front(),
                testing::StartsWith("The container webm cannot hold CODEC_ID_H264. It holds "));
}

TEST(CodecSupport, TellsWhatFFmpegCannotEncodeAndWhatItCan)
{
    const CodecSupport support = ExplainCodecSupport("avi", "CODEC_ID_VC1");
    EXPECT_EQ(support.encoder, "");
    EXPECT_EQ(support.hasBitrateCurve, false);
    EXPECT_THAT(support.reasons,
                ElementsAre("The installed FFmpeg does not have an encoder for CODEC_ID_VC1. For avi it can "
                            "encode " +
                            AlternativesText(support.codecs) + "."));
}

TEST(CodecSupport, TellsWhatIsEncodedOnlyByAnEncoderThatIsNamed)
{
    const CodecSupport support = ExplainCodecSupport("mp4", "CODEC_ID_H265");
    EXPECT_TRUE(support.isEncodingDisabled);
    EXPECT_THAT(support.reasons,
                ElementsAre("Encoding CODEC_ID_H265 is disabled unless its encoder is named ('" +
                            support.encoder + "', under preferred_encoder)."));
}

TEST(CodecSupport, RefusesNamesThatAreNotKnown)
{
    EXPECT_THROW(ExplainCodecSupport("mp99", "CODEC_ID_AAC"), PlanException);
    EXPECT_THROW(ExplainCodecSupport("mp4", "CODEC_ID_H246"), PlanException);
    EXPECT_THROW(ExplainCodecSupport("", ""), PlanException);
}

TEST(AlternativesText, JoinsNames)
{
    EXPECT_EQ(AlternativesText({}), "");
    EXPECT_EQ(AlternativesText({"a"}), "a");
    EXPECT_EQ(AlternativesText({"a", "b", "c"}), "a, b or c");
}

TEST(VideoBitrateCurve, IsKnownOfTheCodecsThatHaveOne)
{
    EXPECT_TRUE(Conf::HasVideoBitrateCurve("CODEC_ID_VP9"));
    EXPECT_TRUE(Conf::HasVideoBitrateCurve("CODEC_ID_GIF"));
    EXPECT_FALSE(Conf::HasVideoBitrateCurve("CODEC_ID_H265"));
    EXPECT_FALSE(Conf::HasVideoBitrateCurve(""));
}

TEST(CodecSupport, IsNotKnownWhereTheMuxerDoesNotSay)
{
    EXPECT_EQ(ExplainCodecSupport("srt", "CODEC_ID_H264").isHeld, CodecSupport::Unknown);
}

TEST(CodecSupport, OfAContainerThatFFmpegOnlyReadsSaysSo)
{
    const std::vector<std::string> containers = Conf::GetContainerList();
    const auto readOnly =
        std::find_if(containers.begin(), containers.end(),
                     [](const std::string& container) { return FindMuxer(container) == nullptr; });
    ASSERT_NE(readOnly, containers.end());
    const CodecSupport support = ExplainCodecSupport(*readOnly, "CODEC_ID_H264");
    EXPECT_EQ(support.muxer, "");
    EXPECT_THAT(support.reasons,
                ElementsAre("The installed FFmpeg cannot write the container '" + *readOnly + "'."));
}

TEST(CodecSupport, TellsWhatNeitherTheContainerHoldsNorFFmpegEncodes)
{
    const CodecSupport support = ExplainCodecSupport("webm", "CODEC_ID_QDM2");
    EXPECT_EQ(support.isHeld, CodecSupport::No);
    ASSERT_EQ(support.reasons.size(), 2U);
    EXPECT_EQ(support.reasons[1], "The installed FFmpeg does not have an encoder for CODEC_ID_QDM2.");
}

} // namespace
