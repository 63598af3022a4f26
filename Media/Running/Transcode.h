#pragma once

// Private to the library, not installed.

#include "Media/Jobs/MediaSpan.h"
#include "Media/Place.h"
#include "Media/Planning/OutputContents.h"
#include "Media/Probe/MediaProbe.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/Property.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Zelnor::Media
{

class FaultList;

/// One stream to make.
struct TranscodeStream
{
    /// The position of a source that cannot be read, or that lacks the stream.
    static constexpr std::size_t kNoInput = static_cast<std::size_t>(-1);

    std::size_t input = 0;            ///< position in the transcode's inputs
    unsigned int stream = 0;          ///< stream of that input
    std::vector<unsigned int> merged; ///< streams of that input that are merged into it
    Core::Property codec;             ///< the record of what it becomes
    Place place = {};                 ///< the link to the target, and the stream
};

/// What one target of a job is made from.
struct Transcode
{
    std::vector<MediaFile> inputs;
    std::string output;
    std::string container;
    Core::Property target; ///< its record
    std::vector<TranscodeStream> streams;
    MediaSpan span = {}; ///< the part of the inputs that it is made from
    Place place = {};    ///< the target's node
    /// What the target gets beside its streams; nothing until `PlanContents` was asked.
    OutputContents contents = {};
    /// Of each input, the streams that somebody chose to leave out.
    std::vector<std::vector<unsigned int>> leftOut = {};

    /// Of a stream that has an input.
    const MediaStream& SourceOf(const TranscodeStream& stream) const
    {
        return inputs[stream.input].streams[stream.stream];
    }
    /// Whether ffmpeg goes to the key frame before the part in all inputs. In others it would come out behind
    /// it, so what stands before the part is read and dropped.
    bool SeeksInInputs() const;
    /// Whether the part's first frame may come after its beginning. Where ffmpeg does not seek in the inputs,
    /// frames are counted from the beginning of the source, and those of the part are cut out.
    bool BeginsBetweenFrames() const { return span.start > 0 && SeeksInInputs(); }
    /// Of the target, in microseconds, from the longest input; nothing when it is not known.
    std::optional<std::int64_t> Duration() const;
};

/// Whether the files of a job's sources are looked at.
enum class SourceFiles
{
    Opened,
    Ignored, ///< only the document counts; no transcode has inputs
};

/// What there is to do for a job, a transcode for each of its targets, in the graph's order. Looks into the
/// inputs, each once. What keeps the job from being of the form source -> raw stream -> target is a fault.
///
/// \param document  what the faults call the job's document; empty when it has none
std::vector<Transcode> ReadTranscodes(const Conf::ITranscodingMetaGraph& job, const std::string& document,
                                      FaultList& faults, SourceFiles files = SourceFiles::Opened);

} // namespace Zelnor::Media
