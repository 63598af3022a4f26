#include "Media/Planning/Containers.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Probe/FFmpegNames.h"

#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatFile.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodecSubtitle;
using Conf::IFormatFile;

constexpr const char* kImageMuxer = "image2";

/// The muxer's name where it is not the container's.
std::string MuxerName(const std::string& container)
{
    struct Alias
    {
        const std::string* container;
        const char* muxer;
    };
    static const Alias s_aliases[] = {
        {&IFormatFile::FORMAT_M4A, "ipod"},      {&IFormatFile::FORMAT_MPEG2TS, "mpegts"},
        {&IFormatFile::FORMAT_WMA, "asf"},       {&IFormatFile::FORMAT_WMV, "asf"},
        {&IFormatFile::FORMAT_TIF, kImageMuxer},
    };
    const auto* const found = std::find_if(std::begin(s_aliases), std::end(s_aliases),
                                           [&](const Alias& row) { return *row.container == container; });
    return found != std::end(s_aliases)        ? found->muxer
           : Conf::IsImageContainer(container) ? kImageMuxer
                                               : container;
}

/// Muxers of FFmpeg that write one file, and that the vocabulary does not name.
constexpr std::array<std::string_view, 40> kMoreContainers = {
    "alp",  "amv",        "apm",  "apng",       "aptx",   "aptx_hd",   "argo_asf", "argo_cvg",
    "ast",  "avif",       "avs2", "avs3",       "codec2", "codec2raw", "data",     "dfpwm",
    "evc",  "f4v",        "fits", "framehash",  "g726",   "g726le",    "gsm",      "hash",
    "hevc", "ircam",      "lrc",  "mxf_opatom", "obu",    "oga",       "opus",     "scc",
    "spx",  "streamhash", "sup",  "tta",        "vvc",    "w64",       "webp",     "webvtt"};

/// Muxers whose output goes to a network: FFmpeg does not read a file of it again.
bool IsForNetworks(const std::string& container) { return container == IFormatFile::FORMAT_RTP; }

/// FFmpeg puts anything into the containers of DVDs, so what DVD players can play is listed here.
bool DvdHolds(AVCodecID codec)
{
    constexpr std::array<AVCodecID, 7> kCodecs = {
        AV_CODEC_ID_MPEG1VIDEO, AV_CODEC_ID_MPEG2VIDEO, AV_CODEC_ID_AC3,         AV_CODEC_ID_MP2,
        AV_CODEC_ID_DTS,        AV_CODEC_ID_PCM_DVD,    AV_CODEC_ID_DVD_SUBTITLE};
    return std::find(kCodecs.begin(), kCodecs.end(), codec) != kCodecs.end();
}

int AskMuxer(const AVOutputFormat* muxer, const std::string& container, AVCodecID codec)
{
    return muxer == nullptr   ? 0
           : IsDvd(container) ? static_cast<int>(DvdHolds(codec))
                              : avformat_query_codec(muxer, codec, FF_COMPLIANCE_NORMAL);
}

} // namespace

const AVOutputFormat* FindMuxer(const std::string& container)
{
    return av_guess_format(MuxerName(container).c_str(), nullptr, nullptr);
}

bool IsOneFile(const std::string& container)
{
    const AVOutputFormat* const muxer = FindMuxer(container);
    // The muxer of images is told to write one image under exactly the target's name.
    const bool writesOwnFiles =
        muxer == nullptr || ((muxer->flags & AVFMT_NOFILE) != 0 && !IsPicture(container));
    return !writesOwnFiles && !IsForNetworks(container) &&
           (Conf::IsContainer(container) ||
            std::find(kMoreContainers.begin(), kMoreContainers.end(), container) != kMoreContainers.end());
}

bool IsPicture(const std::string& container) { return MuxerName(container) == kImageMuxer; }

bool IsDvd(const std::string& container)
{
    return container == IFormatFile::FORMAT_DVD || container == IFormatFile::FORMAT_VOB;
}

bool CanStartFast(const std::string& container)
{
    const AVOutputFormat* const muxer = FindMuxer(container);
    return muxer != nullptr && muxer->priv_class != nullptr &&
           av_opt_find(const_cast<const AVClass**>(&muxer->priv_class), "faststart", "movflags", 0,
                       AV_OPT_SEARCH_FAKE_OBJ) != nullptr;
}

bool CertainlyHolds(const std::string& container, AVCodecID codec)
{
    return CertainlyHolds(FindMuxer(container), container, codec);
}

bool CertainlyHolds(const AVOutputFormat* muxer, const std::string& container, AVCodecID codec)
{
    return AskMuxer(muxer, container, codec) == 1;
}

bool MayHold(const std::string& container, AVCodecID codec)
{
    return AskMuxer(FindMuxer(container), container, codec) != 0;
}

std::vector<std::string> SubtitleCodecsFor(const std::string& container, const std::string& sourceCodec,
                                           bool isBitmap)
{
    std::vector<std::string> candidates = {sourceCodec};
    if (isBitmap)
    {
        candidates.insert(candidates.end(), {IFormatCodecSubtitle::CODEC_ID_DVD_SUBTITLE,
                                             IFormatCodecSubtitle::CODEC_ID_DVB_SUBTITLE});
    }
    else
    {
        candidates.insert(candidates.end(),
                          {IFormatCodecSubtitle::CODEC_ID_SUBRIP, IFormatCodecSubtitle::CODEC_ID_MOV_TEXT,
                           IFormatCodecSubtitle::CODEC_ID_WEBVTT, IFormatCodecSubtitle::CODEC_ID_ASS});
    }
    std::vector<std::string> codecs;
    std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(codecs),
                 [&container](const std::string& textId) {
                     const AVCodec* const encoder = FindEncoder(textId);
                     return encoder != nullptr && CertainlyHolds(container, encoder->id);
                 });
    return codecs;
}

} // namespace Zelnor::Media
