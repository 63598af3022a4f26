#include "Conf/Interfaces/MediaTypeUtils.h"

#include "Conf/Private/Texts.h"
#include "Core/Interfaces/Exception.h"

#include <algorithm>
#include <iterator>
#include <locale>
#include <stdexcept>
#include <string_view>

namespace Zelnor::Conf
{

namespace
{

constexpr const char* kUnit = "Conf/Interfaces/MediaTypeUtils";

struct Group
{
    std::string_view name;
    IFormatFile::MediaType mediaType;
    /// Separated by semicolons.
    std::string_view extensions;
    std::string_view tip = {};
};

// kept: "asf", "nut", "vc1" and "mtv" occur twice.
constexpr std::string_view kAllVideo =
    "3gp;3g2;3gp2;3g2p;3gpp;asf;avi;avs;amv;mtv;cavs;bik;bnk;cdg;dv;dv1394;sxa;dvr-ms;dpg;ea;ffm;film;"
    "film_cpk;flm;flc;flh;fli;flt;flx;flv;f4v;gxf;h261;h263;h264;m4v;mkm;mkv;mj2;mjpg;mov;qt;mp4;ifo;"
    "vob;mpg;mpeg;mpe;m2p;m1v;m2v;m2s;m2t;m2ts;mts;ml20;mxf;nc;nsv;nut;nuv;ogm;ogv;rva;r3d;rax;rm;ram;"
    "rms;rmvb;rmx;ivr;rpl;rtsp;sdp;smk;swf;thp;ts;tod;vc1;vfw;vro;wmv;asf;m4b;m4r;mpeg3;mpc;mp+;nut;wv;"
    "wm;wmvhd;xa;mtv;mvi;trp;mxg;thd;wtv;webm;rec;vc-1;vc1;wpg;mod;divx;xvid";

constexpr std::string_view kAllAudio =
    "au;aif;aiff;aifc;aac;ac3;adts;alaw;amr;apc;ape;caf;dts;gsd;gsm;flac;mka;mlp;mmf;m4a;m4b;m4r;mp1;"
    "mp2;mp3;mpeg3;mpc;mp+;m2a;nut;ogg;oma;qcp;ra;rmj;shn;snd;tta;voc;w64;wav;wma;xa";

/// In the order of a file dialog.
constexpr Group kGroups[] = {
    {Texts::IFormatFile::GROUP_ALL_FILES, IFormatFile::MEDIA_ALL, "*", "*.*"},
    {Texts::IFormatFile::GROUP_ALL_VIDEO, IFormatFile::MEDIA_VIDEO, kAllVideo,
     "*.mp4;*.avi;*.mpeg;*.flv;..."},
    {Texts::IFormatFile::GROUP_AVI, IFormatFile::MEDIA_VIDEO, "avi"},
    {Texts::IFormatFile::GROUP_MP4, IFormatFile::MEDIA_VIDEO, "mp4;m4v;mpeg4"},
    {Texts::IFormatFile::GROUP_MPEG, IFormatFile::MEDIA_VIDEO, "mpg;mpeg;mp2;mp3;mod"},
    {Texts::IFormatFile::GROUP_WMV, IFormatFile::MEDIA_VIDEO, "wmv;asf;wm;wmvhd"},
    {Texts::IFormatFile::GROUP_3GP, IFormatFile::MEDIA_VIDEO, "3gp;3g2;3gpp;3gp2"},
    {Texts::IFormatFile::GROUP_DVD, IFormatFile::MEDIA_VIDEO, "ifo;vob;vro"},
    {Texts::IFormatFile::GROUP_RM, IFormatFile::MEDIA_VIDEO, "rm;rmvb;rv;ivr"},
    {Texts::IFormatFile::GROUP_QUICKTIME, IFormatFile::MEDIA_VIDEO, "mov;qt;mp4;m4v;m4b"},
    {Texts::IFormatFile::GROUP_FLASH, IFormatFile::MEDIA_VIDEO, "flv"},
    {Texts::IFormatFile::GROUP_HD, IFormatFile::MEDIA_VIDEO, "tod;m2ts;m2t;mts"},
    {Texts::IFormatFile::GROUP_MKV, IFormatFile::MEDIA_VIDEO, "mkv"},
    {Texts::IFormatFile::GROUP_WEBM, IFormatFile::MEDIA_VIDEO, "webm;ogg;ogv"},
    {Texts::IFormatFile::GROUP_ALL_AUDIO, IFormatFile::MEDIA_AUDIO, kAllAudio, "*.mp3;*.flac;*.wav;..."},
    {Texts::IFormatFile::GROUP_MP3, IFormatFile::MEDIA_AUDIO, "mp3"},
    {Texts::IFormatFile::GROUP_WAV, IFormatFile::MEDIA_AUDIO, "wav;pcm"},
    {Texts::IFormatFile::GROUP_WMA, IFormatFile::MEDIA_AUDIO, "wma"},
    {Texts::IFormatFile::GROUP_FLAC, IFormatFile::MEDIA_AUDIO, "flac"},
    {Texts::IFormatFile::GROUP_AC3, IFormatFile::MEDIA_AUDIO, "ac3"},
    {Texts::IFormatFile::GROUP_AAC, IFormatFile::MEDIA_AUDIO, "aac"},
    {Texts::IFormatFile::GROUP_M4A, IFormatFile::MEDIA_AUDIO, "m4a;m4r;alac"},
    {Texts::IFormatFile::GROUP_OGG, IFormatFile::MEDIA_AUDIO, "ogg"},
    {Texts::IFormatFile::GROUP_AMR, IFormatFile::MEDIA_AUDIO, "amr;amr-nb;amr-wb"},
    {Texts::IFormatFile::GROUP_ALL_SUBTITLES, IFormatFile::MEDIA_SUBTITLES, "aas;ass;srt;ssa"},
    {Texts::IFormatFile::GROUP_ALL_IMAGES, IFormatFile::MEDIA_IMAGES,
     "bmp;dpx;gif;jpg;jpeg;jpe;jfif;jif;jp2;j2p;pbm;pcx;pgm;ppm;pnm;png;ras;tga;tiff;tif;xbm",
     "*.jpeg;*.png;*.bmp;..."},
};

/// A group with extensions that a file dialog does not offer.
constexpr Group kOther = {Texts::IFormatFile::GROUP_OTHER, IFormatFile::MEDIA_ALL, "dat;mrec"};

struct Container
{
    std::string_view name;
    std::string_view extension;
};

constexpr Container kContainers[] = {
    {Texts::IFormatFile::FORMAT_MP4, "mp4"},
    {Texts::IFormatFile::FORMAT_M4A, "m4a"},
    {Texts::IFormatFile::FORMAT_PSP, "mp4"},  // kept: a profile of MP4
    {Texts::IFormatFile::FORMAT_IPOD, "mp4"}, // kept: a profile of MP4
    {Texts::IFormatFile::FORMAT_AVI, "avi"},
    {Texts::IFormatFile::FORMAT_MATROSKA, "mkv"},
    {Texts::IFormatFile::FORMAT_MPEG, "mpg"},
    {Texts::IFormatFile::FORMAT_MPEG1VIDEO, "mpg"},
    {Texts::IFormatFile::FORMAT_MPEG2VIDEO, "mpg"},
    {Texts::IFormatFile::FORMAT_VOB, "mpg"}, // kept: not "vob"
    {Texts::IFormatFile::FORMAT_DVD, "vob"}, // kept: not "mpg"
    {Texts::IFormatFile::FORMAT_OGV, "ogv"},
    {Texts::IFormatFile::FORMAT_WEBM, "webm"},
    {Texts::IFormatFile::FORMAT_MP3, "mp3"},
    {Texts::IFormatFile::FORMAT_MOV, "mov"},
    {Texts::IFormatFile::FORMAT_MPEGTS, "mts"},
    {Texts::IFormatFile::FORMAT_MPEG2TS, "m2ts"},
    {Texts::IFormatFile::FORMAT_FLV, "flv"},
    {Texts::IFormatFile::FORMAT_3GP, "3gp"},
    {Texts::IFormatFile::FORMAT_3G2, "3g2"},
    {Texts::IFormatFile::FORMAT_SWF, "swf"},
    {Texts::IFormatFile::FORMAT_AAC, "aac"},
    {Texts::IFormatFile::FORMAT_OGG, "ogg"},
    {Texts::IFormatFile::FORMAT_FLAC, "flac"},
    {Texts::IFormatFile::FORMAT_WAV, "wav"},
    {Texts::IFormatFile::FORMAT_WMA, "wma"},
    {Texts::IFormatFile::FORMAT_WMV, "wmv"},
    {Texts::IFormatFile::FORMAT_ASF, "wmv"}, // kept: not "asf"
    {Texts::IFormatFile::FORMAT_IMAGE2, "jpg"},
    {Texts::IFormatFile::FORMAT_BMP, "bmp"},
    {Texts::IFormatFile::FORMAT_GIF, "gif"},
    {Texts::IFormatFile::FORMAT_PNG, "png"},
    {Texts::IFormatFile::FORMAT_TIFF, "tiff"},
    {Texts::IFormatFile::FORMAT_DPX, "dpx"},
    {Texts::IFormatFile::FORMAT_JPEG2000, "j2k"},
    {Texts::IFormatFile::FORMAT_PBM, "pbm"},
    {Texts::IFormatFile::FORMAT_PCX, "pcx"},
    {Texts::IFormatFile::FORMAT_PGM, "pgm"},
    {Texts::IFormatFile::FORMAT_PPM, "ppm"},
    {Texts::IFormatFile::FORMAT_TARGA, "tga"},
    {Texts::IFormatFile::FORMAT_XBM, "xbm"},
    {Texts::IFormatFile::FORMAT_JPEGLS, "jls"},
    {Texts::IFormatFile::FORMAT_PAM, "pam"},
    {Texts::IFormatFile::FORMAT_PGMYUV, "pgm"},
    {Texts::IFormatFile::FORMAT_SGI, "sgi"},
    {Texts::IFormatFile::FORMAT_XWD, "xwd"},
};

const Group* FindGroup(const std::string& groupId)
{
    const auto found = std::find_if(std::begin(kGroups), std::end(kGroups),
                                    [&](const Group& group) { return group.name == groupId; });
    if (found != std::end(kGroups))
    {
        return found;
    }
    return groupId == kOther.name ? &kOther : nullptr;
}

} // namespace

std::vector<std::pair<IFormatFile::MediaType, std::string>> GetSupportedFormats()
{
    std::vector<std::pair<IFormatFile::MediaType, std::string>> formats;
    formats.reserve(std::size(kGroups));
    for (const Group& group : kGroups)
    {
        formats.emplace_back(group.mediaType, group.name);
    }
    return formats;
}

std::vector<std::string> GetSupportedFormatExtensions(const std::string& groupId)
{
    const Group* const group = FindGroup(groupId);
    if (group == nullptr)
    {
        ZELNOR_THROW(kUnit, std::invalid_argument("Unknown group id"));
    }
    const std::string_view list = group->extensions;
    std::vector<std::string> extensions;
    extensions.reserve(static_cast<std::size_t>(std::count(list.begin(), list.end(), ';')) + 1);
    for (std::size_t begin = 0; begin <= list.size();)
    {
        const std::size_t end = std::min(list.find(';', begin), list.size());
        extensions.emplace_back(list.substr(begin, end - begin));
        begin = end + 1;
    }
    return extensions;
}

std::string GetFormatExtentionTip(const std::string& groupId)
{
    const Group* const group = FindGroup(groupId);
    return group == nullptr ? std::string() : std::string(group->tip);
}

std::string GetDefaultFileExtensionForContainer(const std::string& containerName)
{
    std::string name = containerName;
    std::transform(name.begin(), name.end(), name.begin(),
                   [global = std::locale()](char c) { return std::tolower(c, global); });
    for (const Container& container : kContainers)
    {
        if (container.name == name)
        {
            return std::string(container.extension);
        }
    }
    ZELNOR_THROW(kUnit, std::invalid_argument("Unknown media container name: " + containerName));
}

} // namespace Zelnor::Conf
