#pragma once

#include "Core/Interfaces/Property.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace Zelnor::Testing
{

/// Makes records of codecs as jobs hold them: right for the most part, so that many can be run, and here and
/// there with a name or a value that somebody chose to make ffmpeg do something else.
class HostileRecords
{
public:
    explicit HostileRecords(std::uint64_t seed) : m_random(seed) {}

    std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : m_random() % limit; }
    bool OneIn(std::size_t count) { return Below(count) == 0; }

    template <std::size_t N>
    std::string Any(const char* const (&texts)[N])
    {
        return texts[Below(N)];
    }

    /// A name of a file, or anything else that means something to ffmpeg, a shell or a parser.
    std::string Text()
    {
        static const char* const kTexts[] = {"precious",
                                             "/etc/passwd",
                                             "../x",
                                             "file:/x",
                                             "-y",
                                             "-i",
                                             "x.log",
                                             "pipe:1",
                                             "concat:a|b",
                                             "a=b",
                                             "a:b",
                                             "a,b",
                                             "[x]",
                                             "'",
                                             "\\",
                                             "\\'",
                                             "a\nb",
                                             "%d",
                                             "$HOME",
                                             "`x`",
                                             "*",
                                             "",
                                             " ",
                                             "pass1",
                                             "+pass1",
                                             "512",
                                             "dump-yuv=x",
                                             "stats=x",
                                             "keyint=1:stats=x",
                                             "ref=1:dump_yuv=x",
                                             "no-mbtree",
                                             "keyint=12:ref=2",
                                             "me=umh",
                                             "while(1,1)",
                                             "print(1)",
                                             "1+1",
                                             "0x10",
                                             "1e9",
                                             "nan",
                                             "-1",
                                             "0",
                                             "1",
                                             "2",
                                             "99999999999",
                                             "auto",
                                             "good",
                                             "rd",
                                             "nokey",
                                             "fast",
                                             "slow",
                                             "film",
                                             "high",
                                             "main",
                                             "4.1",
                                             "1:1",
                                             "+mv4",
                                             "mv4",
                                             "skip_rd",
                                             "true",
                                             "\xe2\x80\xae",
                                             "\xff",
                                             "deu",
                                             "avc1",
                                             "a",
                                             "one_pass",
                                             "two_pass",
                                             "CBR",
                                             "VBR",
                                             "-global_header",
                                             "subtitles=x",
                                             "];[",
                                             "movie=/x",
                                             "[0:0]",
                                             "merged0",
                                             "libx264",
                                             "copy",
                                             "null",
                                             "lavfi"};
        if (OneIn(40))
        {
            return std::string(5000, 'x');
        }
        return OneIn(40) ? std::string("a\0b", 3) : Any(kTexts);
    }

    long long Number()
    {
        static constexpr long long kNumbers[] = {0,
                                                 1,
                                                 2,
                                                 3,
                                                 12,
                                                 16,
                                                 23,
                                                 50,
                                                 512,
                                                 1024,
                                                 65535,
                                                 65536,
                                                 800000,
                                                 -1,
                                                 -2,
                                                 2147483647,
                                                 2147483648,
                                                 4294967295,
                                                 4294967296,
                                                 4294967456,
                                                 9223372036854775807,
                                                 -9223372036854775807 - 1};
        return kNumbers[Below(std::size(kNumbers))];
    }

    Core::Property Value(const std::string& name, int depth = 1)
    {
        switch (Below(depth > 0 ? 6 : 5))
        {
        case 0:
        case 1:
            return Core::Property(name, Text());
        case 2:
            return Core::Property(name, Number());
        case 3:
            return Core::Property(
                name, Core::Property::Ratio(Number() / 2, 1 + static_cast<long long>(Below(1001))));
        case 4:
            return OneIn(8) ? Core::Property::None(name) : Core::Property(name, Number());
        default:
            break;
        }
        Core::Property group(name);
        group.Add(Value(Text(), depth - 1));
        return group;
    }

    /// An option of an encoder or a decoder of that kind, mostly one that there is with a value that it
    /// takes.
    Core::Property Option(const std::string& group, std::size_t kind)
    {
        static const Pair kVideo[] = {{"g", "50"},
                                      {"bf", "2"},
                                      {"refs", "3"},
                                      {"qmin", "2"},
                                      {"qmax", "40"},
                                      {"trellis", "1"},
                                      {"mbd", "rd"},
                                      {"flags", "+mv4+cgop"},
                                      {"flags", "bitexact"},
                                      {"flags2", "+fast"},
                                      {"strict", "-2"},
                                      {"threads", "2"},
                                      {"preset", "fast"},
                                      {"tune", "film,fastdecode"},
                                      {"profile", "high"},
                                      {"level", "4.1"},
                                      {"crf", "20"},
                                      {"x264-params", "ref=4:me=umh"},
                                      {"x264opts", "no-mbtree:keyint=12"},
                                      {"deadline", "good"},
                                      {"cpu-used", "4"},
                                      {"rc-lookahead", "20"},
                                      {"me_range", "16"},
                                      {"cmp", "satd"},
                                      {"partitions", "p8x8,i4x4"},
                                      {"deblock", "-1:-1"},
                                      {"psy-rd", "1.0:0.15"},
                                      {"maxrate", "800k"},
                                      {"bufsize", "1.5M"},
                                      {"dpi", "72"}};
        static const Pair kAudio[] = {
            {"cutoff", "18000"},        {"compression_level", "5"}, {"application", "voip"},
            {"aac_coder", "fast"},      {"joint_stereo", "1"},      {"flags", "+bitexact"},
            {"strict", "experimental"}, {"threads", "auto"},        {"lpc_type", "levinson"}};
        static const Pair kDecoding[] = {
            {"skip_frame", "nokey"},    {"lowres", "1"},        {"skip_loop_filter", "all"},
            {"err_detect", "crccheck"}, {"flags", "+bitexact"}, {"threads", "1"},
            {"flags2", "showall"},      {"ec", "guess_mvs"},    {"strict", "1"}};
        static const char* const kBad[] = {"stats",
                                           "passlogfile",
                                           "pass",
                                           "vstats_file",
                                           "progress",
                                           "report",
                                           "hide_banner",
                                           "y",
                                           "i",
                                           "f",
                                           "map",
                                           "dump_attachment:t",
                                           "dump_attachment",
                                           "attach",
                                           "filter_complex",
                                           "filter",
                                           "stats:v:0",
                                           "g:0",
                                           "crf:v",
                                           "",
                                           "-g",
                                           "/g",
                                           "g=1",
                                           "b",
                                           "c",
                                           "rc_eq",
                                           "ifo_palette",
                                           "codec_whitelist",
                                           "protocol_whitelist",
                                           "debug",
                                           "sws_flags",
                                           "fflags",
                                           "time_base",
                                           "pixel_format",
                                           "omx_libname",
                                           "load_plugins",
                                           "top",
                                           "ssim",
                                           "psnr",
                                           "x265-params",
                                           "svtav1-params",
                                           "no_such",
                                           "init_hw_device",
                                           "sdp_file",
                                           "vpre",
                                           "tag",
                                           "disposition"};
        if (OneIn(12))
        {
            return Value(OneIn(8) ? Text() : Any(kBad), 0);
        }
        return OneOf(group == "codec.options.analyze" ? Pairs(kDecoding)
                     : kind == 0                      ? Pairs(kVideo)
                                                      : Pairs(kAudio));
    }

    Core::Property Options(const std::string& group, std::size_t kind)
    {
        Core::Property options(group);
        for (std::size_t count = Below(3); count != 0; --count)
        {
            const Core::Property option = Option(group, kind);
            if (!options.ChildExists(option.GetName()) || OneIn(10))
            {
                options.Add(option);
            }
        }
        return options;
    }

    Core::Property Metadata()
    {
        static const char* const kNames[] = {"title", "artist", "comment", "rotate", "language", "a b"};
        Core::Property metadata("metadata");
        for (std::size_t count = Below(3); count != 0; --count)
        {
            metadata.Add(Value(OneIn(10) ? Text() : Any(kNames), 0));
        }
        return metadata;
    }

    /// "format_codec_video" and the like, for a stream of that kind; null for a preset's.
    Core::Property Codec(const std::string& name, std::size_t kind)
    {
        static const char* const kVideo[] = {"H264", "H264", "MPEG4", "MPEG2VIDEO", "VP8",
                                             "VP9",  "GIF",  "PNG",   "MJPEG"};
        static const char* const kAudio[] = {"AAC", "MP3", "AC3", "OPUS", "VORBIS", "FLAC", "PCM_S16LE"};
        static const char* const kSubtitle[] = {"SRT", "ASS", "MOV_TEXT", "DVD_SUBTITLE"};
        Core::Property codec(name);
        codec.Add(Core::Property("codec_id", std::string("CODEC_ID_") + (kind == 0   ? Any(kVideo)
                                                                         : kind == 1 ? Any(kAudio)
                                                                                     : Any(kSubtitle))));
        if (kind == 0 && !OneIn(8))
        {
            AddVideo(codec);
        }
        codec.Add(Options("codec.options.encode", kind));
        if (OneIn(3))
        {
            codec.Add(Options("codec.options.analyze", kind));
        }
        if (OneIn(2))
        {
            codec.Add(Metadata());
        }
        for (std::size_t count = Below(4); count > 1; --count)
        {
            AddSetting(codec, kind);
        }
        return codec;
    }

private:
    void AddVideo(Core::Property& codec)
    {
        codec.Add(Core::Property("bitrate", 800000LL));
        codec.Add(Core::Property("width", OneIn(20) ? Number() : 640LL));
        codec.Add(Core::Property("height", OneIn(20) ? Number() : 360LL));
        codec.Add(Core::Property("aspect_x", OneIn(20) ? Number() : 1LL));
        codec.Add(Core::Property("aspect_y", OneIn(20) ? Number() : 1LL));
        codec.Add(Core::Property("frameRateRatio", Core::Property::Ratio(OneIn(20) ? Number() : 25, 1)));
    }

    void AddSetting(Core::Property& codec, std::size_t kind)
    {
        static const Pair kVideo[] = {{"preset", "fast"},
                                      {"tune", "film"},
                                      {"profile", "high"},
                                      {"codec_fourcc", "avc1"},
                                      {"number_of_threads", "2"},
                                      {"utilize_all_resources", "1"},
                                      {"global_header", "1"},
                                      {"main_stream", "1"},
                                      {"language", "deu"},
                                      {"keyOnly", "1"},
                                      {"maxBFrameSequence", "2"},
                                      {"maxIFrameInterval", "50"},
                                      {"motionSrchRng", "16"},
                                      {"slice-max-size", "1400"},
                                      {"x264opts", "ref=4"},
                                      {"PIXELFORMAT", "0"},
                                      {"pixelFormat", "yuv420p10le"},
                                      {"deinterlace", "50p"},
                                      {"deinterlace", "keep"},
                                      {"colorRange", "pc"},
                                      {"colorMatrix", "bt470bg"},
                                      {"colorPrimaries", "bt2020"},
                                      {"colorTransfer", "smpte2084"},
                                      {"quality", "5"},
                                      {"two_pass_encoding", "two_pass"},
                                      {"bitrate_mode", "VBR"},
                                      {"peakBitrate", "900000"},
                                      {"peakBuffer", "900000"},
                                      {"lossless", "1"},
                                      {"preferred_encoder", "libx264rgb"},
                                      {"name", "x"}};
        static const Pair kAudio[] = {{"bitrate", "128000"},   {"sample_rate", "48000"},
                                      {"layout", "STEREO"},    {"sample_format", "SAMPLE_FMT_FLTP"},
                                      {"bitrate_mode", "CBR"}, {"language", "eng"},
                                      {"main_stream", "0"},    {"profile", "aac_low"},
                                      {"codec_fourcc", "255"}, {"frame_size", "1024"}};
        Core::Property setting = OneIn(60) ? Value(Text()) : OneOf(kind == 0 ? Pairs(kVideo) : Pairs(kAudio));
        if (!codec.ChildExists(setting.GetName()) || OneIn(20))
        {
            codec.Add(setting);
        }
    }

    /// A name, and a value that goes with it.
    struct Pair
    {
        const char* name;
        const char* value;
    };

    template <std::size_t N>
    static std::vector<Pair> Pairs(const Pair (&pairs)[N])
    {
        return {std::begin(pairs), std::end(pairs)};
    }

    Core::Property OneOf(const std::vector<Pair>& pairs)
    {
        const Pair& pair = pairs[Below(pairs.size())];
        if (OneIn(10))
        {
            return Value(pair.name, OneIn(10) ? 1 : 0);
        }
        const std::string text = pair.value;
        const bool isNumber = text.find_first_not_of("0123456789") == std::string::npos;
        return isNumber && !OneIn(10) ? Core::Property(pair.name, std::stoll(text))
                                      : Core::Property(pair.name, text);
    }

    std::mt19937_64 m_random;
};

} // namespace Zelnor::Testing
