#pragma once

// Private to the library, not installed.

extern "C" {
#include <libavformat/avformat.h>
}

namespace Zelnor::Media
{

/// FFmpeg's demuxer of images, which reads one file when its pattern type is "none".
constexpr const char* kImageDemuxer = "image2";

/// Whether the demuxer is known to read nothing but the file that it is given. Playlists, scripts and
/// descriptions of streams name other files or places in the network, and some formats keep a part of their
/// data in files beside them.
bool ReadsOneFile(const AVInputFormat& demuxer);

} // namespace Zelnor::Media
