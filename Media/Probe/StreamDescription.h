#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace Zelnor::Media
{

/// What FFmpeg found out about a stream, as a descriptor and notes.
MediaStream DescribeStream(AVFormatContext& context, AVStream& stream);

std::vector<MediaChapter> ChaptersOf(const AVFormatContext& context);

/// FFmpeg's tags as children of the group `metadata`, the first one of each key.
void AddTags(const AVDictionary* tags, Core::Property& metadata);

/// The value of FFmpeg's tag, whatever the case of its key; empty when there is none.
std::string TagOf(const AVDictionary* tags, const char* key);

/// `count` units of `base` in microseconds; nothing when it is not known.
std::optional<std::int64_t> Microseconds(std::int64_t count, AVRational base);

} // namespace Zelnor::Media
