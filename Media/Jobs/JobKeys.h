#pragma once

/// \file
/// Keys of a job's records that the vocabulary does not have. A record without them means what it always
/// meant.

namespace Zelnor::Media::JobKeys
{

// Of a source's record.

/// The list of its streams that no target has because somebody chose so, by their indexes. Nothing else that
/// the targets lack is meant by it.
constexpr const char* kLeftOut = "leftOut";

// Of a target's record.

/// Where in its sources the target begins: microseconds from their beginning, an integer; 0 without it.
constexpr const char* kStart = "start";
/// Where in its sources the target ends, counted in the same way; at their end without it.
constexpr const char* kEnd = "end";
/// The list of its chapters. Each has `kStart` and `kEnd`, counted in the same way, and may have `kTitle`.
/// Without the key, the target gets those of its first source that has some.
constexpr const char* kChapters = "chapters";
constexpr const char* kTitle = "title";
/// The list of the streams of its first source that go into it as they are, covers and attachments. Without
/// the key, it gets those of all of its sources.
constexpr const char* kAttachments = "attachments";

// Of a video's record.

/// What becomes of a source whose frames are interlaced: one of the words below.
constexpr const char* kDeinterlace = "deinterlace";
constexpr const char* kDeinterlaceOff = "off";
constexpr const char* kDeinterlaceEveryFrame = "25p";
constexpr const char* kDeinterlaceEveryField = "50p";
constexpr const char* kDeinterlaceKeep = "keep";
/// FFmpeg's name of a pixel format that the vocabulary may not have; in place of "PIXELFORMAT".
constexpr const char* kPixelFormat = "pixelFormat";
/// How the colours are coded, by FFmpeg's names.
constexpr const char* kColorRange = "colorRange";
constexpr const char* kColorMatrix = "colorMatrix";
constexpr const char* kColorPrimaries = "colorPrimaries";
constexpr const char* kColorTransfer = "colorTransfer";

} // namespace Zelnor::Media::JobKeys
