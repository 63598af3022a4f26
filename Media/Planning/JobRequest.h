#pragma once

#include "Media/Probe/StreamKinds.h"

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/Property.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A size of frames, in pixels as they are displayed.
struct FrameLimit
{
    std::uint32_t width;  ///< at most
    std::uint32_t height; ///< at most
};

/// Which streams of the source become streams of the output, and how.
struct StreamRequest
{
    /// Indexes of the source's streams, in the order in which the output gets them within each kind; the same
    /// stream may be named twice. Empty: the best video and audio streams for the preset, and all subtitles
    /// that the output's container can hold.
    std::vector<unsigned int> chosen = {};
    /// Makes the container DVD, whatever the preset says, and copies what a DVD can hold as it is.
    bool losslessDvd = false;
    /// Languages, as "deu": for each of them the best audio stream, in this order. Codes of ISO 639-2 for the
    /// same language ("deu" and "ger") are equal. A language that the source does not have is refused.
    std::vector<std::string> audioLanguages = {};
    /// All audio streams in the source's order; with languages, all of these languages.
    bool allAudio = false;
    /// Kinds of stream that go into the output unchanged; refused where its container cannot hold them. All
    /// subtitles are taken then.
    std::vector<StreamKind> copied = {};
    /// A larger image is scaled down to fit into it, with its display aspect ratio.
    std::optional<FrameLimit> maxSize = {};
    /// Whether a smaller image is scaled up to fit exactly into `maxSize`.
    bool mayUpscale = false;
    /// Whether codecs of the library's list of disabled encoders may be encoded.
    bool allowDisabled = false;
};

/// Two streams of the source that become one: audio is mixed into audio, a subtitle is drawn over a video.
struct StreamMerge
{
    unsigned int base;    ///< index of the stream that is converted
    unsigned int overlay; ///< index of the stream that is merged into it
};

/// A setting that takes the place of the preset's. It obeys the rules of presets.
struct SettingOverride
{
    /// "video.bitrate": of all streams of that type in the preset; "audio[1].layout": of the second audio
    /// stream; "video.codec.options.encode.crf"; "metadata.title" and "container": of the file.
    std::string path;
    Core::Property value; ///< its name does not matter
};

/// What a job shall do beyond what its preset says.
struct JobRequest
{
    /// The output file. A name without an extension gets its container's default one; a folder, which exists
    /// or whose name ends with a slash, gets the file under the source's name.
    std::string output = {};
    StreamRequest streams = {};
    std::vector<StreamMerge> merges = {};
    /// Codecs for the preset's streams of their kinds, as `CODEC_ID_` texts. Settings of the preset that are
    /// about the codec alone (profile, options, ...) do not hold for another one, and are left out.
    std::vector<std::string> codecs = {};
    std::optional<Core::Property::Ratio> frameRate = {}; ///< frames per second
    std::vector<SettingOverride> settings = {};          ///< in order; they win over `codecs` and `frameRate`
    /// The part of the source to convert, in microseconds from its beginning.
    std::optional<std::int64_t> start = {};
    std::optional<std::int64_t> end = {};
    /// Whether a job is refused by which something of the source would be lost: a stream, a tag, a chapter, a
    /// language. Else it is named in the notes, as are the streams beside the chosen ones.
    bool strict = false;
};

/// Reads a setting as people write it: "video.bitrate=4000000", "video.frameRateRatio=30000/1001". The value
/// is of the type that its key asks for.
/// \throw PlanException "video.bitrat: unknown setting; did you mean 'bitrate'?", "video.bitrate: expected a
/// positive integer, found 'fast'"
ZELNOR_API SettingOverride ParseSetting(const std::string& text);

} // namespace Zelnor::Media
