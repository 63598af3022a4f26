#include "Media/Running/CodecArguments.h"

#include "Tests/Support/JobFixtures.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;

/// The value of an encoder's option for H.264 with these settings; "-" when it is not given.
std::string OptionOf(const std::string& name, const std::string& settings)
{
    FaultList faults;
    const Transcode transcode =
        MakeTranscode(MakeMediaFile({MakeVideoStream()}),
                      VideoRecord(R"("codec_id":"CODEC_ID_H264","bitrate":800000,)" + settings), "mp4");
    const CodecOptions options = MakeTranscodeCommand(transcode, faults).streams.at(0).options;
    EXPECT_THAT(Sentences(faults.Get()), testing::IsEmpty());
    const auto found = std::find_if(options.begin(), options.end(),
                                    [&name](const auto& option) { return option.first == name; });
    return found == options.end() ? "-" : found->second;
}

TEST(CodecArguments, ASwitchThatIsOffGivesNoOption)
{
    EXPECT_EQ(OptionOf("threads", R"("utilize_all_resources":1)"), "0");
    EXPECT_EQ(OptionOf("threads", R"("utilize_all_resources":0)"), "-");
    EXPECT_EQ(OptionOf("flags", R"("global_header":1)"), "+global_header");
    EXPECT_EQ(OptionOf("flags", R"("global_header":0)"), "-");
    EXPECT_EQ(OptionOf("g", R"("keyOnly":1)"), "1");
    EXPECT_EQ(OptionOf("g", R"("keyOnly":0)"), "-");
    EXPECT_EQ(OptionOf("disposition", R"("main_stream":1)"), "default");
    EXPECT_EQ(OptionOf("disposition", R"("main_stream":0)"), "0");
}

TEST(CodecArguments, ThreadsAreANumberOrAWord)
{
    EXPECT_EQ(OptionOf("threads", R"("number_of_threads":3)"), "3");
    EXPECT_EQ(OptionOf("threads", R"("number_of_threads":"auto")"), "auto");
}

TEST(CodecArguments, InterlacedFlagsJoinTheFlagsThatThereAre)
{
    MediaStream source = MakeVideoStream(720, 576, "CODEC_ID_MPEG2VIDEO");
    source.isInterlaced = true;
    const auto flags = [&source](const std::string& more) {
        FaultList faults;
        const Transcode transcode = MakeTranscode(
            MakeMediaFile({source}),
            VideoRecord(R"("codec_id":"CODEC_ID_MPEG2VIDEO","bitrate":4000000,"deinterlace":"keep")" + more),
            "mpeg");
        const CodecOptions options = MakeTranscodeCommand(transcode, faults).streams.at(0).options;
        EXPECT_THAT(Sentences(faults.Get()), testing::IsEmpty());
        std::string text;
        for (const auto& [name, value] : options)
        {
            text += name == "flags" ? value : "";
        }
        return text;
    };
    EXPECT_EQ(flags(""), "+ildct+ilme");
    EXPECT_EQ(flags(R"(,"global_header":1)"), "+ildct+ilme+global_header");
    EXPECT_EQ(flags(R"(,"codec.options.encode":{"flags":"mv4"})"), "+ildct+ilme+mv4");
    EXPECT_EQ(flags(R"(,"codec.options.encode":{"flags":"-mv4"})"), "+ildct+ilme-mv4");
}

TEST(CodecArguments, FramesOfTheirOwnMakingAreLeftOutBesideTransparency)
{
    const auto value = [](const std::string& settings) {
        FaultList faults;
        const Transcode transcode =
            MakeTranscode(MakeMediaFile({MakeVideoStream()}),
                          VideoRecord(R"("codec_id":"CODEC_ID_VP8","bitrate":800000)" + settings), "webm");
        std::string values;
        const TranscodeCommand command = MakeTranscodeCommand(transcode, faults);
        for (const auto& [name, text] : command.streams.at(0).options)
        {
            values += name == "auto-alt-ref" ? text + " " : "";
        }
        EXPECT_THAT(Sentences(faults.Get()), testing::IsEmpty());
        return values;
    };
    EXPECT_EQ(value(""), "");
    EXPECT_EQ(value(R"(,"pixelFormat":"yuva420p")"), "0 ");
    // Somebody who asks for them gets what libvpx says to that.
    EXPECT_EQ(value(R"(,"pixelFormat":"yuva420p","codec.options.encode":{"auto-alt-ref":1})"), "1 ");
}

} // namespace
