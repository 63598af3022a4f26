#include "Tests/Support/MediaTest.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor::Testing;
using testing::StartsWith;

/// A record that a stranger could send, with which ffmpeg or an encoder would write to "precious" or leave
/// files in the working folder.
struct Attack
{
    const char* name;
    const char* settings; ///< of the video
    const char* place;    ///< of the fault in the record
};

void PrintTo(const Attack& attack, std::ostream* os) { *os << attack.name; }

constexpr const char* kPrecious = "what must not be lost";

class JobAttack : public MediaTest, public testing::WithParamInterface<Attack>
{
protected:
    JobAttack()
    {
        Write("precious", kPrecious);
        Write("note.txt", "attached");
        Make({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.2", "-c:v", "mpeg4", "-attach", "note.txt",
              "-metadata:s:t", "mimetype=text/plain", "in.mkv"});
    }

    void ExpectNothingHappened(const std::vector<std::string>& before) const
    {
        EXPECT_EQ(Read("precious"), kPrecious);
        EXPECT_EQ(Files(), before);
    }
};

TEST_P(JobAttack, InAJobIsRefusedWithItsPlaceAndWritesNothing)
{
    const std::string settings = GetParam().settings;
    Write("job.json", R"({"vertices":[
        {"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":"in.mkv"}}}},
        {"id":2,"data":{"data":{"target":{"container":"matroska","filePath":"out.mkv"}}}},
        {"id":3,"data":{"data":{"streamRaw":{"id":0}}}}],
        "edges":[{"from":1,"to":3},{"from":3,"to":2,"data":{"data":{"format_codec_video":{
        "codec_id":"CODEC_ID_H264","bitrate":200000,)" +
                          settings + "}}}}]}");
    const std::vector<std::string> before = Files();
    const std::string place = std::string("link 3 -> 2, video stream 0, ") + GetParam().place + ": ";
    const ProcessResult check = Zconf({"job", "check", "job.json"});
    EXPECT_EQ(check.exitCode, 1);
    // The reason is tested where the rule stands.
    EXPECT_THAT(check.output, StartsWith("job.json: not valid, 3 nodes and 2 links\n  " + place));
    const ProcessResult run = RunJob({"--overwrite"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.messages, StartsWith("zconf: job.json: " + place));
    ExpectNothingHappened(before);
}

TEST_P(JobAttack, InAPresetIsRefusedBeforeAFileIsMade)
{
    Preset("matroska", std::string(R"({"video":{"codec_id":"CODEC_ID_H264",)") + GetParam().settings + "}}");
    const std::vector<std::string> before = Files();
    const std::string place = std::string("p.$$STREAMS$$.video.") + GetParam().place + ": ";
    const ProcessResult made = New("./preset.json", "in.mkv", "out.mkv");
    if (made.exitCode != 0)
    {
        EXPECT_EQ(made.exitCode, 2);
        EXPECT_THAT(made.messages, StartsWith("zconf: ./preset.json: " + place));
        ExpectNothingHappened(before);
        return;
    }
    // What a preset does not know is left to the job.
    EXPECT_EQ(RunJob({"--overwrite"}).exitCode, 2);
    EXPECT_EQ(Read("precious"), kPrecious);
    EXPECT_FALSE(Exists("out.mkv"));
}

const Attack kAttacks[] = {
    {"DumpAttachment", R"("codec.options.analyze":{"dump_attachment:t":"precious"})",
     "codec.options.analyze.dump_attachment:t"},
    {"StatisticsOfFrames", R"("codec.options.analyze":{"vstats_file":"precious"})",
     "codec.options.analyze.vstats_file"},
    {"Progress", R"("codec.options.analyze":{"progress":"precious"})", "codec.options.analyze.progress"},
    {"SecondOutput", R"("codec.options.analyze":{"hide_banner":"precious"})",
     "codec.options.analyze.hide_banner"},
    {"Report", R"("codec.options.analyze":{"report":"x"})", "codec.options.analyze.report"},
    {"DemuxerOption", R"("codec.options.analyze":{"protocol_whitelist":"file"})",
     "codec.options.analyze.protocol_whitelist"},
    {"PaletteFromAFile", R"("codec.options.analyze":{"ifo_palette":"precious"})",
     "codec.options.analyze.ifo_palette"},
    {"X264Parameters", R"("codec.options.encode":{"x264-params":"dump-yuv=precious"})",
     "codec.options.encode.x264-params"},
    {"X264ParametersAfterAGoodOne", R"("codec.options.encode":{"x264-params":"ref=1:dump_yuv=precious"})",
     "codec.options.encode.x264-params"},
    {"X264Statistics", R"("codec.options.encode":{"x264-params":"pass=1:stats=precious"})",
     "codec.options.encode.x264-params"},
    {"X264Options", R"("codec.options.encode":{"x264opts":"dump-yuv=precious"})",
     "codec.options.encode.x264opts"},
    {"X264MatricesFromAFile", R"("codec.options.encode":{"x264-params":"cqm=precious"})",
     "codec.options.encode.x264-params"},
    {"X264OptionsOfTheRecord", R"("x264opts":"dump-yuv=precious")", "x264opts"},
    {"StatisticsOfTheEncoder", R"("codec.options.encode":{"stats":"precious"})",
     "codec.options.encode.stats"},
    {"OptionForAStream", R"("codec.options.encode":{"stats:v:0":"precious"})",
     "codec.options.encode.stats:v:0"},
    {"LogOfTheFirstPass", R"("codec.options.encode":{"flags":"+pass1"})", "codec.options.encode.flags"},
    {"LogOfTheFirstPassByNumber", R"("codec.options.encode":{"flags":512})", "codec.options.encode.flags"},
    {"Pass", R"("codec.options.encode":{"pass":1})", "codec.options.encode.pass"},
    {"PassLog", R"("codec.options.encode":{"passlogfile":"precious"})", "codec.options.encode.passlogfile"},
    {"Expression", R"x("codec.options.encode":{"bf":"while(1,1)"})x", "codec.options.encode.bf"},
    {"TextForANumber", R"x("maxBFrameSequence":"while(1,1)")x", "maxBFrameSequence"},
    {"TagWithAnEqualsSign", R"("metadata":{"a=b":"c"})", "metadata.a=b"},
    {"ShortTag", R"("codec_fourcc":"x")", "codec_fourcc"},
};

INSTANTIATE_TEST_SUITE_P(Attacks, JobAttack, testing::ValuesIn(kAttacks),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

} // namespace
