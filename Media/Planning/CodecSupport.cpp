#include "Media/Planning/CodecSupport.h"

#include "Media/MediaException.h"
#include "Media/NearestNames.h"
#include "Media/Options/ValueNames.h"
#include "Media/Planning/CodecReasons.h"
#include "Media/Planning/CodecsInstead.h"
#include "Media/Planning/Containers.h"
#include "Media/Planning/EncoderChoice.h"
#include "Media/Probe/FFmpegNames.h"

#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatFile.h"

#include <algorithm>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Planning/CodecSupport";

void RequireKnown(const std::string& key, const std::string& noun, const std::string& name)
{
    const std::vector<std::string> names = NamesOfValues(key);
    if (std::find(names.begin(), names.end(), name) == names.end())
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>("'" + name + "' is not a known " + noun +
                                                     DidYouMean(name, names)));
    }
}

void AddReasons(CodecSupport& support)
{
    const auto add = [&support](const std::string& reason) {
        support.reasons.push_back(AsSentences(reason));
    };
    const std::string cannotWrite = CannotWriteText(support.container);
    const bool isHeld = !cannotWrite.empty() || support.isHeld != CodecSupport::No;
    if (!cannotWrite.empty())
    {
        add(cannotWrite);
    }
    else if (!isHeld)
    {
        add(CannotHoldText(support.container, support.codec));
    }
    if (support.encoder.empty())
    {
        // What the container holds instead has been said.
        add(NoEncoderText(isHeld ? support.container : "", support.codec));
    }
    else if (support.isEncodingDisabled)
    {
        add(DisabledText(support.codec, support.encoder));
    }
}

} // namespace

CodecSupport ExplainCodecSupport(const std::string& container, const std::string& codec)
{
    RequireKnown(Conf::IFormatFile::TAG_CONTAINER, "container", container);
    RequireKnown(Conf::IFormatCodec::TAG_CODEC_ID, "codec", codec);
    CodecSupport support;
    support.container = container;
    support.codec = codec;
    const AVCodecID id = CodecNumberOf(codec);
    const AVOutputFormat* const muxer = FindMuxer(container);
    support.muxer = muxer == nullptr ? "" : muxer->name;
    support.isHeld = CertainlyHolds(container, id) ? CodecSupport::Yes
                     : MayHold(container, id)      ? CodecSupport::Unknown
                                                   : CodecSupport::No;
    const AVCodec* const encoder = FindEncoder(codec);
    support.encoder = encoder == nullptr ? "" : encoder->name;
    support.isEncodingDisabled = IsEncodingDisabled(codec);
    if (Conf::GetCodecMediaType(codec) == MEDIA_TYPE_VIDEO)
    {
        support.hasBitrateCurve = Conf::HasVideoBitrateCurve(codec);
    }
    support.codecs = CodecsFor(container, codec);
    support.containers = ContainersFor(codec);
    AddReasons(support);
    return support;
}

} // namespace Zelnor::Media
