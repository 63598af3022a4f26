#include "Media/Options/OptionRules.h"

#include "Tests/Support/Graphs.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using Core::Property;

Property Text(const std::string& text) { return Property("", text); }
Property Integer(long long number) { return Property("", number); }
Property Ratio(long long numerator, long long denominator)
{
    return Property("", Property::Ratio(numerator, denominator));
}

CheckedOption Encoder(const std::string& encoder, const std::string& name, const Property& value)
{
    const AVCodec* const found = avcodec_find_encoder_by_name(encoder.c_str());
    EXPECT_NE(found, nullptr) << encoder;
    return found == nullptr ? CheckedOption() : CheckEncoderOption(*found, name, value);
}

CheckedOption Decoder(const std::string& decoder, const std::string& name, const Property& value)
{
    const AVCodec* const found = avcodec_find_decoder_by_name(decoder.c_str());
    EXPECT_NE(found, nullptr) << decoder;
    return CheckDecoderOption(found, name, value);
}

void ExpectValue(const CheckedOption& checked, const std::string& value)
{
    EXPECT_EQ(checked.fault, "");
    EXPECT_EQ(checked.value, value);
}

void ExpectFault(const CheckedOption& checked, const std::string& fault)
{
    EXPECT_EQ(checked.fault, fault);
    EXPECT_EQ(checked.value, "");
}

TEST(OptionRules, TakeNumbersInTheRangeOfTheOption)
{
    ExpectValue(Encoder("libx264", "crf", Integer(23)), "23");
    ExpectValue(Encoder("libx264", "crf", Text("23.5")), "23.5");
    ExpectValue(Encoder("libx264", "maxrate", Text("800k")), "800k");
    ExpectValue(Encoder("mpeg4", "qcomp", Ratio(1, 1)), "1");
    ExpectFault(Encoder("mpeg4", "trellis", Ratio(1, 2)),
                "expected an integer from -2147483648 to 2147483647, found 1/2");
    ExpectFault(Encoder("libopus", "packet_loss", Integer(101)),
                "expected an integer from 0 to 100, found 101");
    ExpectFault(Encoder("libopus", "packet_loss", Text("1.5")),
                "expected an integer from 0 to 100, found '1.5'");
    ExpectFault(Encoder("libopus", "packet_loss", Text("")), "expected an integer from 0 to 100, found ''");
    ExpectFault(Encoder("libopus", "packet_loss", Property::None("")),
                "expected an integer from 0 to 100, found null");
}

TEST(OptionRules, DoNotPassExpressions)
{
    for (const std::string text : {"1+1", "while(1,1)", "print(1)", "0x1", "1e1", "--1", "1 ", " 1", "inf",
                                   "nan", "1/1", "PI", "default", "max", "1\n"})
    {
        EXPECT_EQ(Encoder("libopus", "packet_loss", Text(text)).fault,
                  "expected an integer from 0 to 100, found '" + text + "'");
    }
}

TEST(OptionRules, TakeTheNamesThatFFmpegHasForNumbers)
{
    ExpectValue(Encoder("mpeg4", "mbd", Text("rd")), "rd");
    ExpectValue(Encoder("libvpx", "deadline", Text("good")), "good");
    ExpectValue(Encoder("libopus", "application", Text("voip")), "voip");
    ExpectFault(Encoder("mpeg4", "mbd", Text("best")),
                "expected an integer from 0 to 2 or one of simple, bits, rd, found 'best'");
}

TEST(OptionRules, TakeNamesThatLookLikeNumbers)
{
    ExpectValue(Encoder("prores_ks", "profile", Text("4444")), "4444");
    ExpectValue(Encoder("prores_ks", "profile", Integer(4444)), "4444");
    ExpectFault(
        Encoder("prores_ks", "profile", Text("4443")),
        "expected an integer from -1 to 5 or one of auto, proxy, lt, standard, hq, 4444, 4444xq, found "
        "'4443'");
}

TEST(OptionRules, TakeTruths)
{
    ExpectValue(Encoder("libx264", "intra-refresh", Integer(1)), "1");
    ExpectValue(Encoder("libx264", "intra-refresh", Text("true")), "true");
    ExpectFault(Encoder("libx264", "intra-refresh", Integer(2)), "expected true or false, found 2");
    ExpectFault(Encoder("libx264", "intra-refresh", Text("maybe")), "expected true or false, found 'maybe'");
}

TEST(OptionRules, TakeFlagsByTheirNames)
{
    ExpectValue(Encoder("mpeg4", "flags", Text("+mv4+qpel")), "+mv4+qpel");
    ExpectValue(Encoder("mpeg4", "mpv_flags", Text("skip_rd")), "skip_rd");
    ExpectValue(Decoder("h264", "flags2", Text("+showall-fast")), "+showall-fast");
}

TEST(OptionRules, DoNotPassFlagsThatWriteFiles)
{
    // 512 is the first pass, whose log lands in the working folder.
    for (const Property& value :
         {Text("+pass1"), Text("pass2"), Text("+mv4+pass1"), Integer(512), Text("512"), Text("+psnr"),
          Text("+"), Text("mv4+"), Text("mv4|pass1"), Text("")})
    {
        const std::string fault = Encoder("libx264", "flags", value).fault;
        EXPECT_EQ(fault.substr(0, 21), "expected names among ") << fault; // FFmpeg has the names.
    }
}

TEST(OptionRules, KnowTheCodecsOwnOptionsAndThoseOfAll)
{
    ExpectValue(Encoder("libx264", "g", Integer(50)), "50");
    ExpectValue(Encoder("libx264", "rc-lookahead", Integer(20)), "20");
    ExpectFault(Encoder("libx264", "no_such", Integer(1)),
                "encoder libx264 does not have an option 'no_such'");
    ExpectFault(Encoder("libmp3lame", "crf", Integer(1)), "encoder libmp3lame does not have an option 'crf'");
    // Of video, and of decoders.
    ExpectFault(Encoder("libmp3lame", "g", Integer(1)), "encoder libmp3lame does not have an option 'g'");
    ExpectFault(Encoder("libx264", "lowres", Integer(1)), "encoder libx264 does not have an option 'lowres'");
    ExpectFault(Decoder("h264", "g", Integer(1)), "decoder h264 does not have an option 'g'");
    // Written by the decoder for others to read.
    ExpectFault(Decoder("h264", "is_avc", Integer(1)), "decoder h264 does not have an option 'is_avc'");
}

TEST(OptionRules, KnowOptionsByTheirExactNameOnly)
{
    for (const std::string name : {"g:0",
                                   "g:v",
                                   "G",
                                   " g",
                                   "g ",
                                   "-g",
                                   "/g",
                                   "g=1",
                                   "",
                                   "nog",
                                   "vg",
                                   "threads:0",
                                   "dump_attachment:t",
                                   "vstats_file",
                                   "progress",
                                   "hide_banner",
                                   "y",
                                   "i",
                                   "filter_complex",
                                   "stats:0",
                                   "report",
                                   "f",
                                   "map",
                                   "protocol_whitelist",
                                   "fflags",
                                   "sws_flags",
                                   "pass",
                                   "vpre",
                                   "init_hw_device",
                                   "attach"})
    {
        EXPECT_EQ(Encoder("mpeg4", name, Integer(1)).fault,
                  "encoder mpeg4 does not have an option '" + name + "'");
        EXPECT_EQ(Decoder("mpeg4", name, Integer(1)).fault,
                  "decoder mpeg4 does not have an option '" + name + "'");
    }
    const std::string withNul("g\0x", 3);
    EXPECT_EQ(Encoder("mpeg4", withNul, Integer(1)).fault,
              "encoder mpeg4 does not have an option '" + withNul + "'");
}

TEST(OptionRules, DoNotPassOptionsThatNameFilesPrintOrLoadCode)
{
    for (const std::string name :
         {"stats", "passlogfile", "ssim", "debug", "dump_separator", "b", "pixel_format"})
    {
        for (const Property& value : {Text("/tmp/x"), Integer(1)})
        {
            const std::string fault = Encoder("libx264", name, value).fault;
            EXPECT_TRUE(fault == "the option '" + name +
                                     "' of encoder libx264 cannot be set by a job or a preset" ||
                        fault == "encoder libx264 does not have an option '" + name + "'")
                << fault;
        }
    }
    ExpectFault(Encoder("mpeg4", "rc_eq", Text("1")),
                "the option 'rc_eq' of encoder mpeg4 cannot be set by a job or a preset");
    ExpectFault(Decoder("dvdsub", "ifo_palette", Text("/etc/passwd")),
                "the option 'ifo_palette' of decoder dvdsub cannot be set by a job or a preset");
    ExpectFault(Decoder("h264", "codec_whitelist", Text("h264")),
                "the option 'codec_whitelist' of decoder h264 cannot be set by a job or a preset");
    // The program ffmpeg has one of this name, too.
    ExpectFault(Decoder("rawvideo", "top", Integer(1)),
                "the option 'top' of decoder rawvideo cannot be set by a job or a preset");
}

TEST(OptionRules, TakeTextsThatNameNothingOutsideTheEncoder)
{
    ExpectValue(Encoder("libx264", "preset", Text("fast")), "fast");
    ExpectValue(Encoder("libx264", "tune", Text("film,fastdecode")), "film,fastdecode");
    ExpectValue(Encoder("libx264", "level", Text("4.1")), "4.1");
    ExpectValue(Encoder("libx264", "level", Integer(41)), "41");
    ExpectValue(Encoder("libx264", "deblock", Text("-1:-1")), "-1:-1");
    ExpectValue(Encoder("libx264", "partitions", Text("p8x8,i4x4")), "p8x8,i4x4");
    ExpectFault(Encoder("libx264", "preset", Text("glacial")),
                "expected a speed preset of x264, as fast, found 'glacial'");
    ExpectFault(Encoder("libx264", "preset", Integer(1)),
                "expected a speed preset of x264, as fast, found 1");
    ExpectFault(Encoder("libx264", "tune", Text("film,/x")),
                "expected tunings of x264, as film or film,fastdecode, found 'film,/x'");
    ExpectFault(Encoder("libx264", "tune", Text("film,")),
                "expected tunings of x264, as film or film,fastdecode, found 'film,'");
    ExpectFault(Encoder("libx264", "level", Text("../4")), "expected a level, as 4.1, found '../4'");
    ExpectFault(Encoder("libx264", "level", Text("")), "expected a level, as 4.1, found ''");
}

TEST(OptionRules, WriteTheParametersOfALibraryAnew)
{
    ExpectValue(Encoder("libx264", "x264-params", Text("keyint=50:ref=4:me=umh")), "keyint=50:ref=4:me=umh");
    ExpectValue(Encoder("libx264", "x264opts", Text("no-mbtree:keyint=infinite:deblock=1,-1")),
                "no-mbtree=1:keyint=infinite:deblock=1,-1");
    ExpectValue(Encoder("libx264rgb", "x264-params", Text("aq-mode=2")), "aq-mode=2");
    ExpectValue(Encoder("libx265", "x265-params", Text("crf=28:colorprim=bt709")), "crf=28:colorprim=bt709");
    ExpectValue(Encoder("libsvtav1", "svtav1-params", Text("tune=0:film-grain=8")), "tune=0:film-grain=8");
    ExpectValue(Encoder("libaom-av1", "aom-params", Text("enable-cdef=0")), "enable-cdef=0");
    ExpectValue(Encoder("librav1e", "rav1e-params", Text("speed=9")), "speed=9");
}

TEST(OptionRules, DoNotPassParametersThatNameFilesOrLog)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"dump-yuv=/tmp/x", "dump-yuv"},
        {"stats=x", "stats"},
        {"pass=1", "pass"},
        {"qpfile=/etc/passwd", "qpfile"},
        {"cqmfile=x", "cqmfile"},
        {"log-file=x", "log-file"},
        {"opencl=1", "opencl"},
        {"opencl-clbin=x", "opencl-clbin"},
        {"keyint=1:dump-yuv=x", "dump-yuv"},
        {"dump_yuv=x", "dump_yuv"},
        {"no-stats=x", "no-stats"},
        {"no-dump-yuv=x", "no-dump-yuv"},
        {"DUMP-YUV=x", "DUMP-YUV"},
        {" stats=x", " stats"},
        {"stats", "stats"},
        {"'stats'=x", "'stats'"},
        {"\\stats=x", "\\stats"},
        {"keyint=1:", ""},
        {"", ""},
        {":", ""},
    };
    for (const auto& [text, name] : cases)
    {
        for (const std::string option : {"x264-params", "x264opts"})
        {
            ExpectFault(Encoder("libx264", option, Text(text)),
                        "x264's parameter '" + name + "' cannot be set by a job or a preset");
        }
    }
    for (const std::string name : {"csv", "recon", "stats", "analysis-save", "zonefile", "lambda-file",
                                   "dhdr10-info", "scaling-list", "nalu-file", "log-file", "pass"})
    {
        ExpectFault(Encoder("libx265", "x265-params", Text(name + "=x")),
                    "x265's parameter '" + name + "' cannot be set by a job or a preset");
    }
    ExpectFault(Encoder("libaom-av1", "aom-params", Text("vmaf-model-path=/etc/passwd")),
                "libaom's parameter 'vmaf-model-path' cannot be set by a job or a preset");
    ExpectFault(Encoder("libsvtav1", "svtav1-params", Text("stats=x")),
                "SVT-AV1's parameter 'stats' cannot be set by a job or a preset");
}

TEST(OptionRules, DoNotPassWordsThatX264TakesForAFileOfMatrices)
{
    ExpectValue(Encoder("libx264", "x264-params", Text("cqm=jvt")), "cqm=jvt");
    ExpectValue(Encoder("libx264", "x264opts", Text("cqm=flat")), "cqm=flat");
    for (const std::string word : {"matrices.txt", "1", "", "flat jvt", "Flat"})
    {
        ExpectFault(Encoder("libx264", "x264-params", Text("cqm=" + word)),
                    "x264's parameter 'cqm': expected flat or jvt, found '" + word + "'");
    }
}

TEST(OptionRules, LookAtTheValuesOfParameters)
{
    ExpectFault(Encoder("libx264", "x264-params", Text("keyint=/x")),
                "x264's parameter 'keyint': expected a number, found '/x'");
    ExpectFault(Encoder("libx264", "x264-params", Text("keyint=1,")),
                "x264's parameter 'keyint': expected a number, found '1,'");
    ExpectFault(Encoder("libx264", "x264-params", Text("keyint=")),
                "x264's parameter 'keyint': expected a number, found ''");
    ExpectFault(Encoder("libx264", "x264-params", Text("keyint=1=stats")),
                "x264's parameter 'keyint': expected a number, found '1=stats'");
    ExpectFault(Encoder("libx264", "x264-params", Text("me='umh")),
                "x264's parameter 'me': expected a word, found ''umh'");
    ExpectFault(Encoder("libx264", "x264-params", Text("ref=1:ref=2")),
                "x264's parameter 'ref' appears more than once");
    ExpectFault(Encoder("libx264", "x264-params", Integer(1)),
                "expected parameters of x264 as a=1:b=2, found 1");
}

TEST(OptionRules, OfADecoderThatIsNotKnownYetAskForTheName)
{
    EXPECT_EQ(CheckDecoderOption(nullptr, "skip_frame", Text("nokey")).fault, "");
    EXPECT_EQ(CheckDecoderOption(nullptr, "dump_attachment:t", Text("x")).fault,
              "the option 'dump_attachment:t' of decoders cannot be set by a job or a preset");
    EXPECT_EQ(CheckDecoderOption(nullptr, "ifo_palette", Text("x")).fault,
              "the option 'ifo_palette' of decoders cannot be set by a job or a preset");
}

} // namespace
