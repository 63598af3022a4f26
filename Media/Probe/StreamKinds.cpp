#include "Media/Probe/StreamKinds.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

extern "C" {
#include <libavutil/avutil.h>
}

#include <algorithm>
#include <array>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodecAudio;
using Conf::IFormatCodecSubtitle;
using Conf::IFormatCodecVideo;

/// In the order of the enumeration.
const std::array<StreamKindDescription, 6>& Kinds()
{
    static const std::string s_noRecord;
    static const std::array<StreamKindDescription, 6> s_kinds = {{
        {StreamKind::Video, "video", AVMEDIA_TYPE_VIDEO, MEDIA_TYPE_VIDEO,
         &IFormatCodecVideo::TAG_FORMAT_CODEC_VIDEO},
        {StreamKind::Audio, "audio", AVMEDIA_TYPE_AUDIO, MEDIA_TYPE_AUDIO,
         &IFormatCodecAudio::TAG_FORMAT_CODEC_AUDIO},
        {StreamKind::Subtitle, "subtitle", AVMEDIA_TYPE_SUBTITLE, MEDIA_TYPE_SUBTITLE,
         &IFormatCodecSubtitle::TAG_FORMAT_CODEC_SUBTITLE},
        {StreamKind::Data, "data", AVMEDIA_TYPE_DATA, std::nullopt, &s_noRecord},
        {StreamKind::Attachment, "attachment", AVMEDIA_TYPE_ATTACHMENT, std::nullopt, &s_noRecord},
        {StreamKind::Unknown, "unknown", AVMEDIA_TYPE_UNKNOWN, std::nullopt, &s_noRecord},
    }};
    return s_kinds;
}

template <class Predicate>
StreamKind FindKind(Predicate&& isMeant)
{
    const auto found = std::find_if(Kinds().begin(), Kinds().end(), isMeant);
    return found == Kinds().end() ? StreamKind::Unknown : found->kind;
}

} // namespace

const StreamKindDescription& DescribeKind(StreamKind kind)
{
    const auto found = std::find_if(Kinds().begin(), Kinds().end(),
                                    [kind](const StreamKindDescription& row) { return row.kind == kind; });
    return found == Kinds().end() ? Kinds().back() : *found;
}

StreamKind KindOfCodecType(int codecType)
{
    return FindKind([codecType](const StreamKindDescription& row) { return row.codecType == codecType; });
}

StreamKind KindOfMediaType(MediaType mediaType)
{
    return FindKind([mediaType](const StreamKindDescription& row) { return row.mediaType == mediaType; });
}

StreamKind KindOfRecord(const std::string& recordName)
{
    return FindKind([&recordName](const StreamKindDescription& row) {
        return row.mediaType.has_value() && *row.recordName == recordName;
    });
}

const char* NameOf(StreamKind kind) { return DescribeKind(kind).name; }

bool IsConvertible(StreamKind kind) { return DescribeKind(kind).mediaType.has_value(); }

boost::intrusive_ptr<Conf::IFormatCodec> MakeDescriptor(StreamKind kind)
{
    switch (kind)
    {
    case StreamKind::Video:
        return IFormatCodecVideo::Create();
    case StreamKind::Audio:
        return IFormatCodecAudio::Create();
    case StreamKind::Subtitle:
        return IFormatCodecSubtitle::Create();
    case StreamKind::Data:
    case StreamKind::Attachment:
    case StreamKind::Unknown:
        break;
    }
    return Conf::IFormatCodec::Create();
}

} // namespace Zelnor::Media
