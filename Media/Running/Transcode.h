#pragma once

// Private to the library, not installed.

#include "Media/Probe/MediaProbe.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/Property.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// One stream to make.
struct TranscodeStream
{
    std::size_t input = 0;            ///< position in the transcode's inputs
    unsigned int stream = 0;          ///< stream of that input
    std::vector<unsigned int> merged; ///< streams of that input that are merged into it
    Core::Property codec;             ///< the record of what it becomes
};

/// What one target of a job is made from.
struct Transcode
{
    std::vector<MediaFile> inputs;
    std::string output;
    std::string container;
    Core::Property target; ///< its record
    std::vector<TranscodeStream> streams;

    const MediaStream& SourceOf(const TranscodeStream& stream) const
    {
        return inputs[stream.input].streams[stream.stream];
    }
};

/// What there is to do for a job, a transcode for each of its targets, in the document's order. Looks into
/// the inputs. \throw RunException when the job is not of the form that can be run: source -> raw stream ->
/// target
ZELNOR_API std::vector<Transcode> ReadTranscodes(const Conf::ITranscodingMetaGraph& job);

} // namespace Zelnor::Media
