#include "Media/Planning/EncoderChoice.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Options/ValueNames.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/RecordText.h"

#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>
#include <vector>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Core::Property;

bool IsLosslessWord(const std::string& implementation)
{
    return implementation == IFormatCodecVideo::ENCODER_LOSSLESS ||
           implementation == IFormatCodecAudio::ENCODER_LOSSLESS;
}

/// Why there is no encoder for the codec; empty when `usual` is one.
std::string WhyNoEncoder(const std::string& codecId, const AVCodec* usual, bool isNamed)
{
    return codecId.empty()                           ? "expected the name of a codec, found nothing"
           : !isNamed && IsEncodingDisabled(codecId) ? "encoding " + codecId + " is disabled"
           : usual == nullptr ? "the installed FFmpeg does not have an encoder for " + codecId +
                                    SuggestName(IFormatCodec::TAG_CODEC_ID, codecId)
                              : "";
}

} // namespace

bool IsEncodingDisabled(const std::string& codecId)
{
    const std::vector<std::string>& disabled = Conf::GetDisabledEncoderList();
    return std::find(disabled.begin(), disabled.end(), codecId) != disabled.end();
}

bool IsCopied(const Property& codec)
{
    const auto lossless = codec.FindChild(IFormatCodec::TAG_LOSSLESS);
    const bool flagged =
        lossless != codec.end() && lossless->GetType() == PROPERTY_TYPE_INT64 && lossless->GetInt64() != 0;
    return flagged || IsLosslessWord(TextUnder(codec, IFormatCodec::TAG_PREFERREDIMPL));
}

EncoderChoice ChooseEncoder(const Property& codec)
{
    const std::string codecId = TextUnder(codec, IFormatCodec::TAG_CODEC_ID);
    const std::string wanted = TextUnder(codec, IFormatCodec::TAG_PREFERREDIMPL);
    const bool isNamed =
        !wanted.empty() && wanted != IFormatCodec::ENCODER_FFMPEG_IMPL && !IsLosslessWord(wanted);
    const AVCodec* const usual = FindEncoder(codecId);
    const std::string reason = WhyNoEncoder(codecId, usual, isNamed || IsCopied(codec));
    if (!reason.empty())
    {
        return {nullptr, IFormatCodec::TAG_CODEC_ID, reason};
    }
    if (!isNamed)
    {
        return {usual};
    }
    const AVCodec* const named = avcodec_find_encoder_by_name(wanted.c_str());
    if (named == nullptr || named->id != usual->id)
    {
        return {nullptr, IFormatCodec::TAG_PREFERREDIMPL,
                "the installed FFmpeg does not have an encoder '" + wanted + "' for " + codecId};
    }
    return {named};
}

} // namespace Zelnor::Media
