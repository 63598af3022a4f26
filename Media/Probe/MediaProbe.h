#pragma once

#include "Media/Probe/StreamKinds.h"

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/ioPath.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// \file
/// What is in a media file: descriptors of what the vocabulary has words for, and beside them the little that
/// it has none for.
///
///     const MediaFile file = ProbeMedia("in.mkv");
///     for (const MediaStream& stream : file.streams)
///     {
///         std::cout << stream.index << " " << NameOf(stream.kind) << " " << stream.codec << "\n";
///     }

namespace Zelnor::Media
{

/// How the colours of a video are coded, by FFmpeg's names. What is not known is empty.
struct VideoColor
{
    std::string range = {};     ///< "tv" or "pc"
    std::string matrix = {};    ///< "bt709"; "gbr" for RGB
    std::string primaries = {}; ///< "bt2020"
    std::string transfer = {};  ///< "smpte2084"
};

/// What a video tells displays of high dynamic range beside its colours. What is not known is empty.
struct VideoHdr
{
    /// The display that the video was mastered on, as encoders are told:
    /// "G(13250,34500)B(7500,3000)R(34000,16000)WP(15635,16450)L(10000000,50)", the chromaticities in units
    /// of 1/50000, the luminance in units of 1/10000 candela per square metre.
    std::string masteringDisplay = {};
    /// The brightest pixel and the brightest frame's average in candela per square metre: "1000,400".
    std::string contentLight = {};
    /// Profile and the ID of what its base layer is compatible with: "8.4".
    std::string dolbyVision = {};
    bool isOnlyInFrames = false; ///< the frames tell display or light, the container does not
};

/// A part of a file's time that has a name.
struct MediaChapter
{
    std::int64_t start = 0; ///< in microseconds from the beginning of the file
    std::int64_t end = 0;   ///< in microseconds
    std::string title;      ///< empty when it has none
};

/// Covers of more bytes cannot be given to a program as an argument.
constexpr std::size_t kLargestPicture = 96000;

/// One stream of a file.
struct MediaStream
{
    unsigned int index = 0;                ///< from 0, in the file
    StreamKind kind = StreamKind::Unknown; ///< of these kinds
    std::string codec;                     ///< FFmpeg's name: "h264"
    /// An `IFormatCodecVideo`, `IFormatCodecAudio` or `IFormatCodecSubtitle`; for other kinds of stream an
    /// `IFormatCodec`. It has no codec id when the vocabulary has none for the codec.
    boost::intrusive_ptr<Conf::IFormatCodec> descriptor;
    bool isDefault = false;
    bool isForced = false;
    bool isAttachedPicture = false; ///< a cover, not a video
    std::string picture = {};       ///< a cover's bytes; empty: more than `kLargestPicture`
    bool isInterlaced = false;
    bool isInterlacedByHeader = false; ///< the header says it, the frames that were decoded do not
    bool isBitmap = false;             ///< a bitmap subtitle, not a text subtitle
    unsigned int channels = 0;         ///< of audio; 0: not known
    VideoColor color;
    VideoHdr hdr;
    /// "progressive", "tt", "bb", "tb" or "bt": the field that is coded first and the one that is displayed
    /// first; empty: not known.
    std::string fieldOrder;
    std::string pixelFormat;           ///< FFmpeg's name, also where the vocabulary has none: "yuv420p10le"
    std::string sampleFormat;          ///< the same of audio: "s32"
    unsigned int bitsPerSample = 0;    ///< of a colour component or an audio sample; 0: not known
    std::string profile;               ///< FFmpeg's name: "High"; empty: not known
    std::optional<std::int64_t> start; ///< the first frame's time in microseconds
    unsigned int rotation = 0; ///< clockwise degrees (0, 90, 180, 270) by which it is rotated for display
    std::optional<std::int64_t> duration; ///< in microseconds
    /// Of the programmes that it belongs to, the numbers; empty where the container has no programmes.
    std::vector<int> programs;
    std::string timecode;           ///< of its first frame: "01:00:00:00"; empty when it has none
    std::string fileName;           ///< of an attachment
    std::string mimeType;           ///< of an attachment: "font/ttf"
    std::vector<std::string> notes; ///< what the descriptor cannot say, as sentences without an end
};

/// A media file and its streams, in its order.
struct MediaFile
{
    std::string name;                                   ///< as given
    std::string demuxer;                                ///< FFmpeg's names: "mov,mp4,m4a,3gp,3g2,mj2"
    boost::intrusive_ptr<Conf::IFormatFile> descriptor; ///< with the file's tags; never null
    std::optional<std::int64_t> duration;               ///< in microseconds
    bool durationIsEstimated = false;                   ///< the container does not store it
    std::string timecode; ///< its own, else the first one of its streams; empty when it has none
    std::vector<MediaChapter> chapters; ///< in the file's order
    std::vector<std::string> notes;     ///< what the descriptor cannot say
    std::vector<MediaStream> streams;   ///< in the file's order
};

/// Opens the file and looks at its streams. The name is a plain file's, whatever characters it is made of.
/// Nothing else is read: pipes and devices are refused, and so are playlists, descriptions of streams and
/// whatever else may name other files. FFmpeg's log stays as it is; see FFmpegLog.h for how its last message
/// comes into the description.
/// \throw ProbeException "x.mp4: cannot be read: Invalid data found when processing input (moov atom not
///        found)", with the file in a tag
ZELNOR_API MediaFile ProbeMedia(const ioPath& path);
/// The same from a stream, which messages call `name`. What the stream throws passes through.
ZELNOR_API MediaFile ProbeMedia(Core::IDataInput& input, const std::string& name);

/// The name under which FFmpeg opens `path` as a plain file, whatever characters it is made of.
std::string FFmpegFileName(const std::string& path);

} // namespace Zelnor::Media
