#pragma once

// Private to the library, not installed.

extern "C" {
#include <libavformat/avformat.h>
}

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// The installed FFmpeg's muxer for a container, a `FORMAT_` text; null when it has none.
const AVOutputFormat* FindMuxer(const std::string& container);

/// Whether what FFmpeg writes for the container is one file, under the name that it is given: the target. A
/// muxer that is not known to do so may make files of its own, or none, or play what it gets.
bool IsOneFile(const std::string& container);

/// Whether the container's files hold one image.
bool IsPicture(const std::string& container);

/// Whether the container is that of DVDs.
bool IsDvd(const std::string& container);

/// Whether the container's index can be moved to the beginning, so that a player starts before it has the
/// whole file.
bool CanStartFast(const std::string& container);

/// Whether the container is known to hold streams of the codec.
bool CertainlyHolds(const std::string& container, AVCodecID codec);
/// The same for those who have the container's muxer, which takes a while to find.
bool CertainlyHolds(const AVOutputFormat* muxer, const std::string& container, AVCodecID codec);
/// Whether it may hold them: FFmpeg does not know it of every container.
bool MayHold(const std::string& container, AVCodecID codec);

/// The codecs, as `CODEC_ID_` texts, that a subtitle in the container may have, the best first. Text stays
/// text and bitmaps stay bitmaps.
std::vector<std::string> SubtitleCodecsFor(const std::string& container, const std::string& sourceCodec,
                                           bool isBitmap);

} // namespace Zelnor::Media
