#pragma once

#include "Conf/Interfaces/IFormatCodec.h"
#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/MediaType.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <optional>
#include <string>

/// \file
/// The kinds of stream, and what the parts of the system call each of them. Every translation between those
/// names and numbers is a look-up in this one table.

namespace Zelnor::Media
{
/// As FFmpeg tells streams apart.
enum class StreamKind
{
    Video,
    Audio,
    Subtitle,
    Data,
    Attachment,
    Unknown,
};

/// One kind of stream.
struct StreamKindDescription
{
    StreamKind kind;  ///< which one
    const char* name; ///< "video"
    int codecType;    ///< FFmpeg's `AVMediaType`, which is what `IFormatCodec::GetCodecType()` returns
    /// What presets call it; nothing when streams of this kind cannot be converted.
    std::optional<MediaType> mediaType;
    const std::string* recordName; ///< of its codec's record: "format_codec_video"; never null
};

/// The description of a kind; it stays.
ZELNOR_API const StreamKindDescription& DescribeKind(StreamKind kind);

/// `StreamKind::Unknown` for a number that is not FFmpeg's.
ZELNOR_API StreamKind KindOfCodecType(int codecType);
ZELNOR_API StreamKind KindOfMediaType(MediaType mediaType);
/// The kind whose codec records have that name; `StreamKind::Unknown` when there is none.
ZELNOR_API StreamKind KindOfRecord(const std::string& recordName);

/// "video"
ZELNOR_API const char* NameOf(StreamKind kind);
/// Whether streams of the kind can be made: video, audio and subtitles.
ZELNOR_API bool IsConvertible(StreamKind kind);
/// A new `IFormatCodecVideo`, `IFormatCodecAudio` or `IFormatCodecSubtitle`; an `IFormatCodec` for other
/// kinds.
ZELNOR_API boost::intrusive_ptr<Conf::IFormatCodec> MakeDescriptor(StreamKind kind);

} // namespace Zelnor::Media
